/** Value files: for any bytes the fast path and the general path give the same result. */
#include <cstddef>
#include <cstdint>

#include "FuzzProcess.h"
#include "TwoWays.h"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string difference =
        differenceOfWays(std::string(reinterpret_cast<const char*>(data), size));
    require(difference.empty(), "same " + difference);
    return 0;
}
