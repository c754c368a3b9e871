#include "comtrade/ComtradeAsciiRecords.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

namespace {
constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
constexpr double kMissingBefore2013 = 99999.0;
constexpr double kLargestStamp = 1e17;
constexpr size_t kLeadingFields = 2;
} // namespace

/** Reads the fields of a line one by one. */
class ComtradeAsciiRecords::Fields
{
public:
    explicit Fields(std::string_view line) : mNext(line.data()), mEnd(mNext + line.size()) {}

    size_t taken() const { return mTaken; }

    /** @return false if the next field is not a number; an empty field gives NaN */
    bool take(double* number)
    {
        ++mTaken;
        return takeInteger(number) || takeAny(number);
    }

    /** The field that was not a number. */
    std::string_view field() const { return mField; }

private:
    /** The fast path for up to nine digits, which nearly all fields have. */
    bool takeInteger(double* number)
    {
        constexpr int kMaxDigits = 9;
        const char* next = mNext;
        const bool isNegative = next != mEnd && *next == '-';
        next += isNegative ? 1 : 0;
        const char* const begin = next;
        int value = 0;
        while (next != mEnd && *next >= '0' && *next <= '9' && next - begin < kMaxDigits) {
            value = value * 10 + (*next - '0');
            ++next;
        }
        if (next == begin || (next != mEnd && *next != ',')) {
            return false;
        }
        mNext = next == mEnd ? mEnd : next + 1;
        *number = isNegative ? -value : value;
        return true;
    }

    bool takeAny(double* number)
    {
        const char* const end = std::find(mNext, mEnd, ',');
        mField = base::trimmed({mNext, static_cast<size_t>(end - mNext)});
        mNext = end == mEnd ? mEnd : end + 1;
        *number = kNoValue;
        return mField.empty() || base::parseNumber(mField, number);
    }

    const char* mNext;
    const char* mEnd;
    std::string_view mField;
    size_t mTaken = 0;
};

ComtradeAsciiRecords::ComtradeAsciiRecords(base::InputFile& file, const ComtradeHeader& header,
                                           size_t firstLine)
    : mFile(file),
      mHeader(header),
      mFieldCount(kLeadingFields + header.mAnalogs.size() + header.mStatuses.size()),
      mMissing(header.mRevision == ComtradeRevision::k2013 ? kNoValue : kMissingBefore2013),
      mLine(firstLine - 1)
{
}

void ComtradeAsciiRecords::read(size_t maxRecords, ComtradeBlock* block,
                                std::vector<std::vector<double>>* columns)
{
    block->mNumbers.resize(maxRecords);
    block->mStamps.resize(maxRecords);
    block->mStates.assign(maxRecords * stateWords(mHeader), 0);
    size_t records = 0;
    std::string_view line;
    while (records < maxRecords && takeRecord(&line)) {
        readRecord(line, records, block, columns);
        ++records;
    }
    block->mNumbers.resize(records);
    block->mStamps.resize(records);
    block->mStates.resize(records * stateWords(mHeader));
}

/** Takes the next record; false at the end of the data. */
bool ComtradeAsciiRecords::takeRecord(std::string_view* line)
{
    while (!mHasEnded && mFile.takeLine(line)) {
        ++mLine;
        *line = base::trimmed(line->substr(0, line->find('\x1a')));
        if (line->substr(0, kSectionMark.size()) == kSectionMark) {
            mHasEnded = true;
            return false;
        }
        const auto commas = static_cast<size_t>(std::count(line->begin(), line->end(), ','));
        if (commas + 1 >= mFieldCount) {
            return true;
        }
        if (!line->empty() && mFile.left() > 1) {
            fail(fmt::format("{} fields, found {}", mFieldCount, commas + 1));
        }
        mCutOffLine = line->empty() ? mCutOffLine : mLine;
    }
    return false;
}

void ComtradeAsciiRecords::readRecord(std::string_view line, size_t sample, ComtradeBlock* block,
                                      std::vector<std::vector<double>>* columns)
{
    Fields fields(line);
    double number = 0.0;
    double stamp = 0.0;
    const bool hasNumber = fields.take(&number) && std::abs(number) < kLargestStamp;
    mLastNumber = hasNumber ? static_cast<qint64>(number) : mLastNumber + 1;
    block->mNumbers[sample] = mLastNumber;
    const bool hasStamp = fields.take(&stamp) && std::abs(stamp) < kLargestStamp;
    block->mStamps[sample] = hasStamp ? static_cast<qint64>(stamp) : ComtradeBlock::kNoStamp;
    for (std::vector<double>& column : *columns) {
        if (!fields.take(&number)) {
            fail(fmt::format("a number in field {}, found \"{}\"", fields.taken(),
                             fields.field().substr(0, base::kLongestExcerpt)));
        }
        column[sample] = number == mMissing ? kNoValue : number;
    }
    readStates(&fields, block->mStates.data() + sample * stateWords(mHeader));
}

void ComtradeAsciiRecords::readStates(Fields* fields, quint16* states) const
{
    for (size_t i = 0; i < mHeader.mStatuses.size(); ++i) {
        double state = 0.0;
        if (!fields->take(&state)) {
            fail(fmt::format("0 or 1 in field {}, found \"{}\"", fields->taken(),
                             fields->field().substr(0, base::kLongestExcerpt)));
        }
        const unsigned bit = state == 1.0 ? 1U << (i % kStatesInWord) : 0U;
        states[i / kStatesInWord] = static_cast<quint16>(states[i / kStatesInWord] | bit);
    }
}

void ComtradeAsciiRecords::fail(const std::string& expected) const
{
    throw base::CaseError(fmt::format("{}:{}: expected {}", mFile.name(), mLine, expected));
}

void ComtradeAsciiRecords::remarkOn(base::Remarks* remarks) const
{
    if (mCutOffLine > 0) {
        remarks->add(fmt::format("line {} of the data is cut off: left out", mCutOffLine));
    }
}

} // namespace comtrade
