#include "import/Fundamental.h"

#include <fmt/format.h>

#include <algorithm>

#include "import/ChannelKind.h"
#include "resampling/PhaseFollower.h"

namespace {
constexpr double kLeastPeriods = 6.0;

/** A nominal frequency outside is taken for a slip of the recorder, in Hz. */
constexpr double kLowestNominal = 10.0;
constexpr double kHighestNominal = 500.0;

/** The sums of three channels of the device, from `first` on; empty where there is none. */
std::vector<std::vector<double>> phasesOf(const RecordedSignal& recorded, const ChannelMap& map,
                                          size_t first)
{
    std::vector<std::vector<double>> phases(kPhaseCount);
    for (size_t phase = 0; phase < kPhaseCount; ++phase) {
        const MappedChannel& channel = map.mChannels[first + phase];
        if (!channel.mTerms.empty()) {
            phases[phase] = recorded.sumOf(channel);
        }
    }
    return phases;
}

ComplexSignal sequenceOf(const std::vector<std::vector<double>>& phases)
{
    std::vector<const std::vector<double>*> columns;
    for (const std::vector<double>& phase : phases) {
        columns.push_back(phase.empty() ? nullptr : &phase);
    }
    return positiveSequence(columns);
}

/** How much of a frequency there is, over the whole recording. */
double amountOf(const PhaseMeter& meter, double hz)
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

/** The track of one system of phases, in whichever order they turn. */
std::optional<PhaseTrack> follow(std::vector<std::vector<double>> phases, const SampleTimes& times,
                                 Fundamental& fundamental, bool isNominalKnown)
{
    constexpr double kOtherNominal = 60.0;
    PhaseMeter meter(times, sequenceOf(phases));
    if (!isNominalKnown &&
        amountOf(meter, kOtherNominal) > amountOf(meter, fundamental.mNominalHz)) {
        fundamental.mNominalHz = kOtherNominal;
    }
    const double hz = fundamental.mNominalHz;
    if (amountOf(meter, -hz) > amountOf(meter, hz)) {
        fundamental.mRemarks.emplace_back("the phases turn in the order A, C, B");
        std::swap(phases[1], phases[2]);
        meter = PhaseMeter(times, sequenceOf(phases));
    }
    if ((times.end() - times.begin()) * hz < kLeastPeriods) {
        fundamental.mWhyNoTrack = "the recording has fewer than six periods";
        return {};
    }
    fundamental.mWhyNoTrack = "no voltage or current is steady enough to be followed";
    return PhaseFollower(meter, hz).follow();
}
} // namespace

Fundamental findFundamental(const SignalDescription& description, const RecordedSignal& recorded,
                            const SampleTimes& times, const ChannelMap& map)
{
    Fundamental fundamental;
    const bool isNominalKnown =
        description.mNominalHz >= kLowestNominal && description.mNominalHz <= kHighestNominal;
    if (isNominalKnown) {
        fundamental.mNominalHz = description.mNominalHz;
    }
    for (const size_t first : {size_t{0}, size_t{kChannelCount / 2}}) {
        std::vector<std::vector<double>> phases = phasesOf(recorded, map, first);
        const bool isThere = std::any_of(phases.begin(), phases.end(),
                                         [](const auto& phase) { return !phase.empty(); });
        if (isThere && !fundamental.mTrack) {
            fundamental.mTrack = follow(std::move(phases), times, fundamental, isNominalKnown);
        }
    }
    if (!isNominalKnown) {
        fundamental.mRemarks.push_back(fmt::format(
            "the recording tells no nominal frequency: {:g} Hz is taken", fundamental.mNominalHz));
    }
    return fundamental;
}
