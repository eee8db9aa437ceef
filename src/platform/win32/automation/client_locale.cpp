#include "platform/win32/automation/client_locale.hpp"

#include <array>
#include <cstdlib>
#include <string>

#include <kaputil/frame/error.hpp>
#include <kaputil/frame/locale.hpp>

#include "platform/win32/wide.hpp"

namespace kap::platform::automation {
namespace {

constexpr const char* kOwnLocale = "it-IT";

bool isOverruled() {
    static const bool overruled = std::getenv("KAPUTIL_LOCALE") != nullptr;
    return overruled;
}

std::string nameOf(LCID locale) {
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    if (LCIDToLocaleName(locale, name.data(), static_cast<int>(name.size()), 0) == 0) {
        return kOwnLocale;
    }
    return String(narrowView(name.data())).utf8();
}

}  // namespace

void useClientLocale(LCID locale) {
    constexpr LCID kNone = 0xFFFFFFFF;
    thread_local LCID used = kNone;
    if (locale == used || isOverruled()) {
        return;
    }
    used = locale;
    try {
        setLocale(nameOf(ConvertDefaultLocale(locale)));
    } catch (const AutomationError&) {
        setLocale(kOwnLocale);  // a language that the library has no table for
    }
}

}  // namespace kap::platform::automation
