#pragma once

#include <QFile>
#include <QSaveFile>
#include <string>
#include <string_view>

namespace base {

/**
 * The output of a command: a file or standard output. A file is written under another name and
 * renamed at the end, so that a failure leaves no incomplete file and keeps the old one.
 *
 * Owns the open file. All errors are CaseErrors with the name of the file and the system's reason.
 */
class ResultFile
{
public:
    /** What to do with an existing file. */
    enum class Existing
    {
        Replace,
        Keep ///< it must have the written bytes; the first byte that differs is an error
    };

    /**
     * @param name the file; empty for standard output. A device, pipe or directory is refused,
     *        because renaming over it would destroy it.
     */
    explicit ResultFile(const std::string& name, Existing existing = Existing::Replace);
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;
    /** Leaves no file behind unless commit() was called. */
    ~ResultFile();

    void write(std::string_view bytes);

    /** Writes the collected bytes; to be called if somebody is waiting for them. */
    void flush();

    /** Gives the file its name. Nothing may be written after it. */
    void commit();

private:
    [[noreturn]] void fail(const std::string& reason) const;
    void writeToFile(std::string_view bytes);
    void compare(std::string_view bytes);

    std::string mName;    ///< empty for standard output
    QSaveFile mFile;      ///< not used for standard output
    QFile mKept;          ///< open only for an existing file that is to be kept
    std::string mPending; ///< collected, so that not each line costs a system call
};

} // namespace base
