#include "migrate/table_pages.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "data/cell_text.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::migrate {
namespace {

constexpr std::size_t kRowsAPage = 20000;

}  // namespace

TablePages::TablePages(ado::Connection& connection, const ado::SqlDialect& dialect,
                       ado::ObjectName table, std::vector<ado::ColumnDefinition> columns,
                       const std::vector<std::string>& key)
    : connection_(connection),
      dialect_(dialect),
      table_(std::move(table)),
      columns_(std::move(columns)) {
    for (const std::string& part : key) {
        const auto found = std::ranges::find_if(columns_, [&](const ado::ColumnDefinition& column) {
            return equalsIgnoringCase(column.name, part);
        });
        if (found == columns_.end()) {
            key_.clear();
            break;
        }
        key_.push_back(static_cast<std::size_t>(found - columns_.begin()));
    }
}

void TablePages::read(std::int64_t first, const Reader& reader) {
    last_.clear();
    for (;;) {
        const ado::Result page = answerOf(connection_, query(first));
        const std::size_t count = page.rows.empty() ? 0 : page.rows.front().size();
        const bool whole = key_.empty();
        if (count == 0) {
            return;
        }
        const std::size_t begin =
            whole ? std::min(static_cast<std::size_t>(first), count) : std::size_t{0};
        if (!whole) {
            remember(page);
        }
        if (begin < count) {
            reader(page, begin);
        }
        if (whole || count < kRowsAPage) {
            return;
        }
    }
}

std::string TablePages::query(std::int64_t first) const {
    std::vector<std::string> selected;
    for (const ado::ColumnDefinition& column : columns_) {
        selected.push_back(dialect_.selected(column));
    }
    std::string text = "SELECT " + joined(selected) + " FROM " + dialect_.qualified(table_);
    if (key_.empty()) {
        return text;
    }
    std::vector<std::string> order;
    for (const std::size_t part : key_) {
        order.push_back(dialect_.qualified(table_) + "." + dialect_.quoted(columns_[part].name));
    }
    const bool goesOn = !last_.empty();
    return text + (goesOn ? " WHERE " + behind(0) : std::string()) + " ORDER BY " + joined(order) +
           " OFFSET " + plain::text(goesOn ? 0 : first) + " ROWS FETCH NEXT " +
           plain::text(static_cast<std::int64_t>(kRowsAPage)) + " ROWS ONLY";
}

// Every part stands alone, too, so that the key's index finds the place.
std::string TablePages::behind(std::size_t part) const {
    const std::string name = dialect_.quoted(columns_[key_[part]].name);
    const std::string& value = last_[part];
    if (part + 1 == key_.size()) {
        return name + " > " + value;
    }
    return name + " >= " + value + " AND (" + name + " > " + value + " OR (" + behind(part + 1) +
           "))";
}

void TablePages::remember(const ado::Result& page) {
    last_.clear();
    for (const std::size_t part : key_) {
        std::string text;
        const ado::ColumnStore& values = page.rows[part];
        ado::appendCellText(page.columns[part], values, values.size() - 1, text);
        last_.push_back(dialect_.literal(columns_[part], text));
    }
}

}  // namespace kap::migrate
