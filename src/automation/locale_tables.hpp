#pragma once

#include <span>

#include <kaputil/automation/locale.hpp>

namespace kap {

// Every locale that the library knows; the first is the one of most users, and the first of
// a language stands for the language.
[[nodiscard]] std::span<const Locale> knownLocales() noexcept;

// More countries by whose rules values are written and read where a call names them; no program
// runs in one of these. The texts of truth values are English.
[[nodiscard]] std::span<const Locale> otherCultures() noexcept;

// Sets this thread's locale, which may be one of either, for as long as the object lives.
class CultureScope {
public:
    explicit CultureScope(const Locale& culture) noexcept;
    ~CultureScope();
    CultureScope(const CultureScope&) = delete;
    CultureScope& operator=(const CultureScope&) = delete;

private:
    const Locale* previous_;
};

}  // namespace kap
