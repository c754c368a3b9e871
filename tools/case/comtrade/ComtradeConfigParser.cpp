#include "comtrade/ComtradeConfigParser.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "comtrade/ComtradeTime.h"

namespace comtrade {

namespace {
// Fields of the line of an analog channel.
constexpr size_t kFactorField = 5;
constexpr size_t kPrimaryField = 10;
constexpr size_t kMinAnalogFields = 7;
constexpr size_t kMaxAnalogFields = 13;

constexpr double kSlowestHz = 1e-6;
constexpr double kFastestHz = 1e12;
constexpr size_t kMicrosecondDigits = 6;

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of("\r\n"), text.size());
        lines.push_back(text.substr(0, end));
        // The writers of some files end a line twice: CR CR LF.
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

std::vector<std::string_view> fieldsOf(std::string_view line)
{
    std::vector<std::string_view> fields;
    size_t end = 0;
    while ((end = line.find(',')) != std::string_view::npos) {
        fields.push_back(base::trimmed(line.substr(0, end)));
        line.remove_prefix(end + 1);
    }
    fields.push_back(base::trimmed(line));
    return fields;
}

/** Some writers put the unit behind a frequency. */
std::string_view withoutHz(std::string_view field)
{
    const size_t digits = field.find_last_of("0123456789.") + 1;
    const std::string_view unit = base::trimmed(field.substr(digits));
    const bool isHz = unit.size() == 2 && std::toupper(static_cast<unsigned char>(unit[0])) == 'H';
    return isHz ? field.substr(0, digits) : field;
}

/** The field, or nothing where the line is shorter. */
std::string_view at(const std::vector<std::string_view>& fields, size_t place)
{
    return place < fields.size() ? fields[place] : std::string_view();
}

std::string upTo(const std::vector<std::string_view>& fields, size_t begin, size_t end)
{
    std::string text(at(fields, begin));
    for (size_t i = begin + 1; i < end; ++i) {
        text.append(",").append(at(fields, i));
    }
    return text;
}
} // namespace

ComtradeConfigParser::ComtradeConfigParser(std::string name, std::string_view text,
                                           size_t firstLine)
    : mName(std::move(name)), mLines(linesOf(text)), mFirstLine(firstLine)
{
    skipBlankLines();
    // A blank line may stand for an empty field, but not behind the first: then all lines have one.
    mHasBlankLines = mNext + 1 < mLines.size() && isBlank(mLines[mNext + 1]);
}

void ComtradeConfigParser::skipBlankLines()
{
    while (mNext < mLines.size() && isBlank(mLines[mNext])) {
        ++mNext;
    }
}

ComtradeHeader ComtradeConfigParser::parse()
{
    parseStation();
    parseChannels();
    const Fields frequency = takeLine("the nominal frequency");
    mHeader.mNominalHz = std::max(0.0, numberOr(withoutHz(frequency[0]), 0.0));
    if (mHeader.mNominalHz == 0.0) {
        mRemarks.add("no nominal frequency is told");
    }
    parseRates();
    mHeader.mStartTime = parseTime("start");
    mHeader.mTriggerTime = parseTime("trigger");
    parseKindLine();
    parseStampFactor();
    parseClock();
    return std::move(mHeader);
}

ComtradeConfigParser::Fields ComtradeConfigParser::takeLine(const char* expected)
{
    mTaken = mNext;
    if (mNext == mLines.size()) {
        fail(std::string(expected) + ", found the end of the configuration");
    }
    ++mNext;
    if (mHasBlankLines) {
        skipBlankLines();
    }
    return fieldsOf(mLines[mTaken]);
}

/** The line that comes next; empty at the end. */
std::string_view ComtradeConfigParser::peekLine() const
{
    return mNext < mLines.size() ? mLines[mNext] : std::string_view();
}

/** About the line that was taken last. */
void ComtradeConfigParser::fail(const std::string& expected) const
{
    throw base::CaseError(fmt::format("{}:{}: expected {}", mName, mFirstLine + mTaken, expected));
}

/** An empty field, and one that is no number, is as if it were left out. */
double ComtradeConfigParser::numberOr(std::string_view field, double otherwise) const
{
    double number = otherwise;
    base::parseNumber(field, &number);
    return number;
}

void ComtradeConfigParser::parseStation()
{
    Fields fields = takeLine("station, device and year of the revision");
    int year = 0;
    if (fields.size() > 2 && (fields.back().empty() || base::parseNumber(fields.back(), &year))) {
        parseRevision(fields.back());
        fields.pop_back();
    }
    // A station's name may hold commas.
    const size_t device = std::max<size_t>(fields.size(), 2) - 1;
    mHeader.mStation = upTo(fields, 0, device);
    mHeader.mDevice = at(fields, device);
}

void ComtradeConfigParser::parseRevision(std::string_view text)
{
    constexpr int kLastYearLike1991 = 1996;
    int year = 0;
    base::parseNumber(text, &year);
    mHasRevision = year >= static_cast<int>(ComtradeRevision::k1991);
    if (!mHasRevision) {
        return;
    }
    mHeader.mRevision = year <= kLastYearLike1991 ? ComtradeRevision::k1991
                        : year < static_cast<int>(ComtradeRevision::k2013)
                            ? ComtradeRevision::k1999
                            : ComtradeRevision::k2013;
    const int readAs = static_cast<int>(mHeader.mRevision);
    if (year != readAs) {
        mRemarks.add(fmt::format("revision of the year {}: read as {}", year, readAs));
    }
}

/** By the form of the first channel, where no year tells the revision. */
void ComtradeConfigParser::guessRevision()
{
    const bool isNew = fieldsOf(peekLine()).size() > kPrimaryField;
    mHeader.mRevision = isNew ? ComtradeRevision::k1999 : ComtradeRevision::k1991;
    if (isNew) {
        mRemarks.add("no year of a revision: read as 1999 by the form of its channels");
    }
}

void ComtradeConfigParser::parseChannels()
{
    const Fields fields = takeLine("numbers of channels such as \"8,8A,0D\"");
    const size_t analogs = channelCount(at(fields, 1), 'A');
    const size_t statuses = fields.size() > 2 ? channelCount(fields[2], 'D') : 0;
    size_t total = 0;
    if (!base::parseNumber(fields[0], &total) || total != analogs + statuses) {
        mRemarks.add(fmt::format("\"{}\" channels are {} analog and {} status channels", fields[0],
                                 analogs, statuses));
    }
    if (!mHasRevision) {
        guessRevision();
    }
    for (size_t i = 0; i < analogs; ++i) {
        mHeader.mAnalogs.push_back(parseAnalog(i, analogs));
    }
    for (size_t i = 0; i < statuses; ++i) {
        mHeader.mStatuses.push_back(parseStatus(i, statuses));
    }
}

size_t ComtradeConfigParser::channelCount(std::string_view field, char letter)
{
    std::string_view digits = field;
    if (!digits.empty() && std::toupper(static_cast<unsigned char>(digits.back())) == letter) {
        digits.remove_suffix(1);
    }
    size_t count = 0;
    if (!base::parseNumber(digits, &count)) {
        fail(fmt::format("numbers of channels such as \"8,8A,0D\", found \"{}\"",
                         mLines[mTaken].substr(0, base::kLongestExcerpt)));
    }
    return count;
}

ComtradeAnalog ComtradeConfigParser::parseAnalog(size_t place, size_t count)
{
    const std::string what = fmt::format("analog channel {} of {}", place + 1, count);
    Fields fields = takeLine(what.c_str());
    while (fields.size() > kMaxAnalogFields && fields.back().empty()) {
        fields.pop_back();
    }
    if (fields.size() < kMinAnalogFields) {
        fail(fmt::format("{} with at least {} fields, found {}", what, kMinAnalogFields,
                         fields.size()));
    }
    ComtradeAnalog analog;
    analog.mNumber = channelNumber(fields[0], place);
    // More fields than there are: the name holds commas.
    const size_t excess = std::max(fields.size(), kMaxAnalogFields) - kMaxAnalogFields;
    analog.mName = upTo(fields, 1, excess + 2);
    fields.erase(fields.begin() + 1, fields.begin() + 1 + static_cast<std::ptrdiff_t>(excess));
    analog.mPhase = fields[2];
    analog.mComponent = fields[3];
    analog.mUnit = fields[4];
    const bool hasFactor = base::parseNumber(fields[kFactorField], &analog.mFactor);
    const std::string_view offset = fields[kFactorField + 1];
    if ((!hasFactor && !fields[kFactorField].empty()) ||
        (!base::parseNumber(offset, &analog.mOffset) && !offset.empty())) {
        fail(fmt::format("{} with a factor and an offset, found \"{}\" and \"{}\"", what,
                         fields[kFactorField].substr(0, base::kLongestExcerpt),
                         offset.substr(0, base::kLongestExcerpt)));
    }
    if (!hasFactor) {
        mRemarks.addFor("no factor: 1", analog.mNumber);
    }
    analog.mSkewMicroseconds = numberOr(at(fields, kFactorField + 2), 0.0);
    analog.mSmallest = numberOr(at(fields, kFactorField + 3), analog.mSmallest);
    analog.mLargest = numberOr(at(fields, kFactorField + 4), analog.mLargest);
    parseRatio(fields, &analog);
    return analog;
}

void ComtradeConfigParser::parseRatio(const Fields& fields, ComtradeAnalog* analog)
{
    analog->mPrimary = std::abs(numberOr(at(fields, kPrimaryField), 0.0));
    analog->mSecondary = std::abs(numberOr(at(fields, kPrimaryField + 1), 0.0));
    if (analog->mPrimary == 0.0 || analog->mSecondary == 0.0) {
        analog->mPrimary = 0.0;
        analog->mSecondary = 1.0;
        if (fields.size() > kPrimaryField) {
            mRemarks.addFor("a ratio of 0: not known", analog->mNumber);
        }
    }
    const std::string_view side = at(fields, kPrimaryField + 2);
    const char letter =
        side.empty() ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(side[0])));
    analog->mSide = letter == 'P' || letter == 'S' ? letter : ' ';
}

ComtradeStatus ComtradeConfigParser::parseStatus(size_t place, size_t count)
{
    constexpr size_t kFieldsSince1999 = 5;
    const std::string what = fmt::format("status channel {} of {}", place + 1, count);
    const Fields fields = takeLine(what.c_str());
    if (fields.size() < 2) {
        fail(what + " with at least 2 fields, found 1");
    }
    ComtradeStatus status;
    status.mNumber = channelNumber(fields[0], place);
    status.mName = fields[1];
    if (fields.size() >= kFieldsSince1999) {
        status.mPhase = fields[2];
        status.mComponent = fields[3];
    }
    base::parseNumber(fields.back(), &status.mNormalState);
    return status;
}

int ComtradeConfigParser::channelNumber(std::string_view field, size_t place)
{
    int number = static_cast<int>(place) + 1;
    if (!base::parseNumber(field, &number)) {
        mRemarks.addFor("no number: its place is taken", number);
    }
    return number;
}

void ComtradeConfigParser::parseRates()
{
    const Fields fields = takeLine("the number of sampling rates");
    size_t count = 0;
    if (!fields[0].empty() && !base::parseNumber(fields[0], &count)) {
        fail(fmt::format("the number of sampling rates, found \"{}\"",
                         fields[0].substr(0, base::kLongestExcerpt)));
    }
    // Without a rate one line still follows, for the number of samples; not all writers know.
    const bool isDateNext = peekLine().find('/') != std::string_view::npos;
    const size_t lines = count == 0 && !isDateNext ? 1 : count;
    for (size_t i = 0; i < lines; ++i) {
        parseRate(i, lines);
    }
    if (mHeader.mRates.size() < lines) {
        mHeader.mRates.clear(); // one of them is 0
    }
}

void ComtradeConfigParser::parseRate(size_t place, size_t count)
{
    const std::string what =
        fmt::format("sampling rate {} of {} and its last sample", place + 1, count);
    const Fields fields = takeLine(what.c_str());
    ComtradeRate rate;
    double last = 0.0;
    const bool isRate = (fields[0].empty() || base::parseNumber(withoutHz(fields[0]), &rate.mHz)) &&
                        fields.size() > 1 && base::parseNumber(fields[1], &last) && last >= 0.0 &&
                        last < 1e15;
    const bool isPossible = rate.mHz == 0.0 || (rate.mHz >= kSlowestHz && rate.mHz <= kFastestHz);
    if (!isRate || !isPossible) {
        fail(
            fmt::format("{}, found \"{}\"", what, mLines[mTaken].substr(0, base::kLongestExcerpt)));
    }
    rate.mLastSample = static_cast<size_t>(last);
    if (place > 0 && rate.mLastSample <= mHeader.mAnnouncedSamples) {
        fail(fmt::format("{} above {}, where the rate before ends", what,
                         mHeader.mAnnouncedSamples));
    }
    mHeader.mAnnouncedSamples = rate.mLastSample;
    if (rate.mHz > 0.0) {
        mHeader.mRates.push_back(rate);
    }
}

std::string ComtradeConfigParser::parseTime(const char* what)
{
    const Fields fields = takeLine("a date and a time");
    const auto time =
        parseComtradeTime(fields[0], at(fields, 1), mHeader.mRevision == ComtradeRevision::k1991);
    if (!time) {
        mRemarks.add(fmt::format("the {} time \"{}\" is no date and time: not known", what,
                                 mLines[mTaken].substr(0, base::kLongestExcerpt)));
        return {};
    }
    if (time->mIsOtherWayRound) {
        mRemarks.add(fmt::format("the {} time has day and month the other way round", what));
    }
    // The start time comes first; its form says what a stamp counts.
    if (mHeader.mTriggerTime.empty() && mHeader.mStartTime.empty() &&
        time->mFractionDigits > kMicrosecondDigits) {
        mHeader.mStampSeconds = 1e-9;
    }
    return time->mText;
}

void ComtradeConfigParser::parseKindLine()
{
    const Fields fields = takeLine("the kind of data");
    std::string_view kind = fields[0];
    kind = kind.substr(0, kind.find('\x1a'));
    if (!parseKind(base::trimmed(kind), &mHeader.mKind)) {
        fail(fmt::format("ASCII, BINARY, BINARY32 or FLOAT32, found \"{}\"",
                         kind.substr(0, base::kLongestExcerpt)));
    }
}

void ComtradeConfigParser::parseStampFactor()
{
    if (mNext >= mLines.size()) {
        return;
    }
    const double factor = numberOr(takeLine("")[0], 1.0);
    if (factor > 0.0) {
        mHeader.mStampSeconds *= factor;
    } else {
        mRemarks.add("a factor of 0 for time stamps: 1");
    }
}

/** UTC offsets and leap seconds. */
void ComtradeConfigParser::parseClock()
{
    constexpr std::string_view kNoLeapSecond = "0";
    if (mHeader.mRevision != ComtradeRevision::k2013 || mNext >= mLines.size()) {
        return;
    }
    const Fields offsets = takeLine("");
    if (!offsets[0].empty()) {
        mRemarks.add(fmt::format("times are UTC {}, local time is UTC {}: told, not applied",
                                 offsets[0], at(offsets, 1)));
    }
    if (mNext >= mLines.size()) {
        return;
    }
    const Fields quality = takeLine("");
    const std::string_view leap = at(quality, 1);
    if (!leap.empty() && leap != kNoLeapSecond) {
        mRemarks.add(fmt::format("leap second indicator {}: told, not applied", leap));
    }
}

bool looksLikeComtradeConfig(std::string_view text)
{
    std::vector<std::string_view> lines = linesOf(text);
    lines.erase(std::remove_if(lines.begin(), lines.end(), isBlank), lines.end());
    if (lines.size() < 2) {
        return false;
    }
    const auto fields = fieldsOf(lines[1]);
    size_t total = 0;
    return fields.size() >= 2 && base::parseNumber(fields[0], &total) && !fields[1].empty() &&
           std::toupper(static_cast<unsigned char>(fields[1].back())) == 'A';
}

} // namespace comtrade
