#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>

namespace kap {

// Reads and writes single values of the registry.
//
//     auto registro = kap::make<kap::CRegistro>();
//     registro->Leggi(u"HKEY_CURRENT_USER", u"Stampante", u"Software\\Vertex");
//
// A root (`sWhere`) is "HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE" or
// "HKEY_USERS", in upper case, or the decimal text of its handle ("-2147483647"). A key is never
// made here: it must be there.
//
// Where the host has no registry, <kaputil/platform/registry.hpp> says what stands for it.
class KAPUTIL_EXPORT CRegistro final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Always the unset object: deliberately nobody makes one, so that the failures which would be
    // told there raise 91 instead.
    [[nodiscard]] Ref<CErrore> IClassi_Errore() { return errore_; }

    // The defaults of `Leggi` and `Scrivi`, as texts. They are crossed, and clients depend on it:
    // `Chiave` stands in for the name of a value, `NomeValore` for the path of a key.
    [[nodiscard]] Variant NomeValore() { return nomeValore_; }
    void setNomeValore(const Variant& value);
    [[nodiscard]] Variant Chiave() { return chiave_; }
    void setChiave(const Variant& value);

    // The value `sNomeValore` of the key `sChiave`: a text; the number 0 for any number, whatever
    // it is; Empty for other types and when the key or the value is not there or cannot be read.
    //
    // An empty `sNomeValore` becomes `Chiave`, in the caller's variable too; an empty `sChiave`
    // stands for `NomeValore`. Raises 91 for an empty root, 13 for one that is neither a name nor a
    // number.
    [[nodiscard]] Variant Leggi(const String& sWhere, ByRef<String> sNomeValore = u"",
                                ByRef<String> sChiave = u"");

    // Sets a value and gives "Done", also when the key is not there or cannot be written.
    //
    // `sTipo` is "REG_SZ", "REG_DWORD" or the number of a type, which the caller's variable holds
    // afterwards; of types other than these two nothing is written. An empty `sNomeValore` is the
    // key's unnamed value, whatever `Chiave` holds; an empty `sChiave` stands for `NomeValore`.
    // Raises 91 for an empty root or value, 13 for a root, a type or a REG_DWORD that is no number,
    // 6 for one that is too large.
    Variant Scrivi(const String& sWhere, ByRef<String> sValoreDaImpostare, ByRef<String> sTipo,
                   ByRef<String> sNomeValore = u"", ByRef<String> sChiave = u"");

private:
    void chooseRoot(const String& where);
    [[noreturn]] void failWithoutErrorObject() const;
    [[nodiscard]] const String& keyPath(const String& given) const;

    String root_;  // the handle's decimal text
    String nomeValore_;
    String chiave_;
    Ref<CErrore> errore_;
};

}  // namespace kap
