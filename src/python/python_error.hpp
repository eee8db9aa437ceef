#pragma once

#include <pybind11/pybind11.h>

#include <memory>

#include <kaputil/automation/error.hpp>

namespace kap::python {

namespace py = pybind11;

// An exception that a Python object raised while the library called it. To the library it is an
// automation error; where it reaches Python again, it is the original one with its traceback.
class PythonError final : public AutomationError {
public:
    explicit PythonError(const py::error_already_set& error);

    // Makes the original exception Python's current one.
    void restore() const;

private:
    struct Parts {
        std::int32_t number;
        String description;
        String source;
    };
    static Parts partsOf(const py::error_already_set& error);
    PythonError(const py::error_already_set& error, Parts parts);

    std::shared_ptr<const py::error_already_set> original_;
};

// Makes the exception that is being handled Python's current one: an automation error as the
// package's own, an exception of Python's as it was, any other as Python's nearest.
void raiseInPython() noexcept;

// What an extension function of the interpreter's own form answers: the result, or null with
// Python's current exception set.
template <class Work>
PyObject* answering(Work work) noexcept {
    try {
        return py::object(work()).release().ptr();
    } catch (...) {
        raiseInPython();
        return nullptr;
    }
}

// Does a piece of work in Python for the library, under the interpreter's lock. What is raised goes
// on as PythonError. What is no Exception (KeyboardInterrupt, SystemExit) goes through the library
// as it is: no member may trap it.
template <class Work>
auto inPython(Work work) {
    const py::gil_scoped_acquire lock;
    try {
        return work();
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_Exception)) {
            throw;
        }
        throw PythonError(error);
    }
}

}  // namespace kap::python
