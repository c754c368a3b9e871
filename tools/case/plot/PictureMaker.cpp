#include "plot/PictureMaker.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <functional>

#include "base/CaseError.h"
#include "explain/Explanation.h"
#include "explain/RecordWindow.h"
#include "plot/Difference.h"
#include "plot/LabelText.h"
#include "plot/Overview.h"
#include "plot/PlayedBar.h"
#include "plot/ShiftedSource.h"
#include "plot/Waveforms.h"
#include "waveform/DriverRecordingSource.h"

namespace plot {

namespace {
/** Periods shown before and behind a moment. */
constexpr double kPeriodsBefore = 2.25;
constexpr double kPeriodsBehind = 2.75;
constexpr double kPeriodsAround = 5.0; ///< on both sides of one that was asked for

/** Where nothing changes in the signal itself, these are shown. */
constexpr double kSwitchWeight = 0.04;
constexpr double kCommandWeight = 0.03;

/** Above the largest value of a panel. */
constexpr double kHeadroom = 1.15;

/** Letters of a name in the title of a waveform. */
constexpr size_t kLongestName = 24;

/** An axis of Hz ends at a multiple of this, and so far away at least. */
constexpr double kHertzStep = 5.0;

/** One of the inputs as it is read: for the whole, then for its waveforms. */
struct DrawnSignal
{
    std::string mPath;
    waveform::SignalDescription mDescription;
    DrawnChannels mChannels;
    Overview mOverview;
    bool mIsRecording;

    /** @param sources of an import of the signal; empty for none */
    DrawnSignal(const std::string& path, const waveform::SignalSource& source,
                const std::vector<std::string>& sources, size_t columns)
        : mPath(path),
          mDescription(source.description()),
          mChannels(mDescription, sources),
          mOverview(mDescription, mChannels, columns),
          mIsRecording(dynamic_cast<const waveform::DriverRecordingSource*>(&source) != nullptr)
    {
    }
};

std::string baseName(const std::string& path)
{
    return QFileInfo(QString::fromStdString(path)).fileName().toStdString();
}

/** A signal as a part of its recording: itself, but for an import. */
waveform::ImportMark partOf(const waveform::SignalDescription& description)
{
    return description.mImport.value_or(
        waveform::ImportMark{description.mFileName, description.mStartTime, 0.0, {}});
}

/** The two files of a recording have the same name but for its suffix. */
bool isSameRecording(const waveform::ImportMark& left, const waveform::ImportMark& right)
{
    const auto stemOf = [](const waveform::ImportMark& mark) {
        return QFileInfo(QString::fromStdString(mark.mFile)).completeBaseName();
    };
    return stemOf(left) == stemOf(right) && left.mStart == right.mStart;
}

void refuseUndrawable(const DrawnSignal& signal)
{
    const Overview& overview = signal.mOverview;
    if (overview.begin() >= overview.end()) {
        throw base::CaseError(signal.mPath +
                              ": expected two samples at least, one behind the other");
    }
    for (size_t i = 0; i < signal.mChannels.groups().size(); ++i) {
        if (!std::isfinite(overview.largestRms(i))) {
            throw base::CaseError(signal.mPath + ": has values that are too large to be drawn");
        }
    }
}

std::vector<Point> scaled(std::vector<Point> points, double factor)
{
    for (Point& point : points) {
        point.mY *= factor;
    }
    return points;
}

/** Makes the picture; a class only to share what all steps need. */
class Maker
{
public:
    explicit Maker(const PictureRequest& request) : mRequest(request) {}

    Picture make();

private:
    using CurveOf = std::function<std::vector<Point>(size_t curve)>;

    bool areImported() const;
    std::unique_ptr<waveform::SignalSource> openSource(size_t input) const;
    void readWhole(size_t input);
    void chooseUnits();
    void addTexts();
    void addPlayed();
    void addWhole();
    void addHertz();
    void addDifferences();
    void addDifference(const Difference& difference, size_t group);
    std::vector<WaveColumn> chooseColumns() const;
    std::vector<Moment> moments() const;
    void addWaveforms();
    void addWavePanels(size_t signal, const Waveforms& waves, size_t column);
    void addCurves(size_t signal, size_t group, const CurveOf& curveOf, Panel* panel) const;

    const std::vector<DrawnGroup>& groups() const { return mSignals[0]->mChannels.groups(); }

    const PictureRequest& mRequest;
    std::vector<waveform::ImportMark> mParts; ///< of each input
    std::vector<std::unique_ptr<DrawnSignal>> mSignals;
    std::vector<ShownUnit> mUnits; ///< of each group
    Picture mPicture;
};

Picture Maker::make()
{
    for (const std::string& path : mRequest.mInputs) {
        mParts.push_back(partOf(input::openInput(path, mRequest.mInputOptions)->description()));
    }
    for (size_t i = 0; i < mRequest.mInputs.size(); ++i) {
        readWhole(i);
    }
    chooseUnits();
    addTexts();
    addPlayed();
    addWhole();
    addHertz();
    if (mSignals.size() > 1) {
        addDifferences();
    }
    mPicture.mColumns = chooseColumns();
    addWaveforms();
    return mPicture;
}

/** Whether both are parts of the same recording, one of them at least by an import. */
bool Maker::areImported() const
{
    const auto isImport = [](const waveform::ImportMark& part) { return !part.mSources.empty(); };
    return mParts.size() > 1 && isSameRecording(mParts[0], mParts[1]) &&
           std::any_of(mParts.begin(), mParts.end(), isImport);
}

/** An import and the recording that it was made from have the times of the first one. */
std::unique_ptr<waveform::SignalSource> Maker::openSource(size_t input) const
{
    auto source = input::openInput(mRequest.mInputs[input], mRequest.mInputOptions);
    const double shift = areImported() ? mParts[input].mSeconds - mParts[0].mSeconds : 0.0;
    return shift == 0.0 ? std::move(source)
                        : std::make_unique<ShiftedSource>(std::move(source), shift);
}

void Maker::readWhole(size_t input)
{
    const std::string& path = mRequest.mInputs[input];
    const auto source = openSource(input);
    const auto sources = areImported() ? mParts[1 - input].mSources : std::vector<std::string>();
    auto signal = std::make_unique<DrawnSignal>(path, *source, sources, mRequest.mColumns);
    const DrawnChannels& channels = signal->mChannels;
    signal->mOverview.read(*source);
    refuseUndrawable(*signal);
    for (const std::string& remark : source->description().mRemarks) {
        fmt::print(stderr, "remark: {}: {}\n", path, remark);
    }
    if (!channels.leftOut().empty()) {
        fmt::print(stderr, "not drawn, for want of place: {}\n",
                   fmt::join(channels.leftOut(), ", "));
    }
    mPicture.mBegin = std::min(mPicture.mBegin, signal->mOverview.begin());
    mPicture.mEnd = std::max(mPicture.mEnd, signal->mOverview.end());
    mSignals.push_back(std::move(signal));
}

void Maker::chooseUnits()
{
    for (size_t i = 0; i < groups().size(); ++i) {
        mUnits.push_back(shownUnit(groups()[i], mSignals[0]->mOverview.largestRms(i)));
    }
}

void Maker::addTexts()
{
    const DrawnSignal& signal = *mSignals[0];
    const waveform::SignalDescription& about = signal.mDescription;
    mPicture.mTitle = (signal.mIsRecording ? "What arrived at the driver: " : "") +
                      baseName(signal.mPath) +
                      (about.mStation.empty() ? "" : ", " + about.mStation);
    mPicture.mCaption = fmt::format("{}, {:.4g} s", about.mFormat, signal.mOverview.end());
    if (!about.mStartTime.empty()) {
        mPicture.mCaption += ", from " + about.mStartTime;
    }
    if (const size_t count = signal.mChannels.leftOut().size(); count > 0) {
        mPicture.mCaption +=
            fmt::format("; {} {} not drawn", count, count == 1 ? "channel is" : "channels are");
    }
    if (mSignals.size() > 1) {
        mPicture.mCaption += "; dashed and lighter: " + baseName(mSignals[1]->mPath);
    }
}

void Maker::addPlayed()
{
    if (mRequest.mEvents.empty() && mRequest.mConfiguration.empty()) {
        return;
    }
    const std::string& path = mSignals[0]->mPath;
    if (!mSignals[0]->mIsRecording) {
        throw base::CaseError(path +
                              ": expected a recording of the driver with --events or --config");
    }
    explain::RecordWindow window(path);
    PlayedBar bar(window.ahead() > 0 ? waveform::stampNsOf(window[0]) : 0);
    auto events = mRequest.mEvents.empty()
                      ? nullptr
                      : std::make_unique<explain::EventTimeline>(mRequest.mEvents);
    if (!mRequest.mConfiguration.empty()) {
        const explain::PlayPlan plan(mRequest.mConfiguration, mRequest.mDirectory);
        explain::Explanation(plan, path, std::move(events), bar).run();
    } else {
        events->finish();
        for (const explain::SentCommand& command : events->commands()) {
            bar.addCommand(command);
        }
    }
    mPicture.mPlayed = bar.parts();
    mPicture.mCommands = bar.commands();
    std::stable_sort(
        mPicture.mCommands.begin(), mPicture.mCommands.end(),
        [](const GivenCommand& a, const GivenCommand& b) { return a.mSeconds < b.mSeconds; });
}

/** Widens the panel so that all its curves are seen, to both sides of 0 or from 0 on. */
void fit(Panel* panel, bool isSigned)
{
    double most = 0.0;
    for (const Curve& curve : panel->mCurves) {
        for (const Point& point : curve.mPoints) {
            most = std::max(most, std::abs(point.mY));
        }
    }
    panel->mHigh = most > 0.0 ? most * kHeadroom : 1.0;
    panel->mLow = isSigned ? -panel->mHigh : 0.0;
}

void Maker::addWhole()
{
    for (size_t i = 0; i < groups().size(); ++i) {
        Panel panel{mUnits[i].mName + " rms", 0.0, 1.0, {}};
        for (size_t j = 0; j < mSignals.size(); ++j) {
            const Overview& overview = mSignals[j]->mOverview;
            addCurves(
                j, i, [&](size_t curve) { return overview.rms(curve); }, &panel);
        }
        fit(&panel, false);
        mPicture.mWhole.push_back(panel);
    }
}

void Maker::addCurves(size_t signal, size_t group, const CurveOf& curveOf, Panel* panel) const
{
    const DrawnGroup* const drawn = mSignals[signal]->mChannels.groupLike(groups()[group]);
    if (drawn == nullptr) {
        return;
    }
    for (const DrawnChannel& channel : drawn->mChannels) {
        panel->mCurves.push_back({channel.mLabel, channel.mPlace % kConductorColours, signal > 0,
                                  scaled(curveOf(channel.mCurve), mUnits[group].mFactor)});
    }
}

void Maker::addHertz()
{
    Panel panel{"Hz", 1e9, 0.0, {}, true};
    for (size_t i = 0; i < mSignals.size(); ++i) {
        const Curve curve{"f", kFrequencyColour, i > 0, mSignals[i]->mOverview.hertz()};
        for (const Point& point : curve.mPoints) {
            panel.mLow = std::min(panel.mLow, point.mY);
            panel.mHigh = std::max(panel.mHigh, point.mY);
        }
        panel.mCurves.push_back(curve);
    }
    if (panel.mHigh == 0.0) {
        return;
    }
    panel.mLow = (std::floor(panel.mLow / kHertzStep + 0.1) - 1.0) * kHertzStep;
    panel.mHigh = (std::ceil(panel.mHigh / kHertzStep - 0.1) + 1.0) * kHertzStep;
    mPicture.mWhole.push_back(panel);
}

void Maker::addDifferences()
{
    Difference difference(mSignals[0]->mChannels, mSignals[1]->mChannels, mRequest.mColumns);
    const auto left = openSource(0);
    const auto right = openSource(1);
    if (!difference.read(*left, *right)) {
        mPicture.mCaption += ", sampled at other instants";
        return;
    }
    for (size_t i = 0; i < groups().size(); ++i) {
        addDifference(difference, i);
    }
}

void Maker::addDifference(const Difference& difference, size_t group)
{
    if (difference.channels(group) == 0) {
        return;
    }
    const Difference::Largest& largest = difference.largest(group);
    const ShownUnit unit = shownUnit(groups()[group], largest.mValue);
    mPicture.mCaption +=
        fmt::format("; largest difference {:.3g} {}", largest.mValue * unit.mFactor, unit.mName);
    if (largest.mValue == 0.0) {
        return;
    }
    mPicture.mCaption += fmt::format(" at {:.6g} s", largest.mSeconds);
    Panel panel{"Δ " + unit.mName, 0.0, 1.0, {}};
    for (size_t i = 0; i < difference.channels(group); ++i) {
        const DrawnChannel& channel = difference.channel(group, i);
        panel.mCurves.push_back({channel.mLabel, channel.mPlace % kConductorColours, false,
                                 scaled(difference.curve(group, i), unit.mFactor)});
    }
    fit(&panel, true);
    mPicture.mWhole.push_back(panel);
}

std::vector<Moment> Maker::moments() const
{
    std::vector<Moment> moments = mSignals[0]->mOverview.moments();
    for (size_t i = 1; i < mPicture.mPlayed.size(); ++i) {
        const PlayedPart& part = mPicture.mPlayed[i];
        moments.push_back(
            {part.mFrom, kSwitchWeight,
             fmt::format("{:.4g} s: {} begins", part.mFrom, shortened(part.mText, kLongestName))});
    }
    for (const GivenCommand& command : mPicture.mCommands) {
        moments.push_back({command.mSeconds, kCommandWeight,
                           fmt::format("{:.4g} s: {}", command.mSeconds, command.mText)});
    }
    const double period = mSignals[0]->mOverview.period();
    return chooseMoments(moments, mRequest.mMaxMoments, period * (kPeriodsBefore + kPeriodsBehind));
}

std::vector<WaveColumn> Maker::chooseColumns() const
{
    const double begin = mPicture.mBegin;
    const double end = mPicture.mEnd;
    const double period = mSignals[0]->mOverview.period();
    if (mRequest.mFrom || mRequest.mTo) {
        const double from = mRequest.mFrom.value_or(begin);
        const double to = std::min(mRequest.mTo.value_or(end), end);
        if (from >= to) {
            throw base::CaseError(fmt::format("nothing to show from {} s to {} s", from, to));
        }
        return {{fmt::format("{:.6g} s to {:.6g} s", from, to), from, to, std::nullopt, {}}};
    }
    if (mRequest.mAt) {
        if (*mRequest.mAt > end) {
            throw base::CaseError(
                fmt::format("nothing to show at {} s: the end is at {} s", *mRequest.mAt, end));
        }
        return {{fmt::format("around {:.6g} s", *mRequest.mAt),
                 std::max(begin, *mRequest.mAt - kPeriodsAround * period),
                 std::min(end, *mRequest.mAt + kPeriodsAround * period),
                 mRequest.mAt,
                 {}}};
    }
    std::vector<WaveColumn> columns;
    for (const Moment& moment : moments()) {
        columns.push_back({moment.mText,
                           std::max(begin, moment.mSeconds - kPeriodsBefore * period),
                           std::min(end, moment.mSeconds + kPeriodsBehind * period),
                           moment.mSeconds,
                           {}});
    }
    if (columns.empty()) {
        const double width = 2.0 * kPeriodsAround * period;
        columns.push_back({"the beginning", 0.0, std::min(end, width), std::nullopt, {}});
    }
    return columns;
}

void Maker::addWaveforms()
{
    std::vector<Waveforms::Stretch> stretches;
    for (WaveColumn& column : mPicture.mColumns) {
        stretches.push_back({column.mFrom, column.mTo});
        for (size_t i = 0; i < groups().size(); ++i) {
            const std::string& quantity = groups()[i].mQuantity;
            const std::string axis = (quantity.empty() ? "" : quantity + ", ") + mUnits[i].mName;
            column.mPanels.push_back({axis, 0.0, 1.0, {}});
        }
    }
    for (size_t i = 0; i < mSignals.size(); ++i) {
        Waveforms waves(mSignals[i]->mChannels, stretches,
                        mRequest.mColumns / std::max<size_t>(stretches.size(), 1));
        waves.read(*openSource(i));
        for (size_t column = 0; column < stretches.size(); ++column) {
            addWavePanels(i, waves, column);
        }
    }
    // The columns have their axes in common.
    for (size_t i = 0; i < groups().size(); ++i) {
        double high = 0.0;
        for (WaveColumn& column : mPicture.mColumns) {
            fit(&column.mPanels[i], true);
            high = std::max(high, column.mPanels[i].mHigh);
        }
        for (WaveColumn& column : mPicture.mColumns) {
            column.mPanels[i].mLow = -high;
            column.mPanels[i].mHigh = high;
        }
    }
}

void Maker::addWavePanels(size_t signal, const Waveforms& waves, size_t column)
{
    std::vector<Panel>& panels = mPicture.mColumns[column].mPanels;
    for (size_t i = 0; i < panels.size(); ++i) {
        addCurves(
            signal, i, [&](size_t curve) { return waves.curve(column, curve); }, &panels[i]);
    }
}
} // namespace

Picture makePicture(const PictureRequest& request)
{
    return Maker(request).make();
}

} // namespace plot
