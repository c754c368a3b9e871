#include "base/NearestName.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace base {

namespace {
/** The Levenshtein distance. */
size_t distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = std::exchange(row[j + 1], std::min({row[j] + 1, row[j + 1] + 1, replaced}));
        }
    }
    return row.back();
}
} // namespace

std::vector<std::string> nearestNames(std::string_view mistyped, std::vector<std::string> names,
                                      size_t count)
{
    constexpr size_t kEnough = 100; // bytes; a longer text is not a mistyped name
    mistyped = mistyped.substr(0, kEnough);
    std::stable_sort(names.begin(), names.end(), [mistyped](const auto& a, const auto& b) {
        return distance(mistyped, a) < distance(mistyped, b);
    });
    names.resize(std::min(names.size(), count));
    return names;
}

} // namespace base
