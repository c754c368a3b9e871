#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "states/TomlSection.h"

/** Reads values that several tables of a plan have; throws CaseError with line and column. */
namespace plan {

/** Whether a text is valid in the name of a file: letters, digits, ".", "_" and "-". */
bool isName(std::string_view text);

/** The rule of isName(), for messages. */
inline constexpr const char* kExpectedName =
    "expected up to 60 letters, digits, \".\", \"_\" and \"-\", the first a letter or digit";

/** Nothing if the key is missing. */
std::optional<size_t> wholeNumber(const states::TomlSection& section, std::string_view key,
                                  const states::Range& range);

/** False if the key is missing. */
bool flag(const states::TomlSection& section, std::string_view key);

/** A text that is not empty and has no control characters. */
std::optional<std::string> plainText(const states::TomlSection& section, std::string_view key);

/** Limit of a scale, in counts per unit. */
inline constexpr double kMaxCounts = 1e9;

/** Distinct names; empty if the key is missing. */
std::vector<std::string> names(const states::TomlSection& section, std::string_view key);

} // namespace plan
