# The command line, `kaputil`, from src/cli. Without sources there is no such target.
file(GLOB_RECURSE commandSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/cli/*.cpp")
if(commandSources)
    if(NOT WIN32) # where their headers were found before
        find_package(CLI11 REQUIRED)
        find_package(nlohmann_json REQUIRED)
        pkg_check_modules(libedit IMPORTED_TARGET libedit) # without it the shell reads plain lines
    endif()
    kaputil_sources(compiled kaputil-cli ${commandSources})
    add_executable(kaputil-cli ${compiled})
    set_target_properties(kaputil-cli PROPERTIES OUTPUT_NAME kaputil)
    target_include_directories(kaputil-cli PRIVATE "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(kaputil-cli PRIVATE kaputil_whole CLI11::CLI11 nlohmann_json::nlohmann_json)
    kaputil_compile_rules(kaputil-cli)
    if(TARGET PkgConfig::libedit)
        include(KapUtilLoaded)
        kaputil_headers_of(kaputil_editor_headers PkgConfig::libedit)
        kaputil_check_loaded(src/cli/commands/shell/line_editor.cpp)
        target_link_libraries(kaputil-cli PRIVATE kaputil_editor_headers)
        target_compile_definitions(kaputil-cli PRIVATE KAPUTIL_LIBEDIT)
    endif()
    if(WIN32)
        target_link_options(kaputil-cli PRIVATE -municode)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT KAPUTIL_SANITIZE)
        # The names of the C++ runtime are half of what a start looks up; scripts start the command once a statement.
        target_link_options(kaputil-cli PRIVATE -static-libstdc++ -static-libgcc)
    endif()
    if(KAPUTIL_SANITIZE)
        # As for tests: optimizing the templates that read arguments takes longer than all that the program does. What is
        # precompiled is optimized.
        target_compile_options(kaputil-cli PRIVATE -O0)
    else()
        kaputil_precompile(kaputil-cli kaputil_headers)
    endif()
    install(TARGETS kaputil-cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools OPTIONAL)
    # Named after the command: that is how the shell finds it when it is first needed.
    install(FILES "${PROJECT_SOURCE_DIR}/completions/kaputil.bash" RENAME kaputil
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
    if(NOT CMAKE_CROSSCOMPILING)
        # The command line writes its own pages of the manual and the scripts that complete it in other shells.
        set(pages "${PROJECT_BINARY_DIR}/man")
        set(completions "${PROJECT_BINARY_DIR}/completions")
        file(MAKE_DIRECTORY "${completions}")
        add_custom_command(
            OUTPUT "${pages}/kaputil.1" "${completions}/_kaputil" "${completions}/kaputil.fish"
            COMMAND kaputil-cli manual --folder "${pages}" --language en
            COMMAND kaputil-cli manual --folder "${pages}/it" --language it
            COMMAND kaputil-cli completion zsh --language en > "${completions}/_kaputil"
            COMMAND kaputil-cli completion fish --language en > "${completions}/kaputil.fish"
            DEPENDS kaputil-cli
            COMMENT "Writing the pages of the manual"
            VERBATIM)
        add_custom_target(kaputil-cli-pages ALL DEPENDS "${pages}/kaputil.1")
        install(DIRECTORY "${pages}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools OPTIONAL
                FILES_MATCHING PATTERN "*.1" PATTERN "it" EXCLUDE)
        install(DIRECTORY "${pages}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man3" COMPONENT tools OPTIONAL
                FILES_MATCHING PATTERN "*.3" PATTERN "it" EXCLUDE)
        install(DIRECTORY "${pages}/it/" DESTINATION "${CMAKE_INSTALL_MANDIR}/it/man1" COMPONENT tools OPTIONAL
                FILES_MATCHING PATTERN "*.1")
        install(DIRECTORY "${pages}/it/" DESTINATION "${CMAKE_INSTALL_MANDIR}/it/man3" COMPONENT tools OPTIONAL
                FILES_MATCHING PATTERN "*.3")
        install(FILES "${completions}/_kaputil" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions"
                COMPONENT tools OPTIONAL)
        install(FILES "${completions}/kaputil.fish" DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d"
                COMPONENT tools OPTIONAL)
    endif()
endif()
