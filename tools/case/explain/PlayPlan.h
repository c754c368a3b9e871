#pragma once

#include <map>
#include <string>
#include <vector>

#include "CaseConfiguration.h"
#include "SampleStep.h"
#include "explain/PlayedFile.h"

namespace explain {

/** An entry that is played: its file has samples and its repetitions are not 0. */
struct PlayedEntry
{
    int mConfiguration;
    quint32 mRepetitions;
    size_t mFile; ///< index among the files
    int mNext;    ///< the entry after it in its configuration; PlayPlan::kNone at the end
};

/**
 * Samples of a file with the same content at equal distances: mFirst, mFirst + mStride and so on,
 * mCount in total. All samples from the first up to the last equal those one stride later.
 */
struct Positions
{
    size_t mFile;
    size_t mFirst;
    size_t mStride; ///< 0 with a single position
    size_t mCount;
};

/**
 * What the simulator plays with a case configuration: the entries in their order with the samples
 * of their files. Read once; from then on constant. Files with the same samples share one.
 */
class PlayPlan
{
public:
    static constexpr int kNone = -1;

    /**
     * Reads all value files.
     * @param directory where relative names begin; empty for the working directory
     * @throws CaseError in the simulator's words for what it would not play
     */
    PlayPlan(const std::string& configurationFile, const std::string& directory);
    PlayPlan(const PlayPlan&) = delete;
    PlayPlan& operator=(const PlayPlan&) = delete;
    ~PlayPlan() = default;

    const std::vector<PlayedFile>& files() const { return mFiles; }
    const PlayedEntry& entry(int index) const { return mEntries[static_cast<size_t>(index)]; }
    int entryCount() const { return static_cast<int>(mEntries.size()); }
    const PlayedFile& fileOf(int entry) const { return mFiles[this->entry(entry).mFile]; }

    /** All entries that play the file, of configurations that play the same those of the first. */
    const std::vector<int>& entriesOf(size_t file) const { return mEntriesOfFile[file]; }

    /** A command may name the numbers below this. */
    int configurationCount() const { return static_cast<int>(mFirstEntryOf.size()); }
    int continuousConfiguration() const { return mContinuous; }

    /** First entry that is played; kNone when the configuration has nothing to play. */
    int firstEntry(int configuration) const;

    /**
     * First entries of all configurations that have something to play, in order; of those that play
     * the same, the first.
     */
    const std::vector<int>& firstEntries() const { return mFirstEntries; }

    /** The firstEntries() that begin with this content. */
    const std::vector<int>& firstEntriesWith(const SampleContent& content) const;

    /** All configurations that play exactly the same as this one, including itself, in order. */
    const std::vector<int>& equalConfigurations(int configuration) const;

    /** Duration of the longest file in ns. */
    qint64 longestCaseNs() const { return mLongestCaseNs; }

    /** Duration in ns of a block of the slowest file, or of one without a playable frequency. */
    qint64 longestBlockNs() const { return mLongestStepNs * qint64{kSamplesPerPeriod}; }

    /** Whether the step is known and the same for all samples of all files. */
    bool hasOneStep() const { return mHasOneStep; }

private:
    size_t fileIndex(const QString& name, const std::string& directory);
    void addConfiguration(int number, const QList<configuration::CaseEntry>& entries,
                          const std::string& directory);
    void indexEntries();

    using PlayedSequence = std::vector<std::pair<size_t, quint32>>; ///< files with repetitions

    std::vector<PlayedFile> mFiles;
    std::map<QString, size_t> mIndexOfName;
    std::vector<PlayedEntry> mEntries;
    std::vector<std::vector<int>> mEntriesOfFile;
    std::vector<int> mFirstEntries;
    std::vector<int> mFirstEntryOf; ///< by the configuration's number
    std::map<SampleContent, std::vector<int>> mFirstEntriesOfContent;
    std::map<PlayedSequence, std::vector<int>> mConfigurationsOf;
    std::vector<const std::vector<int>*> mEqual; ///< by the configuration's number
    int mContinuous = 0;
    qint64 mLongestCaseNs = 0;
    qint64 mLongestStepNs = sampleStepOf(kDefaultFrequencyHz);
    bool mHasOneStep = false;
};

} // namespace explain
