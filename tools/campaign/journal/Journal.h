#pragma once

#include <string>
#include <vector>

#include "journal/Entries.h"

namespace journal {

/** The content of a journal, up to its last complete line. */
struct Journal
{
    std::vector<Entry> mEntries; ///< the first one is a NightBegin, if there is any
    size_t mWholeBytes = 0;      ///< of the file, up to the end of the last entry

    /** Null if the journal was cut off within its first line. */
    const NightBegin* night() const;
};

/**
 * Reads the journal of a night, even if it was cut off at any byte: an incomplete or invalid last
 * line is left out.
 * @throws CaseError with line and field, if the file cannot be read, or another line is invalid or
 *         contradicts the lines before it
 */
Journal readJournal(const std::string& path);

} // namespace journal
