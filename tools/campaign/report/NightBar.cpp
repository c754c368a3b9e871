#include "report/NightBar.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "report/HtmlText.h"
#include "report/ReportText.h"
#include "waveform/RecordStamp.h"

namespace report {

namespace {
constexpr double kBarWidth = 1000.0;
constexpr double kBarHeight = 40.0;
constexpr double kInset = 8.0; ///< inset of good parts at top and bottom
constexpr double kMinBadWidth = 3.0;
constexpr double kSameColumn = 0.5; ///< plays that are closer are drawn as one
constexpr qint64 kMaxTicks = 5;

/** Possible distances of the times below the bar, in s. */
constexpr std::array<qint64, 18> kTickSteps = {
    1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400};

struct Part
{
    double mFrom;
    double mTo;
    Outcome mOutcome;
};

class Bar
{
public:
    explicit Bar(const NightSummary& night);

    std::string html() const;

private:
    double xOf(qint64 ns) const;
    std::vector<Part> parts() const;
    std::string partsText() const;
    std::string ticksText() const;
    std::string legendText() const;

    const NightSummary& mNight;
    qint64 mBeginNs;
    qint64 mEndNs;
};

Bar::Bar(const NightSummary& night)
    : mNight(night), mBeginNs(night.mSessions.front().mBeginNs), mEndNs(mBeginNs + 1)
{
    for (const Session& session : night.mSessions) {
        mBeginNs = std::min({mBeginNs, session.mBeginNs, session.mEndNs});
        mEndNs = std::max({mEndNs, session.mBeginNs, session.mEndNs});
    }
}

double Bar::xOf(qint64 ns) const
{
    const double share =
        static_cast<double>(ns - mBeginNs) / static_cast<double>(mEndNs - mBeginNs);
    return kBarWidth * std::clamp(share, 0.0, 1.0);
}

/** In the order of the plays; adjacent plays with the same outcome are one part. */
std::vector<Part> Bar::parts() const
{
    std::vector<Part> parts;
    for (const PlaySummary& play : mNight.mPlays) {
        if (play.mAttempts == 0) {
            continue;
        }
        const double from = xOf(play.mBeginNs);
        const double to = std::max(from, xOf(play.mEndNs == 0 ? mEndNs : play.mEndNs));
        if (!parts.empty() && parts.back().mOutcome == play.mOutcome &&
            std::abs(from - parts.back().mTo) < kSameColumn) {
            parts.back().mTo = to;
        } else {
            parts.push_back({from, to, play.mOutcome});
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [](const Part& left, const Part& right) {
        return left.mOutcome < right.mOutcome;
    });
    return parts;
}

std::string Bar::partsText() const
{
    std::string text;
    for (const Part& part : parts()) {
        const bool isGood = part.mOutcome == mNight.wanted();
        const double inset = isGood ? kInset : 0.0;
        const double width = std::max(part.mTo - part.mFrom, isGood ? kSameColumn : kMinBadWidth);
        text +=
            fmt::format(R"(<rect class="{}" x="{:.1f}" y="{:.0f}" width="{:.1f}" height="{:.0f}"/>)"
                        "\n",
                        styleOf(part.mOutcome), std::min(part.mFrom, kBarWidth - width), inset,
                        width, kBarHeight - 2.0 * inset);
    }
    return text;
}

std::string Bar::ticksText() const
{
    const qint64 from = mBeginNs / waveform::kSecondInNs;
    const qint64 to = mEndNs / waveform::kSecondInNs;
    const auto* const fitting =
        std::find_if(kTickSteps.begin(), kTickSteps.end(),
                     [&](qint64 step) { return (to - from) / step <= kMaxTicks; });
    const qint64 step = fitting == kTickSteps.end() ? (to - from) / kMaxTicks : *fitting;
    std::string text;
    for (qint64 second = (from / step + 1) * step; second <= to; second += step) {
        const double share = xOf(second * waveform::kSecondInNs) / kBarWidth;
        // A later label would reach beyond the bar.
        if (share < 0.92) {
            const std::string time = shortUtcText(second * waveform::kSecondInNs).substr(11);
            text += fmt::format(R"(<span style="left:{:.2f}%">{}</span>)", share * 100.0,
                                step % 60 == 0 ? time.substr(0, 5) : time);
        }
    }
    return text;
}

std::string Bar::legendText() const
{
    std::string text;
    for (size_t i = 0; i < static_cast<size_t>(Outcome::Count); ++i) {
        const auto outcome = static_cast<Outcome>(i);
        if (const size_t count = mNight.mCounts.of(outcome); count > 0) {
            text += fmt::format(R"(<li class="{}"><b></b><span>{}: {}</span></li>)",
                                styleOf(outcome), nameOf(outcome), countText(count, "play"));
        }
    }
    return text;
}

std::string Bar::html() const
{
    return fmt::format(
        R"(<svg class="bar" viewBox="0 0 {:.0f} {:.0f}" preserveAspectRatio="none" role="img" )"
        R"(aria-label="What was played from {} to {} UTC; the table below has the same in words">)"
        "\n{}</svg>\n<div class=\"ticks\" aria-hidden=\"true\">{}</div>\n<ul "
        "class=\"legend\">{}</ul>\n",
        kBarWidth, kBarHeight, shortUtcText(mBeginNs), shortUtcText(mEndNs), partsText(),
        ticksText(), legendText());
}
} // namespace

std::string nightBar(const NightSummary& night)
{
    return night.mSessions.empty() ? "" : Bar(night).html();
}

} // namespace report
