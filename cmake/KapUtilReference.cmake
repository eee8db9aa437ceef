# The documentation of the classes (src/catalogue/reference, one file a class) goes into the library as it is written.
set(referenceFolder "${PROJECT_SOURCE_DIR}/src/catalogue/reference")
set(referenceSource "${PROJECT_BINARY_DIR}/reference_texts.cpp")
file(GLOB referenceFiles CONFIGURE_DEPENDS "${referenceFolder}/*.txt")
add_custom_command(
    OUTPUT "${referenceSource}"
    COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${referenceFolder}" "-DOUTPUT=${referenceSource}" -P
            "${PROJECT_SOURCE_DIR}/cmake/embed_reference.cmake"
    DEPENDS ${referenceFiles} "${PROJECT_SOURCE_DIR}/cmake/embed_reference.cmake"
    COMMENT "Writing the texts of the reference"
    VERBATIM)
target_sources(kaputil_catalogue PRIVATE "${referenceSource}")
