#include "TwoWays.h"

#include <algorithm>

#include "InputValues.h"
#include "MemoryFile.h"

namespace {
/** Records the results of loading a file. */
class WatchedValues : public InputValues
{
public:
    explicit WatchedValues(bool isFast)
    {
        if (isFast) {
            setFastPath(typeid(WatchedValues), [](CsvParser* parser, std::string_view lines) {
                auto* const self = static_cast<WatchedValues*>(parser);
                const size_t taken = self->takePlainLine(lines);
                self->mPlainLines += taken > 0 ? 1 : 0;
                return taken;
            });
        }
    }

    /** Loads all lines: continues after a rejected one. */
    void load(const QString& path, const std::string& bytes)
    {
        const int errorsBefore = sErrorCounter;
        mIsOpen = openFile(path);
        for (auto left = std::count(bytes.begin(), bytes.end(), '\n'); left >= 0; --left) {
            mAccepted += parseNextLine() ? 1 : 0;
        }
        mErrors = sErrorCounter - errorsBefore;
        mLines = mLineNumber;
        resetIterator();
        while (const InputValueItem* item = nextItem()) {
            const SampleRecord& record = *item;
            mItems.append(reinterpret_cast<const char*>(&record), sizeof(record));
            const float frequency = item->mFrequency;
            mItems.append(reinterpret_cast<const char*>(&frequency), sizeof(frequency));
        }
    }

    bool mIsOpen = false;
    int mAccepted = 0;
    int mErrors = 0;
    quint32 mLines = 0;
    int mPlainLines = 0;
    std::string mItems; ///< the bytes of all
};
} // namespace

std::string differenceOfWays(const std::string& bytes, int* plainLines)
{
    const MemoryFile file(bytes);
    WatchedValues fast(true);
    WatchedValues general(false);
    fast.load(file.path(), bytes);
    general.load(file.path(), bytes);
    if (plainLines != nullptr) {
        *plainLines = fast.mPlainLines;
    }
    if (!fast.mIsOpen || !general.mIsOpen || fast.mAccepted != general.mAccepted ||
        fast.mErrors != general.mErrors) {
        return "results";
    }
    if (fast.mLines != general.mLines) {
        return "line counts";
    }
    return fast.mItems == general.mItems ? "" : "items";
}
