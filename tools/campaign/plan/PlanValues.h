#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "states/TomlSection.h"

/** What several tables of a plan have in common; throws CaseError with line and column. */
namespace plan {

/** Whether a text may be part of a file's name: letters, digits, ".", "_" and "-". */
bool isName(std::string_view text);

/** What isName() wants, for messages. */
inline constexpr const char* kExpectedName =
    "expected up to 60 letters, digits, \".\", \"_\" and \"-\", the first a letter or digit";

/** None where the key is missing. */
std::optional<size_t> wholeNumber(const states::TomlSection& section, std::string_view key,
                                  const states::Range& range);

/** False where the key is missing. */
bool flag(const states::TomlSection& section, std::string_view key);

/** A text that is not empty and has no control characters. */
std::optional<std::string> plainText(const states::TomlSection& section, std::string_view key);

/** Of a scale. */
inline constexpr double kMaxCounts = 1e9;

/** Names, none of them twice; empty where the key is missing. */
std::vector<std::string> names(const states::TomlSection& section, std::string_view key);

} // namespace plan
