#pragma once

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "SeededRandom.h"
#include "SimulatedDesk.h"

/** The result of a night in short form: "p" or "f" for each play, then how it ended. */
inline std::string verdictsOf(const MemoryJournal& journal)
{
    std::string text;
    for (const journal::PlayEnd& end : journal.all<journal::PlayEnd>()) {
        text += end.mVerdict == journal::PlayVerdict::Passed ? 'p' : 'f';
    }
    for (const journal::NightEnd& end : journal.all<journal::NightEnd>()) {
        const char* const kReasons[] = {" done", " interrupted", " first failure", " gave up"};
        text += kReasons[static_cast<int>(end.mReason)];
    }
    return text;
}

/** The plays with findings; -1 is the night itself. */
inline std::set<int> playsWithFindings(const MemoryJournal& journal)
{
    std::set<int> plays;
    for (const journal::Finding& finding : journal.all<journal::Finding>()) {
        plays.insert(finding.mPlay.value_or(-1));
    }
    return plays;
}

inline std::string textOf(const MemoryJournal& journal)
{
    std::string text;
    for (const journal::Entry& entry : journal.mEntries) {
        text += lineOf(entry) + '\n';
    }
    return text;
}

/** Makes nights of random samples and plays them at the simulated desk. */
class NightFixture : public testing::Test
{
protected:
    size_t between(size_t min, size_t max)
    {
        return std::uniform_int_distribution<size_t>(min, max)(mRandom);
    }

    std::vector<SampleRecord> samples(size_t min, size_t max)
    {
        return randomSamples(mRandom, between(min, max));
    }

    /** A steady signal of a few equal periods. */
    SimulatedCase steady()
    {
        SimulatedCase it;
        const std::vector<SampleRecord> period = randomSamples(mRandom, 360);
        for (size_t periods = between(1, 4); periods > 0; --periods) {
            it.mSamples.insert(it.mSamples.end(), period.begin(), period.end());
        }
        return it;
    }

    /** Three cases, one of which begins like the steady signal, and one is repeated; six plays. */
    SimulatedNight sixPlays()
    {
        std::vector<SimulatedCase> cases = {steady()};
        SimulatedCase disturbed = cases[0];
        const std::vector<SampleRecord> event = samples(400, 1100);
        disturbed.mSamples.insert(disturbed.mSamples.end(), event.begin(), event.end());
        cases.push_back(disturbed);
        cases.push_back({samples(720, 2000), static_cast<int>(between(2, 3))});
        cases.push_back({samples(1100, 2000), 1});
        return {cases, {2, 2, 2}, 4'000'000'000};
    }

    /** Plays the night to its end. */
    static void playNight(const SimulatedNight& night, SimulatedDesk& desk, MemoryJournal& journal,
                          const run::NightOptions& options = {})
    {
        run::Night played(night.mBegin, *night.mPlan, options, desk, journal);
        played.begin(desk.now());
        desk.play(played);
    }

    std::mt19937 mRandom = seededRandom();
};
