#include "BenchDevice.h"

#include <filesystem>
#include <fstream>

#include "FixedPaths.h"
#include "PrivateMounts.h"

void makeBenchDevice()
{
    sandbox::PrivateMounts mounts;
    mounts.enter();
    mounts.makePrivateDev();
    mounts.makeEtcVx();
    mounts.makeDriverDirectory();
    std::filesystem::create_symlink("/dev/null", kSampleBufferPath);
    for (const char* path : {kH2pPath, kF2hPath, kD2hPath, kR2hPath}) {
        std::ofstream attribute(path);
    }
}
