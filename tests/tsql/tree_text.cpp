#include "tree_text.hpp"

#include "tsql/parser.hpp"

namespace kap::tsql::testing {

namespace {

template <typename... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

std::string node(const std::string& head, const std::vector<std::string>& parts) {
    std::string text = "(" + head;
    for (const std::string& part : parts) {
        if (!part.empty()) text += " " + part;
    }
    return text + ")";
}

std::string optional(const ExpressionPtr& expression) {
    return expression ? treeText(*expression) : "";
}

std::string list(const std::string& head, const std::vector<ExpressionPtr>& expressions) {
    std::vector<std::string> parts;
    for (const auto& expression : expressions)
        parts.push_back(treeText(*expression));
    return expressions.empty() ? "" : node(head, parts);
}

std::string names(const std::string& head, const std::vector<std::string>& parts) {
    return parts.empty() ? "" : node(head, parts);
}

std::string literalText(const Literal& literal) {
    switch (literal.kind) {
        case LiteralKind::Null:
            return "NULL";
        case LiteralKind::Money:
            return "$" + literal.text;
        case LiteralKind::Text:
            return "'" + literal.text + "'";
        case LiteralKind::NationalText:
            return "N'" + literal.text + "'";
        case LiteralKind::Binary:
            return "0x" + literal.text;
        default:
            return literal.text;
    }
}

std::string sourceText(const TableSource& source) {
    return std::visit(
        Overloaded{
            [](const NamedTable& table) {
                return table.alias.empty() ? table.name.text()
                                           : node("as", {table.name.text(), table.alias});
            },
            [](const DerivedTable& table) {
                return node("as", {treeText(*table.query), table.alias,
                                   names("columns", table.columnAliases)});
            },
            [](const Join& join) {
                static const char* const kKinds[] = {"join", "left", "right", "full", "cross"};
                return node(
                    kKinds[static_cast<int>(join.kind)],
                    {sourceText(*join.left), sourceText(*join.right), optional(join.condition)});
            }},
        source.node);
}

std::string fromText(const std::vector<TableSourcePtr>& sources) {
    std::vector<std::string> parts;
    for (const auto& source : sources)
        parts.push_back(sourceText(*source));
    return parts.empty() ? "" : node("from", parts);
}

std::string topText(const std::optional<TopClause>& top) {
    if (!top) return "";
    return node(top->percent ? "top%" : "top", {treeText(*top->count)});
}

std::string whereText(const ExpressionPtr& where) {
    return where ? node("where", {treeText(*where)}) : "";
}

std::string selectText(const Select& select) {
    std::vector<std::string> parts{select.distinct ? "distinct" : "", topText(select.top)};
    for (const SelectItem& item : select.items) {
        if (const auto* star = std::get_if<StarItem>(&item.node)) {
            parts.push_back(star->qualifier.parts.empty() ? "*" : star->qualifier.text() + ".*");
        } else {
            const auto& value = std::get<ExpressionItem>(item.node);
            const std::string text = treeText(*value.value);
            parts.push_back(value.alias.empty() ? text : node("as", {text, value.alias}));
        }
    }
    parts.push_back(fromText(select.from));
    parts.push_back(whereText(select.where));
    parts.push_back(list("group", select.groupBy));
    if (select.having) parts.push_back(node("having", {treeText(*select.having)}));
    return node("select", parts);
}

std::string valueText(const ValueOrDefault& value) {
    return value.value ? treeText(*value.value) : "DEFAULT";
}

std::string statementText(const InsertStatement& insert) {
    std::vector<std::string> parts{insert.table.text(), names("columns", insert.columns)};
    for (const auto& row : insert.rows) {
        std::vector<std::string> values;
        for (const auto& value : row)
            values.push_back(valueText(value));
        parts.push_back(node("row", values));
    }
    if (insert.query) parts.push_back(treeText(*insert.query));
    if (insert.defaultValues) parts.push_back("defaults");
    return node("insert", parts);
}

std::string statementText(const UpdateStatement& update) {
    std::vector<std::string> parts{topText(update.top), update.table.text()};
    for (const auto& assignment : update.assignments) {
        parts.push_back(node("set", {assignment.column.text(), valueText(assignment.value)}));
    }
    parts.push_back(fromText(update.from));
    parts.push_back(whereText(update.where));
    return node("update", parts);
}

std::string statementText(const DeleteStatement& statement) {
    return node("delete", {topText(statement.top), statement.table.text(), fromText(statement.from),
                           whereText(statement.where)});
}

std::string statementText(const CreateTableStatement& create) {
    std::vector<std::string> parts{create.table.text()};
    for (const auto& column : create.columns) {
        std::vector<std::string> options{typeText(column.type)};
        if (column.nullable) options.push_back(*column.nullable ? "null" : "notnull");
        if (column.identity) {
            options.push_back(node("identity", {optional(column.identity->seed),
                                                optional(column.identity->increment)}));
        }
        if (column.defaultValue) {
            options.push_back(node("default", {column.defaultValue->constraintName,
                                               treeText(*column.defaultValue->value)}));
        }
        parts.push_back(node(column.name, options));
    }
    for (const auto& key : create.keys) {
        std::vector<std::string> keyParts{key.name.empty() ? "" : key.name + ":"};
        keyParts.insert(keyParts.end(), key.columns.begin(), key.columns.end());
        parts.push_back(node(key.primary ? "primary" : "unique", keyParts));
    }
    return node("create", parts);
}

std::string statementText(const DropTableStatement& drop) {
    std::vector<std::string> parts{drop.ifExists ? "ifexists" : ""};
    for (const auto& table : drop.tables)
        parts.push_back(table.text());
    return node("drop", parts);
}

std::string statementText(const TransactionStatement& transaction) {
    static const char* const kActions[] = {"begin", "commit", "rollback"};
    return node(kActions[static_cast<int>(transaction.action)], {transaction.name});
}

std::string statementText(const SelectStatement& select) {
    return treeText(*select.query);
}

std::string negatable(bool negated, const std::string& text) {
    return negated ? node("not", {text}) : text;
}

}  // namespace

std::string treeText(const Expression& expression) {
    static const char* const kUnary[] = {"+", "-", "~", "not"};
    static const char* const kBinary[] = {"+", "-", "*", "/", "%", "&", "|", "^"};
    static const char* const kComparison[] = {"=", "<>", "<", "<=", ">", ">="};
    return std::visit(
        Overloaded{
            [](const Literal& e) { return literalText(e); },
            [](const ColumnReference& e) { return e.name.text(); },
            [](const VariableReference& e) { return e.name; },
            [](const UnaryExpression& e) {
                return node(kUnary[static_cast<int>(e.op)], {treeText(*e.operand)});
            },
            [](const BinaryExpression& e) {
                return node(kBinary[static_cast<int>(e.op)],
                            {treeText(*e.left), treeText(*e.right)});
            },
            [](const Comparison& e) {
                return node(kComparison[static_cast<int>(e.op)],
                            {treeText(*e.left), treeText(*e.right)});
            },
            [](const LogicalExpression& e) {
                return list(e.op == LogicalOperator::And ? "and" : "or", e.operands);
            },
            [](const BetweenPredicate& e) {
                return negatable(e.negated, node("between", {treeText(*e.value), treeText(*e.low),
                                                             treeText(*e.high)}));
            },
            [](const InPredicate& e) {
                return negatable(e.negated,
                                 node("in", {treeText(*e.value),
                                             e.query ? treeText(*e.query) : list("list", e.list)}));
            },
            [](const LikePredicate& e) {
                return negatable(e.negated, node("like", {treeText(*e.value), treeText(*e.pattern),
                                                          optional(e.escape)}));
            },
            [](const NullPredicate& e) {
                return negatable(e.negated, node("isnull", {treeText(*e.value)}));
            },
            [](const ExistsPredicate& e) { return node("exists", {treeText(*e.query)}); },
            [](const CaseExpression& e) {
                std::vector<std::string> parts{optional(e.subject)};
                for (const auto& branch : e.branches) {
                    parts.push_back(node("when", {treeText(*branch.when), treeText(*branch.then)}));
                }
                if (e.otherwise) parts.push_back(node("else", {treeText(*e.otherwise)}));
                return node("case", parts);
            },
            [](const CastExpression& e) {
                return node("cast", {treeText(*e.value), typeText(e.type), optional(e.style)});
            },
            [](const FunctionCall& e) {
                std::vector<std::string> parts{e.star ? "*" : "", e.distinct ? "distinct" : ""};
                for (const auto& argument : e.arguments)
                    parts.push_back(treeText(*argument));
                return node(e.name.text(), parts);
            },
            [](const ScalarSubquery& e) { return treeText(*e.query); },
        },
        expression.node);
}

std::string treeText(const Query& query) {
    std::string result;
    for (const QueryTerm& term : query.terms) {
        const auto* select = std::get_if<Select>(&term.node);
        const std::string text = select ? selectText(*select)
                                        : node("query", {treeText(*std::get<QueryPtr>(term.node))});
        if (result.empty()) {
            result = text;
        } else {
            result =
                node(term.joinedBy == SetOperator::Union ? "union" : "unionall", {result, text});
        }
    }
    if (query.orderBy.empty()) return result;
    std::vector<std::string> order{result};
    for (const OrderItem& item : query.orderBy) {
        const std::string text = treeText(*item.value);
        order.push_back(item.descending ? node("desc", {text}) : text);
    }
    return node("order", order);
}

std::string treeText(const Statement& statement) {
    return std::visit([](const auto& node) { return statementText(node); }, statement.node);
}

std::string parsed(const std::string& sql) {
    std::string result;
    for (const Statement& statement : parseScript(sql)) {
        if (!result.empty()) result += "\n";
        result += treeText(statement);
    }
    return result;
}

}  // namespace kap::tsql::testing
