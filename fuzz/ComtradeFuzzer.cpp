/** Recordings in two files: configuration, a line of "=", data. */
#include "MemoryFile.h"
#include "RecordingFuzzer.h"
#include "comtrade/ComtradeFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text = textOf(data, size);
    const size_t end = text.find("\n=\n");
    const MemoryFile config(text.substr(0, end));
    const MemoryFile values(end == std::string::npos ? "" : text.substr(end + 3));
    readRecording([&] {
        return std::make_unique<comtrade::ComtradeSource>(comtrade::openComtradePair(
            config.path().toStdString(), values.path().toStdString(), std::string()));
    });
    return 0;
}
