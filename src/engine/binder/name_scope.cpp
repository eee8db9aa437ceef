#include "engine/binder/name_scope.hpp"

#include <algorithm>
#include <utility>

#include "tsql/server_error.hpp"

namespace kap::engine {

const WriteSettings NameScope::kNoSettings;

const Variable* NameScope::variable(std::string_view name) const {
    const auto found =
        std::find_if(variables_.begin(), variables_.end(),
                     [&](const Variable& each) { return sameName(each.name, name); });
    return found == variables_.end() ? nullptr : &*found;
}

const Variable& NameScope::declare(const std::string& name, const tsql::TypeSpec& type, int line) {
    if (variable(name) != nullptr || localTable(name) != nullptr) {
        throw tsql::ServerError(tsql::Message::DuplicateVariable, {name}, line);
    }
    return variables_.emplace_back(Variable{name, type, static_cast<int>(variables_.size())});
}

const Table* NameScope::localTable(std::string_view name) const {
    const auto found =
        std::find_if(localTables_.begin(), localTables_.end(),
                     [&](const LocalTable& each) { return sameName(each.name, name); });
    return found == localTables_.end() ? nullptr : &found->table;
}

void NameScope::setReadOnly(std::string_view name) {
    for (LocalTable& each : localTables_) {
        if (sameName(each.name, name)) each.readOnly = true;
    }
}

void NameScope::addLocalTable(LocalTable table) {
    localTables_.push_back(std::move(table));
}

}  // namespace kap::engine
