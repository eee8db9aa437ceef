# The command line, `kaputil`, from src/cli. Without sources there is no such target.
file(GLOB_RECURSE commandSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/cli/*.cpp")
if(commandSources)
    if(NOT WIN32) # where their headers were found before
        find_package(CLI11 REQUIRED)
        find_package(nlohmann_json REQUIRED)
    endif()
    kaputil_sources(compiled kaputil-cli ${commandSources})
    add_executable(kaputil-cli ${compiled})
    set_target_properties(kaputil-cli PROPERTIES OUTPUT_NAME kaputil)
    target_include_directories(kaputil-cli PRIVATE "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(kaputil-cli PRIVATE kaputil CLI11::CLI11 nlohmann_json::nlohmann_json)
    kaputil_compile_rules(kaputil-cli)
    if(WIN32)
        target_link_options(kaputil-cli PRIVATE -municode)
    endif()
    kaputil_precompile(kaputil-cli kaputil_headers)
    install(TARGETS kaputil-cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" OPTIONAL)
    # Named after the command: that is how the shell finds it when it is first needed.
    install(FILES "${PROJECT_SOURCE_DIR}/completions/kaputil.bash" RENAME kaputil
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
endif()
