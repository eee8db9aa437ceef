#pragma once

#include <windows.h>

#include <activscp.h>

#include <string>

#include "dispatch_client.hpp"

namespace kap::test {

// Runs a script in one of the system's script engines, as a program with macros does, and gives
// back what went wrong; empty when nothing did. Everything of the engine is gone afterwards.
//
// The script makes its objects by `host`, whose member Create answers for CreateObject and
// ActiveXObject: some engines keep what they made objects with for ever, which would look like a
// leak of the library.
class ScriptEngine final : public IActiveScriptSite {
public:
    [[nodiscard]] static std::string run(const wchar_t* language, const std::wstring& text,
                                         const Pointer<IDispatch>& host) {
        ScriptEngine site(host);
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
    STDMETHODIMP GetItemInfo(LPCOLESTR /*name*/, DWORD wanted, IUnknown** item,
                             ITypeInfo** /*type*/) override {
        if ((wanted & SCRIPTINFO_IUNKNOWN) == 0) {
            return TYPE_E_ELEMENTNOTFOUND;
        }
        *item = Pointer<IDispatch>(host_).detach();
        return S_OK;
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
    explicit ScriptEngine(const Pointer<IDispatch>& host) : host_(host) {}

    std::string runIn(const wchar_t* language, const std::wstring& text) {
        CLSID identity{};
        Pointer<IActiveScript> engine;
        if (FAILED(CLSIDFromProgID(language, &identity)) ||
            FAILED(CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript,
                                    engine.outVoid()))) {
            return "the engine is not installed";
        }
        Pointer<IActiveScriptParse> parser;
        engine->QueryInterface(__uuidof(IActiveScriptParse), parser.outVoid());
        engine->SetScriptSite(this);
        parser->InitNew();
        engine->AddNamedItem(L"Host", SCRIPTITEM_ISVISIBLE);
        const bool basic = std::wstring_view(language) == L"VBScript";
        parse(parser, basic ? L"Function CreateObject(name)\nSet CreateObject = Host.Create(name)\n"
                              L"End Function"
                            : L"function ActiveXObject(name) { return Host.Create(name); }");
        parse(parser, text.c_str());
        engine->SetScriptState(SCRIPTSTATE_CONNECTED);
        engine->Close();
        return failure_;
    }

    void parse(const Pointer<IActiveScriptParse>& parser, const wchar_t* text) {
        EXCEPINFO information{};
        if (FAILED(parser->ParseScriptText(text, nullptr, nullptr, nullptr, 0, 0, 0, nullptr,
                                           &information)) &&
            failure_.empty()) {
            failure_ = "the script cannot be read";
        }
    }

    Pointer<IDispatch> host_;
    std::string failure_;
};

}  // namespace kap::test
