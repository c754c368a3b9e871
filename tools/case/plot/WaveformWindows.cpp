#include "plot/WaveformWindows.h"

#include <algorithm>

namespace plot {

void WaveformWindows::add(const SharedBlock& block)
{
    for (Window& window : mWindows) {
        addBlock(*block, &window);
    }
    mLatest.push_back(block);
}

void WaveformWindows::open(const std::vector<Span>& spans, size_t columns)
{
    std::vector<Window> windows;
    for (const Span& span : spans) {
        const auto isSame = [&](const Window& it) { return it.mSpan == span; };
        if (std::any_of(windows.begin(), windows.end(), isSame)) {
            continue;
        }
        const auto found = std::find_if(mWindows.begin(), mWindows.end(), isSame);
        if (found != mWindows.end()) {
            windows.push_back(std::move(*found));
            windows.back().mSamples.limit(columns);
            continue;
        }
        windows.push_back({span, Envelope(mCurves, columns)});
        for (const SharedBlock& block : mLatest) {
            addBlock(*block, &windows.back());
        }
    }
    mWindows = std::move(windows);
}

void WaveformWindows::forgetBefore(double seconds)
{
    while (!mLatest.empty() && mLatest.front()->mSeconds.back() < seconds) {
        mLatest.pop_front();
    }
}

std::vector<Point> WaveformWindows::curve(const Span& span, size_t curve, size_t columns) const
{
    const auto found = std::find_if(mWindows.begin(), mWindows.end(),
                                    [&](const Window& it) { return it.mSpan == span; });
    Envelope samples = found->mSamples;
    samples.limit(columns);
    return samples.curve(curve);
}

void WaveformWindows::addBlock(const waveform::SignalBlock& block, Window* window)
{
    const auto begin = block.mSeconds.begin();
    const auto first = std::lower_bound(begin, block.mSeconds.end(), window->mSpan.mFrom);
    const auto last = std::upper_bound(first, block.mSeconds.end(), window->mSpan.mTo);
    for (auto it = first; it != last; ++it) {
        const auto sample = static_cast<size_t>(it - begin);
        for (size_t i = 0; i < mValues.size(); ++i) {
            mValues[i] = block.mValues[i][sample];
        }
        window->mSamples.add(*it, mValues);
    }
}

} // namespace plot
