#include "comtrade/ComtradeWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/Numbers.h"

namespace comtrade {

namespace {
constexpr char kLineEnd[] = "\r\n";

/** Replaces commas and line ends, which would begin another field. */
std::string fieldOf(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ',' || c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::string analogLine(const ComtradeAnalog& analog)
{
    const waveform::ChannelDescription& channel = analog.mChannel;
    return fmt::format("{},{},{},{},{},{},{},{},{:.0f},{:.0f},{},{},{}", channel.mNumber,
                       fieldOf(channel.mName), channel.mPhase, channel.mComponent, channel.mUnit,
                       analog.mFactor, analog.mOffset, channel.mSkewMicroseconds, analog.mSmallest,
                       analog.mLargest, channel.mPrimary, channel.mSecondary, channel.mSide);
}

/** "2015-11-18 05:33:03.765333" as "18/11/2015,05:33:03.765333". */
std::string timeLine(const std::string& time)
{
    return fmt::format("{}/{}/{},{}", time.substr(8, 2), time.substr(5, 2), time.substr(0, 4),
                       time.substr(11));
}

/** Without a rate, one line still holds the number of samples. */
std::string rateLines(const ComtradeHeader& header)
{
    std::string lines = fmt::format("{}{}", header.mRates.size(), kLineEnd);
    for (const waveform::SampleRate& rate : header.mRates) {
        lines += fmt::format("{},{}{}", rate.mHz, rate.mEnd, kLineEnd);
    }
    if (header.mRates.empty()) {
        lines += fmt::format("0,{}{}", header.mAnnouncedSamples, kLineEnd);
    }
    return lines;
}

char* append(char* position, quint32 word)
{
    std::memcpy(position, &word, sizeof(word));
    return position + sizeof(word);
}
} // namespace

std::string comtradeConfigText(const ComtradeHeader& header)
{
    std::string text =
        fmt::format("{},{},2013{}", fieldOf(header.mStation), fieldOf(header.mDevice), kLineEnd);
    text += fmt::format("{0},{0}A,0D{1}", header.mAnalogs.size(), kLineEnd);
    for (const ComtradeAnalog& analog : header.mAnalogs) {
        text += analogLine(analog) + kLineEnd;
    }
    text += fmt::format("{}{}", header.mNominalHz, kLineEnd) + rateLines(header);
    text += timeLine(header.mStartTime) + kLineEnd + timeLine(header.mTriggerTime) + kLineEnd;
    text += fmt::format("{}{}{}{}", nameOf(header.mKind), kLineEnd,
                        header.mStampSeconds / base::kSecondsPerMicrosecond, kLineEnd);
    // UTC; the quality of the clock and leap seconds are unknown.
    return text + "0,0" + kLineEnd + "F,3" + kLineEnd;
}

size_t comtradeRecordBytes(const ComtradeHeader& header)
{
    return (2 + header.mAnalogs.size()) * sizeof(quint32);
}

void writeComtradeRecords(const ComtradeHeader& header, const waveform::SignalBlock& block,
                          base::ResultFile& output)
{
    std::string record(comtradeRecordBytes(header), '\0');
    for (size_t i = 0; i < block.size(); ++i) {
        char* position = append(record.data(), static_cast<quint32>(block.mFirst + i + 1));
        const auto stamp = std::llround(block.mSeconds[i] / header.mStampSeconds);
        position = append(position, static_cast<quint32>(stamp));
        for (const std::vector<double>& column : block.mValues) {
            position = append(position, static_cast<quint32>(static_cast<qint32>(column[i])));
        }
        output.write(record);
    }
}

} // namespace comtrade
