#pragma once

#include <array>
#include <cstring>
#include <vector>

#include "SampleRecord.h"

namespace explain {

/** The part of a record that comes from the value file: everything except the time stamp. */
using SampleContent = std::array<quint32, 2 + kChannelCount>;

inline SampleContent contentOf(const SampleRecord& record)
{
    SampleContent content;
    std::memcpy(content.data(), &record.mAuxWord, sizeof(content));
    return content;
}

/**
 * The contents of a value file, by index. It grows by chunks that never move, so the overhead per
 * sample is negligible.
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

    /** Releases the unused part of the last chunk. To be called after the last append. */
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
    /** 160 KiB, so that the unused part of the last chunk is negligible. */
    static constexpr size_t kChunkSamples = 4096;

    std::vector<std::vector<SampleContent>> mChunks;
    size_t mSize = 0;
};

} // namespace explain
