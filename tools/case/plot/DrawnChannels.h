#pragma once

#include <string>
#include <vector>

#include "waveform/SignalSource.h"

namespace plot {

/** A channel in the picture. */
struct DrawnChannel
{
    /**
     * 0 to 3 for phase A, B, C and neutral, above that for an unknown phase. Channels of two
     * signals with the same conductor are compared and share their colour.
     */
    size_t mConductor;
    size_t mIndex;      ///< in the signal
    std::string mLabel; ///< for the reader; may hold an index as "U_{L1}"
    double mFactor;     ///< from the channel's unit to that of its group
    size_t mCurve = 0;  ///< index among all drawn channels
};

/** Channels of one unit, drawn over one another. */
struct DrawnGroup
{
    std::string mQuantity; ///< "voltage", "current"; empty if unknown
    std::string mUnit;     ///< of all its channels
    std::vector<DrawnChannel> mChannels;
};

/**
 * Chooses the channels of a signal that are drawn: at most four voltages above and four currents
 * below, preferring those that an import takes. A signal without either has its first four channels
 * above.
 */
class DrawnChannels
{
public:
    static constexpr size_t kMaxOfEach = 4;

    /** @param sources source of each channel in an import of the signal; empty for no import */
    explicit DrawnChannels(const waveform::SignalDescription& description,
                           const std::vector<std::string>& sources = {});

    /** One or two groups; not empty if the signal has channels. */
    const std::vector<DrawnGroup>& groups() const { return mGroups; }

    /** The group of the same quantity; null if there is none. */
    const DrawnGroup* groupLike(const DrawnGroup& group) const;

    /** Number of channels in all groups. */
    size_t count() const;

    /** Names of the channels that are not drawn. */
    const std::vector<std::string>& leftOut() const { return mLeftOut; }

private:
    void drawDevice();
    void drawByUnit(const std::vector<waveform::ChannelDescription>& channels,
                    const std::vector<std::string>& sources);
    void leaveOutOthers(const std::vector<waveform::ChannelDescription>& channels);
    void drawFirst(const std::vector<waveform::ChannelDescription>& channels);

    std::vector<DrawnGroup> mGroups;
    std::vector<std::string> mLeftOut;
};

/** The unit in which numbers are shown. */
struct ShownUnit
{
    double mFactor; ///< from the unit of the group
    std::string mName;
};

/** From 10,000 V or A on, kV or kA. */
ShownUnit shownUnit(const DrawnGroup& group, double largest);

/**
 * Whether the channels are those of the device: only these count from 0 and have 360 samples per
 * period.
 */
bool isOfDevice(const waveform::SignalDescription& description);

} // namespace plot
