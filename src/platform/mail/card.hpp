#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/automation/string.hpp>

namespace kap::platform::mail {

// What a contact holds, under the names that clients use for it.
enum class ContactField : unsigned char {
    CustomerId,
    Email,
    FirstName,
    LastName,
    Company,
    HomePhone,
    HomeAddress,
    GovernmentId,
    FileAs,
};

// The text of a contact as an electronic card (vCard 4), line by line: what another program wrote
// into it stays.
class Card {
public:
    // A new card with an identity of its own.
    Card();
    // From the bytes of a file; nullopt when there is no card in it.
    [[nodiscard]] static std::optional<Card> read(std::string_view bytes);

    // Empty when the card says nothing of it.
    [[nodiscard]] String get(ContactField field) const;
    // An empty text takes the line away. Raises 5 for a text that is no Unicode.
    void put(ContactField field, const String& text);

    // The identity in the card; empty when another program gave it none.
    [[nodiscard]] std::string uid() const;

    // The bytes of the file: lines of at most 75 bytes, longer ones folded, ended by CR LF.
    [[nodiscard]] std::string bytes() const;

private:
    explicit Card(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    // Of which line, and of which part of its value, a field is.
    struct Place {
        std::string_view property;
        std::string_view parameters;  // what a line is made with
        std::string_view type;        // a line of another type is another one's; empty: any
        std::optional<std::size_t> component;
    };
    [[nodiscard]] static Place placeOf(ContactField field);
    [[nodiscard]] std::optional<std::size_t> find(const Place& place) const;
    [[nodiscard]] std::size_t end() const;
    void keepDisplayName();

    std::vector<std::string> lines_;  // unfolded, without their ends
};

}  // namespace kap::platform::mail
