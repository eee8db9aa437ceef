#include "drivers/late_bound/foreign_connection.hpp"

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/variant.hpp>

#include "automation/late_bound.hpp"

namespace kap::ado::late_bound {
namespace {

// A member that not every maker's object has.
Variant getIfThere(const Variant& object, std::u16string_view property) {
    return late::objectOf(object).memberId(property) ? late::get(object, property) : Variant();
}

std::vector<Variant> elementsOf(const Variant& collection) {
    std::vector<Variant> elements;
    if (collection.isArray()) {
        const Array& array = collection.as<Array>();
        for (std::int32_t i = array.lowerBound(); i <= array.upperBound(); ++i) {
            elements.push_back(array.at(i));
        }
        return elements;
    }
    Object& object = late::objectOf(collection);
    if (!object.memberId(u"Count") || !object.memberId(u"Item")) {
        return object.elements();
    }
    const std::int32_t count = convert::toLong(late::get(collection, u"Count"));
    for (std::int32_t i = 0; i < count; ++i) {
        elements.push_back(late::call(collection, u"Item", {i}));
    }
    return elements;
}

std::int32_t numberOf(const Variant& value, std::int32_t otherwise) {
    return value.isEmpty() ? otherwise : convert::toLong(value);
}

std::string textOf(const Variant& value) {
    return value.isEmpty() ? std::string() : convert::toString(value).utf8();
}

ServerMessage messageOf(const Variant& error, const AutomationError& raised) {
    ServerMessage message;
    message.text = convert::toString(late::get(error, u"Description")).utf8();
    message.number = numberOf(getIfThere(error, u"Number"), raised.number());
    message.nativeNumber = numberOf(getIfThere(error, u"NativeError"), 0);
    message.state = textOf(getIfThere(error, u"SQLState"));
    if (message.number == 0 || message.state.starts_with("01")) {
        message.severity = ServerMessage::kInformation;  // what the script printed, and warnings
    }
    return message;
}

}  // namespace

bool isConnection(const Object& object) {
    return object.memberId(u"Execute") && object.memberId(u"BeginTrans") &&
           object.memberId(u"ConnectionString");
}

bool isOpen(const Ref<Object>& connection) {
    const std::int32_t state = convert::toLong(late::get(Variant(connection), u"State"));
    return (state & static_cast<std::int32_t>(ObjectStateEnum::adStateOpen)) != 0;
}

String connectionStringOf(const Ref<Object>& connection) {
    return convert::toString(late::get(Variant(connection), u"ConnectionString"));
}

void setConnectionString(const Ref<Object>& connection, const String& value) {
    late::let(Variant(connection), u"ConnectionString", value);
}

void open(const Ref<Object>& connection, const String& connectionString, const String& userId,
          const String& password, std::int32_t options) {
    late::call(Variant(connection), u"Open", {connectionString, userId, password, options});
}

void close(const Ref<Object>& connection) {
    late::call(Variant(connection), u"Close");
}

std::optional<std::int32_t> commandTimeoutOf(const Ref<Object>& connection) {
    if (!connection->memberId(u"CommandTimeout")) {
        return std::nullopt;
    }
    return convert::toLong(late::get(Variant(connection), u"CommandTimeout"));
}

void setCommandTimeout(const Ref<Object>& connection, std::int32_t seconds) {
    late::let(Variant(connection), u"CommandTimeout", seconds);
}

std::vector<ServerMessage> messagesOf(const Ref<Object>& connection,
                                      const AutomationError& raised) {
    std::vector<ServerMessage> messages;
    try {
        for (const Variant& error : elementsOf(getIfThere(Variant(connection), u"Errors"))) {
            messages.push_back(messageOf(error, raised));
        }
    } catch (const AutomationError&) {
        messages.clear();  // what was raised is told all the same
    }
    if (messages.empty()) {
        messages.push_back({0, raised.number(), {}, raised.description().utf8()});
    }
    return messages;
}

}  // namespace kap::ado::late_bound
