#include <kaputil/automation/locale.hpp>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "automation/locale_of_texts.hpp"
#include "automation/locale_tables.hpp"

namespace kap {
namespace {

// "it_IT.UTF-8@euro" and "IT-it" as "it-it": lower case, '-' between, without the encoding.
std::string normalized(std::string_view name) {
    std::string out(name.substr(0, name.find_first_of(".@")));
    for (char& unit : out) {
        if (unit == '_') {
            unit = '-';
        } else if (unit >= 'A' && unit <= 'Z') {
            unit = static_cast<char>(unit + ('a' - 'A'));
        }
    }
    return out;
}

const Locale* findLocale(std::string_view name) {
    const std::string wanted = normalized(name);
    const auto locales = knownLocales();
    const auto exact = std::ranges::find_if(
        locales, [&](const Locale& locale) { return normalized(locale.name) == wanted; });
    if (exact != locales.end()) {
        return &*exact;
    }
    const std::string language = wanted.substr(0, wanted.find('-'));
    const auto same = std::ranges::find_if(locales, [&](const Locale& locale) {
        return normalized(locale.name).substr(0, locale.name.find('-')) == language;
    });
    return same == locales.end() ? nullptr : &*same;
}

// The first of these variables of the environment that names a known locale says it.
const Locale& localeOf(std::initializer_list<const char*> variables) {
    for (const char* variable : variables) {
        const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
        const Locale* known = value == nullptr ? nullptr : findLocale(value);
        if (known != nullptr) {
            return *known;
        }
    }
    return knownLocales().front();
}

const Locale& environmentLocale() {
    static const Locale& chosen = localeOf({"KAPUTIL_LOCALE", "LC_ALL", "LC_NUMERIC", "LANG"});
    return chosen;
}

thread_local const Locale* threadLocale = nullptr;

}  // namespace

const Locale& currentLocale() {
    return threadLocale != nullptr ? *threadLocale : environmentLocale();
}

const Locale& localeOfTexts() {
    static const Locale& chosen = localeOf({"KAPUTIL_LOCALE", "LC_ALL", "LC_MESSAGES", "LANG"});
    return threadLocale != nullptr ? *threadLocale : chosen;
}

void setLocale(std::string_view name) {
    const Locale* known = findLocale(name);
    if (known == nullptr) {
        throw AutomationError(errors::kInvalidArgument,
                              String(u"Unknown locale '") + String(name) + u"'.");
    }
    threadLocale = known;
}

LocaleScope::LocaleScope(std::string_view name) : previous_(threadLocale) {
    setLocale(name);
}

LocaleScope::~LocaleScope() {
    threadLocale = previous_;
}

CultureScope::CultureScope(const Locale& culture) noexcept
    : previous_(std::exchange(threadLocale, &culture)) {}

CultureScope::~CultureScope() {
    threadLocale = previous_;
}

}  // namespace kap
