#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/core/cproprieta.hpp>

namespace kap {

// How a document is printed: a view of one configuration field, whose value is a property string
// with a property for each attribute.
//
//     auto print = kap::make<kap::CFG_Stampa>();
//     print->Init(field);
//     print->setCopie(u"2");   // the field's value now holds <COPIE>2</COPIE>
//     field->Update();         // and now the database does
//
// Every assignment of an attribute writes the whole property string into the field: into its value,
// which the field may refuse (-2147221503; the view keeps the attribute all the same), or in
// default mode into its default value. Nothing goes to the database before the field's `Update`.
// What others do to the field is seen at the next `Init`.
class KAPUTIL_EXPORT CFG_Stampa final : public DescribedObject {
public:
    CFG_Stampa();
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Attaches a field in default mode: its default value becomes a property string with Vidsta "V"
    // and Copie "1" and nothing else.
    void InitDefault(const Ref<CFG_Campo>& vNewValue);
    // Attaches a field and takes the attributes from its value.
    void Init(const Ref<CFG_Campo>& vNewValue);

    // The attached field; an empty one is made where there is none.
    [[nodiscard]] Ref<CFG_Campo> CFGCampo();
    // Attaches nothing: raises 438 whatever it is given. `Init` and `InitDefault` attach.
    void setCFGCampo(const Ref<CFG_Campo>& value);

    // The field's name.
    [[nodiscard]] String Nome();
    // Whether the print was made at run time: whether there is a property ADD_RUNTIME.
    [[nodiscard]] bool AddRunTime() const;

    [[nodiscard]] String Titolo() const;
    void setTitolo(const String& value);

    // The field's flag; in default mode what its `FlagDefault` reads and takes.
    [[nodiscard]] String Flag();
    void setFlag(const String& value);

    // "0" where the field holds none.
    [[nodiscard]] String EMail() const;
    void setEMail(const String& value);
    [[nodiscard]] String EsportaReport() const;
    void setEsportaReport(const String& value);
    // Whether the print is listed: true unless the attribute is there and is not "1".
    [[nodiscard]] bool InElenco() const;
    void setInElenco(bool value);
    [[nodiscard]] String Sigla() const;
    void setSigla(const String& value);
    [[nodiscard]] String CodiceBreve() const;
    void setCodiceBreve(const String& value);
    [[nodiscard]] String ClasseEsterna() const;
    void setClasseEsterna(const String& value);
    [[nodiscard]] String Stampante() const;
    void setStampante(const String& value);
    [[nodiscard]] String Layout() const;
    void setLayout(const String& value);
    // "V" where the field holds none.
    [[nodiscard]] String Vidsta() const;
    void setVidsta(const String& value);
    // The number of copies, "1" where the field holds none.
    [[nodiscard]] String Copie() const;
    void setCopie(const String& value);
    [[nodiscard]] String OrigineCarta() const;
    void setOrigineCarta(const String& value);

    // The field's note.
    [[nodiscard]] String Note();
    void setNote(const String& value);

private:
    [[nodiscard]] String attribute(const char16_t* name, const char16_t* otherwise) const;
    void setAttribute(const char16_t* name, const String& value);
    void SalvaProprieta();

    Ref<CFG_Campo> field_;
    Ref<CProprieta> attributes_;
    bool defaultMode_ = false;
};

}  // namespace kap
