#include "platform/paths.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "base/code_page.hpp"
#include "base/unicode.hpp"
#include "platform/folder_names.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

fs::path withOneSeparator(std::u16string_view path) {
    constexpr std::size_t kLongestPath = 4096;  // of the systems that this is built for
    const auto utf8 = path.size() < kLongestPath ? unicode::utf8(path) : std::nullopt;
    if (!utf8 || utf8->find('\0') != std::string::npos) {
        throw AutomationError(errors::kBadFileName);
    }
    std::u8string text(utf8->begin(), utf8->end());
    std::ranges::replace(text, u8'\\', u8'/');
    return text;
}

bool isThere(const fs::path& path) {
    std::error_code ignored;  // what cannot be looked at is not found
    return fs::exists(fs::symlink_status(path, ignored));
}

// The first name in the folder's alphabetical order, so that the answer is always the same.
std::optional<fs::path> namedAlike(const fs::path& folder, const fs::path& name) {
    const String wanted = pathText(name);
    std::optional<fs::path> found;
    std::error_code error;
    for (fs::path& candidate : namesIn(folder.empty() ? fs::path(".") : folder, error)) {
        if (unicode::sameName(pathText(candidate), wanted) && (!found || candidate < *found)) {
            found = std::move(candidate);
        }
    }
    return found;
}

}  // namespace

fs::path locate(std::u16string_view path) {
    fs::path exact = withOneSeparator(path);
    if (isThere(exact)) {
        return exact;
    }
    fs::path found = exact.root_path();
    bool missing = false;  // below what is not there nothing is looked for
    for (const fs::path& name : exact.relative_path()) {
        if (!missing && !name.empty() && !isThere(found / name)) {
            const auto alike = namedAlike(found, name);
            missing = !alike;
            found /= alike.value_or(name);
        } else {
            found /= name;
        }
    }
    return found;
}

String pathText(const fs::path& path) {
    const std::u8string text = path.u8string();
    const std::string bytes(text.begin(), text.end());
    if (auto utf16 = unicode::utf16(bytes)) {
        return std::move(*utf16);
    }
    return decode(CodePage::Windows1252, bytes);
}

}  // namespace kap::platform
