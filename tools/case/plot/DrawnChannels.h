#pragma once

#include <string>
#include <vector>

#include "waveform/SignalSource.h"

namespace plot {

/** A channel in the picture. */
struct DrawnChannel
{
    /** 0 to 3 for phase A, B, C and neutral, more where the phase is not known: channels of two
     * signals with the same conductor belong together and share their colour. */
    size_t mConductor;
    size_t mIndex;      ///< in the signal
    std::string mLabel; ///< for the reader; may hold an index as "U_{L1}"
    double mFactor;     ///< from the channel's unit to that of its group
    size_t mCurve = 0;  ///< index among all that are drawn
};

/** Channels of one unit, drawn over one another. */
struct DrawnGroup
{
    std::string mQuantity; ///< "voltage", "current"; empty where it is not known
    std::string mUnit;     ///< of all its channels
    std::vector<DrawnChannel> mChannels;
};

/**
 * Which channels of a signal are drawn: at most four voltages above and four currents below, those
 * that an import takes before others. A signal without either has its first four channels above.
 */
class DrawnChannels
{
public:
    static constexpr size_t kMaxOfEach = 4;

    /** @param sources what an import of the signal took for each channel; empty for no import */
    explicit DrawnChannels(const waveform::SignalDescription& description,
                           const std::vector<std::string>& sources = {});

    /** One or two, none of them empty, as long as the signal has a channel. */
    const std::vector<DrawnGroup>& groups() const { return mGroups; }

    /** The group of the same quantity; null where there is none. */
    const DrawnGroup* groupLike(const DrawnGroup& group) const;

    /** Of all groups, in order. */
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

/** A unit in which a number is short. */
struct ShownUnit
{
    double mFactor; ///< from the unit of the group
    std::string mName;
};

/** From 10,000 V or A on, kV or kA. */
ShownUnit shownUnit(const DrawnGroup& group, double largest);

/** The channels of the device count from 0 and have 360 samples a period; no other signal does. */
bool isOfDevice(const waveform::SignalDescription& description);

} // namespace plot
