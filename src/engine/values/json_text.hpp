#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/values/row_format.hpp"
#include "engine/values/value.hpp"

// JSON as text. SQLite's own functions read more than the server's JSON (comments, other quotes)
// and do not tell where a text goes wrong, nor what a number was written as; so it is read here.
namespace kap::engine {

// A text between double quotes, with what JSON escapes.
[[nodiscard]] std::string jsonString(std::string_view text);

// A value as JSON; a text that is JSON already goes in as it is.
[[nodiscard]] std::string jsonOf(const Value& value, const tsql::TypeSpec& type, Markup markup);

// The numbers are those of the column "type" of OPENJSON.
enum class JsonKind { Null = 0, Text = 1, Number = 2, Boolean = 3, Array = 4, Object = 5 };

// Where a value stands in its text, in bytes.
struct JsonNode {
    JsonKind kind = JsonKind::Null;
    std::size_t begin = 0;
    std::size_t end = 0;
    // Of a member of an object: where its name begins, with the quote, and what it is.
    std::size_t nameBegin = 0;
    std::string name;
    std::vector<JsonNode> children;

    [[nodiscard]] bool isStructure() const {
        return kind == JsonKind::Array || kind == JsonKind::Object;
    }
    [[nodiscard]] std::string_view textIn(std::string_view json) const {
        return json.substr(begin, end - begin);
    }
    // What a scalar says: a text without its quotes and escapes, a number as it is written.
    [[nodiscard]] std::string scalarIn(std::string_view json) const;
};

// Reads a text that is an object or an array. Error 13609 for any other.
[[nodiscard]] JsonNode parseJson(std::string_view json);
[[nodiscard]] bool isJson(std::string_view json);

// "append strict $.a[0].\"b c\"".
struct JsonPath {
    struct Step {
        std::string name;
        std::optional<std::size_t> index;  // of an array; absent: the member `name`
    };
    bool append = false;
    bool strict = false;
    std::vector<Step> steps;
};

// Error 13607. `modifies`: whether "append" may stand before it.
[[nodiscard]] JsonPath parseJsonPath(std::string_view path, bool modifies = false);

// What stands at the path; null when there is nothing.
[[nodiscard]] const JsonNode* findJson(const JsonNode& root, const JsonPath& path);

// JSON_VALUE, JSON_QUERY; null where the path finds nothing of the kind. Strict paths have errors
// 13608, 13623, 13624 and 13625 instead.
[[nodiscard]] std::optional<std::string> jsonScalarAt(std::string_view json, std::string_view path);
[[nodiscard]] std::optional<std::string> jsonStructureAt(std::string_view json,
                                                         std::string_view path);
// The same at a part of a text that has been read.
[[nodiscard]] std::optional<std::string> jsonScalarAt(std::string_view json, const JsonNode& from,
                                                      const JsonPath& path);
[[nodiscard]] std::optional<std::string> jsonStructureAt(std::string_view json,
                                                         const JsonNode& from,
                                                         const JsonPath& path);

// JSON_MODIFY: `value` is JSON; absent: the member is taken away, or becomes null where the path is
// strict or means an element of an array.
[[nodiscard]] std::string modifiedJson(std::string_view json, std::string_view path,
                                       const std::optional<std::string>& value);

// The rows of OPENJSON: key, value and type of each member or element.
[[nodiscard]] std::vector<std::vector<Value>> openedJson(std::string_view json,
                                                         std::string_view path);
// The rows of OPENJSON WITH: what stands at the path of each column. A path has a letter before it:
// "j" for a part of the text (AS JSON), "v" for a scalar.
[[nodiscard]] std::vector<std::vector<Value>> openedJson(std::string_view json,
                                                         std::string_view path,
                                                         const std::vector<std::string>& columns);

}  // namespace kap::engine
