#include "importing/RecordedSignal.h"

#include <algorithm>
#include <set>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/ProgressLine.h"

namespace importing {

namespace {
RecordedSignal columnsFor(const waveform::SignalDescription& description, const ChannelMap& map)
{
    std::set<size_t> sources;
    for (const MappedChannel& channel : map.mChannels) {
        for (const MappedChannel::Term& term : channel.mTerms) {
            sources.insert(term.mSource);
        }
    }
    RecordedSignal signal;
    signal.mSources.assign(sources.begin(), sources.end());
    for (const size_t source : sources) {
        const double skew = description.mChannels[source].mSkewMicroseconds;
        signal.mColumns.push_back({{}, skew * base::kSecondsPerMicrosecond});
    }
    return signal;
}
} // namespace

RecordedSignal readSignal(waveform::SignalSource& source, const ChannelMap& map)
{
    RecordedSignal signal = columnsFor(source.description(), map);
    base::ProgressLine progress("reading");
    waveform::SignalBlock block;
    while (source.read(block)) {
        signal.mSeconds.insert(signal.mSeconds.end(), block.mSeconds.begin(), block.mSeconds.end());
        for (size_t column = 0; column < signal.mColumns.size(); ++column) {
            const std::vector<double>& values = block.mValues[signal.mSources[column]];
            std::vector<double>& all = signal.mColumns[column].mValues;
            all.insert(all.end(), values.begin(), values.end());
        }
        progress.show(source.progress());
    }
    if (signal.mSeconds.empty() || signal.mSeconds.front() == signal.mSeconds.back()) {
        throw base::CaseError(source.description().mFileName +
                              ": expected samples at two or more instants");
    }
    return signal;
}

size_t RecordedSignal::columnOf(size_t source) const
{
    return static_cast<size_t>(std::lower_bound(mSources.begin(), mSources.end(), source) -
                               mSources.begin());
}

std::vector<double> RecordedSignal::sumOf(const MappedChannel& channel) const
{
    std::vector<double> sum(mSeconds.size());
    for (const MappedChannel::Term& term : channel.mTerms) {
        const std::vector<double>& values = mColumns[columnOf(term.mSource)].mValues;
        std::transform(sum.begin(), sum.end(), values.begin(), sum.begin(),
                       [&term](double a, double b) { return a + term.mFactor * b; });
    }
    return sum;
}

} // namespace importing
