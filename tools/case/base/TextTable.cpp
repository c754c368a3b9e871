#include "base/TextTable.h"

#include <algorithm>

namespace base {

namespace {
constexpr char kRightMark = '>';
constexpr size_t kGap = 2; ///< blanks between columns

/** The width in characters, not in bytes. */
size_t widthOf(const std::string& text)
{
    constexpr unsigned kContinuationBits = 0xC0;
    constexpr unsigned kContinuation = 0x80;
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & kContinuationBits) != kContinuation;
    }));
}
} // namespace

TextTable::TextTable(const std::vector<std::string>& heading)
{
    mRows.emplace_back();
    for (const std::string& title : heading) {
        mIsRight.push_back(!title.empty() && title[0] == kRightMark);
        mRows.back().push_back(mIsRight.back() ? title.substr(1) : title);
    }
}

std::string TextTable::text() const
{
    std::vector<size_t> widths(mIsRight.size());
    for (const auto& row : mRows) {
        for (size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    std::string all;
    for (const auto& row : mRows) {
        std::string line;
        for (size_t i = 0; i < widths.size(); ++i) {
            const std::string blanks(widths[i] - widthOf(row[i]), ' ');
            line += (mIsRight[i] ? blanks + row[i] : row[i] + blanks) + std::string(kGap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        all += line + "\n";
    }
    return all;
}

} // namespace base
