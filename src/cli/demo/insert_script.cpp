#include "cli/demo/insert_script.hpp"

#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/quoting.hpp"

namespace kap::cli {
namespace {

// Few enough for every server, many enough that the statements cost nothing.
constexpr std::size_t kRowsAnInsert = 200;

}  // namespace

void SqlRow::add(std::string_view literal) {
    if (!values_.empty()) {
        values_ += ',';
    }
    values_ += literal;
}

SqlRow& SqlRow::number(std::int64_t value) {
    add(plain::text(value));
    return *this;
}

SqlRow& SqlRow::amount(std::int64_t value, std::size_t decimals) {
    std::string digits = plain::text(value < 0 ? -value : value);
    if (digits.size() <= decimals) {
        digits.insert(0, decimals + 1 - digits.size(), '0');
    }
    if (decimals > 0) {
        digits.insert(digits.size() - decimals, 1, '.');
    }
    add(value < 0 ? "-" + digits : digits);
    return *this;
}

SqlRow& SqlRow::text(std::string_view value) {
    add(textConstant(value));
    return *this;
}

SqlRow& SqlRow::date(int year, int month, int day) {
    // Without dashes: the one form that every date setting of a server reads alike.
    add("'" + plain::padded(year, 4) + plain::padded(month, 2) + plain::padded(day, 2) + "'");
    return *this;
}

SqlRow& SqlRow::null() {
    add("NULL");
    return *this;
}

InsertScript::InsertScript(ado::Connection& connection, std::string target)
    : connection_(connection), target_(std::move(target)) {}

void InsertScript::add(const SqlRow& row) {
    rows_ += rows_.empty() ? "\n(" : ",\n(";
    rows_ += row.values();
    rows_ += ')';
    if (++waiting_ == kRowsAnInsert) {
        finish();
    }
}

void InsertScript::finish() {
    if (waiting_ == 0) {
        return;
    }
    connection_.Execute("INSERT INTO " + target_ + " VALUES" + rows_);
    rows_.clear();
    waiting_ = 0;
}

}  // namespace kap::cli
