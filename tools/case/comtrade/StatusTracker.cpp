#include "comtrade/StatusTracker.h"

namespace comtrade {

namespace {
constexpr size_t kMaxChanges = 100'000; ///< max number kept, for all channels together
} // namespace

void StatusTracker::add(const ComtradeBlock& block, const std::vector<double>& seconds)
{
    const size_t words = (mChannels->size() + kStatesInWord - 1) / kStatesInWord;
    const bool isFirst = mLast.empty();
    mLast.resize(words);
    for (size_t i = 0; i < block.size(); ++i) {
        for (size_t word = 0; word < words; ++word) {
            const quint16 states = block.mStates[i * words + word];
            if (states != mLast[word]) {
                const unsigned changed = static_cast<unsigned>(states) ^ mLast[word];
                mLast[word] = states;
                change(word, changed, seconds[i], isFirst && i == 0);
            }
        }
    }
}

void StatusTracker::change(size_t word, unsigned bits, double seconds, bool isFirst)
{
    for (size_t bit = 0; bit < kStatesInWord; ++bit) {
        const size_t channel = word * kStatesInWord + bit;
        if ((bits >> bit & 1U) == 0 || channel >= mChannels->size()) {
            continue;
        }
        waveform::StatusChannel& status = (*mChannels)[channel];
        if (isFirst) {
            status.mFirstState = true;
            continue;
        }
        ++status.mChangeCount;
        if (mKept < kMaxChanges) {
            ++mKept;
            status.mChanges.push_back({seconds, (mLast[word] >> bit & 1U) != 0});
        }
    }
}

} // namespace comtrade
