#include "assess/TablePicture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <set>

#include "assess/CurveShapes.h"
#include "assess/QuantityNames.h"
#include "assess/TableReader.h"
#include "base/CaseError.h"
#include "base/InputFile.h"
#include "base/NearestName.h"
#include "base/Numbers.h"
#include "measure/MeasurementWriters.h"
#include "measure/UtcText.h"

namespace assess {

namespace {
using measure::Channel;
using measure::Interval;
using measure::QuantityId;
using measure::RowKind;

constexpr size_t kDrawnColumns = 1000; // of the picture
constexpr double kBarsApart = 0.2;     // of the distance of two orders
constexpr double kMinPercent = 0.1;    // of an axis, so that rounding does not look like content

std::string utcOf(qint64 utcNs)
{
    return std::string(measure::UtcText().of(utcNs));
}

RowKind kindOf(const SeriesKey& key)
{
    return *measure::findRowKind(key.mQuantity);
}

/** One colour each for A, B, C and for the neutral or total; the last for all without a phase. */
size_t colourOf(const SeriesKey& key)
{
    const Channel channel = *measure::findChannel(key.mChannel);
    if (channel <= Channel::IN) {
        return static_cast<size_t>(channel) % plot::kConductorColours;
    }
    const bool isPhase = channel >= Channel::A && channel <= Channel::Total;
    return isPhase ? static_cast<size_t>(channel) - static_cast<size_t>(Channel::A)
                   : plot::kFrequencyColour;
}

bool isOfCurrent(const SeriesKey& key)
{
    return measure::unitOf(QuantityId::Rms, *measure::findChannel(key.mChannel)) ==
           std::string_view("A");
}

/** The title of the axis. Voltages and currents have the same colours, so each has its own axis. */
std::string axisOver(const SeriesKey& key)
{
    const std::string unit = unitOf(key);
    const std::string axis = unit.empty() ? key.mQuantity : unit;
    const bool isEither = *measure::findChannel(key.mChannel) <= Channel::I;
    if (!isEither || unit == "V" || unit == "A") {
        return axis;
    }
    return axis + (isOfCurrent(key) ? ", currents" : ", voltages");
}

std::string titleOf(const RowKind& kind)
{
    static constexpr std::array<const char*, 3> kAggregated = {
        "", ", aggregated over 150/180 periods", ", aggregated over 10 minutes"};
    return std::string(measure::quantityOf(kind.mId).mText) +
           kAggregated[static_cast<size_t>(kind.mInterval)];
}

/** The median time between two values; 0 for a single value. */
double usualStepNs(const std::vector<Sample>& samples)
{
    std::vector<qint64> steps;
    for (size_t i = 1; i < samples.size(); ++i) {
        steps.push_back(samples[i].mUtcNs - samples[i - 1].mUtcNs);
    }
    if (steps.empty()) {
        return 0.0;
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return static_cast<double>(*middle);
}

/** The value at exactly this time. */
std::optional<double> measuredAt(const Series* series, qint64 utcNs)
{
    if (series == nullptr) {
        return std::nullopt;
    }
    const auto isBefore = [](const Sample& it, qint64 time) { return it.mUtcNs < time; };
    const auto found =
        std::lower_bound(series->mSamples.begin(), series->mSamples.end(), utcNs, isBefore);
    const bool isThere = found != series->mSamples.end() && found->mUtcNs == utcNs;
    return isThere ? std::optional(found->mValue) : std::nullopt;
}

/** The time nearest to the wanted one, at most `before` ns before it or `after` ns after it. */
std::optional<qint64> nearestOf(const std::set<qint64>& times, qint64 wanted, double before,
                                double after)
{
    const auto next = times.lower_bound(wanted);
    std::optional<qint64> nearest;
    if (next != times.end() && static_cast<double>(*next - wanted) <= after) {
        nearest = *next;
    }
    if (next == times.begin()) {
        return nearest;
    }
    const qint64 last = *std::prev(next);
    const bool isNear = static_cast<double>(wanted - last) <= before;
    return isNear && (!nearest || wanted - last < *nearest - wanted) ? last : nearest;
}

/** One phasor of a diagram. */
struct DrawnPhasor
{
    SeriesKey mMagnitude;
    double mLength = 0.0;
    std::optional<double> mDegrees; ///< none if it is too small to have an angle

    /** A positive sequence is only named in the text: its arrow would cover that of phase A. */
    bool isArrow() const { return mMagnitude.mQuantity == kMagnitude; }

    std::string text() const
    {
        const std::string angle = mDegrees ? fmt::format("at {:.3f}°", *mDegrees) : "without angle";
        return fmt::format("{}{} {:.6g} {} {}", mMagnitude.mChannel,
                           isArrow() ? "" : " positive sequence", mLength, unitOf(mMagnitude),
                           angle);
    }
};

/** Voltages or currents as arrows; the longest reaches the circle. Requires: at least one. */
plot::WaveColumn diagramOf(const std::vector<DrawnPhasor>& phasors)
{
    constexpr double kMargin = 1.15;
    constexpr double kHead = 0.06;
    double longest = 0.0;
    for (const DrawnPhasor& it : phasors) {
        longest = std::max(longest, it.mLength);
    }
    const double radius = longest > 0.0 ? longest : 1.0;
    plot::Panel panel{"imaginary part", -kMargin * radius, kMargin * radius, {circleOf(radius)}};
    for (const DrawnPhasor& it : phasors) {
        if (it.mDegrees) {
            panel.mCurves.push_back({std::string(1, it.mMagnitude.mChannel.back()),
                                     colourOf(it.mMagnitude), false,
                                     arrowTo(it.mLength, *it.mDegrees, kHead * radius)});
        }
    }
    plot::WaveColumn column{isOfCurrent(phasors.front().mMagnitude) ? "currents, A" : "voltages, V",
                            panel.mLow,
                            panel.mHigh,
                            std::nullopt,
                            {panel}};
    column.mIsSquare = true;
    return column;
}
} // namespace

bool isShownAtMoment(const std::string& quantity)
{
    return quantity == kHarmonics || quantity == kPhasors;
}

std::string reasonNotDrawn(const std::string& quantity)
{
    if (isMeasured(quantity) || isShownAtMoment(quantity)) {
        return "";
    }
    std::vector<std::string> names = measuredNames();
    names.insert(names.begin(), {kHarmonics, kPhasors});
    return fmt::format("'{}': expected a quantity of the table, {} or {}; the nearest is {}",
                       quantity, kHarmonics, kPhasors,
                       base::nearestNames(quantity, names, 1).front());
}

bool isMeasuredTable(const std::string& path)
{
    constexpr std::string_view kLong = measure::kLongHeading;
    std::string head;
    try {
        head = base::InputFile(path).peek(kLong.size() + 1);
    } catch (const base::CaseError&) {
        return false; // opening it for reading reports the reason
    }
    for (const std::string_view other : {"utc,origin,", "{\"utc\":\""}) {
        if (head.compare(0, other.size(), other) == 0) {
            throw base::CaseError(
                path + ": cannot be drawn; expected a table of measure without --wide and --json");
        }
    }
    const std::string_view end = std::string_view(head).substr(std::min(head.size(), kLong.size()));
    return head.compare(0, kLong.size(), kLong) == 0 && (end.empty() || end == "\n" || end == "\r");
}

plot::Picture pictureOfTable(const TablePictureRequest& request)
{
    const ReadTable table = readTable(request.mTable, measureMap());
    if (table.mFirstQuantity.empty() || table.mRows == table.mMissing) {
        throw base::CaseError(request.mTable + ": a table without values; nothing to draw");
    }
    const TablePicture picture(table.mValues, request.mTable);
    const std::string& quantity =
        request.mQuantity.empty() ? table.mFirstQuantity : request.mQuantity;
    return quantity == kHarmonics ? picture.harmonics(request.mAt)
           : quantity == kPhasors ? picture.phasors(request.mAt)
                                  : picture.overTime(quantity);
}

TablePicture::TablePicture(const ValueTable& table, std::string name)
    : mTable(table), mName(std::move(name))
{
    bool isFirst = true;
    for (const auto& [key, series] : mTable.all()) {
        if (!series.mSamples.empty()) {
            const qint64 begin = series.mSamples.front().mUtcNs;
            mBeginNs = isFirst ? begin : std::min(mBeginNs, begin);
            isFirst = false;
        }
    }
}

/** Sorted by channel, then by order of the harmonic. */
TablePicture::Keys TablePicture::keysOf(const std::function<bool(const RowKind&)>& isWanted) const
{
    Keys keys;
    for (const auto& [key, series] : mTable.all()) {
        if (!series.mSamples.empty() && isWanted(kindOf(key))) {
            keys.push_back(key);
        }
    }
    const auto rankOf = [](const SeriesKey& key) {
        return std::pair(*measure::findChannel(key.mChannel), kindOf(key).mOrder);
    };
    std::stable_sort(keys.begin(), keys.end(),
                     [&](const SeriesKey& a, const SeriesKey& b) { return rankOf(a) < rankOf(b); });
    return keys;
}

double TablePicture::secondsOf(qint64 utcNs) const
{
    return static_cast<double>(utcNs - mBeginNs) * base::kSecondsPerNanosecond;
}

qint64 TablePicture::timeOf(const std::string& at) const
{
    double seconds = 0.0;
    return base::parseNumber(at, &seconds)
               ? mBeginNs + std::llround(seconds * base::kNanosecondsPerSecond)
               : measure::parseUtc(at).value_or(0);
}

/**
 * The time stamp whose window or frame holds the time `at`. A window reaches back to the window
 * before it; a frame reaches half-way to the frames before and after it.
 */
qint64 TablePicture::momentOf(const Keys& keys, const std::string& what,
                              const std::string& at) const
{
    constexpr double kLongestPart = 1.25; // of the window at the nominal frequency: at 40 Hz
    std::set<qint64> times;
    for (const SeriesKey& key : keys) {
        for (const Sample& it : mTable.find(key)->mSamples) {
            times.insert(it.mUtcNs);
        }
    }
    if (times.empty()) {
        failWithout(what);
    }
    if (at.empty()) {
        return *times.begin();
    }
    const qint64 wanted = timeOf(at);
    const auto nominalNs = static_cast<double>(intervalNsOf(keys.front().mQuantity));
    const double stepNs = usualStepNs(mTable.find(keys.front())->mSamples);
    const double frameNs = std::max(stepNs / 2.0, 1e6);
    const double windowNs = stepNs > 0.0 ? std::min(stepNs, kLongestPart * nominalNs) : nominalNs;
    const auto moment = nominalNs > 0.0 ? nearestOf(times, wanted, 0.0, windowNs)
                                        : nearestOf(times, wanted, frameNs, frameNs);
    if (!moment) {
        throw base::CaseError(fmt::format("{}: no {} at {}; the table has {} to {}", mName, what,
                                          utcOf(wanted), utcOf(*times.begin()),
                                          utcOf(*times.rbegin())));
    }
    return *moment;
}

plot::Curve TablePicture::curveOf(const SeriesKey& key, bool hasBars) const
{
    constexpr double kGapSteps = 2.5;
    constexpr double kGapPart = 1.0 / 400.0; // of the time, if only extremes of columns are drawn
    const std::vector<Sample>& samples = mTable.find(key)->mSamples;
    plot::Envelope envelope(1, kDrawnColumns);
    for (const Sample& it : samples) {
        envelope.add(secondsOf(it.mUtcNs), {it.mValue});
    }
    const double span = secondsOf(samples.back().mUtcNs) - secondsOf(samples.front().mUtcNs);
    const bool isDense = samples.size() > kDrawnColumns;
    const double longest = std::max(kGapSteps * usualStepNs(samples) * base::kSecondsPerNanosecond,
                                    isDense ? kGapPart * span : 0.0);
    const std::string name = key.mChannel.empty() ? key.mQuantity : key.mChannel;
    plot::Curve curve{name, colourOf(key), false, envelope.curve(0)};
    if (!hasBars && longest > 0.0) {
        curve.mPoints = splitAtGaps(curve.mPoints, longest);
    }
    return curve;
}

plot::Picture TablePicture::overTime(const std::string& quantity) const
{
    const RowKind kind = *measure::findRowKind(quantity);
    const Keys keys = keysOf([&](const RowKind& it) { return it == kind; });
    if (keys.empty()) {
        failWithout(quantity);
    }
    plot::WaveColumn column{
        titleOf(kind), std::numeric_limits<double>::infinity(), 0.0, std::nullopt, {}};
    // A line through a single value would be invisible.
    const bool hasBars = measure::quantityOf(kind.mId).mGroup == std::string_view("events") ||
                         std::any_of(keys.begin(), keys.end(), [this](const SeriesKey& key) {
                             return mTable.find(key)->mSamples.size() == 1;
                         });
    size_t values = 0;
    for (const SeriesKey& key : keys) {
        const std::vector<Sample>& samples = mTable.find(key)->mSamples;
        values += samples.size();
        column.mFrom = std::min(column.mFrom, secondsOf(samples.front().mUtcNs));
        column.mTo = std::max(column.mTo, secondsOf(samples.back().mUtcNs));
        panelWith(column, axisOver(key)).mCurves.push_back(curveOf(key, hasBars));
    }
    setRanges(column, hasBars);
    plot::Picture picture = pictureAt(quantity, mBeginNs);
    picture.mCaption = fmt::format("{} values; 0 s is {}", values, utcOf(mBeginNs));
    picture.mBelow = "time since the first value of the table, s";
    picture.mColumns.push_back(column);
    return picture;
}

plot::Picture TablePicture::pictureAt(const std::string& what, qint64 utcNs) const
{
    plot::Picture picture;
    picture.mTitle =
        QFileInfo(QString::fromStdString(mName)).fileName().toStdString() + ": " + what;
    picture.mCaption =
        fmt::format("{}, {:.9g} s after the first value", utcOf(utcNs), secondsOf(utcNs));
    return picture;
}

plot::Picture TablePicture::harmonics(const std::string& at) const
{
    const Keys keys = keysOf([](const RowKind& it) {
        return it.mId == QuantityId::Harmonic && it.mInterval == Interval::Basic;
    });
    const qint64 moment = momentOf(keys, kHarmonics, at);
    const measure::Quantity& quantity = measure::quantityOf(QuantityId::Harmonic);
    plot::WaveColumn column{
        quantity.mText, quantity.mFirstOrder - 0.5, quantity.mLastOrder + 0.5, std::nullopt, {}};
    for (const SeriesKey& key : keys) {
        const auto value = measuredAt(mTable.find(key), moment);
        if (!value) {
            continue;
        }
        const std::string axis = isOfCurrent(key) ? "% of the current" : "% of the voltage";
        std::vector<plot::Curve>& curves = panelWith(column, axis).mCurves;
        if (curves.empty() || curves.back().mLabel != key.mChannel) {
            curves.push_back({key.mChannel, colourOf(key), false, {}});
        }
        curves.back().mPoints.push_back({static_cast<double>(kindOf(key).mOrder), *value});
    }
    for (plot::Panel& panel : column.mPanels) {
        makeBars(panel, kBarsApart);
        panel.mHigh = std::max(panel.mHigh, kMinPercent);
    }
    plot::Picture picture = pictureAt(kHarmonics, moment);
    picture.mCaption = "window up to " + picture.mCaption;
    picture.mBelow = "order of the harmonic";
    picture.mColumns.push_back(column);
    return picture;
}

plot::Picture TablePicture::phasors(const std::string& at) const
{
    const Keys phases =
        keysOf([](const RowKind& it) { return it.mId == QuantityId::PhasorMagnitude; });
    const qint64 moment = momentOf(phases, kPhasors, at);
    const Keys keys = keysOf([](const RowKind& it) {
        return it.mId == QuantityId::PhasorMagnitude ||
               it.mId == QuantityId::PositivePhasorMagnitude;
    });
    plot::Picture picture = pictureAt(kPhasors, moment);
    picture.mBelow = "real part";
    std::array<std::vector<DrawnPhasor>, 2> systems; // voltages, currents
    for (const SeriesKey& key : keys) {
        if (const auto length = measuredAt(mTable.find(key), moment)) {
            const char* const angle = key.mQuantity == kMagnitude ? kAngle : kPositiveAngle;
            const auto degrees = measuredAt(mTable.find({angle, key.mChannel}), moment);
            const DrawnPhasor phasor{key, *length, degrees};
            picture.mCaption += "; " + phasor.text();
            if (phasor.isArrow()) {
                systems[isOfCurrent(key) ? 1 : 0].push_back(phasor);
            }
        }
    }
    for (const std::vector<DrawnPhasor>& system : systems) {
        if (!system.empty()) {
            picture.mColumns.push_back(diagramOf(system));
        }
    }
    return picture;
}

void TablePicture::failWithout(const std::string& what) const
{
    std::set<std::string> families;
    for (const auto& [key, series] : mTable.all()) {
        if (!series.mSamples.empty()) {
            families.insert(familyOf(key.mQuantity));
        }
    }
    throw base::CaseError(
        fmt::format("{}: no values of {}; it has {}", mName, what, fmt::join(families, ", ")));
}

} // namespace assess
