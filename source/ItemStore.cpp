#include "ItemStore.h"

#include <algorithm>

namespace {
constexpr size_t kMinChunkItems = 16;

/** Up to this number of items, each new chunk doubles the store. */
constexpr size_t kFewItems = 256;

/** With the allocator's own bytes just below 256 KiB, which is a whole number of pages. */
constexpr size_t kMaxChunkItems = 4095;

/** Fills a huge page, so that the kernel provides memory once for all of its items. */
constexpr size_t kHugeChunkItems = kHugePageBytes / sizeof(InputValueItem);

/** The last chunk of a long file leaves at most 1 / kUnusedPart of the items unused. */
constexpr size_t kUnusedPart = 16;
} // namespace

void ItemStore::append(const InputValueItem& item)
{
    *appendEmpty() = item;
}

void ItemStore::removeLast()
{
    mChunks.back().pop_back();
    --mSize;
    if (mChunks.back().empty()) {
        mChunks.pop_back();
    }
}

void ItemStore::addChunk()
{
    const size_t wanted = std::max(std::min(mSize, kFewItems), mSize / kUnusedPart);
    mChunks.emplace_back();
    mChunks.back().reserve(wanted >= kHugeChunkItems
                               ? kHugeChunkItems
                               : std::clamp(wanted, kMinChunkItems, kMaxChunkItems));
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
    Chunk& chunk = mChunks[mChunk];
    InputValueItem* const item = &chunk[mIndex];
    if (++mIndex == chunk.size()) {
        ++mChunk;
        mIndex = 0;
    }
    return item;
}
