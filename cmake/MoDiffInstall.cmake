# Installs library, headers, scripts, CMake package files and MoDiffEngine.pc. The components are packages: library,
# development, and program with the scripts.
include(CMakePackageConfigHelpers)

set(MODIFF_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/MoDiffEngine)

install(TARGETS MoDiffEngine EXPORT MoDiffEngineTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT library NAMELINK_COMPONENT development)
install(FILES ${MODIFF_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/MoDiffEngine COMPONENT development)
install(EXPORT MoDiffEngineTargets NAMESPACE MoDiffEngine:: DESTINATION ${MODIFF_PACKAGE_DIR} COMPONENT development)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MoDiffEngineConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngineConfig.cmake INSTALL_DESTINATION ${MODIFF_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngineConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngineConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngineConfigVersion.cmake ${CMAKE_CURRENT_LIST_DIR}/MoDiffSuite.cmake
    DESTINATION ${MODIFF_PACKAGE_DIR} COMPONENT development)
install(PROGRAMS ${CMAKE_CURRENT_LIST_DIR}/modiff-suite.sh DESTINATION ${MODIFF_PACKAGE_DIR} COMPONENT development)

# The .pc file names the other directories from its own place, so that an installation may be moved.
set(MODIFF_PC_DIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH MODIFF_PC_TO_PREFIX ${MODIFF_PC_DIR} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH MODIFF_PC_TO_LIB ${MODIFF_PC_DIR} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH MODIFF_PC_TO_INCLUDE ${MODIFF_PC_DIR} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/MoDiffEngine.pc.in ${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngine.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MoDiffEngine.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/tools/ DESTINATION ${CMAKE_INSTALL_DATADIR}/MoDiffEngine/tools
    COMPONENT program USE_SOURCE_PERMISSIONS PATTERN "__pycache__" EXCLUDE)
# What other programs take to run suites: rules, scripts and pipelines.
foreach(runner IN ITEMS share/bazel share/parallel share/slurm share/spread docs/ci)
    if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${runner})
        install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${runner} DESTINATION ${CMAKE_INSTALL_DATADIR}/modiff
            COMPONENT program USE_SOURCE_PERMISSIONS PATTERN "__pycache__" EXCLUDE)
    endif()
endforeach()
