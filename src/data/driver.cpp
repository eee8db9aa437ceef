#include "data/driver.hpp"

#include <algorithm>
#include <utility>

#include "base/quoting.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

// What a failed call is known by: its first error, or its first message when none is one.
const ServerMessage& raisedOf(const std::vector<ServerMessage>& messages) {
    const auto error = std::ranges::find_if(messages, &ServerMessage::isError);
    return error == messages.end() ? messages.at(0) : *error;
}

}  // namespace

String displayText(const std::string& utf8) {
    if (auto text = unicode::utf16(utf8)) {
        return std::move(*text);
    }
    std::string plain = utf8;
    for (char& letter : plain) {
        if (static_cast<unsigned char>(letter) >= 0x80) {
            letter = '?';
        }
    }
    return plain;
}

Result Session::schema(SchemaEnum /*kind*/, const SchemaRestrictions& /*wanted*/) {
    fail::notAvailable(
        u"Object or provider is not capable of performing requested operation: it does not "
        u"describe what it holds.");
}

std::string Session::quotedName(std::string_view name) const {
    return inBrackets(name);
}

DriverError::DriverError(std::vector<ServerMessage> messages, String source)
    : AutomationError(raisedOf(messages).number, displayText(raisedOf(messages).text),
                      std::move(source)),
      messages_(std::move(messages)) {}

DriverError::DriverError(const AutomationError& handled, std::vector<ServerMessage> messages)
    : AutomationError(handled),
      messages_(std::move(messages)),
      handled_(std::current_exception()) {}

void DriverError::raise() const {
    if (handled_) {
        std::rethrow_exception(handled_);
    }
    throw *this;
}

}  // namespace kap::ado
