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
