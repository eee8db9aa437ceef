#include <kaputil/core/cproprieta.hpp>

#include <limits>
#include <string>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "core/tagged_text.hpp"

namespace kap {
namespace {

constexpr std::u16string_view kWholeText = u"DEFAULT";

bool isField(const Variant& value) {
    return value.isObject() && value.as<Ref<Object>>() &&
           value.as<Ref<Object>>()->className() == String(u"Field");
}

// The text that a value is written as; Null, also that of a database field, is empty text.
String textOf(const Variant& value) {
    const Variant plain = convert::plainValue(value);
    return plain.isNull() ? String() : convert::toString(plain);
}

}  // namespace

CProprieta::CProprieta() : text_(std::make_unique<TaggedText>()) {}

CProprieta::~CProprieta() = default;

const ClassDescription& CProprieta::classDescription() {
    static const ClassDescription kDescription =
        ClassBuilder<CProprieta>(u"CProprieta", u"80368bd9-a134-4db3-b976-3eff993d4529",
                                 u"47799a54-02c1-4447-9acc-eb0cc14f0d34")
            .method<&CProprieta::Elimina>(u"Elimina", {Parameter(u"sNomeProprieta").byReference()})
            .method<&CProprieta::Leggi>(
                u"Leggi", {Parameter(u"sNomeProprieta").otherwise(kWholeText).byReference()})
            .method<&CProprieta::Scrivi>(u"Scrivi", {Parameter(u"sNomeProprieta").byReference(),
                                                     Parameter(u"sValore").byReference()})
            .method<&CProprieta::Count>(u"Count")
            .method<&CProprieta::NomeProprieta>(u"NomeProprieta",
                                                {Parameter(u"PosizioneCampo").byReference()})
            .build();
    return kDescription;
}

void CProprieta::Elimina(const String& sNomeProprieta) {
    text_->erase(unicode::upper(sNomeProprieta));
}

Variant CProprieta::Leggi(const Variant& sNomeProprieta) const {
    if (isField(sNomeProprieta)) {
        return Leggi(textOf(sNomeProprieta));
    }
    if (!sNomeProprieta.isString()) {
        return valueOf(NomeProprieta(convert::toInteger(sNomeProprieta)));
    }
    const String& name = sNomeProprieta.as<String>();
    return name.view() == kWholeText ? Variant(String(text_->text())) : valueOf(name);
}

Variant CProprieta::valueOf(std::u16string_view name) const {
    auto value = text_->read(unicode::upper(name));
    return value ? Variant(String(std::move(*value))) : Variant::null();
}

void CProprieta::Scrivi(const String& sNomeProprieta, const Variant& sValore) {
    if (sNomeProprieta.empty()) {
        text_->assign(convert::toString(sValore));
        return;
    }
    if (sValore.isString()) {
        text_->write(unicode::upper(sNomeProprieta), sValore.as<String>());
    } else {
        text_->write(unicode::upper(sNomeProprieta), textOf(sValore));
    }
}

std::int16_t CProprieta::Count() const {
    const std::size_t count = text_->markerCount();
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        throw AutomationError(errors::kOverflow);
    }
    return static_cast<std::int16_t>(count);
}

String CProprieta::NomeProprieta(std::int16_t posizioneCampo) const {
    if (posizioneCampo < 1) {
        return {};
    }
    // The search for the n-th marker that runs past the last one finds nothing, once, and then
    // begins again at the first: positions go round, with one empty place.
    const std::size_t count = text_->markerCount();
    const std::size_t rank = (static_cast<std::size_t>(posizioneCampo) - 1) % (count + 1);
    return rank == count ? String() : String(text_->markerName(rank));
}

}  // namespace kap
