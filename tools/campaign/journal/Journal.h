#pragma once

#include <string>
#include <vector>

#include "journal/Entries.h"

namespace journal {

/** What a journal says, up to its last whole line. */
struct Journal
{
    std::vector<Entry> mEntries; ///< the first one is a NightBegin, if there is any
    size_t mWholeBytes = 0;      ///< of the file, up to the end of the last entry

    /** Null for a journal that was cut off within its first line. */
    const NightBegin* night() const;
};

/**
 * Reads the journal of a night, also of one that was cut off at any byte: a last line that has no
 * end or is no entry is left out.
 * @throws CaseError when the file cannot be read, or another line is no entry, or contradicts the
 *         lines before it: with the line and the field
 */
Journal readJournal(const std::string& path);

} // namespace journal
