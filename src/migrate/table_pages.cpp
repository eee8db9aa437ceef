#include "migrate/table_pages.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "migrate/cell_text.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::migrate {
namespace {

constexpr std::int32_t kRowsAPage = 20000;

}  // namespace

TablePages::TablePages(ado::Connection& connection, const ado::SqlDialect& dialect,
                       std::string table, std::vector<ado::ColumnDefinition> columns,
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

void TablePages::read(std::int64_t first,
                      const std::function<void(const Ref<ado::Recordset>&)>& page) {
    last_.clear();
    for (;;) {
        const auto rows = opened(connection_, query(first));
        const std::int32_t count = rows->RecordCount();
        const bool whole = key_.empty();
        if (count == 0) {
            return;
        }
        if (whole) {
            rows->Move(static_cast<std::int32_t>(std::min<std::int64_t>(first, count)));
        } else {
            rows->MoveLast();
            remember(rows);
            rows->MoveFirst();
        }
        if (!rows->Eof()) {
            page(rows);
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
    std::string text = "SELECT " + joined(selected) + " FROM " + dialect_.quoted(table_);
    if (key_.empty()) {
        return text;
    }
    std::vector<std::string> order;
    for (const std::size_t part : key_) {
        order.push_back(dialect_.quoted(table_) + "." + dialect_.quoted(columns_[part].name));
    }
    const bool goesOn = !last_.empty();
    return text + (goesOn ? " WHERE " + behind(0) : std::string()) + " ORDER BY " + joined(order) +
           " OFFSET " + plain::text(goesOn ? 0 : first) + " ROWS FETCH NEXT " +
           plain::text(kRowsAPage) + " ROWS ONLY";
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

void TablePages::remember(const Ref<ado::Recordset>& rows) {
    last_.clear();
    const auto fields = rows->Fields();
    for (const std::size_t part : key_) {
        const auto text = cellText(*fields->Item(static_cast<std::int32_t>(part)));
        last_.push_back(dialect_.literal(columns_[part], text.value_or("")));
    }
}

}  // namespace kap::migrate
