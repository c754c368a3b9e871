#include "measure/Measuring.h"

#include "base/ProgressLine.h"
#include "measure/Meter.h"
#include "measure/OrderedOutput.h"
#include "measure/PeriodMeters.h"

namespace measure {

namespace {
MeterSettings settingsOf(const MeasureOptions& options, const MeasuredSignal& signal)
{
    return {signal.beginUtcNs(), options.mNominalVolts, options.mNominalAmperes,
            signal.nominalHz(),  signal.channels(),     signal.maxHertz()};
}

/** All that measure what is selected. */
std::vector<std::unique_ptr<Meter>> makeMeters(const Selection& selection,
                                               const MeterSettings& settings)
{
    std::vector<std::unique_ptr<Meter>> meters;
    meters.push_back(std::make_unique<PeriodMeters>(selection, settings));
    return meters;
}
} // namespace

std::vector<std::string> measureSignal(const MeasureOptions& options, base::ResultFile& output)
{
    MeasuredSignal signal(options.mSignal);
    const Selection selection(options.mGroups.empty() ? quantityGroups() : options.mGroups);
    const auto writer = makeWriter(options.mForm, selection, output);
    OrderedOutput rows(*writer);
    const auto meters = makeMeters(selection, settingsOf(options, signal));
    base::ProgressLine progress("measuring");
    waveform::SignalBlock block;
    while (signal.read(block)) {
        progress.show(signal.progress());
        for (const auto& meter : meters) {
            meter->add(block, rows);
        }
    }
    for (const auto& meter : meters) {
        meter->finish(rows);
    }
    rows.flush();
    writer->finish();
    return signal.remarks();
}

} // namespace measure
