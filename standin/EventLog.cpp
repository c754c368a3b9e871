#include "EventLog.h"

#include <QString>
#include <array>
#include <cstdio>
#include <cstring>

namespace {

/** As it stands in a JSON string; quotes, backslashes and control characters need an escape. */
std::string escaped(char byte)
{
    if (byte == '"' || byte == '\\') {
        return std::string("\\") + byte;
    }
    const unsigned code = static_cast<unsigned char>(byte);
    if (code >= 0x20) {
        return {byte};
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", code);
    return text.data();
}

/** As a JSON string; bytes that are not UTF-8 become replacement characters. */
std::string quoted(const std::string& text)
{
    const QByteArray utf8 = QString::fromUtf8(text.data(), static_cast<int>(text.size())).toUtf8();
    std::string result = "\"";
    for (const char byte : utf8) {
        result += escaped(byte);
    }
    return result + '"';
}

std::string faultField(const std::string& fault)
{
    return fault.empty() ? "" : ",\"fault\":" + quoted(fault);
}

std::string wordList(const void* data, std::size_t size)
{
    std::string list;
    for (std::size_t at = 0; at + sizeof(std::uint32_t) <= size; at += sizeof(std::uint32_t)) {
        std::uint32_t word = 0;
        std::memcpy(&word, static_cast<const char*>(data) + at, sizeof word);
        list += (at == 0 ? "" : ",") + std::to_string(word);
    }
    return list;
}

} // namespace

void EventLog::addWrite(std::int64_t realtimeNs, const std::string& file, std::size_t size,
                        bool accepted, const std::string& fault)
{
    addLine(realtimeNs, file, size, accepted, faultField(fault));
}

void EventLog::addWords(std::int64_t realtimeNs, const std::string& file, const void* data,
                        std::size_t size, const std::string& fault)
{
    addLine(realtimeNs, file, size, true,
            ",\"words\":[" + wordList(data, size) + "]" + faultField(fault));
}

void EventLog::addCommand(std::int64_t realtimeNs, const std::string& file, const std::string& text,
                          bool accepted)
{
    addLine(realtimeNs, file, text.size() + 1, accepted, ",\"text\":" + quoted(text));
}

void EventLog::addLine(std::int64_t realtimeNs, const std::string& file, std::size_t size,
                       bool accepted, const std::string& rest)
{
    if (!mFile.isOpen()) {
        return;
    }
    const std::string line = "{\"t\":" + std::to_string(realtimeNs) + ",\"file\":\"" + file +
                             "\",\"bytes\":" + std::to_string(size) +
                             ",\"accepted\":" + (accepted ? "true" : "false") + rest + "}\n";
    mFile.write(line.data(), line.size());
}
