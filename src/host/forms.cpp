#include <kaputil/automation/arithmetic.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/core/cconstant.hpp>
#include <kaputil/host/services.hpp>

#include "automation/late_bound.hpp"
#include "base/unicode.hpp"

namespace kap::host {
namespace {

// Heights in the forms of existing programs, in twips: a menu bar, the title of a form in another.
constexpr std::int16_t kMenuBar = 540;
constexpr std::int16_t kInnerTitle = 120;
constexpr std::int16_t kExtenderBars = 810;

Variant whole(std::int16_t value) {
    return value;
}

Variant sum(Variant first, std::initializer_list<Variant> more) {
    for (const Variant& value : more) {
        first = arithmetic::add(first, value);
    }
    return first;
}

bool hasExtender(const Variant& form) {
    const Variant tag = convert::plainValue(late::get(form, u"Tag"));
    return !tag.isNull() &&
           convert::toString(tag).view().find(u"[MDIExtender]") != std::u16string_view::npos;
}

// From the child's new upper edge to the parent's lower one.
Variant heightLeft(const Variant& child, const Variant& parent) {
    const Variant lowerEdge =
        arithmetic::add(late::get(parent, u"Top"), late::get(parent, u"Height"));
    return arithmetic::subtract(lowerEdge, late::get(child, u"Top"));
}

}  // namespace

std::int16_t TrovaTop(const Variant& frmPadre, std::int16_t nTop) {
    return convert::toInteger(sum(late::get(frmPadre, u"Top"), {whole(kMenuBar), whole(kInnerTitle),
                                                                whole(kaHBarra), whole(nTop)}));
}

void PosizionaForm(const Variant& frmFiglio, const Variant& frmPadre, std::int16_t nTop) {
    late::let(frmFiglio, u"Left", arithmetic::add(late::get(frmPadre, u"Left"), whole(kaHBordo)));
    late::let(frmFiglio, u"Width",
              arithmetic::subtract(late::get(frmPadre, u"Width"), whole(kaHBordo)));
    // The height is counted from the child's own Top, which a form may have rounded.
    if (hasExtender(frmPadre)) {
        late::let(frmFiglio, u"Top",
                  convert::toInteger(sum(whole(nTop), {whole(kExtenderBars), whole(kInnerTitle)})));
        late::let(frmFiglio, u"Height",
                  sum(heightLeft(frmFiglio, frmPadre), {whole(kMenuBar), whole(kaHBordo)}));
    } else {
        late::let(frmFiglio, u"Top", whole(nTop));
        late::let(frmFiglio, u"Height", heightLeft(frmFiglio, frmPadre));
    }
}

void Ripeti(const Variant& txtDA_Campo, const Variant& txtA_Campo) {
    const Variant text = convert::plainValue(late::get(txtA_Campo, u"Text"));
    if (!text.isNull() && unicode::trim(convert::toString(text)) == u".") {
        late::let(txtA_Campo, u"Text", convert::plainValue(txtDA_Campo));
    }
}

}  // namespace kap::host
