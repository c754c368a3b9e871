#include "explain/EventTimeline.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "SampleRecord.h"
#include "base/CaseError.h"

namespace explain {

EventTimeline::EventTimeline(const std::string& path) : mFile(path) {}

std::optional<qint64> EventTimeline::arrivalNs(size_t sample)
{
    while (mSamples <= sample) {
        if (!readLine()) {
            return std::nullopt;
        }
    }
    return mArrivalNs;
}

void EventTimeline::finish()
{
    while (readLine()) {
    }
}

bool EventTimeline::readLine()
{
    std::string_view line;
    if (!mFile.takeLine(&line)) {
        return false;
    }
    ++mLineNumber;
    try {
        const auto event = nlohmann::json::parse(line);
        const bool isAboutTheEnd = event.contains("program") || event.contains("run");
        if (isAboutTheEnd || !event.at("accepted").get<bool>()) {
            return true;
        }
        const auto timeNs = event.at("t").get<qint64>();
        if (event.at("file").get<std::string>() == "adc-in") {
            mSamples += event.at("bytes").get<size_t>() / sizeof(SampleRecord);
            mArrivalNs = timeNs;
        } else if (event.contains("text")) {
            mCommands.push_back({event["text"].get<std::string>(), timeNs});
        }
    } catch (const nlohmann::json::exception&) {
        throw base::CaseError(fmt::format("{}:{}: no event as vx-sandbox --events writes it",
                                          mFile.name(), mLineNumber));
    }
    return true;
}

} // namespace explain
