#include "config/path.hpp"

#include <optional>
#include <utility>

#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include "config/node_access.hpp"

namespace kap::config {
namespace {

constexpr const char16_t* kSeparator = u"\\";
constexpr std::int32_t kOutOfStringSpace = 14;
// A chain has eight objects. One of so many never ends.
constexpr int kMostSteps = 10'000;

template <class Node>
std::optional<String> nameIf(Object& object) {
    const auto* node = dynamic_cast<Node*>(&object);
    return node == nullptr ? std::nullopt : std::optional(node->Nome());
}

// The name of a node between the root and the fields.
std::optional<String> innerName(Object& object) {
    if (auto name = nameIf<CFG_Modulo>(object)) {
        return name;
    }
    if (auto name = nameIf<CFG_Procedura>(object)) {
        return name;
    }
    return nameIf<CFG_Applicazione>(object);
}

// The object above, which may be an unset one; nullopt for an object that has no parent: the root,
// or a stranger that somebody put there.
std::optional<Ref<Object>> above(Object& object) {
    try {
        return objectOf(object, u"Parent");
    } catch (const AutomationError&) {
        return std::nullopt;
    }
}

}  // namespace

String CalcolaPath(const String& name, Ref<Object> parent) {
    String path = name;
    Ref<Object> cursor = std::move(parent);
    // The collection that holds the node adds nothing: the chain goes on above it.
    for (int steps = 0; cursor; ++steps) {
        if (steps == kMostSteps) {
            throw AutomationError(kOutOfStringSpace, u"Out of string space");
        }
        auto next = above(*cursor);
        const bool ends = !next;
        if (next) {
            cursor = std::move(*next);
        }
        if (const auto* root = dynamic_cast<CFG_Applicazioni*>(cursor.get())) {
            return root->Gruppo() + kSeparator + path;
        }
        if (ends || !cursor) {
            break;
        }
        if (const auto inner = innerName(*cursor)) {
            path = *inner + kSeparator + path;
        }
    }
    return path;
}

}  // namespace kap::config
