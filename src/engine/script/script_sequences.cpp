#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/quoting.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/sequences.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/script/procedure_arguments.hpp"
#include "engine/script/script_runner.hpp"
#include "tsql/parser.hpp"

// Sequences and synonyms.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr const char* kRangeProcedure = "sp_sequence_get_range";

// The parameters of sp_sequence_get_range; those behind the first two are written.
constexpr std::array kRangeParameters{
    "@sequence_name",     "@range_size",         "@range_first_value",  "@range_last_value",
    "@range_cycle_count", "@sequence_increment", "@sequence_min_value", "@sequence_max_value"};

// "[dbo].[t]".
std::string bracketedName(const tsql::ObjectName& name) {
    std::string text;
    for (const std::string& part : name.parts) {
        if (&part != &name.parts.front()) text += '.';
        if (part.empty()) continue;
        text += inBrackets(part);
    }
    return text;
}

}  // namespace

void ScriptRunner::defineSequence(const tsql::SequenceStatement& node, int line) {
    if (node.name.last().starts_with('#')) {
        throw ServerError(tsql::Message::WrongSequenceName, {node.name.text()}, line);
    }
    Transactions::WriteScope scope(transactions_);
    if (!node.alters) {
        const Sequence made =
            sequenceOf(node, newModuleName(node.name, "CREATE SEQUENCE", line), line);
        store(storedObject(made), false, false, line);
        counters_.addSequence(made);
        scope.keep();
        return;
    }
    const std::string stored = resolvedName(node.name, kDefaultSchema, catalogue_);
    const Sequence* known = catalogue_.findSequence(stored);
    if (known == nullptr) {
        const bool other = !stored.empty() && catalogue_.knows(stored);
        throw other ? ServerError(tsql::Message::NoSequence, {node.name.text()}, line)
                    : ServerError(tsql::Message::InvalidObject, {node.name.text()}, line);
    }
    const Sequence changed = altered(*known, node, line);
    const auto last = counters_.lastIdentityOf(changed.name);
    if (!node.restarts && last && !changed.holds(*last)) {
        throw ServerError(tsql::Message::CurrentOutOfRange, {plain::text(*last), node.name.last()},
                          line);
    }
    counters_.changeSequence(changed, node.restarts);
    store(storedObject(changed), true, true, line);
    scope.keep();
}

// What it stands for need not be there yet.
void ScriptRunner::createSynonym(const tsql::CreateSynonymStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    const std::string name = newModuleName(node.name, "CREATE SYNONYM", line);
    constexpr std::size_t kWithServer = 4;
    if (node.target.parts.size() == kWithServer && !node.target.parts.front().empty()) {
        throw tsql::unsupported("synonym of another server (" + node.target.text() + ")", line);
    }
    store({0, StoredKind::Synonym, name, "", bracketedName(node.target)}, false, false, line);
    kept_.clear();
    scope.keep();
}

// sp_sequence_get_range @sequence_name, @range_size, @range_first_value OUTPUT...
void ScriptRunner::drawRange(Frame& frame, Instruction& instruction,
                             const tsql::ExecuteStatement& node) {
    const int line = instruction.line;
    std::array<const tsql::Argument*, kRangeParameters.size()> given{};
    std::array<std::size_t, kRangeParameters.size()> parts{};
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        const std::size_t place = placeOfArgument(node, i, kRangeParameters, kRangeProcedure, line);
        given.at(place) = &node.arguments[i];
        parts.at(place) = i;
    }
    // Their order: the name, the size, the first number of the range.
    for (std::size_t i = 0; i < 3; ++i) {
        if (given.at(i) != nullptr && given.at(i)->value != nullptr) continue;
        throw ServerError(tsql::Message::ParameterNotSupplied,
                          {kRangeProcedure, kRangeParameters.at(i)}, line);
    }
    const std::string name = textOf(frame, instruction, parts[0], *given[0]->value);
    const Value size = evaluate(frame, instruction, parts[1], *given[1]->value, {SqlType::BigInt});
    const std::int64_t count = wholeOr(size, 0);
    if (count <= 0) {
        throw ServerError(tsql::Message::WrongRangeParameter, {"@range_size"}, line);
    }
    Transactions::WriteScope scope(transactions_);
    const Sequence* sequence = catalogue_.findSequence(objectNamed(catalogue_, name));
    if (sequence == nullptr) throw ServerError(tsql::Message::InvalidObject, {name}, line);
    const Counters::Drawn drawn = counters_.draw(*sequence, count);
    const std::array<std::int64_t, kRangeParameters.size()> values{0,
                                                                   0,
                                                                   drawn.first,
                                                                   drawn.last,
                                                                   drawn.cycles,
                                                                   sequence->increment,
                                                                   sequence->minimum,
                                                                   sequence->maximum};
    scope.keep();
    for (std::size_t i = 2; i < given.size(); ++i) {
        if (given.at(i) == nullptr || !given.at(i)->output || given.at(i)->value == nullptr) {
            continue;
        }
        const auto* variable = std::get_if<tsql::VariableReference>(&given.at(i)->value->node);
        if (variable == nullptr) throw ServerError(tsql::Message::OutputOfConstant, {}, line);
        setVariable(frame, variable->name, values.at(i), {SqlType::BigInt}, line);
    }
    if (!node.resultVariable.empty()) {
        setVariable(frame, node.resultVariable, std::int64_t{0}, {SqlType::Int}, line);
    }
}

}  // namespace kap::engine
