#include "measure/PhasorWindow.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/Numbers.h"

namespace measure {

namespace {
/** Steps of the reference models in a nominal period. */
constexpr double kClassPSteps = 15.0;
constexpr double kClassMSteps = 16.0;

/** The filter of class M for one reporting rate. */
struct ClassMFilter
{
    double mNominalHz;
    int mFramesPerSecond;
    double mReferenceHz;
    double mOrder; ///< its length in steps
};

constexpr ClassMFilter kClassMFilters[] = {
    {50.0, 10, 1.779, 806}, {50.0, 25, 4.355, 338}, {50.0, 50, 7.75, 142},  {50.0, 100, 14.1, 66},
    {60.0, 10, 1.780, 968}, {60.0, 12, 2.125, 816}, {60.0, 15, 2.64, 662},  {60.0, 20, 3.50, 502},
    {60.0, 30, 5.02, 306},  {60.0, 60, 8.19, 164},  {60.0, 120, 16.25, 70},
};

const ClassMFilter* findClassMFilter(int framesPerSecond, double nominalHz)
{
    const auto* const found =
        std::find_if(std::begin(kClassMFilters), std::end(kClassMFilters), [&](const auto& each) {
            return each.mFramesPerSecond == framesPerSecond && each.mNominalHz == nominalHz;
        });
    return found == std::end(kClassMFilters) ? nullptr : found;
}

/**
 * The last weight of the reference model is not 0, and stands for half a step to either side.
 * Samples may lie at any time, so the weight fades out around the end of that, from the last weight
 * on. The sum of the fade is that of half a step.
 * @param steps distance from the middle, in steps of the reference model
 */
double hammingSinc(const ClassMFilter& filter, double steps)
{
    const double half = filter.mOrder / 2.0;
    const double angle =
        base::kTwoPi * 2.0 * filter.mReferenceHz * steps / (kClassMSteps * filter.mNominalHz);
    const double sinc = angle == 0.0 ? 1.0 : std::sin(angle) / angle;
    const double hamming = 0.54 + 0.46 * std::cos(base::kPi * std::min(1.0, steps / half));
    const double fade = std::clamp(half + 1.0 - steps, 0.0, 1.0);
    return sinc * hamming * fade * fade * (3.0 - 2.0 * fade);
}
} // namespace

PhasorWindow::PhasorWindow(PhasorClass phasorClass, int framesPerSecond, double nominalHz)
    : mHalfWidth(1.0 / nominalHz), mStep(1.0 / (kClassPSteps * nominalHz)), mTable(kRows + 1)
{
    const ClassMFilter* const filter =
        phasorClass == PhasorClass::M ? findClassMFilter(framesPerSecond, nominalHz) : nullptr;
    if (filter != nullptr) {
        mStep = 1.0 / (kClassMSteps * nominalHz);
        mHalfWidth = (filter->mOrder + 2.0) / 2.0 * mStep;
    }
    mRowsPerSecond = static_cast<double>(kRows) / mHalfWidth;
    for (size_t row = 0; row <= kRows; ++row) {
        const double x = static_cast<double>(row) / static_cast<double>(kRows);
        mTable[row] = filter != nullptr ? hammingSinc(*filter, x * mHalfWidth / mStep) : 1.0 - x;
    }
}

std::string PhasorWindow::problemOf(PhasorClass phasorClass, int framesPerSecond, double nominalHz)
{
    if (framesPerSecond < 1 || framesPerSecond > kMaxRate) {
        return fmt::format("{} frames per second; expected 1 to {}", framesPerSecond, kMaxRate);
    }
    if (phasorClass == PhasorClass::P || findClassMFilter(framesPerSecond, nominalHz) != nullptr) {
        return {};
    }
    std::string rates;
    for (const ClassMFilter& filter : kClassMFilters) {
        if (filter.mNominalHz == nominalHz) {
            rates += (rates.empty() ? "" : ", ") + std::to_string(filter.mFramesPerSecond);
        }
    }
    return fmt::format("class M has no filter for {} frames per second at {} Hz; expected {}",
                       framesPerSecond, nominalHz, rates.empty() ? "none" : rates);
}

} // namespace measure
