/** Tables of limits: an accepted table can be listed, and no limit rejects exact values. */
#include "FuzzProcess.h"
#include "assess/Assessment.h"
#include "base/CaseError.h"

namespace {
assess::ValueTable someValues()
{
    constexpr qint64 kBeginNs = 1'700'000'000'000'000'000;
    constexpr qint64 kIntervalNs = 20'000'000;
    assess::ValueTable table;
    for (int i = 0; i < 50; ++i) {
        const qint64 ns = kBeginNs + i * kIntervalNs;
        table.series({"phasor-magnitude", "UA"}).add({ns, i < 25 ? 230.0 : 115.0});
        table.series({"phasor-angle", "UA"}).add({ns, 10.0});
        table.series({"rms", "UA"}).add({ns, 230.0 + i});
        table.series({"harmonic-5", "IB"}).add({ns, 0.1 * i});
    }
    table.series({"dip-residual", "UA"}).add({kBeginNs, 115.0});
    table.series({"dip-duration", "UA"}).add({kBeginNs, 0.5});
    return table;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const assess::ValueTable kValues = someValues();
    try {
        const assess::LimitTable limits =
            assess::parseLimits({reinterpret_cast<const char*>(data), size}, "limits.toml");
        require(!limits.mLimits.empty(), "a table has a limit");
        for (const assess::Limit& limit : limits.mLimits) {
            require(!assess::amountText(limit).empty(), "a limit says how much");
        }
        require(!assess::textOf(limits).empty(), "a table can be listed");
        const assess::Assessment assessment(kValues, kValues, limits,
                                            {{230.0, 5.0, 50.0}, {}, false});
        for (const assess::SeriesResult& it : assessment.result().mSeries) {
            const bool isStep = it.mKey.mQuantity.rfind("step", 0) == 0;
            require(it.mBeyond == 0 || isStep, "exact values are within");
        }
    } catch (const base::CaseError&) {
        return 0;
    }
    return 0;
}
