#include "com/interface_text.hpp"

#include <optional>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/code_page.hpp"

namespace kap::com {
namespace {

// The automation types as the compiler must know them; it recognises them by their names.
constexpr const char* kTypes = R"(typedef wchar_t OLECHAR;
typedef OLECHAR *BSTR;
typedef short VARIANT_BOOL;
typedef double DATE;
typedef struct tagCY { __int64 int64; } CURRENCY;
typedef struct tagDEC { __int64 low; __int64 high; } DECIMAL;
typedef struct tagVARIANT { __int64 kind; __int64 value; } VARIANT;
[object, uuid(00000000-0000-0000-C000-000000000046)]
interface IUnknown { long QueryInterface(); unsigned long AddRef(); unsigned long Release(); };
[object, uuid(00020400-0000-0000-C000-000000000046)]
interface IDispatch : IUnknown { long GetTypeInfoCount(); };
)";

std::string encoded(const String& text) {
    auto bytes = encode(CodePage::Windows1252, text);
    if (!bytes) {
        throw AutomationError(errors::kInvalidArgument,
                              u"A text of the type library is not in code page 1252: " + text);
    }
    return *bytes;
}

std::string quoted(const String& text) {
    std::string made = "\"";
    for (const char byte : encoded(text)) {
        if (byte == '"' || byte == '\\') {
            made += '\\';
        }
        made += byte;
    }
    return made + '"';
}

// Writes the description of one type library.
class InterfaceText {
public:
    explicit InterfaceText(const TypeLibrary& types) : types_(types) {}

    [[nodiscard]] std::string whole() const;

private:
    [[nodiscard]] std::string interfaceNameOf(ClassReference reference) const;
    [[nodiscard]] std::string typeText(VarType type, ClassReference objectClass) const;
    [[nodiscard]] std::string parameterText(const ParameterDescription& parameter) const;
    [[nodiscard]] std::string memberText(const ClassDescription& owner,
                                         const MemberDescription& member, const char* kind,
                                         bool assigns) const;
    [[nodiscard]] std::string memberText(const ClassDescription& owner,
                                         const MemberDescription& member) const;
    [[nodiscard]] std::string classText(const PublishedClass& one) const;
    [[nodiscard]] std::string eventsText(const ClassDescription& events) const;

    const TypeLibrary& types_;
};

std::string InterfaceText::interfaceNameOf(ClassReference reference) const {
    for (const PublishedClass& one : types_.classes) {
        if (reference != nullptr && one.description == &reference()) {
            return encoded(one.interfaceName);
        }
    }
    return "IDispatch";  // of a class that this library does not describe
}

std::string InterfaceText::typeText(VarType type, ClassReference objectClass) const {
    switch (type) {
        case VarType::Empty:
            return "void";
        case VarType::Byte:
            return "unsigned char";
        case VarType::Integer:
            return "short";
        case VarType::Long:
            return "long";
        case VarType::Single:
            return "float";
        case VarType::Double:
            return "double";
        case VarType::Currency:
            return "CURRENCY";
        case VarType::Date:
            return "DATE";
        case VarType::String:
            return "BSTR";
        case VarType::Boolean:
            return "VARIANT_BOOL";
        case VarType::Object:
            return interfaceNameOf(objectClass) + " *";
        default:
            return "VARIANT";
    }
}

// The default as the compiler takes it; nullopt where it takes none. It takes no text for what is
// passed by reference, and makes Empty of every default of a Variant.
std::optional<std::string> defaultText(const ParameterDescription& parameter) {
    switch (parameter.type) {
        case VarType::Byte:
        case VarType::Integer:
        case VarType::Long:
            return plain::text(convert::toLong(*parameter.defaultValue));
        case VarType::Boolean:
            return convert::toBoolean(*parameter.defaultValue) ? "-1" : "0";
        case VarType::String:
            if (!parameter.byReference) {
                return quoted(convert::toString(*parameter.defaultValue));
            }
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

std::string InterfaceText::parameterText(const ParameterDescription& parameter) const {
    std::string attributes = parameter.byReference ? "in, out" : "in";
    if (parameter.defaultValue) {
        attributes += ", optional";
        if (!parameter.defaultValue->isMissing()) {
            if (const auto text = defaultText(parameter)) {
                attributes += ", defaultvalue(" + *text + ")";
            }
        }
    }
    return "[" + attributes + "] " + typeText(parameter.type, parameter.objectClass) +
           (parameter.byReference ? " *" : " ") + encoded(parameter.name);
}

std::string InterfaceText::memberText(const ClassDescription& owner,
                                      const MemberDescription& member, const char* kind,
                                      bool assigns) const {
    std::string text = "            [id(" + plain::text(member.dispatchId) + ")" + kind +
                       ", helpstring(" + quoted(helpOf(owner, member)) + ")]\n            ";
    text += assigns ? "void" : typeText(member.result, member.resultClass);
    text += " " + encoded(member.name) + "(";
    const char* separator = "";
    for (const ParameterDescription& parameter : member.parameters) {
        text += separator + parameterText(parameter);
        separator = ", ";
    }
    if (assigns) {
        text +=
            std::string(separator) + "[in] " + typeText(member.result, member.resultClass) + " rhs";
    }
    return text + ");\n";
}

std::string InterfaceText::memberText(const ClassDescription& owner,
                                      const MemberDescription& member) const {
    std::string text;
    if (member.method != nullptr) {
        text += memberText(owner, member, "", false);
    }
    if (member.get != nullptr) {
        text += memberText(owner, member, ", propget", false);
    }
    if (member.let != nullptr) {
        text += memberText(owner, member, ", propput", true);
    }
    if (member.set != nullptr) {
        text += memberText(owner, member, ", propputref", true);
    }
    return text;
}

bool isCollection(const ClassDescription& description) {
    if (description.create == nullptr) {  // others give it: by the members that collections have
        const MemberDescription* member = description.find(kDefaultMember);
        return member != nullptr && member->name == u"Item" &&
               description.find(u"Count") != nullptr;
    }
    try {
        static_cast<void>(description.create()->elements());
        return true;
    } catch (const AutomationError&) {
        return false;
    }
}

std::string InterfaceText::classText(const PublishedClass& one) const {
    std::string text = "    [uuid(" + one.interfaceId.utf8() + ")]\n    dispinterface " +
                       encoded(one.interfaceName) + " {\n        properties:\n        methods:\n";
    if (one.description != nullptr) {
        for (const MemberDescription& member : one.description->members) {
            text += memberText(*one.description, member);
        }
        if (isCollection(*one.description)) {
            text += "            [id(-4), propget, restricted] IUnknown *_NewEnum();\n";
        }
    }
    text += "    };\n    [uuid(" + one.classId.utf8() + "), helpstring(" +
            quoted(helpOf(*one.description)) + ")";
    if (one.instancing == Instancing::Global) {
        text += ", appobject";
    }
    if (one.instancing == Instancing::NotCreatable) {
        text += ", noncreatable";
    }
    text += "]\n    coclass " + encoded(one.name) + " {\n        [default] dispinterface " +
            encoded(one.interfaceName) + ";\n";
    if (const ClassDescription* events = eventsOf(one)) {
        text += "        [default, source] dispinterface " + encoded(events->name) + ";\n";
    }
    return text + "    };\n";
}

// The interface that sinks implement.
std::string InterfaceText::eventsText(const ClassDescription& events) const {
    std::string text = "    [uuid(" + events.interfaceId.utf8() + "), helpstring(" +
                       quoted(helpOf(events)) + ")]\n    dispinterface " + encoded(events.name) +
                       " {\n        properties:\n        methods:\n";
    for (const MemberDescription& member : events.members) {
        text += memberText(events, member);
    }
    return text + "    };\n";
}

std::string enumerationText(const EnumerationDescription& enumeration) {
    std::string text = "    typedef [helpstring(" + quoted(enumeration.summary) + ")] enum " +
                       encoded(enumeration.name) + " {";
    const char* separator = "\n";
    for (const EnumerationDescription::Value& value : enumeration.values) {
        text += separator + ("        " + encoded(value.name)) + " = " + plain::text(value.value);
        separator = ",\n";
    }
    return text + "\n    } " + encoded(enumeration.name) + ";\n";
}

std::string InterfaceText::whole() const {
    std::string text = kTypes;
    text += "[uuid(" + types_.identity.utf8() + "), version(" + types_.version.utf8() +
            "), helpstring(" + quoted(types_.description) + ")]\nlibrary " + encoded(types_.name) +
            " {\n";
    for (const PublishedClass& one : types_.classes) {
        text += "    dispinterface " + encoded(one.interfaceName) + ";\n";
    }
    for (const EnumerationDescription& enumeration : types_.enumerations) {
        text += enumerationText(enumeration);
    }
    for (const PublishedClass& one : types_.classes) {
        if (const ClassDescription* events = eventsOf(one)) {
            text += eventsText(*events);
        }
        text += classText(one);
    }
    return text + "};\n";
}

}  // namespace

std::string interfaceText(const TypeLibrary& types) {
    return InterfaceText(types).whole();
}

}  // namespace kap::com
