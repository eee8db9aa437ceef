#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kap::engine {

// The text of CREATE TABLE as the file holds it, cut into its columns and constraints.
class TableText {
public:
    struct Element {
        std::string name;  // of the column or constraint; empty for a constraint without a name
        bool constraint = false;
        std::string text;  // with its name

        [[nodiscard]] bool isForeignKey() const;
        [[nodiscard]] bool isCheck() const;
        [[nodiscard]] bool isKey() const;
    };

    explicit TableText(std::string_view sql);

    [[nodiscard]] const std::vector<Element>& elements() const { return elements_; }
    [[nodiscard]] std::vector<Element>& elements() { return elements_; }
    // The column of that name, or the constraint, or null.
    [[nodiscard]] Element* column(std::string_view name);
    [[nodiscard]] Element* constraint(std::string_view name);
    void add(Element element) { elements_.push_back(std::move(element)); }
    void remove(const Element* element);
    // The whole text again.
    [[nodiscard]] std::string sql() const;

private:
    std::string head_;  // up to the first bracket and with it
    std::vector<Element> elements_;
    std::string tail_;  // from the last bracket on
};

// The name and the column of "CONSTRAINT name DEFAULT (...)" within a column's text are cut out of
// it: what is left, or the same text when there is no such default.
[[nodiscard]] std::string withoutDefault(const std::string& column);

// What stands between the brackets of a column's "GENERATED ALWAYS AS (...)"; nothing without that.
[[nodiscard]] std::optional<std::string> computedTextOf(const std::string& column);

// "CONSTRAINT name CHECK (...)" as an element of a table's text.
[[nodiscard]] TableText::Element constraintElement(const std::string& text);

// The name of a column's default constraint; empty when it has none with a name.
[[nodiscard]] std::string defaultNameOf(const std::string& column);

}  // namespace kap::engine
