#pragma once

#include <string>
#include <vector>

#include "signal/SignalSource.h"

/** A channel in the picture. */
struct DrawnChannel
{
    size_t mIndex;      ///< in the signal
    std::string mLabel; ///< for the reader; may hold an index as "U_{L1}"
    double mFactor;     ///< from the channel's unit to that of its panel
};

/** Channels of one unit, drawn over one another. */
struct DrawnGroup
{
    std::string mQuantity; ///< "voltage", "current"; empty where it is not known
    std::string mUnit;     ///< of the panel
    std::vector<DrawnChannel> mChannels;
};

/**
 * Which channels of a signal are drawn: at most four voltages above and four currents below. A
 * signal without either has its first four channels above.
 */
class DrawnChannels
{
public:
    static constexpr size_t kMostOfEach = 4;

    explicit DrawnChannels(const SignalDescription& description);

    /** One or two, none of them empty, as long as the signal has a channel. */
    const std::vector<DrawnGroup>& groups() const { return mGroups; }

    /** Of all groups, in order. */
    size_t count() const;

    /** Names of the channels that find no place. */
    const std::vector<std::string>& leftOut() const { return mLeftOut; }

private:
    void drawDevice();
    void drawByUnit(const std::vector<ChannelDescription>& channels);
    void drawFirst(const std::vector<ChannelDescription>& channels);

    std::vector<DrawnGroup> mGroups;
    std::vector<std::string> mLeftOut;
};

/** The channels of the device count from 0 and have 360 samples a period; no other signal does. */
bool isOfDevice(const SignalDescription& description);
