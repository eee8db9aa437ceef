#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"
#include "platform/win32/automation/values.hpp"
#include "platform/win32/wide.hpp"

// A client that knows nothing of the library but what the system's interfaces tell.
namespace kap::test {

template <class Interface>
using Pointer = platform::automation::InterfacePointer<Interface>;

// A value of the system's that frees what it holds; made of the plain values that tests need.
class Value {
public:
    Value() { VariantInit(&raw); }
    Value(int number) : Value() {
        V_VT(&raw) = VT_I4;
        V_I4(&raw) = number;
    }
    Value(double number) : Value() {
        V_VT(&raw) = VT_R8;
        V_R8(&raw) = number;
    }
    Value(const wchar_t* text) : Value() {
        V_VT(&raw) = VT_BSTR;
        V_BSTR(&raw) = SysAllocString(text);
    }
    Value(IDispatch* object) : Value() {
        V_VT(&raw) = VT_DISPATCH;
        V_DISPATCH(&raw) = object;
        if (object != nullptr) {
            object->AddRef();
        }
    }
    Value(const Pointer<IDispatch>& object) : Value(object.get()) {}
    Value(Value&& other) noexcept : raw(other.raw) { VariantInit(&other.raw); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(&raw); }

    static Value missing() {
        Value value;
        V_VT(&value.raw) = VT_ERROR;
        V_ERROR(&value.raw) = DISP_E_PARAMNOTFOUND;
        return value;
    }
    // A reference to another value, as variables of scripts are passed.
    static Value to(Value& variable) {
        Value value;
        V_VT(&value.raw) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(&value.raw) = &variable.raw;
        return value;
    }
    template <class T>
    static Value to(VARTYPE type, T& variable) {
        Value value;
        V_VT(&value.raw) = static_cast<VARTYPE>(VT_BYREF | type);
        V_BYREF(&value.raw) = &variable;
        return value;
    }

    [[nodiscard]] VARTYPE type() const { return V_VT(&raw); }
    [[nodiscard]] std::wstring text() const {
        return V_VT(&raw) == VT_BSTR ? std::wstring(V_BSTR(&raw), SysStringLen(V_BSTR(&raw)))
                                     : L"(no text)";
    }
    [[nodiscard]] int number() const {
        return V_VT(&raw) == VT_I2 ? V_I2(&raw) : V_VT(&raw) == VT_I4 ? V_I4(&raw) : -999999;
    }
    [[nodiscard]] bool isTrue() const {
        return V_VT(&raw) == VT_BOOL && V_BOOL(&raw) == VARIANT_TRUE;
    }
    [[nodiscard]] Pointer<IDispatch> object() const {
        return Pointer<IDispatch>(V_VT(&raw) == VT_DISPATCH ? V_DISPATCH(&raw) : nullptr);
    }

    VARIANT raw;
};

template <class... Values>
std::vector<Value> values(Values&&... given) {
    std::vector<Value> all;
    (all.emplace_back(std::forward<Values>(given)), ...);
    return all;
}

// What a call told when it failed.
struct Failure {
    HRESULT result = S_OK;
    HRESULT code = S_OK;
    std::wstring source;
    std::wstring description;
};

inline DISPID idOf(IDispatch* object, const wchar_t* name) {
    auto* units = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &units, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

// Calls a member by identifier with the arguments in their order.
inline HRESULT invoke(IDispatch* object, DISPID id, WORD flags, std::vector<Value> arguments,
                      Value& result, Failure* failure = nullptr) {
    std::vector<VARIANT> passed;
    for (auto one = arguments.rbegin(); one != arguments.rend(); ++one) {
        passed.push_back(one->raw);
    }
    DISPID put = DISPID_PROPERTYPUT;
    const bool assigns = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPPARAMS parameters{passed.data(), assigns ? &put : nullptr, static_cast<UINT>(passed.size()),
                          assigns ? 1U : 0U};
    EXCEPINFO information{};
    UINT wrong = 0;
    const HRESULT code = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                        &result.raw, &information, &wrong);
    if (failure != nullptr) {
        failure->result = code;
        failure->code = information.scode;
        failure->source = information.bstrSource == nullptr ? L"" : information.bstrSource;
        failure->description =
            information.bstrDescription == nullptr ? L"" : information.bstrDescription;
    }
    SysFreeString(information.bstrSource);
    SysFreeString(information.bstrDescription);
    SysFreeString(information.bstrHelpFile);
    return code;
}

// Calls a method, or reads a property, that must succeed.
template <class... Values>
Value call(IDispatch* object, const wchar_t* name, Values&&... arguments) {
    Value result;
    Failure failure;
    EXPECT_EQ(S_OK, invoke(object, idOf(object, name), DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                           values(std::forward<Values>(arguments)...), result, &failure))
        << std::string(failure.description.begin(), failure.description.end());
    return result;
}
template <class... Values>
Value call(const Pointer<IDispatch>& object, const wchar_t* name, Values&&... arguments) {
    return call(object.get(), name, std::forward<Values>(arguments)...);
}

// The same for one that must fail.
template <class... Values>
Failure failureOf(const Pointer<IDispatch>& object, const wchar_t* name, Values&&... arguments) {
    Value result;
    Failure failure;
    invoke(object.get(), idOf(object.get(), name), DISPATCH_METHOD | DISPATCH_PROPERTYGET,
           values(std::forward<Values>(arguments)...), result, &failure);
    return failure;
}

// The module under test, loaded by its path and asked for its classes without any registration.
class Module {
public:
    Module() : handle_(LoadLibraryW(path().c_str())) {
        EXPECT_NE(nullptr, handle_) << "KAPUTIL_DLL must name the module";
        get("DllGetClassObject", getClassObject_);
        get("DllCanUnloadNow", canUnloadNow_);
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module() { FreeLibrary(handle_); }

    static std::wstring path() {
        const wchar_t* path = _wgetenv(L"KAPUTIL_DLL");
        return path == nullptr ? L"KapUtil26.dll" : path;
    }

    template <class Function>
    void get(const char* name, Function& function) const {
        function =
            reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
    }

    HRESULT factory(const String& classId, Pointer<IClassFactory>& out) const {
        return getClassObject_(platform::automation::identityOf(classId), IID_IClassFactory,
                               out.outVoid());
    }

    [[nodiscard]] Pointer<IDispatch> create(const String& classId) const {
        Pointer<IClassFactory> factoryOf;
        EXPECT_EQ(S_OK, factory(classId, factoryOf));
        Pointer<IDispatch> made;
        EXPECT_EQ(S_OK, factoryOf->CreateInstance(nullptr, IID_IDispatch, made.outVoid()));
        return made;
    }

    // Whether nothing of the module is in use.
    [[nodiscard]] bool isIdle() const { return canUnloadNow_() == S_OK; }

private:
    HMODULE handle_;
    HRESULT(WINAPI* getClassObject_)(REFCLSID, REFIID, void**) = nullptr;
    HRESULT(WINAPI* canUnloadNow_)() = nullptr;
};

// The thread takes part in the component model.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) { CoInitializeEx(nullptr, kind); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

inline const String kPropertyString = u"80368bd9-a134-4db3-b976-3eff993d4529";
inline const String kGeneralFunctions = u"ebe940f4-1cec-417c-9ee1-7425c4fae5fc";
inline const String kErrorObject = u"feb2ec34-3b6a-45b8-90c5-87f442d1898e";
inline const String kConfiguration = u"a1493e40-ee46-4833-8ef1-58e3b80d0cef";
inline const String kLocalConnection = u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b11";
inline const String kLocalRecordset = u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b12";

}  // namespace kap::test
