#include "engine/values/date_settings.hpp"

namespace kap::engine {
namespace {

constexpr DateSettings kDefault;
thread_local const DateSettings* current = &kDefault;

}  // namespace

const DateSettings& dateSettings() noexcept {
    return *current;
}

DateSettingsScope::DateSettingsScope(const DateSettings& settings) noexcept : before_(current) {
    current = &settings;
}

DateSettingsScope::~DateSettingsScope() {
    current = before_;
}

}  // namespace kap::engine
