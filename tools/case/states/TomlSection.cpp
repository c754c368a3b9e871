#include "states/TomlSection.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "base/NearestName.h"

namespace states {

TomlSection::TomlSection(const StatePlan& plan, const toml::table& table, std::string path,
                         std::vector<std::string> keys)
    : mPlan(plan), mTable(table), mPath(std::move(path))
{
    for (const auto& [key, node] : table) {
        if (std::find(keys.begin(), keys.end(), key.str()) == keys.end()) {
            throw base::CaseError(
                fmt::format("{}{}: unknown key; the nearest is {}, and all are {}",
                            plan.messagePrefix(locationOf(key.source().begin)), nameOf(key.str()),
                            base::nearestNames(key.str(), keys, 1).front(), fmt::join(keys, ", ")));
        }
    }
}

void TomlSection::fail(const toml::node& node, std::string_view key,
                       const std::string& problem) const
{
    throw base::CaseError(mPlan.messagePrefix(locationOf(node)) + nameOf(key) + ": " + problem);
}

TomlSection TomlSection::section(const toml::node& node, std::string_view key,
                                 std::vector<std::string> keys) const
{
    if (!node.is_table()) {
        fail(node, key, fmt::format("expected a table with {}", fmt::join(keys, ", ")));
    }
    return {mPlan, *node.as_table(), nameOf(key), std::move(keys)};
}

std::optional<double> TomlSection::number(std::string_view key, const Range& range) const
{
    const toml::node* const node = find(key);
    return node == nullptr ? std::nullopt : std::optional(numberOf(*node, key, range));
}

double TomlSection::requiredNumber(std::string_view key, const Range& range) const
{
    const std::optional<double> value = number(key, range);
    if (!value) {
        fail(mTable, key, "missing");
    }
    return *value;
}

std::optional<std::string> TomlSection::text(std::string_view key) const
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    if (!node->is_string()) {
        fail(*node, key, "expected a text in quotes");
    }
    return node->as_string()->get();
}

double TomlSection::numberOf(const toml::node& node, std::string_view key, const Range& range) const
{
    const std::optional<double> value = node.is_number() ? node.value<double>() : std::nullopt;
    const bool isGood = value && std::isfinite(*value) && *value <= range.mMax &&
                        (range.mIsMinExcluded ? *value > range.mMin : *value >= range.mMin);
    if (!isGood) {
        fail(node, key,
             fmt::format("expected a number {} {:g} and at most {:g}",
                         range.mIsMinExcluded ? "above" : "of at least", range.mMin, range.mMax));
    }
    return *value;
}

std::string TomlSection::nameOf(std::string_view key) const
{
    return mPath.empty() ? std::string(key) : mPath + "." + std::string(key);
}

} // namespace states
