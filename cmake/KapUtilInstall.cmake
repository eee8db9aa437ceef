# Installs the library, its headers and the package descriptions that find_package(kaputil) and pkg-config read. What a
# program needs that runs is the component `library`, what one needs that is built is `development`.
include(CMakePackageConfigHelpers)
set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/kaputil")

install(TARGETS kaputil EXPORT kaputilTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library
                                                      NAMELINK_COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/kaputil" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        COMPONENT development)
install(EXPORT kaputilTargets NAMESPACE kaputil:: DESTINATION "${packageFolder}" COMPONENT development)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/kaputilConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/kaputilConfig.cmake" INSTALL_DESTINATION "${packageFolder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/kaputilConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/kaputilConfig.cmake" "${PROJECT_BINARY_DIR}/kaputilConfigVersion.cmake"
        DESTINATION "${packageFolder}" COMPONENT development)

# Its prefix is where the file is found, so that it holds for every `cmake --install --prefix`.
file(RELATIVE_PATH pcToPrefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/kaputil.pc.in" "${PROJECT_BINARY_DIR}/kaputil.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/kaputil.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)
