#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/catalog/object_names.hpp"
#include "engine/script/script_runner.hpp"
#include "tsql/parser.hpp"

// Temporary procedures, #p, which belong to the connection, and those of a group, p;2.
namespace kap::engine {

using tsql::ServerError;

std::shared_ptr<const Module> ScriptRunner::calledModule(const tsql::ObjectName& name, int number,
                                                         const Frame& frame) {
    const Transactions::ReadScope scope(transactions_);
    const std::string stored = followedName(name, frame.program.names().schema(), catalogue_);
    if (number > 1) {
        return catalogue_.findModule(StoredKind::NumberedProcedure, numberedName(stored, number));
    }
    auto found = catalogue_.findModule(StoredKind::Procedure, stored);
    return found != nullptr ? found : catalogue_.findModule(StoredKind::Function, stored);
}

void ScriptRunner::createTemporary(const tsql::CreateModuleStatement& node, int line) {
    const std::string& name = node.name.last();
    if (node.kind != tsql::ModuleKind::Procedure) {
        throw tsql::unsupported("temporary function or trigger", line);
    }
    if (name.starts_with("##")) throw tsql::unsupported("global temporary procedure", line);
    if (node.number > 1) throw tsql::unsupported("numbered temporary procedure", line);
    const bool there = catalogue_.findModule(StoredKind::Procedure, name) != nullptr;
    if (node.mustExist && !there) {
        throw ServerError(tsql::Message::InvalidObject, {name}, line).withState(6);
    }
    if (there && !node.replace) throw ServerError(tsql::Message::ObjectExists, {name}, line);
    {
        const Transactions::ReadScope scope(transactions_);
        checkColumns(node, name, "");
    }
    // The batch that holds the statement may go before the procedure does.
    tsql::Script own = tsql::parseScript(node.text, catalogue_.parseOptions(state_.quotedNames));
    StoredObject object{0, StoredKind::Procedure, name, "", node.text};
    object.quotedNames = state_.quotedNames;
    catalogue_.addTemporary(std::make_shared<const Module>(Module{
        std::move(object), std::move(std::get<tsql::CreateModuleStatement>(own.front().node))}));
}

// The first procedure of a group must be there before the others.
void ScriptRunner::storeNumbered(const tsql::CreateModuleStatement& node, const std::string& group,
                                 int line) {
    const auto first = catalogue_.findModule(StoredKind::Procedure, group);
    if (first == nullptr) {
        throw ServerError(tsql::Message::NoProcedureNumber,
                          {node.name.last(), plain::text(node.number)}, line);
    }
    store({0, StoredKind::NumberedProcedure, numberedName(first->object.name, node.number),
           first->object.name, node.text},
          node.replace, node.mustExist, line);
}

}  // namespace kap::engine
