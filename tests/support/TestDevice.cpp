#include "TestDevice.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "Files.h"
#include "FixedPaths.h"
#include "PrivateMounts.h"
#include "Records.h"

namespace fs = std::filesystem;

namespace {
bool enterPrivateMounts()
{
    sandbox::PrivateMounts mounts;
    mounts.enter();
    mounts.makePrivateDev();
    mounts.makeEtcVx();
    mounts.makeDriverDirectory();
    return true;
}
} // namespace

TestDevice::TestDevice()
{
    static const bool sEntered = enterPrivateMounts();
    EXPECT_TRUE(sEntered);
    remove(kControlFifoPath);
    for (const std::string& path : driverPaths()) {
        remove(path);
    }
}

const std::vector<std::string>& TestDevice::driverPaths()
{
    static const std::vector<std::string> sPaths{kSampleBufferPath, kH2pPath, kF2hPath, kD2hPath,
                                                 kR2hPath};
    return sPaths;
}

void TestDevice::makeDriver()
{
    for (const std::string& path : driverPaths()) {
        remove(path);
        writeFile(path, "");
    }
}

void TestDevice::makeDirectory(const std::string& path)
{
    remove(path);
    fs::create_directory(path);
}

void TestDevice::makeLink(const std::string& path, const std::string& target)
{
    remove(path);
    fs::create_symlink(target, path);
}

void TestDevice::remove(const std::string& path)
{
    fs::remove(path);
}

std::vector<SampleRecord> TestDevice::records()
{
    return itemsOf<SampleRecord>(readFile(kSampleBufferPath));
}

std::vector<quint32> TestDevice::words(const std::string& path)
{
    return itemsOf<quint32>(readFile(path));
}

void TestDevice::send(const std::string& bytes)
{
    const int fifo = open(kControlFifoPath, O_WRONLY | O_NONBLOCK);
    ASSERT_GE(fifo, 0) << std::strerror(errno);
    EXPECT_EQ(write(fifo, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(fifo);
}
