#include "plot/PictureMaker.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "explain/Explanation.h"
#include "explain/RecordWindow.h"
#include "plot/Difference.h"
#include "plot/Overview.h"
#include "plot/PlayedBar.h"
#include "plot/ShiftedSource.h"
#include "plot/Waveforms.h"
#include "signal/DriverRecordingSource.h"

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

/** An axis of Hz ends at a multiple of this, and so far away at least. */
constexpr double kHertzStep = 5.0;

/** One of the inputs as it is read: for the whole, then for its waveforms. */
struct DrawnSignal
{
    std::string mPath;
    SignalDescription mDescription;
    DrawnChannels mChannels;
    Overview mOverview;
    bool mIsRecording;

    DrawnSignal(const std::string& path, const SignalSource& source, size_t columns)
        : mPath(path),
          mDescription(source.description()),
          mChannels(mDescription),
          mOverview(mDescription, mChannels, columns),
          mIsRecording(dynamic_cast<const DriverRecordingSource*>(&source) != nullptr)
    {
    }
};

std::string baseName(const std::string& path)
{
    return QFileInfo(QString::fromStdString(path)).fileName().toStdString();
}

/** Makes the picture; a class only to share what all steps need. */
class Maker
{
public:
    explicit Maker(const PictureRequest& request) : mRequest(request) {}

    Picture make();

private:
    std::unique_ptr<SignalSource> openSource(const std::string& path) const;
    void readWhole(const std::string& path);
    void addTexts();
    void addPlayed();
    void addWhole();
    void addHertz();
    void addDifference();
    std::vector<WaveColumn> chooseColumns() const;
    std::vector<Moment> moments() const;
    void addWaveforms();
    void addWavePanels(size_t signal, const Waveforms& waves, size_t column);

    const PictureRequest& mRequest;
    std::vector<std::unique_ptr<DrawnSignal>> mSignals;
    Picture mPicture;
};

Picture Maker::make()
{
    for (const std::string& path : mRequest.mInputs) {
        readWhole(path);
    }
    addTexts();
    addPlayed();
    addWhole();
    addHertz();
    if (mSignals.size() > 1) {
        addDifference();
    }
    mPicture.mColumns = chooseColumns();
    addWaveforms();
    return mPicture;
}

/** An import and the recording that it was made from have the times of the first one. */
std::unique_ptr<SignalSource> Maker::openSource(const std::string& path) const
{
    auto source = openInput(path, mRequest.mInputOptions);
    const auto beginOf = [](const SignalDescription& description) {
        return isOfDevice(description) ? description.mImportedFrom : 0.0;
    };
    if (mSignals.empty() || path == mSignals[0]->mPath) {
        return source;
    }
    const auto begin = beginOf(source->description());
    const auto reference = beginOf(mSignals[0]->mDescription);
    if (!begin || !reference || *begin == *reference) {
        return source;
    }
    return std::make_unique<ShiftedSource>(std::move(source), *begin - *reference);
}

void Maker::readWhole(const std::string& path)
{
    const auto source = openSource(path);
    auto signal = std::make_unique<DrawnSignal>(path, *source, mRequest.mColumns);
    const DrawnChannels& channels = signal->mChannels;
    signal->mOverview.read(*source);
    if (signal->mOverview.period() == 0.0) {
        throw CaseError(path + ": holds no sample");
    }
    if (!channels.leftOut().empty()) {
        fmt::print(stderr, "not drawn, for want of place: {}\n",
                   fmt::join(channels.leftOut(), ", "));
    }
    mPicture.mBegin = std::min(mPicture.mBegin, signal->mOverview.begin());
    mPicture.mEnd = std::max(mPicture.mEnd, signal->mOverview.end());
    mSignals.push_back(std::move(signal));
}

void Maker::addTexts()
{
    const DrawnSignal& signal = *mSignals[0];
    const SignalDescription& about = signal.mDescription;
    mPicture.mTitle = (signal.mIsRecording ? "What arrived at the driver: " : "") +
                      baseName(signal.mPath) +
                      (about.mStation.empty() ? "" : ", " + about.mStation);
    mPicture.mCaption = fmt::format("{}, {:.4g} s", about.mFormat, signal.mOverview.end());
    if (!about.mStartTime.empty()) {
        mPicture.mCaption += ", from " + about.mStartTime;
    }
    if (!signal.mChannels.leftOut().empty()) {
        mPicture.mCaption +=
            fmt::format("; {} channels are not drawn", signal.mChannels.leftOut().size());
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
        throw CaseError(path + ": expected a recording of the driver with --events or --config");
    }
    RecordWindow window(path);
    PlayedBar bar(window.ahead() > 0 ? stampNsOf(window[0]) : 0);
    auto events =
        mRequest.mEvents.empty() ? nullptr : std::make_unique<EventTimeline>(mRequest.mEvents);
    if (!mRequest.mConfiguration.empty()) {
        const PlayPlan plan(mRequest.mConfiguration, mRequest.mDirectory);
        Explanation(plan, path, std::move(events), bar).run();
    } else {
        events->finish();
        for (const SentCommand& command : events->commands()) {
            bar.addCommand(command.mText, command.mArrivalNs);
        }
    }
    mPicture.mPlayed = bar.parts();
    mPicture.mCommands = bar.commands();
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
    size_t first = 0;
    for (size_t i = 0; i < mSignals[0]->mChannels.groups().size(); ++i) {
        const DrawnGroup& group = mSignals[0]->mChannels.groups()[i];
        Panel panel{group.mUnit + " rms", 0.0, 1.0, {}};
        for (size_t j = 0; j < group.mChannels.size(); ++j) {
            panel.mCurves.push_back(
                {group.mChannels[j].mLabel, j, false, mSignals[0]->mOverview.rms(first + j)});
        }
        first += group.mChannels.size();
        mPicture.mWhole.push_back(panel);
    }
    if (mSignals.size() > 1) {
        first = 0;
        const auto& groups = mSignals[1]->mChannels.groups();
        for (size_t i = 0; i < std::min(groups.size(), mPicture.mWhole.size()); ++i) {
            for (size_t j = 0; j < groups[i].mChannels.size(); ++j) {
                mPicture.mWhole[i].mCurves.push_back(
                    {"", j, true, mSignals[1]->mOverview.rms(first + j)});
            }
            first += groups[i].mChannels.size();
        }
    }
    for (Panel& panel : mPicture.mWhole) {
        fit(&panel, false);
    }
}

void Maker::addHertz()
{
    Panel panel{"Hz", 1e9, 0.0, {}};
    for (size_t i = 0; i < mSignals.size(); ++i) {
        const Curve curve{i == 0 ? "f" : "", 0, i > 0, mSignals[i]->mOverview.hertz()};
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

void Maker::addDifference()
{
    const DrawnChannels& channels = mSignals[0]->mChannels;
    Difference difference(channels, mSignals[1]->mChannels, mRequest.mColumns);
    const auto left = openSource(mSignals[0]->mPath);
    const auto right = openSource(mSignals[1]->mPath);
    if (!difference.read(*left, *right)) {
        mPicture.mCaption += ", sampled at other instants";
        return;
    }
    for (size_t i = 0; i < channels.groups().size() && difference.channels(i) > 0; ++i) {
        const DrawnGroup& group = channels.groups()[i];
        const Difference::Largest& largest = difference.largest(i);
        mPicture.mCaption +=
            fmt::format("; largest difference {:.3g} {}", largest.mValue, group.mUnit);
        if (largest.mValue == 0.0) {
            continue;
        }
        mPicture.mCaption += fmt::format(" at {:.6g} s", largest.mSeconds);
        Panel panel{"Δ " + group.mUnit, 0.0, 1.0, {}};
        for (size_t j = 0; j < difference.channels(i); ++j) {
            panel.mCurves.push_back({group.mChannels[j].mLabel, j, false, difference.curve(i, j)});
        }
        fit(&panel, true);
        mPicture.mWhole.push_back(panel);
    }
}

std::vector<Moment> Maker::moments() const
{
    std::vector<Moment> moments = mSignals[0]->mOverview.moments();
    for (size_t i = 1; i < mPicture.mPlayed.size(); ++i) {
        const PlayedPart& part = mPicture.mPlayed[i];
        moments.push_back({part.mFrom, kSwitchWeight,
                           fmt::format("{:.4g} s: {} begins", part.mFrom, part.mText)});
    }
    for (const GivenCommand& command : mPicture.mCommands) {
        moments.push_back({command.mSeconds, kCommandWeight,
                           fmt::format("{:.4g} s: {}", command.mSeconds, command.mText)});
    }
    const double period = mSignals[0]->mOverview.period();
    return chooseMoments(moments, mRequest.mMostMoments,
                         period * (kPeriodsBefore + kPeriodsBehind));
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
            throw CaseError(fmt::format("nothing to show from {} s to {} s", from, to));
        }
        return {{fmt::format("{:.6g} s to {:.6g} s", from, to), from, to, std::nullopt, {}}};
    }
    if (mRequest.mAt) {
        if (*mRequest.mAt > end) {
            throw CaseError(
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
        for (const DrawnGroup& group : mSignals[0]->mChannels.groups()) {
            const std::string axis = group.mQuantity.empty() || group.mUnit.empty()
                                         ? group.mQuantity + group.mUnit
                                         : group.mQuantity + ", " + group.mUnit;
            column.mPanels.push_back({axis, 0.0, 1.0, {}});
        }
    }
    for (size_t i = 0; i < mSignals.size(); ++i) {
        Waveforms waves(mSignals[i]->mChannels, stretches,
                        mRequest.mColumns / std::max<size_t>(stretches.size(), 1));
        waves.read(*openSource(mSignals[i]->mPath));
        for (size_t column = 0; column < stretches.size(); ++column) {
            addWavePanels(i, waves, column);
        }
    }
    // The columns have their axes in common.
    for (size_t i = 0; i < mSignals[0]->mChannels.groups().size(); ++i) {
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
    const auto& groups = mSignals[signal]->mChannels.groups();
    size_t channel = 0;
    for (size_t i = 0; i < std::min(groups.size(), panels.size()); ++i) {
        for (size_t j = 0; j < groups[i].mChannels.size(); ++j, ++channel) {
            panels[i].mCurves.push_back({signal == 0 ? groups[i].mChannels[j].mLabel : "", j,
                                         signal > 0, waves.curve(column, channel)});
        }
    }
}
} // namespace

Picture makePicture(const PictureRequest& request)
{
    return Maker(request).make();
}
