#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "tsql/parser.hpp"
#include "tsql/statements.hpp"
#include "tsql/token.hpp"

namespace kap::tsql {

class Parser;

// Reads a batch statement by statement, for those who know some statements by their tokens and need
// not have them parsed again. parseScript() reads all of them.
//
// `sql` and `options` must live as long as the reader. Raises what parseScript() raises.
class ScriptReader {
public:
    ScriptReader(std::string_view sql, const ParseOptions& options);
    ScriptReader(const ScriptReader&) = delete;
    ScriptReader& operator=(const ScriptReader&) = delete;
    ~ScriptReader();

    // All tokens of the script; the last is TokenKind::End.
    [[nodiscard]] const std::vector<Token>& tokens() const;
    // How many of them have been read.
    [[nodiscard]] std::size_t position() const;
    [[nodiscard]] std::span<const Token> rest() const {
        return std::span(tokens()).subspan(position());
    }

    // Passes separators. False at the end of the script.
    [[nodiscard]] bool atStatement();
    // Parses the next statement.
    [[nodiscard]] Statement read();
    // Passes the next statement, which has so many tokens.
    void pass(std::size_t tokens);

private:
    std::unique_ptr<Parser> parser_;
};

}  // namespace kap::tsql
