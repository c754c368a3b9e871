#include "comtrade/ComtradeConfigLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace comtrade {

namespace {
std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of("\r\n"), text.size());
        lines.push_back(text.substr(0, end));
        // Some files end their lines with CR CR LF.
        size_t next = std::min(text.find_first_not_of('\r', end), text.size());
        next += next < text.size() && text[next] == '\n' ? 1 : 0;
        text.remove_prefix(next);
    }
    return lines;
}

bool isBlank(std::string_view line)
{
    return base::trimmed(line).empty();
}
/** Index of the first line from `index` on that is not blank. */
size_t filledLine(const std::vector<std::string_view>& lines, size_t index)
{
    while (index < lines.size() && isBlank(lines[index])) {
        ++index;
    }
    return index;
}
} // namespace

// A blank line may stand for an empty field, but not after the first line: then one follows every
// line.
ComtradeConfigLines::ComtradeConfigLines(std::string name, std::string_view text, size_t firstLine)
    : mName(std::move(name)),
      mLines(linesOf(text)),
      mFirstLine(firstLine),
      mNext(filledLine(mLines, 0)),
      mHasBlankLines(mNext + 1 < mLines.size() && isBlank(mLines[mNext + 1]))
{
}

ComtradeConfigLines::Fields ComtradeConfigLines::take(const std::string& expected)
{
    mTaken = mNext;
    if (isAtEnd()) {
        fail(expected + ", found the end of the configuration");
    }
    ++mNext;
    if (mHasBlankLines) {
        mNext = filledLine(mLines, mNext);
    }
    return base::splitFields(mLines[mTaken], ',');
}

std::string_view ComtradeConfigLines::excerpt() const
{
    return mLines[mTaken].substr(0, base::kLongestExcerpt);
}

void ComtradeConfigLines::fail(const std::string& expected) const
{
    throw base::CaseError(fmt::format("{}:{}: expected {}", mName, mFirstLine + mTaken, expected));
}

std::string_view fieldAt(const ComtradeConfigLines::Fields& fields, size_t index)
{
    return index < fields.size() ? fields[index] : std::string_view();
}

bool looksLikeComtradeConfig(std::string_view text)
{
    std::vector<std::string_view> lines = linesOf(text);
    lines.erase(std::remove_if(lines.begin(), lines.end(), isBlank), lines.end());
    if (lines.size() < 2) {
        return false;
    }
    const auto fields = base::splitFields(lines[1], ',');
    size_t total = 0;
    return fields.size() >= 2 && base::parseNumber(fields[0], &total) && !fields[1].empty() &&
           std::toupper(static_cast<unsigned char>(fields[1].back())) == 'A';
}

} // namespace comtrade
