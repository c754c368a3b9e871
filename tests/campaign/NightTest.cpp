#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>

#include "NightFixture.h"
#include "Sanitizer.h"
#include "waveform/RecordStamp.h"

using journal::NightEnd;
using journal::PlayBegin;
using journal::PlayEnd;
using journal::PlayVerdict;

namespace {
class NightTest : public NightFixture
{
};

/** A fault that is put into one block. */
struct BlockFault
{
    const char* mName;
    bool mActsLater; ///< at the end of a case, or when the program looks at the clock
    std::function<void(SimulatedDesk*, Block*)> mDo;
    bool mIsWithinCase = false; ///< that is like no other
};

const BlockFault kBlockFaults[] = {
    {"a refused block", false, [](SimulatedDesk*, Block* block) { block->mIsAccepted = false; }},
    {"a doubled block", false,
     [](SimulatedDesk*, Block* block) {
         const std::vector<SampleRecord> once = block->mRecords;
         block->mRecords.insert(block->mRecords.end(), once.begin(), once.end());
     }},
    {"a changed sample", false,
     [](SimulatedDesk*, Block* block) { block->mRecords.back().mValues[3] ^= 1; }},
    {"a changed block", false,
     [](SimulatedDesk*, Block* block) {
         for (SampleRecord& record : block->mRecords) {
             record.mValues[0] += 1000;
         }
     }},
    {"the death of the program", false, [](SimulatedDesk*, Block* block) { block->mKills = true; }},
    {"the death of the sandbox", false,
     [](SimulatedDesk*, Block* block) { block->mKillsSandbox = true; }},
    {"a clock that is set forward", true,
     [](SimulatedDesk*, Block* block) { block->mClockStepNs = 3'600'000'000'000; }},
    {"a clock that is set back", true,
     [](SimulatedDesk*, Block* block) { block->mClockStepNs = -3'600'000'000'000; }},
    {"a driver that stands still", true,
     [](SimulatedDesk* desk, Block*) { desk->mStandsStill = true; }},
    {"two blocks that change places", false,
     [](SimulatedDesk* desk, Block*) { desk->mSwapsNext = true; }, true},
    {"somebody else's command", true, [](SimulatedDesk* desk, Block*) { desk->sendForeign("s2"); }},
    {"somebody else's command for good", true,
     [](SimulatedDesk* desk, Block*) { desk->sendForeign("3"); }},
};

} // namespace

TEST_F(NightTest, PlaysThePlanAndReportsWhatArrived)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk desk(night.mCases);
    MemoryJournal journal;
    playNight(night, desk, journal);
    EXPECT_EQ(verdictsOf(journal), "pppppp done") << textOf(journal);
    const std::vector<PlayEnd> ends = journal.all<PlayEnd>();
    const std::vector<journal::CommandSent> commands = journal.all<journal::CommandSent>();
    qint64 lastNs = 0;
    for (size_t play = 0; play < ends.size(); ++play) {
        const journal::StagedCase& it =
            night.mBegin.mCases[static_cast<size_t>(night.mBegin.mOrder[play])];
        EXPECT_EQ(commands[play].mText, "s" + std::to_string(it.mNumber));
        EXPECT_EQ(ends[play].mSamples, it.mSamples);
        EXPECT_EQ(ends[play].mLastStampNs - ends[play].mFirstStampNs,
                  it.mDurationNs - SimulatedNight::kStepNs);
        EXPECT_GE(ends[play].mFirstStampNs - lastNs, night.mBegin.mGapNs);
        EXPECT_GE(ends[play].mDelayNs.value_or(-1), 0);
        lastNs = ends[play].mLastStampNs;
    }
}

TEST_F(NightTest, CleanNightsPass)
{
    for (int round = 0; round < 200; ++round) {
        std::vector<SimulatedCase> cases = {steady()};
        std::vector<int> times;
        for (size_t count = between(1, 3); count > 0; --count) {
            cases.push_back(between(0, 3) == 0
                                ? SimulatedCase{cases[between(0, cases.size() - 1)].mSamples, 1}
                                : SimulatedCase{samples(1, 1500), static_cast<int>(between(1, 3))});
            times.push_back(static_cast<int>(between(1, 2)));
        }
        SimulatedNight night(cases, times, static_cast<qint64>(between(0, 9'000'000'000)));
        std::shuffle(night.mBegin.mOrder.begin(), night.mBegin.mOrder.end(), mRandom);
        SimulatedDesk desk(cases);
        MemoryJournal journal;
        playNight(night, desk, journal);
        ASSERT_EQ(verdictsOf(journal), std::string(night.mBegin.mOrder.size(), 'p') + " done")
            << "round " << round << '\n'
            << textOf(journal);
        ASSERT_TRUE(playsWithFindings(journal).empty());
    }
}

/** A failed play is not recorded. Around the others, only the steady signal is recorded. */
TEST_F(NightTest, PlayIsRecordedWithTheSteadySignalAroundIt)
{
    SimulatedNight night = sixPlays();
    night.mBegin.mCases[1].mExpected = {"rms"};
    night.mBegin.mOrder = {1, 0, 1, 1, 2};
    SimulatedDesk desk(night.mCases);
    bool isChanged = false;
    desk.mFault = [&](Block* block) {
        if (block->mConfiguration == 2 && desk.playsEnded() == 2 && !isChanged) {
            block->mRecords.back().mValues[3] ^= 1;
            isChanged = true;
        }
    };
    MemoryJournal journal;
    playNight(night, desk, journal);
    ASSERT_EQ(verdictsOf(journal), "ppfpp done") << textOf(journal);
    const std::vector<PlayEnd> ends = journal.all<PlayEnd>();
    ASSERT_EQ(desk.mRecordings.size(), 2U);
    for (const size_t play : {size_t{0}, size_t{3}}) {
        const auto& records =
            desk.mRecordings.at(expectedName(night.mBegin.mCases[1], static_cast<int>(play)));
        const qint64 fromNs = waveform::stampNsOf(records.front());
        const qint64 toNs = waveform::stampNsOf(records.back());
        EXPECT_EQ((toNs - fromNs) / SimulatedNight::kStepNs + 1,
                  static_cast<qint64>(records.size()));
        EXPECT_GE(ends[play].mFirstStampNs - fromNs, night.mBegin.mGapNs);
        EXPECT_GT(fromNs, play == 0 ? 0 : ends[play - 1].mLastStampNs);
        EXPECT_GE(toNs - ends[play].mLastStampNs, night.mBegin.mGapNs);
        EXPECT_LT(toNs, ends[play + 1].mFirstStampNs);
    }
}

TEST_F(NightTest, FaultFailsItsPlayOnly)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk clean(night.mCases);
    MemoryJournal cleanJournal;
    std::vector<size_t> inner; // blocks before two more of their case
    size_t inRow = 0;
    size_t lastOfCases = 0; // block
    int before = 0;
    clean.mFault = [&](const Block* block) {
        inRow = block->mConfiguration == before ? inRow + 1 : 1;
        before = block->mConfiguration;
        if (before >= 2 && inRow >= 3) {
            inner.push_back(block->mIndex - 2);
        }
        lastOfCases = before >= 2 ? block->mIndex : lastOfCases;
    };
    playNight(night, clean, cleanJournal);
    constexpr size_t kLater = 14; // blocks
    for (const BlockFault& fault : kBlockFaults) {
        for (int round = 0; round < 20; ++round) {
            // A fault that acts only after the last play fails the night, but no play.
            const size_t last = fault.mActsLater ? lastOfCases - kLater : lastOfCases;
            const size_t at =
                fault.mIsWithinCase ? inner[between(0, inner.size() - 1)] : between(1, last);
            SimulatedDesk desk(night.mCases);
            MemoryJournal journal;
            std::set<int> suspects; // the play that the block is in
            desk.mFault = [&](Block* block) {
                if (block->mIndex == at) {
                    fault.mDo(&desk, block);
                    // A program that dies fails the play that has not ended yet.
                    suspects = {block->mKills || block->mKillsSandbox
                                    ? static_cast<int>(journal.all<PlayEnd>().size())
                                    : desk.playsEnded()};
                }
                if (fault.mActsLater && block->mIndex > at && block->mIndex <= at + kLater) {
                    suspects.insert(desk.playsEnded());
                }
            };
            playNight(night, desk, journal);
            SCOPED_TRACE(std::string(fault.mName) + " at block " + std::to_string(at) + ", play " +
                         std::to_string(*suspects.begin()));
            const std::set<int> wrong = playsWithFindings(journal);
            ASSERT_EQ(wrong.size(), 1U) << textOf(journal);
            EXPECT_EQ(suspects.count(*wrong.begin()), 1U) << textOf(journal);
            std::string verdicts(6, 'p');
            verdicts[static_cast<size_t>(*wrong.begin())] = 'f';
            EXPECT_EQ(verdictsOf(journal), verdicts + " done") << textOf(journal);
        }
    }
}

/**
 * Refused blocks, some of them in a row, are missing samples; the rest does not count as a play. If
 * a play loses two parts, the second one may be found in the next play, which fails as well.
 */
TEST_F(NightTest, RefusedBlocksFailTheirPlaysAndSayNothingElse)
{
    const SimulatedNight night = sixPlays();
    for (int round = 0; round < 40; ++round) {
        SimulatedDesk desk(night.mCases);
        MemoryJournal journal;
        const size_t first = between(1, 60);
        const size_t inRow = between(1, 4);
        const size_t later = first + inRow + between(6, 20);
        std::set<int> suspects;
        desk.mFault = [&](Block* block) {
            const size_t index = block->mIndex;
            block->mIsAccepted = index < first || (index >= first + inRow && index != later);
            if (!block->mIsAccepted) {
                suspects.insert(desk.playsEnded() == 6 ? -1 : desk.playsEnded());
            }
        };
        playNight(night, desk, journal);
        SCOPED_TRACE(std::to_string(inRow) + " blocks from " + std::to_string(first) + " on, and " +
                     std::to_string(later));
        for (const int play : playsWithFindings(journal)) {
            EXPECT_GE(suspects.count(play) + suspects.count(play - 1), 1U) << textOf(journal);
        }
        for (const journal::Finding& finding : journal.all<journal::Finding>()) {
            EXPECT_TRUE(finding.mKind == "missing" || finding.mKind == "notPlayed")
                << textOf(journal);
        }
    }
}

TEST_F(NightTest, ADriverThatRefusesAllBlocksIsNoSilentProgram)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk desk(night.mCases);
    desk.mFault = [](Block* block) { block->mIsAccepted = block->mIndex < 5; };
    MemoryJournal journal;
    playNight(night, desk, journal);
    const std::vector<journal::Finding> findings = journal.all<journal::Finding>();
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings[0].mKind, "silent");
    EXPECT_NE(findings[0].mText.find(" s; the driver refused "), std::string::npos);
}

/** Faults that fail more than one play, or the night itself. */
TEST_F(NightTest, OtherFaultsEndAsExpected)
{
    const SimulatedNight night = sixPlays();
    const struct
    {
        const char* mName;
        std::function<void(SimulatedDesk*)> mPrepare;
        const char* mVerdicts;
        std::set<int> mWrong;
    } rows[] = {
        {"a wrong file",
         [](SimulatedDesk* desk) {
             desk->mWrongFile = {2, 3};
         },
         "ppffpp done",
         {2, 3}},
        {"commands that are refused",
         [](SimulatedDesk* desk) { desk->mRefusesCommands = true; },
         "ffffff done",
         {0, 1, 2, 3, 4, 5}},
        {"commands that nobody takes",
         [](SimulatedDesk* desk) { desk->mLosesCommands = true; },
         "ffffff done",
         {0, 1, 2, 3, 4, 5}},
        {"a program that dies at once",
         [](SimulatedDesk* desk) { desk->mFault = [](Block* block) { block->mKills = true; }; },
         "ff gave up",
         {0, 1}},
        {"a first block that is refused",
         [](SimulatedDesk* desk) {
             desk->mFault = [](Block* block) { block->mIsAccepted = block->mIndex > 0; };
         },
         "fppppp done",
         {0}},
        {"a fault after the last play",
         [](SimulatedDesk* desk) {
             desk->mFault = [desk, left = 15](Block* block) mutable {
                 left -= desk->playsEnded() == 6 ? 1 : 0;
                 block->mRecords[0].mValues[0] += left == 0 ? 1 : 0;
             };
         },
         "pppppp done",
         {-1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        SimulatedDesk desk(night.mCases);
        row.mPrepare(&desk);
        MemoryJournal journal;
        playNight(night, desk, journal);
        EXPECT_EQ(verdictsOf(journal), row.mVerdicts) << textOf(journal);
        EXPECT_EQ(playsWithFindings(journal), row.mWrong) << textOf(journal);
    }
}

/** The next gap begins when the stream is on time again. */
TEST_F(NightTest, StallFailsThePlayInWhichItBegins)
{
    const SimulatedNight night = sixPlays();
    constexpr qint64 kSecondNs = 1'000'000'000;
    constexpr qint64 kMaxLeadNs = 11 * 360 * SimulatedNight::kStepNs;
    std::set<std::set<int>> seen;
    for (int round = 0; round < 40; ++round) {
        const size_t at = between(1, 30);
        const qint64 stallNs = static_cast<qint64>(between(1, 55)) * kSecondNs;
        const qint64 stepNs = round % 4 == 0 ? -30 * kSecondNs : 0; // of the clock, instead
        SCOPED_TRACE(std::to_string(stallNs) + " ns at block " + std::to_string(at));
        SimulatedDesk desk(night.mCases);
        std::set<int> offTime;
        bool wasOffTime = false;
        desk.mFault = [&](Block* block) {
            block->mStallNs = block->mIndex == at && stepNs == 0 ? stallNs : 0;
            block->mClockStepNs = block->mIndex == at ? stepNs : 0;
            const qint64 lateNs = desk.now().mWallNs + block->mClockStepNs -
                                  waveform::stampNsOf(block->mRecords.back());
            const bool isOffTime = lateNs > kSecondNs || lateNs < -kMaxLeadNs - kSecondNs;
            if (isOffTime && !wasOffTime) {
                offTime.insert(desk.playsEnded() == 6 ? -1 : desk.playsEnded());
            }
            wasOffTime = isOffTime;
        };
        MemoryJournal journal;
        playNight(night, desk, journal);
        const std::set<int> wrong = playsWithFindings(journal);
        seen.insert(offTime);
        EXPECT_EQ(wrong, offTime) << textOf(journal);
        if (stepNs != 0) { // a command may seem to be later than its play, which is one more
            continue;
        }
        std::string verdicts;
        for (int play = 0; play < 6; ++play) {
            verdicts += offTime.count(play) > 0 ? 'f' : 'p';
        }
        EXPECT_EQ(verdictsOf(journal), verdicts + " done");
        EXPECT_EQ(journal.all<journal::Finding>().size(), offTime.size()) << textOf(journal);
    }
    EXPECT_GT(seen.size(), 2U) << "a night without, and several with one";
}

/** A cut in that play does not lose it. */
TEST_F(NightTest, StallIsInTheJournalDuringThePlay)
{
    const SimulatedNight night({steady(), {samples(7200, 7200), 1}}, {1}, 4'000'000'000);
    SimulatedDesk desk(night.mCases);
    MemoryJournal journal;
    int block = 0;
    size_t found = 0;
    desk.mFault = [&](Block* it) {
        block += it->mConfiguration;
        it->mStallNs = block == 2 ? 40'000'000'000 : 0;
        found = block == 6 ? journal.all<journal::Finding>().size() : found;
    };
    playNight(night, desk, journal);
    EXPECT_EQ(found, 1U) << textOf(journal);
    EXPECT_EQ(verdictsOf(journal), "f done");
}

/** The remaining time is that of the signal, however long the program takes to load its files. */
TEST_F(NightTest, LoadingDoesNotCountAsPlaying)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk desk(night.mCases);
    MemoryJournal journal;
    run::Night played(night.mBegin, *night.mPlan, {}, desk, journal);
    desk.mLoadNs = 60'000'000'000;
    qint64 minLeftNs = desk.mLoadNs;
    desk.mEachBurst = [&] {
        minLeftNs =
            desk.playsEnded() > 0 ? minLeftNs : std::min(minLeftNs, played.progress().mLeftNs);
    };
    played.begin(desk.now());
    desk.play(played);
    EXPECT_GT(minLeftNs, 0);
    EXPECT_EQ(verdictsOf(journal), "pppppp done") << textOf(journal);
}

/** Even while the program does not end. */
TEST_F(NightTest, SecondInterruptEndsTheNightAtOnce)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk desk(night.mCases);
    MemoryJournal journal;
    run::Night played(night.mBegin, *night.mPlan, {}, desk, journal);
    played.begin(desk.now());
    played.tick(desk.now());
    played.interrupt(desk.now());
    EXPECT_FALSE(played.isOver());
    played.interrupt(desk.now());
    EXPECT_TRUE(played.isOver());
    EXPECT_EQ(verdictsOf(journal), " interrupted");
}

TEST_F(NightTest, RemarksOfTheSandboxFailNoPlay)
{
    const SimulatedNight night = sixPlays();
    SimulatedDesk desk(night.mCases);
    desk.mEndRemarks = {"a fault did not happen"};
    MemoryJournal journal;
    playNight(night, desk, journal);
    EXPECT_EQ(verdictsOf(journal), "pppppp done") << textOf(journal);
    ASSERT_EQ(journal.all<journal::Remark>().size(), 1U);
    EXPECT_EQ(journal.all<journal::Remark>()[0].mText, "a fault did not happen");
}

TEST_F(NightTest, UntilFailureRepeatsThePlan)
{
    SimulatedNight night = sixPlays();
    night.mBegin.mUntilFailure = true;
    SimulatedDesk desk(night.mCases);
    desk.mFault = [&desk](Block* block) { block->mKills = desk.playsEnded() == 14; };
    MemoryJournal journal;
    playNight(night, desk, journal);
    EXPECT_EQ(verdictsOf(journal), std::string(13, 'p') + "f first failure") << textOf(journal);
    for (const bool isCutOff : {false, true}) { // after the last step, and within the second round
        MemoryJournal resumed;
        resumed.mEntries = journal.mEntries;
        resumed.mEntries.resize(isCutOff ? 30 : journal.mEntries.size());
        SimulatedDesk again(night.mCases);
        again.mFault = [&again](Block* block) { block->mKills = again.playsEnded() == 8; };
        run::Night played(night.mBegin, *night.mPlan, {}, again, resumed);
        played.resume(run::resumePointOf(resumed.mEntries), {}, again.now());
        again.play(played);
        EXPECT_EQ(resumed.all<PlayBegin>().size() > 14, isCutOff) << textOf(resumed);
        EXPECT_EQ(resumed.all<NightEnd>().back().mReason, NightEnd::Reason::FirstFailure);
    }
}

TEST_F(NightTest, LongNightTakesNoMoreMemory)
{
    SimulatedNight night({steady(), {samples(720, 720), 1}, {samples(400, 400), 2}}, {500, 500},
                         5'000'000'000);
    SimulatedDesk desk(night.mCases);
    const qint64 beginNs = desk.now().mSteadyNs;
    std::vector<size_t> resident; // in pages, once a burst
    desk.mEachBurst = [&] {
        size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages >> pages;
        resident.push_back(pages);
    };
    MemoryJournal journal;
    playNight(night, desk, journal);
    EXPECT_EQ(verdictsOf(journal), std::string(1000, 'p') + " done");
    EXPECT_GT(desk.now().mSteadyNs - beginNs, 8 * 3600 * 1'000'000'000LL);
#ifndef VX_HAS_ADDRESS_SANITIZER            // which keeps what was freed
    constexpr size_t kPagesOfJournal = 512; // 2 MiB: this one is in memory
    EXPECT_LT(resident.back(), resident[resident.size() / 4] + kPagesOfJournal);
#endif
}
