#include "importing/Fundamental.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/Sums.h"
#include "channels/ChannelPhase.h"
#include "resampling/PhaseFollower.h"

namespace importing {

namespace {
constexpr double kMinPeriods = 6.0;

/** In Hz. A nominal frequency outside this range is taken for an error of the recorder. */
constexpr double kLowestNominal = 10.0;
constexpr double kHighestNominal = 500.0;

/**
 * The values of three channels of the device, from `first` on; empty for those without a source.
 */
std::vector<std::vector<double>> phasesOf(const RecordedSignal& recorded, const ChannelMap& map,
                                          size_t first)
{
    std::vector<std::vector<double>> phases(channels::kPhaseCount);
    for (size_t phase = 0; phase < channels::kPhaseCount; ++phase) {
        const MappedChannel& channel = map.mChannels[first + phase];
        if (!channel.mTerms.empty()) {
            phases[phase] = recorded.sumOf(channel);
        }
    }
    return phases;
}

resampling::ComplexSignal sequenceOf(const std::vector<std::vector<double>>& phases)
{
    std::vector<const std::vector<double>*> columns;
    columns.reserve(phases.size());
    for (const std::vector<double>& phase : phases) {
        columns.push_back(phase.empty() ? nullptr : &phase);
    }
    return resampling::positiveSequence(columns);
}

/** The mean amplitude at a frequency over the whole recording. */
double amountOf(const resampling::PhaseMeter& meter, double hz)
{
    constexpr int kInstants = 32;
    double sum = 0.0;
    for (int i = 0; i < kInstants; ++i) {
        const double share = (i + 0.5) / kInstants;
        const auto phasor =
            meter.measure(meter.begin() + share * (meter.end() - meter.begin()), hz);
        sum += phasor ? phasor->mAmplitude : 0.0;
    }
    return sum / kInstants;
}

/** The larger amplitude of both phase sequences. */
double amountInEitherSequence(const resampling::PhaseMeter& meter, double hz)
{
    return std::max(amountOf(meter, hz), amountOf(meter, -hz));
}

/** Equal phases have no positive sequence, so noise would decide. */
bool areEqual(const std::vector<std::vector<double>>& phases,
              const resampling::PhaseMeter& sequence)
{
    constexpr double kMaxSequence = 0.01;        // of the sequence that one phase has alone
    constexpr double kSequenceOfOne = 2.0 / 3.0; // of the phase
    const bool hasAll =
        std::none_of(phases.begin(), phases.end(), [](const auto& phase) { return phase.empty(); });
    return hasAll &&
           sequence.rms() < kMaxSequence * kSequenceOfOne * base::rootMeanSquare(phases[0]);
}

/** The track of one system of phases, with either phase sequence. */
std::optional<resampling::PhaseTrack> follow(std::vector<std::vector<double>> phases,
                                             const resampling::SampleTimes& times,
                                             Fundamental& fundamental, bool isKnown)
{
    resampling::PhaseMeter meter(times, sequenceOf(phases));
    if (areEqual(phases, meter)) {
        fundamental.mRemarks.emplace_back(
            "the three phases are equal: the first alone is followed");
        phases = {std::move(phases[0]), {}, {}};
        meter = resampling::PhaseMeter(times, sequenceOf(phases));
    }
    for (const double other : {60.0, 50.0 / 3.0}) {
        if (!isKnown && amountInEitherSequence(meter, other) >
                            amountInEitherSequence(meter, fundamental.mNominalHz)) {
            fundamental.mNominalHz = other;
        }
    }
    const double hz = fundamental.mNominalHz;
    const bool hasAll =
        std::none_of(phases.begin(), phases.end(), [](const auto& phase) { return phase.empty(); });
    const bool isReversed = amountOf(meter, -hz) > amountOf(meter, hz);
    if (isReversed) {
        std::swap(phases[1], phases[2]);
        meter = resampling::PhaseMeter(times, sequenceOf(phases));
    }
    if ((times.end() - times.begin()) * hz < kMinPeriods) {
        fundamental.mReasonNotTracked = "the recording has fewer than six periods";
        return {};
    }
    fundamental.mReasonNotTracked = "no voltage or current is steady enough to be followed";
    std::optional<resampling::PhaseTrack> track = resampling::PhaseFollower(meter, hz).follow();
    if (isReversed && hasAll && track) {
        fundamental.mRemarks.emplace_back("the phases turn in the order A, C, B");
    }
    return track;
}
} // namespace

bool isNominalKnown(const waveform::SignalDescription& description)
{
    return description.mNominalHz >= kLowestNominal && description.mNominalHz <= kHighestNominal;
}

Fundamental findFundamental(const waveform::SignalDescription& description,
                            const RecordedSignal& recorded, const resampling::SampleTimes& times,
                            const ChannelMap& map)
{
    Fundamental fundamental;
    const bool isKnown = isNominalKnown(description);
    if (isKnown) {
        fundamental.mNominalHz = description.mNominalHz;
    }
    for (const size_t first : {size_t{0}, size_t{kChannelCount / 2}}) {
        if (fundamental.mTrack) {
            break;
        }
        std::vector<std::vector<double>> phases = phasesOf(recorded, map, first);
        const bool isThere = std::any_of(phases.begin(), phases.end(),
                                         [](const auto& phase) { return !phase.empty(); });
        if (isThere) {
            fundamental.mTrack = follow(std::move(phases), times, fundamental, isKnown);
        }
    }
    if (!isKnown) {
        const std::string stated =
            description.mNominalHz == 0.0
                ? "the recording states no nominal frequency"
                : fmt::format(
                      "the recording's nominal frequency, {:g} Hz, is not one of a power "
                      "system",
                      description.mNominalHz);
        fundamental.mRemarks.push_back(
            fmt::format("{}: {:.4g} Hz is assumed", stated, fundamental.mNominalHz));
    }
    return fundamental;
}

} // namespace importing
