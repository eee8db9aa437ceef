#include "cli/commands/shell/schema_names.hpp"

#include <algorithm>
#include <cstddef>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "cli/commands/shell/key_words.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::cli {
namespace {

bool beginsLike(std::string_view name, std::string_view word) {
    return name.size() >= word.size() && equalsIgnoringCase(name.substr(0, word.size()), word);
}

bool isNamed(std::string_view name, const std::string& lowerStatement) {
    return lowerStatement.find(asciiLower(name)) != std::string::npos;
}

std::vector<std::string> textsOf(ado::Connection& connection, const char* query) {
    std::vector<std::string> texts;
    for (const auto rows = migrate::opened(connection, query); !rows->Eof(); rows->MoveNext()) {
        texts.push_back(convert::toString(rows->Fields()->Item(0)->Value()).utf8());
    }
    return texts;
}

}  // namespace

void SchemaNames::learn() {
    if (known_) {
        return;
    }
    known_ = true;
    tables_.clear();
    programs_.clear();
    columns_.clear();
    try {
        tables_ = textsOf(connection_, "SELECT TABLE_NAME FROM INFORMATION_SCHEMA.TABLES");
        programs_ = textsOf(connection_, "SELECT ROUTINE_NAME FROM INFORMATION_SCHEMA.ROUTINES");
        const auto rows = migrate::opened(
            connection_, "SELECT TABLE_NAME, COLUMN_NAME FROM INFORMATION_SCHEMA.COLUMNS");
        for (; !rows->Eof(); rows->MoveNext()) {
            const auto fields = rows->Fields();
            columns_.push_back({convert::toString(fields->Item(0)->Value()).utf8(),
                                convert::toString(fields->Item(1)->Value()).utf8()});
        }
    } catch (const AutomationError&) {
        // Names that cannot be read are not offered.
    }
}

std::vector<std::string> SchemaNames::tables() {
    learn();
    return tables_;
}

std::vector<std::string> SchemaNames::columnsFor(std::string_view statement) const {
    const std::string text = asciiLower(statement);
    const bool any =
        std::ranges::any_of(tables_, [&](const std::string& name) { return isNamed(name, text); });
    std::vector<std::string> names;
    for (const Column& column : columns_) {
        if (!any || isNamed(column.table, text)) {
            names.push_back(column.name);
        }
    }
    return names;
}

std::vector<std::string> SchemaNames::completions(std::string_view before, std::string_view word) {
    learn();
    std::vector<std::string> found;
    const std::size_t point = word.rfind('.') + 1;  // 0 when there is none
    const std::string_view part = word.substr(point);
    const auto take = [&](std::string_view name) {
        if (beginsLike(name, part)) {
            found.push_back(std::string(word.substr(0, point)) + std::string(name));
        }
    };
    std::ranges::for_each(columnsFor(before), take);
    std::ranges::for_each(tables_, take);
    std::ranges::for_each(programs_, take);
    if (point == 0 && !part.empty()) {
        std::ranges::for_each(kKeyWords, take);
    }
    std::ranges::sort(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

}  // namespace kap::cli
