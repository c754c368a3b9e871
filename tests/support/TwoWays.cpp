#include "TwoWays.h"

#include "InputValues.h"
#include "MemoryFile.h"

namespace {
/** Remembers what it makes of a file. */
class WatchedValues : public InputValues
{
public:
    explicit WatchedValues(bool isFast)
    {
        if (isFast) {
            setFastRoad(typeid(WatchedValues), [](CsvParser* parser, std::string_view lines) {
                auto* const self = static_cast<WatchedValues*>(parser);
                const size_t taken = self->takePlainLine(lines);
                self->mPlainLines += taken > 0 ? 1 : 0;
                return taken;
            });
        }
    }

    void load(const QString& path)
    {
        const int errorsBefore = sErrorCounter;
        mResult = openFile(path) && parseCompleteFile();
        mErrors = sErrorCounter - errorsBefore;
        mLines = mLineNumber;
        resetIterator();
        while (const InputValueItem* item = nextItem()) {
            const SampleRecord& record = *item;
            mItems.append(reinterpret_cast<const char*>(&record), sizeof(record));
            mItems.append(reinterpret_cast<const char*>(&item->mFrequency),
                          sizeof(item->mFrequency));
        }
    }

    bool mResult = false;
    int mErrors = 0;
    quint32 mLines = 0;
    int mPlainLines = 0;
    std::string mItems; ///< the bytes of all
};

std::string compare(const WatchedValues& fast, const WatchedValues& general)
{
    if (fast.mResult != general.mResult || fast.mErrors != general.mErrors) {
        return "results";
    }
    if (fast.mLines != general.mLines) {
        return "line counts";
    }
    return fast.mItems == general.mItems ? "" : "items";
}
} // namespace

std::string differenceOfWays(const std::string& bytes, int* plainLines)
{
    const MemoryFile file(bytes);
    WatchedValues fast(true);
    WatchedValues general(false);
    fast.load(file.path());
    general.load(file.path());
    if (plainLines != nullptr) {
        *plainLines = fast.mPlainLines;
    }
    return compare(fast, general);
}
