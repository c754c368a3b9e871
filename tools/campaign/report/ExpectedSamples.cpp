#include "report/ExpectedSamples.h"

#include <algorithm>

#include "CaseConfiguration.h"
#include "base/CaseError.h"
#include "stage/Stage.h"

namespace report {

namespace {
/** A time range in which one file is played repeatedly. */
struct PlayedRange
{
    const explain::PlayedFile* mFile;
    qint64 mOriginNs; ///< time stamp of the sample before a pass
    qint64 mFromNs;   ///< at or before the first sample
    qint64 mToNs;     ///< at or after the last sample
};

std::unique_ptr<explain::PlayedFile> readFile(const std::string& path)
{
    auto file = std::make_unique<explain::PlayedFile>(path);
    file->read(QString::fromStdString(path));
    if (file->size() == 0 || !file->hasAllSteps()) {
        throw base::CaseError(path + ": has no time stamps for its samples");
    }
    return file;
}

qint64 floorQuotient(qint64 dividend, qint64 divisor)
{
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

void addSamplesIn(const PlayedRange& range, std::vector<ExpectedSample>* samples)
{
    const explain::PlayedFile& file = *range.mFile;
    const qint64 durationNs = file.durationNs();
    // The last sample of a pass is at the origin of the next one.
    const qint64 pass = floorQuotient(range.mFromNs - range.mOriginNs - 1, durationNs);
    for (qint64 beginNs = range.mOriginNs + pass * durationNs; beginNs < range.mToNs;
         beginNs += durationNs) {
        for (size_t i = 0; i < file.size(); ++i) {
            const qint64 stampNs = beginNs + file.timeBefore(i) + file.stepAt(i);
            if (stampNs >= range.mFromNs && stampNs <= range.mToNs) {
                samples->push_back({stampNs, &file.samples()[i]});
            }
        }
    }
}
} // namespace

ExpectedSamples::ExpectedSamples(const std::string& folder)
    : mStage(folder + "/" + stage::kStageFolder + "/")
{
}

const explain::PlayedFile& ExpectedSamples::caseFile(const std::string& name)
{
    if (!mCase || mCaseName != name) {
        mCase.reset();
        mCase = readFile(mStage + name);
        mCaseName = name;
    }
    return *mCase;
}

const explain::PlayedFile& ExpectedSamples::steadyFile()
{
    if (!mSteady) {
        configuration::CaseConfiguration cases;
        const std::string path = mStage + stage::kCasesFile;
        cases.read(QString::fromStdString(path),
                   configuration::CaseConfiguration::Rejected::Continue);
        const QList<configuration::CaseEntry> steady = cases.configurations().value(0);
        if (steady.isEmpty()) {
            throw base::CaseError(path + ": has no configuration 0");
        }
        mSteady = readFile(mStage + steady.front().mFileName.toStdString());
    }
    return *mSteady;
}

std::vector<ExpectedSample> ExpectedSamples::around(const NightSummary& night,
                                                    const PlaySummary& play, qint64 fromNs,
                                                    qint64 toNs)
{
    if (play.mFirstStampNs == 0) {
        throw base::CaseError("no sample of the play arrived");
    }
    const journal::StagedCase& staged = night.mCases[play.mCase].mStaged;
    const explain::PlayedFile& played = caseFile(staged.mFile);
    const qint64 firstNs = play.mFirstStampNs;
    const qint64 beforeNs = firstNs - played.stepAt(0);
    // The stream may have ended early. If it lasted longer than expected, the clock was set.
    const qint64 wantedNs =
        beforeNs + static_cast<qint64>(staged.mFileRepetitions) * played.durationNs();
    const qint64 lastNs = std::max(play.mLastStampNs, wantedNs);
    fromNs = std::max(fromNs, firstNs - night.mNight.mGapNs);
    toNs = std::min(toNs, lastNs + night.mNight.mGapNs);
    if (fromNs > toNs) {
        throw base::CaseError("another play may have been in progress");
    }
    std::vector<ExpectedSample> samples;
    if (fromNs <= beforeNs) {
        addSamplesIn({&steadyFile(), beforeNs, fromNs, std::min(toNs, beforeNs)}, &samples);
    }
    addSamplesIn({&played, beforeNs, std::max(fromNs, firstNs), std::min(toNs, lastNs)}, &samples);
    if (toNs > lastNs) {
        addSamplesIn({&steadyFile(), lastNs, std::max(fromNs, lastNs + 1), toNs}, &samples);
    }
    return samples;
}

} // namespace report
