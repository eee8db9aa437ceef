# The COM module, KapUtil26.dll. What it is made of beside its code (the type library's source, resources, manifests) is
# written from the catalogue by a program of the same build.
set(comServerFolder)
if(WIN32)
    set(comServerFolder com/server)
endif()
kaputil_module(com FLAT FOLDERS ${comServerFolder} USES catalogue ado)

set(comTexts KapUtil26.idl KapLocal.idl KapUtil26.rc KapUtil26.amd64.manifest KapUtil26.x86.manifest)

if(NOT WIN32)
    return()
endif()

# The texts are the same for both widths: the 64-bit build writes them, by its own program in Wine.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_executable(kaputil-describe EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/src/com/describe/main.cpp")
    target_link_libraries(kaputil-describe PRIVATE kaputil_com)
    kaputil_compile_rules(kaputil-describe)
    kaputil_precompile(kaputil-describe kaputil_headers)
    set(KAPUTIL_COM_TEXTS "${PROJECT_BINARY_DIR}/com/texts")
    list(TRANSFORM comTexts PREPEND "${KAPUTIL_COM_TEXTS}/")
    add_custom_command(
        OUTPUT ${comTexts}
        COMMAND "${PROJECT_SOURCE_DIR}/scripts/run_in_wine.sh" "${PROJECT_BINARY_DIR}/wine"
                $<TARGET_FILE:kaputil-describe> "${KAPUTIL_COM_TEXTS}"
        DEPENDS kaputil-describe
        COMMENT "Describing the classes for the COM module"
        VERBATIM)
else()
    set(KAPUTIL_COM_TEXTS "${PROJECT_SOURCE_DIR}/build/windows64/com/texts"
        CACHE PATH "The folder with what the 64-bit build has written of the classes")
    list(TRANSFORM comTexts PREPEND "${KAPUTIL_COM_TEXTS}/")
endif()
list(GET comTexts 0 1 interfaceTexts)
list(GET comTexts 2 resourceText)

enable_language(RC)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(interfaceCompiler x86_64-w64-mingw32-widl --win64)
    list(GET comTexts 3 manifest)
else()
    set(interfaceCompiler i686-w64-mingw32-widl --win32)
    list(GET comTexts 4 manifest)
endif()
set(comFolder "${PROJECT_BINARY_DIR}/com")
file(MAKE_DIRECTORY "${comFolder}")
set(typeLibraries)
foreach(interfaceText IN LISTS interfaceTexts)
    cmake_path(GET interfaceText STEM name)
    add_custom_command(
        OUTPUT "${comFolder}/${name}.tlb"
        COMMAND ${interfaceCompiler} -t -o "${comFolder}/${name}.tlb" "${interfaceText}"
        DEPENDS "${interfaceText}"
        COMMENT "Compiling the type library ${name}"
        VERBATIM)
    list(APPEND typeLibraries "${comFolder}/${name}.tlb")
endforeach()
add_custom_command(
    OUTPUT "${comFolder}/KapUtil26.rc" "${comFolder}/KapUtil26.manifest"
    COMMAND "${CMAKE_COMMAND}" -E copy "${resourceText}" "${comFolder}/KapUtil26.rc"
    COMMAND "${CMAKE_COMMAND}" -E copy "${manifest}" "${comFolder}/KapUtil26.manifest"
    DEPENDS "${resourceText}" "${manifest}"
    VERBATIM)
set_source_files_properties("${comFolder}/KapUtil26.rc" PROPERTIES OBJECT_DEPENDS "${typeLibraries}")

add_library(kaputil-com SHARED "${PROJECT_SOURCE_DIR}/src/com/server/exports.def" "${comFolder}/KapUtil26.rc"
                               "${comFolder}/KapUtil26.manifest" ${typeLibraries})
set_target_properties(kaputil-com PROPERTIES OUTPUT_NAME KapUtil26 PREFIX "" LINKER_LANGUAGE CXX
                                             RUNTIME_OUTPUT_DIRECTORY "${comFolder}")
target_include_directories(kaputil-com PRIVATE "${comFolder}")
target_link_libraries(kaputil-com PRIVATE kaputil_com)
target_link_options(kaputil-com PRIVATE -s -Wl,--no-insert-timestamp)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # What the system calls is exported without the decoration that 32-bit compilers give its names.
    target_link_options(kaputil-com PRIVATE -Wl,--enable-stdcall-fixup)
endif()

# The tests of the module: a client that knows the system's interfaces only, with the catalogue to compare with. They are
# run by ./run test-com.
option(KAPUTIL_BUILD_COM_TESTS "Build the client that tests the COM module" OFF)
if(KAPUTIL_BUILD_COM_TESTS)
    find_path(googleTestFolder googletest/CMakeLists.txt REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/src/googletest)
    set(BUILD_GMOCK OFF CACHE INTERNAL "")
    set(INSTALL_GTEST OFF CACHE INTERNAL "")
    add_subdirectory("${googleTestFolder}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
    file(GLOB clientSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/com/windows/*.cpp")
    kaputil_sources(compiled kaputil-com-client ${clientSources})
    add_executable(kaputil-com-client ${compiled})
    set_target_properties(kaputil-com-client PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${comFolder}")
    target_include_directories(kaputil-com-client PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(kaputil-com-client PRIVATE kaputil_com GTest::gtest_main version)
    kaputil_compile_rules(kaputil-com-client)
    add_dependencies(kaputil-com-client kaputil-com)

    # Components of other makers, which the module works with.
    file(GLOB otherSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/com/windows/other_makers/*.cpp")
    kaputil_sources(compiled kaputil-com-others ${otherSources})
    add_library(kaputil-com-others SHARED ${compiled}
                                          "${PROJECT_SOURCE_DIR}/tests/com/windows/other_makers/other_makers.def")
    set_target_properties(kaputil-com-others PROPERTIES PREFIX "" RUNTIME_OUTPUT_DIRECTORY "${comFolder}")
    target_link_libraries(kaputil-com-others PRIVATE kaputil_platform kaputil_ado)
    kaputil_compile_rules(kaputil-com-others)

    # Examples as clients build them, and what measures the adapter.
    file(GLOB windowsExamples CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/examples/windows/*.cpp")
    foreach(source IN LISTS windowsExamples)
        cmake_path(GET source STEM name)
        add_executable(example_windows_${name} "${source}")
        set_target_properties(example_windows_${name} PROPERTIES OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY
                                                                             "${comFolder}/examples")
        target_link_libraries(example_windows_${name} PRIVATE ole32 oleaut32 uuid)
        kaputil_compile_rules(example_windows_${name})
    endforeach()
    add_executable(kaputil-com-story "${PROJECT_SOURCE_DIR}/tests/com/windows/story/story.cpp")
    set_target_properties(kaputil-com-story PROPERTIES OUTPUT_NAME story RUNTIME_OUTPUT_DIRECTORY "${comFolder}")
    target_link_libraries(kaputil-com-story PRIVATE ole32 oleaut32 uuid)
    target_link_options(kaputil-com-story PRIVATE -municode)
    kaputil_compile_rules(kaputil-com-story)
    add_executable(kaputil-com-bench "${PROJECT_SOURCE_DIR}/bench/windows/adapter_bench.cpp")
    set_target_properties(kaputil-com-bench PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${comFolder}")
    target_link_libraries(kaputil-com-bench PRIVATE kaputil_com)
    kaputil_compile_rules(kaputil-com-bench)
endif()
