# Libraries of the host that programs do not load at their start.

# kaputil_headers_of(name library): what compiling needs of a library that is loaded when it is first used. Its definitions
# stay out: they are for programs that use the host's older names of file functions, and precompiled headers refuse them.
function(kaputil_headers_of name library)
    if(NOT TARGET ${name})
        add_library(${name} INTERFACE)
        target_include_directories(${name} SYSTEM INTERFACE $<TARGET_PROPERTY:${library},INTERFACE_INCLUDE_DIRECTORIES>)
    endif()
endfunction()

# kaputil_within(library archive): the library becomes part of what it is linked with where its archive is found: one file
# less to look for at every start, and one package less that clients need.
function(kaputil_within library archive)
    find_library(${archive}_FILE NAMES ${archive})
    if(${archive}_FILE)
        set_property(TARGET ${library} PROPERTY INTERFACE_LINK_LIBRARIES "${${archive}_FILE}")
    endif()
endfunction()

# kaputil_check_loaded(source...): the sources name the libraries that they load by the file that the loader looks for, with
# the version of its interface. Where this host's headers are of another one, calls would not be what the library expects.
function(kaputil_check_loaded)
    foreach(source IN LISTS ARGN)
        file(STRINGS "${PROJECT_SOURCE_DIR}/${source}" lines REGEX "LoadedLibrary k[A-Za-z]+\\(\"lib")
        if(NOT lines)
            message(FATAL_ERROR "${source} loads no library any more; take it off the list of those that do.")
        endif()
        foreach(line IN LISTS lines)
            string(REGEX MATCH "lib[^\"]+" loaded "${line}")
            string(REGEX REPLACE "\\.so\\..*" ".so" linked "${loaded}")
            find_library(${linked}_FILE NAMES ${linked})
            mark_as_advanced(${linked}_FILE)
            if(${linked}_FILE) # some are used without headers, and may be missing here
                cmake_path(GET ${linked}_FILE PARENT_PATH folder)
                file(REAL_PATH "${${linked}_FILE}" found)
                file(REAL_PATH "${folder}/${loaded}" expected)
                if(NOT found STREQUAL expected)
                    message(FATAL_ERROR "${source} loads ${loaded}, but programs are linked with ${found} on this host.")
                endif()
            endif()
        endforeach()
    endforeach()
endfunction()
