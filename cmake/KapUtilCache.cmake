# The compiler's cache, where there is one. It serves every clone of the same sources: paths below the root count as
# relative, and the folder that a compiler was started in does not count.
find_program(KAPUTIL_CCACHE ccache)
if(KAPUTIL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Precompiled headers need the two that are called sloppiness: what a file defines before them, and that they were
    # read, cannot be seen in its own text.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
        CCACHE_SLOPPINESS=pch_defines,time_macros "${KAPUTIL_CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${CMAKE_CXX_COMPILER_LAUNCHER}")
    add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>)
endif()
# What debuggers and sanitizers show of a file's name is relative, too.
add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fdebug-prefix-map=${PROJECT_BINARY_DIR}=.>")
