#include <kaputil/platform/profile_file.hpp>

#include <vector>

#include <kaputil/automation/error.hpp>

#include "base/unicode.hpp"
#include "platform/file_errors.hpp"
#include "platform/win32/wide.hpp"

// The system's own profile files, whose functions for 8-bit texts are the ones that programs of the
// same files have always used: what the system's code page lacks is lost.
namespace kap::platform {

String readProfile(std::u16string_view section, std::u16string_view key,
                   std::u16string_view otherwise, std::size_t capacity, std::u16string_view file) {
    if (capacity == 0 || file.empty()) {
        return {};
    }
    std::vector<char> value(capacity, ' ');
    const DWORD length = GetPrivateProfileStringA(
        ansi(section).c_str(), ansi(key).c_str(), ansi(unicode::trimRight(otherwise)).c_str(),
        value.data(), static_cast<DWORD>(value.size()), ansi(file).c_str());
    return fromAnsi({value.data(), length});
}

bool writeProfile(std::u16string_view section, std::u16string_view key, std::u16string_view value,
                  std::u16string_view file) {
    return !file.empty() &&
           WritePrivateProfileStringA(ansi(section).c_str(), ansi(key).c_str(), ansi(value).c_str(),
                                      ansi(file).c_str()) != FALSE;
}

void changeProfile(std::u16string_view section, std::u16string_view key, std::u16string_view value,
                   std::u16string_view file) {
    if (file.empty()) {
        throw AutomationError(errors::kBadFileName);
    }
    if (!writeProfile(section, key, value, file)) {
        throwFileError(lastError());
    }
}

}  // namespace kap::platform
