#pragma once

#include <windows.h>

#include <ocidl.h>

#include <kaputil/automation/event_source.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

// The events of an object as the system's clients connect to them (`WithEvents`).
namespace kap::platform::automation {

// The events of an object; null when it has none.
[[nodiscard]] EventSource* eventsOf(const Ref<Object>& object) noexcept;

// The identity of the interface of its events.
[[nodiscard]] GUID eventInterfaceOf(const EventSource& source);

// What a container of connection points answers for an object with events. `container` is the view
// that the client holds.
HRESULT findConnectionPoint(const Ref<Object>& object, IConnectionPointContainer& container,
                            REFIID wanted, IConnectionPoint** out);
HRESULT enumerateConnectionPoints(const Ref<Object>& object, IConnectionPointContainer& container,
                                  IEnumConnectionPoints** out);

// How many connection points and enumerations of them there are.
[[nodiscard]] long liveConnectionPoints() noexcept;

}  // namespace kap::platform::automation
