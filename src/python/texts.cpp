#include "python/texts.hpp"

#include <bit>
#include <cstring>
#include <string>

namespace kap::python {
namespace {

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

}  // namespace

String toText(const py::handle& text) {
    const auto encoded = py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(
        text.ptr(), kLittleEndian ? "utf-16-le" : "utf-16-be", "surrogatepass"));
    if (!encoded) {
        throw py::error_already_set();
    }
    const std::string_view bytes = encoded;
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), bytes.data(), bytes.size());
    return units;
}

py::str toPython(const String& text) {
    int byteOrder = kLittleEndian ? -1 : 1;
    const auto bytes = static_cast<Py_ssize_t>(text.size() * sizeof(char16_t));
    auto made = py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF16(
        reinterpret_cast<const char*>(text.units().data()), bytes, "surrogatepass", &byteOrder));
    if (!made) {
        throw py::error_already_set();
    }
    return made;
}

}  // namespace kap::python
