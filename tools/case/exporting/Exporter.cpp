#include "exporting/Exporter.h"

#include <fmt/format.h>

#include <QDateTime>
#include <QFileInfo>
#include <cmath>

#include "SampleRecord.h"
#include "base/Numbers.h"
#include "comtrade/ComtradeWriter.h"
#include "textfile/TextWriter.h"
#include "waveform/DeviceChannels.h"

namespace exporting {

namespace {

QString suffixOf(const std::string& name)
{
    return QFileInfo(QString::fromStdString(name)).suffix().toLower();
}

const char* unitOf(int channel)
{
    return waveform::isDeviceVoltage(channel) ? "V" : "A";
}

double factorOf(const ExportOptions& options, int channel)
{
    return 1.0 /
           (waveform::isDeviceVoltage(channel) ? options.mCountsPerVolt : options.mCountsPerAmpere);
}

comtrade::ComtradeAnalog analogOf(const ExportOptions& options, int channel)
{
    comtrade::ComtradeAnalog analog;
    analog.mChannel.mNumber = channel + 1;
    analog.mChannel.mName = waveform::kDeviceChannelNames.at(static_cast<size_t>(channel));
    analog.mChannel.mPhase = analog.mChannel.mName.substr(1);
    analog.mChannel.mUnit = unitOf(channel);
    analog.mChannel.mSide = 'P';
    analog.mFactor = factorOf(options, channel);
    analog.mLargest = std::numeric_limits<qint32>::max();
    analog.mSmallest = -analog.mLargest;
    return analog;
}

/** The start of the recording plus the skipped time; 1970 for a value file, which has no time. */
std::string startTime(const std::string& text, double skippedSeconds)
{
    constexpr int kDigitsToSeconds = 19;
    QDateTime time = QDateTime::fromString(QString::fromStdString(text).left(kDigitsToSeconds),
                                           "yyyy-MM-dd hh:mm:ss");
    time.setTimeSpec(Qt::UTC);
    double seconds = skippedSeconds;
    if (time.isValid()) {
        seconds += std::strtod(text.c_str() + kDigitsToSeconds, nullptr);
    } else {
        time = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    }
    const double whole = std::floor(seconds);
    time = time.addSecs(static_cast<qint64>(whole));
    const auto microseconds = static_cast<int>((seconds - whole) / base::kSecondsPerMicrosecond);
    return fmt::format("{}.{:06}", time.toString("yyyy-MM-dd hh:mm:ss").toStdString(),
                       microseconds);
}

/** The unit of the time stamps in s, chosen so that the last stamp fits 32 bits. */
double stampSeconds(double seconds)
{
    const double max = std::numeric_limits<quint32>::max() * base::kSecondsPerMicrosecond;
    return std::max(1.0, std::ceil(seconds / max)) * base::kSecondsPerMicrosecond;
}

comtrade::ComtradeHeader headerOf(const ExportOptions& options,
                                  const waveform::SignalDescription& description,
                                  const ExportFacts& facts)
{
    comtrade::ComtradeHeader header;
    header.mStation = "vx-simulator";
    header.mDevice = QFileInfo(QString::fromStdString(options.mInput)).fileName().toStdString();
    header.mRevision = comtrade::ComtradeRevision::k2013;
    for (int channel = 0; channel < kChannelCount; ++channel) {
        header.mAnalogs.push_back(analogOf(options, channel));
    }
    header.mNominalHz = facts.mFrequency;
    header.mRates = facts.mRates;
    header.mAnnouncedSamples = facts.mSamples;
    header.mStartTime = startTime(description.mStartTime, facts.mSkippedSeconds);
    header.mTriggerTime = header.mStartTime;
    header.mKind = comtrade::ComtradeKind::kBinary32;
    header.mStampSeconds = stampSeconds(facts.mSeconds);
    return header;
}

void writeRecords(const ExportOptions& options, const comtrade::ComtradeHeader& header,
                  base::ResultFile& output)
{
    ExportedSignal signal(options.mInput, options.mPart);
    waveform::SignalBlock block;
    while (signal.read(block)) {
        comtrade::writeComtradeRecords(header, block, output);
    }
}

void writePair(const ExportOptions& options, const comtrade::ComtradeHeader& header)
{
    base::ResultFile data(dataNameFor(options.mOutput));
    base::ResultFile output(options.mOutput);
    output.write(comtrade::comtradeConfigText(header));
    writeRecords(options, header, data);
    data.commit();
    output.commit();
}

void writeSingle(const ExportOptions& options, const comtrade::ComtradeHeader& header)
{
    base::ResultFile output(options.mOutput);
    output.write("--- file type: CFG ---\r\n" + comtrade::comtradeConfigText(header));
    output.write("--- file type: INF ---\r\n\r\n--- file type: HDR ---\r\n\r\n");
    output.write(fmt::format("--- file type: DAT {}: {} ---\r\n", nameOf(header.mKind),
                             header.mAnnouncedSamples * comtrade::comtradeRecordBytes(header)));
    writeRecords(options, header, output);
    output.commit();
}

void writeText(const ExportOptions& options)
{
    std::vector<textfile::TextWriter::Column> columns;
    columns.reserve(kChannelCount);
    for (int channel = 0; channel < kChannelCount; ++channel) {
        columns.push_back({waveform::kDeviceChannelNames.at(static_cast<size_t>(channel)),
                           unitOf(channel), factorOf(options, channel)});
    }
    base::ResultFile output(options.mOutput);
    textfile::TextWriter writer(std::move(columns), output);
    ExportedSignal signal(options.mInput, options.mPart);
    waveform::SignalBlock block;
    while (signal.read(block)) {
        writer.write(block);
    }
    output.commit();
}
} // namespace

bool isExportName(const std::string& output)
{
    const QString suffix = suffixOf(output);
    return suffix == "cfg" || suffix == "cff" || suffix == "csv";
}

std::string dataNameFor(const std::string& output)
{
    const QFileInfo config(QString::fromStdString(output));
    if (config.suffix().toLower() != "cfg") {
        return {};
    }
    const std::string suffix = config.suffix() == "CFG" ? "DAT" : "dat";
    return output.substr(0, output.size() - suffix.size()) + suffix;
}

std::string exportSignal(const ExportOptions& options)
{
    ExportedSignal signal(options.mInput, options.mPart);
    const ExportFacts facts = signal.readFacts();
    if (suffixOf(options.mOutput) == "csv") {
        writeText(options);
        return "";
    }
    const comtrade::ComtradeHeader header = headerOf(options, signal.description(), facts);
    if (suffixOf(options.mOutput) == "cff") {
        writeSingle(options, header);
    } else {
        writePair(options, header);
    }
    return facts.mMissing == 0 ? ""
                               : fmt::format("{} values are -2147483648, which means missing there",
                                             facts.mMissing);
}

} // namespace exporting
