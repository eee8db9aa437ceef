#pragma once

#include <cstdint>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cproprieta.hpp>

namespace kap {

// The outcome of an operation: a number (0 is no error), messages for people in order, and any
// further attributes that a caller attaches.
//
//     errore->Clear();
//     errore->setNumero(1);
//     errore->AddMessaggio(u"Codice mancante");
//     errore->MsgToString();   // "Codice mancante\r\n"
//
// Everything is kept in one property string: the number under ERR_NUMERO, the messages under
// ERR_MSG1, ERR_MSG2 and so on. `ToString` gives that string and `Init` takes it, so the object
// travels as text. A new object holds the number 0 and an empty ERR_MSG1, which keeps the first
// message right behind the number.
class KAPUTIL_EXPORT CErrore final : public DescribedObject {
public:
    CErrore();

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The error number as it is stored, which is text; Null when the string given to `Init` had
    // none.
    [[nodiscard]] Variant Numero() const;
    void setNumero(const Variant& value);

    // Appends a message. Raises 6 after 32,767 of them.
    void AddMessaggio(const Variant& messaggio);

    // Back to number 0 and no messages; attributes go too.
    void Clear();

    // The messages in an array that counts from 1; one that is not there is Null. Raises 9 when
    // there are no messages: such an array cannot be.
    [[nodiscard]] Variant MsgToArray() const;

    // The messages, each followed by CR LF. Raises 94 when one of them is not there.
    [[nodiscard]] Variant MsgToString() const;

    // The whole property string.
    [[nodiscard]] Variant ToString() const;

    // Becomes what a property string says. Of its messages those from the first on are counted, up
    // to one that is empty or missing and 20 at most; the next `AddMessaggio` goes behind them,
    // over whatever stands there.
    void Init(const String& stringa);

    // The value of any property, Null when there is none; "DEFAULT" is the whole string.
    [[nodiscard]] Variant LeggiAttributo(const String& nomeAttributo) const;

    // Sets any property; an empty name replaces the whole string, without counting its messages.
    void ScriviAttributo(const String& nomeAttributo, const String& valore);

private:
    Ref<CProprieta> properties_;
    std::int16_t messageCount_ = 0;
    bool clear_ = false;  // nothing has been written since it was cleared
};

}  // namespace kap
