#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tsql/syntax.hpp"
#include "tsql/type_spec.hpp"

// What FOR XML and FOR JSON make of the rows of a query.
namespace kap::engine {

// What a text stands for to FOR XML and FOR JSON: such a text goes in as it is.
enum class Markup { None, Xml, Json };

// Which columns tell whether a row of AUTO goes on with the element before it.
enum class RowComparison {
    Compared,
    Ignored,  // the key of its table is there
    Differs,  // a type that is not compared: every row makes an element of its own
};

struct FormattedColumn {
    std::string name;  // empty: none
    tsql::TypeSpec type;
    Markup markup = Markup::None;
    std::size_t level = 0;  // of AUTO: which element or object it belongs to
    RowComparison comparison = RowComparison::Compared;
};

struct RowFormat {
    tsql::RowsAsText options;
    std::vector<std::string> levels;  // of AUTO: the tables, the outermost first
    std::vector<FormattedColumn> columns;

    [[nodiscard]] bool isJson() const {
        return options.language == tsql::RowsAsText::Language::Json;
    }
};

// A format as one text, for the SQL function that is told it, and back.
[[nodiscard]] std::string packRowFormat(const RowFormat& format);
[[nodiscard]] RowFormat unpackRowFormat(std::string_view packed);

}  // namespace kap::engine
