#include <windows.h>

#include <ocidl.h>

#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/frame/convert.hpp>

#include "dispatch_client.hpp"

// The type library in the module, or in the file that KAPUTIL_TYPE_LIBRARY names, beside the
// catalogue that it was made from.
namespace kap::test {
namespace {

namespace automation = platform::automation;

String taken(BSTR text) {
    String found = automation::fromBstr(text);
    SysFreeString(text);
    return found;
}

struct Texts {
    String name;
    String help;
};

template <class Source>
Texts textsOf(Source* source, int member) {
    BSTR name = nullptr;
    BSTR help = nullptr;
    source->GetDocumentation(member, &name, &help, nullptr, nullptr);
    return {taken(name), taken(help)};
}

std::wstring typeLibraryPath() {
    const wchar_t* path = _wgetenv(L"KAPUTIL_TYPE_LIBRARY");
    return path == nullptr ? Module::path() : path;
}

class TypeLibrary : public testing::Test {
protected:
    TypeLibrary() {
        EXPECT_EQ(S_OK, LoadTypeLibEx(typeLibraryPath().c_str(), REGKIND_NONE, library_.out()));
    }

    [[nodiscard]] Pointer<ITypeInfo> find(const String& identity) const {
        Pointer<ITypeInfo> found;
        EXPECT_EQ(S_OK, library_->GetTypeInfoOfGuid(automation::identityOf(identity), found.out()));
        return found;
    }

    Apartment apartment_;
    Pointer<ITypeLib> library_;
};

// What a description of the system's tells, freed at the end.
class Attributes {
public:
    explicit Attributes(const Pointer<ITypeInfo>& type) : type_(type) { type_->GetTypeAttr(&held); }
    ~Attributes() { type_->ReleaseTypeAttr(held); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    TYPEATTR* held = nullptr;

private:
    Pointer<ITypeInfo> type_;
};

class Function {
public:
    Function(const Pointer<ITypeInfo>& type, UINT index) : type_(type) {
        type_->GetFuncDesc(index, &held);
    }
    ~Function() { type_->ReleaseFuncDesc(held); }
    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;

    FUNCDESC* held = nullptr;

private:
    Pointer<ITypeInfo> type_;
};

VARTYPE typeIn(const ParameterDescription& parameter) {
    return parameter.type == VarType::Object ? static_cast<VARTYPE>(VT_PTR)
                                             : static_cast<VARTYPE>(parameter.type);
}

// The compiler of the type library takes no default for a text that is passed by reference, and
// none for a Variant: such a parameter is optional, and no more.
bool hasPublishedDefault(const ParameterDescription& parameter) {
    return parameter.defaultValue && !parameter.defaultValue->isMissing() &&
           parameter.type != VarType::Variant &&
           !(parameter.type == VarType::String && parameter.byReference);
}

void expectParameter(const String& place, const ParameterDescription& parameter,
                     const ELEMDESC& element) {
    const std::string where = place.utf8() + " " + parameter.name.utf8();
    const TYPEDESC* type = &element.tdesc;
    if (parameter.byReference) {
        ASSERT_EQ(VT_PTR, type->vt) << where;
        type = type->lptdesc;
    }
    const VARTYPE expected = typeIn(parameter);
    if (expected == VT_PTR) {
        // An interface of this library, or any object.
        EXPECT_TRUE(type->vt == VT_PTR || type->vt == VT_DISPATCH) << where;
    } else {
        EXPECT_EQ(expected, type->vt) << where;
    }
    const PARAMDESC& description = element.paramdesc;
    EXPECT_EQ(parameter.byReference, (description.wParamFlags & PARAMFLAG_FOUT) != 0) << where;
    EXPECT_EQ(parameter.defaultValue.has_value(), (description.wParamFlags & PARAMFLAG_FOPT) != 0)
        << where;
    ASSERT_EQ(hasPublishedDefault(parameter),
              (description.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0)
        << where;
    if (hasPublishedDefault(parameter)) {
        const Variant held = automation::fromSystem(description.pparamdescex->varDefaultValue);
        EXPECT_EQ(parameter.type, held.type()) << where;
        EXPECT_EQ(convert::toString(*parameter.defaultValue), convert::toString(held)) << where;
    }
}

// How the description of a member's kinds stands in the type library.
std::vector<INVOKEKIND> kindsOf(const MemberDescription& member) {
    std::vector<INVOKEKIND> kinds;
    if (member.method != nullptr) {
        kinds.push_back(INVOKE_FUNC);
    }
    if (member.get != nullptr) {
        kinds.push_back(INVOKE_PROPERTYGET);
    }
    if (member.let != nullptr) {
        kinds.push_back(INVOKE_PROPERTYPUT);
    }
    if (member.set != nullptr) {
        kinds.push_back(INVOKE_PROPERTYPUTREF);
    }
    return kinds;
}

TEST_F(TypeLibrary, HasTheIdentityOfTheLibrary) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, library_->GetLibAttr(&attributes));
    EXPECT_EQ(automation::identityOf(library().typeLibraryId), attributes->guid);
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    library_->ReleaseTLibAttr(attributes);
    const Texts texts = textsOf(library_.get(), -1);
    EXPECT_EQ(library().name, texts.name);
    EXPECT_EQ(library().description, texts.help);
}

TEST_F(TypeLibrary, HasEveryClassWithItsInterface) {
    for (const PublishedClass& one : publishedClasses()) {
        const auto type = find(one.classId);
        ASSERT_TRUE(type);
        EXPECT_EQ(one.name, textsOf(type.get(), MEMBERID_NIL).name);
        EXPECT_EQ(one.summary, textsOf(type.get(), MEMBERID_NIL).help);
        const Attributes attributes(type);
        EXPECT_EQ(TKIND_COCLASS, attributes.held->typekind);
        const WORD flags = attributes.held->wTypeFlags;
        EXPECT_EQ(one.instancing != Instancing::NotCreatable, (flags & TYPEFLAG_FCANCREATE) != 0)
            << one.name.utf8();
        EXPECT_EQ(one.instancing == Instancing::Global, (flags & TYPEFLAG_FAPPOBJECT) != 0)
            << one.name.utf8();
        ASSERT_EQ(1, attributes.held->cImplTypes);
        HREFTYPE reference = 0;
        ASSERT_EQ(S_OK, type->GetRefTypeOfImplType(0, &reference));
        Pointer<ITypeInfo> implemented;
        ASSERT_EQ(S_OK, type->GetRefTypeInfo(reference, implemented.out()));
        EXPECT_EQ(one.interfaceName, textsOf(implemented.get(), MEMBERID_NIL).name);
        EXPECT_EQ(automation::identityOf(one.interfaceId), Attributes(implemented).held->guid);
    }
}

// The functions of an interface that are its own, beside those that every dispatch interface has.
std::vector<UINT> ownFunctions(const Pointer<ITypeInfo>& type) {
    constexpr DWORD kOfAll = 0x60000000;
    std::vector<UINT> own;
    for (UINT i = 0; i < Attributes(type).held->cFuncs; ++i) {
        const Function function(type, i);
        const auto range = static_cast<DWORD>(function.held->memid) & 0xFFFF0000;
        if (function.held->memid != DISPID_NEWENUM && range != kOfAll &&
            range != kOfAll + 0x10000) {
            own.push_back(i);
        }
    }
    return own;
}

TEST_F(TypeLibrary, HasEveryMemberInItsPlace) {
    for (const PublishedClass& one : publishedClasses()) {
        if (one.description == nullptr) {
            continue;
        }
        const auto type = find(one.interfaceId);
        const std::vector<UINT> own = ownFunctions(type);
        std::size_t next = 0;
        for (const MemberDescription& member : one.description->members) {
            for (const INVOKEKIND kind : kindsOf(member)) {
                const String place = one.name + u"." + member.name;
                ASSERT_LT(next, own.size()) << place.utf8();
                const Function function(type, own[next++]);
                const Texts texts = textsOf(type.get(), function.held->memid);
                EXPECT_EQ(member.name, texts.name);
                EXPECT_EQ(member.summary, texts.help) << place.utf8();
                EXPECT_EQ(member.dispatchId, function.held->memid) << place.utf8();
                EXPECT_EQ(kind, function.held->invkind) << place.utf8();
                const bool assigns = kind != INVOKE_FUNC && kind != INVOKE_PROPERTYGET;
                ASSERT_EQ(member.parameters.size() + (assigns ? 1 : 0),
                          static_cast<std::size_t>(function.held->cParams))
                    << place.utf8();
                for (std::size_t i = 0; i < member.parameters.size(); ++i) {
                    expectParameter(place, member.parameters[i],
                                    function.held->lprgelemdescParam[i]);
                }
            }
        }
        EXPECT_EQ(next, own.size()) << one.name.utf8();
    }
}

TEST_F(TypeLibrary, HasTheEnumerations) {
    for (const EnumerationDescription& enumeration : publishedEnumerations()) {
        Pointer<ITypeInfo> type;
        MEMBERID found = 0;
        USHORT count = 1;
        String name = enumeration.name;
        ASSERT_EQ(S_OK, library_->FindName(const_cast<LPOLESTR>(platform::wide(name)), 0,
                                           type.out(), &found, &count));
        ASSERT_EQ(1, count);
        const Attributes attributes(type);
        EXPECT_EQ(TKIND_ENUM, attributes.held->typekind);
        ASSERT_EQ(enumeration.values.size(), attributes.held->cVars);
        for (UINT i = 0; i < attributes.held->cVars; ++i) {
            VARDESC* variable = nullptr;
            ASSERT_EQ(S_OK, type->GetVarDesc(i, &variable));
            EXPECT_EQ(enumeration.values[i].name, textsOf(type.get(), variable->memid).name);
            EXPECT_EQ(enumeration.values[i].value, V_I4(variable->lpvarValue));
            type->ReleaseVarDesc(variable);
        }
    }
}

TEST_F(TypeLibrary, IsWhatObjectsTellOfThemselves) {
    const Module module;
    {
        const auto bag = module.create(kPropertyString);
        UINT count = 0;
        ASSERT_EQ(S_OK, bag->GetTypeInfoCount(&count));
        EXPECT_EQ(1U, count);
        Pointer<ITypeInfo> type;
        ASSERT_EQ(S_OK, bag->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
        EXPECT_EQ(u"_CProprieta", textsOf(type.get(), MEMBERID_NIL).name.view());
        Pointer<IProvideClassInfo> provider;
        ASSERT_EQ(S_OK, bag->QueryInterface(IID_IProvideClassInfo, provider.outVoid()));
        Pointer<ITypeInfo> itsClass;
        ASSERT_EQ(S_OK, provider->GetClassInfo(itsClass.out()));
        EXPECT_EQ(u"CProprieta", textsOf(itsClass.get(), MEMBERID_NIL).name.view());
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Version, IsInTheFile) {
    DWORD unused = 0;
    const std::wstring path = Module::path();
    std::vector<char> data(GetFileVersionInfoSizeW(path.c_str(), &unused));
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
    void* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\", &fixed, &length));
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(fixed);
    EXPECT_EQ(0x00020006U, info->dwFileVersionMS);
    EXPECT_EQ(0x00000005U, info->dwFileVersionLS);
    void* text = nullptr;
    ASSERT_TRUE(
        VerQueryValueW(data.data(), L"\\StringFileInfo\\041004B0\\FileVersion", &text, &length));
    EXPECT_STREQ(L"2.06.0005", static_cast<const wchar_t*>(text));
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\StringFileInfo\\041004B0\\FileDescription", &text,
                               &length));
    EXPECT_STREQ(L"KAP Utility 2.6", static_cast<const wchar_t*>(text));
}

}  // namespace
}  // namespace kap::test
