#include "DriverFiles.h"

#include <algorithm>

#include "FixedPaths.h"
#include "SampleRecord.h"

namespace sandbox {

namespace {

constexpr std::size_t kRecordBytes = sizeof(SampleRecord);
constexpr std::size_t kF2hRecordBytes = 16;
constexpr std::size_t kR2hRecordBytes = 48;

constexpr mode_t kReadOnlyMode = 0444;
constexpr mode_t kWriteOnlyMode = 0222;

/** In sysfs, an attribute has the size of a page whatever it holds; a device has size 0. */
constexpr off_t kAttributeBytes = 4096;
constexpr off_t kDeviceBytes = 0;

constexpr DriverFileTraits kTraits[kDriverFileCount] = {
    {kSampleBufferPath, kWriteOnlyMode, kDeviceBytes},
    {kH2pPath, kReadOnlyMode, kAttributeBytes},
    {kF2hPath, kWriteOnlyMode, kAttributeBytes},
    {kD2hPath, kWriteOnlyMode, kAttributeBytes},
    {kR2hPath, kWriteOnlyMode, kAttributeBytes},
    {kPmeDevicePath, kWriteOnlyMode, kDeviceBytes},
};

const char* expectedBlock(std::size_t size)
{
    const std::size_t records = size / kRecordBytes;
    const bool fits = size % kRecordBytes == 0 && records >= 1 && records <= kSamplesPerPeriod;
    return fits ? nullptr : "1 to 360 whole records of 48 bytes";
}

} // namespace

const DriverFileTraits& driverFileTraits(DriverFile file)
{
    return kTraits[static_cast<std::size_t>(file)];
}

std::string driverFileName(DriverFile file)
{
    const std::string path = driverFileTraits(file).mPath;
    return path.substr(path.rfind('/') + 1);
}

std::optional<DriverFile> driverFileNamed(const std::string& name)
{
    const std::vector<DriverFile> files = driverFiles(true);
    const auto found = std::find_if(files.begin(), files.end(), [&name](DriverFile file) {
        return driverFileName(file) == name;
    });
    return found == files.end() ? std::nullopt : std::optional(*found);
}

std::vector<DriverFile> driverFiles(bool withPmeDevice)
{
    std::vector<DriverFile> files = {DriverFile::AdcIn, DriverFile::H2p, DriverFile::F2h,
                                     DriverFile::D2h, DriverFile::R2h};
    if (withPmeDevice) {
        files.push_back(DriverFile::PmeSim);
    }
    return files;
}

const char* expectedWrite(DriverFile file, off_t offset, std::size_t size)
{
    switch (file) {
        case DriverFile::AdcIn:
            return expectedBlock(size);
        case DriverFile::H2p:
            return "no writes";
        case DriverFile::F2h:
            return offset == 0 && size == kF2hRecordBytes ? nullptr : "16 bytes at offset 0";
        case DriverFile::D2h:
            return nullptr;
        case DriverFile::R2h:
            return offset == 0 && size == kR2hRecordBytes ? nullptr : "48 bytes at offset 0";
        case DriverFile::PmeSim:
            return size == kPmeFrameBytes ? nullptr : "frames of 56876 bytes";
    }
    return "no writes";
}

} // namespace sandbox
