#include "report/FindingPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "base/Numbers.h"
#include "plot/DrawnChannels.h"
#include "report/ReportText.h"
#include "waveform/DeviceChannels.h"
#include "waveform/RecordStamp.h"

namespace report {

namespace {
constexpr double kHeadroomShare = 1.15;

/** Samples that are farther apart are not joined by a line. At 40 Hz the step is 70 µs. */
constexpr qint64 kMaxStepNs = 100'000;

/** Samples that arrived, or that were expected. */
struct DrawnSamples
{
    std::vector<qint64> mStampsNs;
    std::vector<explain::SampleContent> mContents;
    bool mIsExpected = false;
};

DrawnSamples readKept(const std::string& path)
{
    base::InputFile file(path);
    const std::string_view bytes = file.peek(kMaxDrawnRecords * sizeof(SampleRecord));
    DrawnSamples kept;
    for (size_t i = 0; i + sizeof(SampleRecord) <= bytes.size(); i += sizeof(SampleRecord)) {
        SampleRecord record{};
        std::memcpy(&record, bytes.data() + i, sizeof(record));
        kept.mStampsNs.push_back(waveform::stampNsOf(record));
        kept.mContents.push_back(explain::contentOf(record));
    }
    if (kept.mStampsNs.size() < 2) {
        throw base::CaseError(path + ": expected two samples or more");
    }
    return kept;
}

/** The values follow the auxiliary word and the flags. */
double valueOf(const explain::SampleContent& content, size_t channel)
{
    return static_cast<qint32>(content[content.size() - kChannelCount + channel]);
}

class FindingPictureMaker
{
public:
    FindingPictureMaker(qint64 originNs, std::vector<DrawnSamples> drawn)
        : mOriginNs(originNs), mDrawn(std::move(drawn))
    {
    }

    void addPanels(plot::Picture* picture) const;
    double secondsOf(qint64 stampNs) const
    {
        return static_cast<double>(stampNs - mOriginNs) * base::kSecondsPerNanosecond;
    }

private:
    plot::Curve curveOf(const DrawnSamples& samples, const plot::DrawnChannel& channel) const;

    qint64 mOriginNs;
    std::vector<DrawnSamples> mDrawn;
};

plot::Curve FindingPictureMaker::curveOf(const DrawnSamples& samples,
                                         const plot::DrawnChannel& channel) const
{
    constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
    plot::Curve curve{channel.mLabel, channel.mConductor, samples.mIsExpected, {}};
    for (size_t i = 0; i < samples.mStampsNs.size(); ++i) {
        const double seconds = secondsOf(samples.mStampsNs[i]);
        const qint64 stepNs = i == 0 ? 1 : samples.mStampsNs[i] - samples.mStampsNs[i - 1];
        if (stepNs <= 0 || stepNs > kMaxStepNs) {
            curve.mPoints.push_back({seconds, kNothing});
        }
        curve.mPoints.push_back(
            {seconds, valueOf(samples.mContents[i], channel.mIndex) * channel.mFactor});
    }
    return curve;
}

void FindingPictureMaker::addPanels(plot::Picture* picture) const
{
    waveform::SignalDescription description;
    description.mChannels = waveform::deviceChannels();
    const plot::DrawnChannels channels(description);
    for (const plot::DrawnGroup& group : channels.groups()) {
        plot::Panel panel{group.mQuantity + ", " + group.mUnit, 0.0, 0.0, {}};
        for (const DrawnSamples& samples : mDrawn) {
            for (const plot::DrawnChannel& channel : group.mChannels) {
                panel.mCurves.push_back(curveOf(samples, channel));
                for (const plot::Point& point : panel.mCurves.back().mPoints) {
                    panel.mHigh = std::fmax(panel.mHigh, std::abs(point.mY));
                }
            }
        }
        panel.mHigh = panel.mHigh > 0.0 ? panel.mHigh * kHeadroomShare : 1.0;
        panel.mLow = -panel.mHigh;
        picture->mWhole.push_back(std::move(panel));
    }
}

/**
 * Adds the expected samples to those that are drawn.
 * @return a text about them for the caption
 */
std::string addExpected(const NightSummary& night, const PlaySummary* play, qint64 fromNs,
                        qint64 toNs, ExpectedSamples* expected, std::vector<DrawnSamples>* drawn)
{
    if (play == nullptr) {
        return "the expected samples are not drawn: there was no play";
    }
    try {
        DrawnSamples samples;
        samples.mIsExpected = true;
        for (const ExpectedSample& sample : expected->around(night, *play, fromNs, toNs)) {
            samples.mStampsNs.push_back(sample.mStampNs);
            samples.mContents.push_back(*sample.mContent);
        }
        // Drawn first, so that the expected samples show only where the arrived ones differ.
        drawn->insert(drawn->begin(), std::move(samples));
        return "dashed and lighter, where different: the expected samples";
    } catch (const base::CaseError& error) {
        return std::string("the expected samples are not drawn: ") + error.what();
    }
}
} // namespace

plot::Picture findingPicture(const std::string& folder, const NightSummary& night,
                             const PlaySummary* play, const journal::Finding& finding,
                             ExpectedSamples* expected)
{
    std::vector<DrawnSamples> drawn{readKept(folder + "/" + finding.mSamplesFile)};
    const auto [first, last] =
        std::minmax_element(drawn[0].mStampsNs.begin(), drawn[0].mStampsNs.end());
    const qint64 fromNs = *first;
    const qint64 toNs = *last;
    if (fromNs == toNs) {
        throw base::CaseError(finding.mSamplesFile + ": all samples have the same time stamp");
    }
    plot::Picture picture;
    picture.mTitle = (play == nullptr ? "Outside the plays" : playText(night, *play)) +
                     ": samples at the driver";
    picture.mCaption =
        "from " + utcText(fromNs) + "; " + addExpected(night, play, fromNs, toNs, expected, &drawn);
    const FindingPictureMaker maker(fromNs, std::move(drawn));
    maker.addPanels(&picture);
    picture.mEnd = maker.secondsOf(toNs);
    if (finding.mStampNs && *finding.mStampNs >= fromNs && *finding.mStampNs <= toNs) {
        picture.mCommands.push_back({maker.secondsOf(*finding.mStampNs), finding.mKind});
    }
    return picture;
}

} // namespace report
