#include "assess/Limits.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "assess/QuantityNames.h"
#include "base/Numbers.h"
#include "base/TextTable.h"

namespace assess {

namespace {
std::string boundText(const std::optional<Bound>& bound)
{
    if (!bound) {
        return "";
    }
    return fmt::format("{:g}{}", bound->mValue, bound->mIsPercent ? " %" : "");
}

std::string spanText(const Span& span)
{
    std::vector<std::string> parts;
    if (span.mSeconds > 0.0) {
        parts.push_back(fmt::format("{:g} s", span.mSeconds));
    }
    if (span.mPeriods > 0.0) {
        parts.push_back(fmt::format("{:g}/f0", span.mPeriods));
    }
    if (span.mFrames > 0.0) {
        parts.push_back(fmt::format("{:g}/fr", span.mFrames));
    }
    return parts.empty() ? "0 s" : fmt::format("{}", fmt::join(parts, " or "));
}

std::string rangeText(const Limit& limit)
{
    const std::string from = boundText(limit.mFrom);
    const std::string to = boundText(limit.mTo);
    const bool isPercent = (limit.mFrom ? limit.mFrom : limit.mTo)->mIsPercent;
    return (limit.mFrom ? "from " + from : "") + (limit.mFrom && limit.mTo ? " " : "") +
           (limit.mTo ? "up to " + to : "") + (isPercent ? " of nominal" : "");
}

const char* stateText(SignalState state)
{
    switch (state) {
        case SignalState::Steady:
            return "steady";
        case SignalState::Ramp:
            return "ramp";
        case SignalState::Varying:
            break;
    }
    return "varying";
}

/** The unit of a limit is that of its channel. Without a channel it may be V or A. */
std::string unitOfLimit(const Limit& limit)
{
    if (isComputed(limit.mQuantity)) {
        return unitOf({limit.mQuantity, ""});
    }
    const std::string quantity =
        isMeasured(limit.mQuantity) ? limit.mQuantity : limit.mQuantity + "-2"; // has orders
    const std::string volts = unitOf({quantity, "UA"});
    const bool isOwn = volts != unitOf({quantity, "IA"}) && limit.mChannels.empty();
    return isOwn ? "V or A"
                 : unitOf({quantity, limit.mChannels.empty() ? "" : limit.mChannels.front()});
}
} // namespace

std::string amountText(const Limit& limit)
{
    std::vector<std::string> parts;
    if (limit.mAbsolute > 0.0) {
        parts.push_back(fmt::format("{:g} {}", limit.mAbsolute, unitOfLimit(limit)));
    }
    if (limit.mTime.mSeconds + limit.mTime.mPeriods + limit.mTime.mFrames > 0.0) {
        parts.push_back(spanText(limit.mTime));
    }
    if (limit.mReading > 0.0) {
        parts.push_back(fmt::format("{:g} % of reading", limit.mReading));
    }
    if (limit.mNominal > 0.0) {
        parts.push_back(fmt::format("{:g} % of nominal", limit.mNominal));
    }
    std::string text = fmt::format("{}", fmt::join(parts, " + "));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string conditionText(const Limit& limit)
{
    std::vector<std::string> parts;
    if (limit.mFrom || limit.mTo) {
        parts.push_back(rangeText(limit));
    }
    if (limit.mState) {
        parts.emplace_back(stateText(*limit.mState));
    }
    if (limit.mEdge) {
        parts.push_back("not within " + spanText(*limit.mEdge) + " of a step or an event's ends");
    }
    if (limit.mAfter) {
        const bool isLonger = spanText(*limit.mAfter) != "0 s";
        parts.push_back("no event or step in its interval" +
                        (isLonger ? " nor " + spanText(*limit.mAfter) + " before it" : ""));
    }
    return fmt::format("{}", fmt::join(parts, "; "));
}

std::string textOf(const LimitTable& table)
{
    base::TextTable text({"quantity", "channels", "limit", "condition", "clause"});
    std::string notes;
    for (const Limit& limit : table.mLimits) {
        const std::string channels = fmt::format("{}", fmt::join(limit.mChannels, " "));
        text.add({limit.mQuantity, channels.empty() ? "all" : channels, amountText(limit),
                  conditionText(limit), limit.mClause});
        notes += limit.mNote.empty() ? "" : limit.mQuantity + ": " + limit.mNote + "\n";
    }
    return fmt::format("{}: {}\ntime stamps: {:g} s; events: {:g} s\n", table.mName, table.mTitle,
                       table.mToleranceSeconds, table.mEventToleranceSeconds) +
           text.text() + notes;
}

double nominalOf(const SeriesKey& key, const Nominal& nominal)
{
    constexpr double kWhole = 100.0; ///< percent
    const std::string unit = unitOf(key);
    if (unit == "V") {
        return nominal.mVolts;
    }
    if (unit == "A") {
        return nominal.mAmperes;
    }
    if (unit == "Hz") {
        return nominal.mHertz;
    }
    return unit == "%" ? kWhole : 0.0;
}

qint64 nanosecondsOf(const Span& span, const Nominal& nominal, qint64 frameNs)
{
    const double periods = nominal.mHertz > 0.0 ? span.mPeriods / nominal.mHertz : 0.0;
    const double frames = span.mFrames * static_cast<double>(frameNs) * base::kSecondsPerNanosecond;
    constexpr double kMaxLimitedSeconds = 1e8;
    const double seconds = std::min(std::max({span.mSeconds, periods, frames}), kMaxLimitedSeconds);
    return std::llround(seconds * base::kNanosecondsPerSecond);
}

} // namespace assess
