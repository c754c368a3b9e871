#pragma once

#include <cstddef>
#include <vector>

#include "HugePageAllocator.h"
#include "InputValueItem.h"

/**
 * The items of one input value file, in file order. It grows by chunks that never move, so an item
 * keeps its address, a long file is never copied while it grows, and the overhead per item is
 * negligible. The later chunks of a very long file are huge pages.
 *
 * Owns its items; a copy owns copies.
 */
class ItemStore
{
public:
    void append(const InputValueItem& item);

    /**
     * Appends an item of zeros, for the caller to fill in place. Inline because it is on
     * the fast path of loading.
     */
    InputValueItem* appendEmpty()
    {
        if (isFull()) {
            addChunk();
        }
        ++mSize;
        return &mChunks.back().emplace_back();
    }

    bool isEmpty() const { return mSize == 0; }

    /** Takes the last item back. Requires: there is one. */
    void removeLast();

    /** Sets the read position to the first item. */
    void rewind();

    /**
     * The item at the read position, which then advances; null at the end. The pointer stays
     * valid as long as the store does.
     */
    InputValueItem* next();

private:
    bool isFull() const
    {
        return mChunks.empty() || mChunks.back().size() == mChunks.back().capacity();
    }
    void addChunk();

    using Chunk = std::vector<InputValueItem, HugePageAllocator<InputValueItem>>;

    std::vector<Chunk> mChunks;
    size_t mSize = 0;  ///< items in all chunks
    size_t mChunk = 0; ///< chunk of the read position
    size_t mIndex = 0; ///< index of the read position in its chunk
};
