#include "platform/win32/automation/client_locale.hpp"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>

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

// The locale that each thread uses. Every call asks for it, and the system answers sooner than the
// compiler's thread_local, which looks its storage up. Without a cell left in the system all
// threads seem to be new, which only takes longer.
class UsedLocales {
public:
    UsedLocales() = default;
    UsedLocales(const UsedLocales&) = delete;
    UsedLocales& operator=(const UsedLocales&) = delete;
    ~UsedLocales() { TlsFree(cell_); }

    [[nodiscard]] bool isThisThreads(LCID locale) const {
        return TlsGetValue(cell_) == held(locale);
    }
    void keep(LCID locale) { TlsSetValue(cell_, held(locale)); }

private:
    // Never null, which is what new threads have.
    static void* held(LCID locale) {
        return reinterpret_cast<void*>(static_cast<std::uintptr_t>(locale) + 1);
    }

    DWORD cell_ = TlsAlloc();
};

}  // namespace

void useClientLocale(LCID locale) {
    static UsedLocales used;
    if (used.isThisThreads(locale) || isOverruled()) {
        return;
    }
    used.keep(locale);
    try {
        setLocale(nameOf(ConvertDefaultLocale(locale)));
    } catch (const AutomationError&) {
        setLocale(kOwnLocale);  // a language that the library has no table for
    }
}

}  // namespace kap::platform::automation
