#include "tsql/script_reader.hpp"

#include "tsql/lexer.hpp"
#include "tsql/parser_state.hpp"

namespace kap::tsql {

ScriptReader::ScriptReader(std::string_view sql, const ParseOptions& options)
    : parser_(std::make_unique<Parser>(sql, tokenize(sql, options.firstLine, options.quotedNames),
                                       options)) {}

ScriptReader::~ScriptReader() = default;

const std::vector<Token>& ScriptReader::tokens() const {
    return parser_->tokens();
}

std::size_t ScriptReader::position() const {
    return parser_->position();
}

bool ScriptReader::atStatement() {
    return parser_->atNextStatement();
}

Statement ScriptReader::read() {
    return parser_->nextStatement();
}

void ScriptReader::pass(std::size_t tokens) {
    parser_->pass(tokens);
}

}  // namespace kap::tsql
