#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace sandbox {

/** The files of the simulated driver, and the PME device. */
enum class DriverFile
{
    AdcIn,
    H2p,
    F2h,
    D2h,
    R2h,
    PmeSim
};

inline constexpr std::size_t kDriverFileCount = 6;

/** The PME device takes frames of this many bytes. */
inline constexpr std::size_t kPmeFrameBytes = 56'876;

/** A driver's file as the file system shows it. */
struct DriverFileTraits
{
    const char* mPath;
    mode_t mMode;
    off_t mSizeBytes;
};

const DriverFileTraits& driverFileTraits(DriverFile file);

/** The last part of the path, such as "adc-in". */
std::string driverFileName(DriverFile file);

/** The file of that name, the PME device included. */
std::optional<DriverFile> driverFileNamed(const std::string& name);

/** All files, in the order of their paths above; the PME device only when asked for. */
std::vector<DriverFile> driverFiles(bool withPmeDevice);

/**
 * The driver's rules: null if the file accepts a write of `size` bytes at `offset`; otherwise what
 * it accepts, as the rest of a sentence that begins with "the file takes".
 */
const char* expectedWrite(DriverFile file, off_t offset, std::size_t size);

} // namespace sandbox
