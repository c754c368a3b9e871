#include "TwoWays.h"

#include <cstring>
#include <vector>

#include "InputValues.h"
#include "MemoryFile.h"

namespace {
/** Remembers what it makes of a file. */
class WatchedValues : public InputValues
{
public:
    explicit WatchedValues(bool isFast) : mIsFast(isFast) {}

    void load(const QString& path)
    {
        const int errorsBefore = sErrorCounter;
        mResult = openFile(path) && parseCompleteFile();
        mErrors = sErrorCounter - errorsBefore;
        mLines = mLineNumber;
        resetIterator();
        while (const InputValueItem* item = nextItem()) {
            mRead.push_back(*item);
        }
    }

    bool mResult = false;
    int mErrors = 0;
    quint32 mLines = 0;
    int mPlainLines = 0;
    std::vector<InputValueItem> mRead;

protected:
    size_t takePlainLine(std::string_view lines) override
    {
        const size_t taken = mIsFast ? InputValues::takePlainLine(lines) : 0;
        mPlainLines += taken > 0 ? 1 : 0;
        return taken;
    }

private:
    bool mIsFast;
};

bool isSame(const InputValueItem& a, const InputValueItem& b)
{
    const SampleRecord& left = a;
    const SampleRecord& right = b;
    return std::memcmp(&left, &right, sizeof(left)) == 0 &&
           std::memcmp(&a.mFrequency, &b.mFrequency, sizeof(a.mFrequency)) == 0;
}

std::string compare(const WatchedValues& fast, const WatchedValues& general)
{
    if (fast.mResult != general.mResult) {
        return "results";
    }
    if (fast.mErrors != general.mErrors) {
        return "error counts";
    }
    if (fast.mLines != general.mLines) {
        return "line counts";
    }
    if (fast.mRead.size() != general.mRead.size()) {
        return "item counts";
    }
    for (size_t i = 0; i < fast.mRead.size(); ++i) {
        if (!isSame(fast.mRead[i], general.mRead[i])) {
            return "item " + std::to_string(i);
        }
    }
    return {};
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
