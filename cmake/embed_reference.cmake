# cmake -DFOLDER=... -DOUTPUT=... -P embed_reference.cmake
#
# Writes a source with the text of every file of a folder in it, by name: what referenceTexts() gives.
file(GLOB files "${FOLDER}/*.txt")
list(SORT files)
set(source "// Made by the build of src/catalogue/reference; not to be edited.\n#include \"catalogue/reference_texts.hpp\"\n\n")
string(APPEND source "namespace kap {\nnamespace {\n\nconstexpr ReferenceText kReferenceTexts[] = {\n")
foreach(file IN LISTS files)
    cmake_path(GET file STEM name)
    file(READ "${file}" text)
    string(APPEND source "    {\"${name}\", R\"kap(${text})kap\"},\n")
endforeach()
string(APPEND source "};\n\n}  // namespace\n\nstd::span<const ReferenceText> referenceTexts() {\n")
string(APPEND source "    return kReferenceTexts;\n}\n\n}  // namespace kap\n")
file(WRITE "${OUTPUT}" "${source}")
