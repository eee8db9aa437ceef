#include "engine/sqlite/sql_writer.hpp"

#include <limits>

#include <kaputil/automation/plain_text.hpp>

#include "base/quoting.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

namespace {

// How an operator stands before or behind its operand.
struct UnaryText {
    const char* before;
    const char* behind;
};

UnaryText textOf(sql::UnaryOperator op) {
    switch (op) {
        case sql::UnaryOperator::Minus:
            return {"-", ""};
        case sql::UnaryOperator::BitNot:
            return {"~", ""};
        case sql::UnaryOperator::Not:
            return {"NOT ", ""};
        case sql::UnaryOperator::IsNull:
            return {"", " IS NULL"};
        case sql::UnaryOperator::IsNotNull:
            return {"", " IS NOT NULL"};
        case sql::UnaryOperator::IsTrue:
            return {"", " IS TRUE"};
        case sql::UnaryOperator::IsNotTrue:
            return {"", " IS NOT TRUE"};
    }
    return {"", ""};
}

const char* textOf(sql::BinaryOperator op) {
    switch (op) {
        case sql::BinaryOperator::Equal:
            return " = ";
        case sql::BinaryOperator::NotEqual:
            return " <> ";
        case sql::BinaryOperator::Is:
            return " IS ";
        case sql::BinaryOperator::Less:
            return " < ";
        case sql::BinaryOperator::LessOrEqual:
            return " <= ";
        case sql::BinaryOperator::Greater:
            return " > ";
        case sql::BinaryOperator::GreaterOrEqual:
            return " >= ";
        case sql::BinaryOperator::Add:
            return " + ";
        case sql::BinaryOperator::Subtract:
            return " - ";
        case sql::BinaryOperator::Multiply:
            return " * ";
        case sql::BinaryOperator::BitAnd:
            return " & ";
        case sql::BinaryOperator::BitOr:
            return " | ";
        case sql::BinaryOperator::ShiftRight:
            return " >> ";
    }
    return "";
}

const char* notIf(bool negated) {
    return negated ? " NOT" : "";
}

const fn::Function& functionOf(const sql::Sum& sum) {
    const bool real = tsql::isApproximate(sum.type.type);
    if (sum.terms.size() > 2) return real ? fn::kFloatAccumulate : fn::kAccumulate;
    if (sum.terms[1].minus) return real ? fn::kFloatSubtract : fn::kSubtract;
    return real ? fn::kFloatAdd : fn::kAdd;
}

}  // namespace

void SqlWriter::write(const sql::Expression& expression) {
    tsql::requireStack(0);
    std::visit([&](const auto& kind) { node(kind); }, expression.kind());
}

void SqlWriter::write(std::span<const sql::Expression> list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i > 0) text_ += ", ";
        write(list[i]);
    }
}

void SqlWriter::name(std::string_view name) {
    text_ += '"';
    appendDoubling(text_, name, '"');
    text_ += '"';
}

void SqlWriter::number(std::int64_t value) {
    text_ += plain::text(value);
}

void SqlWriter::node(const sql::Column& column) {
    if (!column.source.empty()) {
        name(column.source);
        text_ += '.';
    }
    if (column.bare) {
        text_ += column.name;
    } else {
        name(column.name);
    }
}

void SqlWriter::node(const sql::Constant& constant) {
    const auto* whole = std::get_if<std::int64_t>(&constant.value);
    if (whole != nullptr && *whole != std::numeric_limits<std::int64_t>::min()) {
        number(*whole);
    } else {
        text_ += sqlLiteral(constant.value);
    }
}

void SqlWriter::node(const sql::Parameter& parameter) {
    text_ += '?';
    number(parameter.number);
}

void SqlWriter::node(const sql::Star& /*star*/) {
    text_ += '*';
}

void SqlWriter::node(const sql::Call& call) {
    text_ += call.function.name;
    text_ += call.distinct ? "(DISTINCT " : "(";
    write(call.arguments);
    text_ += ')';
}

void SqlWriter::node(const sql::Conversion& conversion) {
    text_ += conversion.function.name;
    text_ += '(';
    write(conversion.operand);
    text_ += ", ";
    number(packType(conversion.from));
    text_ += ", ";
    number(packType(conversion.to));
    if (conversion.style) {
        text_ += ", ";
        write(conversion.style);
    }
    text_ += ')';
}

// Many terms are one flat call: SQLite's parser has room for some thirty calls within each other
// only.
void SqlWriter::node(const sql::Sum& sum) {
    text_ += functionOf(sum).name;
    text_ += '(';
    if (sum.terms.size() > 2) {
        number(packType(sum.type));
        text_ += ", '";
        for (const sql::Term& term : sum.terms)
            text_ += term.minus ? '-' : '+';
        text_ += "', ";
    }
    for (const sql::Term& term : sum.terms) {
        if (&term != &sum.terms.front()) text_ += ", ";
        write(sql::scaled(term, sum.scale));
    }
    if (sum.terms.size() == 2) {
        text_ += ", ";
        number(packType(sum.type));
    }
    text_ += ')';
}

void SqlWriter::node(const sql::Unary& unary) {
    const UnaryText op = textOf(unary.op);
    text_ += '(';
    text_ += op.before;
    const std::size_t start = text_.size();
    write(unary.operand);
    // Two signs would begin a comment.
    if (unary.op == sql::UnaryOperator::Minus && text_[start] == '-') text_.insert(start, 1, ' ');
    text_ += op.behind;
    text_ += ')';
}

void SqlWriter::node(const sql::Binary& binary) {
    text_ += '(';
    write(binary.left);
    text_ += textOf(binary.op);
    write(binary.right);
    text_ += ')';
}

// Long chains are halves joined again and again: SQLite counts the depth of one, and a flat chain
// would be a deep one.
void SqlWriter::balanced(std::span<const sql::Expression> parts, const char* joint) {
    if (parts.size() == 1) {
        write(parts.front());
        return;
    }
    const std::size_t half = parts.size() / 2;
    text_ += '(';
    balanced(parts.first(half), joint);
    text_ += joint;
    balanced(parts.subspan(half), joint);
    text_ += ')';
}

void SqlWriter::node(const sql::Chain& chain) {
    constexpr std::size_t kMostTexts = 64;  // that are joined from left to right
    if (chain.op != sql::ChainOperator::Join) {
        balanced(chain.parts, chain.op == sql::ChainOperator::And ? " AND " : " OR ");
        return;
    }
    if (chain.parts.size() > kMostTexts) {
        balanced(chain.parts, " || ");
        return;
    }
    text_ += '(';
    for (const sql::Expression& part : chain.parts) {
        if (&part != &chain.parts.front()) text_ += " || ";
        write(part);
    }
    text_ += ')';
}

void SqlWriter::node(const sql::Bytes& bytes) {
    text_ += "CAST(";
    write(bytes.operand);
    text_ += " AS BLOB)";
}

void SqlWriter::node(const sql::Collated& collated) {
    write(collated.operand);
    text_ += " COLLATE ";
    text_ += collated.collation;
}

void SqlWriter::node(const sql::Case& choice) {
    text_ += "(CASE";
    if (choice.subject) {
        text_ += ' ';
        write(choice.subject);
    }
    for (const sql::Branch& branch : choice.branches) {
        text_ += " WHEN ";
        write(branch.when);
        text_ += " THEN ";
        write(branch.then);
    }
    if (choice.otherwise) {
        text_ += " ELSE ";
        write(choice.otherwise);
    }
    text_ += " END)";
}

void SqlWriter::node(const sql::In& in) {
    text_ += '(';
    write(in.value);
    text_ += notIf(in.negated);
    text_ += " IN (";
    write(in.list);
    text_ += "))";
}

void SqlWriter::node(const sql::InQuery& in) {
    text_ += '(';
    write(in.value);
    text_ += notIf(in.negated);
    text_ += " IN ";
    bracketed(in.query);
    text_ += ')';
}

void SqlWriter::node(const sql::Between& between) {
    text_ += '(';
    write(between.value);
    text_ += notIf(between.negated);
    text_ += " BETWEEN ";
    write(between.low);
    text_ += " AND ";
    write(between.high);
    text_ += ')';
}

void SqlWriter::node(const sql::Exists& exists) {
    text_ += "EXISTS ";
    bracketed(exists.query);
}

void SqlWriter::node(const sql::Subquery& subquery) {
    bracketed(subquery.query);
}

void SqlWriter::node(const sql::Window& window) {
    const char* blank = "";
    if (!window.partitions.empty()) {
        text_ += "PARTITION BY ";
        write(window.partitions);
        blank = " ";
    }
    if (!window.order.empty()) {
        text_ += blank;
        orderBy(window.order);
        blank = " ";
    }
    if (window.frame.empty()) return;
    text_ += blank;
    text_ += window.frame;
}

void SqlWriter::node(const sql::Over& over) {
    write(over.call);
    text_ += " OVER (";
    write(over.window);
    text_ += ')';
}

void SqlWriter::node(const sql::Definition& definition) {
    text_ += '(';
    text_ += definition.text;
    text_ += ')';
}

void SqlWriter::node(const sql::QueryText& text) {
    text_ += sqlLiteral(sqlOf(*text.query));
}

std::string sqlOf(const sql::Expression& expression) {
    std::string text;
    SqlWriter(text).write(expression);
    return text;
}

std::string sqlOf(std::span<const sql::Expression> list) {
    std::string text;
    SqlWriter(text).write(list);
    return text;
}

}  // namespace kap::engine
