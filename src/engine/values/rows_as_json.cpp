#include <algorithm>
#include <utility>

#include "engine/values/formatted_value.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/rows_as_text.hpp"
#include "tsql/server_error.hpp"

// FOR JSON.
namespace kap::engine {
namespace {

using tsql::ServerError;

// A member of the objects: a column, an object of members, or the rows of an inner table of AUTO.
struct JsonMember {
    std::string name;
    std::size_t column = 0;  // where it is none of the others
    std::vector<JsonMember> members;
};

// A path 'a.b.c' as members in one another. A member stands once, and its own one after the other.
void placeMember(std::vector<JsonMember>& members, std::string_view rest, std::size_t column,
                 const std::string& whole) {
    const std::size_t point = rest.find('.');
    const std::string name(rest.substr(0, point));
    const auto found = std::ranges::find(members, name, &JsonMember::name);
    const bool last = point == std::string_view::npos;
    const bool goesOn =
        found != members.end() && found + 1 == members.end() && !found->members.empty() && !last;
    if ((found != members.end() && !goesOn) || name.empty()) {
        throw ServerError(tsql::Message::JsonNameConflict, {whole});
    }
    if (!goesOn) members.push_back({name, column, {}});
    if (!last) placeMember(members.back().members, rest.substr(point + 1), column, whole);
}

class JsonWriter : public RowsAsTextWriter {
public:
    explicit JsonWriter(RowFormat format) : format_(std::move(format)) {
        const bool paths = format_.options.mode == tsql::RowsAsText::Mode::Path;
        levels_.resize(paths ? 1 : format_.levels.size());
        for (std::size_t i = 0; i < format_.columns.size(); ++i) {
            const FormattedColumn& column = format_.columns[i];
            if (column.name.empty()) throw ServerError(tsql::Message::JsonWithoutName);
            std::vector<JsonMember>& members = levels_[paths ? 0 : column.level];
            if (paths) {
                placeMember(members, column.name, i, column.name);
                continue;
            }
            if (std::ranges::find(members, column.name, &JsonMember::name) != members.end()) {
                throw ServerError(tsql::Message::JsonNameConflict, {column.name});
            }
            members.push_back({column.name, i, {}});
        }
    }

    void add(const std::vector<Value>& row) override {
        const std::size_t first =
            levels_.size() == 1 ? 0 : firstNewLevel(format_, std::exchange(before_, row), row);
        if (open_ > 0) {
            closeTo(first);
            text_ += ",";
        }
        for (std::size_t level = first; level < levels_.size(); ++level) {
            if (level > first) {
                if (text_.back() != '{') text_ += ",";
                text_ += jsonString(format_.levels[level]) + ":[";
            }
            text_ += "{";
            addMembers(levels_[level], row);
        }
        open_ = levels_.size();
    }

    [[nodiscard]] std::string finish() override {
        closeTo(0);
        const tsql::RowsAsText& options = format_.options;
        if (options.withoutArray) return std::move(text_);
        std::string array = "[" + text_ + "]";
        return options.root ? "{" + jsonString(*options.root) + ":" + array + "}" : array;
    }

private:
    // The objects that go on are those of the levels before `level`.
    void closeTo(std::size_t level) {
        for (; open_ > level; --open_)
            text_ += open_ - 1 > level ? "}]" : "}";
    }

    void addMembers(const std::vector<JsonMember>& members, const std::vector<Value>& row) {
        for (const JsonMember& member : members) {
            if (!isWritten(member, row)) continue;
            if (text_.back() != '{') text_ += ",";
            text_ += jsonString(member.name) + ":";
            if (member.members.empty()) {
                const FormattedColumn& column = format_.columns[member.column];
                text_ += jsonOf(row[member.column], column.type, column.markup);
                continue;
            }
            text_ += "{";
            addMembers(member.members, row);
            text_ += "}";
        }
    }

    // An object that has no member is left out, too.
    [[nodiscard]] bool isWritten(const JsonMember& member, const std::vector<Value>& row) const {
        if (format_.options.marksNulls) return true;
        if (member.members.empty()) return !isNull(row[member.column]);
        return std::ranges::any_of(member.members,
                                   [&](const JsonMember& inner) { return isWritten(inner, row); });
    }

    RowFormat format_;
    std::vector<std::vector<JsonMember>> levels_;
    std::vector<Value> before_;
    std::string text_;
    std::size_t open_ = 0;  // objects; none before the first row
};

}  // namespace

std::unique_ptr<RowsAsTextWriter> jsonWriter(RowFormat format) {
    return std::make_unique<JsonWriter>(std::move(format));
}

}  // namespace kap::engine
