#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>

namespace kap {

// The contract of business classes: what a generic form needs to drive the object behind it.
//
// A program's own classes derive from it and override what they offer; here every member does
// nothing: reading gives Empty (an unset object for `Errore`), assigning discards the value.
class KAPUTIL_EXPORT IClassi : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // What went wrong in the last call.
    [[nodiscard]] virtual Ref<CErrore> Errore();

    // The object's data as a property string.
    [[nodiscard]] virtual Variant Proprieta();
    virtual void setProprieta(const Variant& value);

    // Reads, saves and deletes the object through the caller's connection.
    virtual Variant Read(ByRef<Variant> connessione);
    virtual Variant Update(ByRef<Variant> connessione);
    virtual Variant Delete(ByRef<Variant> connessione);

    // Moves to the neighbour that a navigation key asks for.
    virtual Variant PgUpDown(ByRef<String> sTasto, ByRef<Variant> connessione);

    // A check or a completion that the form asks for on one of its fields.
    virtual Variant XCP(const String& campoAttivo, const String& parametri,
                        ByRef<Variant> connessione);
};

}  // namespace kap
