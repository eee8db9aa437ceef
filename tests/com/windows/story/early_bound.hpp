#pragma once

#include <windows.h>

#include <oleauto.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// How a program in C++ binds early to a library that it knows by its type library alone: members
// are looked up once, in the type library, when the program starts; calls then go by their
// identifiers, with arguments of exactly the types found there.
namespace early {

inline std::string plain(const std::wstring& text) {
    return {text.begin(), text.end()};
}

// A value of the system's that frees what it holds.
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
    Value(const std::wstring& text) : Value(text.c_str()) {}
    Value(IDispatch* object) : Value() {
        V_VT(&raw) = VT_DISPATCH;
        V_DISPATCH(&raw) = object;
        object->AddRef();
    }
    Value(const Value& other) : Value() { VariantCopy(&raw, other.read()); }
    Value& operator=(const Value& other) {
        VariantCopy(&raw, other.read());
        return *this;
    }
    ~Value() { VariantClear(&raw); }

    // Converted to a type; raises an error when it does not convert.
    [[nodiscard]] Value to(VARTYPE type) const {
        Value converted;
        if (FAILED(VariantChangeType(&converted.raw, read(), 0, type))) {
            throw std::runtime_error("a value does not convert");
        }
        return converted;
    }
    [[nodiscard]] std::wstring text() const {
        const Value converted = to(VT_BSTR);
        return {V_BSTR(&converted.raw), SysStringLen(V_BSTR(&converted.raw))};
    }
    [[nodiscard]] double number() const {
        const Value converted = to(VT_R8);
        return V_R8(&converted.raw);
    }
    [[nodiscard]] bool isTrue() const {
        const Value converted = to(VT_BOOL);
        return V_BOOL(&converted.raw) != VARIANT_FALSE;
    }
    [[nodiscard]] bool isEmpty() const { return V_VT(&raw) == VT_EMPTY; }

    VARIANT raw;

private:
    // The system's functions take what they only read as what they might change.
    [[nodiscard]] VARIANT* read() const { return const_cast<VARIANT*>(&raw); }
};

// A member as the type library describes it.
struct Member {
    DISPID id = DISPID_UNKNOWN;
    std::vector<VARTYPE> types;  // of its parameters; with VT_BYREF those passed by reference
};

// An interface of a type library.
struct Interface {
    std::map<std::pair<std::wstring, int>, Member> members;  // by name and kind

    [[nodiscard]] const Member& find(const wchar_t* name, int kinds) const {
        for (const int kind :
             {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT, INVOKE_PROPERTYPUTREF}) {
            const auto found = members.find({name, kind});
            if ((kinds & kind) != 0 && found != members.end()) {
                return found->second;
            }
        }
        throw std::runtime_error("the type library has no " + plain(name));
    }
};

inline VARTYPE typeOf(const ELEMDESC& element) {
    const bool byReference = (element.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
    const TYPEDESC& type = byReference ? *element.tdesc.lptdesc : element.tdesc;
    const VARTYPE known = type.vt == VT_PTR ? static_cast<VARTYPE>(VT_DISPATCH) : type.vt;
    return static_cast<VARTYPE>(known | (byReference ? VT_BYREF : 0));
}

inline Interface read(ITypeInfo& type) {
    Interface made;
    TYPEATTR* attributes = nullptr;
    if (FAILED(type.GetTypeAttr(&attributes))) {
        throw std::runtime_error("the type library cannot be read");
    }
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        BSTR name = nullptr;
        type.GetFuncDesc(i, &function);
        type.GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr);
        Member& member = made.members[{name, function->invkind}];
        member.id = function->memid;
        for (SHORT one = 0; one < function->cParams; ++one) {
            member.types.push_back(typeOf(function->lprgelemdescParam[one]));
        }
        SysFreeString(name);
        type.ReleaseFuncDesc(function);
    }
    type.ReleaseTypeAttr(attributes);
    return made;
}

// The interfaces of a registered type library, by their names.
using Library = std::map<std::wstring, Interface>;

inline Library load(const wchar_t* identity) {
    GUID known{};
    ITypeLib* loaded = nullptr;
    if (FAILED(CLSIDFromString(identity, &known)) ||
        FAILED(LoadRegTypeLib(known, 1, 0, 0, &loaded))) {
        throw std::runtime_error("the type library is not registered");
    }
    Library made;
    for (UINT i = 0; i < loaded->GetTypeInfoCount(); ++i) {
        TYPEKIND kind = TKIND_MAX;
        ITypeInfo* type = nullptr;
        BSTR name = nullptr;
        loaded->GetTypeInfoType(i, &kind);
        loaded->GetTypeInfo(i, &type);
        loaded->GetDocumentation(static_cast<INT>(i), &name, nullptr, nullptr, nullptr);
        if (kind == TKIND_DISPATCH) {
            made[name] = read(*type);
        }
        SysFreeString(name);
        type->Release();
    }
    loaded->Release();
    return made;
}

// An object of an interface. Arguments that the member takes by reference are written back into the
// values given.
class Object {
public:
    Object() = default;
    Object(const Interface& type, const Value& value) : type_(&type), value_(value) {
        if (V_VT(&value.raw) != VT_DISPATCH || V_DISPATCH(&value.raw) == nullptr) {
            throw std::runtime_error("there is no object");
        }
    }

    static Object create(const Interface& type, const wchar_t* name) {
        CLSID identity{};
        IDispatch* made = nullptr;
        if (FAILED(CLSIDFromProgID(name, &identity)) ||
            FAILED(CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                    reinterpret_cast<void**>(&made)))) {
            throw std::runtime_error("cannot create " + plain(name));
        }
        Object object(type, Value(made));
        made->Release();
        return object;
    }

    [[nodiscard]] const Value& value() const { return value_; }

    Value call(const wchar_t* name, std::vector<Value*> arguments) const {
        return invoke(name, INVOKE_FUNC | INVOKE_PROPERTYGET, std::move(arguments));
    }
    template <class... Given>
    Value call(const wchar_t* name, Given&&... given) const {
        std::vector<Value> values = {Value(std::forward<Given>(given))...};
        std::vector<Value*> arguments;
        for (Value& one : values) {
            arguments.push_back(&one);
        }
        return call(name, arguments);
    }
    void put(const wchar_t* name, Value value) const { invoke(name, INVOKE_PROPERTYPUT, {&value}); }
    void set(const wchar_t* name, const Object& object) const {
        Value value = object.value();
        invoke(name, INVOKE_PROPERTYPUTREF, {&value});
    }

private:
    Value invoke(const wchar_t* name, int kinds, std::vector<Value*> arguments) const;

    const Interface* type_ = nullptr;
    Value value_;
};

inline Value Object::invoke(const wchar_t* name, int kinds, std::vector<Value*> arguments) const {
    constexpr int kAssigning = INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF;
    const Member& member = type_->find(name, kinds);
    std::vector<Value> held;
    held.reserve(arguments.size());
    std::vector<VARIANT> passed(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const VARTYPE type = member.types.at(i);
        const auto plainType = static_cast<VARTYPE>(type & ~VT_BYREF);
        held.push_back(plainType == VT_VARIANT ? *arguments[i] : arguments[i]->to(plainType));
        VARIANT& one = passed[arguments.size() - 1 - i];
        if ((type & VT_BYREF) == 0) {
            one = held[i].raw;
        } else {
            V_VT(&one) = type;
            V_BYREF(&one) =
                plainType == VT_VARIANT ? static_cast<void*>(&held[i].raw) : &V_I8(&held[i].raw);
        }
    }
    DISPID put = DISPID_PROPERTYPUT;
    const bool assigns = (kinds & kAssigning) != 0;
    DISPPARAMS parameters{passed.data(), assigns ? &put : nullptr, static_cast<UINT>(passed.size()),
                          assigns ? 1U : 0U};
    Value result;
    EXCEPINFO information{};
    UINT wrong = 0;
    const HRESULT code =
        V_DISPATCH(&value_.raw)
            ->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(kinds),
                     &parameters, assigns ? nullptr : &result.raw, &information, &wrong);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if ((member.types[i] & VT_BYREF) != 0) {
            *arguments[i] = held[i];
        }
    }
    if (FAILED(code)) {
        const std::wstring told = information.bstrDescription == nullptr
                                      ? std::wstring(name)
                                      : information.bstrDescription;
        SysFreeString(information.bstrSource);
        SysFreeString(information.bstrDescription);
        throw std::runtime_error(plain(told));
    }
    return result;
}

}  // namespace early
