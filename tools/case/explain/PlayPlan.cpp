#include "explain/PlayPlan.h"

#include <QDir>
#include <algorithm>

#include "base/CaseError.h"

namespace explain {

namespace {
configuration::CaseConfiguration readConfiguration(const std::string& fileName)
{
    configuration::CaseConfiguration::keepLogSilent();
    configuration::CaseConfiguration cases;
    if (!cases.read(QString::fromStdString(fileName),
                    configuration::CaseConfiguration::Rejected::Stop)) {
        throw base::CaseError(cases.fileError());
    }
    if (!cases.lineErrors().empty()) {
        throw base::CaseError(cases.lineErrors().front());
    }
    return cases;
}
} // namespace

PlayPlan::PlayPlan(const std::string& configurationFile, const std::string& directory)
{
    const configuration::CaseConfiguration cases = readConfiguration(configurationFile);
    mContinuous = cases.continuousNumber();
    for (int number = 0; number < cases.configurations().size(); ++number) {
        if (!cases.configurations().contains(number)) {
            throw base::CaseError(configurationFile + ": no entry for configuration " +
                                  std::to_string(number) + ": the simulator plays none of them");
        }
        addConfiguration(number, cases.configurations()[number], directory);
    }
    if (mEntries.empty()) {
        throw base::CaseError(configurationFile + ": nothing to play");
    }
    indexEntries();
}

void PlayPlan::addConfiguration(int number, const QList<configuration::CaseEntry>& entries,
                                const std::string& directory)
{
    int first = kNone;
    PlayedSequence sequence;
    for (const configuration::CaseEntry& line : entries) {
        const size_t file = fileIndex(line.mFileName, directory);
        if (line.mRepetitions == 0 || mFiles[file].samples().isEmpty()) {
            continue;
        }
        const int index = entryCount();
        if (first == kNone) {
            first = index;
        } else {
            mEntries.back().mNext = index;
        }
        mEntries.push_back({number, line.mRepetitions, file, kNone});
        sequence.emplace_back(file, line.mRepetitions);
    }
    mFirstEntryOf.push_back(first);
    std::vector<int>& equal = mConfigurationsOf[sequence];
    equal.push_back(number);
    if (first != kNone && equal.size() == 1) {
        mFirstEntries.push_back(first);
    }
    mEqual.push_back(&equal);
}

size_t PlayPlan::fileIndex(const QString& name, const std::string& directory)
{
    const auto known = mIndexOfName.find(name);
    if (known != mIndexOfName.end()) {
        return known->second;
    }
    PlayedFile file(name.toStdString());
    file.read(directory.empty() ? name : QDir(QString::fromStdString(directory)).filePath(name));
    const auto same = std::find(mFiles.begin(), mFiles.end(), file);
    const auto index = static_cast<size_t>(same - mFiles.begin());
    if (same == mFiles.end()) {
        mFiles.push_back(std::move(file));
    }
    mIndexOfName[name] = index;
    return index;
}

void PlayPlan::indexEntries()
{
    mEntriesOfFile.resize(mFiles.size());
    for (int index = 0; index < entryCount(); ++index) {
        if (equalConfigurations(entry(index).mConfiguration)[0] == entry(index).mConfiguration) {
            mEntriesOfFile[entry(index).mFile].push_back(index);
        }
        mLongestCaseNs = std::max(mLongestCaseNs, fileOf(index).durationNs());
        mLongestStepNs = std::max(mLongestStepNs, fileOf(index).longestStepNs());
    }
    const quint32 stepNs = fileOf(0).stepAt(0);
    mHasOneStep =
        stepNs > 0 && std::all_of(mFiles.begin(), mFiles.end(), [stepNs](const PlayedFile& file) {
            return file.hasOnlyStep(stepNs);
        });
    for (const int index : mFirstEntries) {
        mFirstEntriesOfContent[fileOf(index).samples()[0]].push_back(index);
    }
}

int PlayPlan::firstEntry(int configuration) const
{
    const bool exists = configuration >= 0 && configuration < configurationCount();
    return exists ? mFirstEntryOf[static_cast<size_t>(configuration)] : kNone;
}

const std::vector<int>& PlayPlan::firstEntriesWith(const SampleContent& content) const
{
    const auto found = mFirstEntriesOfContent.find(content);
    static const std::vector<int> kNoEntries;
    return found != mFirstEntriesOfContent.end() ? found->second : kNoEntries;
}

const std::vector<int>& PlayPlan::equalConfigurations(int configuration) const
{
    return *mEqual[static_cast<size_t>(configuration)];
}

} // namespace explain
