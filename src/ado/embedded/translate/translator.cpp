#include "ado/embedded/translate/translator.hpp"

#include "ado/embedded/translate/statements.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::embedded {

namespace {

struct Dispatch {
    const Catalogue& catalogue;
    int line;

    Translation operator()(const tsql::SelectStatement& statement) const {
        return translateSelect(statement, catalogue);
    }
    Translation operator()(const tsql::InsertStatement& statement) const {
        return translateInsert(statement, line, catalogue);
    }
    Translation operator()(const tsql::UpdateStatement& statement) const {
        return translateUpdate(statement, catalogue);
    }
    Translation operator()(const tsql::DeleteStatement& statement) const {
        return translateDelete(statement, catalogue);
    }
    Translation operator()(const tsql::CreateTableStatement& statement) const {
        return translateCreate(statement, line, catalogue);
    }
    Translation operator()(const tsql::DropTableStatement& statement) const {
        return translateDrop(statement, line, catalogue);
    }
    Translation operator()(const tsql::TransactionStatement& statement) const {
        Translation result;
        switch (statement.action) {
            case tsql::TransactionAction::Begin:
                result.kind = StatementKind::BeginTransaction;
                break;
            case tsql::TransactionAction::Commit:
                result.kind = StatementKind::CommitTransaction;
                break;
            case tsql::TransactionAction::Rollback:
                result.kind = StatementKind::RollbackTransaction;
                break;
        }
        return result;
    }
};

ResultColumn resultColumn(const OutputColumn& output) {
    ResultColumn result;
    result.name = output.name;
    result.type = output.value.type;
    result.nullable = output.value.nullable;
    if (output.value.column == nullptr) return result;
    const Column& column = *output.value.column;
    result.baseTable = output.value.table->name;
    result.baseColumn = column.name;
    result.key = column.keyOrdinal > 0;
    result.identity = column.identity.has_value();
    result.rowVersion = column.isRowVersion();
    return result;
}

}  // namespace

Translation translate(const tsql::Statement& statement, const Catalogue& catalogue) {
    Translation result;
    try {
        result = std::visit(Dispatch{catalogue, statement.line}, statement.node);
    } catch (const tsql::ServerError& error) {
        throw error.at(statement.line);
    }
    result.line = statement.line;
    return result;
}

Translation translateSelect(const tsql::SelectStatement& statement, const Catalogue& catalogue) {
    Binder binder(catalogue);
    BoundQuery query = binder.query(*statement.query, nullptr, QueryPlace::Whole);
    Translation result;
    result.kind = StatementKind::Select;
    result.sql.push_back(std::move(query.sql));
    for (const OutputColumn& column : query.columns)
        result.columns.push_back(resultColumn(column));
    return result;
}

Translation translateDrop(const tsql::DropTableStatement& statement, int line,
                          const Catalogue& catalogue) {
    Translation result;
    result.kind = StatementKind::DropTable;
    result.writes = true;
    for (const tsql::ObjectName& name : statement.tables) {
        const Table* table = findTable(name, catalogue);
        if (table != nullptr) {
            result.sql.push_back("DROP TABLE " + tableSql(table->name, table->temporary));
            result.dropped.push_back({table->name, table->temporary});
        } else if (!statement.ifExists) {
            throw tsql::ServerError(
                3701,
                "Cannot drop the table '" + name.text() +
                    "', because it does not exist or you do not have permission.",
                line, 11, 5);
        }
    }
    return result;
}

}  // namespace kap::ado::embedded
