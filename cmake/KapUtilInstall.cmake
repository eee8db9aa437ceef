# Installs the library, its headers and the package description that find_package(kaputil) reads.
include(CMakePackageConfigHelpers)
set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/kaputil")

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/kaputil" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS kaputil EXPORT kaputilTargets)
install(EXPORT kaputilTargets NAMESPACE kaputil:: DESTINATION "${packageFolder}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/kaputilConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/kaputilConfig.cmake" INSTALL_DESTINATION "${packageFolder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/kaputilConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/kaputilConfig.cmake" "${PROJECT_BINARY_DIR}/kaputilConfigVersion.cmake"
        DESTINATION "${packageFolder}")
