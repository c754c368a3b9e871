#pragma once

#include <string>
#include <vector>

#include "FileDescriptor.h"
#include "SampleRecord.h"

namespace run {

/** What a night leaves in its folder beside the journal. Nothing that is there is overwritten. */
class NightFolder
{
public:
    /** Of all files with kept samples together. */
    static constexpr size_t kMaxKeptBytes = size_t{16} << 20U;

    explicit NightFolder(std::string path) : mPath(std::move(path)) {}

    std::string file(const std::string& name) const { return mPath + '/' + name; }

    /**
     * Writes kept/NAME.bin, or kept/NAME-2.bin where that is there already, to the disk.
     * @return its path in the folder; empty when there is no more room for it
     */
    std::string keep(const std::string& name, const std::vector<SampleRecord>& records);

    /** Opens a file at whose end is written. Throws CaseError. */
    files::FileDescriptor append(const std::string& name) const;

private:
    std::string mPath;
    size_t mKeptBytes = 0;
};

} // namespace run
