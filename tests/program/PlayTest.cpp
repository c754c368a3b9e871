#include "PlayTest.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace {
constexpr quint32 kPeriod = 2'000'000; ///< in units of 10 ns
constexpr size_t kBlocksFromPacingToPacing = 11;
constexpr char kLoopBegins[] = "INFO Simulator Starting endless simulation loop\n";

/** Part of a core: a program that waits uses a few percent, one that spins uses all. */
constexpr double kSpinningShare = 0.5;

/** The number of lines of each value file. */
const std::map<int, int> kLines = {{1, 400},  {2, 361},  {3, 1},    {4, 360},
                                   {11, 360}, {12, 720}, {21, 900}, {22, 1400}};

/** The record of a line, without its time stamp. */
SampleRecord contentOf(int number, int line)
{
    return {0,
            0,
            UINT_MAX - static_cast<quint32>(line),
            static_cast<quint32>(line % 4),
            {number, line, -line, INT_MAX, INT_MIN, line * 1000, number - line, -1}};
}
} // namespace

PlayTest::PlayTest()
{
    for (const auto& [number, lines] : kLines) {
        std::string text;
        for (int line = 0; line < lines; ++line) {
            const SampleRecord content = contentOf(number, line);
            text += "name;;" + std::to_string(content.mAuxWord) + ";" +
                    std::to_string(content.mFlags) + ";50";
            for (const qint32 value : content.mValues) {
                text += ";" + std::to_string(value);
            }
            text += "\n";
        }
        mRunner.writeFile("case-" + std::to_string(number) + ".csv", text);
    }
}

void PlayTest::play(const std::string& configuration, const Words& options, const Words& program)
{
    mRunner.writeFile("vx-simulator.conf", configuration);
    std::filesystem::remove(mRunner.path("simulator.log"));
    mResult =
        sandbox(joined({"--record", "record.bin", "--events", "events.jsonl"}, options), program);
    SCOPED_TRACE(mResult);
    ASSERT_EQ(mResult.mExitCode, 0);
    EXPECT_LT(mResult.mCpuSeconds, kSpinningShare * mResult.mSeconds);
    const std::string log = SandboxedTest::log();
    const size_t loop = log.find(kLoopBegins);
    ASSERT_NE(loop, std::string::npos) << log;
    mLog = log.substr(loop + sizeof(kLoopBegins) - 1);
    mRecords = itemsOf<SampleRecord>(mRunner.readFile("record.bin"));
    mEvents = eventsOf(mRunner.readFile("events.jsonl"));
    ASSERT_FALSE(mRecords.empty());
    const auto has = [&options](const char* option) {
        return std::find(options.begin(), options.end(), option) != options.end();
    };
    explain(has("--send"));
    if (!HasFailure() && !has("--fault")) {
        EXPECT_EQ(mResult.mErrors, "");
        EXPECT_EQ(mMissing, 0U);
        checkEvents();
    }
}

/** After a fault, samples may be missing; nothing else may be wrong. */
void PlayTest::explain(bool withEvents)
{
    Words words = {VX_CASE, "explain", "record.bin", "--config", "vx-simulator.conf", "--json"};
    const CommandResult result =
        mRunner.run(joined(words, withEvents ? Words{"--events", "events.jsonl"} : Words{}));
    mPlayed.clear();
    for (const std::string& line : split(result.mOutput, '\n')) {
        const auto object = nlohmann::json::parse(line);
        if (object["kind"] == "stretch") {
            mPlayed += repeated(object["file"].get<std::string>() + " ", object["passes"]);
        } else if (object["kind"] == "verdict") {
            mMissing = object["missing"];
        } else {
            ASSERT_TRUE(object["kind"] == "command" || object["finding"] == "missing") << line;
        }
    }
    ASSERT_EQ(result.mExitCode, mMissing == 0 ? 0 : 1) << result;
}

/** Side records follow the blocks 1, 12, 23, ... and agree with them. */
void PlayTest::checkEvents() const
{
    size_t blocks = 0;
    size_t records = 0;
    size_t pacings = 0;
    for (const Event& event : mEvents) {
        EXPECT_TRUE(event.mIsAccepted) << event.mFile << ", " << event.mBytes << " bytes";
        if (event.mFile == "adc-in") {
            // No block holds samples of two cases, and only the last block of a case is short.
            const SampleRecord& first = mRecords[records];
            EXPECT_EQ(event.mBytes / 48,
                      std::min(360, kLines.at(first.mValues[0]) - first.mValues[1]));
            ++blocks;
            records += static_cast<size_t>(event.mBytes) / sizeof(SampleRecord);
            ASSERT_LE(records, mRecords.size());
        } else if (event.mFile == "f2h") {
            ASSERT_EQ(blocks, 1 + kBlocksFromPacingToPacing * pacings);
            EXPECT_EQ(event.mWords.at(0), kPeriod);
            ++pacings;
        } else if (event.mFile == "r2h") {
            const SampleRecord& last = mRecords[records - 1];
            EXPECT_EQ(std::vector<quint32>(event.mWords.begin(), event.mWords.begin() + 4),
                      (std::vector<quint32>{last.mSeconds, last.mNanoseconds, 0, 0}));
        }
    }
    EXPECT_EQ(records, mRecords.size());
    // The run may have ended while the program slept, before the side records.
    EXPECT_GE(kBlocksFromPacingToPacing * (pacings + 1), blocks);
    auto rows = summary(mResult);
    EXPECT_EQ(rows["blocks"], std::to_string(blocks));
    EXPECT_EQ(rows["last time stamp"],
              std::to_string(mRecords.back().mSeconds) + "." +
                  std::to_string(kSecond + mRecords.back().mNanoseconds).substr(1));
}

void PlayTest::expectInStep() const
{
    const auto r2h = std::find_if(mEvents.rbegin(), mEvents.rend(),
                                  [](const Event& it) { return it.mWords.size() == 12; });
    ASSERT_NE(r2h, mEvents.rend());
    const qint64 stamp = r2h->mWords[0] * kSecond + r2h->mWords[1];
    EXPECT_LT(std::abs(r2h->mArrivalNs - stamp), kSecond) << mResult;
}
