#include <kaputil/host/cregistro.hpp>

#include <array>
#include <optional>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/platform/registry.hpp>

#include "automation/class_builder.hpp"

namespace kap {
namespace {

namespace registry = platform::registry;

constexpr std::array<std::pair<std::u16string_view, std::uint32_t>, 4> kRoots = {{
    {u"HKEY_CLASSES_ROOT", 0x80000000},
    {u"HKEY_CURRENT_USER", 0x80000001},
    {u"HKEY_LOCAL_MACHINE", 0x80000002},
    {u"HKEY_USERS", 0x80000003},
}};

constexpr std::array<std::pair<std::u16string_view, std::uint32_t>, 2> kTypes = {{
    {u"REG_SZ", registry::kText},
    {u"REG_DWORD", registry::kNumber},
}};

// The number of a name, as decimal text; any other text as it is.
template <std::size_t Size>
String translated(const std::array<std::pair<std::u16string_view, std::uint32_t>, Size>& names,
                  const String& text) {
    for (const auto& [name, number] : names) {
        if (name == text.view()) {
            return convert::toString(static_cast<std::int32_t>(number));
        }
    }
    return text;
}

// The whole path of a key; nullopt when the handle is no root's.
std::optional<String> pathFrom(const String& rootHandle, const String& key) {
    auto root = registry::rootName(convert::toLong(rootHandle));
    if (root && !key.empty()) {
        *root += u"\\" + key;
    }
    return root;
}

// Clients are not told what the registry answers: a path that no key can have is one of no key. The
// user of a damaged store finds it in the log.
template <class Action>
void quietly(Action action) {
    try {
        action();
    } catch (const AutomationError& error) {
        if (error.number() == errors::kBadFileName) {
            return;
        }
        platform::showMessage(u"CRegistro", platform::MessageSeverity::Warning,
                              error.description());
    }
}

Variant valueOf(const registry::Value& value) {
    if (value.type == registry::kText && !value.data.empty()) {
        return registry::textOf(value);
    }
    if (value.type == registry::kNumber) {
        // Deliberately 0 for every number: the clients' installations were made with it.
        return std::int32_t{0};
    }
    return {};
}

// The value as it is stored; nullopt for a type that is not written.
std::optional<registry::Value> stored(std::int32_t type, const String& text) {
    switch (static_cast<std::uint32_t>(type)) {
        case registry::kText:
            return registry::textValue(text);
        case registry::kNumber:
            return registry::numberValue(convert::toLong(text));
        default:
            return std::nullopt;
    }
}

}  // namespace

const ClassDescription& CRegistro::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CRegistro>(u"CRegistro", u"1312d785-c222-48a5-808f-95b7d63f149b",
                                u"9f2fdde1-9264-4fd3-ad53-59409a82c19e")
            .property<&CRegistro::IClassi_Errore>(u"IClassi_Errore")
            .property<&CRegistro::NomeValore, &CRegistro::setNomeValore>(u"NomeValore")
            .property<&CRegistro::Chiave, &CRegistro::setChiave>(u"Chiave")
            .method<&CRegistro::Leggi>(u"Leggi",
                                       {u"sWhere", Parameter(u"sNomeValore").otherwise(u""),
                                        Parameter(u"sChiave").otherwise(u"")})
            .method<&CRegistro::Scrivi>(u"Scrivi", {u"sWhere", u"sValoreDaImpostare", u"sTipo",
                                                    Parameter(u"sNomeValore").otherwise(u""),
                                                    Parameter(u"sChiave").otherwise(u"")})
            .build();
    return description;
}

void CRegistro::setNomeValore(const Variant& value) {
    nomeValore_ = convert::toString(value);
}

void CRegistro::setChiave(const Variant& value) {
    chiave_ = convert::toString(value);
}

void CRegistro::failWithoutErrorObject() const {
    throw AutomationError(errors::kObjectNotSet);
}

void CRegistro::chooseRoot(const String& where) {
    if (where.empty()) {
        failWithoutErrorObject();
    }
    root_ = translated(kRoots, where);
}

const String& CRegistro::keyPath(const String& given) const {
    return given.empty() ? nomeValore_ : given;
}

Variant CRegistro::Leggi(const String& sWhere, ByRef<String> sNomeValore, ByRef<String> sChiave) {
    chooseRoot(sWhere);
    if (sNomeValore->empty()) {
        *sNomeValore = chiave_;
    }
    const auto path = pathFrom(root_, keyPath(*sChiave));
    Variant result;
    if (path) {
        quietly([&] {
            if (const auto value = registry::value(*path, *sNomeValore)) {
                result = valueOf(*value);
            }
        });
    }
    return result;
}

Variant CRegistro::Scrivi(const String& sWhere, ByRef<String> sValoreDaImpostare,
                          ByRef<String> sTipo, ByRef<String> sNomeValore, ByRef<String> sChiave) {
    *sTipo = translated(kTypes, *sTipo);
    const std::int32_t type = convert::toLong(*sTipo);
    chooseRoot(sWhere);
    if (sValoreDaImpostare->empty()) {
        failWithoutErrorObject();
    }
    const auto path = pathFrom(root_, keyPath(*sChiave));
    const auto value = stored(type, *sValoreDaImpostare);
    if (path && value) {
        quietly([&] { static_cast<void>(registry::setValue(*path, *sNomeValore, *value)); });
    }
    return u"Done";
}

}  // namespace kap
