#include "measure/MeasuredSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/CaseError.h"
#include "input/OpenInput.h"
#include "measure/NominalFrequency.h"
#include "measure/UtcText.h"
#include "waveform/DeviceChannels.h"

namespace measure {

namespace {
constexpr double kLowerNominal = 50.0;
constexpr double kHigherNominal = 60.0;
constexpr double kBetweenNominals = 55.0;
constexpr double kUsualDistance = 10.0; ///< from kBetweenNominals: 45 to 65 Hz

bool isOfDevice(const waveform::SignalDescription& description)
{
    return description.mFormat == "value file" || description.mFormat == "recording of the driver";
}
} // namespace

MeasuredSignal::MeasuredSignal(const SignalOptions& options)
    : mSource(input::openInput(options.mPath, {options.mEncoding}))
{
    findBegin(options.mBeginUtcNs);
    if (!isOfDevice(description())) {
        mapRecording(options);
        return;
    }
    const auto& assignments = options.mAssignments;
    if (std::any_of(assignments.begin(), assignments.end(),
                    [](const auto& assignment) { return assignment.has_value(); })) {
        throw base::CaseError(options.mPath + ": is a " + description().mFormat +
                              "; --channels is only for other recordings");
    }
    for (int channel = 0; channel < kChannelCount; ++channel) {
        mUnitsPerCount[static_cast<size_t>(channel)] =
            1.0 / (waveform::isDeviceVoltage(channel) ? options.mCountsPerVolt
                                                      : options.mCountsPerAmpere);
    }
    mChannels.set();
    if (!mSource->read(mFirstBlock) || mFirstBlock.size() < 2) {
        throw base::CaseError(options.mPath + ": expected at least two samples");
    }
    findNominal(options.mNominalHz);
}

/** A recording of the driver has UTC. In other recordings the time zone is unknown. */
void MeasuredSignal::findBegin(const std::optional<qint64>& given)
{
    const auto recorded = parseUtc(description().mStartTime);
    mBeginUtcNs = given.value_or(recorded.value_or(0));
    const bool isOfDriver = description().mFormat == "recording of the driver";
    if (given && isOfDriver) {
        mRemarks.push_back(fmt::format("--begin replaces the UTC of its first sample, {}",
                                       description().mStartTime));
    }
    if (given || isOfDriver) {
        return;
    }
    mRemarks.push_back(recorded ? fmt::format("its start, {}, is read as UTC; see --begin",
                                              description().mStartTime)
                                : "the UTC of its first sample is unknown: it starts at "
                                  "1970-01-01T00:00:00Z; see --begin");
}

/** Takes 50 or 60 Hz, whichever is nearer to the frequency given by the steps of the lines. */
void MeasuredSignal::findNominal(const std::optional<double>& given)
{
    double hertz = description().mNominalHz;
    const double step = mFirstBlock.mSeconds[1] - mFirstBlock.mSeconds[0];
    hertz = step > 0.0 ? 1.0 / (step * kSamplesPerPeriod) : hertz;
    mMaxHertz = hertz * kSamplesPerPeriod / 2.0;
    mNominalHz = given.value_or(hertz > kBetweenNominals ? kHigherNominal : kLowerNominal);
}

/** Takes 50 or 60 Hz as stated in the recording, or else as recognised in its samples. */
void MeasuredSignal::findNominal(const SignalOptions& options, const importing::ChannelMap& map)
{
    const double stated = description().mNominalHz;
    const bool isUsual = std::abs(stated - kBetweenNominals) <= kUsualDistance;
    if (options.mNominalHz || isUsual) {
        mNominalHz =
            options.mNominalHz.value_or(stated > kBetweenNominals ? kHigherNominal : kLowerNominal);
        return;
    }
    const auto source = input::openInput(options.mPath, {options.mEncoding});
    const auto recognized = recognizeNominal(*source, map);
    mNominalHz = recognized.value_or(kLowerNominal);
    const std::string what = stated == 0.0
                                 ? "its nominal frequency is unknown"
                                 : fmt::format("its nominal frequency is {:g} Hz", stated);
    mRemarks.push_back(fmt::format("{}: {:g} Hz is assumed{}; see --nominal", what, mNominalHz,
                                   recognized ? ", as in its samples" : ""));
}

void MeasuredSignal::mapRecording(const SignalOptions& options)
{
    const importing::ChannelMap map = importing::mapChannels(
        description(), {options.mAssignments, importing::TransformerSide::AsRecorded, 1.0, 1.0});
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        const importing::MappedChannel& mapped = map.mChannels[channel];
        mChannels.set(channel, !mapped.mTerms.empty());
        const bool isVoltage = waveform::isDeviceVoltage(static_cast<int>(channel));
        const auto expected = isVoltage ? channels::Quantity::Voltage : channels::Quantity::Current;
        if (mChannels.test(channel) && mapped.mQuantity != expected) {
            throw base::CaseError(fmt::format("{}: '{}' is not a {}, but channel {} is",
                                              description().mFileName, mapped.mText,
                                              isVoltage ? "voltage" : "current", channel));
        }
    }
    mRemarks.insert(mRemarks.end(), map.mRemarks.begin(), map.mRemarks.end());
    findNominal(options, map);
    mRecording = std::make_unique<RecordingLines>(*mSource, map, mNominalHz * kSamplesPerPeriod);
    mMaxHertz = mRecording->maxHertz();
}

bool MeasuredSignal::read(waveform::SignalBlock& block)
{
    const bool hasMore = mRecording ? mRecording->read(block) : readDeviceBlock(block);
    const std::string gap = (mRecording ? mRecording->gaps() : mGaps).problem();
    if (!gap.empty()) {
        throw base::CaseError(description().mFileName + ": " + gap);
    }
    if (const auto seconds = description().mFirstFall) {
        throw base::CaseError(
            fmt::format("{}: the time stamps fall at {:.6f} s: the UTC of what follows is "
                        "unknown; cut the recording there",
                        description().mFileName, *seconds));
    }
    return hasMore;
}

bool MeasuredSignal::readDeviceBlock(waveform::SignalBlock& block)
{
    if (mFirstBlock.size() > 0) {
        std::swap(block, mFirstBlock);
        mFirstBlock = {};
    } else if (!mSource->read(block)) {
        return false;
    }
    if (description().mFormat == "recording of the driver") {
        mGaps.add(block.mSeconds);
    }
    scale(block);
    return true;
}

void MeasuredSignal::scale(waveform::SignalBlock& block)
{
    constexpr double kMissingCounts = std::numeric_limits<qint32>::min();
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        const double factor = mUnitsPerCount[channel];
        double last = mLastValues[channel];
        for (double& value : block.mValues[channel]) {
            const bool isMissing = value == kMissingCounts;
            mMissing += isMissing ? 1 : 0;
            last = value = isMissing ? last : value * factor;
        }
        mLastValues[channel] = last;
    }
}

std::vector<std::string> MeasuredSignal::remarks() const
{
    std::vector<std::string> remarks = mRemarks;
    const auto& more = description().mRemarks;
    remarks.insert(remarks.end(), more.begin(), more.end());
    if (mMissing > 0) {
        remarks.push_back(fmt::format(
            "{} values are missing (-2147483648): the previous value is held", mMissing));
    }
    if (mRecording && mRecording->breaks() > 0) {
        remarks.push_back(fmt::format(
            "its rate changes or samples are missing, {} times: values are interpolated there",
            mRecording->breaks()));
    }
    return remarks;
}

} // namespace measure
