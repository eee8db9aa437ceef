#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/hexadecimal.hpp"
#include "data/driver.hpp"
#include "drivers/driver_registry.hpp"

// What the tests of embedded databases share: opening sessions and showing what they answer.
namespace kap::ado::embedded::test {

inline std::unique_ptr<Session> openSession(const std::string& dataSource,
                                            const std::string& more = {}) {
    const ConnectionString keys = ConnectionString::parse(
        "Provider=KapLocal;Data Source='" + dataSource + "'" + (more.empty() ? "" : ";" + more));
    return driverFor(keys).open(keys);
}

// A cell in storage form: Null, a number, 'text' (binary as 0xHEX).
inline std::string shown(const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*integer);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        std::string text = std::to_string(*real);
        text.erase(text.find_last_not_of('0') + 1);
        return text.ends_with('.') ? text + "0" : text;
    }
    if (const auto* characters = std::get_if<std::string>(&value)) {
        return "'" + *characters + "'";
    }
    if (const auto* blob = std::get_if<Blob>(&value)) {
        return "0x" + hex::ofBytes(blob->bytes);
    }
    return "Null";
}

inline Value cellOf(const Result& result, std::size_t column, std::size_t row) {
    return valueAt(result.rows.at(column), row, storageOf(result.columns.at(column).type));
}

// The rows of a result: "1, 'a'; 2, Null".
inline std::string shown(const Result& result) {
    std::string text;
    const std::size_t rows = result.rows.empty() ? 0 : result.rows.front().size();
    for (std::size_t row = 0; row < rows; ++row) {
        text += row == 0 ? "" : "; ";
        for (std::size_t column = 0; column < result.columns.size(); ++column) {
            text += column == 0 ? "" : ", ";
            text += shown(cellOf(result, column, row));
        }
    }
    return text;
}

// The rows that the last statement of a script answers.
inline std::string rowsOf(Session& session, std::string_view script) {
    return shown(session.execute(script).back());
}

// The error that `work` ends with.
template <class Work>
std::optional<ServerMessage> errorOf(Work work) {
    try {
        work();
    } catch (const DriverError& error) {
        return error.messages().front();
    }
    ADD_FAILURE() << "no error was raised";
    return std::nullopt;
}

inline ServerMessage errorOf(Session& session, std::string_view script) {
    return errorOf([&] { (void)session.execute(script); }).value_or(ServerMessage{});
}

}  // namespace kap::ado::embedded::test
