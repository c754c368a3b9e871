#include "run/PlayRecorder.h"

#include <utility>

namespace run {

void PlayRecorder::add(const SampleRecord* records, size_t count)
{
    if (mCurrent) {
        mDesk.record(*mCurrent, records, count);
    }
    if (mBefore) {
        mDesk.record(*mBefore, records, count);
        mAfter += count;
        if (mAfter >= kMaxAfter) {
            endBefore();
        }
    }
}

void PlayRecorder::endPlay(bool isWanted)
{
    if (!mCurrent) {
        return;
    }
    endBefore();
    if (isWanted) {
        mBefore = std::exchange(mCurrent, std::nullopt);
        mAfter = 0;
        return;
    }
    mDesk.endRecording(*mCurrent, false);
    mCurrent.reset();
}

void PlayRecorder::endBefore()
{
    if (mBefore) {
        mDesk.endRecording(*mBefore, true);
        mBefore.reset();
    }
}

void PlayRecorder::stop()
{
    endPlay(false);
    endBefore();
}

} // namespace run
