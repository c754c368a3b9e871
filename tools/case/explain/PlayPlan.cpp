#include "explain/PlayPlan.h"

#include <QDir>
#include <algorithm>
#include <string_view>

#include "InputValues.h"
#include "LogText.h"
#include "PipeOrDevice.h"
#include "SampleStep.h"
#include "base/CaseError.h"
#include "waveform/ProgramMessages.h"

namespace explain {

namespace {
constexpr int kLinesAtOnce = 4096;

/** Reads a value file piece by piece, so that it is held in the shape of PlayedFile only. */
class ValueLines : private InputValues
{
public:
    explicit ValueLines(const QString& path)
    {
        if (configuration::isPipeOrDevice(path)) {
            throw base::CaseError(local8Bit(path) + ": " + configuration::kExpectedRegularFile);
        }
        openFile(path);
        throwFirstError();
    }

    void readInto(PlayedFile* file)
    {
        while (parseLines(kLinesAtOnce) >= 0) {
            throwFirstError();
            resetIterator();
            while (const InputValueItem* const item = nextItem()) {
                append(*item, file);
            }
            releaseItems();
        }
    }

private:
    void throwFirstError() const
    {
        if (!mMessages.errors().empty()) {
            throw base::CaseError(mMessages.errors().front());
        }
    }

    static void append(const InputValueItem& item, PlayedFile* file)
    {
        if (file->mSamples.size() % kSamplesPerPeriod == 0) {
            const quint32 step = sampleStepOf(item.mFrequency);
            file->mSteps.push_back(isPlayableStep(step) ? step : 0);
        }
        file->mSamples.push_back(contentOf(item));
    }

    waveform::ProgramMessages mMessages;
};

size_t hashOf(const SampleContent& content)
{
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(content.data()), sizeof(content)});
}

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
    mConfigurationCount = cases.configurations().size();
    mContinuous = cases.continuousNumber();
    for (int number = 0; number < mConfigurationCount; ++number) {
        if (!cases.configurations().contains(number)) {
            throw base::CaseError(configurationFile + ": no entry for configuration " +
                                  std::to_string(number) + ": the simulator plays none of them");
        }
        addConfiguration(number, cases.configurations()[number], directory);
    }
    if (mEntries.empty()) {
        throw base::CaseError(configurationFile + ": nothing to play");
    }
}

void PlayPlan::addConfiguration(int number, const QList<configuration::CaseEntry>& entries,
                                const std::string& directory)
{
    int first = kNone;
    for (const configuration::CaseEntry& line : entries) {
        const size_t file = fileIndex(line.mFileName, directory);
        if (line.mRepetitions == 0 || mFiles[file].mSamples.empty()) {
            continue;
        }
        const int index = entryCount();
        if (first == kNone) {
            first = index;
        } else {
            mEntries.back().mNext = index;
        }
        mEntries.push_back({number, line.mRepetitions, file, kNone});
    }
    mFirstEntryOf.push_back(first);
    if (first != kNone) {
        mFirstEntries.push_back(first);
    }
}

size_t PlayPlan::fileIndex(const QString& name, const std::string& directory)
{
    const auto known = mIndexOfName.find(name);
    if (known != mIndexOfName.end()) {
        return known->second;
    }
    const QString path =
        directory.empty() ? name : QDir(QString::fromStdString(directory)).filePath(name);
    PlayedFile file;
    file.mName = name.toStdString();
    ValueLines(path).readInto(&file);
    const auto same = std::find(mFiles.begin(), mFiles.end(), file);
    const auto index = static_cast<size_t>(same - mFiles.begin());
    if (same == mFiles.end()) {
        mFiles.push_back(std::move(file));
    }
    mIndexOfName[name] = index;
    return index;
}

int PlayPlan::firstEntry(int configuration) const
{
    const bool exists = configuration >= 0 && configuration < mConfigurationCount;
    return exists ? mFirstEntryOf[static_cast<size_t>(configuration)] : kNone;
}

std::vector<int> PlayPlan::equalConfigurations(int configuration) const
{
    std::vector<int> equal;
    for (int number = 0; number < mConfigurationCount; ++number) {
        if (playsTheSame(firstEntry(number), firstEntry(configuration))) {
            equal.push_back(number);
        }
    }
    return equal;
}

/** Whether two entries and all behind them are the same. */
bool PlayPlan::playsTheSame(int left, int right) const
{
    while (left != right) {
        if (left == kNone || right == kNone || entry(left).mFile != entry(right).mFile ||
            entry(left).mRepetitions != entry(right).mRepetitions) {
            return false;
        }
        left = entry(left).mNext;
        right = entry(right).mNext;
    }
    return true;
}

void PlayPlan::makeIndex() const
{
    for (size_t file = 0; file < mFiles.size(); ++file) {
        const auto& samples = mFiles[file].mSamples;
        for (size_t sample = 0; sample < samples.size(); ++sample) {
            mIndex.push_back({hashOf(samples[sample]), {file, sample}});
        }
    }
    std::stable_sort(mIndex.begin(), mIndex.end(),
                     [](const auto& left, const auto& right) { return left.mHash < right.mHash; });
}

std::vector<Place> PlayPlan::firstPlacesOf(const SampleContent& content) const
{
    std::vector<Place> places;
    for (size_t file = 0; file < mFiles.size(); ++file) {
        const auto& samples = mFiles[file].mSamples;
        size_t found = 0;
        for (size_t sample = 0; sample < samples.size() && found < kMaxPlacesOfFile; ++sample) {
            if (samples[sample] == content) {
                places.push_back({file, sample});
                ++found;
            }
        }
    }
    return places;
}

std::vector<Place> PlayPlan::placesOf(const SampleContent& content) const
{
    if (mIndex.empty()) {
        makeIndex();
    }
    const size_t hash = hashOf(content);
    auto found =
        std::lower_bound(mIndex.begin(), mIndex.end(), hash,
                         [](const IndexedPlace& it, size_t value) { return it.mHash < value; });
    std::vector<Place> places;
    for (; found != mIndex.end() && found->mHash == hash && places.size() < kMaxPlaces; ++found) {
        const Place place = found->mPlace;
        if (mFiles[place.mFile].mSamples[place.mSample] == content) {
            places.push_back(place);
        }
    }
    return places;
}

} // namespace explain
