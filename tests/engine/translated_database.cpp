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

// The texts of a plan, in the order in which they are run.
struct PlanTexts {
    using Texts = std::vector<std::string>;
    Texts operator()(const QueryPlan& plan) const { return {plan.sql}; }
    Texts operator()(const AssignmentPlan& plan) const { return {plan.sql}; }
    Texts operator()(const WritePlan& plan) const { return {plan.sql}; }
    Texts operator()(const MergePlan& /*plan*/) const {
        throw std::runtime_error("a MERGE needs a session");
    }
    Texts operator()(const InsteadPlan& /*plan*/) const {
        throw std::runtime_error("a trigger needs a session");
    }
    Texts operator()(const CreateTablePlan& plan) const { return plan.sql; }
    Texts operator()(const SelectIntoPlan& plan) const {
        Texts texts = plan.table.sql;
        texts.push_back(plan.fill);
        return texts;
    }
    Texts operator()(const CreateIndexPlan& plan) const { return plan.sql; }
    Texts operator()(const DropTablesPlan& plan) const { return plan.sql; }
    Texts operator()(const DropIndexesPlan& plan) const { return plan.sql; }
    Texts operator()(const TruncatePlan& plan) const { return plan.sql; }
};

}  // namespace

class TranslatedDatabase::Tables : public Catalogue {
public:
    [[nodiscard]] const Table* find(std::string_view name) const override {
        for (const Table& table : tables_) {
            if (sameName(table.name, name)) return &table;
        }
        return nullptr;
    }

    void apply(const StatementPlan& plan) {
        if (const auto* drops = std::get_if<DropTablesPlan>(&plan.kind)) {
            for (const DroppedTable& dropped : drops->dropped) {
                std::erase_if(tables_,
                              [&](const Table& table) { return table.name == dropped.name; });
            }
        } else if (const auto* creates = std::get_if<CreateTablePlan>(&plan.kind)) {
            tables_.push_back(creates->created.table);
        } else if (const auto* fills = std::get_if<SelectIntoPlan>(&plan.kind)) {
            tables_.push_back(fills->table.created.table);
        }
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

StatementPlan TranslatedDatabase::plan(const std::string& statement, Constants constants) {
    return translate(tsql::parseScript(statement).at(0), NameScope(*tables_), constants);
}

std::string TranslatedDatabase::run(const std::string& script) {
    std::string result;
    for (const tsql::Statement& statement : tsql::parseScript(script)) {
        const StatementPlan plan = translate(statement, NameScope(*tables_));
        const std::string rows = execute(plan);
        tables_->apply(plan);
        if (std::holds_alternative<QueryPlan>(plan.kind)) result = rows;
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
    for (const ResultColumn& column : planOf<QueryPlan>(query).columns) {
        if (!result.empty()) result += ", ";
        result += column.name + " " + tsql::typeText(column.type) +
                  (column.nullable ? " null" : " notnull");
    }
    return result;
}

std::string TranslatedDatabase::execute(const StatementPlan& plan) {
    const auto* query = std::get_if<QueryPlan>(&plan.kind);
    const std::vector<ResultColumn> columns =
        query == nullptr ? std::vector<ResultColumn>() : query->columns;
    std::string result;
    for (const std::string& sql : std::visit(PlanTexts(), plan.kind)) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(connection_, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
            throw std::runtime_error(std::string(sqlite3_errmsg(connection_)) + " in " + sql);
        }
        const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(
            prepared, sqlite3_finalize);
        result = rows(statement.get(), columns);
    }
    return result;
}

std::string TranslatedDatabase::rows(sqlite3_stmt* statement,
                                     const std::vector<ResultColumn>& columns) {
    std::string result;
    slot_.error.reset();
    int code = sqlite3_step(statement);
    for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
        if (!result.empty()) result += "\n";
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const tsql::TypeSpec& type = columns[i].type;
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
