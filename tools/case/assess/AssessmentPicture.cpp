#include "assess/AssessmentPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Numbers.h"
#include "measure/UtcText.h"

namespace assess {

namespace {
constexpr size_t kColumns = 1000; // of the picture
constexpr size_t kErrorColour = 1;
constexpr size_t kLimitColour = 3;

plot::Panel panelOf(const std::string& axis, std::vector<plot::Curve> curves)
{
    plot::Panel panel{axis, 0.0, 0.0, std::move(curves)};
    fitRange(panel);
    return panel;
}

std::string axisOf(const std::string& what, const std::string& unit)
{
    return unit.empty() ? what : what + ", " + unit;
}
} // namespace

void fitRange(plot::Panel& panel)
{
    constexpr double kMargin = 0.08;
    constexpr double kMinPart = 5e-5; // of the value; makes the numbers at the axis differ
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const plot::Curve& curve : panel.mCurves) {
        for (const plot::Point& point : curve.mPoints) {
            low = std::min(low, point.mY);
            high = std::max(high, point.mY);
        }
    }
    const double largest = std::max(std::abs(low), std::abs(high));
    const double room = high > low ? std::max(kMargin * (high - low), kMinPart * largest)
                                   : std::max(kMargin * largest, 1e-6);
    panel.mLow = low - room;
    panel.mHigh = high + room;
}

const SeriesResult* worstSeries(const AssessmentResult& result)
{
    const SeriesResult* worst = nullptr;
    const auto isWorse = [](const SeriesResult& a, const SeriesResult& b) {
        const bool hasA = a.mLargest->mLimit > 0.0;
        const bool hasB = b.mLargest->mLimit > 0.0;
        return hasA == hasB ? a.mLargest->errorRatio() > b.mLargest->errorRatio() : hasA;
    };
    for (const SeriesResult& it : result.mSeries) {
        if (it.mLargest && (worst == nullptr || isWorse(it, *worst))) {
            worst = &it;
        }
    }
    return worst;
}

plot::Picture pictureOf(const SeriesResult& series, const std::vector<JudgedValue>& values)
{
    const qint64 begin = values.front().mUtcNs;
    plot::Envelope envelope(5, kColumns);
    for (const JudgedValue& it : values) {
        const double limit = it.mLimit > 0.0 ? it.mLimit : std::numeric_limits<double>::quiet_NaN();
        const double seconds = static_cast<double>(it.mUtcNs - begin) * base::kSecondsPerNanosecond;
        envelope.add(seconds, {it.mExpected, it.mMeasured, it.mError, limit, -limit});
    }
    plot::Picture picture;
    picture.mTitle = fmt::format("{}: {}", nameOf(series.mKey), nameOf(series.mVerdict));
    picture.mCaption = fmt::format("from {}: {} values compared, {} of {} judged beyond the limit",
                                   std::string(measure::UtcText().of(begin)), series.mCompared,
                                   series.mBeyond, series.mJudged);
    picture.mBelow = "time since the first value, s";
    picture.mEnd = std::max(
        static_cast<double>(values.back().mUtcNs - begin) * base::kSecondsPerNanosecond, 1e-3);
    picture.mWhole.push_back(panelOf(axisOf(series.mKey.mQuantity, series.mUnit),
                                     {{"expected", 0, false, envelope.curve(0)},
                                      {"measured", kErrorColour, false, envelope.curve(1)}}));
    picture.mWhole.push_back(panelOf(axisOf("error", series.mUnit),
                                     {{"error", kErrorColour, false, envelope.curve(2)},
                                      {"limit", kLimitColour, false, envelope.curve(3)},
                                      {"-limit", kLimitColour, false, envelope.curve(4)}}));
    return picture;
}

} // namespace assess
