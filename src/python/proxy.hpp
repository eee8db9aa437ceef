#pragma once

#include <pybind11/pybind11.h>

#include <optional>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

#include "python/owner_thread.hpp"

// Library objects as Python sees them.
namespace kap::python {

namespace py = pybind11;

// What stands behind a Python object that stands for one of the library's.
class Proxy {
public:
    explicit Proxy(Ref<Object> object);

    // For a call; raises RuntimeError on another thread than its own.
    [[nodiscard]] const Ref<Object>& object() const {
        owner_.require(*object_);
        return object_;
    }
    // The object, when a table describes it so; null when it is of another class. For a call, too.
    [[nodiscard]] DescribedObject* describedAs(const ClassDescription& description) const {
        owner_.require(*object_);
        return description_ == &description ? static_cast<DescribedObject*>(object_.get())
                                            : nullptr;
    }
    [[nodiscard]] const Object* identity() const { return object_.get(); }
    // The table of its members; null when it has none.
    [[nodiscard]] const ClassDescription* description() const { return description_; }

private:
    Ref<Object> object_;
    const ClassDescription* description_;
    OwnerThread owner_;
};

// The proxy within a Python object; null when it is none.
[[nodiscard]] const Proxy* proxyBehind(const py::handle& value);

// The Python object that stands for one of the library's, of the class that its description gives
// it. It belongs to the thread that calls this.
[[nodiscard]] py::object proxyOf(const Ref<Object>& object);

// The object that a Python one stands for; nullopt when it is no proxy. Raises RuntimeError on
// another thread than its own.
[[nodiscard]] std::optional<Ref<Object>> objectBehind(const py::handle& value);

// Binds their class `Object` into the module, and the functions that the package's classes are made
// of: call, call_default, get, assign and elements.
void bindProxies(py::module_& module);

}  // namespace kap::python
