#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/rows_as_text.hpp"
#include "engine/values/xml_text.hpp"

// FOR XML and FOR JSON, and the functions that read XML and JSON.
namespace kap::engine {

namespace {

// SQLite zeroes it at the start of a group.
struct WriterState {
    RowsAsTextWriter* writer;
};

ErrorSlot& markupSlotOf(sqlite3_context* context) {
    return *static_cast<ErrorSlot*>(sqlite3_user_data(context));
}

// kap_rows_as_text(format, values...)
void stepRows(sqlite3_context* context, int count, sqlite3_value** values) {
    auto* state =
        static_cast<WriterState*>(sqlite3_aggregate_context(context, sizeof(WriterState)));
    if (state == nullptr) {
        sqlite3_result_error_nomem(context);
        return;
    }
    atCBorder(context, markupSlotOf(context), [&] {
        if (state->writer == nullptr) {
            state->writer = rowsWriter(unpackRowFormat(textBytes(values[0]))).release();
        }
        std::vector<Value> row;
        row.reserve(static_cast<std::size_t>(count) - 1);
        for (int i = 1; i < count; ++i)
            row.push_back(argumentValue(values[i]));
        state->writer->add(row);
    });
}

// SQLite calls this also when a step has failed, so the writer is always freed.
void finishRows(sqlite3_context* context) {
    auto* state = static_cast<WriterState*>(sqlite3_aggregate_context(context, 0));
    if (state == nullptr || state->writer == nullptr) {
        sqlite3_result_null(context);
        return;
    }
    const std::unique_ptr<RowsAsTextWriter> writer(std::exchange(state->writer, nullptr));
    atCBorder(context, markupSlotOf(context), [&] { setResult(context, writer->finish()); });
}

Value orNullText(std::optional<std::string> text) {
    return text ? Value(std::move(*text)) : Value();
}

Value xmlValueOf(const Arguments& arguments) {
    return orNullText(xmlValueAt(arguments.text(0), arguments.text(1)));
}

Value isJsonText(const Arguments& arguments) {
    return std::int64_t{isJson(arguments.text(0)) ? 1 : 0};
}

Value jsonValueOf(const Arguments& arguments) {
    return orNullText(jsonScalarAt(arguments.text(0), arguments.text(1)));
}

Value jsonQueryOf(const Arguments& arguments) {
    return orNullText(jsonStructureAt(arguments.text(0), arguments.text(1)));
}

// kap_json_modify(json, path, value, type of the value, whether it is JSON)
Value jsonModified(const Arguments& arguments) {
    if (arguments.isNull(0) || arguments.isNull(1)) return {};
    constexpr int kValue = 2;
    const tsql::TypeSpec type = arguments.type(3);
    std::optional<std::string> value;
    if (!arguments.isNull(kValue)) {
        const Markup markup = arguments.integer(4) != 0 ? Markup::Json : Markup::None;
        value = jsonOf(arguments.value(kValue, type), type, markup);
    }
    return modifiedJson(arguments.text(0), arguments.text(1), value);
}

}  // namespace

void registerMarkupFunctions(Registrar& registrar) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(registrar.connection(), "kap_rows_as_text", -1, kFlags,
                                   &registrar.slot(), nullptr, stepRows, finishRows,
                                   nullptr) != SQLITE_OK) {
        throw lastError(registrar.connection());
    }
    constexpr int kModifyArguments = 5;
    registrar.scalar("kap_xml_value", 2, xmlValueOf);
    registrar.scalar("kap_isjson", 1, isJsonText);
    registrar.scalar("kap_json_value", 2, jsonValueOf);
    registrar.scalar("kap_json_query", 2, jsonQueryOf);
    registrar.scalar("kap_json_modify", kModifyArguments, jsonModified, OnNull::Call);
}

}  // namespace kap::engine
