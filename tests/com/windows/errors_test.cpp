#include "dispatch_client.hpp"

namespace kap::test {
namespace {

class Errors : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(module_.isIdle()) << "objects are left"; }

    Apartment apartment_;
    Module module_;
};

// The code in which a client's language finds the runtime's number.
constexpr HRESULT runtimeCode(int number) {
    return static_cast<HRESULT>(0x800A0000U + static_cast<unsigned>(number));
}

TEST_F(Errors, CarryTheRuntimesNumbers) {
    const auto bag = module_.create(kPropertyString);
    Value null;
    V_VT(&null.raw) = VT_NULL;
    const Failure failure = failureOf(bag, L"Scrivi", L"", std::move(null));
    EXPECT_EQ(DISP_E_EXCEPTION, failure.result);
    EXPECT_EQ(runtimeCode(94), failure.code);
    EXPECT_EQ(L"Invalid use of Null", failure.description);
    EXPECT_EQ(L"", failure.source);
}

TEST_F(Errors, CarryTheNumbersOfTheConfiguration) {
    const auto configuration = module_.create(kConfiguration);
    const Failure failure = failureOf(configuration, L"Item", L"Vendite");
    EXPECT_EQ(DISP_E_EXCEPTION, failure.result);
    EXPECT_EQ(-2147221503, failure.code);
    EXPECT_EQ(L"", failure.source);
    EXPECT_EQ(L"CFG   \\Vendite  non  trovato", failure.description);
}

TEST_F(Errors, CarryTheNumbersOfCollections) {
    const auto configuration = module_.create(kConfiguration);
    call(configuration, L"Add", L"Vendite");
    EXPECT_EQ(runtimeCode(457), failureOf(configuration, L"Add", L"vendite").code);
    EXPECT_EQ(runtimeCode(5), failureOf(configuration, L"Delete", L"Acquisti").code);
}

TEST_F(Errors, CarryTheNumbersOfTheDatabase) {
    const auto connection = module_.create(kLocalConnection);
    call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
    const auto functions = module_.create(kGeneralFunctions);
    Value variable(connection);
    const Failure failure =
        failureOf(functions, L"OpenRecordset", L"SELECT * FROM Nessuna", Value::to(variable));
    EXPECT_EQ(-2147217865, failure.code);
    EXPECT_EQ(L"Invalid object name 'Nessuna'.", failure.description);
}

TEST_F(Errors, TellWhatTheCallItselfLacks) {
    const auto bag = module_.create(kPropertyString);
    EXPECT_EQ(runtimeCode(449), failureOf(bag, L"Scrivi", L"A").code);
    EXPECT_EQ(runtimeCode(450), failureOf(bag, L"Count", 1, 2, 3).code);
    EXPECT_EQ(DISPID_UNKNOWN, idOf(bag.get(), L"Pippo"));
    Value result;
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, invoke(bag.get(), 0x60030099, DISPATCH_METHOD, {}, result));
}

TEST_F(Errors, RefuseAnUnsetObject) {
    const auto registry = module_.create(u"1312d785-c222-48a5-808f-95b7d63f149b");
    EXPECT_EQ(runtimeCode(91), failureOf(registry, L"Leggi", L"").code);
    EXPECT_EQ(runtimeCode(13), failureOf(registry, L"Leggi", L"Nessuna").code);
}

TEST_F(Errors, AreGivenToCallersWithoutRoomForThem) {
    const auto bag = module_.create(kPropertyString);
    DISPPARAMS none{};
    EXPECT_EQ(runtimeCode(449),
              bag->Invoke(idOf(bag.get(), L"Scrivi"), IID_NULL, LOCALE_USER_DEFAULT,
                          DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));
}

}  // namespace
}  // namespace kap::test
