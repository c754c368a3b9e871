#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "SampleRecord.h"

namespace measure {

/** The latest samples of all channels with their times; older ones are dropped. */
class SampleHistory
{
public:
    size_t begin() const { return mFirst; } ///< index of the oldest that is kept
    size_t end() const { return mFirst + mSeconds.size(); }

    double secondsOf(size_t index) const { return mSeconds[index - mFirst]; }

    const double* secondsFrom(size_t index) const { return mSeconds.data() + (index - mFirst); }

    /** Time at a fractional index; up to one step beyond the last sample. */
    double secondsAt(double index) const
    {
        const auto last = static_cast<double>(end() - 1);
        const auto before = static_cast<size_t>(index < last ? index : last - 1.0);
        const double start = secondsOf(before);
        return start + (index - static_cast<double>(before)) * (secondsOf(before + 1) - start);
    }

    /** Values of a channel from that sample on. */
    const double* valuesFrom(size_t channel, size_t index) const
    {
        return mValues[channel].data() + (index - mFirst);
    }

    /** Takes samples from columns of `count` values. */
    void append(const double* seconds, const std::array<const double*, kChannelCount>& columns,
                size_t count)
    {
        mSeconds.insert(mSeconds.end(), seconds, seconds + count);
        for (size_t channel = 0; channel < columns.size(); ++channel) {
            mValues[channel].insert(mValues[channel].end(), columns[channel],
                                    columns[channel] + count);
        }
    }

    void append(double seconds, const std::array<double, kChannelCount>& values)
    {
        mSeconds.push_back(seconds);
        for (size_t channel = 0; channel < values.size(); ++channel) {
            mValues[channel].push_back(values[channel]);
        }
    }

    /** Drops the samples before this index, once there are enough of them. */
    void dropBefore(size_t index)
    {
        constexpr size_t kMinDropped = 8192;
        if (index < mFirst + kMinDropped) {
            return;
        }
        const auto count = static_cast<std::ptrdiff_t>(index - mFirst);
        mSeconds.erase(mSeconds.begin(), mSeconds.begin() + count);
        for (std::vector<double>& column : mValues) {
            column.erase(column.begin(), column.begin() + count);
        }
        mFirst = index;
    }

private:
    size_t mFirst = 0;
    std::vector<double> mSeconds;
    std::array<std::vector<double>, kChannelCount> mValues;
};

} // namespace measure
