#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

class TaggedText;

// A bag of named values that is one flat text: the carrier of named data between programs and the
// library, and from one object to another.
//
//     auto p = kap::make<kap::CProprieta>();
//     p->Scrivi(u"Codice", 12);
//     p->Scrivi(u"descr", u"Abc");
//     p->Leggi(u"Descr");   // "Abc"
//     p->Leggi();           // "<CODICE>12</CODICE><DESCR>Abc</DESCR>"
//
// A property is "<NAME>", its value and "</NAME>"; names are upper-cased when written and when
// looked up, values stand unescaped, and properties follow one another in the order of first
// writing. The bag is the text: what any operation does is what it does to the text, also when a
// text set whole is odd. Nothing keeps a value from holding tags; a name's value ends at the first
// closing tag of that name in the whole text.
//
// Reading and writing by name take constant time however big the bag is. Only names that hold '<'
// or '>' or begin with '/', and the rewriting of a name that occurs twice, look through all of it.
class KAPUTIL_EXPORT CProprieta final : public DescribedObject {
public:
    CProprieta();
    ~CProprieta() override;

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Removes the first occurrence of a property; does nothing when there is none.
    void Elimina(const String& sNomeProprieta);

    // The value of a property as text; Null when the bag does not hold it. "DEFAULT", exactly so
    // written, is the whole text. A number or any other value that is not text is a position as in
    // `NomeProprieta`; a database field stands for the name that it holds.
    //
    // Raises 5 when the property is opened and never closed, 94 for a Null position, 6 for a
    // position outside 16 bits.
    [[nodiscard]] Variant Leggi(const Variant& sNomeProprieta = u"DEFAULT") const;

    // Sets a property: its value is replaced in place, or the property is appended. Null and Empty
    // become empty text. When the same property occurs again further on with an empty value, that
    // occurrence receives the value too. An empty name replaces the whole text by the value.
    //
    // Raises 5 when the property is opened and never closed, 94 for a Null under the empty name, 13
    // for a value that has no text.
    void Scrivi(const String& sNomeProprieta, const Variant& sValore);

    // The number of closing tags: of "</" in the text, those inside values included. Raises 6 when
    // there are more than 32,767.
    [[nodiscard]] std::int16_t Count() const;

    // The name at a position, counted from 1 among the closing tags. Below 1 it is empty, and so it
    // is at the position behind the last; from there on positions start over with the first name.
    // Raises 5 when a "</" is followed by no '>'.
    [[nodiscard]] String NomeProprieta(std::int16_t posizioneCampo) const;

private:
    [[nodiscard]] Variant valueOf(std::u16string_view name) const;

    std::unique_ptr<TaggedText> text_;
};

}  // namespace kap
