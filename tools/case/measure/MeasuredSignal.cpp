#include "measure/MeasuredSignal.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"
#include "input/OpenInput.h"
#include "measure/UtcText.h"
#include "waveform/DeviceChannels.h"

namespace measure {

namespace {
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
        mapRecording(options.mAssignments);
        return;
    }
    const auto& assignments = options.mAssignments;
    if (std::any_of(assignments.begin(), assignments.end(),
                    [](const auto& assignment) { return assignment.has_value(); })) {
        throw base::CaseError(options.mPath + ": is a " + description().mFormat +
                              ": --channels is for recordings of others");
    }
    for (int channel = 0; channel < kChannelCount; ++channel) {
        const double counts =
            waveform::isDeviceVoltage(channel) ? options.mCountsPerVolt : options.mCountsPerAmpere;
        const auto index = static_cast<size_t>(channel);
        mTerms.push_back({index, index, 1.0 / counts});
    }
}

/** A recording of the driver has UTC, one of others a time of which the zone is not known. */
void MeasuredSignal::findBegin(const std::optional<qint64>& given)
{
    const auto recorded = parseUtc(description().mStartTime);
    mBeginUtcNs = given.value_or(recorded.value_or(0));
    if (given || description().mFormat == "recording of the driver") {
        return;
    }
    mRemarks.push_back(
        recorded
            ? fmt::format("its start, {}, is taken for UTC; see --begin", description().mStartTime)
            : "the UTC of its first sample is not known: 1970-01-01T00:00:00Z is taken; see "
              "--begin");
}

void MeasuredSignal::mapRecording(const importing::Assignments& assignments)
{
    const importing::ChannelMap map = importing::mapChannels(
        description(), {assignments, importing::TransformerSide::AsRecorded, 1.0, 1.0});
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        const importing::MappedChannel& mapped = map.mChannels[channel];
        for (const importing::MappedChannel::Term& term : mapped.mTerms) {
            mTerms.push_back({channel, term.mSource, term.mFactor * mapped.mCounts});
        }
    }
    mRemarks.insert(mRemarks.end(), map.mRemarks.begin(), map.mRemarks.end());
}

bool MeasuredSignal::read(waveform::SignalBlock& block)
{
    const bool isMore = mSource->read(mRead);
    sumTerms(block);
    return isMore;
}

void MeasuredSignal::sumTerms(waveform::SignalBlock& block)
{
    block.mFirst = mRead.mFirst;
    block.mSeconds = mRead.mSeconds;
    block.mValues.resize(kChannelCount);
    for (std::vector<double>& column : block.mValues) {
        column.assign(mRead.size(), 0.0);
    }
    for (const Term& term : mTerms) {
        const double* const source = mRead.mValues[term.mSource].data();
        double* const sum = block.mValues[term.mChannel].data();
        for (size_t i = 0; i < mRead.size(); ++i) {
            sum[i] += term.mFactor * source[i];
        }
    }
}

std::vector<std::string> MeasuredSignal::remarks() const
{
    std::vector<std::string> remarks = mRemarks;
    const auto& more = description().mRemarks;
    remarks.insert(remarks.end(), more.begin(), more.end());
    return remarks;
}

} // namespace measure
