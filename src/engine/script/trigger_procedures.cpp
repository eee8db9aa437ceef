#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/script/script_runner.hpp"

// What is set about triggers: whether they fire one another, and which come first and last.
namespace kap::engine {

using tsql::ServerError;

void ScriptRunner::setDatabaseSetting(std::string_view setting, bool on) {
    Transactions::WriteScope scope(transactions_);
    StoredObject object;
    object.kind = StoredKind::Setting;
    object.name = setting;
    object.enabled = on;
    catalogue_.stored().put(object);
    catalogue_.invalidate();
    scope.keep();
}

// sp_dboption database, 'recursive triggers', 'true'; sp_configure 'nested triggers', 0.
bool ScriptRunner::configureTriggers(const std::string& procedure,
                                     const std::vector<std::string>& arguments) {
    const std::size_t option = procedure == "sp_configure" ? 0 : 1;
    const std::string_view setting =
        procedure == "sp_configure" ? kNestedTriggers : kRecursiveTriggers;
    if (arguments.size() < option + 2 || !equalsIgnoringCase(arguments[option], setting)) {
        return false;
    }
    const std::string value = asciiLower(arguments[option + 1]);
    setDatabaseSetting(setting, value == "1" || value == "true" || value == "on");
    return true;
}

// sp_settriggerorder 'trigger', 'First', 'UPDATE'.
void ScriptRunner::setTriggerOrder(const std::vector<std::string>& arguments, int line) {
    constexpr std::array kParameters{"@triggername", "@order", "@stmttype"};
    if (arguments.size() < kParameters.size()) {
        throw ServerError(tsql::Message::ParameterNotSupplied,
                          {"sp_settriggerorder", kParameters.at(arguments.size())}, line);
    }
    Transactions::WriteScope scope(transactions_);
    const std::string name = objectNamed(catalogue_, arguments[0]);
    const auto trigger = catalogue_.findModule(StoredKind::Trigger, name);
    if (trigger == nullptr) {
        throw ServerError(tsql::Message::NoSuchObject, {arguments[0], catalogue_.databaseName()},
                          line);
    }
    const std::string order = asciiLower(arguments[1]);
    const std::string event = asciiUpper(arguments[2]);
    const std::uint8_t bit = event == "INSERT"   ? tsql::kOnInsert
                             : event == "UPDATE" ? tsql::kOnUpdate
                             : event == "DELETE" ? tsql::kOnDelete
                                                 : 0;
    const tsql::CreateModuleStatement& made = trigger->definition;
    if (bit == 0 || made.insteadOf || (made.events & bit) == 0 ||
        (order != "first" && order != "last" && order != "none")) {
        throw ServerError(tsql::Message::WrongTriggerOrder, {arguments[2], arguments[0]}, line);
    }
    const std::string own = trigger->object.name + "/" + event;
    for (const StoredObject& other : catalogue_.objects()) {
        const bool taken = other.kind == StoredKind::TriggerOrder && order == other.text &&
                           sameName(other.parent, trigger->object.parent) &&
                           other.name.ends_with("/" + event) && !sameName(other.name, own);
        if (!taken) continue;
        throw ServerError(tsql::Message::TriggerOrderTaken, {order, arguments[2]}, line);
    }
    if (order == "none") {
        catalogue_.stored().remove(StoredKind::TriggerOrder, own);
    } else {
        StoredObject object;
        object.kind = StoredKind::TriggerOrder;
        object.name = own;
        object.parent = trigger->object.parent;
        object.text = order;
        catalogue_.stored().put(object);
    }
    catalogue_.invalidate();
    scope.keep();
}

}  // namespace kap::engine
