/** Recordings in a single file. */
#include "MemoryFile.h"
#include "RecordingFuzzer.h"
#include "comtrade/ComtradeFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(textOf(data, size));
    readRecording([&] {
        return std::make_unique<comtrade::ComtradeSource>(
            comtrade::openComtradeSingle(file.path().toStdString(), std::string()));
    });
    return 0;
}
