#include "platform/win32/automation/connection_points.hpp"

#include <olectl.h>

#include <atomic>
#include <new>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "platform/win32/automation/call_errors.hpp"
#include "platform/win32/automation/com_object.hpp"
#include "platform/win32/automation/event_sink.hpp"
#include "platform/win32/automation/interface_pointer.hpp"
#include "platform/win32/automation/object_dispatch.hpp"

namespace kap::platform::automation {
namespace {

std::atomic<long> live{0};

// The counting and the identity of a small object with one interface.
template <class Interface>
class Counted : public Interface {
public:
    Counted() { ++live; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        if (wanted != IID_IUnknown && wanted != __uuidof(Interface)) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    virtual ~Counted() { --live; }

private:
    std::atomic<ULONG> references_{1};
};

// An enumeration of `Given`s that are kept as `Kept`s, which say themselves how they are given.
template <class Interface, class Given, class Kept>
class Enumeration final : public Counted<Interface> {
public:
    explicit Enumeration(std::vector<Kept> all, std::size_t position = 0)
        : all_(std::move(all)), position_(position) {}

    STDMETHODIMP Next(ULONG wanted, Given* out, ULONG* fetched) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        ULONG given = 0;
        for (; given < wanted && position_ < all_.size(); ++given, ++position_) {
            out[given] = all_[position_].given();
        }
        if (fetched != nullptr) {
            *fetched = given;
        }
        return given == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG number) override {
        const std::size_t left = all_.size() - position_;
        position_ += left < number ? left : number;
        return left < number ? S_FALSE : S_OK;
    }
    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = new (std::nothrow) Enumeration(all_, position_);
        return *out == nullptr ? E_OUTOFMEMORY : S_OK;
    }

private:
    std::vector<Kept> all_;
    std::size_t position_;
};

struct KeptPoint {
    InterfacePointer<IConnectionPoint> point;
    [[nodiscard]] IConnectionPoint* given() const {
        return InterfacePointer<IConnectionPoint>(point).detach();
    }
};

struct KeptConnection {
    InterfacePointer<IUnknown> sink;
    DWORD cookie = 0;
    [[nodiscard]] CONNECTDATA given() const {
        return {InterfacePointer<IUnknown>(sink).detach(), cookie};
    }
};

using Points = Enumeration<IEnumConnectionPoints, IConnectionPoint*, KeptPoint>;
using Connections = Enumeration<IEnumConnections, CONNECTDATA, KeptConnection>;

class ConnectionPoint final : public Counted<IConnectionPoint> {
public:
    ConnectionPoint(Ref<Object> object, EventSource& source, IConnectionPointContainer& container)
        : object_(std::move(object)), source_(source), container_(&container) {}

    STDMETHODIMP GetConnectionInterface(IID* out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = eventInterfaceOf(source_);
        return S_OK;
    }
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** out) override {
        if (out == nullptr) {
            return E_POINTER;
        }
        *out = InterfacePointer<IConnectionPointContainer>(container_).detach();
        return S_OK;
    }
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** out) override;

private:
    Ref<Object> object_;
    EventSource& source_;  // the same object
    InterfacePointer<IConnectionPointContainer> container_;
    DWORD owner_ = GetCurrentThreadId();
};

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (sink == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    *cookie = 0;
    if (GetCurrentThreadId() != owner_) {
        return RPC_E_WRONG_THREAD;
    }
    InterfacePointer<IDispatch> dispatch;
    if (FAILED(sink->QueryInterface(eventInterfaceOf(source_), dispatch.outVoid())) &&
        FAILED(sink->QueryInterface(IID_IDispatch, dispatch.outVoid()))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    const auto connect = [&]() -> HRESULT {
        Ref<Object> made = ownObjectBehind(dispatch.get());
        if (!made) {
            made = make<EventSink>(dispatch, source_.events());
        }
        *cookie = static_cast<DWORD>(source_.connect(made));
        return S_OK;
    };
    return guarded(connect, &reportByErrorObject);
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
    if (GetCurrentThreadId() != owner_) {
        return RPC_E_WRONG_THREAD;
    }
    try {
        source_.disconnect(static_cast<std::int32_t>(cookie));
        return S_OK;
    } catch (const AutomationError&) {
        return CONNECT_E_NOCONNECTION;
    }
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    const auto enumerate = [&]() -> HRESULT {
        std::vector<KeptConnection> all;
        for (const EventSource::Connected& one : source_.connected()) {
            const auto* sink = dynamic_cast<const EventSink*>(one.sink.get());
            InterfacePointer<IDispatch> dispatch;
            if (sink != nullptr) {
                dispatch = sink->dispatch();
            } else {
                *dispatch.out() = dispatchOf(one.sink);
            }
            all.push_back(
                {InterfacePointer<IUnknown>(dispatch.get()), static_cast<DWORD>(one.connection)});
        }
        *out = new Connections(std::move(all));
        return S_OK;
    };
    return guarded(enumerate, &reportByErrorObject);
}

}  // namespace

EventSource* eventsOf(const Ref<Object>& object) noexcept {
    return dynamic_cast<EventSource*>(object.get());
}

GUID eventInterfaceOf(const EventSource& source) {
    return identityOf(source.events().interfaceId);
}

HRESULT findConnectionPoint(const Ref<Object>& object, IConnectionPointContainer& container,
                            REFIID wanted, IConnectionPoint** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    EventSource* source = eventsOf(object);
    if (source == nullptr || wanted != eventInterfaceOf(*source)) {
        return CONNECT_E_NOCONNECTION;
    }
    *out = new (std::nothrow) ConnectionPoint(object, *source, container);
    return *out == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT enumerateConnectionPoints(const Ref<Object>& object, IConnectionPointContainer& container,
                                  IEnumConnectionPoints** out) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = nullptr;
    EventSource* source = eventsOf(object);
    if (source == nullptr) {
        return E_NOTIMPL;
    }
    const auto enumerate = [&]() -> HRESULT {
        KeptPoint only;
        *only.point.out() = new ConnectionPoint(object, *source, container);
        *out = new Points({only});
        return S_OK;
    };
    return guarded(enumerate, &reportByErrorObject);
}

long liveConnectionPoints() noexcept {
    return live;
}

}  // namespace kap::platform::automation
