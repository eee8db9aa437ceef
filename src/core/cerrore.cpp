#include <kaputil/core/cerrore.hpp>

#include <limits>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"

namespace kap {
namespace {

constexpr const char16_t* kNumber = u"ERR_NUMERO";

// How many messages `Init` counts at most; programs rely on numbering going on from here.
constexpr std::int16_t kMaxRestored = 20;

String messageName(std::int32_t number) {
    return u"ERR_MSG" + convert::toString(number);
}

}  // namespace

CErrore::CErrore() {
    Clear();
}

const ClassDescription& CErrore::classDescription() {
    static const ClassDescription kDescription =
        ClassBuilder<CErrore>(u"CErrore", u"feb2ec34-3b6a-45b8-90c5-87f442d1898e",
                              u"fb6ea86a-741a-4273-9191-c3873d6b8657")
            .property<&CErrore::Numero, &CErrore::setNumero>(u"Numero")
            .method<&CErrore::AddMessaggio>(u"AddMessaggio",
                                            {Parameter(u"Messaggio").byReference()})
            .method<&CErrore::Clear>(u"Clear")
            .method<&CErrore::MsgToArray>(u"MsgToArray")
            .method<&CErrore::MsgToString>(u"MsgToString")
            .method<&CErrore::ToString>(u"ToString")
            .method<&CErrore::Init>(u"Init", {Parameter(u"Stringa").byReference()})
            .method<&CErrore::LeggiAttributo>(u"LeggiAttributo",
                                              {Parameter(u"NomeAttributo").byReference()})
            .method<&CErrore::ScriviAttributo>(
                u"ScriviAttributo",
                {Parameter(u"NomeAttributo").byReference(), Parameter(u"Valore").byReference()})
            .build();
    return kDescription;
}

Variant CErrore::Numero() const {
    return properties_->Leggi(kNumber);
}

void CErrore::setNumero(const Variant& value) {
    clear_ = false;
    properties_->Scrivi(kNumber, value);
}

void CErrore::AddMessaggio(const Variant& messaggio) {
    if (messageCount_ == std::numeric_limits<std::int16_t>::max()) {
        throw AutomationError(errors::kOverflow);
    }
    clear_ = false;
    ++messageCount_;
    properties_->Scrivi(messageName(messageCount_), messaggio);
}

// Whoever reports here clears before each call, and mostly what is clear already.
void CErrore::Clear() {
    if (clear_) return;
    properties_ = make<CProprieta>();
    properties_->Scrivi(kNumber, u"0");
    properties_->Scrivi(messageName(1), u"");
    messageCount_ = 0;
    clear_ = true;
}

Variant CErrore::MsgToArray() const {
    Array messages = Array::withBounds(1, messageCount_);
    for (std::int32_t number = 1; number <= messageCount_; ++number) {
        messages.put(number, properties_->Leggi(messageName(number)));
    }
    return messages;
}

Variant CErrore::MsgToString() const {
    String text;
    for (std::int32_t number = 1; number <= messageCount_; ++number) {
        text += convert::toString(properties_->Leggi(messageName(number)));
        text += u"\r\n";
    }
    return text;
}

Variant CErrore::ToString() const {
    return properties_->Leggi();
}

void CErrore::Init(const String& stringa) {
    clear_ = false;
    properties_->Scrivi(u"", stringa);
    messageCount_ = 0;
    for (std::int16_t number = 1; number <= kMaxRestored; ++number) {
        const Variant message = properties_->Leggi(messageName(number));
        if (message.isNull() || message.as<String>().empty()) {
            break;
        }
        messageCount_ = number;
    }
}

Variant CErrore::LeggiAttributo(const String& nomeAttributo) const {
    return properties_->Leggi(nomeAttributo);
}

void CErrore::ScriviAttributo(const String& nomeAttributo, const String& valore) {
    clear_ = false;
    properties_->Scrivi(nomeAttributo, valore);
}

}  // namespace kap
