#include <thread>

#include "com/served_classes.hpp"
#include "dispatch_client.hpp"

namespace kap::test {
namespace {

TEST(Lifetimes, ObjectsKeepTheModule) {
    const Apartment apartment;
    const Module module;
    EXPECT_TRUE(module.isIdle());
    {
        const auto functions = module.create(kGeneralFunctions);
        EXPECT_FALSE(module.isIdle());
        const auto error = call(functions, L"Errore").object();
        EXPECT_FALSE(module.isIdle());
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Lifetimes, AnObjectThatAnotherGaveOutlivesIt) {
    const Apartment apartment;
    const Module module;
    auto functions = module.create(kGeneralFunctions);
    auto error = call(functions, L"Errore").object();
    functions = {};
    EXPECT_FALSE(module.isIdle());
    EXPECT_EQ(L"0", call(error, L"Numero").text());
    error = {};
    EXPECT_TRUE(module.isIdle());
}

TEST(Lifetimes, FactoriesAndLocksKeepTheModule) {
    const Apartment apartment;
    const Module module;
    {
        Pointer<IClassFactory> factory;
        ASSERT_EQ(S_OK, module.factory(kPropertyString, factory));
        EXPECT_FALSE(module.isIdle());
        factory->LockServer(TRUE);
        factory->LockServer(FALSE);
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Lifetimes, EveryServedClassIsMadeAndGoes) {
    const Apartment apartment;
    const Module module;
    for (const com::ServedClass& served : com::servedClasses()) {
        { EXPECT_TRUE(module.create(served.classId)) << served.programmaticName.utf8(); }
        EXPECT_TRUE(module.isIdle()) << served.programmaticName.utf8();
    }
}

TEST(Lifetimes, AClassThatClientsMustNotCreateHasNoFactory) {
    const Apartment apartment;
    const Module module;
    Pointer<IClassFactory> factory;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              module.factory(u"9136269b-1192-4caf-ab2a-0b55b4cfdba3", factory));
}

TEST(Lifetimes, NothingIsMadeAsAPartOfAnotherObject) {
    const Apartment apartment;
    const Module module;
    Pointer<IClassFactory> factory;
    ASSERT_EQ(S_OK, module.factory(kPropertyString, factory));
    const auto outer = module.create(kPropertyString);
    Pointer<IUnknown> made;
    EXPECT_EQ(CLASS_E_NOAGGREGATION,
              factory->CreateInstance(outer.get(), IID_IUnknown, made.outVoid()));
}

TEST(Lifetimes, TheModuleIsLoadedAndUnloadedAHundredTimes) {
    if (GetModuleHandleW(L"KapUtil26.dll") != nullptr) {
        GTEST_SKIP() << "the system has loaded it, too";
    }
    for (int i = 0; i < 100; ++i) {
        const Apartment apartment;
        {
            const Module module;
            {
                const auto connection = module.create(kLocalConnection);
                call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:");
                const auto bag = module.create(kPropertyString);
                call(bag, L"Scrivi", L"A", i);
            }
            ASSERT_TRUE(module.isIdle());
        }
        ASSERT_EQ(nullptr, GetModuleHandleW(L"KapUtil26.dll"));
    }
}

// The system makes the object in an apartment of its own and marshals it. (Wine then keeps the
// module loaded whatever it answers.)
TEST(Lifetimes, ObjectsOfTheMultithreadedApartmentLeaveNothingBehind) {
    std::thread([] {
        const Apartment its(COINIT_MULTITHREADED);
        for (const String& identity : {kGeneralFunctions, kPropertyString, kLocalConnection}) {
            Pointer<IDispatch> made;
            EXPECT_EQ(S_OK, CoCreateInstance(platform::automation::identityOf(identity), nullptr,
                                             CLSCTX_INPROC_SERVER, IID_IDispatch, made.outVoid()));
            ASSERT_TRUE(made);
            UINT count = 0;
            EXPECT_EQ(S_OK, made->GetTypeInfoCount(&count));
            if (identity == kPropertyString) {
                call(made, L"Scrivi", L"A", 1);
                EXPECT_EQ(L"1", call(made, L"Leggi", L"A").text());
            }
        }
        const HMODULE loaded = GetModuleHandleW(L"KapUtil26.dll");
        ASSERT_NE(nullptr, loaded) << "the tests need the module registered";
        const auto canUnload = reinterpret_cast<HRESULT(WINAPI*)()>(
            reinterpret_cast<void*>(GetProcAddress(loaded, "DllCanUnloadNow")));
        EXPECT_EQ(S_OK, canUnload());
        Pointer<IClassFactory> factory;
        EXPECT_EQ(S_OK, CoGetClassObject(platform::automation::identityOf(kPropertyString),
                                         CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                         factory.outVoid()));
        EXPECT_EQ(S_FALSE, canUnload()) << "a client holds a factory";
        factory = {};
        EXPECT_EQ(S_OK, canUnload());
    }).join();
}

TEST(Threads, AnObjectRefusesAnotherThreadThanItsOwn) {
    const Apartment apartment;
    const Module module;
    const auto bag = module.create(kPropertyString);
    HRESULT answer = S_OK;
    std::thread([&] {
        const Apartment other;
        Value result;
        answer = invoke(bag.get(), 0x60030000, DISPATCH_METHOD, {}, result);
    }).join();
    EXPECT_EQ(RPC_E_WRONG_THREAD, answer);
}

// Runs the messages by which other threads' calls arrive until `done` says so.
void serveCallsUntil(HANDLE done) {
    for (;;) {
        const DWORD what = MsgWaitForMultipleObjects(1, &done, FALSE, INFINITE, QS_ALLINPUT);
        if (what == WAIT_OBJECT_0) {
            return;
        }
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            DispatchMessageW(&message);
        }
    }
}

TEST(Threads, AnotherApartmentCallsThroughTheSystemsMarshalling) {
    const Apartment apartment;
    const Module module;
    {
        const auto bag = module.create(kPropertyString);
        Pointer<IStream> stream;
        ASSERT_EQ(S_OK,
                  CoMarshalInterThreadInterfaceInStream(IID_IDispatch, bag.get(), stream.out()));
        const platform::Handle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        std::wstring read;
        std::thread other([&] {
            {
                const Apartment its;
                Pointer<IDispatch> proxy;
                CoGetInterfaceAndReleaseStream(stream.detach(), IID_IDispatch, proxy.outVoid());
                EXPECT_NE(bag.get(), proxy.get());
                call(proxy, L"Scrivi", L"Codice", 12);
                Value variable(L"Codice");
                read = call(proxy, L"Leggi", Value::to(variable)).text();
            }
            SetEvent(done.get());
        });
        serveCallsUntil(done.get());
        other.join();
        EXPECT_EQ(L"12", read);
    }
    EXPECT_TRUE(module.isIdle());
}

}  // namespace
}  // namespace kap::test
