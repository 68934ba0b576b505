# Installs both libraries with their headers and config packages, so that a host writes
#   find_package(MarlixLibQt CONFIG)   and links   Marlix::LibQt.

set(MARLIX_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake")

install(TARGETS MarlixLib EXPORT MarlixLibTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS MarlixLibQt EXPORT MarlixLibQtTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

foreach(lib MarlixLib MarlixLibQt)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/${lib}/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${lib}"
        FILES_MATCHING PATTERN "*.h" PATTERN "plugin" EXCLUDE)
    install(FILES "${PROJECT_BINARY_DIR}/src/${lib}/${lib}Export.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${lib}")
    install(EXPORT ${lib}Targets NAMESPACE Marlix:: DESTINATION "${MARLIX_CMAKE_DIR}/${lib}")
    configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/${lib}Config.cmake.in"
        "${PROJECT_BINARY_DIR}/cmake/${lib}Config.cmake"
        INSTALL_DESTINATION "${MARLIX_CMAKE_DIR}/${lib}")
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/${lib}ConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES "${PROJECT_BINARY_DIR}/cmake/${lib}Config.cmake" "${PROJECT_BINARY_DIR}/cmake/${lib}ConfigVersion.cmake"
        DESTINATION "${MARLIX_CMAKE_DIR}/${lib}")
endforeach()
