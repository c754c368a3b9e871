#pragma once

#include "SampleRecord.h"

namespace waveform {

inline constexpr qint64 kSecondInNs = 1'000'000'000;

/** Time stamp in ns since the epoch. */
inline qint64 stampNsOf(const SampleRecord& record)
{
    return record.mSeconds * kSecondInNs + record.mNanoseconds;
}

} // namespace waveform
