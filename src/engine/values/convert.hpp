#pragma once

#include "engine/values/value.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// What to do with a text or bytes longer than the target.
enum class Overlength {
    Cut,     // CAST and CONVERT drop what does not fit
    Refuse,  // writing a column fails with 8152, unless only trailing blanks are lost
};

// A value of one type as a value of another, both in storage form, by the server's rules.
//
// NULL stays NULL. `style` is that of CONVERT. Throws tsql::ServerError (line 0) with the server's
// number and text: 245, 248, 244, 8114, 235 for texts that are no such number; 241, 242, 295 for
// dates; 220, 232, 8115 for values beyond the target; 8169 for identifiers; 8152 as `overlength`
// says; 529 when the types do not convert at all.
[[nodiscard]] Value convert(const Value& value, const tsql::TypeSpec& from,
                            const tsql::TypeSpec& to, Overlength overlength, int style = 0);

// A whole number of the given scale brought to an exact type, rounded half away from zero and
// checked against its range. `from` names the source in the message of error 8115 ("expression" or
// a type).
[[nodiscard]] Value fitExact(std::int64_t value, int scale, const tsql::TypeSpec& to,
                             const std::string& from);

enum class ConversionRule { Implicit, ExplicitOnly, Never };

// Whether the server converts between the types by itself, on request only, or not at all.
[[nodiscard]] ConversionRule conversionRule(tsql::SqlType from, tsql::SqlType to);

}  // namespace kap::engine
