#include "measure/Measuring.h"

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "base/ProgressLine.h"
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
} // namespace

std::vector<std::string> measureSignal(const MeasureOptions& options, base::ResultFile& output)
{
    MeasuredSignal signal(options.mSignal);
    const Selection selection(options.mGroups.empty() ? quantityGroups() : options.mGroups);
    const auto writer = makeWriter(options.mForm, selection, output);
    OrderedOutput rows(*writer);
    const Meters meters = makeMeters(options, selection, settingsOf(options, signal));
    base::ProgressLine progress("measuring");
    waveform::SignalBlock block;
    while (signal.read(block)) {
        progress.show(signal.progress());
        for (const auto& meter : meters.mAll) {
            meter->add(block, rows);
        }
    }
    for (const auto& meter : meters.mAll) {
        meter->finish(rows);
    }
    rows.flush();
    writer->finish();
    return signal.remarks();
}

} // namespace measure
