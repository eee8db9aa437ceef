#include "catalogue/cpp_values.hpp"

#include <array>

namespace kap {
namespace {

constexpr std::array kConversions = std::to_array<CppConversion>({
    {VarType::Boolean, "toBoolean", "bool"},
    {VarType::Byte, "toByte", "std::uint8_t"},
    {VarType::Integer, "toInteger", "std::int16_t"},
    {VarType::Long, "toLong", "std::int32_t"},
    {VarType::Single, "toSingle", "float"},
    {VarType::Double, "toDouble", "double"},
    {VarType::Currency, "toCurrency", "kap::Currency"},
    {VarType::Date, "toDate", "kap::Date"},
    {VarType::String, "toString", "kap::String"},
    {VarType::Variant, "", "kap::Variant"},
});

}  // namespace

std::string cppText(std::string_view text) {
    std::string made = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\') {
            made += '\\';
        }
        made += unit;
    }
    return made + '"';
}

const CppConversion* cppConversionOf(VarType type) {
    for (const CppConversion& one : kConversions) {
        if (one.type == type) {
            return &one;
        }
    }
    return nullptr;
}

std::string cppEnclosed(const CppValue& value) {
    return value.type.whole ? value.text : "(" + value.text + ")";
}

bool cppCounts(VarType type) {
    return type == VarType::Integer || type == VarType::Long;
}

std::string cppConverted(const CppValue& value, VarType wanted) {
    const bool numbers = cppCounts(value.type.type) || value.type.type == VarType::Double;
    const bool fits = value.type.type == wanted || (numbers && wanted != VarType::String);
    const CppConversion* conversion = cppConversionOf(wanted);
    if (fits || conversion == nullptr || conversion->conversion.empty()) {
        return value.text;
    }
    return "kap::convert::" + std::string(conversion->conversion) + "(" + value.text + ")";
}

std::string cppAsText(const CppValue& value) {
    return value.type.literal ? "kap::String(" + value.text + ")"
                              : cppConverted(value, VarType::String);
}

std::string cppPrinted(const CppValue& value) {
    if (value.type.literal) {
        return value.text.substr(1);  // the same without its mark
    }
    if (!value.type.enumeration.empty()) {
        return "static_cast<int>(" + value.text + ")";
    }
    if (cppCounts(value.type.type)) {
        return cppEnclosed(value);
    }
    if (value.type.type == VarType::String) {
        return cppEnclosed(value) + ".utf8()";
    }
    return "kap::convert::toString(" + value.text + ").utf8()";
}

}  // namespace kap
