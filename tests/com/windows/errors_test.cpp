#include <new>
#include <stdexcept>

#include <kaputil/automation/error.hpp>

#include "com/server/class_factory.hpp"
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

TEST_F(Errors, LeaveTheClientWhatTheMemberHadChosen) {
    const auto connection = module_.create(kLocalConnection);
    call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
    const auto functions = module_.create(kGeneralFunctions);
    Value variable(connection);
    std::int16_t cursor = -1;
    Value lock(-1);
    Value inner(-1);
    Value options = Value::to(inner);
    double location = -1;
    failureOf(functions, L"OpenRecordset", L"SELECT * FROM Nessuna", Value::to(variable),
              Value::to(VT_I2, cursor), Value::to(lock), Value::to(options), Value::missing(),
              Value::missing(), Value::to(VT_R8, location));
    EXPECT_EQ(3, cursor);
    EXPECT_EQ(3, lock.number());
    EXPECT_EQ(1, inner.number());
    EXPECT_EQ(3, location);
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

// The text of the thread's error object, which it gives away.
std::wstring toldByErrorObject() {
    Pointer<IErrorInfo> told;
    BSTR text = nullptr;
    if (GetErrorInfo(0, told.out()) != S_OK || FAILED(told->GetDescription(&text))) {
        return L"(nothing)";
    }
    std::wstring copy(text == nullptr ? L"" : text);
    SysFreeString(text);
    return copy;
}

// What creating an object answers when the class throws something.
template <auto kThrow>
HRESULT creationOf() {
    ClassDescription broken;
    broken.create = []() -> Ref<Object> {
        kThrow();
        return {};
    };
    const com::ServedClass served{u"Prova.Guasta", u"", u"", &broken, nullptr};
    Pointer<IClassFactory> factory;
    EXPECT_EQ(S_OK, com::factoryOf(served, IID_IClassFactory, factory.outVoid()));
    Pointer<ISupportErrorInfo> support;
    EXPECT_EQ(S_OK, factory->QueryInterface(IID_ISupportErrorInfo, support.outVoid()));
    EXPECT_EQ(S_OK, support->InterfaceSupportsErrorInfo(IID_IClassFactory));
    Pointer<IUnknown> made;
    return factory->CreateInstance(nullptr, IID_IUnknown, made.outVoid());
}

TEST(FactoryErrors, AreToldByTheErrorObject) {
    const Apartment apartment;
    constexpr auto kRaise = [] {
        throw AutomationError(-2147221503, u"La licenza è scaduta", u"KapUtil");
    };
    EXPECT_EQ(-2147221503, creationOf<kRaise>());
    EXPECT_EQ(L"La licenza \x00E8 scaduta", toldByErrorObject());
    constexpr auto kRaiseOfRuntime = [] { throw AutomationError(errors::kCannotCreateObject); };
    EXPECT_EQ(runtimeCode(429), creationOf<kRaiseOfRuntime>());
    EXPECT_EQ(L"ActiveX component can't create object", toldByErrorObject());
}

TEST(FactoryErrors, OfTheLanguageAreToldToo) {
    const Apartment apartment;
    constexpr auto kThrow = [] { throw std::runtime_error("nessun disco"); };
    EXPECT_EQ(E_FAIL, creationOf<kThrow>());
    EXPECT_EQ(L"nessun disco", toldByErrorObject());
    constexpr auto kExhaust = [] { throw std::bad_alloc(); };
    EXPECT_EQ(E_OUTOFMEMORY, creationOf<kExhaust>());
}

}  // namespace
}  // namespace kap::test
