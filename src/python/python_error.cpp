#include "python/python_error.hpp"

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

}  // namespace kap::python
