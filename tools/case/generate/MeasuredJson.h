#pragma once

#include <nlohmann/json.hpp>

#include "base/ResultFile.h"
#include "generate/SampleMeter.h"

/** Makes JSON of the types that a truth file shares. */
namespace generate {

using Json = nlohmann::ordered_json;

Json jsonOf(const Position& position);

/** null for no value. */
Json numberOrNull(const std::optional<double>& value);

/** The numbers of the channels. */
Json channelList(const ChannelSet& channels);

/** "channel" and "name". */
Json channelHeading(size_t number);

/** Of one channel: "rms", and "events" if it has any. */
Json jsonOf(const MeasuredValues& values, size_t channel);

/** "declaredRms", "thresholds" and "events". */
Json jsonOf(const MeasuredValues& values);

void write(const Json& truth, base::ResultFile& output);

} // namespace generate
