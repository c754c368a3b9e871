/** Case configurations: parsing ends, errors are counted, and accepted entries can be walked. */
#include <cstddef>
#include <cstdint>

#include "Configuration.h"
#include "FuzzProcess.h"
#include "MemoryFile.h"

namespace {
/** Number of entries from configuration 0 up to the first configuration without any. */
int walk(Configuration& configuration)
{
    int entries = 0;
    const int numbers = configuration.configurationCount();
    for (int number = 0; number < numbers; ++number) {
        configuration.setCurrentConfiguration(number);
        configuration.resetIterator();
        ConfigurationItem* item = configuration.nextItem();
        if (item == nullptr) {
            break;
        }
        for (; item != nullptr; item = configuration.nextItem()) {
            require(!item->fileName().contains(QLatin1Char(',')), "no separator in a field");
            require(!item->fileName().contains(QLatin1Char('#')), "no comment in a field");
            ++entries;
        }
    }
    return entries;
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    enterFuzzProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(std::string(reinterpret_cast<const char*>(data), size));
    Configuration configuration;
    const int errorsBefore = TrackObject::sErrorCounter;
    require(configuration.openFile(file.path()), "the file opens");
    const bool ok = configuration.parseCompleteFile();
    // A rejected line is reported twice: by its handler and by the parser.
    require(TrackObject::sErrorCounter - errorsBefore == (ok ? 0 : 2), "errors are counted");
    const int entries = walk(configuration);
    require(walk(configuration) == entries, "walking changes nothing");
    return 0;
}
