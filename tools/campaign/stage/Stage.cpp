#include "stage/Stage.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "SampleRecord.h"
#include "base/Numbers.h"
#include "base/ResultFile.h"
#include "plan/Hashes.h"
#include "stage/StageMaker.h"

namespace stage {

namespace {
/**
 * Time between a play and the next: the program plays some blocks ahead, and the end of a case is
 * recognised some thousand samples later.
 */
constexpr qint64 kReactionNs = 500'000'000;

constexpr const char* kDiffers =
    ": differs from what the plan makes; name another folder, or restore the plan and its files";

/** Never replaces an existing file or folder. */
void moveTo(const QString& from, const QString& to)
{
    if (!QDir().rename(from, to)) {
        throw base::CaseError(to.toStdString() +
                              ": cannot be created; is the disk full, or does it exist already?");
    }
}

/** Names of the files that do not exist yet. Throws if an existing file differs. */
std::vector<std::string> missingFiles(const std::vector<std::string>& files, const QDir& made,
                                      const QDir& present)
{
    plan::Mistakes mistakes;
    std::vector<std::string> missing;
    for (const std::string& name : files) {
        const QString file = QString::fromStdString(name);
        const std::string path = present.filePath(file).toStdString();
        if (!present.exists(file)) {
            missing.push_back(name);
        } else if (plan::fileHash(path) != plan::fileHash(made.filePath(file).toStdString())) {
            mistakes.add(path +
                         ": differs from what the plan makes; name another folder, or restore the "
                         "plan and its files");
        }
    }
    mistakes.throwIfAny();
    return missing;
}

/** Publishes the stage as a whole; to an existing stage it adds the missing files. */
void publish(const std::vector<std::string>& files, const QDir& made, const QDir& present)
{
    if (!QFileInfo::exists(present.path())) {
        moveTo(made.path(), present.path());
        return;
    }
    for (const std::string& name : missingFiles(files, made, present)) {
        const QString file = QString::fromStdString(name);
        moveTo(made.filePath(file), present.filePath(file));
    }
}

/** @return true if the copy of the plan is missing */
bool expectSamePlan(const plan::Plan& plan, const std::string& path)
{
    if (!QFileInfo::exists(QString::fromStdString(path))) {
        return true;
    }
    if (plan::fileHash(path) != plan.mHash) {
        throw plan::PlanError(path + kDiffers);
    }
    return false;
}

/** From the end of a play to the beginning of the next one. */
qint64 betweenNs(const Stage& stage, qint64 gapNs)
{
    return gapNs + stage.mSteady.mDurationNs + kReactionNs;
}

void writePlan(const plan::Plan& plan, const std::string& path)
{
    base::ResultFile copy(path);
    copy.write(plan.mText);
    copy.commit();
}
} // namespace

Stage makeStage(const plan::Plan& plan, const std::string& folder)
{
    const QDir night(QString::fromStdString(folder));
    if (!night.mkpath(".")) {
        throw base::CaseError(folder + ": cannot be created as a folder");
    }
    const std::string copy = night.filePath(kPlanFile).toStdString();
    const bool isPlanMissing = expectSamePlan(plan, copy);
    const QTemporaryDir work(night.filePath(".stage-XXXXXX"));
    if (!work.isValid()) {
        throw base::CaseError(folder + ": " + work.errorString().toStdString());
    }
    // Made inside the temporary folder, which only its owner may enter; this one has the usual
    // mode.
    const QDir made(work.filePath(kStageFolder));
    if (!made.mkpath(".")) {
        throw base::CaseError(made.path().toStdString() + ": cannot be created as a folder");
    }
    StageMaker maker(plan, made.path().toStdString());
    Stage stage = maker.make();
    stage.mDirectory = night.filePath(kStageFolder).toStdString();
    stage.mConfiguration = stage.mDirectory + '/' + kCasesFile;
    publish(maker.files(), made, QDir(QString::fromStdString(stage.mDirectory)));
    if (isPlanMissing) {
        writePlan(plan, copy);
    }
    return stage;
}

quint64 recordingBytes(const Stage& stage, qint64 gapNs)
{
    const double samplesPerNs = double(stage.mSteady.mSamples) / double(stage.mSteady.mDurationNs);
    const auto around = static_cast<quint64>(double(2 * betweenNs(stage, gapNs)) * samplesPerNs);
    quint64 samples = 0;
    for (const journal::StagedCase& it : stage.mCases) {
        samples += it.mExpected.empty() ? 0 : (it.mSamples + around) * quint64(it.mTimes);
    }
    return samples * sizeof(SampleRecord);
}

double nominalHz(const Stage& stage)
{
    constexpr double kFifty = 50.0;
    constexpr double kSixty = 60.0;
    const double periods = double(stage.mSteady.mSamples) / kSamplesPerPeriod;
    const double seconds = double(stage.mSteady.mDurationNs) * base::kSecondsPerNanosecond;
    return periods > seconds * (kFifty + kSixty) / 2.0 ? kSixty : kFifty;
}

qint64 nightNs(const Stage& stage, qint64 gapNs)
{
    const qint64 between = betweenNs(stage, gapNs);
    qint64 night = between;
    for (const journal::StagedCase& it : stage.mCases) {
        night += (between + it.mDurationNs) * it.mTimes;
    }
    return night;
}

} // namespace stage
