// Writes what the COM module is made of beside its code, from the catalogue, into a folder: the
// interface descriptions, the resources and the manifests. A file that would stay the same is left
// alone, so that nothing is built again for it.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "com/interface_text.hpp"
#include "com/module_texts.hpp"
#include "com/type_libraries.hpp"

namespace {

void keep(const std::filesystem::path& file, const std::string& content) {
    std::ifstream before(file, std::ios::binary);
    const std::string held(std::istreambuf_iterator<char>(before), {});
    if (before && held == content) {
        return;
    }
    std::ofstream out(file, std::ios::binary);
    out << content;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: kaputil-describe FOLDER\n";
        return 2;
    }
    try {
        const std::filesystem::path folder = arguments[1];
        std::filesystem::create_directories(folder);
        for (const kap::com::TypeLibrary& types : kap::com::typeLibraries()) {
            keep(folder / (types.fileName.utf8() + ".idl"), kap::com::interfaceText(types));
        }
        keep(folder / "KapUtil26.rc", kap::com::resourceText());
        keep(folder / "KapUtil26.amd64.manifest", kap::com::manifestText("amd64"));
        keep(folder / "KapUtil26.x86.manifest", kap::com::manifestText("x86"));
    } catch (const std::exception& error) {
        std::cerr << "kaputil-describe: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
