#include "python/texts.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

namespace kap::python {
namespace {

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

// Text with characters beyond the first plane, as pairs of surrogates.
std::u16string encoded(const py::handle& text) {
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

bool isSurrogate(char16_t unit) {
    return (unit & 0xF800U) == 0xD800U;
}

py::str decoded(std::u16string_view units) {
    int byteOrder = kLittleEndian ? -1 : 1;
    const auto bytes = static_cast<Py_ssize_t>(units.size() * sizeof(char16_t));
    auto made = py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF16(
        reinterpret_cast<const char*>(units.data()), bytes, "surrogatepass", &byteOrder));
    if (!made) {
        throw py::error_already_set();
    }
    return made;
}

}  // namespace

// Python keeps a text in as few bytes a character as the text needs, all of them alike; those of
// one or two bytes are UTF-16 units as they stand.
String toText(const py::handle& text) {
    if (PyUnicode_Check(text.ptr()) == 0) {
        throw py::type_error("a text is expected");
    }
    const auto length = static_cast<std::size_t>(PyUnicode_GET_LENGTH(text.ptr()));
    switch (PyUnicode_KIND(text.ptr())) {
        case PyUnicode_1BYTE_KIND: {
            const Py_UCS1* characters = PyUnicode_1BYTE_DATA(text.ptr());
            return std::u16string(characters, characters + length);
        }
        case PyUnicode_2BYTE_KIND: {
            const Py_UCS2* characters = PyUnicode_2BYTE_DATA(text.ptr());
            return std::u16string(characters, characters + length);
        }
        default:
            return encoded(text);
    }
}

py::str toPython(const String& text) {
    const std::u16string_view units = text.view();
    char16_t all = 0;
    for (const char16_t unit : units) {
        if (isSurrogate(unit)) {
            return decoded(units);
        }
        all |= unit;
    }
    auto made =
        py::reinterpret_steal<py::str>(PyUnicode_New(static_cast<Py_ssize_t>(units.size()), all));
    if (!made) {
        throw py::error_already_set();
    }
    if (PyUnicode_KIND(made.ptr()) == PyUnicode_1BYTE_KIND) {
        std::ranges::copy(units, PyUnicode_1BYTE_DATA(made.ptr()));
    } else {
        std::ranges::copy(units, PyUnicode_2BYTE_DATA(made.ptr()));
    }
    return made;
}

}  // namespace kap::python
