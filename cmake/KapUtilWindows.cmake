# What the library links on Windows, where no package manager provides it: the database and the Unicode library, compiled
# from Debian's source packages, and the header-only libraries of the command line. Downloaded at configuration, checked,
# kept in build/sources for every preset, and never part of the repository.
enable_language(C)

# The older instructions for floating point keep more digits than a Double has: the same amount would be rounded
# otherwise by 32-bit programs. The newer ones want an aligned stack, which callers on Windows do not promise.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
endif()

set(sourcesFolder "${PROJECT_SOURCE_DIR}/build/sources")
function(kaputil_fetch_source package file checksum folder)
    execute_process(
        COMMAND "${PROJECT_SOURCE_DIR}/scripts/fetch_source.sh" ${package} ${file} ${checksum}
                "${sourcesFolder}/${folder}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()
kaputil_fetch_source(sqlite3 sqlite3_3.40.1.orig.tar.xz
                     aaa776260ab4dc976db34aa7891819484c8676b5b2783123ebc6301e2ca5d655 sqlite-3.40.1)
kaputil_fetch_source(utf8proc utf8proc_2.8.0.orig.tar.gz
                     a0a60a79fe6f6d54e7d411facbfcc867a6e198608f2cd992490e46f04b1bcecc utf8proc-2.8.0)

# The same release as the one that Debian's own programs use, made into its one file, with the same features.
set(sqliteFolder "${sourcesFolder}/sqlite-3.40.1")
if(NOT EXISTS "${sqliteFolder}/sqlite3.c")
    execute_process(COMMAND ./configure WORKING_DIRECTORY "${sqliteFolder}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND make sqlite3.c WORKING_DIRECTORY "${sqliteFolder}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endif()
add_library(kaputil_sqlite STATIC "${sqliteFolder}/sqlite3.c")
add_library(SQLite::SQLite3 ALIAS kaputil_sqlite)
target_include_directories(kaputil_sqlite SYSTEM PUBLIC "${sqliteFolder}")
target_compile_definitions(
    kaputil_sqlite
    PRIVATE SQLITE_THREADSAFE=1
            SQLITE_ENABLE_COLUMN_METADATA
            SQLITE_ENABLE_DBSTAT_VTAB
            SQLITE_ENABLE_MATH_FUNCTIONS
            SQLITE_LIKE_DOESNT_MATCH_BLOBS
            SQLITE_MAX_SCHEMA_RETRY=25
            SQLITE_MAX_VARIABLE_NUMBER=250000
            SQLITE_SECURE_DELETE
            SQLITE_SOUNDEX
            SQLITE_USE_URI)
target_compile_options(kaputil_sqlite PRIVATE -w)

add_library(kaputil_utf8proc STATIC "${sourcesFolder}/utf8proc-2.8.0/utf8proc.c")
add_library(PkgConfig::utf8proc ALIAS kaputil_utf8proc)
target_include_directories(kaputil_utf8proc SYSTEM PUBLIC "${sourcesFolder}/utf8proc-2.8.0")
target_compile_definitions(kaputil_utf8proc PUBLIC UTF8PROC_STATIC)

# Headers without a library are the host's, each alone in a folder: the host's other headers must not be found.
function(kaputil_host_headers target name)
    find_path(${name}_HOST_FOLDER ${name} REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include)
    file(COPY "${${name}_HOST_FOLDER}/${name}" DESTINATION "${PROJECT_BINARY_DIR}/headers/${name}")
    add_library(${target} INTERFACE IMPORTED)
    target_include_directories(${target} SYSTEM INTERFACE "${PROJECT_BINARY_DIR}/headers/${name}")
endfunction()
if(KAPUTIL_BUILD_TOOLS)
    kaputil_host_headers(CLI11::CLI11 CLI)
    kaputil_host_headers(nlohmann_json::nlohmann_json nlohmann)
endif()

# Programs and libraries that need nothing beside them.
add_link_options(-static)
