#include "fuzz/reader_support.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <kaputil/ado/recordset.hpp>

#include "base/quoting.hpp"

namespace kap::fuzz {

Ref<ado::Connection> freshDatabase() {
    static int count = 0;
    auto opened = make<ado::Connection>();
    opened->Open(String("Provider=KapLocal;Data Source=:memory:run" + std::to_string(++count)));
    opened->Execute(kTables);
    opened->setCommandTimeout(2);
    return opened;
}

Variant answerOf(const Ref<ado::Connection>& connection, std::u16string_view query) {
    return connection->Execute(query)->Fields()->Item(0)->Value();
}

std::u16string quoted(std::u16string_view text) {
    return u"N" + enclosed(text, u'\'', u'\'');
}

std::string bytesOf(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
    }
    return bytes;
}

const std::filesystem::path& folder() {
    static const std::filesystem::path made = [] {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kaputil-fuzz-XXXXXX").string();
        require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(folder(), ignored);
        });
        return std::filesystem::path(pattern);
    }();
    return made;
}

std::filesystem::path fileWith(std::string_view name, std::string_view content) {
    std::filesystem::path file = folder() / name;
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "fuzz: %s\n", what);
        std::abort();
    }
}

}  // namespace kap::fuzz
