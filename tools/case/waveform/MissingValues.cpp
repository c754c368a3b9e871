#include "waveform/MissingValues.h"

#include <fmt/format.h>

namespace waveform {

void remarkOnMissing(const std::vector<ChannelDescription>& channels, base::Remarks* remarks)
{
    for (const ChannelDescription& channel : channels) {
        if (channel.mMissing > 0) {
            remarks->addFor(fmt::format("missing values ({}, the first at {:.6f} s): {}held at the "
                                        "value before",
                                        channel.mMissing, channel.mFirstMissing,
                                        channel.mBeginsMissing ? "0 at the beginning, then " : ""),
                            channel.mNumber);
        }
    }
}

} // namespace waveform
