#pragma once

#include <memory>
#include <utility>

#include "waveform/SignalSource.h"

namespace plot {

/** Another source, which it owns, with all its times moved on by some seconds. */
class ShiftedSource : public waveform::SignalSource
{
public:
    ShiftedSource(std::unique_ptr<waveform::SignalSource> source, double seconds)
        : mSource(std::move(source)), mShift(seconds)
    {
    }

    const waveform::SignalDescription& description() const override
    {
        return mSource->description();
    }
    double progress() const override { return mSource->progress(); }

    bool read(waveform::SignalBlock& block) override
    {
        const bool isThere = mSource->read(block);
        for (double& seconds : block.mSeconds) {
            seconds += mShift;
        }
        return isThere;
    }

private:
    std::unique_ptr<waveform::SignalSource> mSource;
    double mShift;
};

} // namespace plot
