#include "states/StateText.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "generate/WaveParameters.h"

namespace states {

namespace {
constexpr size_t kNone = std::string_view::npos;

bool canBeginName(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           std::string_view("_-\"'").find(character) != kNone;
}

/** The end of the string that begins there; the end of the line if it is not closed. */
size_t endOfString(std::string_view line, size_t begin)
{
    for (size_t i = begin + 1; i < line.size(); ++i) {
        if (line[i] == line[begin]) {
            return i;
        }
        if (line[i] == '\\' && line[begin] == '"') {
            ++i;
        }
    }
    return line.size();
}

/** The first non-ASCII byte that is not in a comment. */
size_t findForeign(std::string_view line)
{
    size_t end = 0;
    while (end < line.size() && line[end] != '#') {
        const bool isString = line[end] == '"' || line[end] == '\'';
        end = isString ? endOfString(line, end) + 1 : end + 1;
    }
    const std::string_view code = line.substr(0, end);
    const auto* const found = std::find_if(code.begin(), code.end(), [](char character) {
        return static_cast<unsigned char>(character) > 0x7F;
    });
    return found == code.end() ? kNone : size_t(found - code.begin());
}
} // namespace

std::optional<ValueText> parseValue(std::string_view text)
{
    const auto parts = base::splitText(text, '@');
    ValueText value{};
    double degrees = 0.0;
    if (parts.size() > 2 || !base::parseNumber(parts[0], &value.mValue) || value.mValue < 0.0 ||
        value.mValue > kMaxValue) {
        return std::nullopt;
    }
    if (parts.size() == 2) {
        if (!base::parseNumber(parts[1], &degrees) || std::abs(degrees) > kMaxDegrees) {
            return std::nullopt;
        }
        value.mDegrees = degrees;
    }
    return value;
}

std::optional<PointOnWave> parsePoint(std::string_view text)
{
    const auto parts = base::splitText(text, '@');
    PointOnWave point{};
    const bool isGood = parts.size() == 2 && parts[0].size() == 1 && parts[0][0] >= 'A' &&
                        parts[0][0] <= 'C' && base::parseNumber(parts[1], &point.mDegrees) &&
                        std::abs(point.mDegrees) <= kMaxDegrees;
    if (!isGood) {
        return std::nullopt;
    }
    point.mChannel = generate::kFirstVoltage + size_t(parts[0][0] - 'A');
    return point;
}

std::optional<StateHarmonic> parseHarmonic(std::string_view text)
{
    const auto parts = base::splitText(text, ':');
    if (parts.size() != 2) {
        return std::nullopt;
    }
    const auto size = base::splitText(parts[1], '@');
    StateHarmonic harmonic{};
    double percent = 0.0;
    const bool isGood = size.size() <= 2 && !size[0].empty() && size[0].back() == '%' &&
                        base::parseNumber(parts[0], &harmonic.mOrder) && harmonic.mOrder >= 2 &&
                        harmonic.mOrder <= generate::kMaxOrder &&
                        base::parseNumber(size[0].substr(0, size[0].size() - 1), &percent) &&
                        percent >= 0.0 && percent <= kMaxValue &&
                        (size.size() == 1 || (base::parseNumber(size[1], &harmonic.mDegrees) &&
                                              std::abs(harmonic.mDegrees) <= kMaxDegrees));
    harmonic.mRatio = percent / generate::kPercent;
    return isGood ? std::optional(harmonic) : std::nullopt;
}

void expectReadable(const std::string& fileName, std::string_view text)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    unsigned number = 0;
    for (const std::string_view line : base::splitText(text, '\n')) {
        ++number;
        const size_t foreign = findForeign(line);
        if (foreign != kNone) {
            throw base::CaseError(messagePrefix(fileName, {number, unsigned(foreign) + 1}) +
                                  "a non-ASCII character, which is allowed in comments only");
        }
        const size_t quotes = std::min(line.find("\"\"\""), line.find("'''"));
        if (quotes != kNone) {
            throw base::CaseError(messagePrefix(fileName, {number, unsigned(quotes) + 1}) +
                                  "three quotes; expected a string in single quotes, on one line");
        }
    }
}

Location headerLocation(std::string_view text)
{
    unsigned number = 0;
    for (const std::string_view line : base::splitText(text, '\n')) {
        ++number;
        const size_t bracket = line.find_first_not_of(" \t");
        const size_t name = line.find_first_not_of(" \t[");
        const bool isHeader = bracket != kNone && line[bracket] == '[';
        if (isHeader && name != kNone && !canBeginName(line[name])) {
            return {number, unsigned(name) + 1};
        }
    }
    return {1, 1};
}

} // namespace states
