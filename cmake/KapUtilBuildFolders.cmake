# kaputil_build_folders: where the sources and programs of this build are, for tests and benchmarks.
configure_file("${PROJECT_SOURCE_DIR}/tests/support/build_folders.cpp.in" "${PROJECT_BINARY_DIR}/build_folders.cpp" @ONLY)
add_library(kaputil_build_folders STATIC "${PROJECT_BINARY_DIR}/build_folders.cpp")
target_include_directories(kaputil_build_folders PRIVATE "${PROJECT_SOURCE_DIR}/tests")
kaputil_compile_rules(kaputil_build_folders)
