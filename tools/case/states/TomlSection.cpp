#include "states/TomlSection.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "base/NearestName.h"
#include "states/StateText.h"

namespace states {

toml::table parseTables(std::string_view text, const std::string& fileName)
{
    expectReadable(fileName, text);
    try {
        return toml::parse(text);
    } catch (const UnforeseenToml&) {
        throw base::CaseError(messagePrefix(fileName, headerLocation(text)) +
                              "expected a name between the brackets");
    } catch (const toml::parse_error& error) {
        throw base::CaseError(messagePrefix(fileName, locationOf(error.source().begin)) +
                              std::string(error.description()));
    }
}

TomlSection::TomlSection(const std::string& fileName, const toml::table& table, std::string path)
    : mFileName(fileName), mTable(table), mPath(std::move(path))
{
}

TomlSection::TomlSection(const std::string& fileName, const toml::table& table, std::string path,
                         const std::vector<std::string>& keys)
    : TomlSection(fileName, table, std::move(path))
{
    const std::vector<std::string> unknown = unknownKeys(keys);
    if (!unknown.empty()) {
        throw base::CaseError(unknown.front());
    }
}

std::vector<std::string> TomlSection::unknownKeys(const std::vector<std::string>& keys) const
{
    std::vector<std::string> messages;
    for (const auto& [key, node] : mTable) {
        if (std::find(keys.begin(), keys.end(), key.str()) == keys.end()) {
            messages.push_back(fmt::format(
                "{}{}: unknown key; the nearest is {}, and all are {}",
                messagePrefix(mFileName, locationOf(key.source().begin)), nameOf(key.str()),
                base::nearestNames(key.str(), keys, 1).front(), fmt::join(keys, ", ")));
        }
    }
    return messages;
}

void TomlSection::fail(const toml::node& node, std::string_view key,
                       const std::string& problem) const
{
    throw base::CaseError(messagePrefix(mFileName, locationOf(node)) + nameOf(key) + ": " +
                          problem);
}

TomlSection TomlSection::section(const toml::node& node, std::string_view key) const
{
    if (!node.is_table()) {
        fail(node, key, "expected a table");
    }
    return {mFileName, *node.as_table(), nameOf(key)};
}

TomlSection TomlSection::section(const toml::node& node, std::string_view key,
                                 const std::vector<std::string>& keys) const
{
    if (!node.is_table()) {
        fail(node, key, fmt::format("expected a table with {}", fmt::join(keys, ", ")));
    }
    return {mFileName, *node.as_table(), nameOf(key), keys};
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
        fail(*node, key, "expected text in quotes");
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

std::optional<std::vector<double>> TomlSection::numbers(std::string_view key, const Range& range,
                                                        const ExpectedNumbers& expected) const
{
    const toml::node* const node = find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const toml::array* const list = node->as_array();
    if (list == nullptr || list->size() != expected.mCount) {
        fail(*node, key, expected.mText);
    }
    std::vector<double> values;
    for (const toml::node& entry : *list) {
        values.push_back(numberOf(entry, key, range));
    }
    return values;
}

const toml::array* TomlSection::tables(std::string_view key) const
{
    const toml::node* const list = find(key);
    if (list != nullptr && !list->is_array_of_tables()) {
        fail(*list, key, fmt::format("expected [[{0}]] before each {0}", key));
    }
    return list == nullptr ? nullptr : list->as_array();
}

const toml::array& TomlSection::requiredTables(std::string_view key) const
{
    const toml::array* const list = tables(key);
    if (list == nullptr) {
        throw base::CaseError(messagePrefix(mFileName, {1, 1}) +
                              fmt::format("expected {0}s, each below [[{0}]]", key));
    }
    return *list;
}

std::string TomlSection::nameOf(std::string_view key) const
{
    return mPath.empty() ? std::string(key) : mPath + "." + std::string(key);
}

} // namespace states
