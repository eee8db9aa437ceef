#include "cli/commands/sql/json_rows.hpp"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <kaputil/automation/error.hpp>

#include "migrate/cell_text.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::ptrdiff_t kExactDigits = 15;

// The number itself where a reader that keeps numbers as doubles gets it back exactly.
Json numberOrText(const std::string& text, bool exactType) {
    const auto digits = std::ranges::count_if(text, [](char c) { return c >= '0' && c <= '9'; });
    if (exactType && digits > kExactDigits) {
        return text;
    }
    return Json::parse(text);
}

Json valueOf(const ado::Field& field) {
    const auto text = migrate::cellText(field);
    if (!text) {
        return nullptr;
    }
    const auto type = field.Type();
    if (type == ado::DataTypeEnum::adBoolean) {
        return *text == "1";
    }
    if (!migrate::isNumber(field)) {
        return *text;
    }
    const bool exactType =
        type != ado::DataTypeEnum::adSingle && type != ado::DataTypeEnum::adDouble;
    return numberOrText(*text, exactType);
}

std::vector<Ref<ado::Field>> fieldsOf(const ado::Recordset& answer) {
    std::vector<Ref<ado::Field>> fields;
    if (answer.State() == ado::ObjectStateEnum::adStateOpen) {
        const auto all = answer.Fields();
        for (std::int32_t i = 0; i < all->Count(); ++i) {
            fields.push_back(all->Item(i));
        }
    }
    return fields;
}

Json describe(const ado::Field& field) {
    return {{"name", field.Name().utf8()},
            {"type", migrate::typeNameOf(field)},
            {"size", field.DefinedSize()}};
}

Json rowOf(const std::vector<Ref<ado::Field>>& fields) {
    Json row = Json::array();
    for (const auto& field : fields) {
        row.push_back(valueOf(*field));
    }
    return row;
}

}  // namespace

void printJson(std::ostream& out, ado::Recordset& answer) {
    const auto fields = fieldsOf(answer);
    Json columns = Json::array();
    for (const auto& field : fields) {
        columns.push_back(describe(*field));
    }
    // Row by row, so that a large answer is not held twice.
    out << R"({"columns":)" << columns.dump() << R"(,"rows":[)";
    try {
        if (!fields.empty()) {
            for (bool first = true; out && !answer.Eof(); answer.MoveNext(), first = false) {
                out << (first ? "" : ",") << rowOf(fields).dump();
            }
        }
    } catch (const AutomationError&) {
        out << "],\"rowsAffected\":null,\"complete\":false}\n";
        throw;
    }
    const auto written = answer.rowsAffected();
    out << R"(],"rowsAffected":)" << (written ? Json(*written) : Json(nullptr)).dump() << "}\n";
}

}  // namespace kap::cli
