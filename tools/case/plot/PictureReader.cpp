#include "plot/PictureReader.h"

#include <algorithm>

namespace plot {

namespace {
/** The index of the signal that is behind in time; the number of signals when all have ended. */
size_t nextOf(const std::vector<std::unique_ptr<DrawnSignal>>& drawn)
{
    size_t next = drawn.size();
    for (size_t i = 0; i < drawn.size(); ++i) {
        if (!drawn[i]->isAtEnd() &&
            (next == drawn.size() || drawn[i]->readTo() < drawn[next]->readTo())) {
            next = i;
        }
    }
    return next;
}
} // namespace

void readSignals(const std::vector<std::unique_ptr<DrawnSignal>>& drawn, Difference* difference,
                 const MomentChooser& chooser, size_t columns, base::ProgressLine& progress)
{
    const Overview& overview = drawn[0]->overview();
    for (size_t next = 0; (next = nextOf(drawn)) < drawn.size();) {
        const bool hasBlock = drawn[next]->readBlock();
        if (difference != nullptr && hasBlock) {
            difference->add(next, drawn[next]->block());
        } else if (difference != nullptr) {
            difference->finish();
        }
        const std::vector<Span> spans = chooser.candidates(overview);
        const size_t width = columns / chooser.shownCount(overview);
        const double earliest = chooser.earliestNext(overview);
        for (const auto& signal : drawn) {
            signal->windows().open(spans, width);
            signal->windows().forgetBefore(earliest);
        }
        progress.show(drawn[0]->progress());
    }
}

} // namespace plot
