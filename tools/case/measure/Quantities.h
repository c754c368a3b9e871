#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace measure {

/** The channel or system of a value. The first eight are the channels of the device, in order. */
enum class Channel : unsigned char
{
    UA,
    UB,
    UC,
    UN,
    IA,
    IB,
    IC,
    IN,
    U, ///< the system of the three phase voltages
    I, ///< the system of the three phase currents
    A, ///< voltage and current of one phase
    B,
    C,
    Total, ///< of all three phases
    None
};

/** "UA", ..., "total"; "" for none. */
const char* nameOf(Channel channel);

/** The channel of the device with a number, 0 to 7. */
inline Channel deviceChannel(size_t number)
{
    return static_cast<Channel>(number);
}

enum class QuantityId : unsigned char
{
    RmsHalf,
    Rms,
    Thd,
    Harmonic,
    Interharmonic,
    Frequency,
    FrequencyTenSeconds,
    NegativeVoltageUnbalance,
    ZeroVoltageUnbalance,
    NegativeCurrentUnbalance,
    ZeroCurrentUnbalance,
    PositiveSequence,
    NegativeSequence,
    ZeroSequence,
    ActivePower,
    ReactivePower,
    ApparentPower,
    PowerFactor,
    InstantaneousFlicker,
    ShortFlicker,
    LongFlicker,
    DipResidual,
    DipDuration,
    SwellMax,
    SwellDuration,
    InterruptionResidual,
    InterruptionDuration,
    RapidChangeMax,
    RapidChangeSteady,
    RapidChangeDuration,
    EventCount,
    PhasorMagnitude,
    PhasorAngle,
    PositivePhasorMagnitude,
    PositivePhasorAngle,
    PhasorFrequency,
    Rocof
};

/** Over how much time a value was aggregated. */
enum class Interval : unsigned char
{
    Basic,        ///< that of the quantity itself: 10/12 periods, one period, ...
    ThreeSeconds, ///< 150/180 periods
    TenMinutes    ///< aligned to UTC
};

/** What a measured value is; the only place that knows names, units and channels. */
struct Quantity
{
    QuantityId mId;
    const char* mName;  ///< in a row; an order follows where it has one: "harmonic-5"
    const char* mGroup; ///< for --quantities
    const char* mUnit;  ///< kUnitOfChannel: that of the channel, V or A
    std::vector<Channel> mChannels;
    int mFirstOrder; ///< 0: it has none
    int mLastOrder;
    bool mHasIntervals; ///< is aggregated over 150/180 periods and 10 minutes as well
    const char* mText;  ///< description, with the reference of percent values
};

/** Stands for V or A. */
inline constexpr char kUnitOfChannel[] = "V|A";

/** All of them, in the order of their ids. */
const std::vector<Quantity>& quantities();

const Quantity& quantityOf(QuantityId id);

/** "V" for UA to UN and U, "A" for IA to IN and I, otherwise the unit of the quantity. */
const char* unitOf(QuantityId id, Channel channel);

/** One kind of row: a quantity with its order and interval. */
struct RowKind
{
    QuantityId mId = QuantityId::RmsHalf;
    int mOrder = 0; ///< 0 if the quantity has none
    Interval mInterval = Interval::Basic;

    bool operator==(const RowKind& other) const
    {
        return mId == other.mId && mOrder == other.mOrder && mInterval == other.mInterval;
    }
};

/** "rms-half", "harmonic-5", "harmonic-5-10min", "rms-3s". */
std::string nameOf(const RowKind& kind);

/** The kind of a row by its name, if there is one. */
std::optional<RowKind> findRowKind(std::string_view name);

/** A channel by its name, if there is one; "" is none. */
std::optional<Channel> findChannel(std::string_view name);

/** The groups of --quantities, in their order. */
std::vector<std::string> quantityGroups();

} // namespace measure
