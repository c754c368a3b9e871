#include "explain/RecordWindow.h"

#include <algorithm>
#include <cstring>

namespace explain {

namespace {
constexpr size_t kRecordsAtOnce = 16'384;
}

RecordWindow::RecordWindow(const std::string& path) : mFile(path) {}

size_t RecordWindow::ahead()
{
    if (mRecords.size() - mNext < kAhead && mFile.left() > 0) {
        refill();
    }
    return std::min(mRecords.size() - mNext, kAhead);
}

void RecordWindow::refill()
{
    mProgress.show(mFile.progress());
    const size_t dropped = mNext - std::min(mNext, kBack);
    mRecords.erase(mRecords.begin(), mRecords.begin() + static_cast<std::ptrdiff_t>(dropped));
    mNext -= dropped;
    const std::string_view bytes = mFile.peek(kRecordsAtOnce * sizeof(SampleRecord));
    const size_t records = bytes.size() / sizeof(SampleRecord);
    const size_t before = mRecords.size();
    mRecords.resize(before + records);
    std::memcpy(mRecords.data() + before, bytes.data(), records * sizeof(SampleRecord));
    mFile.skip(records * sizeof(SampleRecord));
    if (records < kRecordsAtOnce) {
        mRestBytes = bytes.size() % sizeof(SampleRecord);
        mFile.skip(mRestBytes);
    }
}

} // namespace explain
