/** Tables of values: an accepted table is sorted, and within all limits when compared to itself. */
#include <algorithm>
#include <cmath>

#include "MemoryFile.h"
#include "RecordingFuzzer.h"
#include "assess/Assessment.h"
#include "assess/AssessmentText.h"
#include "assess/TableReader.h"

namespace {
/** A table whose second column is one quantity; times are in ns or in ISO 8601. */
assess::MeasuredMap wideMap(const char* format)
{
    return assess::parseMeasuredMap(
        std::string("time = 1\nformat = '") + format +
            "'\nmissing = ['-']\n[[column]]\nname = 2\nquantity = 'rms-half'\nchannel = 'UA'\n",
        "map.toml");
}

void compareWithItself(const assess::ValueTable& values, const assess::LimitTable& limits)
{
    for (const auto& [key, series] : values.all()) {
        const auto isEarlier = [](const auto& a, const auto& b) { return a.mUtcNs < b.mUtcNs; };
        require(std::is_sorted(series.mSamples.begin(), series.mSamples.end(), isEarlier),
                "times do not fall");
        for (const assess::Sample& sample : series.mSamples) {
            require(std::isfinite(sample.mValue), "a value is a number");
        }
    }
    const assess::Assessment assessment(values, values, limits, {{230.0, 5.0, 50.0}, {}, false});
    const assess::AssessmentResult& result = assessment.result();
    require(result.mVerdict != assess::Verdict::Beyond || !result.mWorst.empty(),
            "a verdict has a reason");
    require(!assess::textOf(result, limits).empty(), "a result can be told");
    require(!assess::jsonOf(result, limits).empty(), "a result can be told to programs");
}

void read(const MemoryFile& file, const assess::MeasuredMap& map)
{
    static const assess::LimitTable kLimits = assess::readLimits("pq-a");
    static const assess::LimitTable kPhasorLimits = assess::readLimits("pmu-p");
    try {
        const assess::ReadTable table = assess::readTable(file.path().toStdString(), map);
        compareWithItself(table.mValues, kLimits);
        compareWithItself(table.mValues, kPhasorLimits);
    } catch (const base::CaseError&) {
        return;
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const assess::MeasuredMap kMaps[] = {assess::measureMap(), wideMap("ns"),
                                                wideMap("iso")};
    const MemoryFile file(textOf(data, size));
    for (const assess::MeasuredMap& map : kMaps) {
        read(file, map);
    }
    return 0;
}
