#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <map>

#include "dispatch_client.hpp"

// Events of connections and recordsets, as a client connects to them that knows them from the type
// library only.
namespace kap::test {
namespace {

constexpr int kCancel = 4;  // adStatusCancel

// A client's sink. It notes the names of the events that it knows, and cancels one when told to.
class Sink final : public IDispatch {
public:
    explicit Sink(const Pointer<ITypeInfo>& events) : events_(events) {
        TYPEATTR* attributes = nullptr;
        EXPECT_EQ(S_OK, events_->GetTypeAttr(&attributes));
        identity_ = attributes->guid;
        for (UINT i = 0; i < attributes->cFuncs; ++i) {
            FUNCDESC* function = nullptr;
            EXPECT_EQ(S_OK, events_->GetFuncDesc(i, &function));
            BSTR name = nullptr;
            UINT count = 0;
            EXPECT_EQ(S_OK, events_->GetNames(function->memid, &name, 1, &count));
            names_[function->memid] = {std::wstring(name), typesOf(*function)};
            SysFreeString(name);
            events_->ReleaseFuncDesc(function);
        }
        events_->ReleaseTypeAttr(attributes);
    }

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        if (wanted != IID_IUnknown && wanted != IID_IDispatch && wanted != identity_) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }  // it lives on the stack
    STDMETHODIMP GetTypeInfoCount(UINT* number) override {
        *number = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*out*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*number*/,
                               LCID /*locale*/, DISPID* /*ids*/) override {
        return DISP_E_UNKNOWNNAME;  // called by identifiers, as all of its kind
    }
    STDMETHODIMP Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD flags,
                        DISPPARAMS* parameters, VARIANT* /*result*/, EXCEPINFO* information,
                        UINT* /*wrong*/) override;

    ULONG references = 0;
    std::wstring told;
    std::wstring cancelled;  // the event that is not allowed
    std::wstring failing;    // the one that ends in an error
    std::wstring unknown;    // the one that has no handler
    std::wstring source;     // what is to be run instead
    std::wstring program;    // what was to be run
    std::vector<std::wstring> wrongTypes;

private:
    struct Event {
        std::wstring name;
        std::vector<VARTYPE> types;
    };

    // Of each parameter: VT_BYREF with the type that it refers to, or the type itself.
    static std::vector<VARTYPE> typesOf(const FUNCDESC& function) {
        std::vector<VARTYPE> types;
        for (SHORT i = 0; i < function.cParams; ++i) {
            const ELEMDESC& one = function.lprgelemdescParam[i];
            const bool byReference = (one.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
            VARTYPE type = byReference ? one.tdesc.lptdesc->vt : one.tdesc.vt;
            type = type == VT_PTR ? static_cast<VARTYPE>(VT_DISPATCH) : type;
            types.push_back(static_cast<VARTYPE>(type | (byReference ? VT_BYREF : 0)));
        }
        return types;
    }

    static bool fits(VARTYPE wanted, VARTYPE given) {
        return wanted == VT_VARIANT || wanted == given;
    }

    Pointer<ITypeInfo> events_;
    IID identity_{};
    std::map<DISPID, Event> names_;
};

STDMETHODIMP Sink::Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD flags,
                          DISPPARAMS* parameters, VARIANT* /*result*/, EXCEPINFO* information,
                          UINT* /*wrong*/) {
    const Event& event = names_.at(member);
    EXPECT_EQ(DISPATCH_METHOD, flags);
    told += event.name + L" ";
    if (parameters->cArgs != event.types.size()) {
        wrongTypes.push_back(event.name);
        return DISP_E_BADPARAMCOUNT;
    }
    for (std::size_t i = 0; i < event.types.size(); ++i) {
        const VARTYPE given = V_VT(&parameters->rgvarg[event.types.size() - 1 - i]);
        if (!fits(event.types[i], given)) {
            wrongTypes.push_back(event.name + L" " + std::to_wstring(i));
        }
    }
    if (event.name == unknown) {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (event.name == failing) {
        information->scode = E_ACCESSDENIED;
        information->bstrDescription = SysAllocString(L"not today");
        return DISP_E_EXCEPTION;
    }
    if (event.name == L"WillExecute" && !source.empty()) {
        BSTR* text = V_BSTRREF(&parameters->rgvarg[7]);
        program = *text;
        SysReAllocString(text, source.c_str());
    }
    if (event.name == cancelled) {
        // The status is in front of the object, or of the command, the recordset and the object.
        const std::size_t place = event.name == L"WillExecute" ? 3 : 1;
        *V_I4REF(&parameters->rgvarg[place]) = kCancel;
    }
    return S_OK;
}

// The interface of an object's events, found as languages find it.
Pointer<ITypeInfo> eventsOf(const Pointer<IDispatch>& object) {
    Pointer<IProvideClassInfo2> provider;
    EXPECT_EQ(S_OK, object->QueryInterface(IID_IProvideClassInfo2, provider.outVoid()));
    GUID identity{};
    EXPECT_EQ(S_OK, provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &identity));
    Pointer<ITypeInfo> itsClass;
    EXPECT_EQ(S_OK, provider->GetClassInfo(itsClass.out()));
    Pointer<ITypeLib> library;
    UINT index = 0;
    EXPECT_EQ(S_OK, itsClass->GetContainingTypeLib(library.out(), &index));
    Pointer<ITypeInfo> found;
    EXPECT_EQ(S_OK, library->GetTypeInfoOfGuid(identity, found.out()));

    // The class says that it raises them.
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(S_OK, itsClass->GetTypeAttr(&attributes));
    bool raises = false;
    for (UINT i = 0; i < attributes->cImplTypes; ++i) {
        INT flags = 0;
        EXPECT_EQ(S_OK, itsClass->GetImplTypeFlags(i, &flags));
        raises = raises || flags == (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE);
    }
    itsClass->ReleaseTypeAttr(attributes);
    EXPECT_TRUE(raises);
    return found;
}

Pointer<IConnectionPoint> pointOf(const Pointer<IDispatch>& object) {
    Pointer<IProvideClassInfo2> provider;
    EXPECT_EQ(S_OK, object->QueryInterface(IID_IProvideClassInfo2, provider.outVoid()));
    GUID identity{};
    EXPECT_EQ(S_OK, provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &identity));
    Pointer<IConnectionPointContainer> container;
    EXPECT_EQ(S_OK, object->QueryInterface(IID_IConnectionPointContainer, container.outVoid()));
    Pointer<IConnectionPoint> point;
    EXPECT_EQ(S_OK, container->FindConnectionPoint(identity, point.out()));
    return point;
}

// An open connection and a recordset of it.
struct Opened {
    explicit Opened(const Module& module) : connection(module.create(kLocalConnection)) {
        call(connection, L"Open", L"Provider=KapLocal;Data Source=:memory:events");
        call(
            connection, L"Execute",
            L"CREATE TABLE #T (A int PRIMARY KEY, B varchar(9)); INSERT INTO #T VALUES (1, 'uno'), "
            L"(2, 'due'), (3, 'tre')");
        rows = module.create(kLocalRecordset);
        call(rows, L"Open", L"SELECT A, B FROM #T ORDER BY A", connection, 3, 3);
    }
    Pointer<IDispatch> connection;
    Pointer<IDispatch> rows;
};

TEST(Events, ReachTheSinkOfARecordset) {
    const Apartment apartment;
    const Module module;
    {
        const Opened opened(module);
        Sink sink(eventsOf(opened.rows));
        {
            const auto point = pointOf(opened.rows);
            DWORD cookie = 0;
            ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
            call(opened.rows, L"MoveNext");
            call(opened.rows, L"Update", L"B", L"altro");
            call(opened.rows, L"MoveLast");
            call(opened.rows, L"MoveNext");
            EXPECT_EQ(
                L"WillMove MoveComplete WillChangeRecord WillChangeField FieldChangeComplete "
                L"RecordChangeComplete WillChangeRecord RecordChangeComplete WillMove MoveComplete "
                L"WillMove EndOfRecordset MoveComplete ",
                sink.told);
            EXPECT_EQ(std::vector<std::wstring>(), sink.wrongTypes);
            EXPECT_EQ(S_OK, point->Unadvise(cookie));
            EXPECT_EQ(CONNECT_E_NOCONNECTION, point->Unadvise(cookie));
            sink.told.clear();
            call(opened.rows, L"MoveFirst");
            EXPECT_EQ(L"", sink.told);
        }
        EXPECT_EQ(0U, sink.references);
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Events, AreCancelledByReference) {
    const Apartment apartment;
    const Module module;
    {
        const Opened opened(module);
        Sink sink(eventsOf(opened.rows));
        const auto point = pointOf(opened.rows);
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
        sink.cancelled = L"WillMove";
        const Failure failure = failureOf(opened.rows, L"MoveNext");
        EXPECT_EQ(static_cast<HRESULT>(0x80040E4E), failure.code);
        EXPECT_EQ(L"Operation was canceled.", failure.description);
        EXPECT_EQ(1, call(opened.rows, L"AbsolutePosition").number());
        sink.cancelled.clear();
        sink.failing = L"WillMove";
        EXPECT_EQ(L"not today", failureOf(opened.rows, L"MoveNext").description);
        sink.failing.clear();
        sink.unknown = L"WillMove";
        call(opened.rows, L"MoveNext");
        EXPECT_EQ(2, call(opened.rows, L"AbsolutePosition").number());
        EXPECT_EQ(S_OK, point->Unadvise(cookie));
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Events, ReachTheSinkOfAConnection) {
    const Apartment apartment;
    const Module module;
    {
        const Opened opened(module);
        Sink sink(eventsOf(opened.connection));
        const auto point = pointOf(opened.connection);
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
        sink.source = L"SELECT 7 AS A";
        const auto rows = call(opened.connection, L"Execute", L"SELECT 1 AS A").object();
        EXPECT_EQ(7, call(call(rows, L"Fields", 0).object(), L"Value").number());
        EXPECT_EQ(L"SELECT 1 AS A", sink.program);
        sink.cancelled = L"WillExecute";
        EXPECT_EQ(static_cast<HRESULT>(0x800A0E80),
                  failureOf(opened.connection, L"Execute", L"SELECT 1 AS A").code);
        sink.cancelled.clear();
        sink.source = L"PRINT 'buongiorno'";
        call(opened.connection, L"BeginTrans");
        call(opened.connection, L"Execute", L"");
        call(opened.connection, L"CommitTrans");
        call(opened.connection, L"BeginTrans");
        call(opened.connection, L"RollbackTrans");
        call(opened.connection, L"Close");
        call(opened.connection, L"Open");
        EXPECT_EQ(
            L"WillExecute ExecuteComplete WillExecute ExecuteComplete BeginTransComplete "
            L"WillExecute InfoMessage ExecuteComplete CommitTransComplete BeginTransComplete "
            L"RollbackTransComplete Disconnect WillConnect ConnectComplete ",
            sink.told);
        EXPECT_EQ(std::vector<std::wstring>(), sink.wrongTypes);
        EXPECT_EQ(S_OK, point->Unadvise(cookie));
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Events, LetTheirConnectionsBeListed) {
    const Apartment apartment;
    const Module module;
    {
        const Opened opened(module);
        Sink sink(eventsOf(opened.rows));
        Pointer<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK,
                  opened.rows->QueryInterface(IID_IConnectionPointContainer, container.outVoid()));
        Pointer<IEnumConnectionPoints> points;
        ASSERT_EQ(S_OK, container->EnumConnectionPoints(points.out()));
        Pointer<IConnectionPoint> point;
        ULONG fetched = 0;
        ASSERT_EQ(S_OK, points->Next(1, point.out(), &fetched));
        IConnectionPoint* none = nullptr;
        EXPECT_EQ(S_FALSE, points->Next(1, &none, &fetched));
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, point->Advise(&sink, &cookie));
        Pointer<IEnumConnections> connections;
        ASSERT_EQ(S_OK, point->EnumConnections(connections.out()));
        CONNECTDATA held{};
        ASSERT_EQ(S_OK, connections->Next(1, &held, nullptr));
        EXPECT_EQ(cookie, held.dwCookie);
        EXPECT_EQ(static_cast<IUnknown*>(&sink), held.pUnk);
        held.pUnk->Release();
        Pointer<IConnectionPointContainer> back;
        ASSERT_EQ(S_OK, point->GetConnectionPointContainer(back.out()));
        EXPECT_EQ(container.get(), back.get());
        EXPECT_EQ(S_OK, point->Unadvise(cookie));
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(Events, AreNotOfferedByObjectsThatRaiseNone) {
    const Apartment apartment;
    const Module module;
    {
        const auto object = module.create(kPropertyString);
        Pointer<IConnectionPointContainer> container;
        EXPECT_EQ(E_NOINTERFACE,
                  object->QueryInterface(IID_IConnectionPointContainer, container.outVoid()));
        const Opened opened(module);
        ASSERT_EQ(S_OK,
                  opened.rows->QueryInterface(IID_IConnectionPointContainer, container.outVoid()));
        Pointer<IConnectionPoint> point;
        EXPECT_EQ(CONNECT_E_NOCONNECTION,
                  container->FindConnectionPoint(IID_IDispatch, point.out()));
    }
    EXPECT_TRUE(module.isIdle());
}

}  // namespace
}  // namespace kap::test
