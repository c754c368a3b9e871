#include "stage/StageMaker.h"

#include <fmt/format.h>

#include <QRegularExpression>
#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "base/ProgressLine.h"
#include "base/ResultFile.h"
#include "explain/PlayedFile.h"
#include "plan/Hashes.h"
#include "stage/ValueFileMaker.h"

namespace stage {

namespace {
constexpr const char* kSteadyName = "steady";

/** Max length of the steady signal: the program takes a command only at the end of a pass. */
constexpr qint64 kMaxSteadyNs = 5'000'000'000;

/**
 * Max relative difference between times of the device, whose step is a whole number of ns, and the
 * file.
 */
constexpr double kRoundingOfSteps = 1e-4;

constexpr const char* kLikeSteady =
    ": has the same samples as the steady signal, so nobody could see it play; change one of the "
    "two, for example its amplitude";

/** Names keys of a plan instead of options of vx-case in a message. */
std::string withPlanKeys(const std::string& message)
{
    static const QRegularExpression kOption(QStringLiteral("(?<=^| )--(?=[a-z])"));
    return QString::fromStdString(message)
        .replace(QStringLiteral("--align"), QStringLiteral("align = true"))
        .remove(kOption)
        .toStdString();
}

explain::PlayedFile samplesOf(const std::string& path)
{
    explain::PlayedFile file(path);
    file.read(QString::fromStdString(path));
    return file;
}

/** Whether two files, played repeatedly, give the same samples. */
bool repeatEqually(const explain::PlayedFile& left, const explain::PlayedFile& right)
{
    for (size_t sample = 0; sample < left.size() + right.size(); ++sample) {
        const size_t inLeft = sample % left.size();
        const size_t inRight = sample % right.size();
        if (left.stepAt(inLeft) != right.stepAt(inRight) ||
            !(left.samples()[inLeft] == right.samples()[inRight])) {
            return false;
        }
    }
    return true;
}
} // namespace

Stage StageMaker::make()
{
    base::ProgressLine progress("making");
    makeSteady();
    size_t done = 0;
    for (const plan::Case& it : mPlan.mCases) {
        progress.show(double(++done) / double(mPlan.mCases.size() + 1));
        makeCase(it);
    }
    mMistakes.throwIfAny();
    writeConfiguration();
    return std::move(mStage);
}

void StageMaker::makeSteady()
{
    const MadeFile& file = fileOf(mPlan.mSteady, kSteadyName);
    if (!file.mIsGood) {
        return;
    }
    journal::StagedCase& steady = mStage.mSteady;
    steady.mName = kSteadyName;
    steady.mFile = file.mName;
    steady.mSamples = static_cast<quint64>(file.mFacts.mSamples);
    steady.mDurationNs = file.mFacts.mNanoseconds;
    steady.mTimes = 0;
    steady.mSource = mPlan.mSteady.mText;
    mStage.mBytesOnDevice += check::bytesOn32Bits(file.mFacts.mSamples);
    if (steady.mDurationNs > kMaxSteadyNs) {
        mStage.mRemarks.push_back(
            fmt::format("{}the steady signal lasts {:.1f} s, and each case waits for its end; a "
                        "short signal is better",
                        prefixOf(mPlan.mSteady.mLocation),
                        double(steady.mDurationNs) * base::kSecondsPerNanosecond));
    }
}

void StageMaker::makeCase(const plan::Case& it)
{
    const MadeFile& file = fileOf(it.mSource, it.mName);
    if (!file.mIsGood) {
        return;
    }
    journal::StagedCase staged;
    staged.mName = it.mName;
    staged.mNumber = static_cast<int>(mStage.mCases.size()) + 1;
    staged.mFile = file.mName;
    staged.mTimes = it.mTimes;
    staged.mSource = it.mSource.mText;
    staged.mExpected = it.mExpected;
    setRepetitions(it, file, staged);
    if (isLikeSteady(file)) {
        mMistakes.add(prefixOf(it.mLocation) + it.mName + kLikeSteady);
    }
    mStage.mBytesOnDevice += check::bytesOn32Bits(file.mFacts.mSamples);
    mStage.mCases.push_back(std::move(staged));
}

/** Files are read only if their first and last samples are equal. */
bool StageMaker::isLikeSteady(const MadeFile& file)
{
    const check::FileFacts& facts = file.mFacts;
    const check::FileFacts& steady = fileOf(mPlan.mSteady, kSteadyName).mFacts;
    return steady.mSamples > 0 && facts.mFirst == steady.mFirst && facts.mLast == steady.mLast &&
           repeatEqually(samplesOf(pathOf(file.mName)), samplesOf(pathOf(mStage.mSteady.mFile)));
}

/** Sets the number of repetitions whose duration is closest to the wanted one. */
void StageMaker::setRepetitions(const plan::Case& it, const MadeFile& file,
                                journal::StagedCase& staged)
{
    const double fileSeconds = double(file.mFacts.mNanoseconds) * base::kSecondsPerNanosecond;
    const double wanted = it.mSeconds.value_or(fileSeconds);
    if (wanted < fileSeconds * (1.0 - kRoundingOfSteps)) {
        mMistakes.add(fmt::format(
            "{}{}: seconds: one pass of the file takes {:.3f} s; expected at least that",
            prefixOf(it.mLocation), it.mName, fileSeconds));
    }
    const double repetitions = std::max(1.0, std::round(wanted / fileSeconds));
    if (repetitions > double(std::numeric_limits<quint32>::max())) {
        mMistakes.add(fmt::format(
            "{}{}: seconds: the file lasts {:g} s; expected at most {} repetitions",
            prefixOf(it.mLocation), it.mName, fileSeconds, std::numeric_limits<quint32>::max()));
        return;
    }
    staged.mFileRepetitions = static_cast<quint64>(repetitions);
    staged.mSamples = static_cast<quint64>(file.mFacts.mSamples) * staged.mFileRepetitions;
    staged.mDurationNs = file.mFacts.mNanoseconds * static_cast<qint64>(staged.mFileRepetitions);
}

/** Makes the file, unless an earlier case had the same source. */
const StageMaker::MadeFile& StageMaker::fileOf(const plan::Source& source, const std::string& name)
{
    const auto [known, isNew] = mMadeFrom.emplace(source.mText, MadeFile());
    MadeFile& file = known->second;
    if (!isNew) {
        return file;
    }
    file.mName = name + ".csv";
    try {
        addRemarks(name, makeValueFile(source, pathOf(file.mName)));
        file.mFacts = check::factsOf(QString::fromStdString(pathOf(file.mName)));
        expectPlayable(source, file);
        file.mHash = plan::fileHash(pathOf(file.mName));
        file.mIsGood = true;
        mFiles.push_back(file.mName);
    } catch (const base::CaseError& error) {
        const std::string text = withPlanKeys(error.what());
        if (text.find(mDirectory) == 0) {
            throw; // not a mistake of the case: the folder cannot be written
        }
        mMistakes.add(prefixOf(source.mLocation) + name + ": " + text);
    }
    return file;
}

/** Messages name the file of the source, which the user knows, instead of the made file. */
void StageMaker::expectPlayable(const plan::Source& source, const MadeFile& file) const
{
    const check::FileFacts& facts = file.mFacts;
    const std::string made = pathOf(file.mName);
    const std::string& shown = source.mPath.empty() ? file.mName : source.mPath;
    if (facts.mErrorCount > 0) {
        std::vector<std::string> errors = facts.mErrors;
        for (std::string& error : errors) {
            if (error.compare(0, made.size(), made) == 0) {
                error.replace(0, made.size(), shown);
            }
        }
        if (facts.mErrorCount > qint64(errors.size())) {
            errors.push_back(fmt::format("and {} more", facts.mErrorCount - qint64(errors.size())));
        }
        throw base::CaseError(fmt::format("{}", fmt::join(errors, "\n  ")));
    }
    if (facts.mSamples == 0) {
        throw base::CaseError(shown + ": has no samples to play");
    }
    if (facts.mUnplayable.mCount > 0) {
        throw base::CaseError(
            fmt::format("{}:{}: frequency of {} Hz cannot be played", shown,
                        check::lineOfSample(QString::fromStdString(made), facts.mUnplayable.mFirst),
                        facts.mUnplayable.mFrequency));
    }
}

void StageMaker::addRemarks(const std::string& name, const std::vector<std::string>& remarks)
{
    for (const std::string& remark : remarks) {
        mStage.mRemarks.push_back(name + ": " + withPlanKeys(remark));
    }
}

/** File names in it have no folder; see Stage. */
void StageMaker::writeConfiguration()
{
    std::string text = fmt::format(
        "# made by vx-campaign from the plan \"{}\"\n"
        "# configuration, repetitions, value file\n0,1,{}\n",
        mPlan.mName, mStage.mSteady.mFile);
    for (const journal::StagedCase& it : mStage.mCases) {
        text += fmt::format("{},{},{}\n", it.mNumber, it.mFileRepetitions, it.mFile);
    }
    text += "-1,0,\n";
    base::ResultFile output(pathOf(kCasesFile));
    output.write(text);
    output.commit();
    mFiles.emplace_back(kCasesFile);
    for (const auto& [source, file] : mMadeFrom) {
        text += file.mName + ' ' + file.mHash + '\n';
    }
    mStage.mHash = plan::textHash(text);
}

std::string StageMaker::prefixOf(const states::Location& location) const
{
    return states::messagePrefix(mPlan.mFileName, location);
}

} // namespace stage
