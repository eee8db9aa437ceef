#pragma once

#include <string>

#include "engine/values/convert.hpp"
#include "engine/values/exact.hpp"

// The conversions of one family of types into another, which convert() chooses from.
namespace kap::engine {

// A wide whole number of the given scale, brought to an exact type.
[[nodiscard]] Value fitWide(Wide value, int scale, const tsql::TypeSpec& to, Rounding rounding,
                            const std::string& from);

// Error 8115.
[[noreturn]] void overflow(const std::string& from, const std::string& to);

// The name of a type in messages: "numeric" stands for decimal too.
[[nodiscard]] std::string messageName(const tsql::TypeSpec& type);

// A double rounded as float or real; error 8115 or 232 when it is beyond real.
[[nodiscard]] double fitApproximate(double value, const tsql::TypeSpec& to);

// A stored instant given another date type; error 242 beyond its range.
[[nodiscard]] double fitDate(double stored, const tsql::TypeSpec& from, const tsql::TypeSpec& to);

// From a text.
[[nodiscard]] Value exactFromText(const std::string& text, const tsql::TypeSpec& from,
                                  const tsql::TypeSpec& to);
[[nodiscard]] double approximateFromText(const std::string& text, const tsql::TypeSpec& from,
                                         const tsql::TypeSpec& to);
[[nodiscard]] std::string identifierFromText(const std::string& text);

// To a text; the length is applied by fitText.
[[nodiscard]] std::string textFromExact(Wide value, const tsql::TypeSpec& from,
                                        const tsql::TypeSpec& to, int style);
[[nodiscard]] std::string textFromApproximate(double value, const tsql::TypeSpec& from, int style);
[[nodiscard]] std::string fitText(std::string text, const tsql::TypeSpec& from,
                                  const tsql::TypeSpec& to, Overlength overlength);

// Binary.
[[nodiscard]] Blob binaryFromExact(std::int64_t value, const tsql::TypeSpec& from,
                                   const tsql::TypeSpec& to);
[[nodiscard]] std::int64_t integerFromBinary(const Blob& blob);
[[nodiscard]] Blob binaryFromText(const std::string& text, const tsql::TypeSpec& from, int style);
[[nodiscard]] std::string textFromBinary(const Blob& blob, const tsql::TypeSpec& to, int style);
[[nodiscard]] Blob fitBinary(Blob blob, const tsql::TypeSpec& to, Overlength overlength);

}  // namespace kap::engine
