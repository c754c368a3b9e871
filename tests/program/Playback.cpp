#include "Playback.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cstring>
#include <limits>
#include <sstream>

#include "CommandRunner.h"

ValueCase::ValueCase(int number, const std::vector<Stretch>& stretches) : mNumber(number)
{
    for (const Stretch& it : stretches) {
        mStretchOfLine.insert(mStretchOfLine.end(), static_cast<std::size_t>(it.mLines), it);
    }
}

std::string ValueCase::fileName() const
{
    return "case-" + std::to_string(mNumber) + ".csv";
}

std::string ValueCase::fileText() const
{
    std::ostringstream text;
    text << "# case " << mNumber << "\n";
    for (int line = 0; line < lineCount(); ++line) {
        const SampleRecord values = record(line);
        text << "name;;" << values.mAuxWord << ";" << values.mFlags << ";"
             << mStretchOfLine[static_cast<std::size_t>(line)].mFrequency;
        for (const qint32 value : values.mValues) {
            text << ";" << value;
        }
        text << "\n";
    }
    return text.str();
}

SampleRecord ValueCase::record(int line) const
{
    return {0,
            0,
            std::numeric_limits<quint32>::max() - static_cast<quint32>(line),
            static_cast<quint32>(line % 4),
            {mNumber, line, -line, std::numeric_limits<qint32>::max(),
             std::numeric_limits<qint32>::min(), line * 1000, mNumber - line, -1}};
}

const Stretch& ValueCase::inForce(int line) const
{
    return mStretchOfLine[static_cast<std::size_t>(line - line % kSamplesPerPeriod)];
}

std::vector<SampleRecord> recordsOf(const std::string& bytes)
{
    EXPECT_EQ(bytes.size() % sizeof(SampleRecord), 0U);
    std::vector<SampleRecord> records(bytes.size() / sizeof(SampleRecord));
    std::memcpy(records.data(), bytes.data(), records.size() * sizeof(SampleRecord));
    return records;
}

std::vector<Event> eventsOf(const std::string& text)
{
    std::vector<Event> events;
    for (const std::string& line : split(text, '\n')) {
        const QJsonObject object =
            QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        EXPECT_TRUE(object.contains("t") && object.contains("file") && object.contains("bytes") &&
                    object.contains("accepted"))
            << line;
        Event event{object["t"].toVariant().toLongLong(),
                    object["file"].toString().toStdString(),
                    object["bytes"].toInt(),
                    object["accepted"].toBool(),
                    {}};
        for (const auto& word : object["words"].toArray()) {
            event.mWords.push_back(static_cast<quint32>(word.toDouble()));
        }
        events.push_back(event);
    }
    return events;
}

qint64 stampNs(const SampleRecord& record)
{
    return qint64{record.mSeconds} * 1'000'000'000 + record.mNanoseconds;
}

namespace {
bool hasContent(const SampleRecord& record, const SampleRecord& content)
{
    return record.mAuxWord == content.mAuxWord && record.mFlags == content.mFlags &&
           std::equal(record.mValues, record.mValues + kChannelCount, content.mValues);
}
} // namespace

std::vector<int> playedCases(const std::vector<SampleRecord>& records,
                             const std::vector<ValueCase>& cases)
{
    std::vector<int> played;
    const ValueCase* current = nullptr;
    int line = 0;
    for (std::size_t at = 0; at < records.size(); ++at, ++line) {
        const SampleRecord& record = records[at];
        if (current == nullptr || line == current->lineCount()) {
            const auto next = std::find_if(cases.begin(), cases.end(), [&](const ValueCase& it) {
                return it.number() == record.mValues[0];
            });
            if (next == cases.end()) {
                ADD_FAILURE() << "record " << at << " is of no case: " << record.mValues[0];
                return played;
            }
            current = &*next;
            line = 0;
            played.push_back(current->number());
        }
        const qint64 stepNs = at == 0 ? 0 : stampNs(record) - stampNs(records[at - 1]);
        const bool fits = hasContent(record, current->record(line)) &&
                          record.mNanoseconds < 1'000'000'000 &&
                          (at == 0 || stepNs == current->inForce(line).mStepNs);
        if (!fits) {
            ADD_FAILURE() << "record " << at << ": expected line " << line << " of case "
                          << current->number() << " after " << current->inForce(line).mStepNs
                          << " ns, found line " << record.mValues[1] << " of case "
                          << record.mValues[0] << " after " << stepNs << " ns";
            return played;
        }
    }
    return played;
}
