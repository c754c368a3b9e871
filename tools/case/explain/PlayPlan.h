#pragma once

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "CaseConfiguration.h"
#include "SampleRecord.h"

namespace explain {

/** What of a record comes from the value file: all but the time stamp. */
using SampleContent = std::array<quint32, 2 + kChannelCount>;

inline SampleContent contentOf(const SampleRecord& record)
{
    SampleContent content;
    std::memcpy(content.data(), &record.mAuxWord, sizeof(content));
    return content;
}

/** One value file as the driver gets it. Files with the same samples share one. */
struct PlayedFile
{
    std::string mName;                   ///< as the case configuration gives it, the first of them
    std::vector<SampleContent> mSamples; ///< never empty
    std::vector<quint32> mSteps;         ///< ns, one a block; 0 keeps the step before

    /** ns from the sample before to this one; 0 where the file does not say. */
    quint32 stepAt(size_t sample) const { return mSteps[sample / kSamplesPerPeriod]; }

    bool operator==(const PlayedFile& other) const
    {
        return mSamples == other.mSamples && mSteps == other.mSteps;
    }
};

/** An entry that is really played: its file has samples and its repetitions are not 0. */
struct PlayedEntry
{
    int mConfiguration;
    quint32 mRepetitions;
    size_t mFile; ///< index among the files
    int mNext;    ///< the entry behind it in its configuration; PlayPlan::kNone at the end
};

/** Where a sample is found. */
struct Place
{
    size_t mFile;
    size_t mSample;
};

/**
 * What the simulator plays with a case configuration: the entries in their order with the samples
 * of their files. Read once; from then on constant.
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

    const std::vector<PlayedFile>& files() const { return mFiles; }
    const PlayedEntry& entry(int index) const { return mEntries[static_cast<size_t>(index)]; }
    int entryCount() const { return static_cast<int>(mEntries.size()); }
    const PlayedFile& fileOf(int entry) const { return mFiles[this->entry(entry).mFile]; }

    /** Numbers that a command may name: from 0 up to it, without it. */
    int configurationCount() const { return mConfigurationCount; }
    int continuousConfiguration() const { return mContinuous; }

    /** First entry that is played; kNone when the configuration has nothing to play. */
    int firstEntry(int configuration) const;

    /** First entries of all configurations that have something to play. */
    const std::vector<int>& firstEntries() const { return mFirstEntries; }

    /** All configurations that play the very same as this one, itself included, in order. */
    std::vector<int> equalConfigurations(int configuration) const;

    /** Some places with this content, the first in each file, by a look at every sample. */
    std::vector<Place> firstPlacesOf(const SampleContent& content) const;

    /** Some places with this content, at most kMaxPlaces. Indexes the files when first called. */
    std::vector<Place> placesOf(const SampleContent& content) const;

private:
    static constexpr size_t kMaxPlaces = 256;
    static constexpr size_t kMaxPlacesOfFile = 32;

    struct IndexedPlace
    {
        size_t mHash;
        Place mPlace;
    };

    size_t fileIndex(const QString& name, const std::string& directory);
    void addConfiguration(int number, const QList<configuration::CaseEntry>& entries,
                          const std::string& directory);
    bool playsTheSame(int left, int right) const;
    void makeIndex() const;

    std::vector<PlayedFile> mFiles;
    std::map<QString, size_t> mIndexOfName;
    std::vector<PlayedEntry> mEntries;
    std::vector<int> mFirstEntries;
    std::vector<int> mFirstEntryOf; ///< by the configuration's number
    int mConfigurationCount = 0;
    int mContinuous = 0;
    mutable std::vector<IndexedPlace> mIndex; ///< by hash
};

} // namespace explain
