#pragma once

#include <string>
#include <string_view>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/variant.hpp>

// Values in C++ text, with the types that decide how they are handed on.
namespace kap {

// What an expression gives.
struct CppType {
    VarType type = VarType::Variant;
    const ClassDescription* object = nullptr;  // of an Object whose class is known
    std::string_view enumeration = {};         // of a Long that is one
    bool literal = false;                      // of a String: u"..." itself
    bool whole = true;  // nothing has to be put in parentheses before a point is set behind it
};

struct CppValue {
    std::string text;
    CppType type;
};

// The conversion that makes a type of a Variant, and what variables of the type are declared as.
struct CppConversion {
    VarType type;
    std::string_view conversion;
    std::string_view declared;
};

// Null for a type that no variable of an example has.
[[nodiscard]] const CppConversion* cppConversionOf(VarType type);

// A text between quotes.
[[nodiscard]] std::string cppText(std::string_view text);

// The value in parentheses where a point behind it would mean a part of it only.
[[nodiscard]] std::string cppEnclosed(const CppValue& value);

// Whether a type is one of whole numbers.
[[nodiscard]] bool cppCounts(VarType type);

// The value as the type: converted where C++ would not do it.
[[nodiscard]] std::string cppConverted(const CppValue& value, VarType wanted);

// The value as a text object, also one that stands in quotes.
[[nodiscard]] std::string cppAsText(const CppValue& value);

// The value as the standard streams show it.
[[nodiscard]] std::string cppPrinted(const CppValue& value);

}  // namespace kap
