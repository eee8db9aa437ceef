#pragma once

#include <string>

#include <kaputil/catalogue/documentation.hpp>

// The documentation of classes and members as Python's help() shows it, in the language of the
// locale. They are made when a class is first used, so they are to cost little.
namespace kap::python {

[[nodiscard]] std::string docstringOf(const ClassDescription& description);

// `attribute` says that the member is read and assigned rather than called.
[[nodiscard]] std::string docstringOf(const ClassDescription& owner,
                                      const MemberDescription& member, bool attribute);

// The example of a class, or of a member, with what it begins with; empty when there is none.
[[nodiscard]] std::string exampleOf(const ClassDescription& description);
[[nodiscard]] std::string exampleOf(const ClassDescription& owner, const MemberDescription& member);

}  // namespace kap::python
