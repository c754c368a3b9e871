#pragma once

#include <string>

#include "FileDescriptor.h"
#include "journal/Entries.h"

namespace journal {

/** Takes the steps of a night, one after the other. */
class JournalSink
{
public:
    JournalSink() = default;
    JournalSink(const JournalSink&) = delete;
    JournalSink& operator=(const JournalSink&) = delete;
    virtual ~JournalSink() = default;

    /**
     * Returns once the entry will survive whatever happens.
     * @throws CaseError when it will not; the entries before it do
     */
    virtual void append(const Entry& entry) = 0;
};

/**
 * The journal on the disk: each entry is a line, and is flushed to the disk before append()
 * returns. Owns the open file and its lock: one process at a time writes a journal.
 */
class JournalWriter : public JournalSink
{
public:
    /**
     * Makes the journal, or goes on with it.
     * @param keepBytes of an existing journal: Journal::mWholeBytes; what is behind it goes
     * @throws CaseError when it cannot be opened, or another process writes it
     */
    JournalWriter(const std::string& path, size_t keepBytes);

    void append(const Entry& entry) override;

private:
    [[noreturn]] void fail(int error) const;
    void cutAt(size_t bytes) const;
    void flushToDisk() const;
    void flushDirectory() const;

    std::string mPath;
    files::FileDescriptor mFile;
    size_t mBytes;
};

} // namespace journal
