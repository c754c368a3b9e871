#include "measure/NominalFrequency.h"

#include <algorithm>
#include <complex>

#include "SampleRecord.h"
#include "base/Numbers.h"
#include "base/RaisedCosine.h"

namespace measure {

namespace {
constexpr double kShortest = 0.04; ///< s: two periods of 50 Hz
constexpr double kLongest = 1.0;   ///< s

/** The channels of the source that the map uses. */
std::vector<size_t> sourcesOf(const importing::ChannelMap& map)
{
    std::vector<size_t> sources;
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        if (channel == kChannelCount / 2 && !sources.empty()) {
            break;
        }
        for (const auto& term : map.mChannels[channel].mTerms) {
            sources.push_back(term.mSource);
        }
    }
    return sources;
}

double amountOf(const std::vector<double>& seconds, const std::vector<double>& values, double hertz)
{
    const double half = (seconds.back() - seconds.front()) / 2.0;
    std::complex<double> sum;
    for (size_t i = 0; i < seconds.size(); ++i) {
        const double middle = seconds[i] - seconds.front() - half;
        sum += values[i] * base::raisedCosine(middle / half) *
               std::polar(1.0, -base::kTwoPi * hertz * middle);
    }
    return std::abs(sum);
}
} // namespace

std::optional<double> recognizeNominal(waveform::SignalSource& source,
                                       const importing::ChannelMap& map)
{
    const std::vector<size_t> sources = sourcesOf(map);
    std::vector<double> seconds;
    std::vector<std::vector<double>> values(sources.size());
    waveform::SignalBlock block;
    while ((seconds.empty() || seconds.back() < kLongest) && source.read(block)) {
        const auto end = std::upper_bound(block.mSeconds.begin(), block.mSeconds.end(), kLongest);
        const auto count = end - block.mSeconds.begin();
        seconds.insert(seconds.end(), block.mSeconds.begin(), end);
        for (size_t i = 0; i < sources.size(); ++i) {
            const std::vector<double>& column = block.mValues[sources[i]];
            values[i].insert(values[i].end(), column.begin(), column.begin() + count);
        }
        if (end != block.mSeconds.end()) {
            break;
        }
    }
    if (seconds.empty() || seconds.back() - seconds.front() < kShortest) {
        return std::nullopt;
    }
    double fifty = 0.0;
    double sixty = 0.0;
    for (const std::vector<double>& column : values) {
        fifty += amountOf(seconds, column, 50.0);
        sixty += amountOf(seconds, column, 60.0);
    }
    if (fifty == sixty) {
        return std::nullopt;
    }
    return sixty > fifty ? 60.0 : 50.0;
}

} // namespace measure
