#pragma once

#include <QFile>
#include <QSaveFile>
#include <string>
#include <string_view>

namespace base {

/**
 * Where a command's result goes: a file, which is written under another name and renamed at the
 * end, so that a failure leaves no half file and keeps the old one; or standard output.
 *
 * Owns the open file. Throws CaseError with the file's name and the system's reason for whatever
 * fails.
 */
class ResultFile
{
public:
    /** What may happen to a file that is there already. */
    enum class Existing
    {
        Replace,
        Keep ///< it must hold what is written; else a failure, at the first byte that differs
    };

    /**
     * @param name the file; empty is standard output. A device, pipe or directory is refused,
     *        since renaming over it would destroy it.
     */
    explicit ResultFile(const std::string& name, Existing existing = Existing::Replace);
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;
    /** Leaves no file behind unless commit() was called. */
    ~ResultFile();

    void write(std::string_view bytes);

    /** Passes on what was collected; to be called where somebody waits for it. */
    void flush();

    /** Makes what was written appear under its name. Nothing may be written after it. */
    void commit();

private:
    [[noreturn]] void fail(const std::string& reason) const;
    void writeToFile(std::string_view bytes);
    void compare(std::string_view bytes);

    std::string mName;    ///< empty for standard output
    QSaveFile mFile;      ///< not used for standard output
    QFile mKept;          ///< open only where a file is there that is to be kept
    std::string mPending; ///< collected, so that a line costs no call
};

} // namespace base
