#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzProcess.h"
#include "base/CaseError.h"
#include "waveform/Measures.h"
#include "waveform/SignalSource.h"

/**
 * Opens and reads a signal to its end. It may be refused; else its blocks are whole, follow one
 * another, and hold times that do not fall.
 */
template <typename Open>
void readRecording(Open open)
{
    try {
        const std::unique_ptr<waveform::SignalSource> source = open();
        waveform::Measures measures(source->description());
        waveform::SignalBlock block;
        size_t samples = 0;
        double last = 0.0;
        while (source->read(block)) {
            require(block.mFirst == samples, "blocks follow one another");
            for (const double seconds : block.mSeconds) {
                require(seconds >= last, "times do not fall");
                last = seconds;
            }
            for (const auto& column : block.mValues) {
                require(column.size() == block.size(), "columns are whole");
            }
            samples += block.size();
            measures.add(block);
        }
        require(measures.frequency().mHertz >= 0.0, "a frequency is no less than 0");
    } catch (const base::CaseError&) {
        return;
    }
}

/** The input as a text. */
inline std::string textOf(const uint8_t* data, size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}
