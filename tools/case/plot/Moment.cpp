#include "plot/Moment.h"

#include <algorithm>
#include <cmath>

namespace plot {

std::vector<Moment> chooseMoments(std::vector<Moment> moments, size_t max, double apart)
{
    std::stable_sort(moments.begin(), moments.end(), [](const Moment& left, const Moment& right) {
        return left.mScore > right.mScore;
    });
    std::vector<Moment> chosen;
    for (const Moment& moment : moments) {
        const bool isNear = std::any_of(chosen.begin(), chosen.end(), [&](const Moment& it) {
            return std::abs(it.mSeconds - moment.mSeconds) < apart;
        });
        if (!isNear && chosen.size() < max) {
            chosen.push_back(moment);
        }
    }
    std::sort(chosen.begin(), chosen.end(), [](const Moment& left, const Moment& right) {
        return left.mSeconds < right.mSeconds;
    });
    return chosen;
}

} // namespace plot
