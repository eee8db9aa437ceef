#include "platform/win32/automation/call_errors.hpp"

#include <limits>

#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/values.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform::automation {
namespace {

struct KnownCode {
    HRESULT code;
    std::int32_t number;
};

// What the runtime makes of the codes with which calls themselves fail.
constexpr KnownCode kKnownCodes[] = {
    {DISP_E_UNKNOWNNAME, errors::kMemberNotFound},
    {DISP_E_MEMBERNOTFOUND, errors::kMemberNotFound},
    {DISP_E_TYPEMISMATCH, errors::kTypeMismatch},
    {DISP_E_BADVARTYPE, errors::kTypeMismatch},
    {DISP_E_OVERFLOW, errors::kOverflow},
    {DISP_E_BADINDEX, errors::kSubscriptOutOfRange},
    {DISP_E_NONAMEDARGS, 446},
    {DISP_E_PARAMNOTFOUND, errors::kNamedArgumentNotFound},
    {DISP_E_PARAMNOTOPTIONAL, errors::kArgumentNotOptional},
    {DISP_E_BADPARAMCOUNT, errors::kWrongNumberOfArguments},
    {DISP_E_DIVBYZERO, errors::kDivisionByZero},
    {E_INVALIDARG, errors::kInvalidArgument},
    {E_NOTIMPL, 445},
    {E_OUTOFMEMORY, 7},
};

constexpr std::int32_t kLastOfRuntime = 0xFFFF;

String systemText(HRESULT code) {
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (length == 0) {
        return {};
    }
    String found(narrowView(text, length));
    LocalFree(text);
    while (!found.empty() &&
           (found[found.size() - 1] == u'\n' || found[found.size() - 1] == u'\r')) {
        found = found.view().substr(0, found.size() - 1);
    }
    return found;
}

AutomationError errorOf(std::int32_t number, HRESULT code, const String& description,
                        const String& source) {
    if (!description.empty()) {
        return {number, description, source};
    }
    const AutomationError runtimes(number);
    const String text = number > 0 ? String() : systemText(code);
    return {number, text.empty() ? runtimes.description() : text, source};
}

// Takes a text out of the system's hands.
String taken(BSTR& text) {
    String found = fromBstr(text);
    SysFreeString(text);
    text = nullptr;
    return found;
}

}  // namespace

HRESULT codeOf(std::int32_t number) {
    if (number > 0 && number <= kLastOfRuntime) {
        return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
    }
    return number < 0 ? static_cast<HRESULT>(number) : E_FAIL;
}

std::int32_t numberOf(HRESULT code) {
    for (const KnownCode& known : kKnownCodes) {
        if (known.code == code) {
            return known.number;
        }
    }
    if (FAILED(code) && HRESULT_FACILITY(code) == FACILITY_CONTROL) {
        return HRESULT_CODE(code);
    }
    return static_cast<std::int32_t>(code);
}

HRESULT report(const AutomationError& error, EXCEPINFO* information) {
    const HRESULT code = codeOf(error.number());
    if (information == nullptr) {
        return code;
    }
    *information = {};
    information->scode = code;
    information->bstrSource = toBstr(error.source());
    information->bstrDescription = toBstr(error.description());
    return DISP_E_EXCEPTION;
}

HRESULT reportByErrorObject(const AutomationError& error) {
    InterfacePointer<ICreateErrorInfo> made;
    InterfacePointer<IErrorInfo> told;
    if (SUCCEEDED(CreateErrorInfo(made.out())) &&
        SUCCEEDED(made->QueryInterface(IID_IErrorInfo, told.outVoid()))) {
        // The interface only reads the texts.
        made->SetDescription(const_cast<LPOLESTR>(wide(error.description())));
        made->SetSource(const_cast<LPOLESTR>(wide(error.source())));
        SetErrorInfo(0, told.get());
    }
    return codeOf(error.number());
}

void raise(HRESULT result, EXCEPINFO& information) {
    if (result != DISP_E_EXCEPTION) {
        throw errorOf(numberOf(result), result, {}, {});
    }
    if (information.pfnDeferredFillIn != nullptr) {
        information.pfnDeferredFillIn(&information);
    }
    const String source = taken(information.bstrSource);
    const String description = taken(information.bstrDescription);
    SysFreeString(information.bstrHelpFile);
    information.bstrHelpFile = nullptr;
    // A callee names its error by the runtime's number or by a code.
    const std::int32_t number =
        information.wCode != 0 ? information.wCode : numberOf(information.scode);
    throw errorOf(number, information.scode, description, source);
}

}  // namespace kap::platform::automation
