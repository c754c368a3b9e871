/** Text files with a heading, and whatever else a file may be found to be. */
#include "MemoryFile.h"
#include "RecordingFuzzer.h"
#include "input/OpenInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(textOf(data, size));
    readRecording([&] { return input::openInput(file.path().toStdString(), {}); });
    return 0;
}
