#include "drivers/odbc/dml_writer.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/ascii.hpp"

namespace kap::ado::odbc {
namespace {

// The place of a column among others; none: it is not there.
std::optional<std::size_t> placeIn(const std::vector<RowColumn>& columns, const std::string& name) {
    const auto found = std::ranges::find_if(
        columns, [&](const RowColumn& column) { return equalsIgnoringCase(column.name, name); });
    if (found == columns.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - columns.begin());
}

}  // namespace

DmlWriter::DmlWriter(const ServerDialect& dialect, const RowPlan& plan, const TableFacts& facts,
                     std::string table, const std::vector<bool>& nulls)
    : dialect_(dialect), plan_(plan), facts_(facts), table_(std::move(table)), nulls_(nulls) {}

bool DmlWriter::namesKey(const RowPlan& plan, const TableFacts& facts) {
    return !facts.key.empty() && std::ranges::all_of(facts.key, [&](const std::string& part) {
        return placeIn(plan.criteria(), part).has_value();
    });
}

RowText DmlWriter::reading() const {
    RowText made;
    RowStatement row = select();
    row.criteria = criteria(made.parameters);
    made.text = textOf(row);
    return made;
}

RowText DmlWriter::counting() const {
    RowText made;
    RowStatement row{RowPlan::Kind::Read, table_};
    row.answer = {"COUNT(*)"};
    row.criteria = criteria(made.parameters);
    made.text = textOf(row);
    return made;
}

RowText DmlWriter::writing() const {
    RowText made;
    made.text = textOf(statement(made.parameters));
    return made;
}

RowText DmlWriter::returning() const {
    RowText made;
    made.text = dialect_.returning(statement(made.parameters));
    return made;
}

RowText DmlWriter::selecting(bool transaction) const {
    RowText made;
    const RowStatement row = statement(made.parameters);
    const std::optional<RowText> second = readingBack();
    made.text = dialect_.selecting(row, second ? second->text : std::string(), transaction);
    if (second) {
        std::ranges::copy(second->parameters, std::back_inserter(made.parameters));
    }
    return made;
}

std::optional<RowText> DmlWriter::readingBack() const {
    if (plan_.kind() == RowPlan::Kind::Delete || plan_.readBack().empty()) {
        return std::nullopt;
    }
    RowText made;
    RowStatement row = select();
    const auto identity = std::ranges::find_if(facts_.columns, &TableFacts::Column::identity);
    const std::string given = dialect_.lastIdentity();
    if (plan_.kind() == RowPlan::Kind::Insert && identity != facts_.columns.end() &&
        !given.empty()) {
        row.criteria = " WHERE " + dialect_.quoted(identity->name) + " = " + given;
        made.text = textOf(row);
        return made;
    }
    // The key as it has been written, or as it was.
    for (const std::string& part : facts_.key) {
        if (const auto written = placeIn(plan_.values(), part)) {
            addCriterion(plan_.values()[*written], {Parameter::Of::Values, *written}, row.criteria,
                         made.parameters);
        } else if (const auto found = placeIn(plan_.criteria(), part)) {
            addCriterion(plan_.criteria()[*found], {Parameter::Of::Criteria, *found}, row.criteria,
                         made.parameters);
        } else {
            return std::nullopt;
        }
    }
    if (facts_.key.empty()) {
        return std::nullopt;
    }
    made.text = textOf(row);
    return made;
}

std::vector<std::string> DmlWriter::quoted(const std::vector<RowColumn>& columns) const {
    std::vector<std::string> made;
    made.reserve(columns.size());
    for (const RowColumn& column : columns) {
        made.push_back(dialect_.quoted(column.name));
    }
    return made;
}

RowStatement DmlWriter::select() const {
    RowStatement row{RowPlan::Kind::Read, table_};
    row.answer = quoted(plan_.readBack());
    return row;
}

RowStatement DmlWriter::statement(std::vector<Parameter>& parameters) const {
    RowStatement row{plan_.kind(), table_, quoted(plan_.values())};
    row.answer = quoted(plan_.readBack());
    for (std::size_t i = 0; i < plan_.values().size(); ++i) {
        const TableFacts::Column* fact = facts_.find(plan_.values()[i].name);
        row.values.push_back(fact == nullptr ? "?" : dialect_.mark(fact->type));
        parameters.push_back({Parameter::Of::Values, i});
    }
    row.criteria = criteria(parameters);
    return row;
}

std::string DmlWriter::criteria(std::vector<Parameter>& parameters) const {
    std::string text;
    for (std::size_t i = 0; i < plan_.criteria().size(); ++i) {
        addCriterion(plan_.criteria()[i], {Parameter::Of::Criteria, i}, text, parameters);
    }
    return text;
}

void DmlWriter::addCriterion(const RowColumn& column, const Parameter& parameter, std::string& text,
                             std::vector<Parameter>& parameters) const {
    const std::string name = dialect_.quoted(column.name);
    text += text.empty() ? " WHERE " : " AND ";
    if (parameter.of == Parameter::Of::Criteria && nulls_[parameter.place]) {
        text += name + " IS NULL";
        return;
    }
    const TableFacts::Column* fact = facts_.find(column.name);
    const Comparison comparison =
        dialect_.comparison(name, fact == nullptr ? AnnouncedType{} : fact->type);
    text += comparison.text;
    parameters.insert(parameters.end(), static_cast<std::size_t>(comparison.marks), parameter);
}

}  // namespace kap::ado::odbc
