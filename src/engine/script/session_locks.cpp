#include "base/ascii.hpp"
#include "engine/executor/function_arguments.hpp"
#include "engine/script/session_functions.hpp"

// APPLOCK_MODE and APPLOCK_TEST.
namespace kap::engine {

// Of APPLOCK_MODE(principal, resource, owner) and APPLOCK_TEST(principal, resource, mode, owner);
// null for what names no mode or owner.
Value SessionFunctions::ofLocks(SystemValue value, const Arguments& arguments) const {
    const bool tests = value == SystemValue::ApplicationLockTest;
    const std::string resource = textAt(arguments, 2);
    const std::string owner = textAt(arguments, tests ? 4 : 3);
    const bool session = equalsIgnoringCase(owner, "session");
    if (resource.empty() || (!session && !equalsIgnoringCase(owner, "transaction"))) return {};
    ApplicationLocks& locks = scripts_.applicationLocks();
    if (tests) {
        const auto mode = ApplicationLocks::modeNamed(textAt(arguments, 3));
        return mode ? Value(std::int64_t{locks.isFree(resource, *mode) ? 1 : 0}) : Value();
    }
    using Owner = ApplicationLocks::Owner;
    return std::string(ApplicationLocks::nameOf(
        locks.held(resource, session ? Owner::Session : Owner::Transaction)));
}

}  // namespace kap::engine
