#include "measure/Measuring.h"

#include <fmt/format.h>

#include <algorithm>
#include <bitset>
#include <cmath>

#include "base/CaseError.h"
#include "base/ProgressLine.h"
#include "base/WrongInput.h"
#include "measure/ClosedForm.h"
#include "measure/EventMeter.h"
#include "measure/FlickerMeter.h"
#include "measure/OrderedOutput.h"
#include "measure/PeriodMeters.h"
#include "measure/PhasorMeter.h"
#include "measure/SignalCheck.h"

namespace measure {

namespace {
MeterSettings settingsOf(const MeasureOptions& options, const MeasuredSignal& signal)
{
    return {signal.beginUtcNs(), options.mNominalVolts, options.mNominalAmperes,
            signal.nominalHz(),  signal.channels(),     signal.maxHertz()};
}

std::unique_ptr<Meter> makePhasorMeter(const MeasureOptions& options, const MeterSettings& settings)
{
    const int rate =
        options.mFramesPerSecond.value_or(static_cast<int>(std::lround(settings.mNominalHz)));
    const std::string problem =
        PhasorWindow::problemOf(options.mPhasorClass, rate, settings.mNominalHz);
    if (!problem.empty()) {
        throw base::WrongInput("--rate: " + problem);
    }
    return std::make_unique<PhasorMeter>(settings, options.mPhasorClass, rate);
}

/** The meters of the selected quantities. */
struct Meters
{
    std::unique_ptr<EventMeter> mEvents; ///< gets the values of one of the others
    std::vector<std::unique_ptr<Meter>> mAll;
};

bool hasPeriodQuantity(const Selection& selection)
{
    const auto& all = quantities();
    return std::any_of(all.begin(), all.end(), [&](const Quantity& quantity) {
        const std::string group = quantity.mGroup;
        return group != quantityOf(QuantityId::PhasorMagnitude).mGroup &&
               group != quantityOf(QuantityId::ShortFlicker).mGroup && selection.has(group);
    });
}

std::unique_ptr<Meter> makePeriodMeters(const EventPercents& percents, const Selection& selection,
                                        const MeterSettings& settings,
                                        std::unique_ptr<EventMeter>& events)
{
    auto meters = std::make_unique<PeriodMeters>(selection, settings);
    if (selection.has(QuantityId::DipResidual)) {
        events = std::make_unique<EventMeter>(
            EventSettings{settings.mNominalVolts, settings.mNominalHz, percents});
        meters->handTo(*events);
    }
    return meters;
}

Meters makeMeters(const MeasureOptions& options, const Selection& selection,
                  const MeterSettings& settings)
{
    Meters meters;
    if (hasPeriodQuantity(selection)) {
        meters.mAll.push_back(
            makePeriodMeters(options.mEventPercents, selection, settings, meters.mEvents));
    }
    if (selection.has(QuantityId::PhasorMagnitude)) {
        meters.mAll.push_back(makePhasorMeter(options, settings));
    }
    if (selection.has(QuantityId::ShortFlicker)) {
        meters.mAll.push_back(std::make_unique<FlickerMeter>(settings, options.mLamp));
    }
    return meters;
}

std::optional<ClosedForm> readTruth(const MeasureOptions& options, const MeterSettings& settings)
{
    if (options.mTruth.empty()) {
        return std::nullopt;
    }
    const SignalOptions& signal = options.mSignal;
    try {
        return std::optional<ClosedForm>(std::in_place, options.mTruth,
                                         std::array{signal.mCountsPerVolt, signal.mCountsPerAmpere},
                                         settings);
    } catch (const base::CaseError& error) {
        throw base::WrongInput(error.what());
    }
}

/** Passes rows on and remembers their groups. Values that are not finite are left out. */
class GroupWatch : public MeasurementOutput
{
public:
    explicit GroupWatch(MeasurementOutput& output) : mOutput(output) {}

    void add(const Measurement& value) override
    {
        if (!std::isfinite(value.mValue)) {
            ++mNotFinite;
            return;
        }
        mHasRows.set(static_cast<size_t>(value.mKind.mId));
        mOutput.add(value);
    }

    /** Number of values that were left out because they are not finite. */
    size_t notFinite() const { return mNotFinite; }

    /** Selected groups without a row. Events are not among them: no event is a result, too. */
    std::vector<std::string> emptyGroups(const Selection& selection) const
    {
        std::vector<std::string> empty;
        for (const std::string& group : quantityGroups()) {
            const auto& all = quantities();
            const bool hasRow = std::any_of(all.begin(), all.end(), [&](const Quantity& quantity) {
                return quantity.mGroup == group && mHasRows.test(static_cast<size_t>(quantity.mId));
            });
            if (selection.has(group) && !hasRow && group != "events") {
                empty.push_back(group);
            }
        }
        return empty;
    }

private:
    MeasurementOutput& mOutput;
    size_t mNotFinite = 0;
    std::bitset<static_cast<size_t>(QuantityId::Rocof) + 1> mHasRows;
};

/** @throws WrongInput if the truth belongs to another signal */
void expectOwnTruth(const std::optional<ClosedForm>& closedForm, size_t lines,
                    const MeasureOptions& options)
{
    if (closedForm && closedForm->lines() != lines) {
        throw base::WrongInput(fmt::format(
            "{}: has {} lines, but {} is for {}; expected the file written with this signal",
            options.mSignal.mPath, lines, options.mTruth, closedForm->lines()));
    }
}

/** @throws WrongInput if a measured value differs from the truth */
void expectAgreement(const std::optional<ClosedFormOutput>& known, const MeasureOptions& options)
{
    if (known && !known->disagreement().empty()) {
        throw base::WrongInput(fmt::format("{}: {} does not belong to this signal: {}",
                                           options.mSignal.mPath, options.mTruth,
                                           known->disagreement()));
    }
}

std::vector<std::string> remarksOf(const MeasuredSignal& signal, const SignalCheck& check,
                                   const GroupWatch& watch, const Selection& selection)
{
    std::vector<std::string> remarks = signal.remarks();
    for (const std::string& remark : check.remarks()) {
        remarks.push_back(remark);
    }
    if (watch.notFinite() > 0) {
        remarks.push_back(fmt::format(
            "{} values are left out, because they are too large for a number; see --scale",
            watch.notFinite()));
    }
    const auto empty = watch.emptyGroups(selection);
    if (!empty.empty()) {
        remarks.push_back(
            fmt::format("no rows of {}: the signal is too short, or has no steady fundamental",
                        fmt::join(empty, ", ")));
    }
    return remarks;
}
} // namespace

std::vector<std::string> measureSignal(const MeasureOptions& options, base::ResultFile& output)
{
    MeasuredSignal signal(options.mSignal);
    const Selection selection(options.mGroups.empty() ? quantityGroups() : options.mGroups);
    const auto writer = makeWriter(options.mForm, selection, output);
    const MeterSettings settings = settingsOf(options, signal);
    const std::optional<ClosedForm> closedForm = readTruth(options, settings);
    std::optional<ClosedFormOutput> known;
    if (closedForm) {
        known.emplace(*closedForm, *writer);
    }
    GroupWatch watch(known ? static_cast<MeasurementOutput&>(*known) : *writer);
    OrderedOutput rows(watch);
    const Meters meters = makeMeters(options, selection, settings);
    SignalCheck check(settings.mNominalVolts);
    base::ProgressLine progress("measuring");
    size_t lines = 0;
    waveform::SignalBlock block;
    while (signal.read(block)) {
        options.mBeforeEachBlock();
        progress.show(signal.progress());
        lines += block.size();
        check.add(block);
        for (const auto& meter : meters.mAll) {
            meter->add(block, rows);
        }
    }
    for (const auto& meter : meters.mAll) {
        meter->finish(rows);
    }
    expectOwnTruth(closedForm, lines, options);
    rows.flush();
    expectAgreement(known, options);
    writer->finish();
    return remarksOf(signal, check, watch, selection);
}

} // namespace measure
