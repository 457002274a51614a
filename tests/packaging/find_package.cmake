file(REMOVE_RECURSE ${WORK})
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK} -DCMAKE_PREFIX_PATH=${PREFIX}
            -DCMAKE_CXX_COMPILER=${CXX}
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "configuring the consumer with find_package(QV5) failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "building the consumer failed")
endif()
execute_process(COMMAND ${WORK}/consumer RESULT_VARIABLE result OUTPUT_VARIABLE out)
message("${out}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "the consumer program failed: ${result}")
endif()
