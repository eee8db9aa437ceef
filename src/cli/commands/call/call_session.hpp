#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

#include "cli/commands/call/call_words.hpp"

namespace kap::cli {

// What a call left behind.
struct CallOutcome {
    bool hasResult = false;  // the member gives one
    Variant result;
    std::vector<std::pair<std::string, Variant>> changed;  // by-reference arguments with new values
    std::optional<AutomationError> failure;                // what the member raised
};

// Several calls on one object.
//
// The first call says which: "CLASS.MEMBER" makes an object of the class, "MEMBER" alone is one of
// the predeclared general functions. Names between them are properties that lead on to other
// objects ("Errore.LeggiAttributo").
class CallSession {
public:
    // Makes one call and waits for nothing else. Throws UsageError when the names lead nowhere, and
    // whatever AutomationError the members on the way raise; what the last one raises is in the
    // outcome, beside the arguments that it had written by then.
    CallOutcome call(const GivenCall& given);

private:
    // The object that all calls begin with, and the names left behind it.
    std::vector<std::string> begin(const std::vector<std::string>& path);

    Ref<Object> object_;
};

}  // namespace kap::cli
