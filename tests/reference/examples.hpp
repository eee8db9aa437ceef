#pragma once

#include <span>
#include <string_view>

#include <kaputil/automation/variant.hpp>

// The C++ examples of the reference's pages, which tests/reference/cpp_examples.py makes a source
// file of.
namespace kap::test {

struct Example {
    std::string_view name;
    void (*run)();
    std::string_view expected;  // lines that it prints in this order, maybe with others between
};
[[nodiscard]] std::span<const Example> cppExamples();

// What the examples take for granted: a program's own objects, new for each of them.
extern Variant frmPadre;
extern Variant frmFiglio;
extern Variant txtCitta;
extern Variant txtCittaPrecedente;
extern Variant Documento;

}  // namespace kap::test
