#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "measure/Meter.h"

/** The output of a meter, in its order. */
struct MeasuredRows
{
    /** Of one quantity and channel. */
    std::vector<measure::Measurement> of(
        measure::QuantityId id, measure::Channel channel, int order = 0,
        measure::Interval interval = measure::Interval::Basic) const
    {
        const measure::RowKind kind{id, order, interval};
        std::vector<measure::Measurement> found;
        for (const measure::Measurement& row : mRows) {
            if (row.mKind == kind && row.mChannel == channel) {
                found.push_back(row);
            }
        }
        return found;
    }

    std::vector<measure::Measurement> mRows;
};

class RowCollector : public measure::MeasurementOutput
{
public:
    void add(const measure::Measurement& value) override { mRows.mRows.push_back(value); }

    MeasuredRows mRows;
};

/**
 * Lets a meter measure a signal, block by block.
 * @param valueOf the value of a channel, 0 to 7, at a time
 */
template <typename ValueOf>
MeasuredRows runMeter(measure::Meter& meter, const std::vector<double>& seconds, ValueOf valueOf)
{
    constexpr size_t kBlockSize = 1000;
    constexpr size_t kChannels = 8;
    RowCollector rows;
    waveform::SignalBlock block;
    for (size_t first = 0; first < seconds.size(); first += kBlockSize) {
        block.mFirst = first;
        block.resize(kChannels, std::min(kBlockSize, seconds.size() - first));
        for (size_t i = 0; i < block.size(); ++i) {
            block.mSeconds[i] = seconds[first + i];
            for (size_t channel = 0; channel < kChannels; ++channel) {
                block.mValues[channel][i] = valueOf(channel, block.mSeconds[i]);
            }
        }
        meter.add(block, rows);
    }
    meter.finish(rows);
    return std::move(rows.mRows);
}
