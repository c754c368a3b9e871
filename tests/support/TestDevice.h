#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "SampleRecord.h"

/**
 * The fixed paths of a device, private to the test process: each object finds the directories of
 * the control FIFO and of the driver there and empty.
 */
class TestDevice
{
public:
    /** Throws with one line that says what is missing when the kernel allows no private mounts. */
    TestDevice();

    /** Makes the driver's five files as regular files. */
    static void makeDriver();

    /** Makes a directory, or a link, and removes what was there. */
    static void makeDirectory(const std::string& path);
    static void makeLink(const std::string& path, const std::string& target);

    static void remove(const std::string& path);

    /** The paths of the driver's files in the order in which they are opened. */
    static const std::vector<std::string>& driverPaths();

    /** What the sample buffer took. */
    static std::vector<SampleRecord> records();

    /** The 32-bit words in a driver file. */
    static std::vector<quint32> words(const std::string& path);

    /** Writes the bytes into the control FIFO in one write. Requires: the FIFO is open. */
    static void send(const std::string& bytes);
};
