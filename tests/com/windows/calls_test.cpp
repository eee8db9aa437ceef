#include <thread>

#include "dispatch_client.hpp"

namespace kap::test {
namespace {

class Calls : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(module_.isIdle()) << "objects are left"; }

    Apartment apartment_;
    Module module_;
};

TEST_F(Calls, FindMembersInAnyCase) {
    const auto bag = module_.create(kPropertyString);
    call(bag, L"sCRIVI", L"Codice", 12);
    EXPECT_EQ(L"12", call(bag, L"LEGGI", L"codice").text());
}

TEST_F(Calls, KeepTheirIdentifiers) {
    const auto bag = module_.create(kPropertyString);
    EXPECT_EQ(0x60030001, idOf(bag.get(), L"Leggi"));
    EXPECT_EQ(0x60030002, idOf(bag.get(), L"Scrivi"));
    const auto functions = module_.create(kGeneralFunctions);
    EXPECT_EQ(0x68030000, idOf(functions.get(), L"Errore"));
}

TEST_F(Calls, TakeNamedArgumentsByTheirPlace) {
    const auto bag = module_.create(kPropertyString);
    wchar_t member[] = L"Scrivi";
    wchar_t value[] = L"SVALORE";
    wchar_t name[] = L"snomeproprieta";
    LPOLESTR names[] = {member, value, name};
    DISPID ids[3] = {};
    ASSERT_EQ(S_OK, bag->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(1, ids[1]);
    EXPECT_EQ(0, ids[2]);

    const Value given[] = {Value(7), Value(L"Riga")};
    VARIANT passed[] = {given[0].raw, given[1].raw};
    DISPPARAMS parameters{passed, &ids[1], 2, 2};
    ASSERT_EQ(S_OK, bag->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                nullptr, nullptr, nullptr));
    EXPECT_EQ(L"7", call(bag, L"Leggi", L"Riga").text());
}

TEST_F(Calls, RefuseParametersThatAMemberHasNot) {
    const auto bag = module_.create(kPropertyString);
    wchar_t member[] = L"Leggi";
    wchar_t parameter[] = L"Nonsense";
    LPOLESTR names[] = {member, parameter};
    DISPID ids[2] = {};
    EXPECT_EQ(DISP_E_UNKNOWNNAME, bag->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, ids));
    EXPECT_EQ(0x60030001, ids[0]);
    EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
}

TEST_F(Calls, RefuseArgumentsThatContradictThemselves) {
    const auto bag = module_.create(kPropertyString);
    const DISPID id = idOf(bag.get(), L"Count");
    DISPID names[] = {0, 1};
    DISPPARAMS parameters{nullptr, names, 0, 2};
    EXPECT_EQ(E_INVALIDARG, bag->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                        &parameters, nullptr, nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, bag->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr,
                                        nullptr, nullptr, nullptr));
}

TEST_F(Calls, AssignAndReadProperties) {
    const auto error = module_.create(kErrorObject);
    Value none;
    ASSERT_EQ(S_OK, invoke(error.get(), idOf(error.get(), L"Numero"), DISPATCH_PROPERTYPUT,
                           values(7), none));
    EXPECT_EQ(L"7", call(error, L"Numero").text());
}

TEST_F(Calls, AssignObjectsByReferenceAndAsLanguagesWithoutItDo) {
    const auto functions = module_.create(kGeneralFunctions);
    const auto error = module_.create(kErrorObject);
    const DISPID id = idOf(functions.get(), L"Errore");
    for (const WORD kind : {WORD{DISPATCH_PROPERTYPUTREF}, WORD{DISPATCH_PROPERTYPUT}}) {
        Value none;
        ASSERT_EQ(S_OK, invoke(functions.get(), id, kind, values(error), none));
        EXPECT_EQ(error.get(), call(functions, L"Errore").object().get());
    }
}

TEST_F(Calls, GiveTheSameObjectTheSameInterface) {
    const auto functions = module_.create(kGeneralFunctions);
    const auto first = call(functions, L"Errore").object();
    const auto second = call(functions, L"Errore").object();
    EXPECT_EQ(first.get(), second.get());
}

TEST_F(Calls, ReadTheDefaultMember) {
    const auto configuration = module_.create(kConfiguration);
    call(configuration, L"Add", L"Vendite");
    Value result;
    ASSERT_EQ(S_OK, invoke(configuration.get(), DISPID_VALUE,
                           DISPATCH_METHOD | DISPATCH_PROPERTYGET, values(L"vendite"), result));
    EXPECT_EQ(VT_DISPATCH, result.type());
}

// rows("N") = value and its longer forms.
TEST_F(Calls, AssignThroughIndexedDefaultMembers) {
    const auto connection = module_.create(kLocalConnection);
    call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
    call(connection, L"Execute", L"CREATE TABLE T (N varchar(10) PRIMARY KEY)");
    call(connection, L"Execute", L"INSERT INTO T VALUES ('a')");
    const auto rows = module_.create(kLocalRecordset);
    call(rows, L"Open", L"SELECT N FROM T", connection, 1, 3);
    const auto fields = call(rows, L"Fields").object();
    const auto assign = [](const Pointer<IDispatch>& object, DISPID id, const wchar_t* value) {
        Value none;
        EXPECT_EQ(S_OK, invoke(object.get(), id, DISPATCH_PROPERTYPUT, values(L"N", value), none));
    };
    const auto held = [&] { return call(call(rows, L"Fields", L"N").object(), L"Value").text(); };
    assign(rows, DISPID_VALUE, L"b");
    EXPECT_EQ(L"b", held());
    assign(rows, idOf(rows.get(), L"Fields"), L"c");
    EXPECT_EQ(L"c", held());
    assign(fields, DISPID_VALUE, L"d");
    EXPECT_EQ(L"d", held());
    assign(fields, idOf(fields.get(), L"Item"), L"e");
    call(rows, L"Update");
    const auto saved = call(connection, L"Execute", L"SELECT N FROM T").object();
    EXPECT_EQ(L"e", call(call(saved, L"Fields", 0).object(), L"Value").text());
}

TEST_F(Calls, EnumerateCollections) {
    const auto connection = module_.create(kLocalConnection);
    call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
    const auto rows = call(connection, L"Execute", L"SELECT 1 AS A, 2 AS B").object();
    const auto fields = call(rows, L"Fields").object();
    EXPECT_EQ(DISPID_NEWENUM, idOf(fields.get(), L"_newenum"));
    Value enumeration;
    ASSERT_EQ(S_OK, invoke(fields.get(), DISPID_NEWENUM, DISPATCH_PROPERTYGET, {}, enumeration));
    Pointer<IEnumVARIANT> elements;
    ASSERT_EQ(S_OK,
              V_UNKNOWN(&enumeration.raw)->QueryInterface(IID_IEnumVARIANT, elements.outVoid()));
    std::wstring names;
    for (;;) {
        Value field;
        ULONG fetched = 0;
        if (elements->Next(1, &field.raw, &fetched) != S_OK) {
            break;
        }
        names += call(field.object(), L"Name").text() + L" ";
    }
    EXPECT_EQ(L"A B ", names);
}

TEST_F(Calls, RefuseToEnumerateWhatIsNoCollection) {
    const auto bag = module_.create(kPropertyString);
    Value result;
    Failure failure;
    invoke(bag.get(), DISPID_NEWENUM, DISPATCH_PROPERTYGET, {}, result, &failure);
    EXPECT_EQ(static_cast<HRESULT>(0x800A01B6), failure.code);
}

TEST_F(Calls, AcceptAMissingArgumentInEveryForm) {
    const auto bag = module_.create(kPropertyString);
    call(bag, L"Scrivi", L"A", 1);
    EXPECT_EQ(L"<A>1</A>", call(bag, L"Leggi").text());
    EXPECT_EQ(L"<A>1</A>", call(bag, L"Leggi", Value::missing()).text());
    Value variable = Value::missing();
    EXPECT_EQ(L"<A>1</A>", call(bag, L"Leggi", Value::to(variable)).text());
}

constexpr LCID kItalian = MAKELCID(MAKELANGID(LANG_ITALIAN, SUBLANG_ITALIAN), 0);
constexpr LCID kEnglish = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), 0);

// What "2,5" is to a client that calls in a language.
double valueOfTwoAndAHalf(const Pointer<IDispatch>& functions, LCID language) {
    const Value text(L"2,5");
    VARIANT passed[] = {text.raw};
    DISPPARAMS parameters{passed, nullptr, 1, 0};
    Value result;
    EXPECT_EQ(S_OK, functions->Invoke(idOf(functions.get(), L"kapVal"), IID_NULL, language,
                                      DISPATCH_METHOD, &parameters, &result.raw, nullptr, nullptr));
    EXPECT_EQ(VT_R8, result.type());
    return V_R8(&result.raw);
}

TEST_F(Calls, ConvertUnderTheLanguageOfTheCaller) {
    const auto functions = module_.create(kGeneralFunctions);
    EXPECT_EQ(2.5, valueOfTwoAndAHalf(functions, kItalian));
    EXPECT_EQ(25.0, valueOfTwoAndAHalf(functions, kEnglish));
    EXPECT_EQ(2.5, valueOfTwoAndAHalf(functions, kItalian));
}

TEST_F(Calls, ConvertUnderTheirOwnLanguageInEveryThread) {
    const auto functions = module_.create(kGeneralFunctions);
    EXPECT_EQ(25.0, valueOfTwoAndAHalf(functions, kEnglish));
    for (int i = 0; i < 3; ++i) {  // the system may give a new thread the number of one that ended
        std::thread([this] {
            const Apartment its;
            const auto others = module_.create(kGeneralFunctions);
            EXPECT_EQ(2.5, valueOfTwoAndAHalf(others, kItalian));
        }).join();
        EXPECT_EQ(25.0, valueOfTwoAndAHalf(functions, kEnglish));
    }
}

}  // namespace
}  // namespace kap::test
