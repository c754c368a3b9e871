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

/** How the readers of TOML files look at them; heavy to compile, for as few files as can be. */
namespace states {

inline Location locationOf(const toml::source_position& position)
{
    return {unsigned(position.line), unsigned(position.column)};
}

inline Location locationOf(const toml::node& node)
{
    return locationOf(node.source().begin);
}

/** What a state before began ends. */
inline bool isOff(const toml::node& node)
{
    return node.is_string() && node.as_string()->get() == "off";
}

/** Numbers that a key may have. */
struct Range
{
    double mMin;
    double mMax;
    bool mIsMinExcluded = false;
};

/** How many numbers a list has, and how to say so. */
struct ExpectedNumbers
{
    size_t mCount;
    const char* mText;
};

inline constexpr ExpectedNumbers kExpectedScale{
    2, "expected two numbers: counts per volt and per ampere"};

/**
 * The tables of a text, whose characters beyond ASCII are in comments alone and whose strings are
 * each on one line. Throws CaseError with line and column for any other text, and for what is no
 * TOML.
 * @param fileName as messages give it
 */
toml::table parseTables(std::string_view text, const std::string& fileName);

/** A table of the file. Borrows the table and the file's name. */
class TomlSection
{
public:
    /** @param path how messages call the table: "voltage"; empty for the file's own */
    TomlSection(const std::string& fileName, const toml::table& table, std::string path = "");

    /** Throws CaseError for a key that is not among those. */
    TomlSection(const std::string& fileName, const toml::table& table, std::string path,
                const std::vector<std::string>& keys);

    /** A message for each key that is not among those. */
    std::vector<std::string> unknownKeys(const std::vector<std::string>& keys) const;

    /** Throws CaseError that names the place and the key. */
    [[noreturn]] void fail(const toml::node& node, std::string_view key,
                           const std::string& problem) const;

    const toml::node* find(std::string_view key) const { return mTable.get(key); }
    const toml::table& table() const { return mTable; }

    /** Of a node that is a table, whatever its keys. */
    TomlSection section(const toml::node& node, std::string_view key) const;

    /** Of a node that is a table with those keys at most. */
    TomlSection section(const toml::node& node, std::string_view key,
                        const std::vector<std::string>& keys) const;

    /** None where the key is missing. */
    std::optional<double> number(std::string_view key, const Range& range) const;

    /** Throws where the key is missing. */
    double requiredNumber(std::string_view key, const Range& range) const;

    std::optional<std::string> text(std::string_view key) const;

    double numberOf(const toml::node& node, std::string_view key, const Range& range) const;

    /** A list of so many numbers; none where the key is missing. @param expected in messages */
    std::optional<std::vector<double>> numbers(std::string_view key, const Range& range,
                                               const ExpectedNumbers& expected) const;

    /** The tables below [[key]]; null where there are none. */
    const toml::array* tables(std::string_view key) const;

    /** The same; throws where there are none. */
    const toml::array& requiredTables(std::string_view key) const;

private:
    std::string nameOf(std::string_view key) const;

    const std::string& mFileName;
    const toml::table& mTable;
    std::string mPath;
};

} // namespace states
