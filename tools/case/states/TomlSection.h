#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "states/Location.h"

namespace states {

/** The parser asserts something that a wrong file does not hold, such as a header "[[!". */
struct UnforeseenToml
{
};

constexpr void expectForeseen(bool holds)
{
    if (!holds) {
        throw UnforeseenToml();
    }
}

} // namespace states

// The parser takes its assertions for granted where NDEBUG is defined, whatever the file holds.
#undef NDEBUG
#define TOML_ASSERT(expr) states::expectForeseen(static_cast<bool>(expr))
#include <toml++/toml.h>

/** Access to TOML files for their readers. Slow to compile: include it in few files. */
namespace states {

inline Location locationOf(const toml::source_position& position)
{
    return {unsigned(position.line), unsigned(position.column)};
}

inline Location locationOf(const toml::node& node)
{
    return locationOf(node.source().begin);
}

/** Whether the value ends something that a previous state began. */
inline bool isOff(const toml::node& node)
{
    return node.is_string() && node.as_string()->get() == "off";
}

/** Range of the numbers that a key may have. */
struct Range
{
    double mMin;
    double mMax;
    bool mIsMinExcluded = false;
};

/** Length of a list of numbers, and the message for a wrong list. */
struct ExpectedNumbers
{
    size_t mCount;
    const char* mText;
};

inline constexpr ExpectedNumbers kExpectedScale{
    2, "expected two numbers: counts per volt and per ampere"};

/**
 * The tables of a TOML text. Throws CaseError with line and column for wrong TOML, for non-ASCII
 * characters outside comments, and for strings of several lines.
 * @param fileName for messages
 */
toml::table parseTables(std::string_view text, const std::string& fileName);

/** A table of the file. Borrows the table and the file's name. */
class TomlSection
{
public:
    /** @param path name of the table in messages: "voltage"; empty for the top level */
    TomlSection(const std::string& fileName, const toml::table& table, std::string path = "");

    /** Throws CaseError for an unknown key. */
    TomlSection(const std::string& fileName, const toml::table& table, std::string path,
                const std::vector<std::string>& keys);

    /** A message for each unknown key. */
    std::vector<std::string> unknownKeys(const std::vector<std::string>& keys) const;

    /** Throws CaseError with location and key. */
    [[noreturn]] void fail(const toml::node& node, std::string_view key,
                           const std::string& problem) const;

    const toml::node* find(std::string_view key) const { return mTable.get(key); }
    const toml::table& table() const { return mTable; }

    /** The section of a node that must be a table, with any keys. */
    TomlSection section(const toml::node& node, std::string_view key) const;

    /** The section of a node that must be a table, with only these keys. */
    TomlSection section(const toml::node& node, std::string_view key,
                        const std::vector<std::string>& keys) const;

    /** Nothing if the key is missing. */
    std::optional<double> number(std::string_view key, const Range& range) const;

    /** Throws if the key is missing. */
    double requiredNumber(std::string_view key, const Range& range) const;

    std::optional<std::string> text(std::string_view key) const;

    double numberOf(const toml::node& node, std::string_view key, const Range& range) const;

    /** A list of numbers; nothing if the key is missing. @param expected its length and message */
    std::optional<std::vector<double>> numbers(std::string_view key, const Range& range,
                                               const ExpectedNumbers& expected) const;

    /** The tables below [[key]]; null if there are none. */
    const toml::array* tables(std::string_view key) const;

    /** The same; throws if there are none. */
    const toml::array& requiredTables(std::string_view key) const;

private:
    std::string nameOf(std::string_view key) const;

    const std::string& mFileName;
    const toml::table& mTable;
    std::string mPath;
};

} // namespace states
