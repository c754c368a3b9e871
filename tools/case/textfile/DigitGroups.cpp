#include "textfile/DigitGroups.h"

#include <algorithm>

namespace textfile {

namespace {
constexpr size_t kGroupDigits = 3;

bool isGroup(std::string_view text)
{
    return !text.empty() && text.size() <= kGroupDigits &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}
} // namespace

void DigitGroups::add(std::string_view text, size_t column, size_t line)
{
    if (mIsDecimal) {
        return;
    }
    const bool hasPlusOrMinus = text.front() == '-' || text.front() == '+';
    const std::string_view digits = text.substr(hasPlusOrMinus ? 1 : 0);
    const size_t sign = digits.find(mSign);
    const std::string_view first = digits.substr(0, sign);
    if (sign == std::string_view::npos) {
        mColumns[column].mHasWhole = true;
        mIsDecimal = !isGroup(first);
        return;
    }
    const std::string_view last = digits.substr(sign + 1);
    mIsDecimal =
        !isGroup(first) || first.front() == '0' || !isGroup(last) || last.size() != kGroupDigits;
    if (!mColumns[column].mGrouped) {
        mColumns[column].mGrouped = Field{std::string(text), column, line};
    }
}

std::optional<DigitGroups::Field> DigitGroups::firstGrouped() const
{
    std::optional<Field> first;
    for (const Column& column : mColumns) {
        const bool isGrouped = !mIsDecimal && column.mHasWhole && column.mGrouped;
        if (isGrouped && (!first || column.mGrouped->mLine < first->mLine)) {
            first = column.mGrouped;
        }
    }
    return first;
}

} // namespace textfile
