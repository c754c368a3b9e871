#include "waveform/DriverRecordingSource.h"

#include <fmt/format.h>

#include <QDateTime>
#include <algorithm>
#include <cstring>

#include "base/Numbers.h"
#include "waveform/DeviceChannels.h"
#include "waveform/RecordStamp.h"

namespace waveform {

namespace {
constexpr size_t kBlockSamples = 4096;
constexpr size_t kProbedSamples = 1000;

SampleRecord recordAt(std::string_view bytes, size_t index)
{
    SampleRecord record{};
    std::memcpy(&record, bytes.data() + index * sizeof(record), sizeof(record));
    return record;
}

std::string timeText(const SampleRecord& record)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(record.mSeconds, Qt::UTC);
    return fmt::format("{}.{:09} UTC", time.toString("yyyy-MM-dd HH:mm:ss").toStdString(),
                       record.mNanoseconds);
}
} // namespace

DriverRecordingSource::DriverRecordingSource(const std::string& path) : mFile(path)
{
    mDescription.mFileName = path;
    mDescription.mFormat = "recording of the driver";
    mDescription.mChannels = deviceChannels();
    mDescription.mSampleCount = mFile.size() / sizeof(SampleRecord);
    if (mDescription.mSampleCount > 0) {
        const SampleRecord first = recordAt(mFile.peek(sizeof(SampleRecord)), 0);
        mDescription.mStartTime = timeText(first);
        mFirstStampNs = stampNsOf(first);
    }
}

bool DriverRecordingSource::read(SignalBlock& block)
{
    const std::string_view bytes = mFile.peek(kBlockSamples * sizeof(SampleRecord));
    const size_t samples = bytes.size() / sizeof(SampleRecord);
    block.mFirst = mSamples;
    block.mFrequency.clear();
    block.resize(kChannelCount, samples);
    for (size_t i = 0; i < samples; ++i) {
        const SampleRecord record = recordAt(bytes, i);
        block.mSeconds[i] = mTime.next(stampNsOf(record)) * base::kSecondsPerNanosecond;
        if (mTime.fallen() > 0 && !mDescription.mFirstFall) {
            mDescription.mFirstFall = block.mSeconds[i];
        }
        putValues(record.mValues, i, &block);
    }
    mFile.skip(samples * sizeof(SampleRecord));
    mSamples += samples;
    if (samples == 0) {
        finish();
    }
    return samples > 0;
}

void DriverRecordingSource::finish()
{
    for (const std::string& remark : mTime.remarks()) {
        mDescription.mRemarks.push_back(remark);
    }
    if (mFile.left() > 0) {
        mDescription.mRemarks.push_back(
            fmt::format("{} bytes at the end are no whole record: left out", mFile.left()));
    }
    mFile.skip(mFile.left());
}

std::string reasonNotDriverRecording(base::InputFile& file)
{
    if (file.size() == 0 || file.size() % sizeof(SampleRecord) != 0) {
        return fmt::format("its {} bytes are not a multiple of {}", file.size(),
                           sizeof(SampleRecord));
    }
    file.setPart(0, file.size());
    const std::string_view bytes = file.peek(kProbedSamples * sizeof(SampleRecord));
    qint64 last = -1;
    for (size_t i = 0; i < bytes.size() / sizeof(SampleRecord); ++i) {
        const SampleRecord record = recordAt(bytes, i);
        if (record.mNanoseconds >= kSecondInNs || stampNsOf(record) <= last) {
            return fmt::format("record {} has no rising time stamp", i + 1);
        }
        last = stampNsOf(record);
    }
    return {};
}

} // namespace waveform
