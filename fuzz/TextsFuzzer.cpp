/** Text files with a heading, and all other kinds of file that are recognised by their content. */
#include "MemoryFile.h"
#include "RecordingFuzzer.h"
#include "input/OpenInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(textOf(data, size));
    readRecording([&] { return input::openInput(file.path().toStdString(), {}); });
    return 0;
}
