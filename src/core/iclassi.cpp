#include <kaputil/core/iclassi.hpp>

#include "automation/class_builder.hpp"

namespace kap {

const ClassDescription& IClassi::classDescription() {
    static const ClassDescription kDescription =
        ClassBuilder<IClassi>(u"IClassi", u"736ffbea-1819-44c2-b5a7-6ec1539a1fec",
                              u"961feff4-57e1-4aba-9225-10c1227daf97")
            .property<&IClassi::Errore>(u"Errore")
            .property<&IClassi::Proprieta, &IClassi::setProprieta>(u"Proprieta")
            .method<&IClassi::Read>(u"Read", {u"Connessione"})
            .method<&IClassi::Update>(u"Update", {u"Connessione"})
            .method<&IClassi::Delete>(u"Delete", {u"Connessione"})
            .method<&IClassi::PgUpDown>(u"PgUpDown", {u"sTasto", u"Connessione"})
            .method<&IClassi::XCP>(u"XCP", {u"CampoAttivo", u"Parametri", u"Connessione"})
            .build();
    return kDescription;
}

Ref<CErrore> IClassi::Errore() {
    return {};
}

Variant IClassi::Proprieta() {
    return {};
}

void IClassi::setProprieta(const Variant& /*value*/) {}

Variant IClassi::Read(ByRef<Variant> /*connessione*/) {
    return {};
}

Variant IClassi::Update(ByRef<Variant> /*connessione*/) {
    return {};
}

Variant IClassi::Delete(ByRef<Variant> /*connessione*/) {
    return {};
}

Variant IClassi::PgUpDown(ByRef<String> /*sTasto*/, ByRef<Variant> /*connessione*/) {
    return {};
}

Variant IClassi::XCP(const String& /*campoAttivo*/, const String& /*parametri*/,
                     ByRef<Variant> /*connessione*/) {
    return {};
}

}  // namespace kap
