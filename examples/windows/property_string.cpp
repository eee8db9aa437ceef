// Calls a class by its name, as programs do that know nothing of the library but its registration.
#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <initializer_list>

namespace {

// Calls a method with one or two arguments; the result is the caller's to clear.
VARIANT call(IDispatch* object, const wchar_t* name, const VARIANT* first,
             const VARIANT* second = nullptr) {
    auto* member = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &member, 1, LOCALE_USER_DEFAULT, &id);
    VARIANT arguments[2] = {};
    UINT count = 0;
    if (second != nullptr) {
        arguments[count++] = *second;  // the last argument comes first
    }
    arguments[count++] = *first;
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    VARIANT result;
    VariantInit(&result);
    object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result,
                   nullptr, nullptr);
    return result;
}

VARIANT text(const wchar_t* characters) {
    VARIANT value;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = SysAllocString(characters);
    return value;
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    CLSID identity{};
    IDispatch* bag = nullptr;
    if (FAILED(CLSIDFromProgID(L"KapUtil.CProprieta", &identity)) ||
        FAILED(CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&bag)))) {
        std::puts("KapUtil is not registered");
        return 1;
    }
    VARIANT name = text(L"Nome");
    VARIANT value = text(L"Ferramenta Rossi");
    VARIANT nothing = call(bag, L"Scrivi", &name, &value);
    VARIANT read = call(bag, L"Leggi", &name);
    std::printf("%ls\n", V_BSTR(&read));
    for (VARIANT* one : {&name, &value, &nothing, &read}) {
        VariantClear(one);
    }
    bag->Release();
    CoUninitialize();
    return 0;
}
