#include "explain/Judge.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <set>

#include "Files.h"
#include "SeededRandom.h"
#include "explain/EventFiles.h"

namespace {
constexpr qint64 kSampleStepNs = 55'555; // 50 Hz

using Numbers = std::vector<int>; ///< the auxiliary words of a file's samples

struct Entry
{
    size_t mFile;
    int mRepetitions;
};

struct Block
{
    std::vector<SampleRecord> mRecords;
    std::vector<std::string> mCommands; ///< given before it arrived, and not before the last one
    size_t mPolled = 0;                 ///< commands that were read after it
};

/** Collects the results of the judge. */
class JudgeResults : public explain::ExplanationOutput
{
public:
    void add(const explain::PlayedSegment& it) override
    {
        mSegments.push_back(it);
        mText +=
            fmt::format("{}: {} x{} [{}-{}/{}]; ", fmt::join(it.mConfigurations, ","), it.mFile,
                        it.mPasses, it.mFirstSample, it.mLastSample, it.mFileSamples);
        mSamples += it.mSamples;
    }
    void add(const explain::CommandOutcome& it) override
    {
        mText += fmt::format("{}{}; ", it.mText, it.mFirstSampleArrivalNs ? "" : " waiting");
    }
    void add(const explain::Finding& it) override
    {
        mText += fmt::format("!{} {} @{}; ", nameOf(it.mKind).mKey, it.mCount, it.mRecord);
        ++mFindings;
    }
    void add(const explain::Verdict& it) override { mIsGood = it.mFindings.isClean(); }

    std::vector<explain::PlayedSegment> mSegments;
    std::string mText;
    size_t mSamples = 0;
    size_t mFindings = 0;
    bool mIsGood = false;
};
} // namespace

/**
 * Plays random configurations like the simulator, with an independent model: files of equal
 * periods, files with equal beginnings, single samples; commands at any time.
 */
class JudgeTest : public testing::Test
{
protected:
    std::vector<size_t> sizes() const
    {
        std::vector<size_t> all;
        for (const Numbers& it : mNumbers) {
            all.push_back(it.size());
        }
        return all;
    }

    int upTo(int max) { return std::uniform_int_distribution<>(1, max)(mRandom); }
    bool oneIn(int count) { return upTo(count) == 1; }

    Numbers makeNumbers(int tail)
    {
        const int period = oneIn(4) ? 1 + upTo(100) : 360;
        const int kind = upTo(6);
        const int steady = kind == 1 ? 0 : kind == 2 ? (oneIn(2) ? 50 : 100) : upTo(6);
        Numbers numbers;
        for (int i = 0; i < steady * period; ++i) {
            numbers.push_back(1 + i % period);
        }
        for (int i = 0; kind != 2 && kind != 3 && i < upTo(3) * 200; ++i) {
            numbers.push_back(tail + i);
        }
        return numbers.empty() ? Numbers(size_t(upTo(30)), 7) : numbers;
    }

    void makeFiles()
    {
        mNumbers.clear();
        for (int file = 0; file < 4; ++file) {
            mNumbers.push_back(makeNumbers(10'000 * (1 + file)));
            std::string text;
            for (const int number : mNumbers.back()) {
                text += valueLine(std::to_string(number), "50");
            }
            mFiles.make(fmt::format("{}.csv", file), text);
        }
    }

    std::string makeConfigurations()
    {
        std::string text;
        mConfigurations.clear();
        for (int number = 0; number <= upTo(4); ++number) {
            mConfigurations.emplace_back();
            for (int entry = upTo(3); entry > 0; --entry) {
                const Entry it{size_t(upTo(4)) - 1, upTo(3)};
                mConfigurations.back().push_back(it);
                text += fmt::format("{},{},{}.csv\n", number, it.mRepetitions, it.mFile);
            }
        }
        return text;
    }

    void playCase(size_t file)
    {
        const Numbers& numbers = mNumbers[file];
        for (size_t first = 0; first < numbers.size(); first += 360) {
            Block block;
            for (size_t i = first; i < std::min(numbers.size(), first + 360); ++i) {
                mNowNs += kSampleStepNs;
                block.mRecords.push_back({quint32(mNowNs / 1'000'000'000),
                                          quint32(mNowNs % 1'000'000'000),
                                          quint32(numbers[i]),
                                          0,
                                          {1, 2, 3, 4, 5, 6, 7, 8}});
                ++mPlayed;
            }
            mBlocks.push_back(std::move(block));
        }
        for (int commands = oneIn(6) ? upTo(2) : 0; commands > 0; --commands) {
            const int number = oneIn(5) ? 99 : upTo(int(mConfigurations.size())) - 1;
            mBlocks.back().mCommands.push_back((oneIn(2) ? "s" : "") + std::to_string(number));
            mFifo.push_back(mBlocks.back().mCommands.back());
        }
    }

    /** Takes a command from the FIFO; false if there is no valid one. */
    bool poll()
    {
        if (mFifo.empty()) {
            return false;
        }
        const std::string command = mFifo.front();
        mFifo.pop_front();
        ++mBlocks.back().mPolled;
        const bool isOnce = command[0] == 's';
        const int number = std::stoi(command.substr(isOnce ? 1 : 0));
        if (number >= int(mConfigurations.size())) {
            return false;
        }
        (isOnce ? mOnce : mContinuous) = number;
        return true;
    }

    void playConfiguration(int number, size_t samples)
    {
        for (const Entry& entry : mConfigurations[size_t(number)]) {
            for (int i = 0; i < entry.mRepetitions; ++i) {
                playCase(entry.mFile);
                if (poll() || mPlayed >= samples) {
                    return;
                }
            }
        }
    }

    void play(size_t samples)
    {
        mBlocks.clear();
        mFifo.clear();
        mPlayed = 0;
        mContinuous = 0;
        mOnce = -1;
        while (mPlayed < samples) {
            playConfiguration(mOnce >= 0 ? std::exchange(mOnce, -1) : mContinuous, samples);
        }
    }

    /** Cuts off both ends, but keeps commands that are followed later. */
    void cut()
    {
        std::deque<std::string> waiting;
        size_t front = size_t(upTo(int(mPlayed) / 2)) - 1;
        while (front >= mBlocks.front().mRecords.size()) {
            const Block& block = mBlocks.front();
            front -= block.mRecords.size();
            waiting.insert(waiting.end(), block.mCommands.begin(), block.mCommands.end());
            waiting.erase(waiting.begin(), waiting.begin() + long(block.mPolled));
            mBlocks.erase(mBlocks.begin());
        }
        auto& commands = mBlocks.front().mCommands;
        commands.insert(commands.begin(), waiting.begin(), waiting.end());
        auto& records = mBlocks.front().mRecords;
        records.erase(records.begin(), records.begin() + long(front));
        auto& last = mBlocks.back().mRecords;
        last.resize(size_t(upTo(int(last.size()))));
    }

    void judge(bool withEvents, JudgeResults* results)
    {
        const explain::PlayPlan plan(mFiles.path("c.conf"), mFiles.path(""));
        explain::JudgeOptions options;
        options.mHasEvents = withEvents;
        explain::Judge judge(plan, options, *results);
        for (const Block& block : mBlocks) {
            const qint64 nowNs = waveform::stampNsOf(block.mRecords.back());
            for (const std::string& command : block.mCommands) {
                judge.add({explain::Event::Kind::Command,
                           nowNs - kSampleStepNs,
                           true,
                           0,
                           command,
                           "",
                           {}});
            }
            judge.add(
                {explain::Event::Kind::Block, nowNs, true, block.mRecords.size(), "", "", {}});
            judge.add(block.mRecords.data(), block.mRecords.size());
        }
        judge.finish(0, true);
        EXPECT_EQ(judge.findings().isClean(), results->mIsGood);
    }

    /**
     * Whether a configuration can play this: from any position on, with commands wherever needed.
     */
    bool canBePlayed(const JudgeResults& results)
    {
        using State = std::tuple<int, size_t, int>; // configuration, entry, repetition
        std::set<State> before;
        for (const explain::PlayedSegment& segment : results.mSegments) {
            const Numbers& numbers = mNumbers[size_t(segment.mFile[0] - '0')];
            for (size_t pass = 0; pass < segment.mPasses; ++pass) {
                std::set<State> now;
                for (const int number : segment.mConfigurations) {
                    const auto& entries = mConfigurations[size_t(number)];
                    for (size_t i = 0; i < entries.size(); ++i) {
                        const bool isFile = mNumbers[entries[i].mFile] == numbers;
                        for (int r = 1; isFile && r <= entries[i].mRepetitions; ++r) {
                            const bool goesOn =
                                r > 1 ? before.count({number, i, r - 1}) > 0
                                      : i == 0 || before.count({number, i - 1,
                                                                entries[i - 1].mRepetitions}) > 0;
                            if (before.empty() || goesOn) {
                                now.insert({number, i, r});
                            }
                        }
                    }
                }
                if (now.empty()) {
                    return false;
                }
                before = now;
            }
        }
        return true;
    }

    /** Damages the recording in one way that cannot be valid; returns which. */
    std::string damage()
    {
        const size_t index = size_t(upTo(int(mBlocks.size()) - 2));
        Block& block = mBlocks[index];
        SampleRecord& record = block.mRecords[size_t(upTo(int(block.mRecords.size()))) - 1];
        switch (upTo(6)) {
            case 1:
                mBlocks.erase(mBlocks.begin() + long(index));
                return fmt::format("block {} dropped", index);
            case 2:
                mBlocks.insert(mBlocks.begin() + long(index), Block(block));
                return fmt::format("block {} doubled", index);
            case 3:
                std::swap(mBlocks[index - 1], block);
                return fmt::format("block {} swapped", index);
            case 4:
                record.mValues[3] ^= 1 << 20;
                return fmt::format("a sample of block {} changed", index);
            case 5:
                record.mNanoseconds ^= 1;
                return fmt::format("a stamp of block {} changed", index);
            default:
                for (SampleRecord& it : block.mRecords) {
                    it.mAuxWord += 1'000'000;
                }
                return fmt::format("block {} of another file", index);
        }
    }

    std::mt19937 mRandom = seededRandom();
    TestFiles mFiles;
    std::vector<Numbers> mNumbers;
    std::vector<std::vector<Entry>> mConfigurations;
    std::vector<Block> mBlocks;
    std::deque<std::string> mFifo;
    size_t mPlayed = 0;
    int mContinuous = 0;
    int mOnce = -1;
    qint64 mNowNs = 1'700'000'000'000'000'000;
};

TEST_F(JudgeTest, PlayIsGoodFromAnywhereAndDamageIsBad)
{
    for (int run = 0; run < 10; ++run) {
        makeFiles();
        const std::string configuration = makeConfigurations();
        mFiles.make("c.conf", configuration);
        for (int cuts = 0; cuts < 4; ++cuts) {
            play(size_t(upTo(40'000)));
            if (cuts > 0) {
                cut();
            }
            size_t samples = 0;
            for (const Block& it : mBlocks) {
                samples += it.mRecords.size();
            }
            const bool withEvents = oneIn(2);
            JudgeResults good;
            judge(withEvents, &good);
            const std::string facts =
                fmt::format("{}{}{}, samples {}, events {}", configuration, good.mText,
                            fmt::join(sizes(), ","), samples, withEvents);
            ASSERT_TRUE(good.mIsGood) << facts;
            ASSERT_EQ(good.mFindings, 0U) << facts;
            ASSERT_EQ(good.mSamples, samples) << facts;
            ASSERT_TRUE(canBePlayed(good)) << facts;
            if (mBlocks.size() > 3) {
                const std::string what = damage();
                JudgeResults bad;
                judge(withEvents, &bad);
                ASSERT_FALSE(bad.mIsGood) << what << '\n' << bad.mText << facts;
                ASSERT_GT(bad.mFindings, 0U) << what << '\n' << bad.mText << facts;
            }
        }
    }
}

/**
 * Lines that are appended after the end was reached are read, too, in the order of their times;
 * half a line is not.
 */
TEST_F(JudgeTest, EventsAreReadWhileTheyAreWritten)
{
    const std::string path = mFiles.make("e.jsonl", "").toStdString();
    explain::EventFiles events({path});
    const auto read = [&](const std::string& appended) {
        std::ofstream(path, std::ios::app) << appended;
        std::vector<qint64> times;
        while (const std::optional<explain::Event> event = events.next()) {
            times.push_back(event->mTimeNs);
        }
        return fmt::format("{}", fmt::join(times, " "));
    };
    const auto text = [](qint64 t) { return fmt::format("{{\"t\":{},\"run\":\"x\"}}\n", t); };
    EXPECT_EQ(read(text(100) + "{\"t\":1"), "100");
    EXPECT_EQ(read("40,\"run\":\"x\"}\n" + text(130) + text(120)), "120 130 140");
    constexpr qint64 kFuture = 8'000'000'000'000'000'000; // no file is certain to be past it
    EXPECT_EQ(read(text(150) + text(kFuture)), "150");
    events.finish();
    EXPECT_EQ(read(text(kFuture - 1)), fmt::format("{} {}", kFuture - 1, kFuture));
}
