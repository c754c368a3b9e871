#include "assess/ChannelSwap.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cmath>
#include <optional>
#include <set>

#include "assess/Matching.h"
#include "assess/QuantityNames.h"
#include "assess/Steps.h"

namespace assess {

namespace {
constexpr size_t kMaxMembers = 4;
constexpr size_t kMaxCompared = 5000;
constexpr double kSwappedShare = 0.3; ///< of the error

using Members = std::vector<std::string>;
using Permutation = std::vector<size_t>; ///< [i]: the channel whose expected values channel i has

const std::array<Members, 3>& channelGroups()
{
    static const std::array<Members, 3> kGroups{
        {{"UA", "UB", "UC", "UN"}, {"IA", "IB", "IC", "IN"}, {"A", "B", "C"}}};
    return kGroups;
}

/** The rms of the errors; no value if nothing can be compared. */
std::optional<double> errorBetween(const Series& expected, const Series& measured, bool isAngles,
                                   qint64 toleranceNs)
{
    Series first;
    const size_t count = std::min(expected.mSamples.size(), kMaxCompared);
    first.mSamples.assign(expected.mSamples.begin(),
                          expected.mSamples.begin() + static_cast<std::ptrdiff_t>(count));
    const std::vector<Pair> pairs = matchInTime(first, measured, toleranceNs).mPairs;
    double squares = 0.0;
    for (const Pair& it : pairs) {
        const double error = it.mMeasured - it.mExpected;
        squares += std::pow(isAngles ? wrapped(error) : error, 2.0);
    }
    return pairs.empty() ? std::nullopt
                         : std::optional(std::sqrt(squares / static_cast<double>(pairs.size())));
}

/** Compares each measured channel of a group with each expected one. */
class SwapSearch
{
public:
    SwapSearch(const ValueTable& expected, const ValueTable& measured, const std::string& quantity,
               const Members& group, qint64 toleranceNs);

    /** No value if each channel fits itself best, or if no clear exchange is found. */
    std::optional<Permutation> find() const;

    const Members& members() const { return mMembers; }

private:
    size_t nearest(size_t member) const;

    Members mMembers;                                                   ///< those in both tables
    std::array<std::array<double, kMaxMembers>, kMaxMembers> mErrors{}; ///< [measured][expected]
};

SwapSearch::SwapSearch(const ValueTable& expected, const ValueTable& measured,
                       const std::string& quantity, const Members& group, qint64 toleranceNs)
{
    for (const std::string& channel : group) {
        const Series* const found = measured.find({quantity, channel});
        if (expected.find({quantity, channel}) != nullptr && found != nullptr &&
            !found->mSamples.empty()) {
            mMembers.push_back(channel);
        }
    }
    for (size_t i = 0; i < mMembers.size(); ++i) {
        for (size_t j = 0; j < mMembers.size(); ++j) {
            mErrors[i][j] = errorBetween(*expected.find({quantity, mMembers[j]}),
                                         *measured.find({quantity, mMembers[i]}), isAngle(quantity),
                                         toleranceNs)
                                .value_or(HUGE_VAL);
        }
    }
}

size_t SwapSearch::nearest(size_t member) const
{
    size_t best = member;
    for (size_t j = 0; j < mMembers.size(); ++j) {
        best = mErrors[member][j] < kSwappedShare * mErrors[member][member] &&
                       mErrors[member][j] < mErrors[member][best]
                   ? j
                   : best;
    }
    return best;
}

std::optional<Permutation> SwapSearch::find() const
{
    Permutation whose;
    std::set<size_t> used;
    bool isMoved = false;
    for (size_t i = 0; i < mMembers.size(); ++i) {
        whose.push_back(nearest(i));
        used.insert(whose.back());
        isMoved = isMoved || whose.back() != i;
    }
    return isMoved && used.size() == mMembers.size() ? std::optional(whose) : std::nullopt;
}

std::string swapText(const Members& channels, const Permutation& whose, const std::string& quantity)
{
    std::vector<std::string> parts;
    for (size_t i = 0; i < whose.size(); ++i) {
        if (whose[i] > i && whose[whose[i]] == i) {
            parts.push_back(channels[i] + " and " + channels[whose[i]] + " are swapped");
        } else if (whose[i] != i && whose[whose[i]] != i) {
            parts.push_back(channels[i] + " has the values of " + channels[whose[i]]);
        }
    }
    return fmt::format("{} ({}): phase order, or the map?", fmt::join(parts, ", "), quantity);
}
} // namespace

std::vector<SwappedChannels> findSwaps(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs)
{
    std::vector<SwappedChannels> swaps;
    std::set<std::string> known; // channels that are named already
    for (const char* const quantity :
         {kAngle, kMagnitude, "rms", "rms-half", "harmonic-3", "harmonic-5", "p"}) {
        for (const Members& group : channelGroups()) {
            const SwapSearch search(expected, measured, quantity, group, toleranceNs);
            const std::optional<Permutation> whose = search.find();
            if (!whose) {
                continue;
            }
            SwappedChannels swap;
            swap.mText = swapText(search.members(), *whose, quantity);
            for (size_t i = 0; i < whose->size(); ++i) {
                if ((*whose)[i] != i) {
                    swap.mChannels.push_back(search.members()[i]);
                }
            }
            if (known.count(swap.mChannels.front()) == 0) {
                known.insert(swap.mChannels.begin(), swap.mChannels.end());
                swaps.push_back(swap);
            }
        }
    }
    return swaps;
}

} // namespace assess
