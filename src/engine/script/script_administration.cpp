#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/database_check.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"

// What a database's keeper asks for: how a query is gone about, a copy of the file, whether it is
// whole.
namespace kap::engine {

using tsql::ServerError;

namespace {

// Pages that are copied before other connections get their turn.
constexpr int kPagesAtOnce = 256;
constexpr int kNapMilliseconds = 5;

bool isBusy(int code) {
    return code == SQLITE_BUSY || code == SQLITE_LOCKED;
}

// Copies all pages of a connection's file into a new one.
void copyPages(sqlite3* from, const std::filesystem::path& to) {
    Database copy(to.string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    const std::unique_ptr<sqlite3_backup, decltype(&sqlite3_backup_finish)> work(
        sqlite3_backup_init(copy.handle(), "main", from, "main"), &sqlite3_backup_finish);
    if (work == nullptr) throw lastError(copy.handle());
    int code = SQLITE_OK;
    while (code == SQLITE_OK || isBusy(code)) {
        code = sqlite3_backup_step(work.get(), kPagesAtOnce);
        if (isBusy(code)) sqlite3_sleep(kNapMilliseconds);
    }
    if (code != SQLITE_DONE) throw lastError(copy.handle());
}

// The file of a copy while it is made. Neither it nor what SQLite keeps beside a file is there
// before this object or behind it; a whole one has got its own name by then.
class UnfinishedCopy {
public:
    explicit UnfinishedCopy(std::filesystem::path file) : file_(std::move(file)) {
        for (const char* ending : {"", "-wal", "-shm", "-journal"}) {
            all_.push_back(file_);
            all_.back() += ending;
        }
        remove();
    }
    UnfinishedCopy(const UnfinishedCopy&) = delete;
    UnfinishedCopy& operator=(const UnfinishedCopy&) = delete;
    ~UnfinishedCopy() { remove(); }

    [[nodiscard]] const std::filesystem::path& file() const noexcept { return file_; }

private:
    void remove() const noexcept {
        for (const std::filesystem::path& each : all_) {
            std::error_code ignored;
            std::filesystem::remove(each, ignored);
        }
    }

    std::filesystem::path file_;
    std::vector<std::filesystem::path> all_;
};

struct Faults {
    std::string structure;            // the first of them; empty: none
    std::vector<std::string> values;  // rows that break their own rules are copied as they are
};

// What is wrong with a copy, as it lies on its disk.
Faults faultsOf(const std::filesystem::path& file) {
    Options options;
    options.source = file.string();
    options.readOnly = true;
    FileConnection copy(options);
    Counters counters(copy.database(), copy.errorSlot());
    SchemaCatalogue catalogue(copy.database(), counters);
    Faults faults;
    copy.database().run("BEGIN");
    checkDatabase(copy, catalogue, counters,
                  [&](tsql::Message message, const std::string& finding) {
                      if (message != tsql::Message::StructureFault) {
                          faults.values.push_back(finding);
                      } else if (faults.structure.empty()) {
                          faults.structure = finding;
                      }
                  });
    copy.database().run("COMMIT");
    return faults;
}

// What SHOWPLAN tells of a plan: texts as they are, and one whose steps SQLite tells.
struct ExplainedPlan {
    std::vector<std::string> shown;
    std::string explained;
};

struct ExplainedTexts {
    ExplainedPlan operator()(const QueryPlan& plan) const { return {{}, plan.sql}; }
    ExplainedPlan operator()(const AssignmentPlan& plan) const { return {{}, plan.sql}; }
    ExplainedPlan operator()(const WritePlan& plan) const { return {{}, plan.sql}; }
    ExplainedPlan operator()(const MergePlan& plan) const { return {plan.find, {}}; }
    ExplainedPlan operator()(const InsteadPlan& plan) const { return {plan.fill, {}}; }
    ExplainedPlan operator()(const CreateTablePlan& plan) const { return {plan.sql, {}}; }
    ExplainedPlan operator()(const SelectIntoPlan& plan) const {
        ExplainedPlan result{plan.table.sql, {}};
        result.shown.push_back(plan.fill);
        return result;
    }
    ExplainedPlan operator()(const CreateIndexPlan& plan) const { return {plan.sql, {}}; }
    ExplainedPlan operator()(const DropTablesPlan& plan) const { return {plan.sql, {}}; }
    ExplainedPlan operator()(const DropIndexesPlan& plan) const { return {plan.sql, {}}; }
    ExplainedPlan operator()(const TruncatePlan& plan) const { return {plan.sql, {}}; }
};

}  // namespace

// SET SHOWPLAN_TEXT ON: each statement answers its plan, one step a row, indented by depth.
void ScriptRunner::explain(Frame& frame, Instruction& instruction,
                           std::vector<ado::Result>& results) {
    const Transactions::ReadScope scope(transactions_);
    const StatementPlan made = translate(*instruction.statement, frame.program.names());
    ResultColumn column;
    column.name = "StmtText";
    column.type = {tsql::SqlType::NVarChar, tsql::kMaxLength};
    ado::Result result;
    result.columns = columnInfos({column}, catalogue_);
    ado::ColumnStore& steps = result.rows.emplace_back();
    const ExplainedPlan plan = std::visit(ExplainedTexts(), made.kind);
    for (const std::string& sql : plan.shown)
        steps.appendBytes(sql);
    if (!plan.explained.empty()) {
        std::map<std::int64_t, std::size_t> depths;
        PreparedStatement step(connection_.handle(), "EXPLAIN QUERY PLAN " + plan.explained);
        while (step.step()) {
            constexpr std::size_t kIndent = 2;
            const std::int64_t parent = step.integer(1);
            const std::size_t depth = parent == 0 ? 0 : depths[parent] + 1;
            depths[step.integer(0)] = depth;
            steps.appendBytes(std::string(depth * kIndent, ' ') + step.text(3));
        }
    }
    results.push_back(std::move(result));
}

// The copy holds what was committed when it was finished; others go on writing meanwhile. It has
// another name until it is whole, which is looked at.
void ScriptRunner::backup(const std::string& file, bool replace, int line) {
    const auto failed = [&](const std::string& reason) {
        return ServerError(tsql::Message::CannotOpenBackupDevice, {file, reason}, line);
    };
    const std::filesystem::path path(file);
    std::error_code error;
    if (file.empty()) throw failed("no file is named");
    if (std::filesystem::exists(path, error) && !replace) {
        throw failed("the file is there already; WITH INIT replaces it");
    }
    const UnfinishedCopy unfinished(std::filesystem::path(file + ".part"));
    Faults faults;
    try {
        copyPages(connection_.handle(), unfinished.file());
        faults = faultsOf(unfinished.file());
        if (!faults.structure.empty()) {
            throw std::runtime_error("the copy is not whole: " + faults.structure);
        }
    } catch (const std::exception& failure) {
        throw failed(failure.what());
    }
    std::filesystem::rename(unfinished.file(), path, error);
    if (error) throw failed(error.message());
    for (const std::string& fault : faults.values) {
        note("Table error: " + fault);
    }
    note("BACKUP DATABASE copied database '" + catalogue_.databaseName() + "' to '" + file + "'.");
}

// DBCC CHECKDB.
void ScriptRunner::checkDatabase() {
    const Transactions::ReadScope scope(transactions_);
    std::int64_t errors = 0;
    engine::checkDatabase(connection_, catalogue_, counters_,
                          [&](tsql::Message message, const std::string& finding) {
                              ++errors;
                              report(ServerError(message, {finding}));
                          });
    note("CHECKDB found 0 allocation errors and " + plain::text(errors) +
         " consistency errors in database '" + catalogue_.databaseName() + "'.");
}

}  // namespace kap::engine
