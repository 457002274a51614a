# Installation: library, headers, the qv5 program, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS qv5 EXPORT QV5Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/qv5 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/qv5)

set(QV5_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QV5)
install(EXPORT QV5Targets NAMESPACE QV5:: DESTINATION ${QV5_CMAKE_DIR})
configure_package_config_file(cmake/QV5Config.cmake.in
    ${PROJECT_BINARY_DIR}/QV5Config.cmake
    INSTALL_DESTINATION ${QV5_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QV5ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QV5Config.cmake ${PROJECT_BINARY_DIR}/QV5ConfigVersion.cmake
    DESTINATION ${QV5_CMAKE_DIR})

# pkg-config: the prefix is found from the .pc file's own place, so the installed tree can move.
file(RELATIVE_PATH QV5_PC_TO_PREFIX
    ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/qv5.pc.in ${PROJECT_BINARY_DIR}/qv5.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qv5.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The licence travels with every installed copy.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
