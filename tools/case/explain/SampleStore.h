#pragma once

#include <array>
#include <cstring>
#include <vector>

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

/**
 * The contents of a value file, by their index. Grows by chunks that never move: a sample costs its
 * own size and next to nothing beside it, whatever the number of samples.
 */
class SampleStore
{
public:
    void append(const SampleContent& content)
    {
        if (mSize % kChunkSamples == 0) {
            mChunks.emplace_back();
            mChunks.back().reserve(kChunkSamples);
        }
        mChunks.back().push_back(content);
        ++mSize;
    }

    /** Gives back what the last chunk does not need. To be called once all is appended. */
    void finish()
    {
        if (!mChunks.empty()) {
            mChunks.back().shrink_to_fit();
        }
    }

    const SampleContent& operator[](size_t index) const
    {
        return mChunks[index / kChunkSamples][index % kChunkSamples];
    }

    size_t size() const { return mSize; }
    bool isEmpty() const { return mSize == 0; }

    bool operator==(const SampleStore& other) const { return mChunks == other.mChunks; }

private:
    /** 160 KiB: the unused part of the last chunk never matters beside what is loaded. */
    static constexpr size_t kChunkSamples = 4096;

    std::vector<std::vector<SampleContent>> mChunks;
    size_t mSize = 0;
};

} // namespace explain
