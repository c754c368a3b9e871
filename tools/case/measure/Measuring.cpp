#include "measure/Measuring.h"

#include "base/ProgressLine.h"
#include "measure/Meter.h"
#include "measure/OrderedOutput.h"

namespace measure {

namespace {
constexpr std::array<double, 3> kDefaultNominal{230.0, 5.0, 50.0};

MeterSettings settingsOf(const MeasureOptions& options, const MeasuredSignal& signal)
{
    const auto nominal = options.mNominal.value_or(kDefaultNominal);
    return {signal.beginUtcNs(), nominal[0], nominal[1], nominal[2]};
}

/** All that measure what is selected. */
std::vector<std::unique_ptr<Meter>> makeMeters(const Selection& /*selection*/,
                                               const MeterSettings& /*settings*/)
{
    return {};
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
