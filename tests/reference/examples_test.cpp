#include "reference/examples.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/iclassi.hpp>
#include <kaputil/host/property_bag.hpp>
#include <kaputil/platform/message_box.hpp>

#include "support/scoped_variable.hpp"
#include "support/temporary_folder.hpp"

namespace kap::test {

Variant frmPadre;
Variant frmFiglio;
Variant txtCitta;
Variant txtCittaPrecedente;
Variant Documento;

namespace {

// A business class as programs have them.
class Documenti final : public IClassi {
public:
    Ref<CErrore> Errore() override { return error_; }
    Variant Proprieta() override { return properties_; }
    void setProprieta(const Variant& value) override { properties_ = value; }
    Variant Read(ByRef<Variant> /*connessione*/) override {
        properties_ = u"<NUMERO>12</NUMERO>";
        return true;
    }
    Variant Update(ByRef<Variant> /*connessione*/) override { return true; }
    Variant Delete(ByRef<Variant> /*connessione*/) override { return true; }
    Variant PgUpDown(ByRef<String> /*sTasto*/, ByRef<Variant> /*connessione*/) override {
        return true;
    }
    Variant XCP(const String& /*campoAttivo*/, const String& /*parametri*/,
                ByRef<Variant> /*connessione*/) override {
        return true;
    }

private:
    Ref<CErrore> error_ = make<CErrore>();
    Variant properties_ = u"";
};

Variant exampleForm() {
    const auto form = make<PropertyBag>(u"Form");
    for (const auto& [name, value] :
         {std::pair(u"Left", 0), {u"Top", 0}, {u"Width", 9000}, {u"Height", 6000}}) {
        form->put(name, value);
    }
    form->put(u"Tag", u"");
    return form;
}

Variant textBox(const char16_t* text) {
    const auto box = make<PropertyBag>(u"TextBox", u"Text");
    box->put(u"Text", text);
    return box;
}

void makeSurroundings() {
    frmPadre = exampleForm();
    frmFiglio = exampleForm();
    txtCitta = textBox(u"");
    txtCittaPrecedente = textBox(u"Bari");
    Documento = make<Documenti>();
}

// As the documentation writes it, which is in two languages: with a decimal point, and "True".
std::string asDocumented(std::string text) {
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        const auto isDigit = [&](std::size_t at) { return text[at] >= '0' && text[at] <= '9'; };
        if (text[i] == ',' && isDigit(i - 1) && isDigit(i + 1)) {
            text[i] = '.';
        }
    }
    for (const auto& [italian, english] : {std::pair("Vero", "True"), {"Falso", "False"}}) {
        for (std::size_t at = text.find(italian); at != std::string::npos;
             at = text.find(italian)) {
            text.replace(at, std::string_view(italian).size(), english);
        }
    }
    return text;
}

// What an example prints, in a folder of its own, which also is its user's.
std::string printedBy(const Example& example) {
    const TemporaryFolder folder;
    const ScopedVariable home("KAPUTIL_HOME", folder.file(""));
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.file(""));
    platform::setMessageLog(folder.file("messages.log"));
    makeSurroundings();
    std::ostringstream printed;
    std::streambuf* const screen = std::cout.rdbuf(printed.rdbuf());
    try {
        example.run();
    } catch (const std::exception& error) {
        ADD_FAILURE() << example.name << ": " << error.what();
    }
    std::cout.rdbuf(screen);
    platform::setMessageLog(std::nullopt);
    std::filesystem::current_path(before);
    return asDocumented(printed.str());
}

TEST(ReferenceExamples, PrintInCppWhatTheySay) {
    // Without a screen no program opens drafts and no key is pressed.
    const ScopedVariable display("DISPLAY", std::nullopt);
    const ScopedVariable wayland("WAYLAND_DISPLAY", std::nullopt);
    const ScopedVariable locale("KAPUTIL_LOCALE", "it-IT");
    EXPECT_GT(cppExamples().size(), 100U);
    for (const Example& example : cppExamples()) {
        std::istringstream printed(printedBy(example));
        std::istringstream expected{std::string(example.expected)};
        std::string line;
        for (std::string wanted; std::getline(expected, wanted);) {
            bool found = false;
            while (!found && std::getline(printed, line)) {
                found = line == wanted;
            }
            EXPECT_TRUE(found) << example.name << " does not print " << wanted << " but\n"
                               << printed.str();
        }
    }
}

}  // namespace
}  // namespace kap::test
