# The modules that need nothing of the host, compiled and not linked: a cross compiler shows that they are portable.
#
# Of the Unicode library its header is enough. It is the host's, alone in a folder of its own: the host's other headers
# must not be found.
find_file(utf8procHeader utf8proc.h REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(unicodeFolder "${PROJECT_BINARY_DIR}/unicode")
file(COPY "${utf8procHeader}" DESTINATION "${unicodeFolder}")

foreach(module IN ITEMS frame tsql core util)
    kaputil_module(${module})
    target_include_directories(kaputil_${module} SYSTEM PRIVATE "${unicodeFolder}")
endforeach()
