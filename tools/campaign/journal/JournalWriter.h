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
     * Returns once the entry is safely stored.
     * @throws CaseError if it cannot be stored; the entries before it are
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
     * Creates the journal, or continues an existing one.
     * @param keepBytes Journal::mWholeBytes of an existing journal; the rest is cut off
     * @param foundBytes its size when it was read; 0 if there was none
     * @throws CaseError if it cannot be opened, another process writes it, or has written it
     *         since it was read
     */
    JournalWriter(const std::string& path, size_t keepBytes, size_t foundBytes);

    void append(const Entry& entry) override;

private:
    [[noreturn]] void fail(int error) const;
    void expectSize(size_t bytes) const;
    void cutAt(size_t bytes) const;
    void flushToDisk() const;
    void flushDirectory() const;

    std::string mPath;
    files::FileDescriptor mFile;
    size_t mBytes;
};

/** Whether a process is writing this journal. */
bool isBeingWritten(const std::string& path);

} // namespace journal
