#include "python/python_error.hpp"

#include <new>

#include "python/package.hpp"
#include "python/texts.hpp"

namespace kap::python {

PythonError::PythonError(const py::error_already_set& error) : PythonError(error, partsOf(error)) {}

PythonError::PythonError(const py::error_already_set& error, Parts parts)
    : AutomationError(parts.number, std::move(parts.description), std::move(parts.source)),
      original_(new py::error_already_set(error), [](const py::error_already_set* held) {
          const py::gil_scoped_acquire lock;
          delete held;
      }) {}

PythonError::Parts PythonError::partsOf(const py::error_already_set& error) {
    const py::tuple parts = package().errorParts(error.value());
    return {parts[0].cast<std::int32_t>(), toText(parts[1]), toText(parts[2])};
}

void PythonError::restore() const {
    py::error_already_set(*original_).restore();
}

namespace {

void raiseAutomationError(const AutomationError& error) {
    const bool noMember = error.number() == errors::kMemberNotFound;
    const py::object& type = noMember ? package().memberNotFound : package().automationError;
    PyErr_SetObject(type.ptr(), py::make_tuple(error.number(), toPython(error.description()),
                                               toPython(error.source()))
                                    .ptr());
}

// Of the exception that is being handled. To tell of one may fail as well, for want of memory.
void raiseHandled() {
    try {
        throw;
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const py::builtin_exception& error) {
        error.set_error();
    } catch (const PythonError& error) {
        error.restore();
    } catch (const AutomationError& error) {
        raiseAutomationError(error);
    } catch (const std::bad_alloc& error) {
        PyErr_SetString(PyExc_MemoryError, error.what());
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    }
}

}  // namespace

void raiseInPython() noexcept {
    try {
        raiseHandled();
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const std::exception&) {
        PyErr_NoMemory();
    }
}

}  // namespace kap::python
