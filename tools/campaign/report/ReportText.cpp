#include "report/ReportText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QDateTime>
#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace report {

namespace {
using waveform::kSecondInNs;

constexpr qint64 kMinuteInS = 60;
constexpr qint64 kHourInS = 3600;

/** Values from here on round to 1 with three digits. */
constexpr double kRoundsToOne = 0.9995;

constexpr double kMilliseconds = 1e3;
constexpr double kMicroseconds = 1e6;

/** A time as whole seconds and nanoseconds. */
struct SplitTime
{
    qint64 mSeconds;
    qint64 mNanoseconds;
};

SplitTime splitTime(qint64 ns)
{
    const qint64 behind = ((ns % kSecondInNs) + kSecondInNs) % kSecondInNs;
    return {(ns - behind) / kSecondInNs, behind};
}

std::string dateText(qint64 seconds, const char* format)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(format).toStdString();
}

/** All faults, such as "2 of 33 plays failed", or "2 failed" for an interrupted night. */
std::vector<std::string> faultsOf(const NightSummary& night, bool isUnfinished)
{
    std::vector<std::string> faults;
    const auto add = [&](Outcome outcome) {
        if (const size_t count = night.mCounts.of(outcome); count > 0) {
            faults.push_back(isUnfinished || !faults.empty()
                                 ? fmt::format("{} {}", count, nameOf(outcome))
                                 : fmt::format("{} of {} {}", count,
                                               countText(night.mPlays.size(), "play"),
                                               nameOf(outcome)));
        }
    };
    add(Outcome::Failed);
    if (!isUnfinished) {
        add(Outcome::Unfinished);
        add(Outcome::NotPlayed);
    }
    if (night.mNight.mIsObserved) {
        add(Outcome::NotObserved);
    }
    if (!night.mOutside.empty()) {
        faults.push_back(countText(night.mOutside.size(), "finding") + " outside the plays");
    }
    if (const size_t count = night.badAssessments(); count > 0) {
        faults.push_back(countText(count, "measured result") + " not good");
    }
    if (!night.mAssessmentProblem.empty()) {
        faults.push_back(night.mAssessmentProblem);
    }
    return faults;
}

std::string goodText(const NightSummary& night)
{
    const std::string plays = countText(night.mPlays.size(), "play");
    if (!night.mNight.mIsObserved) {
        return fmt::format("Commanded, not observed: {} commanded and answered", plays);
    }
    const size_t assessed = night.assessedCases();
    return fmt::format("Passed: {} of {}{}", plays, countText(night.mCases.size(), "case"),
                       assessed == 0 ? ""
                                     : fmt::format(", measured values of {} within the limits",
                                                   countText(assessed, "case")));
}

/** The first words about a night that did not run to its end. */
std::string unfinishedText(const NightSummary& night)
{
    const char* const how = night.mState == NightState::CutOff        ? "Cut off"
                            : night.mState == NightState::Running     ? "Still running"
                            : night.mState == NightState::Interrupted ? "Interrupted"
                                                                      : "Gave up";
    return fmt::format("{} after {} of {}", how, night.mCounts.ended(),
                       countText(night.mPlays.size(), "play"));
}
} // namespace

std::string utcText(qint64 ns)
{
    const SplitTime time = splitTime(ns);
    return fmt::format("{}.{:09}Z", dateText(time.mSeconds, "yyyy-MM-ddTHH:mm:ss"),
                       time.mNanoseconds);
}

std::string shortUtcText(qint64 ns)
{
    return dateText(splitTime(ns).mSeconds, "yyyy-MM-dd HH:mm:ss");
}

std::string durationText(qint64 ns)
{
    const qint64 wholeSeconds = ns / kSecondInNs;
    if (wholeSeconds >= kHourInS) {
        return fmt::format("{} h {} min", wholeSeconds / kHourInS,
                           wholeSeconds % kHourInS / kMinuteInS);
    }
    if (wholeSeconds >= kMinuteInS) {
        return fmt::format("{} min {} s", wholeSeconds / kMinuteInS, wholeSeconds % kMinuteInS);
    }
    const double seconds = static_cast<double>(ns) * base::kSecondsPerNanosecond;
    if (ns == 0 || std::abs(seconds) >= kRoundsToOne) {
        return fmt::format("{:.3g} s", seconds);
    }
    const bool isShort = std::abs(seconds) * kMilliseconds < kRoundsToOne;
    return isShort ? fmt::format("{:.3g} µs", seconds * kMicroseconds)
                   : fmt::format("{:.3g} ms", seconds * kMilliseconds);
}

std::string secondsText(qint64 ns)
{
    return fmt::format("{}{}.{:09}", ns < 0 ? "-" : "", std::abs(ns) / kSecondInNs,
                       std::abs(ns) % kSecondInNs);
}

std::string groupedText(quint64 number)
{
    constexpr size_t kGroup = 3;
    std::string text = std::to_string(number);
    for (size_t end = text.size(); end > kGroup; end -= kGroup) {
        text.insert(end - kGroup, ",");
    }
    return text;
}

std::string countText(quint64 count, const std::string& what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string playText(const NightSummary& night, const PlaySummary& play)
{
    return journal::playText(night.mCases[play.mCase].mStaged, play.mRepetition);
}

std::string verdictText(const NightSummary& night)
{
    if (night.isGood()) {
        return goodText(night);
    }
    const bool isUnfinished =
        night.mState != NightState::Done && night.mState != NightState::FirstFailure;
    const std::string faults = fmt::format("{}", fmt::join(faultsOf(night, isUnfinished), ", "));
    if (isUnfinished) {
        return unfinishedText(night) + (faults.empty() ? "" : ": " + faults);
    }
    return "Failed: " + (faults.empty() ? "nothing was played" : faults);
}

} // namespace report
