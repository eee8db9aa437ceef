#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Reads as much XML as recordsets are saved in: elements with attributes. Texts between elements,
// comments, declarations and instructions are passed over; entities are the five of the language
// and those by number.
namespace kap::ado::persist {

struct XmlAttribute {
    std::string name;  // with its prefix
    std::string value;
};

struct XmlTag {
    enum class Kind : std::uint8_t { Begin, End, OfFile };
    Kind kind = Kind::OfFile;
    std::string name;  // with its prefix
    std::vector<XmlAttribute> attributes;

    // Null when there is none.
    [[nodiscard]] const std::string* find(std::string_view attribute) const;
};

class XmlScanner {
public:
    // UTF-8 without a mark.
    explicit XmlScanner(std::string_view text) : text_(text) {}

    // The next tag; an element without content is a beginning and an end. Raises 3003 saying at
    // which byte what is wrong, also when elements are not closed as they were opened.
    [[nodiscard]] XmlTag next();

private:
    [[noreturn]] void fail(const std::string& why) const;
    [[nodiscard]] bool takeSign(std::string_view sign);
    void skipTo(std::string_view sign);
    void skipDeclaration();
    void skipBlanks();
    [[nodiscard]] std::string takeName();
    [[nodiscard]] std::string takeValue();
    [[nodiscard]] std::string takeEntity();
    void takeAttributes(XmlTag& tag);
    void requireEachOnce(const XmlTag& tag) const;

    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<std::string> open_;
    bool closesAtOnce_ = false;
};

// A value as it stands between single quotes. Raises 3001 naming `what` for a character that XML
// cannot hold.
[[nodiscard]] std::string xmlEscaped(std::string_view utf8, std::string_view what);

// Whether a text can be the name of an attribute.
[[nodiscard]] bool isXmlName(std::string_view utf8) noexcept;

}  // namespace kap::ado::persist
