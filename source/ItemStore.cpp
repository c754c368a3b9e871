#include "ItemStore.h"

#include <algorithm>

namespace {
/** Small files get small chunks. */
constexpr size_t kFirstChunkItems = 256;

/** With the allocator's own bytes just short of 256 KiB, a whole number of pages. */
constexpr size_t kMaxChunkItems = 4095;
} // namespace

void ItemStore::append(const InputValueItem& item)
{
    if (mChunks.empty() || mChunks.back().size() == mChunks.back().capacity()) {
        const size_t last = mChunks.empty() ? 0 : mChunks.back().capacity();
        mChunks.emplace_back();
        mChunks.back().reserve(std::clamp(2 * last, kFirstChunkItems, kMaxChunkItems));
    }
    mChunks.back().push_back(item);
}

void ItemStore::rewind()
{
    mChunk = 0;
    mIndex = 0;
}

InputValueItem* ItemStore::next()
{
    if (mChunk == mChunks.size()) {
        return nullptr;
    }
    std::vector<InputValueItem>& chunk = mChunks[mChunk];
    InputValueItem* const item = &chunk[mIndex];
    if (++mIndex == chunk.size()) {
        ++mChunk;
        mIndex = 0;
    }
    return item;
}
