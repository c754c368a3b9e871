#include "measure/Measuring.h"

#include <fmt/format.h>

#include <algorithm>
#include <bitset>
#include <cmath>

#include "base/CaseError.h"
#include "base/ProgressLine.h"
#include "measure/ClosedForm.h"
#include "measure/EventMeter.h"
#include "measure/FlickerMeter.h"
#include "measure/OrderedOutput.h"
#include "measure/PeriodMeters.h"
#include "measure/PhasorMeter.h"

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
        throw base::CaseError("--rate: " + problem);
    }
    return std::make_unique<PhasorMeter>(settings, options.mPhasorClass, rate);
}

/** All that measure what is selected. */
struct Meters
{
    std::unique_ptr<EventMeter> mEvents; ///< gets what one of the others hands on
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

std::unique_ptr<Meter> makePeriodMeters(const Selection& selection, const MeterSettings& settings,
                                        std::unique_ptr<EventMeter>& events)
{
    auto meters = std::make_unique<PeriodMeters>(selection, settings);
    if (selection.has(QuantityId::DipResidual)) {
        events = std::make_unique<EventMeter>(
            EventSettings{settings.mNominalVolts, settings.mNominalHz});
        meters->handTo(*events);
    }
    return meters;
}

Meters makeMeters(const MeasureOptions& options, const Selection& selection,
                  const MeterSettings& settings)
{
    Meters meters;
    if (hasPeriodQuantity(selection)) {
        meters.mAll.push_back(makePeriodMeters(selection, settings, meters.mEvents));
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
    return options.mTruth.empty()
               ? std::nullopt
               : std::optional<ClosedForm>(
                     std::in_place, options.mTruth,
                     std::array{options.mSignal.mCountsPerVolt, options.mSignal.mCountsPerAmpere},
                     settings);
}

/** Passes rows on and remembers their groups. */
class GroupWatch : public MeasurementOutput
{
public:
    explicit GroupWatch(MeasurementOutput& output) : mOutput(output) {}

    void add(const Measurement& value) override
    {
        mHasRows.set(static_cast<size_t>(value.mKind.mId));
        mOutput.add(value);
    }

    /** What is selected and has no row. No event is a result as well. */
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
    std::bitset<static_cast<size_t>(QuantityId::Rocof) + 1> mHasRows;
};

/** @throws CaseError where the truth is that of another signal */
void expectLines(const std::optional<ClosedForm>& closedForm, size_t lines,
                 const MeasureOptions& options)
{
    if (closedForm && closedForm->lines() != lines) {
        throw base::CaseError(
            fmt::format("{}: has {} lines, but {} is about {}: it is another "
                        "signal's",
                        options.mSignal.mPath, lines, options.mTruth, closedForm->lines()));
    }
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
    base::ProgressLine progress("measuring");
    size_t lines = 0;
    waveform::SignalBlock block;
    while (signal.read(block)) {
        progress.show(signal.progress());
        lines += block.size();
        for (const auto& meter : meters.mAll) {
            meter->add(block, rows);
        }
    }
    for (const auto& meter : meters.mAll) {
        meter->finish(rows);
    }
    expectLines(closedForm, lines, options);
    rows.flush();
    writer->finish();
    std::vector<std::string> remarks = signal.remarks();
    const auto empty = watch.emptyGroups(selection);
    if (!empty.empty()) {
        remarks.push_back(fmt::format(
            "no rows of {}: the signal is too short for it, or has no steady fundamental",
            fmt::join(empty, ", ")));
    }
    return remarks;
}

} // namespace measure
