#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>

// What the targets of readers share.
namespace kap::fuzz {

// The tables that scripts are run against.
inline constexpr const char16_t* kTables =
    u"CREATE TABLE t (a int IDENTITY PRIMARY KEY, b varchar(20), c money, d datetime, AggID "
    u"timestamp)"
    u"CREATE TABLE u (a int REFERENCES t(a), b float) CREATE INDEX i ON u (b)"
    u"INSERT INTO t (b, c, d) VALUES ('uno', 1.5, '20030102') INSERT INTO u VALUES (1, 0.5)";

// A database in memory with these tables, in which a statement has two seconds.
[[nodiscard]] Ref<ado::Connection> freshDatabase();

// The first value of what a query answers.
[[nodiscard]] Variant answerOf(const Ref<ado::Connection>& connection, std::u16string_view query);

// A text as a constant of the dialect.
[[nodiscard]] std::u16string quoted(std::u16string_view text);

// Each unit as one byte, so that the samples are texts to the readers of bytes, too.
[[nodiscard]] std::string bytesOf(std::u16string_view text);

// A folder of the process's own, and a file in it with this content.
[[nodiscard]] const std::filesystem::path& folder();
[[nodiscard]] std::filesystem::path fileWith(std::string_view name, std::string_view content);

// Ends the program unless the condition holds.
void require(bool holds, const char* what);

// Whatever an action raises is an error that a client can read.
template <class Action>
bool ends(Action action) {
    try {
        action();
        return true;
    } catch (const AutomationError& error) {
        require(!error.description().empty(), "an error without a description");
        return false;
    }
}

}  // namespace kap::fuzz
