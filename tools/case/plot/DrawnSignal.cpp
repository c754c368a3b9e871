#include "plot/DrawnSignal.h"

#include <limits>
#include <utility>

#include "plot/DrawnBlock.h"

namespace plot {

DrawnSignal::DrawnSignal(std::unique_ptr<waveform::SignalSource> source,
                         const std::vector<std::string>& sources, double shift, size_t columns)
    : mSource(std::move(source)),
      mShift(shift),
      mChannels(mSource->description(), sources),
      mOverview(mSource->description(), mChannels, columns),
      mWindows(mChannels.count()),
      mReadTo(-std::numeric_limits<double>::infinity())
{
}

bool DrawnSignal::readBlock()
{
    if (!mSource->read(mWhole)) {
        mIsAtEnd = true;
        mOverview.finish();
        return false;
    }
    mBlock = std::make_shared<const waveform::SignalBlock>(drawnBlock(mWhole, mChannels, mShift));
    mReadTo = mBlock->mSeconds.back();
    mOverview.add(*mBlock);
    mWindows.add(mBlock);
    return true;
}

} // namespace plot
