#include <windows.h>

#include <ocidl.h>

#include <kaputil/automation/convert.hpp>

#include "com/type_libraries.hpp"
#include "dispatch_client.hpp"

// The type libraries in the module, or in the files of the folder that KAPUTIL_TYPE_LIBRARIES
// names, beside the descriptions that they were made from.
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

std::wstring typeLibraryPath(const com::TypeLibrary& types) {
    if (const wchar_t* folder = _wgetenv(L"KAPUTIL_TYPE_LIBRARIES")) {
        return folder + (L"\\" + std::wstring(platform::wide(types.fileName))) + L".tlb";
    }
    return types.resource == 1 ? Module::path()
                               : Module::path() + L"\\" + std::to_wstring(types.resource);
}

// One of the libraries, by its place among them.
class TypeLibrary : public testing::TestWithParam<std::size_t> {
protected:
    TypeLibrary() {
        EXPECT_EQ(S_OK,
                  LoadTypeLibEx(typeLibraryPath(types_).c_str(), REGKIND_NONE, library_.out()));
    }

    [[nodiscard]] Pointer<ITypeInfo> find(const String& identity) const {
        Pointer<ITypeInfo> found;
        EXPECT_EQ(S_OK, library_->GetTypeInfoOfGuid(automation::identityOf(identity), found.out()));
        return found;
    }

    const com::TypeLibrary& types_ = com::typeLibraries()[GetParam()];
    Apartment apartment_;
    Pointer<ITypeLib> library_;
};

INSTANTIATE_TEST_SUITE_P(Each, TypeLibrary, testing::Range(std::size_t{0}, std::size_t{2}));

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

TEST_P(TypeLibrary, HasTheIdentityOfTheLibrary) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, library_->GetLibAttr(&attributes));
    EXPECT_EQ(automation::identityOf(types_.identity), attributes->guid);
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    library_->ReleaseTLibAttr(attributes);
    const Texts texts = textsOf(library_.get(), -1);
    EXPECT_EQ(types_.name, texts.name);
    EXPECT_EQ(types_.description, texts.help);
}

TEST_P(TypeLibrary, HasEveryClassWithItsInterface) {
    for (const PublishedClass& one : types_.classes) {
        const auto type = find(one.classId);
        ASSERT_TRUE(type);
        EXPECT_EQ(one.name, textsOf(type.get(), MEMBERID_NIL).name);
        EXPECT_EQ(com::helpOf(*one.description), textsOf(type.get(), MEMBERID_NIL).help);
        const Attributes attributes(type);
        EXPECT_EQ(TKIND_COCLASS, attributes.held->typekind);
        const WORD flags = attributes.held->wTypeFlags;
        EXPECT_EQ(one.instancing != Instancing::NotCreatable, (flags & TYPEFLAG_FCANCREATE) != 0)
            << one.name.utf8();
        EXPECT_EQ(one.instancing == Instancing::Global, (flags & TYPEFLAG_FAPPOBJECT) != 0)
            << one.name.utf8();
        ASSERT_EQ(com::eventsOf(one) == nullptr ? 1 : 2, attributes.held->cImplTypes);
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

// The members of an interface are those of a description, in their order.
void expectMembers(const Pointer<ITypeInfo>& type, const String& name,
                   const ClassDescription& description) {
    const std::vector<UINT> own = ownFunctions(type);
    std::size_t next = 0;
    for (const MemberDescription& member : description.members) {
        for (const INVOKEKIND kind : kindsOf(member)) {
            const String place = name + u"." + member.name;
            ASSERT_LT(next, own.size()) << place.utf8();
            const Function function(type, own[next++]);
            const Texts texts = textsOf(type.get(), function.held->memid);
            EXPECT_EQ(member.name, texts.name);
            EXPECT_EQ(com::helpOf(description, member), texts.help) << place.utf8();
            EXPECT_EQ(member.dispatchId, function.held->memid) << place.utf8();
            EXPECT_EQ(kind, function.held->invkind) << place.utf8();
            const bool assigns = kind != INVOKE_FUNC && kind != INVOKE_PROPERTYGET;
            ASSERT_EQ(member.parameters.size() + (assigns ? 1 : 0),
                      static_cast<std::size_t>(function.held->cParams))
                << place.utf8();
            for (std::size_t i = 0; i < member.parameters.size(); ++i) {
                expectParameter(place, member.parameters[i], function.held->lprgelemdescParam[i]);
            }
        }
    }
    EXPECT_EQ(next, own.size()) << name.utf8();
}

TEST_P(TypeLibrary, HasEveryMemberInItsPlace) {
    for (const PublishedClass& one : types_.classes) {
        if (one.description != nullptr) {
            expectMembers(find(one.interfaceId), one.name, *one.description);
        }
        if (const ClassDescription* events = com::eventsOf(one)) {
            expectMembers(find(events->interfaceId), events->name, *events);
        }
    }
}

TEST_P(TypeLibrary, HasTheEnumerations) {
    for (const EnumerationDescription& enumeration : types_.enumerations) {
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

// The names of an object's interface and class, as it tells them itself.
std::vector<String> toldBy(const Pointer<IDispatch>& object) {
    UINT count = 0;
    EXPECT_EQ(S_OK, object->GetTypeInfoCount(&count));
    EXPECT_EQ(1U, count);
    Pointer<ITypeInfo> type;
    EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
    Pointer<IProvideClassInfo> provider;
    EXPECT_EQ(S_OK, object->QueryInterface(IID_IProvideClassInfo, provider.outVoid()));
    Pointer<ITypeInfo> itsClass;
    EXPECT_EQ(S_OK, provider->GetClassInfo(itsClass.out()));
    if (!type || !itsClass) {
        return {};
    }
    return {textsOf(type.get(), MEMBERID_NIL).name, textsOf(itsClass.get(), MEMBERID_NIL).name};
}

TEST(TypeInformation, IsWhatObjectsTellOfThemselves) {
    const Apartment apartment;
    const Module module;
    EXPECT_EQ((std::vector<String>{u"_CProprieta", u"CProprieta"}),
              toldBy(module.create(kPropertyString)));
    EXPECT_TRUE(module.isIdle());
}

TEST(TypeInformation, IsToldByEveryObjectOfDataAccess) {
    const Apartment apartment;
    const Module module;
    {
        const auto connection = module.create(kLocalConnection);
        call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
        EXPECT_EQ((std::vector<String>{u"_Connection", u"Connection"}), toldBy(connection));
        EXPECT_EQ((std::vector<String>{u"_Errors", u"Errors"}),
                  toldBy(call(connection, L"Errors").object()));
        const auto rows = call(connection, L"Execute", L"SELECT 1 AS A").object();
        EXPECT_EQ((std::vector<String>{u"_Recordset", u"Recordset"}), toldBy(rows));
        EXPECT_EQ((std::vector<String>{u"_Fields", u"Fields"}),
                  toldBy(call(rows, L"Fields").object()));
        EXPECT_EQ((std::vector<String>{u"_Field", u"Field"}),
                  toldBy(call(rows, L"Fields", 0).object()));
        Pointer<IDispatch> typed;
        EXPECT_EQ(S_OK, rows->QueryInterface(
                            automation::identityOf(u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b22"),
                            typed.outVoid()));
        EXPECT_EQ(rows.get(), typed.get()) << "its own interface is the one that is called";
    }
    EXPECT_TRUE(module.isIdle());
}

// A client that was compiled with the type library calls by the identifiers in it, and passes what
// it says.
TEST(TypeInformation, ServesCallsThatWereBoundBefore) {
    const Apartment apartment;
    const Module module;
    {
        const auto connection = module.create(kLocalConnection);
        Pointer<ITypeInfo> type;
        ASSERT_EQ(S_OK, connection->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()));
        const auto bound = [&](const wchar_t* member) {
            MEMBERID id = 0;
            auto* name = const_cast<LPOLESTR>(member);
            EXPECT_EQ(S_OK, type->GetIDsOfNames(&name, 1, &id));
            return id;
        };
        Value result;
        EXPECT_EQ(S_OK, invoke(connection.get(), bound(L"Open"), DISPATCH_METHOD,
                               values(L"Provider=KapLocal;Data Source=:memory:"), result));
        std::int32_t affected = -1;
        EXPECT_EQ(S_OK, invoke(connection.get(), bound(L"Execute"), DISPATCH_METHOD,
                               values(L"SELECT 5 AS A", Value::to(VT_I4, affected)), result));
        EXPECT_EQ(VT_DISPATCH, result.type());
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
