// length: one text for each node of the language, each a few lines
#include "tree_text.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
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
                static const char* const kKinds[] = {"join",  "left",       "right",     "full",
                                                     "cross", "crossapply", "outerapply"};
                return node(
                    kKinds[static_cast<int>(join.kind)],
                    {sourceText(*join.left), sourceText(*join.right), optional(join.condition)});
            },
            [](const FunctionTable& function) {
                std::vector<std::string> paths;
                for (const JsonColumn& column : function.jsonColumns) {
                    paths.push_back(column.name + ":" + typeText(column.type) +
                                    (column.asJson ? ":json" : "") +
                                    (column.path ? ":" + *column.path : ""));
                }
                return node("rowsof",
                            {function.name.text(), list("with", function.arguments), function.alias,
                             names("columns", function.columnAliases), names("json", paths)});
            },
            [](const PivotTable& pivot) {
                return node("pivot", {treeText(*pivot.rows), pivot.column.text(),
                                      names("names", pivot.names), list("with", pivot.aggregates),
                                      pivot.alias, names("columns", pivot.columnAliases)});
            },
            [](const UnpivotTable& unpivot) {
                return node("unpivot", {treeText(*unpivot.rows), unpivot.value, unpivot.name,
                                        names("from", unpivot.columns), unpivot.alias,
                                        names("columns", unpivot.columnAliases)});
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
    return node(top->withTies ? "ties" : top->percent ? "top%" : "top", {treeText(*top->count)});
}

std::string whereText(const ExpressionPtr& where) {
    return where ? node("where", {treeText(*where)}) : "";
}

std::string selectText(const Select& select) {
    std::vector<std::string> parts{select.distinct ? "distinct" : "", topText(select.top)};
    for (const SelectItem& item : select.items) {
        if (const auto* star = std::get_if<StarItem>(&item.node)) {
            parts.push_back(star->qualifier.parts.empty() ? "*" : star->qualifier.text() + ".*");
        } else if (const auto* assigned = std::get_if<AssignmentItem>(&item.node)) {
            parts.push_back(node("assign", {assigned->variable, treeText(*assigned->value)}));
        } else {
            const auto& value = std::get<ExpressionItem>(item.node);
            const std::string text = treeText(*value.value);
            parts.push_back(value.alias.empty() ? text : node("as", {text, value.alias}));
        }
    }
    if (select.into) parts.push_back(node("into", {select.into->text()}));
    parts.push_back(fromText(select.from));
    parts.push_back(whereText(select.where));
    parts.push_back(list("group", select.groupBy));
    std::vector<std::string> sets;
    for (const auto& set : select.groupingSets) {
        std::vector<std::string> places;
        for (const std::size_t each : set)
            places.push_back(plain::text(static_cast<std::int64_t>(each)));
        sets.push_back(places.empty() ? "(none)" : node("set", places));
    }
    if (!sets.empty()) parts.push_back(node("sets", sets));
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
        parts.push_back(node(
            "set", {assignment.variable, assignment.column.text(), valueText(assignment.value)}));
    }
    parts.push_back(fromText(update.from));
    parts.push_back(whereText(update.where));
    return node("update", parts);
}

std::string statementText(const DeleteStatement& statement) {
    return node("delete", {topText(statement.top), statement.table.text(), fromText(statement.from),
                           whereText(statement.where)});
}

std::string statementText(const MergeStatement& merge) {
    std::vector<std::string> parts{topText(merge.top), merge.table.text(), merge.alias,
                                   node("using", {fromText(merge.source)}),
                                   node("on", {treeText(*merge.condition)})};
    for (const MergeAction& action : merge.actions) {
        static const char* const kWhen[] = {"matched", "missing", "extra"};
        const std::string done =
            std::visit([](const auto& what) { return statementText(what); }, action.action);
        parts.push_back(
            node(kWhen[static_cast<int>(action.when)], {optional(action.condition), done}));
    }
    return node("merge", parts);
}

std::string statementText(const CheckIdentityStatement& check) {
    return node("checkident", {check.table.text(), check.reseeds ? "reseed" : "noreseed",
                               optional(check.value), check.quietly ? "quietly" : ""});
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

std::string statementText(const DropStatement& drop) {
    static const char* const kKinds[] = {"",         "view",    "procedure", "function",
                                         "trigger",  "index",   "type",      "schema",
                                         "sequence", "synonym", "default",   "rule"};
    std::vector<std::string> parts{kKinds[static_cast<int>(drop.kind)],
                                   drop.ifExists ? "ifexists" : ""};
    for (const auto& name : drop.names)
        parts.push_back(name.text());
    return node("drop", parts);
}

std::string limitText(const SequenceLimit& limit) {
    if (limit.none) return "none";
    return limit.value ? plain::text(*limit.value) : "";
}

std::string statementText(const SequenceStatement& sequence) {
    const auto number = [](const std::optional<std::int64_t>& value) {
        return value ? plain::text(*value) : std::string();
    };
    const auto choice = [](const std::optional<bool>& value, const char* word) {
        if (!value) return std::string();
        return std::string(*value ? "" : "no ") + word;
    };
    return node(
        sequence.alters ? "altersequence" : "sequence",
        {sequence.name.text(), sequence.type ? typeText(*sequence.type) : "",
         sequence.restarts ? "restart" : "", number(sequence.start), number(sequence.increment),
         limitText(sequence.minimum), limitText(sequence.maximum), choice(sequence.cycles, "cycle"),
         choice(sequence.caches, "cache"), number(sequence.cacheSize)});
}

std::string statementText(const BulkInsertStatement& bulk) {
    return node("bulk", {bulk.table.text(), bulk.file, plain::text(bulk.firstRow),
                         plain::text(bulk.lastRow)});
}

std::string statementText(const ShowOptionsStatement&) {
    return "useroptions";
}

std::string statementText(const CreateSynonymStatement& synonym) {
    return node("synonym", {synonym.name.text(), synonym.target.text()});
}

std::string statementText(const TransactionStatement& transaction) {
    static const char* const kActions[] = {"begin", "commit", "rollback", "save"};
    return node(kActions[static_cast<int>(transaction.action)],
                {transaction.name, transaction.variable});
}

std::string scriptText(const Script& script) {
    std::string result;
    for (const Statement& statement : script)
        result += (result.empty() ? "" : " ") + treeText(statement);
    return result;
}

std::string statementText(const DeclareStatement& declare) {
    std::vector<std::string> parts;
    for (const auto& variable : declare.variables)
        parts.push_back(node(variable.name, {typeText(variable.type), optional(variable.initial)}));
    for (const auto& table : declare.tables)
        parts.push_back(statementText(table));
    return node("declare", parts);
}

std::string statementText(const AssignStatement& assign) {
    return node("assign", {assign.variable, treeText(*assign.value)});
}

std::string statementText(const SetOptionStatement& set) {
    std::vector<std::string> parts = set.options;
    parts.push_back(set.table.text());
    parts.push_back(set.number ? treeText(*set.number) : set.value);
    return node("option", parts);
}

std::string statementText(const IfStatement& branch) {
    return node("if", {treeText(*branch.condition), treeText(*branch.then),
                       branch.otherwise ? treeText(*branch.otherwise) : ""});
}

std::string statementText(const WhileStatement& loop) {
    return node("while", {treeText(*loop.condition), treeText(*loop.body)});
}

std::string statementText(const BlockStatement& block) {
    return node("block", {scriptText(block.statements)});
}

std::string statementText(const TryStatement& block) {
    return node("try", {scriptText(block.body), node("catch", {scriptText(block.handler)})});
}

std::string statementText(const BreakStatement& /*node*/) {
    return "(break)";
}

std::string statementText(const ContinueStatement& /*node*/) {
    return "(continue)";
}

std::string statementText(const GotoStatement& jump) {
    return node("goto", {jump.label});
}

std::string statementText(const LabelStatement& label) {
    return node("label", {label.label});
}

std::string statementText(const ReturnStatement& end) {
    return node("return", {optional(end.value)});
}

std::string statementText(const PrintStatement& print) {
    return node("print", {treeText(*print.value)});
}

std::string statementText(const RaiserrorStatement& raise) {
    return node("raiserror", {treeText(*raise.message), optional(raise.severity),
                              optional(raise.state), list("with", raise.arguments)});
}

std::string statementText(const ThrowStatement& raise) {
    return node("throw", {optional(raise.number), optional(raise.message), optional(raise.state)});
}

std::string statementText(const WaitStatement& wait) {
    return node(wait.until ? "waituntil" : "wait", {treeText(*wait.time)});
}

std::string statementText(const ExecuteStatement& call) {
    std::vector<std::string> parts{call.resultVariable, call.procedure.text(),
                                   call.procedureVariable, optional(call.text)};
    for (const Argument& argument : call.arguments) {
        parts.push_back(
            node(argument.output ? "out" : "in",
                 {argument.name, argument.value ? treeText(*argument.value) : "DEFAULT"}));
    }
    return node("exec", parts);
}

std::string statementText(const TruncateStatement& truncate) {
    return node("truncate", {truncate.table.text()});
}

std::string statementText(const AlterTableStatement& alter) {
    static const char* const kActions[] = {
        "add", "column", "dropcolumns", "dropconstraints", "constraints", "triggers"};
    std::vector<std::string> parts{alter.table.text(), kActions[static_cast<int>(alter.action)]};
    parts.insert(parts.end(), alter.names.begin(), alter.names.end());
    for (const auto& column : alter.added.columns)
        parts.push_back(node(column.name, {typeText(column.type)}));
    return node("alter", parts);
}

std::string statementText(const CreateIndexStatement& index) {
    std::vector<std::string> parts{index.unique ? "unique" : "", index.name, index.table.text()};
    for (const auto& column : index.columns)
        parts.push_back(column.descending ? node("desc", {column.name}) : column.name);
    return node("index", parts);
}

std::string statementText(const CreateViewStatement& view) {
    return node("view", {view.name.text(), names("columns", view.columns), treeText(*view.query)});
}

std::string statementText(const CreateModuleStatement& module) {
    static const char* const kKinds[] = {"procedure", "function", "trigger"};
    std::vector<std::string> parts{module.name.text(), module.table.text()};
    for (const auto& parameter : module.parameters) {
        parts.push_back(
            node(parameter.name, {typeText(parameter.type), optional(parameter.defaultValue),
                                  parameter.output ? "output" : ""}));
    }
    if (module.insteadOf) parts.push_back("insteadof");
    if (module.returnTable) parts.push_back(statementText(*module.returnTable));
    if (module.rows) parts.push_back(treeText(*module.rows));
    if (module.body) parts.push_back(scriptText(*module.body));
    return node(kKinds[static_cast<int>(module.kind)], parts);
}

std::string statementText(const CreateSchemaStatement& schema) {
    return node("schema", {schema.name, scriptText(schema.elements)});
}

std::string statementText(const AlterSchemaStatement& schema) {
    return node("transfer", {schema.schema, schema.object.text(), schema.isType ? "type" : ""});
}

std::string statementText(const CreateTypeStatement& type) {
    return node("type", {type.name.text(), typeText(type.type)});
}

std::string statementText(const CreateRuleStatement& rule) {
    return node(rule.isDefault ? "default" : "rule", {rule.name.text(), rule.text});
}

std::string statementText(const DeclareCursorStatement& cursor) {
    return node("cursor", {cursor.name, cursor.scroll ? "scroll" : "", treeText(*cursor.query)});
}

std::string statementText(const AssignCursorStatement& assign) {
    return node("assigncursor", {assign.variable, assign.source,
                                 assign.definition ? statementText(*assign.definition) : ""});
}

std::string statementText(const CursorStatement& cursor) {
    static const char* const kActions[] = {"open", "close", "deallocate"};
    return node(kActions[static_cast<int>(cursor.action)], {cursor.name});
}

std::string statementText(const FetchStatement& fetch) {
    static const char* const kDirections[] = {"next", "prior",    "first",
                                              "last", "absolute", "relative"};
    std::vector<std::string> parts{kDirections[static_cast<int>(fetch.direction)],
                                   optional(fetch.distance), fetch.cursor};
    parts.insert(parts.end(), fetch.into.begin(), fetch.into.end());
    return node("fetch", parts);
}

std::string statementText(const DatabaseStatement& database) {
    static const char* const kActions[] = {"use", "createdb", "alterdb", "dropdb"};
    return node(kActions[static_cast<int>(database.action)], {database.name});
}

std::string statementText(const BackupStatement& backup) {
    return node("backup", {treeText(*backup.file), backup.replace ? "replace" : ""});
}

std::string statementText(const CheckStatement& /*node*/) {
    return "(check)";
}

std::string statementText(const NoEffectStatement& nothing) {
    return node("noeffect", {nothing.what});
}

std::string statementText(const SelectStatement& select) {
    return treeText(*select.query);
}

std::string negatable(bool negated, const std::string& text) {
    return negated ? node("not", {text}) : text;
}

}  // namespace

namespace {

std::string windowText(const Window& window) {
    std::vector<std::string> parts{list("partition", window.partitionBy)};
    for (const OrderItem& item : window.orderBy) {
        const std::string text = treeText(*item.value);
        parts.push_back(item.descending ? node("desc", {text}) : text);
    }
    parts.push_back(window.frame);
    return node("over", parts);
}

const char* operatorText(SetOperator op) {
    static const char* const kOperators[] = {"union", "unionall", "except", "intersect"};
    return kOperators[static_cast<int>(op)];
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
            [](const QuantifiedComparison& e) {
                return node(
                    kComparison[static_cast<int>(e.op)],
                    {treeText(*e.value), node(e.all ? "all" : "any", {treeText(*e.query)})});
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
            [](const CurrentOfPredicate& e) {
                return node("currentof", {e.cursor, names("columns", e.columns)});
            },
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
                if (e.over) parts.push_back(windowText(*e.over));
                return node(e.name.text(), parts);
            },
            [](const DefaultArgument&) { return std::string("DEFAULT"); },
            [](const ScalarSubquery& e) { return treeText(*e.query); },
        },
        expression.node);
}

// FOR XML and FOR JSON with what was said of them.
std::string rowsAsTextNode(const RowsAsText& rows, const std::string& query) {
    static const char* const kModes[] = {"raw", "auto", "path"};
    const bool json = rows.language == RowsAsText::Language::Json;
    std::vector<std::string> parts{kModes[static_cast<int>(rows.mode)], query};
    const std::pair<bool, const char*> flags[] = {{rows.elements, "elements"},
                                                  {rows.marksNulls, "nulls"},
                                                  {rows.binary, "binary"},
                                                  {rows.typed, "type"},
                                                  {rows.withoutArray, "single"}};
    if (rows.rowName) parts.push_back("row:" + *rows.rowName);
    if (rows.root) parts.push_back("root:" + *rows.root);
    for (const auto& [set, name] : flags) {
        if (set) parts.emplace_back(name);
    }
    return node(json ? "json" : "xml", parts);
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
            result = node(operatorText(term.joinedBy), {result, text});
        }
    }
    for (auto table = query.commonTables.rbegin(); table != query.commonTables.rend(); ++table) {
        result = node("with", {table->name, names("columns", table->columns),
                               treeText(*table->query), result});
    }
    if (query.offset) result = node("offset", {result, treeText(*query.offset)});
    if (query.fetch) result = node("fetchrows", {result, treeText(*query.fetch)});
    if (!query.orderBy.empty()) {
        std::vector<std::string> order{result};
        for (const OrderItem& item : query.orderBy) {
            const std::string text = treeText(*item.value);
            order.push_back(item.descending ? node("desc", {text}) : text);
        }
        result = node("order", order);
    }
    return query.asText ? rowsAsTextNode(*query.asText, result) : result;
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
