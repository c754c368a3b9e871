#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/CaseError.h"
#include "waveform/SignalSource.h"

/** The whole signal as one block. */
inline waveform::SignalBlock readAll(waveform::SignalSource& source)
{
    waveform::SignalBlock all;
    waveform::SignalBlock block;
    all.resize(source.description().mChannels.size(), 0);
    const auto append = [](auto* to, const auto& from) {
        to->insert(to->end(), from.begin(), from.end());
    };
    while (source.read(block)) {
        EXPECT_EQ(block.mFirst, all.size());
        append(&all.mSeconds, block.mSeconds);
        append(&all.mFrequency, block.mFrequency);
        for (size_t i = 0; i < block.mValues.size(); ++i) {
            append(&all.mValues[i], block.mValues[i]);
        }
    }
    EXPECT_EQ(block.size(), 0);
    return all;
}

/** The message of a failing operation; empty if it does not fail. */
template <typename Operation>
std::string errorIfAny(Operation operation)
{
    try {
        operation();
    } catch (const base::CaseError& error) {
        return error.what();
    }
    return {};
}

/** The message of a failing operation; the test fails if it does not fail. */
template <typename Operation>
std::string errorOf(Operation operation)
{
    const std::string error = errorIfAny(operation);
    EXPECT_NE(error, "");
    return error;
}
