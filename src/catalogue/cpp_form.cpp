// The examples are written once, in Basic; this is how C++ writes them. Members of the library's
// classes are called as the headers declare them, those of any other object by name.
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/catalogue/documentation.hpp>

#include "catalogue/code_lines.hpp"
#include "catalogue/cpp_names.hpp"
#include "catalogue/cpp_values.hpp"
#include "catalogue/script_tree.hpp"

namespace kap {
namespace {

const MemberDescription& memberOf(const ClassDescription& owner, std::string_view name) {
    const MemberDescription* member = owner.find(String(name).view());
    if (member == nullptr) {
        throw std::invalid_argument(owner.name.utf8() + " has no " + std::string(name));
    }
    return *member;
}

const MemberDescription& defaultOf(const ClassDescription& owner) {
    const MemberDescription* member = owner.find(kDefaultMember);
    if (member == nullptr) {
        throw std::invalid_argument(owner.name.utf8() + " has no default member");
    }
    return *member;
}

CppType typeOf(const ClassDescription& owner, const MemberDescription& member) {
    return {.type = member.result,
            .object = member.resultClass == nullptr ? nullptr : &member.resultClass(),
            .enumeration = cppEnumerationOf(owner, "", member.name.utf8())};
}

using Expressions = std::vector<ScriptExpression>;

// How often each variable is assigned, and as what a member writes into it.
struct CppVariable {
    int assignments = 0;
    std::optional<VarType> writtenAs;
};

class CppWriter : CodeLines {
public:
    CppWriter() : CodeLines("//", " {") {}

    std::string write(std::string_view setup, std::string_view script) {
        const std::vector<ScriptStatement> before = readScript(setup);
        const std::vector<ScriptStatement> statements = readScript(script);
        for (const auto* part : {&before, &statements}) {
            for (const ScriptStatement& statement : *part) {
                count(statement);
            }
        }
        // Twice: what members write into is known when all calls have been seen.
        for (int round = 0; round < 2; ++round) {
            types_.clear();
            write(before);
            clear();
            write(statements);
        }
        return take();
    }

private:
    void count(const ScriptStatement& statement) {
        if (statement.action == ScriptAction::Assign &&
            statement.parts[0].part == ScriptPart::Name) {
            ++variables_[statement.parts[0].text].assignments;
        }
    }

    void write(const std::vector<ScriptStatement>& statements) {
        for (const ScriptStatement& statement : statements) {
            writeStatement(statement);
        }
    }

    void writeStatement(const ScriptStatement& statement) {
        const Expressions& parts = statement.parts;
        const std::string& comment = statement.comment;
        if (statement.looksAtError && trying_) {
            end();
            begin("} catch (const kap::AutomationError& error)", {});
            trying_ = false;
        }
        switch (statement.action) {
            case ScriptAction::Nothing:
                return put({}, comment);
            case ScriptAction::Declare:
                return;
            case ScriptAction::Call:
                return put(value(parts[0]).text + ";", comment);
            case ScriptAction::Assign:
                return put(assigned(parts[0], parts[1]) + ";", comment);
            case ScriptAction::Print:
                return put(print(parts), comment);
            case ScriptAction::If:
                return begin("if (" + condition(parts[0]) + ")", comment);
            case ScriptAction::Else:
                end();
                return begin("} else", comment);
            case ScriptAction::Until:
                return begin("while (" + denied(parts[0]) + ")", comment);
            case ScriptAction::While:
                return begin("while (" + condition(parts[0]) + ")", comment);
            case ScriptAction::ForEach:
                return beginElements(parts, comment);
            case ScriptAction::For:
                return beginNumbers(parts, comment);
            case ScriptAction::Try:
                trying_ = true;
                return begin("try", {});
            case ScriptAction::EndTry:
                trying_ = false;
                [[fallthrough]];
            case ScriptAction::End:
                end();
                return put("}");
        }
    }

    void beginElements(const Expressions& parts, const std::string& comment) {
        const CppValue collection = value(parts[1]);
        types_[parts[0].text] = {};
        const bool known = collection.type.object != nullptr;
        begin("for (const kap::Variant& " + parts[0].text + " : " +
                  (known ? collection.text + "->elements()"
                         : "kap::late::elements(" + collection.text + ")") +
                  ")",
              comment);
    }

    void beginNumbers(const Expressions& parts, const std::string& comment) {
        const std::string& name = parts[0].text;
        const CppValue last = value(parts[2]);
        types_[name] = {.type = last.type.type};
        const CppConversion* conversion = cppConversionOf(last.type.type);
        begin("for (" + std::string(conversion == nullptr ? "auto" : conversion->declared) + " " +
                  name + " = " + value(parts[1]).text + "; " + name + " <= " + last.text + "; ++" +
                  name + ")",
              comment);
    }

    std::string print(const Expressions& parts) {
        std::string made = "std::cout";
        for (std::size_t i = 0; i < parts.size(); ++i) {
            made += (i == 0 ? " << " : " << ' ' << ") + cppPrinted(value(parts[i]));
        }
        return made + " << '\\n';";
    }

    std::string condition(const ScriptExpression& expression) {
        const CppValue made = value(expression);
        return cppConverted(made, VarType::Boolean);
    }

    std::string denied(const ScriptExpression& expression) {
        const CppValue made = value(expression);
        return "!" + (made.type.type == VarType::Boolean ? cppEnclosed(made)
                                                         : cppConverted(made, VarType::Boolean));
    }

    // ---- assignments

    std::string assigned(const ScriptExpression& target, const ScriptExpression& source) {
        if (target.part == ScriptPart::Name) {
            return assignedVariable(target.text, value(source));
        }
        if (target.part == ScriptPart::Member) {
            const CppValue object = value(target.parts[0]);
            if (object.type.object == nullptr) {
                return "kap::late::let(" + object.text + ", u" + cppText(target.text) + ", " +
                       value(source).text + ")";
            }
            return assignedMember(object, memberOf(*object.type.object, target.text), source);
        }
        const CppValue element = value(target);
        if (element.type.object == nullptr) {
            throw std::invalid_argument("what is assigned has no class");
        }
        return assignedMember(element, defaultOf(*element.type.object), source);
    }

    std::string assignedMember(const CppValue& object, const MemberDescription& member,
                               const ScriptExpression& source) {
        const CppType type = typeOf(*object.type.object, member);
        return object.text + "->set" + cppMemberName(member.name.utf8()) + "(" +
               argument(type.type, type.enumeration, source) + ")";
    }

    std::string assignedVariable(const std::string& name, CppValue source) {
        if (types_.contains(name)) {
            return name + " = " + cppConverted(source, types_[name].type);
        }
        const CppVariable& variable = variables_[name];
        if (variable.writtenAs) {
            types_[name] = {.type = *variable.writtenAs};
            return std::string(cppConversionOf(*variable.writtenAs)->declared) + " " + name +
                   " = " +
                   (source.type.literal ? source.text : cppConverted(source, *variable.writtenAs));
        }
        const bool isText = source.type.type == VarType::String;
        source.type.literal = false;
        source.type.whole = true;
        types_[name] = source.type;
        return std::string(variable.assignments > 1 ? "" : "const ") +
               (isText ? "kap::String " : "auto ") + name + " = " + source.text;
    }

    // ---- expressions

    CppValue value(const ScriptExpression& expression) {
        const Expressions& parts = expression.parts;
        switch (expression.part) {
            case ScriptPart::Number:
                return {expression.text,
                        {.type = expression.text.find('.') == std::string::npos ? VarType::Long
                                                                                : VarType::Double}};
            case ScriptPart::Text:
                return {"u" + cppText(expression.text), {.type = VarType::String, .literal = true}};
            case ScriptPart::Name:
                return named(expression.text);
            case ScriptPart::Member:
                return member(parts[0], expression.text);
            case ScriptPart::Call:
                return called(parts);
            case ScriptPart::List:
                return {"kap::Array::ofVariants({" + list(parts, 0) + "})",
                        {.type = VarType::Array}};
            case ScriptPart::Group:
                return {"(" + value(parts[0]).text + ")", value(parts[0]).type};
            case ScriptPart::Not:
                return {denied(parts[0]), {.type = VarType::Boolean, .whole = false}};
            case ScriptPart::Operation:
                return operation(expression.text, parts);
        }
        return {};
    }

    CppValue named(const std::string& name) {
        static const std::map<std::string_view, CppValue> words = {
            {"Empty", {"kap::Variant()", {}}},
            {"Null", {"kap::Variant::null()", {}}},
            {"Nothing", {"kap::Ref<kap::Object>()", {.type = VarType::Object}}},
            {"True", {"true", {.type = VarType::Boolean}}},
            {"False", {"false", {.type = VarType::Boolean}}},
            {"vbCrLf", {R"(u"\r\n")", {.type = VarType::String, .literal = true}}},
            {"vbTab", {R"(u"\t")", {.type = VarType::String, .literal = true}}}};
        if (const auto word = words.find(name); word != words.end()) {
            return word->second;
        }
        const auto known = types_.find(name);
        return {name, known == types_.end() ? CppType() : known->second};
    }

    CppValue member(const ScriptExpression& owner, const std::string& name) {
        if (owner.isName("Err")) {
            return name == "Number" ? CppValue{"error.number()", {.type = VarType::Long}}
                                    : CppValue{"error.description()", {.type = VarType::String}};
        }
        const CppValue object = value(owner);
        if (object.type.object == nullptr) {
            return {"kap::late::get(" + object.text + ", u" + cppText(name) + ")", {}};
        }
        return memberCall(object, memberOf(*object.type.object, name), {}, 0);
    }

    CppValue called(const Expressions& parts) {
        const ScriptExpression& callee = parts[0];
        if (callee.part == ScriptPart::Member) {
            const CppValue object = value(callee.parts[0]);
            if (object.type.object == nullptr) {
                const std::string arguments = parts.size() > 1 ? ", {" + list(parts, 1) + "}" : "";
                return {"kap::late::call(" + object.text + ", u" + cppText(callee.text) +
                            arguments + ")",
                        {}};
            }
            return memberCall(object, memberOf(*object.type.object, callee.text), parts, 1);
        }
        if (callee.isName("CreateObject")) {
            return created(parts.at(1).text);
        }
        if (callee.isName("CStr")) {
            return {cppAsText(value(parts.at(1))), {.type = VarType::String}};
        }
        if (callee.isName("Len")) {
            const CppValue text = value(parts.at(1));
            const bool isText = text.type.type == VarType::String;
            return {(isText ? cppEnclosed(text) : cppAsText(text)) + ".size()",
                    {.type = VarType::Long}};
        }
        const CppValue object = value(callee);
        if (object.type.object == nullptr) {
            throw std::invalid_argument("what is called is not known: " + callee.text);
        }
        return memberCall(object, defaultOf(*object.type.object), parts, 1);
    }

    static CppValue created(const std::string& name) {
        const CppClass known = cppClassNamed(name);
        if (known.description == nullptr) {
            return {"kap::createObject(u" + cppText(name) + ")", {}};
        }
        return {"kap::make<" + known.name + ">()",
                {.type = VarType::Object, .object = known.description}};
    }

    // Arguments for a member that takes none are for the default member of what it gives.
    CppValue memberCall(const CppValue& object, const MemberDescription& member,
                        const Expressions& parts, std::size_t from) {
        const std::string name = member.name.utf8();
        const std::string text = object.text + "->" + cppMemberName(name) + "(";
        const CppType type = typeOf(*object.type.object, member);
        if (member.parameters.empty() && parts.size() > from) {
            if (type.object == nullptr) {
                throw std::invalid_argument(name + " takes no arguments");
            }
            return memberCall({text + ")", type}, defaultOf(*type.object), parts, from);
        }
        std::string arguments;
        for (std::size_t i = from; i < parts.size(); ++i) {
            const ParameterDescription& parameter = member.parameters.at(i - from);
            arguments += i == from ? "" : ", ";
            arguments += handed(*object.type.object, name, parameter, parts[i]);
        }
        return {text + arguments + ")", type};
    }

    std::string handed(const ClassDescription& owner, const std::string& member,
                       const ParameterDescription& parameter, const ScriptExpression& source) {
        const bool variable = source.part == ScriptPart::Name && types_.contains(source.text);
        if (parameter.byReference && variable && parameter.type != VarType::Object &&
            types_[source.text].object == nullptr) {
            variables_[source.text].writtenAs = parameter.type;
            return source.text;
        }
        return argument(parameter.type, cppEnumerationOf(owner, member, parameter.name.utf8()),
                        source);
    }

    std::string argument(VarType wanted, std::string_view enumeration,
                         const ScriptExpression& source) {
        if (!enumeration.empty() && source.part == ScriptPart::Number) {
            const auto number = plain::readInt(source.text);
            return cppEnumerator(enumeration, number.value());
        }
        const CppValue made = value(source);
        return made.type.literal ? made.text : cppConverted(made, wanted);
    }

    std::string list(const Expressions& parts, std::size_t from) {
        std::string made;
        for (std::size_t i = from; i < parts.size(); ++i) {
            made += (i == from ? "" : ", ") + value(parts[i]).text;
        }
        return made;
    }

    CppValue operation(const std::string& sign, const Expressions& parts) {
        if (sign == "&") {
            const CppValue right = value(parts[1]);
            return {cppAsText(value(parts[0])) + " + " +
                        (right.type.literal ? right.text : cppConverted(right, VarType::String)),
                    {.type = VarType::String, .whole = false}};
        }
        if (sign == "And" || sign == "Or") {
            return {condition(parts[0]) + (sign == "And" ? " && " : " || ") + condition(parts[1]),
                    {.type = VarType::Boolean, .whole = false}};
        }
        if (sign == "Is" && parts[1].isName("Nothing")) {
            return {"!" + cppEnclosed(value(parts[0])), {.type = VarType::Boolean, .whole = false}};
        }
        if (sign == "=" && parts[1].isName("Empty")) {
            return {cppEnclosed(value(parts[0])) + ".isEmpty()", {.type = VarType::Boolean}};
        }
        return counted(sign, value(parts[0]), value(parts[1]));
    }

    // Comparisons and arithmetic, which C++ does with numbers; texts are compared as they are.
    static CppValue counted(const std::string& sign, const CppValue& left, const CppValue& right) {
        static const std::map<std::string_view, std::string_view> others = {
            {"=", "=="}, {"<>", "!="}, {"Mod", "%"}};
        const auto other = others.find(sign);
        const bool whole = cppCounts(left.type.type) && cppCounts(right.type.type);
        const bool compares = sign.find_first_of("=<>") != std::string::npos;
        const bool texts =
            compares && (left.type.type == VarType::String || right.type.type == VarType::String);
        const VarType shared = whole ? VarType::Long : VarType::Double;
        const auto side = [&](const CppValue& value) {
            return texts ? cppAsText(value) : cppConverted(value, shared);
        };
        return {side(left) + " " + (other == others.end() ? sign : std::string(other->second)) +
                    " " + side(right),
                {.type = compares ? VarType::Boolean : shared, .whole = false}};
    }

    std::map<std::string, CppVariable> variables_;
    std::map<std::string, CppType> types_;
    bool trying_ = false;
};

}  // namespace

std::string cppForm(std::string_view script, std::string_view setup) {
    return CppWriter().write(setup, script);
}

}  // namespace kap
