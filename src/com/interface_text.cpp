#include "com/interface_text.hpp"

#include <optional>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/frame/convert.hpp>
#include <kaputil/frame/error.hpp>
#include <kaputil/frame/plain_text.hpp>

#include "frame/code_page.hpp"

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

std::string interfaceNameOf(ClassReference reference) {
    for (const PublishedClass& one : publishedClasses()) {
        if (reference != nullptr && one.description == &reference()) {
            return encoded(one.interfaceName);
        }
    }
    return "IDispatch";  // of a class that the library does not publish
}

std::string typeText(VarType type, ClassReference objectClass) {
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

std::string parameterText(const ParameterDescription& parameter) {
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

std::string memberText(const MemberDescription& member, const char* kind, bool assigns) {
    std::string text = "            [id(" + plain::text(member.dispatchId) + ")" + kind +
                       ", helpstring(" + quoted(member.summary) + ")]\n            ";
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

std::string memberText(const MemberDescription& member) {
    std::string text;
    if (member.method != nullptr) {
        text += memberText(member, "", false);
    }
    if (member.get != nullptr) {
        text += memberText(member, ", propget", false);
    }
    if (member.let != nullptr) {
        text += memberText(member, ", propput", true);
    }
    if (member.set != nullptr) {
        text += memberText(member, ", propputref", true);
    }
    return text;
}

bool isCollection(const ClassDescription& description) {
    if (description.create == nullptr) {
        return false;
    }
    try {
        static_cast<void>(description.create()->elements());
        return true;
    } catch (const AutomationError&) {
        return false;
    }
}

std::string classText(const PublishedClass& one) {
    std::string text = "    [uuid(" + one.interfaceId.utf8() + ")]\n    dispinterface " +
                       encoded(one.interfaceName) + " {\n        properties:\n        methods:\n";
    if (one.description != nullptr) {
        for (const MemberDescription& member : one.description->members) {
            text += memberText(member);
        }
        if (isCollection(*one.description)) {
            text += "            [id(-4), propget, restricted] IUnknown *_NewEnum();\n";
        }
    }
    text +=
        "    };\n    [uuid(" + one.classId.utf8() + "), helpstring(" + quoted(one.summary) + ")";
    if (one.instancing == Instancing::Global) {
        text += ", appobject";
    }
    if (one.instancing == Instancing::NotCreatable) {
        text += ", noncreatable";
    }
    return text + "]\n    coclass " + encoded(one.name) + " {\n        [default] dispinterface " +
           encoded(one.interfaceName) + ";\n    };\n";
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

}  // namespace

std::string interfaceText() {
    const LibraryDescription& self = library();
    std::string text = kTypes;
    text += "[uuid(" + self.typeLibraryId.utf8() + "), version(" + self.typeLibraryVersion.utf8() +
            "), helpstring(" + quoted(self.description) + ")]\nlibrary " + encoded(self.name) +
            " {\n";
    for (const PublishedClass& one : publishedClasses()) {
        text += "    dispinterface " + encoded(one.interfaceName) + ";\n";
    }
    for (const EnumerationDescription& enumeration : publishedEnumerations()) {
        text += enumerationText(enumeration);
    }
    for (const PublishedClass& one : publishedClasses()) {
        text += classText(one);
    }
    return text + "};\n";
}

}  // namespace kap::com
