#include "explain/Event.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "SampleRecord.h"

namespace explain {

namespace {
std::string deathOf(const nlohmann::json& line)
{
    const auto end = line["program"].get<std::string>();
    if (end == "killed") {
        return fmt::format("the program was killed by signal {}", line.at("signal").get<int>());
    }
    if (end == "exited" && line.at("status").get<int>() != 0) {
        return fmt::format("the program exited with status {}", line["status"].get<int>());
    }
    return "";
}

/** Further remarks in the events of the end of the program and of the run. */
std::vector<std::string> remarksOf(const nlohmann::json& line)
{
    std::vector<std::string> remarks;
    if (line.value("program", std::string()) == "stopped" && line.contains("signal")) {
        remarks.emplace_back("the program did not end on SIGTERM and was killed");
    }
    for (const auto& fault : line.value("unmetFaults", std::vector<std::string>())) {
        remarks.push_back("the fault " + fault + " did not happen: the program ended before it");
    }
    return remarks;
}

void readWrite(const nlohmann::json& line, Event* event)
{
    event->mAccepted = line.at("accepted").get<bool>();
    if (line.at("file").get<std::string>() == "adc-in") {
        event->mKind = Event::Kind::Block;
        event->mSamples = line.at("bytes").get<size_t>() / sizeof(SampleRecord);
    } else if (line.contains("text")) {
        event->mKind = Event::Kind::Command;
        event->mText = line["text"].get<std::string>();
        event->mReason = line.value("reason", std::string());
    }
}
} // namespace

std::optional<Event> parseEvent(std::string_view line)
{
    try {
        const auto json = nlohmann::json::parse(line);
        Event event;
        event.mTimeNs = json.at("t").get<qint64>();
        if (json.contains("program")) {
            event.mKind = Event::Kind::ProgramEnd;
            event.mText = deathOf(json);
            event.mRemarks = remarksOf(json);
        } else if (json.contains("run")) {
            event.mKind = Event::Kind::RunEnd;
            event.mText = json.value("reason", std::string());
            event.mRemarks = remarksOf(json);
        } else {
            readWrite(json, &event);
        }
        return event;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

} // namespace explain
