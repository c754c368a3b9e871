/** Maps of measured values: an accepted map can be used to read, and its times are valid. */
#include "FuzzProcess.h"
#include "assess/MeasuredMap.h"
#include "base/CaseError.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const assess::MeasuredMap map = assess::parseMeasuredMap(text, "map.toml");
        require(map.mWide.empty() == map.mLong.has_value(), "a table is wide or long");
        require(map.mSeparator != map.mDecimalSign, "a field ends where its number does");
        const auto ns = map.mFormat.parse(text, map.mDecimalSign);
        require(!ns || *ns >= 0, "a time is from 1970 on");
    } catch (const base::CaseError&) {
        return 0;
    }
    return 0;
}
