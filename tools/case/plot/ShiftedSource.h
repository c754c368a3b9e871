#pragma once

#include <memory>
#include <utility>

#include "signal/SignalSource.h"

/** Another source, which it owns, with all its times moved on by some seconds. */
class ShiftedSource : public SignalSource
{
public:
    ShiftedSource(std::unique_ptr<SignalSource> source, double seconds)
        : mSource(std::move(source)), mShift(seconds)
    {
    }

    const SignalDescription& description() const override { return mSource->description(); }
    double progress() const override { return mSource->progress(); }

    bool read(SignalBlock& block) override
    {
        const bool isThere = mSource->read(block);
        for (double& seconds : block.mSeconds) {
            seconds += mShift;
        }
        return isThere;
    }

private:
    std::unique_ptr<SignalSource> mSource;
    double mShift;
};
