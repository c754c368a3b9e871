#include "Playback.h"

#include <climits>
#include <nlohmann/json.hpp>

#include "Files.h"

ValueCase::ValueCase(int number, const std::vector<Stretch>& stretches) : mNumber(number)
{
    for (const Stretch& it : stretches) {
        mStretchOfLine.insert(mStretchOfLine.end(), static_cast<size_t>(it.mLines), it);
    }
}

std::string ValueCase::fileName() const
{
    return "case-" + std::to_string(mNumber) + ".csv";
}

std::string ValueCase::fileText() const
{
    std::string text;
    for (int line = 0; line < lineCount(); ++line) {
        const SampleRecord values = record(line);
        text += "name;;" + std::to_string(values.mAuxWord) + ";" + std::to_string(values.mFlags) +
                ";" + mStretchOfLine[static_cast<size_t>(line)].mFrequency;
        for (const qint32 value : values.mValues) {
            text += ";" + std::to_string(value);
        }
        text += "\n";
    }
    return text;
}

SampleRecord ValueCase::record(int line) const
{
    return {0,
            0,
            UINT_MAX - static_cast<quint32>(line),
            static_cast<quint32>(line % 4),
            {mNumber, line, -line, INT_MAX, INT_MIN, line * 1000, mNumber - line, -1}};
}

const Stretch& ValueCase::inForce(int line) const
{
    return mStretchOfLine[static_cast<size_t>(line - line % kSamplesPerPeriod)];
}

std::vector<Event> eventsOf(const std::string& text)
{
    std::vector<Event> events;
    for (const std::string& line : split(text, '\n')) {
        const auto json = nlohmann::json::parse(line);
        events.push_back({json.at("t"), json.at("file"), json.at("bytes"), json.at("accepted"),
                          json.value("words", std::vector<quint32>{})});
    }
    return events;
}
