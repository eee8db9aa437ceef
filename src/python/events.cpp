#include "python/events.hpp"

#include <cstdint>

#include <kaputil/automation/event_source.hpp>

#include "python/proxy.hpp"
#include "python/values.hpp"

namespace kap::python {
namespace {

EventSource& sourceBehind(const py::object& target) {
    const auto object = objectBehind(target);
    auto* source = object ? dynamic_cast<EventSource*>(object->get()) : nullptr;
    if (source == nullptr) {
        throw py::type_error("the object has no events");
    }
    return *source;
}

std::int32_t connect(const py::object& target, const py::object& handler) {
    const Variant sink = toVariant(handler);
    if (!sink.isObject()) {
        throw py::type_error("a handler of events is an object");
    }
    return sourceBehind(target).connect(sink.as<Ref<Object>>());
}

void disconnect(const py::object& target, std::int32_t connection) {
    sourceBehind(target).disconnect(connection);
}

}  // namespace

void bindEvents(py::module_& module) {
    module.def("connect", &connect);
    module.def("disconnect", &disconnect);
}

}  // namespace kap::python
