#include "ItemStore.h"

#include <algorithm>

namespace {
constexpr size_t kMinChunkItems = 16;

/** Up to this many, a chunk doubles what is there. */
constexpr size_t kFewItems = 256;

/** With the allocator's own bytes just short of 256 KiB, a whole number of pages. */
constexpr size_t kMaxChunkItems = 4095;

/** Fills a huge page: the kernel then finds memory once for all of them. */
constexpr size_t kHugeChunkItems = kHugePageBytes / sizeof(InputValueItem);

/** What a long file may leave unused in its last chunk: at most this part of its items. */
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
