#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "SampleRecord.h"

inline constexpr qint64 kSecond = 1'000'000'000; ///< ns

/** Time stamp in ns since the epoch. */
inline qint64 stampOf(const SampleRecord& record)
{
    return record.mSeconds * kSecond + record.mNanoseconds;
}

/** The records, or words, that the bytes are made of. */
template <typename Item>
std::vector<Item> itemsOf(const std::string& bytes)
{
    EXPECT_EQ(bytes.size() % sizeof(Item), 0U);
    std::vector<Item> items(bytes.size() / sizeof(Item));
    if (!items.empty()) {
        std::memcpy(items.data(), bytes.data(), items.size() * sizeof(Item));
    }
    return items;
}
