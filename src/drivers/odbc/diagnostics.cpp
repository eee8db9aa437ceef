#include "drivers/odbc/diagnostics.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "data/sql_states.hpp"

namespace kap::ado::odbc {
namespace {

// The line of a script, which drivers for Transact-SQL servers tell.
constexpr SQLSMALLINT kLineField = -1154;

std::int32_t lineOf(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT record) {
    SQLINTEGER line = 0;
    const SQLRETURN code = SQLGetDiagField(kind, handle, record, kLineField, &line, 0, nullptr);
    return SQL_SUCCEEDED(code) ? line : 0;
}

// What stands in front of every report that goes through it, whoever the driver is.
constexpr auto kManagers = std::to_array<std::string_view>({"unixODBC", "iODBC"});

struct Maker {
    std::string_view name;  // the first in brackets, or its beginning
    std::size_t names;
};

// Drivers put their maker, themselves and the server in front of what a server says, and the first
// two in front of what they say themselves. These know fewer: a bracket behind them is the
// server's own text.
constexpr std::size_t kMostNames = 3;
constexpr auto kMakers = std::to_array<Maker>({
    {"FreeTDS", 2},
    {"ma-", 2},
    {"ODBC Firebird Driver", 2},
    {"Driver Manager", 1},
    {"SQLite", 1},
});

std::size_t namesOf(std::string_view maker) {
    const auto known = std::ranges::find_if(
        kMakers, [&](const Maker& each) { return maker.starts_with(each.name); });
    return known == kMakers.end() ? kMostNames : known->names;
}

// The name in brackets that a text begins with.
std::optional<std::string_view> bracketedName(std::string_view text) {
    const std::size_t close = text.find(']');
    if (!text.starts_with('[') || close == std::string_view::npos) return std::nullopt;
    return text.substr(1, close - 1);
}

std::string utf8Of(const std::u16string& text) {
    return unicode::displayUtf8(text);
}

// One report of a handle, and whether it is of a driver that puts its reports in an order of its
// own; false behind the last.
bool readRecord(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT record, ServerMessage& message,
                bool& sorts) {
    std::array<char16_t, 6> state{};
    std::u16string text(512, u'\0');
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    for (;;) {
        const SQLRETURN code =
            SQLGetDiagRecW(kind, handle, record, wide(state.data()), &native, wide(text.data()),
                           static_cast<SQLSMALLINT>(text.size()), &length);
        if (!SQL_SUCCEEDED(code)) {
            return false;
        }
        if (static_cast<std::size_t>(length) < text.size()) {
            break;
        }
        text.resize(static_cast<std::size_t>(length) + 1);
    }
    text.resize(static_cast<std::size_t>(length));
    message.nativeNumber = native;
    message.state = utf8Of(std::u16string(state.data(), 5));
    const std::string whole = utf8Of(text);
    sorts = sorts || whole.find("[FreeTDS]") != std::string::npos;
    message.text = withoutOrigin(whole);
    return true;
}

// FreeTDS tells what a script raises before a constraint that was violated first. On one line there
// is nothing to tell them apart by, and scripts raise because of what has failed before.
void restoreOrder(std::vector<ServerMessage>& messages) {
    constexpr std::int32_t kFirstOfScripts = 50000;
    const auto goesBehind = [&](const ServerMessage& raised, const ServerMessage& constraint) {
        return raised.isError() && raised.nativeNumber >= kFirstOfScripts &&
               constraint.state.starts_with("23") && constraint.nativeNumber < kFirstOfScripts &&
               constraint.line <= raised.line;
    };
    for (std::size_t end = 1; end < messages.size(); ++end) {
        for (std::size_t at = end; at > 0 && goesBehind(messages[at - 1], messages[at]); --at) {
            std::swap(messages[at - 1], messages[at]);
        }
    }
}

}  // namespace

bool saysConnectionLost(std::string_view state) {
    return state.starts_with("08") || state.starts_with("57P") || state == "01002";
}

std::string withoutOrigin(std::string_view text) {
    std::string_view rest = text;
    while (const auto name = bracketedName(rest)) {
        if (std::ranges::find(kManagers, *name) == kManagers.end()) break;
        rest.remove_prefix(name->size() + 2);
    }
    const auto maker = bracketedName(rest);
    for (std::size_t names = maker ? namesOf(*maker) : 0; names > 0; --names) {
        const auto name = bracketedName(rest);
        if (!name) break;
        rest.remove_prefix(name->size() + 2);
    }
    // The manager of drivers separates its own texts by a blank.
    if (rest.size() < text.size() && rest.starts_with(' ')) rest.remove_prefix(1);
    return std::string(rest);
}

std::vector<ServerMessage> diagnosticsOf(SQLSMALLINT kind, SQLHANDLE handle, bool failed) {
    std::vector<ServerMessage> messages;
    bool sorts = false;
    for (SQLSMALLINT record = 1;; ++record) {
        ServerMessage message;
        if (!readRecord(kind, handle, record, message, sorts)) {
            break;
        }
        // A failed call may report warnings, too: they are of class 01, or of no class.
        const bool warning = message.state.starts_with("01") || message.state.starts_with("00");
        message.number = failed ? numberOfState(message.state) : 0;
        if (!failed || (warning && !saysConnectionLost(message.state))) {
            message.severity = 0;
        }
        message.line = kind == SQL_HANDLE_STMT ? lineOf(kind, handle, record) : 0;
        messages.push_back(std::move(message));
    }
    if (sorts) {
        restoreOrder(messages);
    }
    if (failed && std::ranges::none_of(messages, &ServerMessage::isError)) {
        // Some drivers call their only report a warning, or fail without a word.
        if (messages.empty()) {
            messages.push_back({0, errors::kUnspecified, "HY000",
                                "The database's driver failed and does not say why."});
        }
        messages.front().number = errors::kUnspecified;
        messages.front().severity = ServerMessage().severity;
    }
    return messages;
}

DriverError driverError(std::int32_t number, std::string state, std::string text) {
    ServerMessage message;
    message.number = number;
    message.state = std::move(state);
    message.text = std::move(text);
    return DriverError({std::move(message)}, kErrorSource);
}

}  // namespace kap::ado::odbc
