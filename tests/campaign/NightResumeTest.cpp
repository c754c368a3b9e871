#include <gtest/gtest.h>

#include "NightFixture.h"

using journal::PlayEnd;
using journal::PlayVerdict;

namespace {
class NightResumeTest : public NightFixture
{
};
} // namespace

/**
 * No play is lost and none has two ends, wherever the night stops: cut off, interrupted or full
 * disk.
 */
TEST_F(NightResumeTest, ContinuesWithTheUnfinishedPlay)
{
    const SimulatedNight night = sixPlays();
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        SimulatedDesk desk(night.mCases);
        MemoryJournal journal;
        run::Night first(night.mBegin, *night.mPlan, {}, desk, journal);
        const size_t at = between(1, 60);
        desk.mFault = [&](const Block* block) {
            if (round % 3 == 0 && block->mIndex == 4 * at) {
                first.interrupt(desk.now());
            }
        };
        journal.mMaxEntries = round % 3 == 1 ? between(2, 20) : SIZE_MAX;
        first.begin(desk.now());
        desk.play(first);
        EXPECT_EQ(first.problem().empty(), round % 3 != 1);
        if (round % 3 == 2) { // cut off
            journal.mEntries.resize(between(1, journal.mEntries.size()));
        }
        journal.mMaxEntries = SIZE_MAX;
        SimulatedDesk again(night.mCases);
        run::Night second(night.mBegin, *night.mPlan, {}, again, journal);
        const run::ResumePoint point = run::resumePointOf(journal.mEntries);
        EXPECT_EQ(point.mIsComplete, verdictsOf(journal) == "pppppp done");
        second.resume(point, {}, again.now());
        again.play(second);
        std::vector<int> plays;
        for (const PlayEnd& end : journal.all<PlayEnd>()) {
            EXPECT_EQ(end.mVerdict, PlayVerdict::Passed) << textOf(journal);
            plays.push_back(end.mPlay);
        }
        EXPECT_EQ(plays, (std::vector<int>{0, 1, 2, 3, 4, 5})) << textOf(journal);
        EXPECT_TRUE(run::resumePointOf(journal.mEntries).mIsComplete);
    }
}

/** Findings before the cut remain when the play is repeated. */
TEST_F(NightResumeTest, PlayWithAFindingFailsEvenWhenRepeated)
{
    const SimulatedNight night = sixPlays();
    MemoryJournal journal;
    journal.mEntries = {{1, night.mBegin},
                        {2, journal::ProgramStarted{1}},
                        {3, journal::PlayBegin{0}},
                        {4, journal::Finding{0, "missing", "360 samples", {}, ""}}};
    SimulatedDesk desk(night.mCases);
    run::Night played(night.mBegin, *night.mPlan, {}, desk, journal);
    played.resume(run::resumePointOf(journal.mEntries), {}, desk.now());
    desk.play(played);
    EXPECT_EQ(verdictsOf(journal), "fppppp done") << textOf(journal);
}
