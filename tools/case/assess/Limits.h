#pragma once

#include <QtGlobal>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** Nominal values; 0: not known. */
struct Nominal
{
    double mVolts = 0.0; ///< phase to neutral, rms
    double mAmperes = 0.0;
    double mHertz = 0.0;
};

/** A time: the longest of seconds, periods of the nominal frequency and intervals of frames. */
struct Span
{
    double mSeconds = 0.0;
    double mPeriods = 0.0;
    double mFrames = 0.0;
};

/** State of the expected phasors at an instant. */
enum class SignalState
{
    Steady,
    Ramp,    ///< the frequency changes at a constant rate
    Varying, ///< magnitude or frequency change in another way, as under modulation
};

/** A bound of expected values, in the unit of the quantity or in percent of the nominal value. */
struct Bound
{
    double mValue = 0.0;
    bool mIsPercent = false;
};

/** The largest allowed error of a value, and its conditions. */
struct Limit
{
    std::string mQuantity;              ///< or its family: "harmonic" for all orders and intervals
    std::vector<std::string> mChannels; ///< empty: all

    // The limit is the sum of these.
    double mAbsolute = 0.0; ///< in the unit of the quantity
    Span mTime;             ///< of a quantity in seconds
    double mReading = 0.0;  ///< percent of the expected value
    double mNominal = 0.0;  ///< percent of the nominal value

    // Conditions.
    std::optional<Bound> mFrom; ///< of the absolute expected value
    std::optional<Bound> mTo;   ///< exclusive
    std::optional<SignalState> mState;
    std::optional<Span>
        mEdge; ///< at least so far from a step, and from the start and end of an event
    std::optional<Span> mAfter; ///< no event or step in the value's interval, nor so long before it

    std::string mClause; ///< of the standard
    std::string mNote;
};

/** A table of limits. For each value, the first row whose conditions are met applies. */
struct LimitTable
{
    std::string mName; ///< for messages: that of the file or of the built-in table
    std::string mTitle;
    double mToleranceSeconds = 0.0;      ///< of time stamps: beyond it, they are late or early
    double mEventToleranceSeconds = 1.0; ///< events whose starts differ by at most this are matched
    Nominal mNominal;                    ///< given in the table
    std::vector<Limit> mLimits;
};

/** Names of the built-in tables. */
std::vector<std::string> builtInLimitNames();

/** A built-in table by its name, or the file of that name. Throws CaseError. */
LimitTable readLimits(const std::string& nameOrPath);

/** Reads limits in TOML. @param name for messages. Throws CaseError with line and column. */
LimitTable parseLimits(std::string_view text, const std::string& name);

/** The table for people, with a row per limit. */
std::string textOf(const LimitTable& table);

/** "0.1 % of nominal", "1 % of reading", "0.04 s", with the unit of the quantity. */
std::string amountText(const Limit& limit);

/** "from 10 % up to 150 % of nominal; steady", for example; empty for none. */
std::string conditionText(const Limit& limit);

/** The value of 100 % of a quantity; 0 if it is not known or does not exist. */
double nominalOf(const SeriesKey& key, const Nominal& nominal);

/** In ns. @param frameNs the interval between two values */
qint64 nanosecondsOf(const Span& span, const Nominal& nominal, qint64 frameNs);

} // namespace assess
