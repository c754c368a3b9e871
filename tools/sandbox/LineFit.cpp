#include "LineFit.h"

namespace sandbox {

void LineFit::add(double x, double y)
{
    ++mCount;
    const double fromOldMeanX = x - mMeanX;
    mMeanX += fromOldMeanX / static_cast<double>(mCount);
    mMeanY += (y - mMeanY) / static_cast<double>(mCount);
    mVarianceX += fromOldMeanX * (x - mMeanX);
    mCovariance += fromOldMeanX * (y - mMeanY);
}

} // namespace sandbox
