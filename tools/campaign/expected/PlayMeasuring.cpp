#include "expected/PlayMeasuring.h"

#include <QFile>
#include <cstring>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "base/ProgressLine.h"
#include "measure/Measuring.h"
#include "report/ReportText.h"
#include "waveform/RecordStamp.h"

namespace expected {

namespace {
constexpr size_t kRecordsAtOnce = 4096;

bool exists(const std::string& path)
{
    return QFile::exists(QString::fromStdString(path));
}

/** The number of records from the first to the last time stamp of a play. */
quint64 recordsOf(const report::PlaySummary& play, const std::string& path)
{
    base::InputFile file(path);
    quint64 count = 0;
    constexpr size_t kBytes = kRecordsAtOnce * sizeof(SampleRecord);
    for (std::string_view bytes = file.peek(kBytes); bytes.size() >= sizeof(SampleRecord);
         bytes = file.peek(kBytes)) {
        const size_t whole = bytes.size() / sizeof(SampleRecord);
        for (size_t i = 0; i < whole; ++i) {
            SampleRecord record;
            std::memcpy(&record, bytes.data() + i * sizeof record, sizeof record);
            const qint64 stampNs = waveform::stampNsOf(record);
            count += stampNs >= play.mFirstStampNs && stampNs <= play.mLastStampNs ? 1 : 0;
        }
        file.skip(whole * sizeof(SampleRecord));
    }
    return count;
}

measure::MeasureOptions optionsOf(const report::NightSummary& night,
                                  const report::PlaySummary& play, const std::string& recording)
{
    const journal::Measuring& measuring = night.mNight.mMeasuring;
    measure::MeasureOptions options;
    options.mSignal.mPath = recording;
    options.mSignal.mCountsPerVolt = measuring.mCountsPerVolt;
    options.mSignal.mCountsPerAmpere = measuring.mCountsPerAmpere;
    if (measuring.mNominalHz > 0.0) {
        options.mSignal.mNominalHz = measuring.mNominalHz;
    }
    options.mGroups = night.mCases[play.mCase].mStaged.mExpected;
    options.mNominalVolts = measuring.mNominalVolts;
    options.mNominalAmperes = measuring.mNominalAmperes;
    return options;
}

/** Thrown while a play is measured. */
struct Interrupt
{
};

/**
 * @return remarks. Throws CaseError if there is nothing to measure or the play is incomplete, and
 *         Interrupt.
 */
std::vector<std::string> measurePlay(const report::NightSummary& night,
                                     const report::PlaySummary& play, const std::string& name,
                                     const std::function<bool()>& isInterrupted)
{
    const std::string recording = name + ".bin";
    if (!exists(recording)) {
        throw base::CaseError("its records were not kept, because there was no room");
    }
    const quint64 count = recordsOf(play, recording);
    if (count != play.mSamples) {
        throw base::CaseError(recording + ": has " + std::to_string(count) + " of " +
                              std::to_string(play.mSamples) + " samples of the play");
    }
    base::ResultFile values(name + ".csv", base::ResultFile::Existing::Keep);
    measure::MeasureOptions options = optionsOf(night, play, recording);
    options.mBeforeEachBlock = [&isInterrupted] {
        if (isInterrupted()) {
            throw Interrupt();
        }
    };
    const auto remarks = measure::measureSignal(options, values);
    values.commit();
    QFile::remove(QString::fromStdString(recording));
    return remarks;
}
} // namespace

MeasuredPlays measurePlays(const std::string& folder, const report::NightSummary& night,
                           const std::function<bool()>& isInterrupted)
{
    MeasuredPlays measured;
    base::ProgressLine progress("measuring the expected values");
    for (size_t index = 0; index < night.mPlays.size(); ++index) {
        progress.show(double(index) / double(night.mPlays.size()));
        const report::PlaySummary& play = night.mPlays[index];
        const journal::StagedCase& staged = night.mCases[play.mCase].mStaged;
        const std::string name =
            folder + '/' + journal::expectedName(staged, static_cast<int>(index));
        if (staged.mExpected.empty() || play.mOutcome != report::Outcome::Passed ||
            exists(name + ".csv")) {
            continue;
        }
        if (measured.mLeft > 0) {
            ++measured.mLeft;
            continue;
        }
        const std::string prefix = playText(night, play) + ": ";
        try {
            for (const std::string& remark : measurePlay(night, play, name, isInterrupted)) {
                measured.mRemarks.push_back(prefix + remark);
            }
        } catch (const base::CaseError& error) {
            measured.mRemarks.push_back(prefix + "no expected values: " + error.what());
        } catch (const Interrupt&) {
            measured.mLeft = 1;
        }
    }
    return measured;
}

} // namespace expected
