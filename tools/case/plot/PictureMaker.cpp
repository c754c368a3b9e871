#include "plot/PictureMaker.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <functional>

#include "base/CaseError.h"
#include "explain/Explanation.h"
#include "plot/PictureReader.h"
#include "plot/PlayedBar.h"
#include "waveform/DriverRecordingSource.h"

namespace plot {

namespace {
/** Factor for the room above the largest value of a panel. */
constexpr double kHeadroom = 1.15;

/** An axis in Hz ends at multiples of this, about one step beyond the curve. */
constexpr double kHertzStep = 5.0;

/** Max number of names in a remark. */
constexpr size_t kMaxNames = 10;

std::string baseName(const std::string& path)
{
    return QFileInfo(QString::fromStdString(path)).fileName().toStdString();
}

/** The recording of which a signal is a part; the signal itself, unless it is an import. */
waveform::ImportMark partOf(const waveform::SignalDescription& description)
{
    return description.mImport.value_or(
        waveform::ImportMark{description.mFileName, description.mStartTime, 0.0, {}});
}

/** The two files of a recording differ only in the suffix of their names. */
bool isSameRecording(const waveform::ImportMark& left, const waveform::ImportMark& right)
{
    const auto stemOf = [](const waveform::ImportMark& mark) {
        return QFileInfo(QString::fromStdString(mark.mFile)).completeBaseName();
    };
    return stemOf(left) == stemOf(right) && left.mStart == right.mStart;
}

void refuseUndrawable(const std::string& path, const DrawnSignal& signal)
{
    const Overview& overview = signal.overview();
    if (overview.begin() >= overview.end()) {
        throw base::CaseError(path + ": expected samples at two or more instants");
    }
    for (size_t i = 0; i < signal.channels().groups().size(); ++i) {
        if (!std::isfinite(overview.largestRms(i))) {
            throw base::CaseError(path + ": has values that are too large to be drawn");
        }
    }
}

std::string listOf(std::vector<std::string> names)
{
    const size_t others = names.size() - std::min(names.size(), kMaxNames);
    names.resize(names.size() - others);
    return fmt::format("{}{}", fmt::join(names, ", "),
                       others > 0 ? fmt::format(" and {} others", others) : "");
}

std::vector<Point> scaled(std::vector<Point> points, double factor)
{
    for (Point& point : points) {
        point.mY *= factor;
    }
    return points;
}

/** Whether both are parts of the same recording and at least one is an import. */
bool areOfOneImport(const std::vector<waveform::ImportMark>& parts)
{
    const auto isImport = [](const waveform::ImportMark& part) { return !part.mSources.empty(); };
    return parts.size() > 1 && isSameRecording(parts[0], parts[1]) &&
           std::any_of(parts.begin(), parts.end(), isImport);
}

/** The source as a recording of the driver; null if it is not one. */
const waveform::DriverRecordingSource* asRecording(const waveform::SignalSource& source)
{
    return dynamic_cast<const waveform::DriverRecordingSource*>(&source);
}

/** Makes the picture. */
class Maker
{
public:
    explicit Maker(const PictureRequest& request) : mRequest(request) {}

    Picture make(base::ProgressLine& progress);

private:
    using CurveOf = std::function<std::vector<Point>(size_t curve)>;

    void openInputs();
    void addPlayed(const waveform::SignalSource& source);
    void finishSignal(size_t input);
    void chooseUnits();
    void addTexts();
    void addWhole();
    void addHertz();
    void addDifference(const Difference& difference, size_t group);
    void addWaveforms(const std::vector<ShownSpan>& shown);
    WaveColumn columnOf(const ShownSpan& shown, size_t columns) const;
    void addCurves(size_t signal, size_t group, const CurveOf& curveOf, Panel* panel) const;

    const std::vector<DrawnGroup>& groups() const { return mSignals[0]->channels().groups(); }

    const PictureRequest& mRequest;
    std::vector<std::unique_ptr<DrawnSignal>> mSignals;
    std::unique_ptr<Difference> mDifference;
    bool mIsRecording = false;
    std::vector<ShownUnit> mUnits; ///< of each group
    Picture mPicture;
};

Picture Maker::make(base::ProgressLine& progress)
{
    openInputs();
    const MomentChooser chooser(mRequest.mMoments, mPicture.mPlayed, mPicture.mCommands);
    readSignals(mSignals, mDifference.get(), chooser, mRequest.mColumns, progress);
    for (size_t i = 0; i < mSignals.size(); ++i) {
        finishSignal(i);
    }
    chooseUnits();
    addTexts();
    addWhole();
    addHertz();
    if (mDifference && !mDifference->isKnown()) {
        mPicture.mCaption += ", sampled at other instants";
    }
    for (size_t i = 0; mDifference && mDifference->isKnown() && i < groups().size(); ++i) {
        addDifference(*mDifference, i);
    }
    addWaveforms(chooser.choose(mSignals[0]->overview(), mPicture.mBegin, mPicture.mEnd));
    return std::move(mPicture);
}

/** An import and its source recording are drawn with the times of the first input. */
void Maker::openInputs()
{
    std::vector<std::unique_ptr<waveform::SignalSource>> sources;
    std::vector<waveform::ImportMark> parts;
    for (const std::string& path : mRequest.mInputs) {
        sources.push_back(input::openInput(path, mRequest.mInputOptions));
        parts.push_back(partOf(sources.back()->description()));
    }
    if (!mRequest.mEvents.empty() || !mRequest.mConfiguration.empty()) {
        addPlayed(*sources.front());
    }
    mIsRecording = asRecording(*sources[0]) != nullptr;
    const bool areImported = areOfOneImport(parts);
    for (size_t i = 0; i < sources.size(); ++i) {
        mSignals.push_back(std::make_unique<DrawnSignal>(
            std::move(sources[i]),
            areImported ? parts[parts.size() - 1 - i].mSources : std::vector<std::string>(),
            areImported ? parts[i].mSeconds - parts[0].mSeconds : 0.0, mRequest.mColumns));
    }
    if (mSignals.size() > 1) {
        mDifference = std::make_unique<Difference>(mSignals[0]->channels(), mSignals[1]->channels(),
                                                   mRequest.mColumns);
    }
}

void Maker::addPlayed(const waveform::SignalSource& source)
{
    const std::string& path = mRequest.mInputs[0];
    const waveform::DriverRecordingSource* const recording = asRecording(source);
    if (recording == nullptr) {
        throw base::CaseError(path +
                              ": expected a recording of the driver with --events or --config");
    }
    PlayedBar bar(recording->firstStampNs());
    const std::vector<std::string> events =
        mRequest.mEvents.empty() ? std::vector<std::string>() : std::vector{mRequest.mEvents};
    if (!mRequest.mConfiguration.empty()) {
        const explain::PlayPlan plan(mRequest.mConfiguration, mRequest.mDirectory);
        explain::RecordingReader records(path);
        explain::explainRecording(plan, records, events, bar);
    } else {
        for (const explain::Event& command : explain::commandsIn(events)) {
            bar.addCommand(command);
        }
    }
    mPicture.mPlayed = bar.parts();
    mPicture.mCommands = bar.commands();
    std::stable_sort(
        mPicture.mCommands.begin(), mPicture.mCommands.end(),
        [](const GivenCommand& a, const GivenCommand& b) { return a.mSeconds < b.mSeconds; });
}

void Maker::finishSignal(size_t input)
{
    const std::string& path = mRequest.mInputs[input];
    const DrawnSignal& signal = *mSignals[input];
    refuseUndrawable(path, signal);
    for (const std::string& remark : signal.description().mRemarks) {
        mPicture.mRemarks.push_back(path + ": " + remark);
    }
    const std::vector<std::string>& leftOut = signal.channels().leftOut();
    if (!leftOut.empty()) {
        mPicture.mRemarks.push_back(
            fmt::format("{}: not drawn, there is no room: {}", path, listOf(leftOut)));
    }
    mPicture.mBegin = std::min(mPicture.mBegin, signal.overview().begin());
    mPicture.mEnd = std::max(mPicture.mEnd, signal.overview().end());
}

void Maker::chooseUnits()
{
    for (size_t i = 0; i < groups().size(); ++i) {
        mUnits.push_back(shownUnit(groups()[i], mSignals[0]->overview().largestRms(i)));
    }
}

void Maker::addTexts()
{
    const DrawnSignal& signal = *mSignals[0];
    const waveform::SignalDescription& about = signal.description();
    mPicture.mTitle = (mIsRecording ? "What arrived at the driver: " : "") +
                      baseName(mRequest.mInputs[0]) +
                      (about.mStation.empty() ? "" : ", " + about.mStation);
    mPicture.mCaption = fmt::format("{}, {:.4g} s", about.mFormat, signal.overview().end());
    if (!about.mStartTime.empty()) {
        mPicture.mCaption += ", from " + about.mStartTime;
    }
    if (const size_t count = signal.channels().leftOut().size(); count > 0) {
        mPicture.mCaption +=
            fmt::format("; {} {} not drawn", count, count == 1 ? "channel is" : "channels are");
    }
    if (mSignals.size() > 1) {
        mPicture.mCaption += "; dashed and lighter: " + baseName(mRequest.mInputs[1]);
    }
}

/** Sets the range of the panel to show all its curves: symmetric around 0, or from 0 on. */
void fit(Panel* panel, bool isSigned)
{
    double max = 0.0;
    for (const Curve& curve : panel->mCurves) {
        for (const Point& point : curve.mPoints) {
            max = std::max(max, std::abs(point.mY));
        }
    }
    panel->mHigh = max > 0.0 ? max * kHeadroom : 1.0;
    panel->mLow = isSigned ? -panel->mHigh : 0.0;
}

void Maker::addWhole()
{
    for (size_t i = 0; i < groups().size(); ++i) {
        Panel panel{mUnits[i].mName + " rms", 0.0, 1.0, {}};
        for (size_t j = 0; j < mSignals.size(); ++j) {
            const Overview& overview = mSignals[j]->overview();
            addCurves(
                j, i, [&](size_t curve) { return overview.rms(curve); }, &panel);
        }
        fit(&panel, false);
        mPicture.mWhole.push_back(panel);
    }
}

void Maker::addCurves(size_t signal, size_t group, const CurveOf& curveOf, Panel* panel) const
{
    const DrawnGroup* const drawn = mSignals[signal]->channels().groupLike(groups()[group]);
    if (drawn == nullptr) {
        return;
    }
    for (const DrawnChannel& channel : drawn->mChannels) {
        panel->mCurves.push_back({channel.mLabel, channel.mConductor % kConductorColours,
                                  signal > 0,
                                  scaled(curveOf(channel.mCurve), mUnits[group].mFactor)});
    }
}

void Maker::addHertz()
{
    Panel panel{"Hz", 1e9, 0.0, {}, true};
    for (size_t i = 0; i < mSignals.size(); ++i) {
        const Curve curve{"f", kFrequencyColour, i > 0, mSignals[i]->overview().hertz()};
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
        panel.mCurves.push_back({channel.mLabel, channel.mConductor % kConductorColours, false,
                                 scaled(difference.curve(group, i), unit.mFactor)});
    }
    fit(&panel, true);
    mPicture.mWhole.push_back(panel);
}

void Maker::addWaveforms(const std::vector<ShownSpan>& shown)
{
    for (const ShownSpan& span : shown) {
        mPicture.mColumns.push_back(columnOf(span, mRequest.mColumns / shown.size()));
    }
    // All columns share the same axes.
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

WaveColumn Maker::columnOf(const ShownSpan& shown, size_t columns) const
{
    WaveColumn column{shown.mTitle,
                      std::max(mPicture.mBegin, shown.mSpan.mFrom),
                      std::min(mPicture.mEnd, shown.mSpan.mTo),
                      shown.mMark,
                      {}};
    for (size_t i = 0; i < groups().size(); ++i) {
        const std::string& quantity = groups()[i].mQuantity;
        const std::string axis = (quantity.empty() ? "" : quantity + ", ") + mUnits[i].mName;
        column.mPanels.push_back({axis, 0.0, 1.0, {}});
        for (size_t j = 0; j < mSignals.size(); ++j) {
            const WaveformWindows& windows = mSignals[j]->windows();
            addCurves(
                j, i, [&](size_t curve) { return windows.curve(shown.mSpan, curve, columns); },
                &column.mPanels.back());
        }
    }
    return column;
}
} // namespace

Picture makePicture(const PictureRequest& request, base::ProgressLine& progress)
{
    return Maker(request).make(progress);
}

} // namespace plot
