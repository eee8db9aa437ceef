# The module `kaputil_sqlite`, which programs with an SQLite of their own load to read files of the library. It calls
# SQLite through the table that such a program hands over: what the library has for SQLite is compiled for it once more,
# with host_functions.hpp in front, and linked with nothing of SQLite.
set(sourceFolder "${PROJECT_SOURCE_DIR}/src")
file(GLOB extensionSources CONFIGURE_DEPENDS "${sourceFolder}/sqlite_extension/*.cpp"
     "${sourceFolder}/engine/sqlite/functions/*.cpp" "${sourceFolder}/engine/values/*.cpp")
list(FILTER extensionSources EXCLUDE REGEX "/optimizations\\.cpp$")
list(APPEND extensionSources "${sourceFolder}/engine/sqlite/collation.cpp" "${sourceFolder}/engine/sqlite/sqlite.cpp"
     "${sourceFolder}/engine/sqlite/flat_text.cpp" "${sourceFolder}/engine/sqlite/sqlite_stack.cpp"
     "${sourceFolder}/engine/sqlite/time_limit.cpp"
     "${sourceFolder}/platform/gzip/gzip.cpp" "${sourceFolder}/platform/posix/digest.cpp"
     "${sourceFolder}/platform/posix/loaded_library.cpp" "${sourceFolder}/platform/posix/zlib.cpp")

kaputil_sources(compiled kaputil-sqlite ${extensionSources})
add_library(kaputil-sqlite MODULE ${compiled})
set_target_properties(
    kaputil-sqlite
    PROPERTIES PREFIX ""
               OUTPUT_NAME kaputil_sqlite
               LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}"
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
target_include_directories(kaputil-sqlite PRIVATE "${PROJECT_SOURCE_DIR}/include" "${sourceFolder}")
target_compile_options(kaputil-sqlite PRIVATE "SHELL:-include sqlite_extension/host_functions.hpp")
target_link_libraries(kaputil-sqlite PRIVATE kaputil_data kaputil_tsql kaputil_automation kaputil_base
                                             kaputil_nettle_headers kaputil_zlib_headers ${CMAKE_DL_LIBS})
kaputil_compile_rules(kaputil-sqlite)
target_link_options(kaputil-sqlite PRIVATE -Wl,--exclude-libs,ALL -Wl,--gc-sections)
if(NOT KAPUTIL_SANITIZE)
    target_link_options(kaputil-sqlite PRIVATE -Wl,-z,defs)
endif()
install(TARGETS kaputil-sqlite LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT sqlite OPTIONAL)
