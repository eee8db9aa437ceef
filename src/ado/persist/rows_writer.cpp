#include <limits>
#include <unordered_set>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "ado/persist/column_types.hpp"
#include "ado/persist/saved_rows.hpp"
#include "ado/persist/xml_scanner.hpp"
#include "base/ascii.hpp"
#include "data/cell_value.hpp"

namespace kap::ado::persist {
namespace {

constexpr std::string_view kHead =
    "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
    "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
    "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
    "\txmlns:z='#RowsetSchema'>\n"
    "<s:Schema id='RowsetSchema'>\n"
    "\t<s:ElementType name='row' content='eltOnly' rs:updatable='true'>\n";
constexpr std::string_view kBetween =
    "\t\t<s:extends type='rs:rowbase'/>\n"
    "\t</s:ElementType>\n"
    "</s:Schema>\n"
    "<rs:data>\n";
constexpr std::string_view kTail =
    "</rs:data>\n"
    "</xml>\n";
constexpr std::uint8_t kNoDigits = 255;

class RowsWriter {
public:
    explicit RowsWriter(const RowTable& table) : table_(table) {
        std::unordered_set<std::string> taken;
        for (const ColumnInfo& column : table.columns()) {
            std::string name = column.name;
            if (!isXmlName(name) || !taken.insert(asciiLower(name)).second) {
                name = "c" + plain::text(names_.size());
                taken.insert(name);
            }
            names_.push_back(std::move(name));
        }
    }

    std::string write(const std::vector<std::size_t>& rows) {
        text_ = kHead;
        for (std::size_t i = 0; i < names_.size(); ++i) {
            describe(i);
        }
        text_ += kBetween;
        for (const std::size_t row : rows) {
            writeRow(row);
        }
        text_ += kTail;
        return std::move(text_);
    }

private:
    void attribute(std::string_view name, std::string_view value) {
        ((text_ += " ") += name) += "='";
        text_ += xmlEscaped(value, name);
        text_ += "'";
    }
    void flag(std::string_view name, bool value) {
        if (value) {
            attribute(name, "true");
        }
    }

    void describe(std::size_t ordinal) {
        const ColumnInfo& column = table_.columns()[ordinal];
        text_ += "\t\t<s:AttributeType";
        attribute("name", names_[ordinal]);
        if (names_[ordinal] != column.name) {
            attribute("rs:name", column.name);
        }
        attribute("rs:number", plain::text(ordinal + 1));
        flag("rs:nullable", column.nullable);
        flag("rs:writeunknown", column.writable());
        if (!column.baseTable.empty()) {
            attribute("rs:basetable", column.baseTable);
        }
        if (!column.baseColumn.empty()) {
            attribute("rs:basecolumn", column.baseColumn);
        }
        flag("rs:keycolumn", column.key);
        flag("rs:autoincrement", column.identity);
        flag("rs:rowver", column.rowVersion);
        flag("rs:generated", column.generated);
        text_ += ">\n\t\t\t<s:datatype";
        describeType(column);
        text_ += "/>\n\t\t</s:AttributeType>\n";
    }

    void describeType(const ColumnInfo& column) {
        const TypeName type = nameOfType(column);
        attribute("dt:type", type.type);
        if (!type.dbType.empty()) {
            attribute("rs:dbtype", type.dbType);
        }
        attribute("dt:maxLength", plain::text(column.definedSize));
        if (column.numericScale != kNoDigits) {
            attribute("rs:scale", plain::text(column.numericScale));
        }
        if (column.precision != kNoDigits) {
            attribute("rs:precision", plain::text(column.precision));
        }
        flag("rs:wide", column.wideDecimal);
        flag("rs:fixedlength", column.fixedLength);
        flag("rs:long", column.isLong);
        if (!column.nullable) {
            attribute("rs:maybenull", "false");
        }
    }

    [[nodiscard]] Value shown(std::size_t row, std::size_t column) const {
        return databaseValue(table_.columns()[column], table_.store(column), row);
    }

    void value(std::size_t column, const Value& cell) {
        if (cell == Value{}) {
            return;
        }
        const ColumnInfo& info = table_.columns()[column];
        ((text_ += " ") += names_[column]) += "='";
        text_ += xmlEscaped(writtenValue(info, cell), info.name);
        text_ += "'";
    }

    void wholeRow(std::size_t row, bool original) {
        text_ += "<z:row";
        for (std::size_t i = 0; i < names_.size(); ++i) {
            value(i, original ? table_.original(row, i) : shown(row, i));
        }
        text_ += "/>\n";
    }

    // Only what was changed; a Null that took the place of a value is told apart from no change.
    void changedRow(std::size_t row, const PendingRow& waiting) {
        text_ += "<z:row";
        std::string nulls;
        for (std::size_t i = 0; i < names_.size(); ++i) {
            if (!waiting.original[i]) {
                continue;
            }
            const Value now = shown(row, i);
            if (now == Value{}) {
                nulls += (nulls.empty() ? "" : " ") + names_[i];
            }
            value(i, now);
        }
        if (!nulls.empty()) {
            attribute("rs:forcenull", nulls);
        }
        text_ += "/>\n";
    }

    void writeRow(std::size_t row) {
        const PendingRow* waiting = table_.pending(row);
        if (waiting == nullptr) {
            text_ += "\t";
            wholeRow(row, false);
            return;
        }
        switch (waiting->kind) {
            case PendingRow::Kind::New:
                text_ += "\t<rs:insert>";
                wholeRow(row, false);
                text_ += "\t</rs:insert>\n";
                break;
            case PendingRow::Kind::Modified:
                text_ += "\t<rs:update>\n\t\t<rs:original>";
                wholeRow(row, true);
                text_ += "\t\t</rs:original>\n\t\t";
                changedRow(row, *waiting);
                text_ += "\t</rs:update>\n";
                break;
            case PendingRow::Kind::Deleted:
                text_ += "\t<rs:delete>";
                wholeRow(row, true);
                text_ += "\t</rs:delete>\n";
                break;
        }
    }

    const RowTable& table_;
    std::vector<std::string> names_;  // as they stand in rows
    std::string text_;
};

}  // namespace

std::string writtenRows(const RowTable& table, const std::vector<std::size_t>& rows) {
    return RowsWriter(table).write(rows);
}

}  // namespace kap::ado::persist
