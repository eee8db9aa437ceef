#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kap::ado {

// A connection string taken apart: `key=value` pairs with ';' between, in UTF-8. Keys ignore case
// and blanks around; a value may stand in single or double quotes, doubled inside, or in braces.
class ConnectionString {
public:
    struct Pair {
        std::string key;
        std::string value;
    };

    // Raises kInvalidArgument when the text is not of that form, saying where.
    static ConnectionString parse(std::string_view text);

    // The text as it may be shown: without the pairs that hold a password, unless it says that they
    // may be seen ("Persist Security Info=True").
    static std::string shown(std::string_view text);

    // Whether a value says yes: "True", "Yes", "1".
    [[nodiscard]] static bool isTrue(std::string_view value);

    [[nodiscard]] const std::vector<Pair>& pairs() const noexcept { return pairs_; }
    // The last value given for a key, compared ignoring case.
    [[nodiscard]] std::optional<std::string> find(std::string_view key) const;

private:
    std::vector<Pair> pairs_;
};

}  // namespace kap::ado
