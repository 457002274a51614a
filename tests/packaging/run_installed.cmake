# The installed program finds the installed library (its RPATH) and the installed sample road,
# calibration and shots.
# Its settings store goes beside the prefix, never into the home folder of whoever runs the test.
execute_process(COMMAND ${CMAKE_COMMAND} -E env QV5_REGISTRY=${PREFIX}/../registry.reg
                        ${PREFIX}/bin/qv5 --json
                RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "installed qv5 failed (${result}): ${err}")
endif()
string(FIND "${out}" "${PREFIX}/share/qv5/sample-road.json" at)
if(at EQUAL -1)
    message(FATAL_ERROR "installed qv5 did not use the installed sample road:\n${out}")
endif()
