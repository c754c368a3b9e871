#include "EventLog.h"

#include <cstring>
#include <nlohmann/json.hpp>

namespace sandbox {

namespace {

using Json = nlohmann::ordered_json;

Json writeEvent(std::int64_t realtimeNs, const std::string& file, std::size_t size, bool accepted)
{
    return {{"t", realtimeNs}, {"file", file}, {"bytes", size}, {"accepted", accepted}};
}

Json withFault(Json event, const std::string& fault)
{
    if (!fault.empty()) {
        event["fault"] = fault;
    }
    return event;
}

} // namespace

void EventLog::addWrite(std::int64_t realtimeNs, const std::string& file, std::size_t size,
                        bool accepted, const std::string& fault)
{
    addLine(withFault(writeEvent(realtimeNs, file, size, accepted), fault));
}

void EventLog::addWords(std::int64_t realtimeNs, const std::string& file, const void* data,
                        std::size_t size, const std::string& fault)
{
    std::vector<std::uint32_t> words(size / sizeof(std::uint32_t));
    if (!words.empty()) {
        std::memcpy(words.data(), data, words.size() * sizeof(std::uint32_t));
    }
    Json event = writeEvent(realtimeNs, file, size, true);
    event["words"] = words;
    addLine(withFault(std::move(event), fault));
}

void EventLog::addCommand(std::int64_t realtimeNs, const std::string& file, const std::string& text,
                          const std::string& problem)
{
    Json event = writeEvent(realtimeNs, file, text.size() + 1, problem.empty());
    event["text"] = text;
    if (!problem.empty()) {
        event["reason"] = problem;
    }
    addLine(event);
}

void EventLog::addProgramEnd(std::int64_t realtimeNs, const ProgramEnd& end)
{
    Json event = {{"t", realtimeNs}};
    switch (end.mKind) {
        case ProgramEnd::Kind::Exited:
            event["program"] = "exited";
            event["status"] = end.mValue;
            break;
        case ProgramEnd::Kind::Killed:
            event["program"] = "killed";
            event["signal"] = end.mValue;
            break;
        case ProgramEnd::Kind::Stopped:
            event["program"] = "stopped";
            if (end.mValue != 0) {
                event["signal"] = end.mValue;
            }
            break;
    }
    addLine(event);
}

void EventLog::addRunEnd(std::int64_t realtimeNs, const std::string& reason,
                         const std::vector<std::string>& unmetFaults)
{
    Json event = {{"t", realtimeNs}, {"run", "ended"}, {"reason", reason}};
    if (!unmetFaults.empty()) {
        event["unmetFaults"] = unmetFaults;
    }
    addLine(event);
    mFile.close();
}

void EventLog::addLine(const Json& event)
{
    // A command holds whatever the user typed, which may not be UTF-8.
    const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
    mFile.write(line.data(), line.size());
    mFile.flush();
}

} // namespace sandbox
