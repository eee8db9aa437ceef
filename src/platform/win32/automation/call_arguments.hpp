#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/variant.hpp>

#include "platform/win32/automation/few.hpp"

namespace kap::platform::automation {

// What a client passes to one call, as the library's arguments; and what the member assigns to
// them, back in the client's variables.
class CallArguments {
public:
    // `member` is null for an object that does not describe its members: each by-reference argument
    // may be assigned then, and none may be named. Arguments behind a member's own are for the
    // default member of what it gives, and may be assigned, too. `assigns` is whether the call
    // assigns a property, whose value is the last positional argument. Raises 448 for a name that
    // the member has not, and 13 for a value that no client of automation passes.
    CallArguments(const DISPPARAMS& passed, const MemberDescription* member, bool assigns);

    [[nodiscard]] Arguments arguments() noexcept;

    // Stores what the member has assigned, and nothing else: a variable that it left alone may have
    // changed otherwise meanwhile. Raises 6 and 13 for what the type of a variable does not take,
    // when the others have been stored.
    void writeBack();
    // The same after the member has raised, which is what the caller has to see: a variable whose
    // type does not take its value keeps what it held.
    void writeBackWhatFits();

private:
    // An argument that the member may assign, with the value that it came with.
    struct Assignable {
        const VARIANT* variable;
        const Variant* value;
        Variant before;
    };

    void add(const VARIANT& from, bool assignable);
    void addNamed(const VARIANT& from, DISPID parameter);
    template <class Refused>
    void storeAssigned(Refused refused);
    [[nodiscard]] bool isAssignable(std::size_t parameter) const noexcept;

    static constexpr std::size_t kFew = 8;
    const MemberDescription* member_;
    std::size_t positional_;
    Few<Variant, kFew> values_;  // positional ones first
    Few<Assignable, kFew> assignable_;
    std::vector<Arguments::Named> named_;
};

}  // namespace kap::platform::automation
