#pragma once

#include <windows.h>

#include <activscp.h>

#include <string>

#include "dispatch_client.hpp"

namespace kap::test {

// Runs a script in one of the system's script engines, as a program with macros does, and gives
// back what went wrong; empty when nothing did. Everything of the engine is gone afterwards.
class ScriptEngine final : public IActiveScriptSite {
public:
    [[nodiscard]] static std::string run(const wchar_t* language, const std::wstring& text) {
        ScriptEngine site;
        return site.runIn(language, text);
    }

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        if (wanted != IID_IUnknown && wanted != IID_IActiveScriptSite) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<IActiveScriptSite*>(this);
        return S_OK;
    }
    // It lives on the stack of its run, longer than the engine.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP GetLCID(LCID* language) override {
        *language = LOCALE_USER_DEFAULT;
        return S_OK;
    }
    STDMETHODIMP GetItemInfo(LPCOLESTR /*name*/, DWORD /*wanted*/, IUnknown** /*item*/,
                             ITypeInfo** /*type*/) override {
        return TYPE_E_ELEMENTNOTFOUND;
    }
    STDMETHODIMP GetDocVersionString(BSTR* /*version*/) override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT* /*result*/,
                                   const EXCEPINFO* /*information*/) override {
        return S_OK;
    }
    STDMETHODIMP OnStateChange(SCRIPTSTATE /*state*/) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
        EXCEPINFO information{};
        DWORD context = 0;
        ULONG line = 0;
        LONG column = 0;
        error->GetExceptionInfo(&information);
        error->GetSourcePosition(&context, &line, &column);
        const String description =
            information.bstrDescription == nullptr
                ? String(u"error without a text")
                : platform::automation::fromBstr(information.bstrDescription);
        failure_ = "line " + std::to_string(line + 1) + ": " + description.utf8();
        SysFreeString(information.bstrSource);
        SysFreeString(information.bstrDescription);
        SysFreeString(information.bstrHelpFile);
        return S_OK;
    }
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }

private:
    ScriptEngine() = default;

    std::string runIn(const wchar_t* language, const std::wstring& text) {
        CLSID identity{};
        Pointer<IActiveScript> engine;
        if (FAILED(CLSIDFromProgID(language, &identity)) ||
            FAILED(CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript,
                                    engine.outVoid()))) {
            return "the engine is not installed";
        }
        Pointer<IActiveScriptParse> parser;
        engine->QueryInterface(IID_IActiveScriptParse, parser.outVoid());
        engine->SetScriptSite(this);
        parser->InitNew();
        EXCEPINFO information{};
        const HRESULT result = parser->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0,
                                                       1, 0, nullptr, &information);
        if (SUCCEEDED(result)) {
            engine->SetScriptState(SCRIPTSTATE_CONNECTED);
        } else if (failure_.empty()) {
            failure_ = "the script cannot be read";
        }
        engine->Close();
        return failure_;
    }

    std::string failure_;
};

}  // namespace kap::test
