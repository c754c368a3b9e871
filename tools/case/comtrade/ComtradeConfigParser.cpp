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

/** Some writers put the unit after a frequency. */
std::string_view withoutHz(std::string_view field)
{
    const size_t digits = field.find_last_of("0123456789.") + 1;
    const std::string_view unit = base::trimmed(field.substr(digits));
    const bool isHz = unit.size() == 2 && std::toupper(static_cast<unsigned char>(unit[0])) == 'H';
    return isHz ? field.substr(0, digits) : field;
}

/** The number in a field; the default if the field is empty or not a number. */
double numberOr(std::string_view field, double otherwise)
{
    double number = otherwise;
    base::parseNumber(field, &number);
    return number;
}

std::string upTo(const std::vector<std::string_view>& fields, size_t begin, size_t end)
{
    std::string text(fieldAt(fields, begin));
    for (size_t i = begin + 1; i < end; ++i) {
        text.append(",").append(fieldAt(fields, i));
    }
    return text;
}
} // namespace

ComtradeConfigParser::ComtradeConfigParser(std::string name, std::string_view text,
                                           size_t firstLine)
    : mLines(std::move(name), text, firstLine)
{
}

ComtradeHeader ComtradeConfigParser::parse()
{
    parseStation();
    parseChannels();
    parseNominalFrequency();
    parseRates();
    mHeader.mStartTime = parseTime("start");
    mHeader.mTriggerTime = parseTime("trigger");
    parseKindLine();
    parseStampFactor();
    parseClock();
    return std::move(mHeader);
}

void ComtradeConfigParser::parseStation()
{
    Fields fields = mLines.take("station, device and year of the revision");
    int year = 0;
    if (fields.size() > 2 && (fields.back().empty() || base::parseNumber(fields.back(), &year))) {
        parseRevision(fields.back());
        fields.pop_back();
    }
    // A station's name may hold commas.
    const size_t device = std::max<size_t>(fields.size(), 2) - 1;
    mHeader.mStation = upTo(fields, 0, device);
    mHeader.mDevice = fieldAt(fields, device);
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

/** Guesses the revision by the form of the first channel; used if there is no year. */
void ComtradeConfigParser::guessRevision()
{
    const bool isNew = base::splitFields(mLines.peek(), ',').size() > kPrimaryField;
    mHeader.mRevision = isNew ? ComtradeRevision::k1999 : ComtradeRevision::k1991;
    if (isNew) {
        mRemarks.add("no year of a revision: read as 1999 by the form of its channels");
    }
}

void ComtradeConfigParser::parseChannels()
{
    const Fields fields = mLines.take("numbers of channels such as \"8,8A,0D\"");
    const size_t analogs = channelCount(fieldAt(fields, 1), 'A');
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

size_t ComtradeConfigParser::channelCount(std::string_view field, char letter) const
{
    std::string_view digits = field;
    if (!digits.empty() && std::toupper(static_cast<unsigned char>(digits.back())) == letter) {
        digits.remove_suffix(1);
    }
    size_t count = 0;
    if (!base::parseNumber(digits, &count)) {
        mLines.fail(
            fmt::format("numbers of channels such as \"8,8A,0D\", found \"{}\"", mLines.excerpt()));
    }
    return count;
}

ComtradeAnalog ComtradeConfigParser::parseAnalog(size_t index, size_t count)
{
    const std::string what = fmt::format("analog channel {} of {}", index + 1, count);
    Fields fields = mLines.take(what);
    while (fields.size() > kMaxAnalogFields && fields.back().empty()) {
        fields.pop_back();
    }
    if (fields.size() < kMinAnalogFields) {
        mLines.fail(fmt::format("{} with at least {} fields, found {}", what, kMinAnalogFields,
                                fields.size()));
    }
    ComtradeAnalog analog;
    waveform::ChannelDescription& channel = analog.mChannel;
    channel.mNumber = static_cast<int>(index) + 1;
    if (!base::parseNumber(fields[0], &channel.mNumber)) {
        mRemarks.addFor("no number: numbered by its position", channel.mNumber);
    }
    // If there are too many fields, the name contains commas.
    const size_t excess = std::max(fields.size(), kMaxAnalogFields) - kMaxAnalogFields;
    channel.mName = upTo(fields, 1, excess + 2);
    fields.erase(fields.begin() + 1, fields.begin() + 1 + static_cast<std::ptrdiff_t>(excess));
    channel.mPhase = fields[2];
    channel.mComponent = fields[3];
    channel.mUnit = fields[4];
    parseScaling(fields, what, &analog);
    channel.mSkewMicroseconds = numberOr(fieldAt(fields, kFactorField + 2), 0.0);
    parseRatio(fields, &channel);
    return analog;
}

void ComtradeConfigParser::parseScaling(const Fields& fields, const std::string& what,
                                        ComtradeAnalog* analog)
{
    const std::string_view factor = fields[kFactorField];
    const std::string_view offset = fields[kFactorField + 1];
    const bool hasFactor = base::parseNumber(factor, &analog->mFactor);
    if ((!hasFactor && !factor.empty()) ||
        (!base::parseNumber(offset, &analog->mOffset) && !offset.empty())) {
        mLines.fail(fmt::format("{} with a factor and an offset, found \"{}\" and \"{}\"", what,
                                factor.substr(0, base::kLongestExcerpt),
                                offset.substr(0, base::kLongestExcerpt)));
    }
    if (!hasFactor) {
        mRemarks.addFor("no factor: 1 is used", analog->mChannel.mNumber);
    }
    analog->mSmallest = numberOr(fieldAt(fields, kFactorField + 3), analog->mSmallest);
    analog->mLargest = numberOr(fieldAt(fields, kFactorField + 4), analog->mLargest);
}

void ComtradeConfigParser::parseRatio(const Fields& fields, waveform::ChannelDescription* channel)
{
    channel->mPrimary = std::abs(numberOr(fieldAt(fields, kPrimaryField), 0.0));
    channel->mSecondary = std::abs(numberOr(fieldAt(fields, kPrimaryField + 1), 0.0));
    if (channel->mPrimary == 0.0 || channel->mSecondary == 0.0) {
        channel->mPrimary = 0.0;
        channel->mSecondary = 1.0;
        if (fields.size() > kPrimaryField) {
            mRemarks.addFor("a ratio of 0: taken as unknown", channel->mNumber);
        }
    }
    const std::string_view side = fieldAt(fields, kPrimaryField + 2);
    const char letter =
        side.empty() ? ' ' : static_cast<char>(std::toupper(static_cast<unsigned char>(side[0])));
    channel->mSide = letter == 'P' || letter == 'S' ? letter : ' ';
}

waveform::StatusChannel ComtradeConfigParser::parseStatus(size_t index, size_t count)
{
    const std::string what = fmt::format("status channel {} of {}", index + 1, count);
    const Fields fields = mLines.take(what);
    if (fields.size() < 2) {
        mLines.fail(what + " with at least 2 fields, found 1");
    }
    waveform::StatusChannel status;
    status.mNumber = static_cast<int>(index) + 1;
    if (!base::parseNumber(fields[0], &status.mNumber)) {
        mRemarks.add(what + ": no number: numbered by its position");
    }
    status.mName = fields[1];
    return status;
}

void ComtradeConfigParser::parseNominalFrequency()
{
    const Fields fields = mLines.take("the nominal frequency");
    mHeader.mNominalHz = std::max(0.0, numberOr(withoutHz(fields[0]), 0.0));
    if (mHeader.mNominalHz == 0.0) {
        mRemarks.add("no nominal frequency");
    }
}

void ComtradeConfigParser::parseRates()
{
    const Fields fields = mLines.take("the number of sampling rates");
    size_t count = 0;
    if (!fields[0].empty() && !base::parseNumber(fields[0], &count)) {
        mLines.fail(fmt::format("the number of sampling rates, found \"{}\"",
                                fields[0].substr(0, base::kLongestExcerpt)));
    }
    // Without a rate, one line with the number of samples should follow. Some files lack it.
    const bool isDateNext = mLines.peek().find('/') != std::string_view::npos;
    const size_t lines = count == 0 && !isDateNext ? 1 : count;
    for (size_t i = 0; i < lines; ++i) {
        parseRate(i, lines);
    }
    if (mHeader.mRates.size() < lines) {
        mHeader.mRates.clear(); // one of them is 0
    }
}

void ComtradeConfigParser::parseRate(size_t index, size_t count)
{
    const std::string what =
        fmt::format("sampling rate {} of {} and its last sample", index + 1, count);
    const Fields fields = mLines.take(what);
    waveform::SampleRate rate;
    double last = 0.0;
    const bool isRate = (fields[0].empty() || base::parseNumber(withoutHz(fields[0]), &rate.mHz)) &&
                        fields.size() > 1 && base::parseNumber(fields[1], &last) && last >= 0.0 &&
                        last < 1e15;
    const bool isPossible = rate.mHz == 0.0 || (rate.mHz >= kSlowestHz && rate.mHz <= kFastestHz);
    if (!isRate || !isPossible) {
        mLines.fail(fmt::format("{}, found \"{}\"", what, mLines.excerpt()));
    }
    rate.mEnd = static_cast<size_t>(last);
    if (index > 0 && rate.mEnd <= mHeader.mAnnouncedSamples) {
        mLines.fail(fmt::format("{} above {}, where the rate before ends", what,
                                mHeader.mAnnouncedSamples));
    }
    mHeader.mAnnouncedSamples = rate.mEnd;
    if (rate.mHz > 0.0) {
        mHeader.mRates.push_back(rate);
    }
}

std::string ComtradeConfigParser::parseTime(const char* what)
{
    const Fields fields = mLines.take("a date and a time");
    const auto time = parseComtradeTime(fields[0], fieldAt(fields, 1),
                                        mHeader.mRevision == ComtradeRevision::k1991);
    if (!time) {
        mRemarks.add(fmt::format("the {} time \"{}\" is no date and time: not known", what,
                                 mLines.excerpt()));
        return {};
    }
    if (time->mHasSwappedDayMonth) {
        mRemarks.add(fmt::format("the {} time has day and month swapped", what));
    }
    // The start time comes first; its number of digits gives the unit of the time stamps.
    if (mHeader.mTriggerTime.empty() && mHeader.mStartTime.empty() &&
        time->mFractionDigits > kMicrosecondDigits) {
        mHeader.mStampSeconds = 1e-9;
    }
    return time->mText;
}

void ComtradeConfigParser::parseKindLine()
{
    const Fields fields = mLines.take("the kind of data");
    std::string_view kind = fields[0];
    kind = kind.substr(0, kind.find('\x1a'));
    if (!parseKind(base::trimmed(kind), &mHeader.mKind)) {
        mLines.fail(fmt::format("ASCII, BINARY, BINARY32 or FLOAT32, found \"{}\"",
                                kind.substr(0, base::kLongestExcerpt)));
    }
}

void ComtradeConfigParser::parseStampFactor()
{
    if (mLines.isAtEnd()) {
        return;
    }
    const double factor = numberOr(mLines.take("")[0], 1.0);
    if (factor > 0.0) {
        mHeader.mStampSeconds *= factor;
    } else {
        mRemarks.add("a factor of 0 for time stamps: 1 is used");
    }
}

/** Parses UTC offset and leap second fields. */
void ComtradeConfigParser::parseClock()
{
    constexpr std::string_view kNoLeapSecond = "0";
    if (mHeader.mRevision != ComtradeRevision::k2013 || mLines.isAtEnd()) {
        return;
    }
    const Fields offsets = mLines.take("");
    if (!offsets[0].empty()) {
        mRemarks.add(fmt::format("times are UTC {}, local time is UTC {}: reported, not applied",
                                 offsets[0], fieldAt(offsets, 1)));
    }
    if (mLines.isAtEnd()) {
        return;
    }
    const Fields quality = mLines.take("");
    const std::string_view leap = fieldAt(quality, 1);
    if (!leap.empty() && leap != kNoLeapSecond) {
        mRemarks.add(fmt::format("leap second indicator {}: reported, not applied", leap));
    }
}

} // namespace comtrade
