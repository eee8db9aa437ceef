#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include <kaputil/automation/decimal.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "ado/charset.hpp"
#include "ado/persist/column_types.hpp"
#include "ado/persist/saved_rows.hpp"
#include "ado/persist/xml_scanner.hpp"
#include "base/unicode.hpp"
#include "data/cell_value.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado::persist {
namespace {

// The namespaces of a saved recordset, whatever prefixes a writer gives them.
struct Namespace {
    std::string_view address;
    std::string_view prefix;
};
constexpr Namespace kNamespaces[] = {{"uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882", "s"},
                                     {"uuid:C2F41010-65B3-11d1-A29F-00AA00C14882", "dt"},
                                     {"urn:schemas-microsoft-com:rowset", "rs"},
                                     {"#RowsetSchema", "z"}};

// Every row has a place for each column, whatever it names of them.
constexpr std::size_t kMostColumns = 4096;

std::string textOf(std::string_view content) {
    for (const TextCharset charset :
         {TextCharset::Utf16, TextCharset::Utf16Big, TextCharset::Utf8}) {
        const std::string_view mark = markOf(charset);
        if (content.starts_with(mark)) {
            return unicode::displayUtf8(decodeText(charset, content.substr(mark.size())));
        }
    }
    // The declaration of another encoding is in that of ASCII.
    const std::string_view head = content.substr(0, content.find("?>"));
    const std::size_t named = head.starts_with("<?xml") ? head.find("encoding=") : head.npos;
    if (named != head.npos && named + 10 < head.size()) {
        const char quote = head[named + 9];
        const std::string_view name =
            head.substr(named + 10, head.find(quote, named + 10) - (named + 10));
        const auto charset = charsetNamed(String(name).view());
        if (!charset) {
            fail::readingFile("the encoding '" + std::string(name) + "' is not known");
        }
        if (*charset != TextCharset::Utf8 && *charset != TextCharset::Utf16) {
            return unicode::displayUtf8(decodeText(*charset, content));
        }
    }
    if (!unicode::isUtf8(content)) {
        fail::readingFile("it is not in the encoding UTF-8");
    }
    return std::string(content);
}

class RowsReader {
public:
    explicit RowsReader(std::string_view text) : scanner_(text) {}

    std::shared_ptr<RowTable> read() {
        for (XmlTag tag = next(); tag.kind != XmlTag::Kind::OfFile; tag = next()) {
            if (tag.kind == XmlTag::Kind::Begin) {
                begin(tag);
            } else {
                end(tag.name);
            }
        }
        if (table_ == nullptr) {
            fail::readingFile("it is no saved recordset");
        }
        return table_;
    }

private:
    enum class Part : std::uint8_t { Plain, Insert, Update, Original, Delete };

    // The next tag with the prefixes that are known here.
    XmlTag next() {
        XmlTag tag = scanner_.next();
        for (const XmlAttribute& attribute : tag.attributes) {
            if (attribute.name.starts_with("xmlns:")) {
                const auto known =
                    std::ranges::find(kNamespaces, attribute.value, &Namespace::address);
                if (known != std::end(kNamespaces)) {
                    prefixes_[attribute.name.substr(6)] = known->prefix;
                }
            }
        }
        rename(tag.name);
        for (XmlAttribute& attribute : tag.attributes) {
            rename(attribute.name);
        }
        return tag;
    }

    void rename(std::string& name) const {
        const std::size_t colon = name.find(':');
        if (colon == std::string::npos) {
            return;
        }
        const auto known = prefixes_.find(name.substr(0, colon));
        if (known != prefixes_.end()) {
            name = std::string(known->second) + name.substr(colon);
        }
    }

    void begin(const XmlTag& tag) {
        if (tag.name == "s:AttributeType") {
            beginColumn(tag);
        } else if (tag.name == "s:datatype" && !columns_.empty()) {
            describe(columns_.back(), tag);
        } else if (tag.name == "rs:data") {
            makeTable();
        } else if (table_ == nullptr) {
            return;
        } else if (tag.name == "rs:insert") {
            part_ = Part::Insert;
        } else if (tag.name == "rs:update") {
            part_ = Part::Update;
            original_.reset();
        } else if (tag.name == "rs:original") {
            part_ = Part::Original;
        } else if (tag.name == "rs:delete") {
            part_ = Part::Delete;
        } else if (tag.name == "z:row") {
            takeRow(tag);
        }
    }

    void end(const std::string& name) {
        if (name == "rs:insert" || name == "rs:update" || name == "rs:delete") {
            part_ = Part::Plain;
        } else if (name == "rs:original") {
            part_ = Part::Update;
        }
    }

    static bool isTrue(const XmlTag& tag, std::string_view name) {
        const std::string* value = tag.find(name);
        return value != nullptr && (*value == "true" || *value == "1" || *value == "True");
    }
    static std::int32_t numberOf(const XmlTag& tag, std::string_view name, std::int32_t otherwise) {
        const std::string* value = tag.find(name);
        return value == nullptr ? otherwise : plain::readInt(*value).value_or(otherwise);
    }

    void beginColumn(const XmlTag& tag) {
        if (table_ != nullptr) {
            fail::readingFile("a column stands behind the rows");
        }
        const std::string* name = tag.find("name");
        if (name == nullptr) {
            fail::readingFile("a column has no name");
        }
        if (columns_.size() == kMostColumns) {
            fail::readingFile("it has too many columns");
        }
        const std::string* shown = tag.find("rs:name");
        ColumnInfo column;
        column.name = shown == nullptr ? *name : *shown;
        const std::string* table = tag.find("rs:basetable");
        const std::string* base = tag.find("rs:basecolumn");
        const bool writable = isTrue(tag, "rs:write") || isTrue(tag, "rs:writeunknown");
        column.baseTable = table == nullptr ? std::string() : *table;
        column.baseColumn = base != nullptr ? *base : writable ? column.name : std::string();
        column.key = isTrue(tag, "rs:keycolumn");
        column.identity = isTrue(tag, "rs:autoincrement");
        column.rowVersion = isTrue(tag, "rs:rowver");
        column.generated = isTrue(tag, "rs:generated");
        column.nullable = isTrue(tag, "rs:nullable");
        // Without a type of its own, also given on the element itself, it is a text.
        describe(column, tag);
        byName_.emplace(*name, columns_.size());
        columns_.push_back(std::move(column));
    }

    static void describe(ColumnInfo& column, const XmlTag& tag) {
        const std::string* type = tag.find("dt:type");
        const std::string* dbType = tag.find("rs:dbtype");
        column.fixedLength = isTrue(tag, "rs:fixedlength");
        column.isLong = isTrue(tag, "rs:long");
        column.type =
            typeNamed(type == nullptr ? "string" : *type, dbType == nullptr ? "" : *dbType,
                      column.fixedLength, column.isLong);
        const std::int32_t width = widthOf(column.type);
        column.fixedLength = column.fixedLength || width > 0;
        constexpr std::int32_t kLongest = std::numeric_limits<std::int32_t>::max();
        column.definedSize = width > 0 ? width : numberOf(tag, "dt:maxLength", kLongest);
        if (column.definedSize < 0) {
            fail::readingFile("a column has a negative length");
        }
        column.precision = digits(tag, "rs:precision", usualPrecision(column.type));
        column.numericScale = digits(tag, "rs:scale", usualScale(column.type));
        column.wideDecimal = isDecimalType(column.type) &&
                             (isTrue(tag, "rs:wide") || column.precision > kWidestDecimal);
        if (isDecimalType(column.type) && column.numericScale > Decimal::kMaxScale &&
            !column.wideDecimal) {
            fail::readingFile("a decimal has more digits behind its point than in all");
        }
    }

    static std::uint8_t digits(const XmlTag& tag, std::string_view name, std::uint8_t usual) {
        const std::int32_t given = numberOf(tag, name, usual);
        return static_cast<std::uint8_t>(std::clamp<std::int32_t>(given, 0, 255));
    }

    void makeTable() {
        if (table_ != nullptr) {
            return;
        }
        if (columns_.empty()) {
            fail::readingFile("it has rows and no columns");
        }
        Result result;
        result.columns = columns_;
        result.rows.resize(columns_.size());
        table_ = std::make_shared<RowTable>(std::move(result));
    }

    PendingValues valuesOf(const XmlTag& tag) const {
        PendingValues values(columns_.size());
        for (const XmlAttribute& attribute : tag.attributes) {
            const auto column = byName_.find(attribute.name);
            if (column != byName_.end()) {
                values[column->second] = readValue(columns_[column->second], attribute.value);
            }
        }
        if (const std::string* nulls = tag.find("rs:forcenull")) {
            forceNulls(values, *nulls);
        }
        return values;
    }

    void forceNulls(PendingValues& values, std::string_view names) const {
        while (!names.empty()) {
            const std::size_t end = std::min(names.find(' '), names.size());
            const auto column = byName_.find(std::string(names.substr(0, end)));
            if (column != byName_.end()) {
                values[column->second] = Value{};
            }
            names.remove_prefix(std::min(end + 1, names.size()));
        }
    }

    void takeRow(const XmlTag& tag) {
        PendingValues values = valuesOf(tag);
        if (part_ == Part::Original) {
            original_ = std::move(values);
            return;
        }
        const std::size_t row = table_->size();
        PendingRow waiting;
        waiting.original.resize(columns_.size());
        if (part_ == Part::Update) {
            if (!original_) {
                fail::readingFile("a changed row has no original");
            }
            waiting.kind = PendingRow::Kind::Modified;
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (values[i]) {
                    waiting.original[i] = (*original_)[i].value_or(Value{});
                } else {
                    values[i] = (*original_)[i];
                }
            }
            original_.reset();
        }
        table_->append(values);
        if (part_ == Part::Plain) {
            return;
        }
        if (part_ == Part::Insert) {
            waiting.kind = PendingRow::Kind::New;
        } else if (part_ == Part::Delete) {
            waiting.kind = PendingRow::Kind::Deleted;
            table_->setDeleted(row, true);
        }
        table_->pending().emplace(row, std::move(waiting));
    }

    XmlScanner scanner_;
    std::map<std::string, std::string_view> prefixes_;
    std::vector<ColumnInfo> columns_;
    std::map<std::string, std::size_t> byName_;
    std::shared_ptr<RowTable> table_;
    Part part_ = Part::Plain;
    std::optional<PendingValues> original_;
};

}  // namespace

std::shared_ptr<RowTable> readRows(std::string_view content) {
    // What a binary one begins with: a mark byte, the length of the name, and the name.
    if (content.substr(0, 8).find("TG!") != std::string_view::npos) {
        fail::binaryForm();
    }
    const std::string text = textOf(content);
    return RowsReader(text).read();
}

}  // namespace kap::ado::persist
