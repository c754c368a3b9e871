#include "importing/TimeCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"

namespace importing {

namespace {
using Segment = resampling::SampleTimes::Segment;

/** With fewer samples per period, neither its shape nor its harmonics can be seen. */
constexpr double kMinSamples = 4.0;
constexpr double kRoundingOfSamples = 1e-3;

/** A recorder of waveforms takes more samples per period. */
constexpr double kFewSamples = 20.0;

/** A shorter run of equal steps is a gap. */
constexpr size_t kMinRunSamples = 16;

bool isLong(const Segment& run)
{
    return run.sampleCount() >= kMinRunSamples;
}

double endOf(const Segment& run)
{
    return run.timeOf(run.mLast);
}

[[noreturn]] void refuse(const waveform::SignalDescription& description, double samples,
                         const TimeRange& range, double nominalHz)
{
    throw base::CaseError(fmt::format(
        "{}: {:.3g} samples per period of {:.4g} Hz from {:g} to {:g} s are not a waveform; "
        "expected at least {:g}; is the unit of the time right?",
        description.mFileName, samples, nominalHz, range.mFrom, range.mTo, kMinSamples));
}

/** The smallest number of samples per period; gaps are ignored. */
double expectWaveform(const waveform::SignalDescription& description,
                      const resampling::SampleTimes& times, const TimeRange& range,
                      double nominalHz)
{
    double fewest = HUGE_VAL;
    for (const Segment& run : times.segments()) {
        const TimeRange part{std::max(run.mStart, range.mFrom), std::min(endOf(run), range.mTo)};
        const double samples = 1.0 / (run.mStep * nominalHz);
        const bool isPeriod = (part.mTo - part.mFrom) * nominalHz > 1.0;
        if (isLong(run) && isPeriod && samples < kMinSamples - kRoundingOfSamples) {
            refuse(description, samples, part, nominalHz);
        }
        fewest = isLong(run) && part.mFrom < part.mTo ? std::min(fewest, samples) : fewest;
    }
    if (std::isfinite(fewest)) {
        return fewest;
    }
    const size_t count = times.nearestSample(range.mTo) - times.nearestSample(range.mFrom);
    const double samples = static_cast<double>(count) / ((range.mTo - range.mFrom) * nominalHz);
    if (samples < kMinSamples - kRoundingOfSamples) {
        refuse(description, samples, range, nominalHz);
    }
    return samples;
}

/** Indices of samples before gaps: distances that are wider than the steps around them. */
std::vector<size_t> gapsIn(const std::vector<double>& seconds, const resampling::SampleTimes& times)
{
    constexpr double kMinSteps = 1.75;
    const auto& runs = times.segments();
    const auto steady = std::find_if(runs.begin(), runs.end(), isLong);
    std::vector<size_t> gaps;
    double step = steady != runs.end() ? steady->mStep : HUGE_VAL;
    for (const Segment& run : runs) {
        if (isLong(run)) {
            step = run.mStep;
            continue;
        }
        for (size_t i = run.mFirst; i < run.mLast; ++i) {
            if (seconds[i + 1] - seconds[i] > kMinSteps * step) {
                gaps.push_back(i);
            }
        }
    }
    return gaps;
}

/** If only time stamps give the time, samples may be missing. */
void remarkGaps(const std::vector<double>& seconds, const resampling::SampleTimes& times,
                const TimeRange& range, std::vector<std::string>* remarks)
{
    constexpr size_t kMaxGaps = 5;
    std::vector<size_t> gaps = gapsIn(seconds, times);
    const auto isOutside = [&](size_t gap) {
        return seconds[gap + 1] <= range.mFrom || seconds[gap] >= range.mTo;
    };
    gaps.erase(std::remove_if(gaps.begin(), gaps.end(), isOutside), gaps.end());
    for (size_t i = 0; i < std::min(gaps.size(), kMaxGaps); ++i) {
        remarks->push_back(fmt::format("no samples from {:.6f} to {:.6f} s: bridged",
                                       seconds[gaps[i]], seconds[gaps[i] + 1]));
    }
    if (gaps.size() > kMaxGaps) {
        remarks->push_back(fmt::format("and {} more such gaps", gaps.size() - kMaxGaps));
    }
}
} // namespace

std::vector<std::string> checkTimes(const waveform::SignalDescription& description,
                                    const std::vector<double>& seconds,
                                    const resampling::SampleTimes& times, const TimeRange& range,
                                    double nominalHz)
{
    std::vector<std::string> remarks;
    const double samples = expectWaveform(description, times, range, nominalHz);
    // If the recording states its frequency, its reader has already reported this.
    if (description.mNominalHz == 0.0 && samples < kFewSamples) {
        remarks.push_back(fmt::format(
            "{:.3g} samples in a period: the recording was filtered or thinned", samples));
    }
    if (description.mRates.empty()) {
        if (times.clockTick() > 0.0) {
            remarks.push_back(fmt::format(
                "time stamps of a coarse clock, {:.3g} ms: the straight line through them is used",
                times.clockTick() * 1e3));
        }
        remarkGaps(seconds, times, range, &remarks);
    }
    return remarks;
}

} // namespace importing
