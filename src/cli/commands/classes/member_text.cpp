#include "cli/commands/classes/member_text.hpp"

#include "base/hexadecimal.hpp"
#include "cli/output/value_text.hpp"

namespace kap::cli {

std::vector<std::string> accessOf(const MemberDescription& member) {
    std::vector<std::string> access;
    if (member.get != nullptr) {
        access.emplace_back("get");
    }
    if (member.let != nullptr) {
        access.emplace_back("let");
    }
    if (member.set != nullptr) {
        access.emplace_back("set");
    }
    return access;
}

std::string kindText(const MemberDescription& member) {
    if (member.kind == MemberKind::Method) {
        return member.result == VarType::Empty ? "Sub" : "Function";
    }
    if (member.kind == MemberKind::Field) {
        return "Field";
    }
    std::string kind = "Property ";
    for (std::string& way : accessOf(member)) {
        way.front() = static_cast<char>(way.front() - 'a' + 'A');
        kind += (kind.back() == ' ' ? "" : "/") + way;
    }
    return kind;
}

std::string parameterText(const ParameterDescription& parameter) {
    std::string text = parameter.defaultValue ? "Optional " : "";
    text += parameter.byReference ? "ByRef " : "ByVal ";
    text += parameter.name.utf8() + " As " + std::string(typeName(parameter.type));
    if (parameter.defaultValue && !parameter.defaultValue->isMissing()) {
        text += " = " + literalText(*parameter.defaultValue);
    }
    return text;
}

std::string resultText(const MemberDescription& member) {
    if (member.result == VarType::Empty) {
        return {};
    }
    return " As " + std::string(typeName(member.result));
}

std::string hexText(std::int32_t identifier) {
    constexpr std::size_t kDigits = 8;
    return "0x" + hex::ofNumber(static_cast<std::uint32_t>(identifier), hex::Case::Lower, kDigits);
}

std::string instancingText(Instancing instancing) {
    switch (instancing) {
        case Instancing::Creatable:
            return "creatable";
        case Instancing::Global:
            return "global, creatable";
        case Instancing::NotCreatable:
            return "not creatable";
    }
    return {};
}

}  // namespace kap::cli
