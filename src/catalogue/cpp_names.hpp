#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/class_description.hpp>

// What the classes and their members are called in C++.
namespace kap {

// A class that programs make by name and the headers declare: "kap::ado::Connection". Empty for one
// that no public header has.
struct CppClass {
    std::string name;
    const ClassDescription* description = nullptr;
};
[[nodiscard]] CppClass cppClassNamed(std::string_view programmaticName);

// A member's name, which is another where C++ reserves it.
[[nodiscard]] std::string cppMemberName(std::string_view member);

// The enumeration that a property of data access, or a parameter of its members, is of; empty when
// it is of none. `member` is empty for what is so called in every member.
[[nodiscard]] std::string_view cppEnumerationOf(const ClassDescription& owner,
                                                std::string_view member, std::string_view name);

// "kap::ado::CursorTypeEnum::adOpenStatic" of 3; a number that has no name is cast.
[[nodiscard]] std::string cppEnumerator(std::string_view enumeration, std::int32_t value);

}  // namespace kap
