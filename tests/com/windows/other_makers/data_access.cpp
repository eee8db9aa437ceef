#include "data_access.hpp"

#include <optional>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::test {
namespace {

constexpr std::int32_t kNoSuchProvider = 3706;

// Behaves in everything else as the connection inside does.
class OtherMakersConnection final : public Object {
public:
    [[nodiscard]] String className() const override { return u"Connection"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return inner_->memberId(name);
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override {
        if (inner_->memberId(u"Open") != member) {
            return inner_->invoke(member, kind, arguments);
        }
        const String text = convert::toString(arguments.positional.front());
        if (text.view().find(u"Provider=\"Prova\"") == std::u16string_view::npos) {
            throw AutomationError(kNoSuchProvider, u"Provider non trovato: " + text, u"Prova");
        }
        inner_->Open(u"Provider=KapLocal;Data Source=:memory:");
        return {};
    }

private:
    Ref<ado::Connection> inner_ = make<ado::Connection>();
};

}  // namespace

Ref<Object> makeConnection() {
    return make<OtherMakersConnection>();
}

}  // namespace kap::test
