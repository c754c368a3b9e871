#include "explain/Explanation.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <thread>

#include "Files.h"
#include "ShortOutput.h"
#include "base/CaseError.h"
#include "explain/PlaybackTracker.h"

namespace {
constexpr qint64 kStepNs = 55'555; // 50 Hz
} // namespace

/**
 * Makes recordings like the simulator, from files in which every line differs: the auxiliary word
 * is the number of the line, after a digit for the file's content.
 */
class ExplanationTest : public testing::Test
{
protected:
    /** Files with the length in their name; b begins like a. */
    ExplanationTest()
    {
        makeFile("a400.csv", 1, 400, 0);
        makeFile("same-as-a400.csv", 1, 400, 0);
        makeFile("a300.csv", 1, 300, 0);
        makeFile("b900.csv", 1, 900, 300);
        makeFile("c720.csv", 3, 720, 0);
        makeFile("one.csv", 4, 1, 0);
    }

    void makeFile(const std::string& name, int content, int lines, int same)
    {
        std::vector<int> numbers;
        for (int line = 1; line <= lines; ++line) {
            const int digit = line > same ? content + (same > 0 ? 1 : 0) : content;
            numbers.push_back(digit * 10'000 + line);
        }
        makeFile(name, numbers);
    }

    void makeFile(const std::string& name, const std::vector<int>& numbers)
    {
        std::string text;
        for (const int number : numbers) {
            text += valueLine(std::to_string(number), "50");
        }
        mFiles.make(name, text);
        const explain::PlayPlan plan(mFiles.make("x.conf", "0,1," + name + "\n").toStdString(),
                                     mFiles.path(""));
        auto& contents = mContents[name];
        contents.clear();
        for (size_t i = 0; i < plan.files()[0].size(); ++i) {
            contents.push_back(plan.files()[0].samples()[i]);
        }
    }

    /** Appends samples of the file; by default all. */
    void play(const std::string& file, size_t first = 1, size_t last = 100'000)
    {
        const auto& samples = mContents[file];
        const size_t size = mRecords.size();
        for (size_t i = first; i <= std::min(last, samples.size()); ++i) {
            mNowNs += kStepNs;
            SampleRecord record{
                quint32(mNowNs / 1'000'000'000), quint32(mNowNs % 1'000'000'000), 0, 0, {}};
            std::memcpy(&record.mAuxWord, samples[i - 1].data(), sizeof(samples[i - 1]));
            mRecords.push_back(record);
        }
        mEvents += fmt::format(R"({{"t":{},"file":"adc-in","bytes":{},"accepted":true}})"
                               "\n",
                               mNowNs, (mRecords.size() - size) * sizeof(SampleRecord));
    }

    void send(const std::string& text, qint64 earlierNs)
    {
        mEvents += fmt::format(
            R"({{"t":{},"file":"simulator_control","bytes":2,"accepted":true,"text":"{}"}})"
            "\n",
            mNowNs - earlierNs, text);
    }

    void lose(size_t samples) { mNowNs += static_cast<qint64>(samples) * kStepNs; }

    void tell(const std::string& event, qint64 laterNs)
    {
        mEvents += fmt::format("{{\"t\":{},{}}}\n", mNowNs + laterNs, event);
    }

    std::string explain(const std::string& configuration, bool withEvents = false)
    {
        const explain::PlayPlan plan(mFiles.make("c.conf", configuration).toStdString(),
                                     mFiles.path(""));
        writeFile(mFiles.path("r.bin"), {reinterpret_cast<const char*>(mRecords.data()),
                                         mRecords.size() * sizeof(SampleRecord) - mCutBytes});
        writeFile(mFiles.path("e.jsonl"), mEvents);
        ShortOutput output;
        explain::RecordingReader recording(mFiles.path("r.bin"));
        writeFile(mFiles.path("control.jsonl"), mControlEvents);
        const std::vector<std::string> events = {mFiles.path("e.jsonl"),
                                                 mFiles.path("control.jsonl")};
        explain::explainRecording(plan, recording, withEvents ? events : std::vector<std::string>(),
                                  output);
        mExplained = output.mSamples;
        return output.mText;
    }

    TestFiles mFiles;
    std::map<std::string, std::vector<explain::SampleContent>> mContents;
    std::vector<SampleRecord> mRecords;
    std::string mEvents;
    std::string mControlEvents; ///< in a file of their own
    qint64 mNowNs = 1'700'000'000'000'000'000;
    size_t mCutBytes = 0;
    size_t mExplained = 0; ///< samples in the segments of the last explanation
};

TEST_F(ExplanationTest, EveryDamageIsFoundAndNamed)
{
    const auto erase = [this](size_t first, size_t count) {
        mRecords.erase(mRecords.begin() + long(first) - 1,
                       mRecords.begin() + long(first + count) - 1);
    };
    const struct
    {
        std::function<void()> mDamage;
        const char* mExplanation;
    } rows[] = {
        {[] {}, "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; good"},
        {[&] { mRecords[1000].mValues[3] ^= 1; },
         "!differs 1 @1001; 0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] {
             mRecords.front().mFlags = 1;
             mRecords.back().mAuxWord = 7;
         },
         "!differs 1 @1; 0: a400.csv x2; 1: b900.csv x2; !differs 1 @3000; 0: a400.csv x1; bad"},
        {[&] { erase(361, 40); },
         "0: a400.csv x1 [1-360]; !missing 40 @361; 0: a400.csv x1; 1: b900.csv x2; "
         "0: a400.csv x1; bad"},
        {[&] { erase(361, 1360); },
         "0: a400.csv x1 [1-360]; !missing 1360 @361; 1: b900.csv x1 [21-900]; "
         "0: a400.csv x1; bad"},
        {[&] { mRecords.insert(mRecords.begin() + 1520, &mRecords[1160], &mRecords[1520]); },
         "0: a400.csv x2; !twice 360 @1521; 1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] {
             for (auto it = mRecords.begin() + 900; it != mRecords.end(); ++it)
                 it->mSeconds += 70;
         },
         "!timeJump 1 @901; 0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] {
             for (size_t i = 0; i < 30; ++i)
                 mRecords[100 + i].mValues[0] = -5;
         },
         "!differs 1 @101; !differs 1 @102; !differs 1 @103; !differs 1 @104; !differs 1 @105; "
         "!differs 1 @106; !differs 1 @107; !differs 1 @108; !differs 1 @109; !differs 1 @110; "
         "!differs 1 @111; !differs 1 @112; !differs 1 @113; !differs 1 @114; !differs 1 @115; "
         "!differs 1 @116; !differs 1 @117; !differs 1 @118; !differs 1 @119; !differs 1 @120; "
         "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] {
             play("c720.csv", 101, 200);
             play("a400.csv");
         },
         "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; !elsewhere 1 @3001; "
         "2: c720.csv x1 [101-200]; !elsewhere 1 @3101; 0: a400.csv x1; bad"},
        {[&] {
             mRecords[2000].mFlags = 9;
             for (auto it = mRecords.begin() + 2000; it != mRecords.end(); ++it)
                 it->mSeconds += 70;
         },
         "0: a400.csv x2; !timeJump 1 @2001; !differs 1 @2001; 1: b900.csv x2; 0: a400.csv x1; "
         "bad"},
        {[&] {
             mRecords[367].mFlags = 9;
             erase(321, 40);
         },
         "0: a400.csv x1 [1-320]; !missing 40 @321; !differs 1 @328; 0: a400.csv x2 [361-400]; "
         "1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] { mRecords[2000].mNanoseconds ^= 1; },
         "0: a400.csv x2; !timeJump 1 @2001; !timeJump 1 @2002; 1: b900.csv x2; 0: a400.csv x1; "
         "bad"},
        {[&] { mRecords[1700].mFlags = 9; },
         "0: a400.csv x2; !differs 1 @1701; 1: b900.csv x2; 0: a400.csv x1; bad"},
        {[&] { std::swap_ranges(&mRecords[2000], &mRecords[2050], &mRecords[2050]); },
         "0: a400.csv x2; 1: b900.csv x2 [1-300]; !missing 50 @2001; 1: b900.csv x1 [351-400]; "
         "!timeJump 1 @2051; !elsewhere 1 @2051; 1: b900.csv x1 [301-350]; !missing 50 @2101; "
         "1: b900.csv x1 [401-900]; 0: a400.csv x1; bad"},
        {[&] { erase(1, 800); }, "1: b900.csv x2; 0: a400.csv x1; good"},
        {[&] { mCutBytes = 40; },
         "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1 [1-399]; !incomplete 8 @3000; bad"},
        {[&] {
             erase(1, 500);
             erase(2300, 201);
         },
         "0: a400.csv x1 [101-400]; 1: b900.csv x2; 0: a400.csv x1 [1-199]; good"},
        {[&] {
             play("a400.csv", 1, 360);
             lose(40);
             play("a400.csv");
         },
         "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x2 [1-360]; !missing 40 @3361; "
         "0: a400.csv x1; bad"},
        {[&] {
             lose(360);
             play("a400.csv");
         },
         "0: a400.csv x2; 1: b900.csv x2; 0: a400.csv x1; !missing 360 @3001; "
         "0: a400.csv x1; bad"},
    };
    for (const auto& row : rows) {
        mRecords.clear();
        mCutBytes = 0;
        for (const char* const file :
             {"a400.csv", "a400.csv", "b900.csv", "b900.csv", "a400.csv"}) {
            play(file);
        }
        row.mDamage();
        EXPECT_EQ(explain("0,1,a400.csv\n1,2,b900.csv\n2,1,c720.csv\n"), row.mExplanation);
    }
}

/** A recording of something else takes no longer, and is reported as such. */
TEST_F(ExplanationTest, ForeignSamplesAreCounted)
{
    play("a400.csv");
    while (mRecords.size() < 60'000) {
        const auto number = quint32(mRecords.size());
        mRecords.push_back({9 * number, 9, 9, number, {}});
    }
    EXPECT_EQ(explain("0,1,a400.csv\n1,1,b900.csv\n2,1,c720.csv\n3,1,a300.csv\n").substr(0, 57),
              "0: a400.csv x1; !foreign 4096 @401; !foreign 4096 @4497; ");
}

TEST_F(ExplanationTest, EveryConfigurationThatFitsIsNamed)
{
    play("a400.csv");
    play("c720.csv");
    play("same-as-a400.csv");
    play("one.csv");
    play("one.csv");
    play("a400.csv");
    // 1 and 2 play the same; 3 begins with it; 4 does, too, but continues differently.
    EXPECT_EQ(
        explain("0,1,a400.csv\n1,1,c720.csv\n1,1,a400.csv\n1,2,one.csv\n2,1,c720.csv\n"
                "2,1,same-as-a400.csv\n2,0,b900.csv\n2,2,one.csv\n3,1,c720.csv\n3,1,a400.csv\n"
                "3,1,one.csv\n4,2,c720.csv\n"),
        "0: a400.csv x1; 1,2,3,4: c720.csv x1; 1,2,3: a400.csv x1; 1,2,3: one.csv x1; "
        "1,2: one.csv x1; 0: a400.csv x1; good");
    EXPECT_EQ(mExplained, mRecords.size());
}

/** The beginning of a pass may become clear only after it. */
TEST_F(ExplanationTest, CasesWithEqualBeginningsAreDistinguished)
{
    makeFile("like-a.csv", {10'301, 50'002, 50'003}); // as a400 goes on behind a300
    play("a400.csv");
    play("a300.csv");
    play("like-a.csv");
    play("a400.csv");
    EXPECT_EQ(explain("0,1,a400.csv\n1,1,a300.csv\n1,1,like-a.csv\n"),
              "0: a400.csv x1; 1: a300.csv x1; 1: like-a.csv x1; 0: a400.csv x1; good");
    EXPECT_EQ(explain("0,1,a400.csv\n1,1,a300.csv\n2,1,like-a.csv\n"), // two commands
              "0: a400.csv x1; 1: a300.csv x1; 2: like-a.csv x1; 0: a400.csv x1; good");
}

/** A commanded case may begin like the current one, or be the same one. */
TEST_F(ExplanationTest, CommandsAreFollowed)
{
    const std::string configuration = "0,1,a400.csv\n1,1,b900.csv\n2,1,a400.csv\n3,1,c720.csv\n";
    play("a400.csv", 1, 360);
    send("s1", 1'000);
    send("3x", 1'000);
    play("a400.csv", 361);
    play("b900.csv", 1, 360);
    send("s2", 0); // too late for the next case, although that begins equally
    play("b900.csv", 361);
    send("s1", 0);
    play("a400.csv");
    play("b900.csv");
    play("a400.csv");
    EXPECT_EQ(explain(configuration, true),
              "3x Could not convert 3x to unsigned; 0: a400.csv x1; s1 after 22223000; "
              "1: b900.csv x1; s2 after 52221700; 2: a400.csv x1; s1 after 72221500; "
              "1: b900.csv x1; 0: a400.csv x1; good");
    mRecords[399].mFlags = mRecords[400].mFlags = 9; // across a switch
    EXPECT_EQ(explain(configuration, true),
              "!differs 1 @400; 3x Could not convert 3x to unsigned; 0: a400.csv x1; "
              "!differs 1 @401; s1 after 22223000; 1: b900.csv x1; s2 after 52221700; "
              "2: a400.csv x1; s1 after 72221500; 1: b900.csv x1; 0: a400.csv x1; bad");

    mRecords.clear();
    mEvents.clear();
    play("a300.csv");
    send("s1", 0); // too late again; the whole case could be the beginning of the commanded one
    play("a300.csv");
    play("b900.csv");
    send("2", 0);
    for (int i = 0; i < 70; ++i) {
        play("a300.csv");
    }
    EXPECT_EQ(explain("0,1,a300.csv\n1,1,b900.csv\n2,1,c720.csv\n", true),
              "0: a300.csv x2; s1 after 66666000; 1: b900.csv x1; !notFollowed 1 @20401; "
              "0: a300.csv x70; bad");
    play("c720.csv", 1, 360);
    mEvents.clear();
    EXPECT_EQ(explain("0,1,a300.csv\n1,1,b900.csv\n2,1,c720.csv\n", true),
              "0: a300.csv x2; !notGiven 1 @601; 1: b900.csv x1; 0: a300.csv x70; "
              "!notGiven 1 @22501; 2: c720.csv x1 [1-360]; bad");
}

/** The number of hypotheses does not grow with the passes, and a pass too many is still found. */
TEST_F(ExplanationTest, RestartsOfARepeatedCaseAreLimited)
{
    const explain::PlayPlan plan(mFiles.make("r.conf", "0,200,a300.csv\n").toStdString(),
                                 mFiles.path(""));
    explain::PlaybackTracker tracker = explain::PlaybackTracker::atStart(plan);
    size_t record = 0;
    for (int pass = 0; pass < 150; ++pass) {
        for (const explain::SampleContent& sample : mContents["a300.csv"]) {
            ASSERT_TRUE(tracker.keep(sample, std::nullopt));
            tracker.advance(explain::Arrival{record, qint64(record)});
            ++record;
        }
    }
    std::ptrdiff_t hypotheses = 0;
    tracker.keepIf([&](const explain::PlaybackTracker&) { return ++hypotheses > 0; });
    EXPECT_EQ(hypotheses, explain::kMaxRestarts + 1);

    send("s1", 0);
    play("c720.csv");
    for (int pass = 0; pass < 60; ++pass) {
        play("a300.csv");
    }
    play("c720.csv");
    EXPECT_EQ(explain("0,1,c720.csv\n1,40,a300.csv\n", true),
              "0: c720.csv x1; s1 after 56666100; 1: a300.csv x20; !notGiven 1 @6721; "
              "1: a300.csv x40; 0: c720.csv x1; bad");
}

/** The events decide about the end, whatever the samples are. */
TEST_F(ExplanationTest, EndOfTheRunIsJudged)
{
    constexpr qint64 kRunNs = 1'000'000'000;
    const std::string over = R"("run":"ended","reason":"time")";
    const struct
    {
        std::function<void()> mEnd;
        const char* mExplanation;
    } rows[] = {
        {[&] { tell(R"("program":"stopped")", 1); }, "0: a400.csv x3; good"},
        {[&] { tell(R"("program":"exited","status":0)", 1); }, "0: a400.csv x3; good"},
        {[&] { tell(R"("program":"exited","status":3)", 1); },
         "0: a400.csv x3; !died 1 @1201; bad"},
        {[&] { tell(R"("program":"killed","signal":9)", 1); },
         "0: a400.csv x3; !died 1 @1201; bad"},
        {[&] { tell(R"("run":"ended","reason":"no block")", 1); },
         "0: a400.csv x3; !died 1 @1201; bad"},
        {[&] {
             tell(R"("file":"simulator_control","bytes":3,"accepted":false,"text":"s1",)"
                  R"("reason":"the run ended before")",
                  1);
         },
         "0: a400.csv x3; !notSent 1 @1201; bad"},
        {[&] {
             send("s1", 0);
             tell(over, kRunNs);
         },
         "0: a400.csv x3; s1 ; good"},
        {[&] {
             send("s1", 0);
             tell(over, kRunNs + kRunNs / 10);
         },
         "0: a400.csv x3; !notFollowed 1 @1201; bad"},
        {[&] {
             send("s7", 0);
             tell(over, kRunNs + kRunNs / 10);
         },
         "0: a400.csv x3; s7 Wrong Config: 7; good"},
        {[&] {
             tell(R"("file":"adc-in","bytes":17280,"accepted":false)", 1);
             tell(over, 2);
         },
         "0: a400.csv x3; !refused 360 @1201; bad"},
        {[&] {
             tell(R"("file":"adc-in","bytes":48,"accepted":false)", 1);
             tell(over, 2);
         },
         "0: a400.csv x3; !refused 1 @1201; bad"},
        {[&] { tell(R"("file":"adc-in","bytes":17280,"accepted":false)", 1); },
         "0: a400.csv x3; good"},                                      // it may go on
        {[&] { mEvents += R"({"t":17000)"; }, "0: a400.csv x3; good"}, // is being written
        {[&] {
             mControlEvents = fmt::format(
                 R"({{"t":{},"file":"simulator_control","bytes":3,"accepted":true,"text":"s1",)"
                 R"("by":"vx-control"}})"
                 "\n",
                 mNowNs);
             play("b900.csv");
             play("a400.csv");
         },
         "0: a400.csv x3; s1 after 49999500; 1: b900.csv x1; 0: a400.csv x1; good"},
        // The slowest block takes 24 ms, and eleven are sent at once.
        {[&] { tell(over, kRunNs + 11 * 23'999'000); }, "0: a400.csv x3; good"},
        {[&] { tell(over, kRunNs + 12 * 24'000'000); }, "0: a400.csv x3; !silent 1 @1201; bad"},
        {[&] { tell(R"("run":"ended","reason":"interrupted")", 2 * kRunNs); },
         "0: a400.csv x3; !silent 1 @1201; bad"},
        {[&] { tell(R"("run":"ended","reason":"program")", 2 * kRunNs); }, "0: a400.csv x3; good"},
        {[&] {
             send("2", 1'000);
             tell(over, 9 * kRunNs);
         },
         "0: a400.csv x3; 2 ; good"},
        {[&] { mEvents.clear(); }, "0: a400.csv x3; good"}, // those of vx-control alone
    };
    mFiles.make("slow.csv", valueLine("1", "41.6666"));
    for (const auto& row : rows) {
        mRecords.clear();
        mEvents.clear();
        mControlEvents.clear();
        for (int i = 0; i < 3; ++i) {
            play("a400.csv", 1, 360);
            play("a400.csv", 361);
        }
        row.mEnd();
        EXPECT_EQ(explain("0,1,a400.csv\n1,1,b900.csv\n2,0,a400.csv\n3,1,slow.csv\n", true),
                  row.mExplanation);
    }
    mEvents = "{\"t\":1}\n";
    EXPECT_THROW(explain("0,1,a400.csv\n", true), base::CaseError);
}

/** A pipe is judged while it is written, and a growing file up to its present end. */
TEST_F(ExplanationTest, UnfinishedRecordingIsJudgedUpToItsEnd)
{
    play("c720.csv");
    for (int i = 0; i < 15; ++i) {
        play("a400.csv");
    }
    const std::string_view bytes(reinterpret_cast<const char*>(mRecords.data()),
                                 mRecords.size() * sizeof(SampleRecord));
    const explain::PlayPlan plan(
        mFiles.make("c.conf", "0,1,c720.csv\n1,1,a400.csv\n").toStdString(), mFiles.path(""));
    const std::string path = mFiles.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::promise<void> reported;
    std::thread writer([&] {
        std::ofstream pipe(path, std::ios::binary);
        for (size_t at = 0; at + 8 < bytes.size(); at += 1000) {
            pipe << bytes.substr(at, std::min<size_t>(1000, bytes.size() - 8 - at)) << std::flush;
        }
        EXPECT_EQ(reported.get_future().wait_for(std::chrono::minutes(2)),
                  std::future_status::ready);
    });
    ShortOutput output;
    output.mFirstSegment = [&] { reported.set_value(); };
    explain::RecordingReader pipe(path);
    EXPECT_TRUE(explain::explainRecording(plan, pipe, {}, output));
    writer.join();
    EXPECT_EQ(output.mText, "0: c720.csv x1; 1: a400.csv x15 [1-399]; good");

    std::ofstream growing(mFiles.path("r.bin"), std::ios::binary);
    growing << bytes.substr(0, bytes.size() - 8) << std::flush;
    ShortOutput soFar;
    explain::RecordingReader file(mFiles.path("r.bin"));
    EXPECT_TRUE(explain::explainRecording(plan, file, {}, soFar));
    EXPECT_EQ(soFar.mText, output.mText);
    growing.close();
    explain::RecordingReader closed(mFiles.path("r.bin"));
    EXPECT_FALSE(explain::explainRecording(plan, closed, {}, soFar));
}
