#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/server_identity.hpp"
#include "engine/catalog/view_rows.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/script/script_runner.hpp"

// What the session shows of its settings: sys.dm_exec_sessions and DBCC USEROPTIONS.
namespace kap::engine {
namespace {

using tsql::SqlType;
using views::flag;
using views::number;
using views::text;

std::string orderOf(const DateSettings& dates) {
    static constexpr std::pair<DateOrder, const char*> kOrders[] = {
        {DateOrder::Mdy, "mdy"}, {DateOrder::Dmy, "dmy"}, {DateOrder::Ymd, "ymd"},
        {DateOrder::Ydm, "ydm"}, {DateOrder::Myd, "myd"}, {DateOrder::Dym, "dym"}};
    for (const auto& [order, name] : kOrders) {
        if (order == dates.order) return name;
    }
    return {};
}

const char* languageOf(const DateSettings& dates) {
    return dates.italian ? "Italiano" : "us_english";
}

const char* levelName(IsolationLevel level) {
    static constexpr std::array kNames{"unspecified",     "read uncommitted", "read committed",
                                       "repeatable read", "serializable",     "snapshot"};
    return kNames.at(static_cast<std::size_t>(level));
}

}  // namespace

// Of this session: others are not known to it.
SystemRows ScriptRunner::sessionRows() const {
    SystemRows view{{{"session_id", views::kSmallInt},
                     {"host_name", views::kName},
                     {"program_name", views::kName},
                     {"login_name", views::kName},
                     {"status", views::kShort},
                     {"is_user_process", views::kBit},
                     {"text_size", views::kInt},
                     {"language", views::kName},
                     {"date_format", {SqlType::NVarChar, 3}},
                     {"date_first", views::kSmallInt},
                     {"quoted_identifier", views::kBit},
                     {"arithabort", views::kBit},
                     {"ansi_null_dflt_on", views::kBit},
                     {"ansi_warnings", views::kBit},
                     {"ansi_padding", views::kBit},
                     {"ansi_nulls", views::kBit},
                     {"concat_null_yields_null", views::kBit},
                     {"transaction_isolation_level", views::kSmallInt},
                     {"lock_timeout", views::kInt},
                     {"row_count", {SqlType::BigInt}},
                     {"prev_error", views::kInt},
                     {"open_transaction_count", views::kInt}},
                    {}};
    view.ofTheMoment = true;
    view.rows.push_back({number(sessionNumber()),
                         text(hostName()),
                         text("KapUtil"),
                         text(loginName()),
                         text("running"),
                         flag(true),
                         number(state_.textSize),
                         text(languageOf(state_.dates)),
                         text(orderOf(state_.dates)),
                         number(state_.dates.firstDay),
                         flag(state_.quotedNames),
                         flag(true),
                         flag(true),
                         flag(true),
                         flag(true),
                         flag(true),
                         flag(true),
                         number(static_cast<std::int64_t>(state_.isolation)),
                         number(state_.lockTimeout),
                         number(state_.rowCount),
                         number(state_.error),
                         number(transactions_.depth())});
    return view;
}

// DBCC USEROPTIONS: what is set, one setting a row.
void ScriptRunner::showOptions(std::vector<ado::Result>& results) {
    std::vector<std::pair<std::string, std::string>> rows{
        {"textsize", plain::text(state_.textSize)},
        {"language", languageOf(state_.dates)},
        {"dateformat", orderOf(state_.dates)},
        {"datefirst", plain::text(state_.dates.firstDay)},
        {"lock_timeout", plain::text(state_.lockTimeout)}};
    if (state_.quotedNames) rows.emplace_back("quoted_identifier", "SET");
    for (const char* option : {"arithabort", "ansi_null_dflt_on", "ansi_warnings", "ansi_padding",
                               "ansi_nulls", "concat_null_yields_null"}) {
        rows.emplace_back(option, "SET");
    }
    if (state_.noCount) rows.emplace_back("nocount", "SET");
    if (state_.abortOnError) rows.emplace_back("xact_abort", "SET");
    rows.emplace_back("isolation level", levelName(state_.isolation));
    std::array<ResultColumn, 2> columns;
    columns[0].name = "Set Option";
    columns[1].name = "Value";
    for (ResultColumn& column : columns)
        column.type = views::kName;
    ado::Result result;
    result.columns = columnInfos({columns.begin(), columns.end()}, catalogue_);
    result.rows.resize(columns.size());
    for (const auto& [option, value] : rows) {
        result.rows[0].appendBytes(option);
        result.rows[1].appendBytes(value);
    }
    results.push_back(std::move(result));
}

}  // namespace kap::engine
