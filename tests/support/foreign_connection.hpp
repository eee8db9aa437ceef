#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::test {

// A connection of another maker, of which the library knows nothing but the names of its members.
// Behind it is one of the library's own. It remembers what it was sent, and the time limit that it
// had meanwhile.
class ForeignConnection final : public Object {
public:
    struct Sent {
        std::string script;
        std::int32_t timeout = 0;
    };

    explicit ForeignConnection(Ref<ado::Connection> inner) : inner_(std::move(inner)) {}

    [[nodiscard]] const Ref<ado::Connection>& inner() const { return inner_; }
    [[nodiscard]] const std::vector<Sent>& sent() const { return sent_; }
    // The calls of Open and Close.
    [[nodiscard]] const std::vector<std::string>& openings() const { return openings_; }
    // Shows this connection string, which nobody else can open.
    void show(const String& connectionString) { shown_ = connectionString; }

    [[nodiscard]] String className() const override { return u"ForeignConnection"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return inner_->memberId(name);
    }
    using Object::invoke;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override {
        if (is(member, u"Execute")) {
            sent_.push_back(
                {arguments.positional[0].as<String>().utf8(), inner_->CommandTimeout()});
        } else if (is(member, u"Open")) {
            openings_.emplace_back("open");
        } else if (is(member, u"Close")) {
            openings_.emplace_back("close");
        } else if (shown_ && is(member, u"ConnectionString") && kind == InvokeKind::Get) {
            return *shown_;
        }
        return inner_->invoke(member, kind, arguments);
    }

private:
    [[nodiscard]] bool is(std::int32_t member, std::u16string_view name) const {
        return inner_->memberId(name) == member;
    }

    Ref<ado::Connection> inner_;
    std::vector<Sent> sent_;
    std::vector<std::string> openings_;
    std::optional<String> shown_;
};

}  // namespace kap::test
