# The Python package `kaputil`, in <build>/python, for the interpreter that `python3` names.
find_program(python3Program python3 REQUIRED)
execute_process(COMMAND "${python3Program}" -c "import sys; print(sys.executable)" OUTPUT_VARIABLE python3Path
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(Python_EXECUTABLE "${python3Path}")
set(PYBIND11_FINDPYTHON ON)
find_package(Python REQUIRED COMPONENTS Interpreter Development.Module)
find_package(pybind11 REQUIRED)

file(GLOB pythonSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/python/*.cpp")
set(pythonPackage "${PROJECT_BINARY_DIR}/python/kaputil")
pybind11_add_module(kaputil-python MODULE NO_EXTRAS ${pythonSources})
set_target_properties(kaputil-python PROPERTIES OUTPUT_NAME _native LIBRARY_OUTPUT_DIRECTORY "${pythonPackage}")
target_include_directories(kaputil-python PRIVATE "${PROJECT_SOURCE_DIR}/src")
target_link_libraries(kaputil-python PRIVATE kaputil)
kaputil_compile_rules(kaputil-python)

# The package's own Python code beside the extension.
file(GLOB pythonFiles CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/python/package/kaputil/*.py")
foreach(file IN LISTS pythonFiles)
    cmake_path(GET file FILENAME name)
    configure_file("${file}" "${pythonPackage}/${name}" COPYONLY)
endforeach()

install(TARGETS kaputil-python LIBRARY DESTINATION "${Python_SITEARCH}/kaputil")
install(FILES ${pythonFiles} DESTINATION "${Python_SITEARCH}/kaputil")
