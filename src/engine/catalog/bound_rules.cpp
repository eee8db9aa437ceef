#include "engine/catalog/bound_rules.hpp"

#include "base/ascii.hpp"

namespace kap::engine {
namespace {

constexpr std::string_view kBoundTo = " bound to ";

}  // namespace

std::string boundRuleName(std::string_view rule, std::string_view table, std::string_view column) {
    return std::string(rule) + std::string(kBoundTo) + std::string(table) + "." +
           std::string(column);
}

bool isBoundRule(std::string_view constraint) {
    return constraint.find(kBoundTo) != std::string_view::npos;
}

bool bindsRule(std::string_view constraint, std::string_view rule) {
    return constraint.size() > rule.size() &&
           equalsIgnoringCase(constraint.substr(0, rule.size()), rule) &&
           constraint.substr(rule.size()).starts_with(kBoundTo);
}

}  // namespace kap::engine
