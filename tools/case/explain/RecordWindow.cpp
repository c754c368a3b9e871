#include "explain/RecordWindow.h"

#include <algorithm>

#include "explain/Costs.h"

namespace explain {

void RecordWindow::append(const SampleRecord* records, size_t count)
{
    if (mNext > 2 * kBack) { // not each time, so that a record is moved twice at most
        const size_t dropped = mNext - kBack;
        mRecords.erase(mRecords.begin(), mRecords.begin() + static_cast<std::ptrdiff_t>(dropped));
        mNext -= dropped;
    }
    mRecords.insert(mRecords.end(), records, records + count);
}

std::vector<SampleContent> RecordWindow::proof(size_t offset) const
{
    std::vector<SampleContent> contents;
    for (size_t i = offset; i < std::min(ahead(), offset + kProofRecords); ++i) {
        contents.push_back(contentOf((*this)[i]));
    }
    return contents;
}

} // namespace explain
