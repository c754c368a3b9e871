#pragma once

#include <string>
#include <vector>

#include "FileDescriptor.h"
#include "SampleRecord.h"

namespace run {

/** The files of a night beside the journal. Existing files are not overwritten. */
class NightFolder
{
public:
    /** Limit for all files with kept samples together. */
    static constexpr size_t kMaxKeptBytes = size_t{16} << 20U;

    explicit NightFolder(std::string path) : mPath(std::move(path)) {}

    std::string file(const std::string& name) const { return mPath + '/' + name; }

    /**
     * Writes kept/NAME.bin, or kept/NAME-2.bin if that exists, and flushes it to the disk.
     * @return its path in the folder; empty if there is no room for it
     */
    std::string keep(const std::string& name, const std::vector<SampleRecord>& records);

    /** Opens a file for appending. Throws CaseError. */
    files::FileDescriptor append(const std::string& name) const;

private:
    std::string mPath;
    size_t mKeptBytes = 0;
};

} // namespace run
