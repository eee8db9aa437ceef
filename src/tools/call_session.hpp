#pragma once

#include <string>
#include <utility>
#include <vector>

#include <kaputil/frame/object.hpp>
#include <kaputil/frame/variant.hpp>

#include "tools/call_words.hpp"

namespace kap::tools {

// What a call left behind.
struct CallOutcome {
    bool hasResult = false;  // the member gives one
    Variant result;
    std::vector<std::pair<std::string, Variant>> changed;  // by-reference arguments with new values
};

// Several calls on one object.
//
// The first call says which: "CLASS.MEMBER" makes an object of the class, "MEMBER" alone is one of
// the predeclared general functions. Names between them are properties that lead on to other
// objects ("Errore.LeggiAttributo").
class CallSession {
public:
    // Makes one call and waits for nothing else. Throws UsageError when the names lead nowhere, and
    // whatever AutomationError the members raise.
    CallOutcome call(const GivenCall& given);

private:
    // The object that all calls begin with, and the names left behind it.
    std::vector<std::string> begin(const std::vector<std::string>& path);

    Ref<Object> object_;
};

}  // namespace kap::tools
