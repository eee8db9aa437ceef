#include "mail_objects.hpp"

#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/late_bound.hpp"
#include "base/unicode.hpp"

namespace kap::test {
namespace {

constexpr std::int32_t kNotFound = -2147221233;
constexpr std::int32_t kRefused = -2147221499;

String& asked() {
    static String all;
    return all;
}

void note(const String& line) {
    asked() += line + u"; ";
}

// The names that members were asked for, in any case; their places are the identifiers.
std::vector<String>& knownNames() {
    static std::vector<String> names;
    return names;
}

// Writes down every property that is assigned, whatever its name.
class MailObject : public Object {
public:
    [[nodiscard]] String className() const override { return u"MailObject"; }

    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        std::vector<String>& names = knownNames();
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (unicode::sameName(names[i], name)) {
                return static_cast<std::int32_t>(i) + 1;
            }
        }
        names.emplace_back(name);
        return static_cast<std::int32_t>(names.size());
    }

    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override {
        const String name = knownNames().at(static_cast<std::size_t>(member) - 1);
        if (!mayBe(kind, InvokeKind::LetOrSet)) {
            return answer(name, arguments.positional);
        }
        const String value = convert::toString(arguments.positional.back());
        note(name + u" = " + value);
        assigned(value);
        return {};
    }

protected:
    virtual Variant answer(const String& /*name*/, std::span<Variant> /*arguments*/) {
        throw AutomationError(errors::kMemberNotFound);
    }
    virtual void assigned(const String& /*value*/) {}
};

class Contact final : public MailObject {
    Variant answer(const String& name, std::span<Variant> arguments) override {
        note(arguments.empty()
                 ? name
                 : name + u" " + convert::toString(late::get(arguments.front(), u"Name")));
        return {};
    }
    void assigned(const String& value) override {
        if (value == String(u"rifiutato")) {
            throw AutomationError(kRefused, u"salvataggio rifiutato", u"Posta");
        }
    }
};

class Items final : public MailObject {
    Variant answer(const String& name, std::span<Variant> arguments) override {
        if (name == String(u"Count")) {
            return std::int32_t{7};
        }
        const String filter = convert::toString(arguments.front());
        note(name + u" " + filter);
        const bool known = filter.view().find(u"nota@esempio.it") != std::u16string_view::npos;
        return known ? Ref<Object>(make<Contact>()) : Ref<Object>();
    }
};

class Folder final : public MailObject {
public:
    Folder(String name, Ref<Folder> inner) : name_(std::move(name)), inner_(std::move(inner)) {}

private:
    Variant answer(const String& name, std::span<Variant> arguments) override {
        if (name == String(u"Name")) {
            return name_;
        }
        if (name == String(u"Items")) {
            return Ref<Object>(make<Items>());
        }
        if (name == String(u"Folders")) {
            return Ref<Object>(this);
        }
        const String wanted = convert::toString(arguments.front());
        note(name + u" " + wanted);
        if (!inner_ || inner_->name_ != wanted) {
            throw AutomationError(kNotFound, u"cartella non trovata", u"Posta");
        }
        return Ref<Object>(inner_);
    }

    String name_;
    Ref<Folder> inner_;
};

class Session final : public MailObject {
    Variant answer(const String& name, std::span<Variant> arguments) override {
        if (name == String(u"Folders")) {
            const auto customers = make<Folder>(u"Clienti", Ref<Folder>());
            return Ref<Object>(make<Folder>(u"", make<Folder>(u"Ufficio", customers)));
        }
        note(name + u" " + convert::toString(arguments.front()));
        return Ref<Object>(make<Folder>(u"contatti", Ref<Folder>()));
    }
};

class Attachments final : public MailObject {
    Variant answer(const String& name, std::span<Variant> arguments) override {
        note(u"Attachments." + name + u" " + convert::toString(arguments.front()));
        return {};
    }
};

class Message final : public MailObject {
    Variant answer(const String& name, std::span<Variant> /*arguments*/) override {
        if (name == String(u"Attachments")) {
            return Ref<Object>(make<Attachments>());
        }
        note(name);
        return {};
    }
};

class MailClient final : public MailObject {
    Variant answer(const String& name, std::span<Variant> arguments) override {
        if (name == String(u"Asked")) {
            return std::exchange(asked(), String());
        }
        note(name + u" " + convert::toString(arguments.front()));
        if (name == String(u"GetNamespace")) {
            return Ref<Object>(make<Session>());
        }
        const bool contact = convert::toLong(arguments.front()) == 2;
        return contact ? Ref<Object>(make<Contact>()) : Ref<Object>(make<Message>());
    }
};

}  // namespace

Ref<Object> makeMailClient() {
    return make<MailClient>();
}

}  // namespace kap::test
