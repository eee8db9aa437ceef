#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Views, procedures, functions and triggers: their text is kept as it was written, and read again
// when they are used.
namespace kap::tsql {

bool Parser::atModule(std::size_t ahead) const {
    for (const char* word : {"VIEW", "PROC", "PROCEDURE", "FUNCTION", "TRIGGER"}) {
        if (atKeyword(word, ahead)) return true;
    }
    return false;
}

Statement::Node Parser::module(Making making) {
    if (atKeyword("VIEW")) return createView(making);
    if (atKeyword("FUNCTION")) return createFunction(making);
    if (atKeyword("TRIGGER")) return createTrigger(making);
    return createProcedure(making);
}

// What such a definition ends with is the end of the batch, so it must be its beginning too.
void Parser::requireFirst(const char* what) const {
    std::size_t first = 0;
    while (tokens_[first].text == ";" && tokens_[first].kind == TokenKind::Operator)
        ++first;
    const Token& token = tokens_[first];
    const bool begins =
        equalsIgnoringCase(token.text, "CREATE") || equalsIgnoringCase(token.text, "ALTER");
    constexpr std::size_t kLongestHead = 3;  // CREATE OR ALTER
    if (begins && position_ <= first + kLongestHead) return;
    throw ServerError(Message::NotFirstInBatch, {what}, peek().line);
}

Statement::Node Parser::createView(Making making) {
    requireFirst("CREATE/ALTER VIEW");
    CreateViewStatement result = viewDefinition();
    result.replace = making != Making::Create;
    result.mustExist = making == Making::Alter;
    acceptOperator(";");
    if (!atEnd()) unexpected();
    result.text = source_;
    return result;
}

CreateViewStatement Parser::viewDefinition() {
    next();
    CreateViewStatement result;
    result.name = objectName();
    if (atOperator("(")) result.columns = nameList();
    moduleOptions();
    expectKeyword("AS");
    const std::size_t draws = draws_;
    result.query = query();
    refuseDraws(draws, Message::DrawNotHere);
    if (acceptKeyword("WITH")) {
        expectKeyword("CHECK");
        expectKeyword("OPTION");
        result.checksRows = true;
    }
    return result;
}

void Parser::moduleOptions() {
    if (!acceptKeyword("WITH")) return;
    do {
        refuseKeyword("NATIVE_COMPILATION", "NATIVE_COMPILATION");
        refuseKeyword("RETURNS", "RETURNS NULL ON NULL INPUT");
        if (acceptKeyword("EXECUTE")) {
            expectKeyword("AS");
            next();
        } else if (acceptKeyword("INLINE")) {
            expectOperator("=");
            if (!acceptKeyword("OFF")) expectKeyword("ON");
        } else if (acceptKeyword("CALLED")) {
            for (const char* word : {"ON", "NULL", "INPUT"})
                expectKeyword(word);
        } else if (!acceptKeyword("ENCRYPTION") && !acceptKeyword("SCHEMABINDING") &&
                   !acceptKeyword("RECOMPILE") && !acceptKeyword("VIEW_METADATA")) {
            unexpected();
        }
    } while (acceptOperator(","));
}

CreateModuleStatement Parser::moduleOf(ModuleKind kind, Making making) {
    next();
    CreateModuleStatement result;
    result.kind = kind;
    result.replace = making != Making::Create;
    result.mustExist = making == Making::Alter;
    result.name = objectName();
    result.text = source_;
    return result;
}

std::vector<ParameterDefinition> Parser::parameterDefinitions() {
    std::vector<ParameterDefinition> result;
    while (peek().kind == TokenKind::Variable) {
        ParameterDefinition& parameter = result.emplace_back();
        parameter.name = newVariable();
        acceptKeyword("AS");
        if (acceptKeyword("CURSOR")) {
            cursorParameter(parameter);
            if (!acceptOperator(",")) break;
            if (peek().kind != TokenKind::Variable) unexpected();
            continue;
        }
        parameter.table = tableType(parameter.name);
        if (parameter.table == nullptr) {
            parameter.type = type(parameter.name, static_cast<int>(result.size()));
        }
        acceptKeyword("NULL");
        if (acceptOperator("=")) parameter.defaultValue = argumentValue();
        parameter.output = acceptKeyword("OUTPUT") || acceptKeyword("OUT");
        parameter.readOnly = acceptKeyword("READONLY");
        if (parameter.table != nullptr && !parameter.readOnly) {
            throw ServerError(Message::TableParameterNotReadOnly, {parameter.name}, peek().line);
        }
        if (parameter.table == nullptr && parameter.readOnly) {
            throw ServerError(Message::ReadOnlyOfNoTable, {parameter.name}, peek().line);
        }
        if (!acceptOperator(",")) break;
        if (peek().kind != TokenKind::Variable) unexpected();
    }
    return result;
}

// CURSOR VARYING OUTPUT: a procedure gives a cursor, and takes none.
void Parser::cursorParameter(ParameterDefinition& parameter) {
    expectKeyword("VARYING");
    if (!acceptKeyword("OUTPUT")) expectKeyword("OUT");
    parameter.cursor = true;
    parameter.output = true;
    parameter.type = {SqlType::Int};  // its place among the variables is not used
    cursorVariables_.push_back(parameter.name);
}

std::shared_ptr<Script> Parser::restOfBatch() {
    auto body = std::make_shared<Script>();
    while (true) {
        while (acceptOperator(";")) {
        }
        if (atEnd()) break;
        body->push_back(statement());
    }
    return body;
}

Statement::Node Parser::createProcedure(Making making) {
    requireFirst("CREATE/ALTER PROCEDURE");
    CreateModuleStatement result = moduleOf(ModuleKind::Procedure, making);
    result.number = procedureNumber();
    const bool bracket = acceptOperator("(");
    result.parameters = parameterDefinitions();
    if (bracket) expectOperator(")");
    moduleOptions();
    if (acceptKeyword("FOR")) expectKeyword("REPLICATION");
    expectKeyword("AS");
    refuseKeyword("EXTERNAL", "EXTERNAL NAME");
    result.body = restOfBatch();
    return result;
}

Statement::Node Parser::createFunction(Making making) {
    requireFirst("CREATE/ALTER FUNCTION");
    CreateModuleStatement result = moduleOf(ModuleKind::Function, making);
    const std::size_t draws = draws_;
    expectOperator("(");
    result.parameters = parameterDefinitions();
    expectOperator(")");
    expectKeyword("RETURNS");
    if (atKeyword("TABLE") || peek().kind == TokenKind::Variable) {
        tableFunction(result);
        refuseDraws(draws, Message::DrawNotHere);
        acceptOperator(";");
        if (!atEnd()) unexpected();
        return result;
    }
    result.returns = type(result.name.last(), 0);
    moduleOptions();
    acceptKeyword("AS");
    refuseKeyword("EXTERNAL", "EXTERNAL NAME");
    if (!atKeyword("BEGIN")) unexpected();
    result.body = std::make_shared<Script>();
    result.body->push_back(statement());
    refuseDraws(draws, Message::DrawNotHere);
    acceptOperator(";");
    if (!atEnd()) unexpected();
    return result;
}

// RETURNS TABLE AS RETURN query; RETURNS @name TABLE (...) AS BEGIN ... END.
void Parser::tableFunction(CreateModuleStatement& function) {
    if (acceptKeyword("TABLE")) {
        moduleOptions();
        acceptKeyword("AS");
        expectKeyword("RETURN");
        std::size_t brackets = 0;
        while (atOperator("(") && !atQuery()) {
            next();
            ++brackets;
        }
        function.rows = query();
        for (; brackets > 0; --brackets)
            expectOperator(")");
        return;
    }
    auto table = std::make_shared<CreateTableStatement>();
    const int line = peek().line;
    table->table = {{newVariable()}, line};
    expectKeyword("TABLE");
    tableBody(*table);
    function.returnTable = std::move(table);
    moduleOptions();
    acceptKeyword("AS");
    refuseKeyword("EXTERNAL", "EXTERNAL NAME");
    if (!atKeyword("BEGIN")) unexpected();
    function.body = std::make_shared<Script>();
    function.body->push_back(statement());
}

Statement::Node Parser::createTrigger(Making making) {
    requireFirst("CREATE/ALTER TRIGGER");
    CreateModuleStatement result = moduleOf(ModuleKind::Trigger, making);
    expectKeyword("ON");
    if (atKeyword("DATABASE") || atKeyword("ALL")) refuse("trigger on the database");
    result.table = objectName();
    moduleOptions();
    if (acceptKeyword("INSTEAD")) {
        expectKeyword("OF");
        result.insteadOf = true;
    } else if (!acceptKeyword("AFTER")) {
        expectKeyword("FOR");
    }
    do {
        if (acceptKeyword("INSERT")) {
            result.events |= kOnInsert;
        } else if (acceptKeyword("UPDATE")) {
            result.events |= kOnUpdate;
        } else {
            expectKeyword("DELETE");
            result.events |= kOnDelete;
        }
    } while (acceptOperator(","));
    if (acceptKeyword("WITH")) expectKeyword("APPEND");
    if (acceptKeyword("NOT")) {
        expectKeyword("FOR");
        expectKeyword("REPLICATION");
    }
    expectKeyword("AS");
    refuseKeyword("EXTERNAL", "EXTERNAL NAME");
    inTrigger_ = true;
    result.body = restOfBatch();
    return result;
}

}  // namespace kap::tsql
