#include "engine/sqlite/options.hpp"

#include <string_view>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"

namespace kap::engine {
namespace {

constexpr int kLongestTimeout = 86400;

[[noreturn]] void refuse(const std::string& sentence) {
    throw AutomationError(ado::errors::kInvalidArgument, sentence, kErrorSource);
}

[[noreturn]] void refuseValue(const ado::ConnectionString::Pair& pair, const char* allowed) {
    refuse("The connection string's " + pair.key + " is '" + pair.value + "'; it must be " +
           allowed + ".");
}

bool is(const std::string& left, std::string_view right) {
    return equalsIgnoringCase(left, right);
}

std::chrono::seconds timeoutOf(const ado::ConnectionString::Pair& pair) {
    const auto seconds = plain::readInt(pair.value);
    if (!seconds || *seconds < 0 || *seconds > kLongestTimeout) {
        refuseValue(pair, "a whole number of seconds from 0 to 86400");
    }
    return std::chrono::seconds(*seconds);
}

Synchronous synchronousOf(const ado::ConnectionString::Pair& pair) {
    if (is(pair.value, "Full")) {
        return Synchronous::Full;
    }
    if (is(pair.value, "Normal")) {
        return Synchronous::Normal;
    }
    if (is(pair.value, "Off")) {
        return Synchronous::Off;
    }
    refuseValue(pair, "Full, Normal or Off");
}

bool readOnlyOf(const ado::ConnectionString::Pair& pair) {
    if (is(pair.value, "Read")) {
        return true;
    }
    if (!is(pair.value, "ReadWrite")) {
        refuseValue(pair, "ReadWrite or Read");
    }
    return false;
}

void apply(const ado::ConnectionString::Pair& pair, Options& options) {
    if (is(pair.key, "Provider")) {
        return;
    }
    if (is(pair.key, "Data Source")) {
        options.source = pair.value;
    } else if (is(pair.key, "Lock Timeout")) {
        options.lockTimeout = timeoutOf(pair);
    } else if (is(pair.key, "Synchronous")) {
        options.synchronous = synchronousOf(pair);
    } else if (is(pair.key, "Mode")) {
        options.readOnly = readOnlyOf(pair);
    } else if (is(pair.key, "User ID") || is(pair.key, "Password")) {
        if (!pair.value.empty()) {
            refuse("The connection string gives a " + pair.key +
                   ", but an embedded database has no users: leave it out.");
        }
    } else {
        refuse("The connection string has the key '" + pair.key +
               "', which the provider KapLocal does not know. Its keys are Provider, Data Source, "
               "Mode, Lock Timeout, Synchronous, User ID and Password.");
    }
}

}  // namespace

Options Options::parse(const ado::ConnectionString& keys) {
    Options options;
    for (const ado::ConnectionString::Pair& pair : keys.pairs()) {
        apply(pair, options);
    }
    if (options.source.empty()) {
        refuse(
            "The connection string names no database: add Data Source=<file>, or "
            "Data Source=:memory: for one that is not kept.");
    }
    return options;
}

}  // namespace kap::engine
