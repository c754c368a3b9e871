#include "plot/MomentChooser.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "base/CaseError.h"
#include "plot/LabelText.h"

namespace plot {

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/** Periods shown before and after a moment. */
constexpr double kPeriodsBefore = 2.25;
constexpr double kPeriodsAfter = 2.75;

/**
 * Periods shown on each side of a requested time. The first waveform, at the beginning, has twice
 * as many.
 */
constexpr double kPeriodsAround = 5.0;

/** Scores below those of changes in the signal, which therefore come first. */
constexpr double kSwitchScore = 0.04;
constexpr double kCommandScore = 0.03;

/** Max number of switches and commands that are considered: the first ones. */
constexpr size_t kMaxOthers = 16;

/** Max letters of a name in the title of a waveform. */
constexpr size_t kMaxNameLetters = 24;

Span spanAround(double seconds, double before, double after)
{
    return {seconds - before, seconds + after};
}

Span spanOf(const Moment& moment, double period)
{
    return spanAround(moment.mSeconds, kPeriodsBefore * period, kPeriodsAfter * period);
}

Span requestedSpan(double seconds, double period)
{
    return spanAround(seconds, kPeriodsAround * period, kPeriodsAround * period);
}

Span spanOfBeginning(double period)
{
    return {0.0, 2.0 * kPeriodsAround * period};
}

std::vector<Moment> withoutOverlap(const std::vector<Moment>& moments, size_t max, double period)
{
    return chooseMoments(moments, max, (kPeriodsBefore + kPeriodsAfter) * period);
}
} // namespace

MomentChooser::MomentChooser(const MomentRequest& request, const std::vector<PlayedPart>& played,
                             const std::vector<GivenCommand>& commands)
    : mRequest(request)
{
    for (size_t i = 1; i < played.size(); ++i) {
        mOthers.push_back({played[i].mFrom, kSwitchScore,
                           fmt::format("{:.4g} s: {} begins", played[i].mFrom,
                                       shortened(played[i].mText, kMaxNameLetters))});
    }
    for (const GivenCommand& command : commands) {
        mOthers.push_back({command.mSeconds, kCommandScore,
                           fmt::format("{:.4g} s: {}", command.mSeconds, command.mText)});
    }
    mOthers.resize(std::min(mOthers.size(), kMaxOthers));
}

std::vector<Moment> MomentChooser::moments(const Overview& overview) const
{
    std::vector<Moment> moments;
    const ChangeDetector& detector = overview.changes();
    for (const Change& change : detector.changes()) {
        moments.push_back({change.mSeconds, change.mScore, detector.textOf(change)});
    }
    if (withoutOverlap(moments, mRequest.mMax, overview.period()).size() < mRequest.mMax) {
        moments.insert(moments.end(), mOthers.begin(), mOthers.end());
    }
    return moments;
}

std::vector<Span> MomentChooser::candidates(const Overview& overview) const
{
    if (mRequest.mFrom || mRequest.mTo) {
        return {{mRequest.mFrom.value_or(-kInfinity), mRequest.mTo.value_or(kInfinity)}};
    }
    const double period = overview.period();
    if (period == 0.0) {
        return {};
    }
    if (mRequest.mAt) {
        return {requestedSpan(*mRequest.mAt, period)};
    }
    std::vector<Span> spans;
    for (const Moment& moment : moments(overview)) {
        spans.push_back(spanOf(moment, period));
    }
    return spans.empty() ? std::vector{spanOfBeginning(period)} : spans;
}

size_t MomentChooser::shownCount(const Overview& overview) const
{
    if (mRequest.mFrom || mRequest.mTo || mRequest.mAt) {
        return 1;
    }
    const size_t count = withoutOverlap(moments(overview), mRequest.mMax, overview.period()).size();
    return std::max<size_t>(count, 1);
}

double MomentChooser::earliestNext(const Overview& overview) const
{
    const double period = overview.period();
    return period == 0.0 ? -kInfinity : overview.earliestNextChange() - kPeriodsBefore * period;
}

std::vector<ShownSpan> MomentChooser::choose(const Overview& overview, double begin,
                                             double end) const
{
    const Span first = candidates(overview).front();
    if (mRequest.mFrom || mRequest.mTo) {
        const double from = mRequest.mFrom.value_or(begin);
        const double to = std::min(mRequest.mTo.value_or(end), end);
        if (from >= to) {
            throw base::CaseError(fmt::format("nothing to show from {} s to {} s", from, to));
        }
        return {{fmt::format("{:.6g} s to {:.6g} s", from, to), first, std::nullopt}};
    }
    if (mRequest.mAt) {
        if (*mRequest.mAt > end) {
            throw base::CaseError(
                fmt::format("nothing to show at {} s: the end is at {} s", *mRequest.mAt, end));
        }
        return {{fmt::format("around {:.6g} s", *mRequest.mAt), first, mRequest.mAt}};
    }
    std::vector<ShownSpan> shown;
    for (const Moment& moment :
         withoutOverlap(moments(overview), mRequest.mMax, overview.period())) {
        shown.push_back({moment.mText, spanOf(moment, overview.period()), moment.mSeconds});
    }
    return shown.empty() ? std::vector<ShownSpan>{{"the beginning", first, std::nullopt}} : shown;
}

} // namespace plot
