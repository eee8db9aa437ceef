# The Python package `kaputil`, in <build>/python, for the interpreter that `python3` names.
set(pythonSourceFolder "${PROJECT_SOURCE_DIR}/src/python")
set(pythonPackage "${PROJECT_BINARY_DIR}/python/kaputil")

find_program(python3Program python3 REQUIRED)
execute_process(COMMAND "${python3Program}" -c "import sys; print(sys.executable)" OUTPUT_VARIABLE python3Path
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED KAPUTIL_PYTHON_FOUND AND NOT KAPUTIL_PYTHON_FOUND STREQUAL python3Path)
    # What is remembered and built is of another interpreter.
    file(REMOVE_RECURSE "${pythonPackage}")
    get_cmake_property(remembered CACHE_VARIABLES)
    list(FILTER remembered INCLUDE REGEX "^_?Python_")
    foreach(variable IN LISTS remembered)
        unset(${variable} CACHE)
    endforeach()
endif()
set(KAPUTIL_PYTHON_FOUND "${python3Path}" CACHE INTERNAL "The interpreter of the last configuration")
set(Python_EXECUTABLE "${python3Path}")
set(PYBIND11_FINDPYTHON ON)
find_package(Python 3.8 REQUIRED COMPONENTS Interpreter Development.Module)
find_package(pybind11 REQUIRED)

file(GLOB pythonSources CONFIGURE_DEPENDS "${pythonSourceFolder}/*.cpp")
kaputil_sources(compiled kaputil-python-extension ${pythonSources})
pybind11_add_module(kaputil-python-extension MODULE NO_EXTRAS ${compiled})
set_target_properties(kaputil-python-extension PROPERTIES OUTPUT_NAME _native LIBRARY_OUTPUT_DIRECTORY
                                                                              "${pythonPackage}")
target_include_directories(kaputil-python-extension PRIVATE "${PROJECT_SOURCE_DIR}/src")
target_link_libraries(kaputil-python-extension PRIVATE kaputil_whole)
kaputil_compile_rules(kaputil-python-extension)

# The package's own Python code beside the extension.
file(GLOB pythonFiles CONFIGURE_DEPENDS "${pythonSourceFolder}/package/kaputil/*.py*"
     "${pythonSourceFolder}/package/kaputil/py.typed")
foreach(file IN LISTS pythonFiles)
    cmake_path(GET file FILENAME name)
    configure_file("${file}" "${pythonPackage}/${name}" COPYONLY)
endforeach()

# What the interpreter needs around it to run the package from the build. It has no C++ library and no sanitizers of its
# own: where the package has them, the sanitizers' runtime must be loaded first, and with it the C++ library, whose throw
# it looks for when it starts. The interpreter frees nothing at its end, so leaks are not counted.
set(KAPUTIL_PYTHON_ENVIRONMENT "PYTHONPATH=${PROJECT_BINARY_DIR}/python")
if(KAPUTIL_SANITIZE)
    foreach(runtime IN ITEMS asan stdc++)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=lib${runtime}.so OUTPUT_VARIABLE path
                        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        list(APPEND pythonRuntimes "${path}")
    endforeach()
    list(JOIN pythonRuntimes ":" pythonRuntimes)
    list(APPEND KAPUTIL_PYTHON_ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0" "LD_PRELOAD=${pythonRuntimes}")
endif()

# Stub files for editors and type checkers, written from the catalogue by the package itself.
set(pythonStubs "${pythonPackage}/__init__.pyi" "${pythonPackage}/classes.pyi")
add_custom_command(
    OUTPUT ${pythonStubs}
    COMMAND "${CMAKE_COMMAND}" -E env ${KAPUTIL_PYTHON_ENVIRONMENT} "${Python_EXECUTABLE}"
            "${pythonSourceFolder}/make_stubs.py" "${pythonPackage}"
    DEPENDS kaputil-python-extension "${pythonSourceFolder}/make_stubs.py" ${pythonFiles}
    COMMENT "Writing the stubs of the Python package"
    VERBATIM)
add_custom_target(kaputil-python ALL DEPENDS ${pythonStubs})

set(KAPUTIL_PYTHON_DIR "" CACHE STRING "The folder to install the Python package into, below the prefix unless absolute")
configure_file("${PROJECT_SOURCE_DIR}/cmake/install_python_package.cmake.in"
               "${PROJECT_BINARY_DIR}/install_python_package.cmake" @ONLY)
install(SCRIPT "${PROJECT_BINARY_DIR}/install_python_package.cmake" COMPONENT python)
