// What a call through the library's dispatch interface costs beside one through an interface
// written by hand for the same members, in one process. Prints the nanoseconds of both and their
// ratio.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cwchar>

#include "automation/class_builder.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace kap::bench {
namespace {

using platform::automation::InterfacePointer;

constexpr int kCalls = 10'000;
constexpr int kRounds = 300;
constexpr const wchar_t* kText = L"Ferramenta Rossi & Figli, consegna urgente";

class Described final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription description =
            ClassBuilder<Described>(u"Described", u"", u"")
                .method<&Described::Add>(u"Add", {u"a", u"b"})
                .method<&Described::Next>(u"Next", {u"value"})
                .method<&Described::Echo>(u"Echo", {u"text"})
                .build();
        return description;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    std::int32_t Add(std::int32_t a, std::int32_t b) { return a + b; }
    void Next(ByRef<std::int32_t> value) { ++*value; }
    String Echo(const String& text) { return text; }
};

constexpr DISPID kAdd = 0x60030000;
constexpr DISPID kNext = 0x60030001;
constexpr DISPID kEcho = 0x60030002;

// The same by hand, as careful as such code usually is: names in any case, and every argument in
// any type that converts. `kRaw` takes the by-reference Long as it is and converts nothing.
template <bool kRaw>
class ByHand final : public IDispatch {
public:
    STDMETHODIMP QueryInterface(REFIID /*wanted*/, void** out) override {
        *out = this;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* /*number*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*out*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT /*number*/,
                               LCID /*locale*/, DISPID* ids) override {
        constexpr const wchar_t* kNames[] = {L"Add", L"Next", L"Echo"};
        for (DISPID i = 0; i < static_cast<DISPID>(std::size(kNames)); ++i) {
            if (_wcsicmp(names[0], kNames[i]) == 0) {
                ids[0] = kAdd + i;
                return S_OK;
            }
        }
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD /*flags*/,
                        DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* /*information*/,
                        UINT* /*wrong*/) override {
        if (member == kAdd && parameters->cArgs == 2) {
            return add(parameters->rgvarg[1], parameters->rgvarg[0], *result);
        }
        if (member == kNext && parameters->cArgs == 1) {
            return next(parameters->rgvarg[0]);
        }
        if (member == kEcho && parameters->cArgs == 1) {
            return echo(parameters->rgvarg[0], *result);
        }
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    static HRESULT add(VARIANT& first, VARIANT& second, VARIANT& result) {
        VARIANT a;
        VARIANT b;
        VariantInit(&a);
        VariantInit(&b);
        if (FAILED(VariantChangeType(&a, &first, 0, VT_I4)) ||
            FAILED(VariantChangeType(&b, &second, 0, VT_I4))) {
            return DISP_E_TYPEMISMATCH;
        }
        V_VT(&result) = VT_I4;
        V_I4(&result) = V_I4(&a) + V_I4(&b);
        return S_OK;
    }

    static HRESULT next(VARIANT& reference) {
        if constexpr (kRaw) {
            if (V_VT(&reference) != (VT_BYREF | VT_I4)) {
                return DISP_E_TYPEMISMATCH;
            }
            ++*V_I4REF(&reference);
            return S_OK;
        }
        VARIANT value;
        VariantInit(&value);
        if (FAILED(VariantChangeType(&value, &reference, 0, VT_I4))) {
            return DISP_E_TYPEMISMATCH;
        }
        ++V_I4(&value);
        if (V_VT(&reference) == (VT_BYREF | VT_VARIANT)) {
            return VariantCopy(V_VARIANTREF(&reference), &value);
        }
        if (V_VT(&reference) == (VT_BYREF | VT_I4)) {
            *V_I4REF(&reference) = V_I4(&value);
        }
        return S_OK;
    }

    static HRESULT echo(VARIANT& text, VARIANT& result) {
        VARIANT value;
        VariantInit(&value);
        if (FAILED(VariantChangeType(&value, &text, 0, VT_BSTR))) {
            return DISP_E_TYPEMISMATCH;
        }
        V_VT(&result) = VT_BSTR;
        V_BSTR(&result) = SysAllocStringLen(V_BSTR(&value), SysStringLen(V_BSTR(&value)));
        VariantClear(&value);
        return S_OK;
    }
};

void invoke(IDispatch* object, DISPID member, VARIANT* arguments, UINT count, VARIANT* result) {
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, result,
                   nullptr, nullptr);
}

// Each checks its own result.
template <class FindMember>
bool addWith(IDispatch* object, FindMember member) {
    VARIANT arguments[2];
    V_VT(&arguments[0]) = VT_I4;
    V_VT(&arguments[1]) = VT_I4;
    V_I4(&arguments[0]) = 1;
    std::int32_t sum = 0;
    for (int i = 0; i < kCalls; ++i) {
        V_I4(&arguments[1]) = sum;
        VARIANT result;
        VariantInit(&result);
        invoke(object, member(), arguments, 2, &result);
        sum = V_I4(&result);
    }
    return sum == kCalls;
}

bool add(IDispatch* object) {
    return addWith(object, [] { return kAdd; });
}

bool addByName(IDispatch* object) {
    return addWith(object, [object] {
        wchar_t name[] = L"ADD";
        LPOLESTR names = name;
        DISPID id = DISPID_UNKNOWN;
        object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
        return id;
    });
}

bool next(IDispatch* object) {
    LONG value = 0;
    VARIANT argument;
    V_VT(&argument) = VT_BYREF | VT_I4;
    V_I4REF(&argument) = &value;
    for (int i = 0; i < kCalls; ++i) {
        VARIANT result;
        VariantInit(&result);
        invoke(object, kNext, &argument, 1, &result);
    }
    return value == kCalls;
}

bool echo(IDispatch* object) {
    VARIANT argument;
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = SysAllocString(kText);
    int same = 0;
    for (int i = 0; i < kCalls; ++i) {
        VARIANT result;
        VariantInit(&result);
        invoke(object, kEcho, &argument, 1, &result);
        same += std::wcscmp(V_BSTR(&result), kText) == 0 ? 1 : 0;
        VariantClear(&result);
    }
    VariantClear(&argument);
    return same == kCalls;
}

using Work = bool (*)(IDispatch*);

double nanosecondsPerCall(Work work, IDispatch* object) {
    const auto begun = std::chrono::steady_clock::now();
    if (!work(object)) {
        std::puts("wrong result");
        std::exit(1);
    }
    const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - begun;
    return took.count() / kCalls;
}

// The shortest of many short rounds, each way in turn: what other programs do on the machine only
// makes rounds longer.
void compare(const char* name, Work work, IDispatch* byHand, const char* aim) {
    InterfacePointer<IDispatch> view;
    *view.out() = platform::automation::dispatchOf(make<Described>());
    double ours = nanosecondsPerCall(work, view.get());
    double baseline = nanosecondsPerCall(work, byHand);
    for (int i = 1; i < kRounds; ++i) {
        ours = std::min(ours, nanosecondsPerCall(work, view.get()));
        baseline = std::min(baseline, nanosecondsPerCall(work, byHand));
    }
    std::printf("%-40s %7.1f ns  by hand %6.1f ns  ratio %.2f%s\n", name, ours, baseline,
                ours / baseline, aim);
}

}  // namespace
}  // namespace kap::bench

int main() {
    using namespace kap::bench;
    constexpr const char* kAim = " (aim: at most 5)";
    CoInitialize(nullptr);
    ByHand<false> careful;
    ByHand<true> raw;
    compare("two Longs by value, a result", &add, &careful, kAim);
    compare("the same by name", &addByName, &careful, kAim);
    compare("a Long by reference", &next, &careful, kAim);
    compare("a text by value, a text as result", &echo, &careful, kAim);
    compare("a Long by reference, none converted", &next, &raw, "");
    CoUninitialize();
    return 0;
}
