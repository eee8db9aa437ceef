#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/values/formatted_value.hpp"
#include "engine/values/rows_as_text.hpp"
#include "engine/values/xml_text.hpp"
#include "tsql/server_error.hpp"

// FOR XML.
namespace kap::engine {
namespace {

using tsql::ServerError;
using XmlMode = tsql::RowsAsText::Mode;
using XmlLeaf = XmlPath::Leaf;

constexpr std::string_view kNilNamespace =
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

// XML text that grows at its end. Names and values come escaped.
class XmlText {
public:
    // `marksNulls`: the outermost elements declare what marks them. `typed`: an element without
    // content is one tag.
    XmlText(bool marksNulls, bool typed) : marksNulls_(marksNulls), typed_(typed) {}

    void open(const std::string& name) {
        finishTag();
        text_ += "<" + name;
        if (marksNulls_ && open_.empty()) text_ += kNilNamespace;
        open_.push_back(name);
        inTag_ = true;
    }
    void attribute(const std::string& name, const std::string& value) {
        text_ += " " + name + "=\"" + value + "\"";
    }
    void nil() { text_ += " xsi:nil=\"true\""; }
    [[nodiscard]] bool inTag() const { return inTag_; }
    void content(std::string_view xml) {
        if (xml.empty() && typed_) return;
        finishTag();
        text_ += xml;
    }
    void close() {
        if (std::exchange(inTag_, false)) {
            text_ += "/>";
        } else {
            text_ += "</" + open_.back() + ">";
        }
        open_.pop_back();
    }
    [[nodiscard]] std::size_t depth() const { return open_.size(); }
    void closeTo(std::size_t depth) {
        while (open_.size() > depth)
            close();
    }
    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    void finishTag() {
        if (std::exchange(inTag_, false)) text_ += ">";
    }

    std::string text_;
    std::vector<std::string> open_;
    bool inTag_ = false;
    bool marksNulls_;
    bool typed_;
};

// What the three modes have in common.
class XmlWriter : public RowsAsTextWriter {
public:
    explicit XmlWriter(RowFormat format)
        : format_(std::move(format)), xml_(format_.options.marksNulls, format_.options.typed) {
        if (format_.options.root) {
            checkXmlName(*format_.options.root, "Root tag", *format_.options.root);
        }
        if (format_.options.rowName && !format_.options.rowName->empty()) {
            checkXmlName(*format_.options.rowName, "Row tag", *format_.options.rowName);
        }
    }

    void add(const std::vector<Value>& row) final {
        if (!begun_ && format_.options.root) xml_.open(*format_.options.root);
        begun_ = true;
        addRow(row);
    }

    [[nodiscard]] std::string finish() final {
        xml_.closeTo(0);
        return xml_.take();
    }

protected:
    virtual void addRow(const std::vector<Value>& row) = 0;

    // The elements that are open around a row.
    [[nodiscard]] std::size_t base() const { return format_.options.root ? 1 : 0; }
    [[nodiscard]] std::string contentOf(const FormattedColumn& column, const Value& value) const {
        const std::string text = formattedValue(value, column.type);
        return column.markup == Markup::Xml ? text
                                            : xmlContent(text, format_.options.typed, column.name);
    }
    [[nodiscard]] std::string attributeOf(const FormattedColumn& column, const Value& value) const {
        return xmlAttribute(formattedValue(value, column.type), format_.options.typed, column.name);
    }

    RowFormat format_;
    XmlText xml_;

private:
    bool begun_ = false;
};

// RAW and AUTO: columns are attributes of their element, or elements in it.
class XmlElements : public XmlWriter {
public:
    explicit XmlElements(RowFormat format) : XmlWriter(std::move(format)) {
        const tsql::RowsAsText& options = format_.options;
        const bool raw = options.mode == XmlMode::Raw;
        if (raw) format_.levels = {options.rowName.value_or("row")};
        // The name of RAW is one already; tables may have any.
        for (std::string& level : format_.levels)
            if (!raw) level = xmlName(level);
        for (std::size_t i = 0; i < format_.columns.size(); ++i) {
            const FormattedColumn& column = format_.columns[i];
            checkColumn(column);
            names_.push_back(xmlName(column.name));
            if (!isAttribute(column)) continue;
            for (std::size_t j = 0; j < i; ++j) {
                const FormattedColumn& other = format_.columns[j];
                if (other.name != column.name || other.level != column.level) continue;
                throw ServerError(tsql::Message::XmlAttributeTwice, {column.name});
            }
        }
    }

private:
    [[nodiscard]] bool isAttribute(const FormattedColumn& column) const {
        return !format_.options.elements && column.markup != Markup::Xml;
    }

    void checkColumn(const FormattedColumn& column) const {
        if (column.name.empty() && column.markup != Markup::Xml) {
            throw ServerError(tsql::Message::XmlWithoutName);
        }
        const bool raw = format_.options.mode == XmlMode::Raw;
        if (raw && isAttribute(column) && format_.levels.front().empty()) {
            throw ServerError(tsql::Message::XmlRowOmitted);
        }
        if (!tsql::isBinary(column.type.type) || format_.options.binary) return;
        if (raw) throw ServerError(tsql::Message::XmlBinaryAddress, {column.name});
        throw tsql::unsupported("FOR XML AUTO of binary columns without BINARY BASE64", 0);
    }

    void addRow(const std::vector<Value>& row) override {
        const std::size_t first = format_.options.mode == XmlMode::Raw
                                      ? 0
                                      : firstNewLevel(format_, std::exchange(before_, row), row);
        if (!format_.levels.front().empty()) xml_.closeTo(base() + first);
        for (std::size_t level = first; level < format_.levels.size(); ++level)
            addElement(level, row);
    }

    void addElement(std::size_t level, const std::vector<Value>& row) {
        const std::string& name = format_.levels[level];
        if (!name.empty()) xml_.open(name);
        for (const bool attributes : {true, false}) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                const FormattedColumn& column = format_.columns[i];
                if (column.level != level || isAttribute(column) != attributes) continue;
                if (!attributes) {
                    addChild(i, row[i]);
                } else if (!isNull(row[i])) {
                    xml_.attribute(names_[i], attributeOf(column, row[i]));
                }
            }
        }
    }

    void addChild(std::size_t column, const Value& value) {
        const bool marked = isNull(value) && format_.options.marksNulls;
        if (isNull(value) && !marked) return;
        const bool named = !names_[column].empty();
        if (named) xml_.open(names_[column]);
        if (marked && named) xml_.nil();
        if (!isNull(value)) xml_.content(contentOf(format_.columns[column], value));
        if (named) xml_.close();
    }

    std::vector<std::string> names_;
    std::vector<Value> before_;
};

// PATH: the names of columns say where they go. Columns that follow each other share the elements
// that their paths begin with.
class XmlPaths : public XmlWriter {
public:
    explicit XmlPaths(RowFormat format)
        : XmlWriter(std::move(format)), rowName_(format_.options.rowName.value_or("row")) {
        paths_.reserve(format_.columns.size());
        for (const FormattedColumn& column : format_.columns) {
            paths_.push_back(xmlPath(column.name));
            checkColumn(column);
        }
    }

private:
    void checkColumn(const FormattedColumn& column) {
        const XmlPath& path = paths_.back();
        const bool attribute = path.leaf == XmlLeaf::Attribute;
        if (column.markup == Markup::Xml) {
            if (attribute) throw ServerError(tsql::Message::XmlInAttribute, {column.name});
            if (path.leaf != XmlLeaf::Content) {
                throw ServerError(tsql::Message::XmlLastStep, {column.name});
            }
        }
        if (!attribute) return;
        if (path.steps.empty() && rowName_.empty()) {
            throw ServerError(tsql::Message::XmlRowOmitted);
        }
        checkAttribute(column);
    }

    // An attribute comes before what its element holds, and once.
    void checkAttribute(const FormattedColumn& column) const {
        const XmlPath& path = paths_.back();
        for (std::size_t i = paths_.size() - 1; i-- > 0;) {
            const XmlPath& other = paths_[i];
            // Its element begins behind that one.
            if (shared(other.steps, path.steps) < path.steps.size()) return;
            if (other.leaf != XmlLeaf::Attribute || other.steps.size() > path.steps.size()) {
                throw ServerError(tsql::Message::XmlAttributeTooLate, {column.name});
            }
            if (other.name == path.name) {
                throw ServerError(tsql::Message::XmlAttributeTwice, {column.name});
            }
        }
    }

    static std::size_t shared(const std::vector<std::string>& left,
                              const std::vector<std::string>& right) {
        const auto ends = std::ranges::mismatch(left, right);
        return static_cast<std::size_t>(ends.in1 - left.begin());
    }

    void addRow(const std::vector<Value>& row) override {
        if (!rowName_.empty()) {
            xml_.open(rowName_);
            afterData_ = false;
        }
        const std::size_t around = xml_.depth();
        const std::vector<std::string> none;
        const std::vector<std::string>* before = &none;
        std::size_t open = 0;  // of the steps of the column before
        for (std::size_t i = 0; i < row.size(); ++i) {
            const XmlPath& path = paths_[i];
            const std::size_t kept = std::min(open, shared(*before, path.steps));
            if (open > kept) afterData_ = false;
            xml_.closeTo(around + kept);
            open = kept;
            before = &path.steps;
            if (!isWritten(path, row[i])) continue;
            for (; open < path.steps.size(); ++open) {
                xml_.open(path.steps[open]);
                afterData_ = false;
            }
            addValue(i, row[i]);
        }
        xml_.closeTo(around);
        if (!rowName_.empty()) xml_.close();
    }

    [[nodiscard]] bool isWritten(const XmlPath& path, const Value& value) const {
        return !isNull(value) ||
               (format_.options.marksNulls && path.leaf == XmlLeaf::Content && !path.steps.empty());
    }

    void addValue(std::size_t place, const Value& value) {
        const FormattedColumn& column = format_.columns[place];
        const XmlPath& path = paths_[place];
        const bool afterData = std::exchange(afterData_, path.leaf == XmlLeaf::Data);
        if (isNull(value)) {
            if (xml_.inTag()) xml_.nil();
            return;
        }
        switch (path.leaf) {
            case XmlLeaf::Attribute:
                xml_.attribute(path.name, attributeOf(column, value));
                return;
            case XmlLeaf::Comment:
                xml_.content("<!--" + formattedValue(value, column.type) + "-->");
                return;
            case XmlLeaf::Instruction:
                xml_.content("<?" + path.name + " " + formattedValue(value, column.type) + "?>");
                return;
            case XmlLeaf::Data:
                if (afterData) xml_.content(" ");
                break;
            case XmlLeaf::Content:
            case XmlLeaf::Text:
                break;
        }
        xml_.content(contentOf(column, value));
    }

    std::string rowName_;
    std::vector<XmlPath> paths_;
    bool afterData_ = false;  // the content so far ends with a value of data()
};

}  // namespace

std::unique_ptr<RowsAsTextWriter> xmlWriter(RowFormat format) {
    if (format.options.mode == XmlMode::Path) return std::make_unique<XmlPaths>(std::move(format));
    return std::make_unique<XmlElements>(std::move(format));
}

}  // namespace kap::engine
