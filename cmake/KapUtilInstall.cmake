# Installs the library, its headers and the package descriptions that find_package(kaputil) and pkg-config read.
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

# A static library is linked by its client, which therefore links what the library itself needs.
set(pcOwnLibraries " -pthread -ldl")
set(pcScope)
if(BUILD_SHARED_LIBS)
    set(pcOwnLibraries)
    set(pcScope ".private")
endif()
# Its prefix is where the file is found, so that it holds for every `cmake --install --prefix`.
file(RELATIVE_PATH pcToPrefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/kaputil.pc.in" "${PROJECT_BINARY_DIR}/kaputil.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/kaputil.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
