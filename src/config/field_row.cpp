#include "config/field_row.hpp"

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "config/node_access.hpp"
#include "data/failures.hpp"

namespace kap::config {
namespace {

// From a field through four collections and three elements.
constexpr int kStepsToRoot = 7;

std::vector<String> split(const String& path) {
    std::vector<String> parts;
    std::u16string_view rest = path;
    for (std::size_t end = rest.find(u'\\'); end != std::u16string_view::npos;
         end = rest.find(u'\\')) {
        parts.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    parts.emplace_back(rest);
    return parts;
}

Ref<Object> rootOf(Object& field) {
    Ref<Object> node(&field);
    for (int step = 0; step < kStepsToRoot; ++step) {
        node = objectOf(required(node), u"Parent");
    }
    return node;
}

Ref<ado::Connection> opened(const Variant& connection) {
    if (!connection.isObject()) {
        throw AutomationError(errors::kObjectRequired);
    }
    if (connection.as<Ref<Object>>() && !ado::isConnection(connection)) {
        throw AutomationError(errors::kTypeMismatch);
    }
    auto found = ado::connectionOf(connection);
    if (!found) {
        ado::fail::invalidConnection();
    }
    return found;
}

}  // namespace

FieldRow::FieldRow(const String& path, Object& field) : parts_(split(path)) {
    const Ref<Object> root = rootOf(field);
    connection_ = propertyOf(required(root), u"ActiveConnection");
    table_ = convert::toString(propertyOf(*root, u"NomeTabella"));
}

const String& FieldRow::part(std::size_t index) const {
    if (index >= parts_.size()) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    return parts_[index];
}

// The names stand in the text as they are, quotes and all.
String FieldRow::condition() const {
    return u" WHERE Gruppo='" + part(0) + u"' and Applicazione='" + part(1) + u"' and Procedura='" +
           part(2) + u"' and Modulo='" + part(3) + u"' and Campo='" + part(4) + u"'";
}

String FieldRow::selectStatement() const {
    return u" SELECT * FROM " + table_ + u" " + condition();
}

void FieldRow::remove() const {
    const auto command = make<ado::Command>();
    command->setActiveConnection(Variant(opened(connection_)));
    command->setCommandType(ado::CommandTypeEnum::adCmdText);
    command->setCommandText(u" DELETE " + table_ + u" " + condition());
    static_cast<void>(command->Execute());
}

}  // namespace kap::config
