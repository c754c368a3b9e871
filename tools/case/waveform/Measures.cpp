#include "waveform/Measures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/ProgressLine.h"

namespace waveform {

namespace {
/** Tried if the nominal frequency is unknown; the meter for 50 Hz finds 60 Hz, too. */
constexpr double kUsualHertz[] = {50.0, 50.0 / 3.0};

/** Max channels in which the frequency is measured: more cost time and add nothing. */
constexpr size_t kMaxMeteredChannels = 16;

constexpr size_t kLanes = 4;
} // namespace

Measures::Measures(const SignalDescription& description)
    : mDescription(description), mChannels(description.mChannels.size())
{
}

void Measures::add(const SignalBlock& block)
{
    if (block.size() == 0) {
        return;
    }
    if (mSamples == 0) {
        beginMeters();
    }
    for (size_t i = 0; i < mChannels.size(); ++i) {
        addColumn(block.mValues[i], &mChannels[i]);
    }
    for (FrequencyMeter& meter : mMeters) {
        meter.add(block);
    }
    mSamples += block.size();
    mSeconds = block.mSeconds.back();
}

/** Called with the first block: only then the frequency of a value file is known. */
void Measures::beginMeters()
{
    const size_t channels = std::min(mChannels.size(), kMaxMeteredChannels);
    if (mDescription.mNominalHz > 0.0) {
        mMeters.emplace_back(mDescription.mNominalHz, channels);
        return;
    }
    for (const double hertz : kUsualHertz) {
        mMeters.emplace_back(hertz, channels);
    }
}

/** Several independent sums, so that no addition waits for the one before. */
void Measures::addColumn(const std::vector<double>& column, Sums* sums) const
{
    const double first = column[0];
    std::array<double, kLanes> squares{};
    std::array<double, kLanes> smallest{first, first, first, first};
    std::array<double, kLanes> largest = smallest;
    const auto take = [&](size_t lane, double value) {
        squares[lane] += value * value;
        smallest[lane] = value < smallest[lane] ? value : smallest[lane];
        largest[lane] = value > largest[lane] ? value : largest[lane];
    };
    size_t i = 0;
    for (; i + kLanes <= column.size(); i += kLanes) {
        for (size_t lane = 0; lane < kLanes; ++lane) {
            take(lane, column[i + lane]);
        }
    }
    for (; i < column.size(); ++i) {
        take(0, column[i]);
    }
    sums->mSquares += squares[0] + squares[1] + squares[2] + squares[3];
    const double min = *std::min_element(smallest.begin(), smallest.end());
    const double max = *std::max_element(largest.begin(), largest.end());
    sums->mSmallest = mSamples == 0 ? min : std::min(sums->mSmallest, min);
    sums->mLargest = mSamples == 0 ? max : std::max(sums->mLargest, max);
}

Measures::Channel Measures::channel(size_t channel) const
{
    const Sums& sums = mChannels.at(channel);
    const double mean = mSamples == 0 ? 0.0 : sums.mSquares / static_cast<double>(mSamples);
    return {std::sqrt(mean), sums.mSmallest, sums.mLargest};
}

FrequencyMeter::Result Measures::frequency() const
{
    FrequencyMeter::Result best;
    for (const FrequencyMeter& meter : mMeters) {
        best = FrequencyMeter::betterOf(best, meter.result());
    }
    return best;
}

void measure(SignalSource& source, Measures* measures)
{
    base::ProgressLine line("reading");
    SignalBlock block;
    while (source.read(block)) {
        measures->add(block);
        line.show(source.progress());
    }
}

} // namespace waveform
