#include "EventLog.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <vector>

namespace sandbox {

namespace {

nlohmann::ordered_json eventOf(std::int64_t realtimeNs, const std::string& file, std::size_t size,
                               bool accepted)
{
    return {{"t", realtimeNs}, {"file", file}, {"bytes", size}, {"accepted", accepted}};
}

} // namespace

void EventLog::addWrite(std::int64_t realtimeNs, const std::string& file, std::size_t size,
                        bool accepted, const std::string& fault)
{
    addLine(eventOf(realtimeNs, file, size, accepted), fault);
}

void EventLog::addWords(std::int64_t realtimeNs, const std::string& file, const void* data,
                        std::size_t size, const std::string& fault)
{
    std::vector<std::uint32_t> words(size / sizeof(std::uint32_t));
    if (!words.empty()) {
        std::memcpy(words.data(), data, words.size() * sizeof(std::uint32_t));
    }
    nlohmann::ordered_json event = eventOf(realtimeNs, file, size, true);
    event["words"] = words;
    addLine(std::move(event), fault);
}

void EventLog::addCommand(std::int64_t realtimeNs, const std::string& file, const std::string& text,
                          bool accepted)
{
    nlohmann::ordered_json event = eventOf(realtimeNs, file, text.size() + 1, accepted);
    event["text"] = text;
    addLine(std::move(event), "");
}

void EventLog::addLine(nlohmann::ordered_json event, const std::string& fault)
{
    if (!fault.empty()) {
        event["fault"] = fault;
    }
    // A command is what its user typed, not always UTF-8.
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    const std::string line = event.dump(-1, ' ', false, kReplace) + '\n';
    mFile.write(line.data(), line.size());
}

} // namespace sandbox
