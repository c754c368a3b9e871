#pragma once

#include <string_view>

#include "waveform/SignalSource.h"

namespace channels {

/** The quantity that a channel measures. */
enum class Quantity
{
    Unknown,
    Voltage,
    Current
};

/** The quantity of a channel, and the factor from its unit to V or A. */
struct ChannelUnit
{
    Quantity mQuantity = Quantity::Unknown;
    double mFactor = 1.0;
};

/** "kV", "mV", "volt", "A", "ampere", ...; 'm' is milli and 'M' mega, otherwise case is ignored. */
ChannelUnit unitOf(std::string_view text);

/** The same for a channel; if it has no unit, a leading U, V or I of its name decides. */
ChannelUnit unitOf(const waveform::ChannelDescription& channel);

/** The probable quantity of a channel with an unknown unit, such as "Vrms" or "% of A". */
Quantity likelyQuantityOf(const waveform::ChannelDescription& channel);

} // namespace channels
