#include "PlayTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {
constexpr size_t kBlocksFromPacingToPacing = 11;
constexpr char kLoopBegins[] = "INFO Simulator Starting endless simulation loop\n";

/** Of a core; what waits takes a few percent, what spins takes all that it gets. */
constexpr double kSpinningShare = 0.5;

constexpr Stretch k50Hz{360, "50", 55'555, 2'000'000};
constexpr Stretch k60Hz{900, "60", 46'296, 1'666'666};

/** The writer computes in single precision; in double precision the period would be 2002001. */
constexpr Stretch kBelow50Hz{400, "49.95", 55'611, 2'002'002};

Stretch steady(int lines)
{
    return {lines, k50Hz.mFrequency, k50Hz.mStepNs, k50Hz.mPeriod};
}

/** From 10 on, the first digit of a case's number is the configuration that plays it. */
const std::vector<ValueCase>& allCases()
{
    static const std::vector<ValueCase> sCases = {
        {1, {steady(400)}}, {2, {steady(361)}},
        {3, {steady(1)}},   {4, {k50Hz}},
        {11, {k50Hz}},      {12, {steady(720)}},
        {21, {k60Hz}},      {22, {steady(100), k60Hz, kBelow50Hz}},
        {23, {kBelow50Hz}}};
    return sCases;
}

/** The case that the record says it is of; null when there is none. */
const ValueCase* caseOf(const SampleRecord& record)
{
    const auto found = std::find_if(allCases().begin(), allCases().end(), [&](const ValueCase& it) {
        return it.number() == record.mValues[0];
    });
    return found == allCases().end() ? nullptr : &*found;
}

bool hasContent(const SampleRecord& record, const SampleRecord& content)
{
    return record.mAuxWord == content.mAuxWord && record.mFlags == content.mFlags &&
           std::equal(record.mValues, record.mValues + kChannelCount, content.mValues);
}
} // namespace

void PlayTest::play(const std::string& configuration, const Words& options, const Words& program)
{
    mRunner.writeFile("vx-simulator.conf", configuration);
    for (const ValueCase& it : allCases()) {
        mRunner.writeFile(it.fileName(), it.fileText());
    }
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
    checkRecords();
    if (!HasFailure() && std::find(options.begin(), options.end(), "--fault") == options.end()) {
        EXPECT_EQ(mResult.mErrors, "");
        EXPECT_EQ(mLostNs, 0);
        checkEvents();
        checkSummary();
    }
}

/** A recording may end, but not change to another case, in the middle of a case. */
void PlayTest::checkRecords()
{
    mPlayed.clear();
    mLostNs = 0;
    const ValueCase* current = nullptr;
    int line = 0;
    for (size_t at = 0; at < mRecords.size(); ++at, ++line) {
        const SampleRecord& record = mRecords[at];
        if (current == nullptr || line == current->lineCount()) {
            current = caseOf(record);
            ASSERT_NE(current, nullptr) << at << " is of no case: " << record.mValues[0];
            line = 0;
            mPlayed += std::to_string(current->number()) + " ";
        }
        const qint64 step = current->inForce(line).mStepNs;
        const qint64 gap = at == 0 ? 0 : stampOf(record) - stampOf(mRecords[at - 1]) - step;
        ASSERT_TRUE(hasContent(record, current->record(line)) && record.mNanoseconds < kSecond &&
                    (gap == 0 || (line == 0 && gap > 0)))
            << "record " << at << ": expected line " << line << " of case " << current->number()
            << ", found line " << record.mValues[1] << " of case " << record.mValues[0] << " after "
            << gap << " ns too many";
        mLostNs += gap;
    }
}

/** Side records follow the blocks 1, 12, 23, ... and say what the blocks say. */
void PlayTest::checkEvents() const
{
    size_t blocks = 0;
    size_t records = 0;
    size_t pacings = 0;
    for (const Event& event : mEvents) {
        EXPECT_TRUE(event.mIsAccepted) << event.mFile << ", " << event.mBytes << " bytes";
        if (event.mFile == "adc-in") {
            // Neither a block of two cases nor a short one within a case.
            const SampleRecord& first = mRecords[records];
            EXPECT_EQ(event.mBytes / 48,
                      std::min(360, caseOf(first)->lineCount() - first.mValues[1]));
            ++blocks;
            records += static_cast<size_t>(event.mBytes) / sizeof(SampleRecord);
            ASSERT_LE(records, mRecords.size());
        } else if (event.mFile == "f2h") {
            ASSERT_EQ(blocks, 1 + kBlocksFromPacingToPacing * pacings);
            const SampleRecord& last = mRecords[records - 1];
            EXPECT_EQ(event.mWords.at(0), caseOf(last)->inForce(last.mValues[1]).mPeriod);
            ++pacings;
        } else if (event.mFile == "r2h") {
            const SampleRecord& last = mRecords[records - 1];
            EXPECT_EQ(std::vector<quint32>(event.mWords.begin(), event.mWords.begin() + 4),
                      (std::vector<quint32>{last.mSeconds, last.mNanoseconds, 0, 0}));
        }
    }
    EXPECT_EQ(records, mRecords.size());
    // The end may have come while the writer slept, before the records of its last pacing.
    EXPECT_GE(kBlocksFromPacingToPacing * (pacings + 1), blocks);
}

void PlayTest::checkSummary() const
{
    const auto blocks = std::count_if(mEvents.begin(), mEvents.end(),
                                      [](const Event& it) { return it.mFile == "adc-in"; });
    auto rows = summary(mResult);
    EXPECT_EQ(rows["blocks"], std::to_string(blocks));
    EXPECT_EQ(rows["refused writes"], "0");
    EXPECT_EQ(rows["samples"], std::to_string(mRecords.size()));
    const std::string digits = std::to_string(kSecond + mRecords.back().mNanoseconds);
    EXPECT_EQ(rows["last time stamp"],
              std::to_string(mRecords.back().mSeconds) + "." + digits.substr(1));
}

void PlayTest::expectInStep() const
{
    const auto r2h = std::find_if(mEvents.rbegin(), mEvents.rend(),
                                  [](const Event& it) { return it.mWords.size() == 12; });
    ASSERT_NE(r2h, mEvents.rend());
    const qint64 stamp = r2h->mWords[0] * kSecond + r2h->mWords[1];
    EXPECT_LT(std::abs(r2h->mArrivalNs - stamp), kSecond) << mResult;
}
