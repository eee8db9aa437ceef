#include "translated_database.hpp"

#include <stdexcept>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/plan/translator.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/functions/registration.hpp"
#include "engine/values/convert.hpp"
#include "tsql/parser.hpp"

namespace kap::engine::testing {

namespace {

void nextIdentity(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
    sqlite3_result_int64(context, ++*static_cast<std::int64_t*>(sqlite3_user_data(context)));
}

void nextRowVersion(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
    const std::int64_t next = ++*static_cast<std::int64_t*>(sqlite3_user_data(context));
    std::string bytes(8, '\0');
    bytes[7] = static_cast<char>(next);
    sqlite3_result_blob(context, bytes.data(), 8, SQLITE_TRANSIENT);
}

Value cell(sqlite3_stmt* statement, int column, const tsql::TypeSpec& type) {
    if (sqlite3_column_type(statement, column) == SQLITE_NULL) return {};
    if (tsql::isExact(type.type) && !tsql::isWideDecimal(type)) {
        return std::int64_t{sqlite3_column_int64(statement, column)};
    }
    if (tsql::isApproximate(type.type) || tsql::isDate(type.type))
        return sqlite3_column_double(statement, column);
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
    std::string text(bytes == nullptr ? "" : bytes,
                     static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
    if (storedAs(type) == ado::Storage::Binary) return Blob{std::move(text)};
    return text;
}

// As its type shows it: amounts with all their decimals, dates the ISO way, bytes as hexadecimal
// digits.
std::string shown(const Value& value, const tsql::TypeSpec& type) {
    if (isNull(value)) return "NULL";
    constexpr int kFullStyle = 121;
    int style = 0;
    if (tsql::isDate(type.type)) style = kFullStyle;
    if (tsql::isMoney(type.type)) style = 2;
    if (tsql::isBinary(type.type)) style = 1;
    return std::get<std::string>(
        convert(value, type, {tsql::SqlType::VarChar, tsql::kMaxLength}, Overlength::Cut, style));
}

}  // namespace

class TranslatedDatabase::Tables : public Catalogue {
public:
    [[nodiscard]] const Table* find(std::string_view name) const override {
        for (const Table& table : tables_) {
            if (sameName(table.name, name)) return &table;
        }
        return nullptr;
    }

    void apply(const Translation& translation) {
        for (const DroppedTable& dropped : translation.dropped) {
            std::erase_if(tables_, [&](const Table& table) { return table.name == dropped.name; });
        }
        if (translation.created) tables_.push_back(translation.created->table);
    }

private:
    std::deque<Table> tables_;
};

TranslatedDatabase::TranslatedDatabase() : tables_(std::make_unique<Tables>()) {
    if (sqlite3_open(":memory:", &connection_) != SQLITE_OK)
        throw std::runtime_error("cannot open");
    registerCollations(connection_);
    registerFunctions(connection_, slot_);
    sqlite3_create_function(connection_, "kap_identity", 1, SQLITE_UTF8, &identity_, nextIdentity,
                            nullptr, nullptr);
    sqlite3_create_function(connection_, "kap_rowversion", 0, SQLITE_UTF8, &rowVersion_,
                            nextRowVersion, nullptr, nullptr);
}

TranslatedDatabase::~TranslatedDatabase() {
    sqlite3_close(connection_);
}

Translation TranslatedDatabase::translation(const std::string& statement, Constants constants) {
    return translate(tsql::parseScript(statement).at(0), NameScope(*tables_), constants);
}

std::string TranslatedDatabase::run(const std::string& script) {
    std::string result;
    for (const tsql::Statement& statement : tsql::parseScript(script)) {
        const Translation translated = translate(statement, NameScope(*tables_));
        const std::string rows = execute(translated);
        tables_->apply(translated);
        if (translated.kind == StatementKind::Select) result = rows;
    }
    return result;
}

std::string TranslatedDatabase::error(const std::string& script) {
    try {
        return "no error: " + run(script);
    } catch (const tsql::ServerError& error) {
        return plain::text(error.number()) + ": " + error.message();
    }
}

std::string TranslatedDatabase::columns(const std::string& query) {
    std::string result;
    for (const ResultColumn& column : translation(query).columns) {
        if (!result.empty()) result += ", ";
        result += column.name + " " + tsql::typeText(column.type) +
                  (column.nullable ? " null" : " notnull");
    }
    return result;
}

std::string TranslatedDatabase::execute(const Translation& translation) {
    std::string result;
    for (const std::string& sql : translation.sql) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(connection_, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
            throw std::runtime_error(std::string(sqlite3_errmsg(connection_)) + " in " + sql);
        }
        const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(
            prepared, sqlite3_finalize);
        result = rows(statement.get(), translation);
    }
    return result;
}

std::string TranslatedDatabase::rows(sqlite3_stmt* statement, const Translation& translation) {
    std::string result;
    slot_.error.reset();
    int code = sqlite3_step(statement);
    for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
        if (!result.empty()) result += "\n";
        for (std::size_t i = 0; i < translation.columns.size(); ++i) {
            const tsql::TypeSpec& type = translation.columns[i].type;
            result += (i > 0 ? "|" : "") + shown(cell(statement, static_cast<int>(i), type), type);
        }
    }
    if (code != SQLITE_DONE) fail();
    return result;
}

void TranslatedDatabase::fail() {
    if (slot_.error) throw *slot_.error;
    throw std::runtime_error(sqlite3_errmsg(connection_));
}

}  // namespace kap::engine::testing
