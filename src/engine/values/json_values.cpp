#include <algorithm>
#include <iterator>

#include <kaputil/automation/plain_text.hpp>

#include "engine/values/json_text.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

// What JSON functions find and change.
namespace kap::engine {
namespace {

using tsql::ServerError;

constexpr std::size_t kLongestScalar = 4000;

const JsonNode* childOf(const JsonNode& node, const JsonPath::Step& step) {
    if (step.index) {
        const bool has = node.kind == JsonKind::Array && *step.index < node.children.size();
        return has ? &node.children[*step.index] : nullptr;
    }
    if (node.kind != JsonKind::Object) return nullptr;
    const auto found = std::ranges::find(node.children, step.name, &JsonNode::name);
    return found == node.children.end() ? nullptr : &*found;
}

// What a path does not find is an error where it is strict.
void requireFound(const JsonNode* found, const JsonPath& path) {
    if (found == nullptr && path.strict) {
        throw ServerError(tsql::Message::JsonMemberNotFound);
    }
}

std::string replacedIn(std::string_view text, std::size_t begin, std::size_t end,
                       std::string_view by) {
    return std::string(text.substr(0, begin)) + std::string(by) + std::string(text.substr(end));
}

// A new member or element behind the last one.
std::string addedTo(std::string_view json, const JsonNode& structure, const std::string& text) {
    const bool empty = structure.children.empty();
    const std::size_t at = empty ? structure.end - 1 : structure.children.back().end;
    return replacedIn(json, at, at, (empty ? "" : ",") + text);
}

// The member with the comma that parts it from the one before, or behind.
std::string withoutMember(std::string_view json, const JsonNode& object, const JsonNode& member) {
    const auto place = static_cast<std::size_t>(&member - object.children.data());
    if (place > 0) return replacedIn(json, object.children[place - 1].end, member.end, "");
    const bool only = object.children.size() == 1;
    const std::size_t end = only ? member.end : object.children[1].nameBegin;
    return replacedIn(json, member.nameBegin, end, "");
}

Value keyOf(const JsonNode& parent, std::size_t place) {
    return parent.kind == JsonKind::Object ? Value(parent.children[place].name)
                                           : Value(plain::text(static_cast<std::int64_t>(place)));
}

Value valueOf(const JsonNode& node, std::string_view json) {
    if (node.kind == JsonKind::Null) return {};
    return node.isStructure() ? Value(std::string(node.textIn(json))) : Value(node.scalarIn(json));
}

// The object or array whose parts OPENJSON shows.
const JsonNode* openedAt(const JsonNode& root, const JsonPath& path) {
    const JsonNode* found = findJson(root, path);
    requireFound(found, path);
    if (found == nullptr || found->isStructure()) return found;
    if (path.strict) throw ServerError(tsql::Message::JsonStructureNotFound);
    return nullptr;
}

}  // namespace

const JsonNode* findJson(const JsonNode& root, const JsonPath& path) {
    const JsonNode* node = &root;
    for (const JsonPath::Step& step : path.steps) {
        node = childOf(*node, step);
        if (node == nullptr) break;
    }
    return node;
}

std::optional<std::string> jsonScalarAt(std::string_view json, const JsonNode& from,
                                        const JsonPath& path) {
    const JsonNode* found = findJson(from, path);
    requireFound(found, path);
    if (found == nullptr || found->kind == JsonKind::Null) return std::nullopt;
    if (found->isStructure()) {
        if (path.strict) throw ServerError(tsql::Message::JsonScalarNotFound);
        return std::nullopt;
    }
    return found->scalarIn(json);
}

std::optional<std::string> jsonStructureAt(std::string_view json, const JsonNode& from,
                                           const JsonPath& path) {
    const JsonNode* found = findJson(from, path);
    requireFound(found, path);
    if (found == nullptr) return std::nullopt;
    if (found->isStructure()) return std::string(found->textIn(json));
    if (path.strict) throw ServerError(tsql::Message::JsonStructureNotFound);
    return std::nullopt;
}

std::optional<std::string> jsonScalarAt(std::string_view json, std::string_view path) {
    const JsonPath read = parseJsonPath(path);
    auto found = jsonScalarAt(json, parseJson(json), read);
    if (!found || unitLength(*found) <= kLongestScalar) return found;
    if (read.strict) throw ServerError(tsql::Message::JsonValueTooLong);
    return std::nullopt;
}

std::optional<std::string> jsonStructureAt(std::string_view json, std::string_view path) {
    const JsonPath read = parseJsonPath(path);
    return jsonStructureAt(json, parseJson(json), read);
}

std::string modifiedJson(std::string_view json, std::string_view path,
                         const std::optional<std::string>& value) {
    const JsonPath read = parseJsonPath(path, true);
    const JsonNode root = parseJson(json);
    const JsonNode* found = findJson(root, read);
    requireFound(found, read);
    const std::string written = value.value_or("null");
    if (found != nullptr && read.append) {
        if (found->kind == JsonKind::Array) return addedTo(json, *found, written);
        if (read.strict) throw ServerError(tsql::Message::JsonStructureNotFound);
        return std::string(json);
    }
    JsonPath around = read;
    if (!around.steps.empty()) around.steps.pop_back();
    const JsonNode* parent = findJson(root, around);
    if (found == nullptr) {
        const bool adds = parent != nullptr && parent->kind == JsonKind::Object &&
                          !read.steps.back().index && value;
        if (!adds) return std::string(json);
        return addedTo(json, *parent,
                       jsonString(read.steps.back().name) + ":" +
                           (read.append ? "[" + written + "]" : written));
    }
    const bool removes =
        !value && !read.strict && !read.steps.empty() && parent->kind == JsonKind::Object;
    if (removes) return withoutMember(json, *parent, *found);
    return replacedIn(json, found->begin, found->end, written);
}

std::vector<std::vector<Value>> openedJson(std::string_view json, std::string_view path) {
    const JsonPath read = parseJsonPath(path);
    const JsonNode root = parseJson(json);
    std::vector<std::vector<Value>> rows;
    const JsonNode* opened = openedAt(root, read);
    if (opened == nullptr) return rows;
    rows.reserve(opened->children.size());
    for (std::size_t i = 0; i < opened->children.size(); ++i) {
        const JsonNode& child = opened->children[i];
        rows.push_back(
            {keyOf(*opened, i), valueOf(child, json), static_cast<std::int64_t>(child.kind)});
    }
    return rows;
}

std::vector<std::vector<Value>> openedJson(std::string_view json, std::string_view path,
                                           const std::vector<std::string>& columns) {
    const JsonPath read = parseJsonPath(path);
    std::vector<JsonPath> paths;
    paths.reserve(columns.size());
    for (const std::string& column : columns)
        paths.push_back(parseJsonPath(std::string_view(column).substr(1)));
    const JsonNode root = parseJson(json);
    std::vector<std::vector<Value>> rows;
    const JsonNode* opened = openedAt(root, read);
    if (opened == nullptr) return rows;
    const auto addRow = [&](const JsonNode& node) {
        std::vector<Value>& row = rows.emplace_back();
        row.reserve(columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            auto value = columns[i].front() == 'j' ? jsonStructureAt(json, node, paths[i])
                                                   : jsonScalarAt(json, node, paths[i]);
            row.push_back(value ? Value(std::move(*value)) : Value());
        }
    };
    if (opened->kind == JsonKind::Object) {
        addRow(*opened);
    } else {
        std::ranges::for_each(opened->children, addRow);
    }
    return rows;
}

}  // namespace kap::engine
