#include "plan/PlanValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace plan {

namespace {
constexpr size_t kMaxNameBytes = 60;
constexpr int kFirstPrintable = 0x20;
constexpr int kDelete = 0x7F;

bool isControl(char character)
{
    const int code = static_cast<unsigned char>(character);
    return code < kFirstPrintable || code == kDelete;
}

bool isNameCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           std::string_view("._-").find(character) != std::string_view::npos;
}
} // namespace

bool isName(std::string_view text)
{
    return !text.empty() && text.size() <= kMaxNameBytes &&
           std::isalnum(static_cast<unsigned char>(text.front())) != 0 &&
           std::all_of(text.begin(), text.end(), isNameCharacter);
}

std::optional<size_t> wholeNumber(const states::TomlSection& section, std::string_view key,
                                  const states::Range& range)
{
    const std::optional<double> value = section.number(key, range);
    if (value && *value != std::floor(*value)) {
        section.fail(*section.find(key), key, "expected a whole number");
    }
    return value ? std::optional(static_cast<size_t>(*value)) : std::nullopt;
}

bool flag(const states::TomlSection& section, std::string_view key)
{
    const toml::node* const node = section.find(key);
    if (node != nullptr && !node->is_boolean()) {
        section.fail(*node, key, "expected true or false");
    }
    return node != nullptr && node->as_boolean()->get();
}

std::optional<std::string> plainText(const states::TomlSection& section, std::string_view key)
{
    std::optional<std::string> text = section.text(key);
    if (text && (text->empty() || std::any_of(text->begin(), text->end(), isControl))) {
        section.fail(*section.find(key), key,
                     "expected a text without control characters, not empty");
    }
    return text;
}

std::vector<std::string> names(const states::TomlSection& section, std::string_view key)
{
    std::vector<std::string> result;
    const toml::node* const node = section.find(key);
    if (node == nullptr) {
        return result;
    }
    if (!node->is_array()) {
        section.fail(*node, key, "expected a list of names such as [\"dip\", \"swell\"]");
    }
    for (const toml::node& entry : *node->as_array()) {
        const std::string name = entry.is_string() ? entry.as_string()->get() : "";
        if (!isName(name)) {
            section.fail(entry, key, kExpectedName);
        }
        if (std::find(result.begin(), result.end(), name) != result.end()) {
            section.fail(entry, key, fmt::format("'{}' is listed twice", name));
        }
        result.push_back(name);
    }
    return result;
}

} // namespace plan
