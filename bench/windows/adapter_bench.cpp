// What a call through the library's dispatch interface costs beside one through an interface
// written by hand for the same two members, in one process. Prints the nanoseconds of both and
// their ratio.
#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "frame/class_builder.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace kap::bench {
namespace {

constexpr int kCalls = 10'000;
constexpr int kRounds = 300;

class Described final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription description =
            ClassBuilder<Described>(u"Described", u"", u"")
                .method<&Described::Add>(u"Add", {u"a", u"b"}, u"")
                .method<&Described::Next>(u"Next", {u"value"}, u"")
                .build();
        return description;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    std::int32_t Add(std::int32_t a, std::int32_t b) { return a + b; }
    void Next(ByRef<std::int32_t> value) { ++*value; }
};

constexpr DISPID kAdd = 0x60030000;
constexpr DISPID kNext = 0x60030001;

// The same by hand, as careful as such code usually is.
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
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*number*/,
                               LCID /*locale*/, DISPID* /*ids*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD /*flags*/,
                        DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* /*information*/,
                        UINT* /*wrong*/) override {
        if (member == kAdd && parameters->cArgs == 2) {
            VARIANT a;
            VARIANT b;
            VariantInit(&a);
            VariantInit(&b);
            if (FAILED(VariantChangeType(&a, &parameters->rgvarg[1], 0, VT_I4)) ||
                FAILED(VariantChangeType(&b, &parameters->rgvarg[0], 0, VT_I4))) {
                return DISP_E_TYPEMISMATCH;
            }
            V_VT(result) = VT_I4;
            V_I4(result) = V_I4(&a) + V_I4(&b);
            return S_OK;
        }
        if (member == kNext && parameters->cArgs == 1) {
            VARIANT& reference = parameters->rgvarg[0];
            if (V_VT(&reference) != (VT_BYREF | VT_I4)) {
                return DISP_E_TYPEMISMATCH;
            }
            ++*V_I4REF(&reference);
            return S_OK;
        }
        return DISP_E_MEMBERNOTFOUND;
    }
};

HRESULT invoke(IDispatch* object, DISPID member, VARIANT* arguments, UINT count, VARIANT* result) {
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    return object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                          result, nullptr, nullptr);
}

// Both check their own result.
bool add(IDispatch* object) {
    VARIANT arguments[2];
    V_VT(&arguments[0]) = VT_I4;
    V_VT(&arguments[1]) = VT_I4;
    V_I4(&arguments[0]) = 1;
    std::int32_t sum = 0;
    for (int i = 0; i < kCalls; ++i) {
        V_I4(&arguments[1]) = sum;
        VARIANT result;
        VariantInit(&result);
        invoke(object, kAdd, arguments, 2, &result);
        sum = V_I4(&result);
    }
    return sum == kCalls;
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

// The shortest of many short rounds, in nanoseconds a call: what other programs do on the machine
// only makes rounds longer.
double measure(bool (*work)(IDispatch*), IDispatch* object) {
    std::vector<double> rounds;
    for (int i = 0; i < kRounds; ++i) {
        const auto begun = std::chrono::steady_clock::now();
        if (!work(object)) {
            std::puts("wrong result");
            std::exit(1);
        }
        const std::chrono::duration<double, std::nano> took =
            std::chrono::steady_clock::now() - begun;
        rounds.push_back(took.count() / kCalls);
    }
    return std::ranges::min(rounds);
}

void compare(const char* name, bool (*work)(IDispatch*)) {
    platform::automation::InterfacePointer<IDispatch> view;
    *view.out() = platform::automation::dispatchOf(make<Described>());
    ByHand byHand;
    const double ours = measure(work, view.get());
    const double baseline = measure(work, &byHand);
    std::printf("%-40s %7.1f ns  by hand %6.1f ns  ratio %.2f (aim: at most 5)\n", name, ours,
                baseline, ours / baseline);
}

}  // namespace
}  // namespace kap::bench

int main() {
    CoInitialize(nullptr);
    kap::bench::compare("two Longs by value, a result", &kap::bench::add);
    kap::bench::compare("a Long by reference", &kap::bench::next);
    CoUninitialize();
    return 0;
}
