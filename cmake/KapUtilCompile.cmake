# How every target of this project is compiled.

set(KAPUTIL_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion)
if(KAPUTIL_WERROR)
    list(APPEND KAPUTIL_WARNINGS -Werror)
endif()

# A finding ends the program, so that a test cannot pass over it. The checks of every use of a pointer take a third of the
# time to compile, and a null pointer ends the program without them; the fuzzers, which read strangers' bytes, have them.
set(KAPUTIL_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all)
if(NOT KAPUTIL_FUZZ)
    list(APPEND KAPUTIL_SANITIZER_FLAGS -fno-sanitize=null,alignment)
endif()

# Each program of a sanitizer build holds the library with its lines of code.
find_program(KAPUTIL_MOLD mold)

set(KAPUTIL_PCH_HEADERS
    <algorithm>
    <array>
    <cstdint>
    <functional>
    <map>
    <memory>
    <optional>
    <sstream>
    <string>
    <string_view>
    <unordered_map>
    <utility>
    <variant>
    <vector>)

# How many files are compiled as one. A file's own text is a small part of what its compiler reads: most is headers, and
# those are read once for all of them. Fewer would make a change of one file cheaper and everything else dearer.
set(KAPUTIL_UNITY_FILES 16 CACHE STRING "How many files are compiled as one")

# kaputil_sources(variable target source...): what a target compiles, in a variable. With KAPUTIL_UNITY these are files
# below the build that include the sources, those of one folder together. They name them relative to themselves, so they
# are the same in every clone, and the compiler's cache serves all of them; CMake's own name them by their full paths.
function(kaputil_sources variable target)
    if(NOT KAPUTIL_UNITY)
        set(${variable} ${ARGN} PARENT_SCOPE)
        return()
    endif()
    set(unityFolder "${PROJECT_BINARY_DIR}/unity")
    math(EXPR enough "${KAPUTIL_UNITY_FILES} / 2")
    set(made)
    set(text)
    set(count 0)
    set(lastFolder)
    foreach(source IN LISTS ARGN)
        cmake_path(GET source PARENT_PATH folder)
        if(count EQUAL KAPUTIL_UNITY_FILES OR (count GREATER_EQUAL enough AND NOT folder STREQUAL lastFolder))
            kaputil_unity_file(made "${text}")
            set(text)
            set(count 0)
        endif()
        cmake_path(RELATIVE_PATH source BASE_DIRECTORY "${unityFolder}" OUTPUT_VARIABLE path)
        string(APPEND text "#include \"${path}\"\n")
        math(EXPR count "${count} + 1")
        set(lastFolder "${folder}")
    endforeach()
    if(count GREATER 0)
        kaputil_unity_file(made "${text}")
    endif()
    set(${variable} ${made} PARENT_SCOPE)
endfunction()

# Writes the next of a target's files, leaving one that is right already as it is, and adds it to the list.
macro(kaputil_unity_file list text)
    list(LENGTH ${list} number)
    set(path "${unityFolder}/${target}_${number}.cpp")
    file(CONFIGURE OUTPUT "${path}" CONTENT "${text}" @ONLY)
    list(APPEND ${list} "${path}")
endmacro()

# kaputil_compile_rules(target): C++20, the project's warnings, the sanitizers when they are on.
function(kaputil_compile_rules target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8 $<$<BOOL:${KAPUTIL_WERROR}>:/WX>)
        return()
    endif()
    target_compile_options(${target} PRIVATE ${KAPUTIL_WARNINGS})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # This release sees overlapping copies in the joining of two texts, where there are none, and values of variants
        # that were never set, once enough is inlined.
        target_compile_options(${target} PRIVATE -Wno-restrict -Wno-maybe-uninitialized)
        if(WIN32)
            # And, with the inlining that it does for this host, past the ends of texts.
            target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow
                                                         -Wno-stringop-overread)
        endif()
    endif()
    if(KAPUTIL_SANITIZE)
        target_compile_options(${target} PRIVATE -O1 -fno-omit-frame-pointer ${KAPUTIL_SANITIZER_FLAGS})
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
        target_link_options(${target} PRIVATE ${KAPUTIL_SANITIZER_FLAGS})
        if(KAPUTIL_MOLD AND NOT WIN32)
            target_link_options(${target} PRIVATE -fuse-ld=mold)
        endif()
        if(KAPUTIL_FUZZ)
            target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        endif()
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # Instrumented code makes later releases see such values, too.
            target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
        endif()
    endif()
endfunction()

# kaputil_headers(name [header...]): the everyday standard headers, and those named, read once for the targets that
# then call kaputil_precompile(target name). Off in the preset "lint", where every file shows that it includes what it
# uses.
function(kaputil_headers name)
    if(KAPUTIL_PCH)
        set(empty "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
        file(CONFIGURE OUTPUT "${empty}" CONTENT "")
        add_library(${name} OBJECT "${empty}")
        kaputil_compile_rules(${name})
        target_precompile_headers(${name} PRIVATE ${KAPUTIL_PCH_HEADERS} ${ARGN})
    endif()
endfunction()

function(kaputil_precompile target headers)
    if(TARGET ${headers})
        target_precompile_headers(${target} REUSE_FROM ${headers})
    endif()
endfunction()
