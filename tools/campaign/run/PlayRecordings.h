#pragma once

#include <map>
#include <string>

#include "FileDescriptor.h"
#include "SampleRecord.h"

namespace run {

/**
 * The recordings of plays, FOLDER/expected/NAME.bin, until they are measured. A recording without
 * room on the disk is removed, and the play then has no expected values: the night itself is more
 * important.
 */
class PlayRecordings
{
public:
    /** Limit for all recordings of the night together: about 2.7 h at 50 Hz. */
    static constexpr quint64 kMaxBytes = quint64{8} << 30U;

    /** Space that is left free on the disk for the rest of the night. */
    static constexpr quint64 kMinFreeBytes = quint64{256} << 20U;

    /** @param folder of the night */
    explicit PlayRecordings(std::string folder) : mFolder(std::move(folder)) {}

    /** @param name relative to the folder, without suffix; an old file of that name is replaced */
    void add(const std::string& name, const SampleRecord* records, size_t count);

    /** Ends the recording. @param isWanted whether to keep it; otherwise it is removed */
    void end(const std::string& name, bool isWanted);

private:
    std::string pathOf(const std::string& name) const { return mFolder + '/' + name + ".bin"; }
    files::FileDescriptor open(const std::string& name) const;
    bool hasRoomFor(quint64 bytes) const;
    void remove(const std::string& name) const;

    std::string mFolder;
    std::map<std::string, files::FileDescriptor> mOpen; ///< closed: could not be written
    quint64 mBytes = 0;
};

} // namespace run
