#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>

#include "SeededRandom.h"
#include "SimulatorFixture.h"

namespace {
constexpr qint64 kHour = 3600 * kSecond;
constexpr qint64 kTenSeconds = 10 * kSecond;
constexpr qint64 kLeadAtMost = 230'000'000;
constexpr unsigned kMaxOversleep = 3'000'000; ///< ns
constexpr unsigned kMaxWork = 400'000;        ///< ns, of a case
constexpr size_t kGrowthAtMost = 64 * 1024;   ///< bytes

/** Lines of a value file, and what its frequency means for the driver. */
struct Case
{
    quint32 mLines;
    const char* mFrequency;
    qint64 mStep;
    quint32 mPeriod;
};

const std::vector<Case> kCases = {{360, "50", 55'555, 2'000'000},
                                  {5000, "50", 55'555, 2'000'000},
                                  {361, "60", 46'296, 1'666'666},
                                  {1, "45", 61'728, 2'222'222}};

/** A model of what should be playing, made from the rules for commands alone. */
struct PlayModel
{
    static constexpr char kConfiguration[] =
        "0,2,1\n0,1,2\n1,1,0\n1,3,3\n2,1,1\n2,0,0\n2,2,3\n-1,2,\n";
    const std::vector<std::vector<size_t>> mPasses{{1, 1, 2}, {0, 3, 3, 3}, {1, 3, 3}};
    size_t mContinuous = 2;
    std::deque<size_t> mOnce; ///< at most one
    size_t mCurrent = 2;
    size_t mAt = 0;

    size_t playing() const { return mPasses[mCurrent][mAt]; }

    void goOn(const std::string& line)
    {
        const bool isOnce = line[0] == 's';
        const size_t number = std::strtoul(line.c_str() + (isOnce ? 1 : 0), nullptr, 10);
        const bool isTaken = line != "x" && number < mPasses.size();
        if (isTaken && isOnce) {
            mOnce = {number};
        } else if (isTaken) {
            mContinuous = number;
        }
        if (++mAt == mPasses[mCurrent].size() || isTaken) {
            mCurrent = mOnce.empty() ? mContinuous : mOnce.front();
            mOnce.clear();
            mAt = 0;
        }
    }
};

/** A model of time stamps and f2h record, made from the rules for the sample writer alone. */
struct WriterModel
{
    qint64 mStamp;
    std::vector<quint32> mMark{0, 0, 0};
    std::vector<quint32> mF2h{};
    int mBlocks = 0;

    void takeSample(const Case& from, bool endsBlock)
    {
        const qint64 before = std::exchange(mStamp, mStamp + from.mStep);
        if (mStamp / kTenSeconds != before / kTenSeconds) {
            mMark = {static_cast<quint32>(mStamp / kSecond), static_cast<quint32>(mStamp % kSecond),
                     from.mPeriod};
        }
        if (endsBlock && mBlocks++ % 11 == 0) {
            mF2h = {from.mPeriod, mMark[0], mMark[1], mMark[2]};
        }
    }
};

/** Plays for an hour of virtual time; VX_SOAK_HOURS chooses more. */
class SoakTest : public SimulatorFixture
{
protected:
    /** The records that arrived since the last call; they are removed from the buffer. */
    std::vector<SampleRecord> takeRecords()
    {
        const off_t end = lseek(mBuffer, 0, SEEK_END);
        std::vector<SampleRecord> records;
        if (end > mSeen) {
            records.resize(static_cast<size_t>(end - mSeen) / sizeof(SampleRecord));
            EXPECT_EQ(pread(mBuffer, records.data(), static_cast<size_t>(end - mSeen), mSeen),
                      end - mSeen);
            mSeen = end;
            EXPECT_EQ(ftruncate(mBuffer, 0), 0); // the program continues at its own offset
        }
        return records;
    }

    /** Between two cases: what has arrived is the case that should have been playing. */
    void checkCase(const std::vector<SampleRecord>& records)
    {
        const size_t number = mPlay.playing();
        const Case& it = kCases[number];
        bool fits = records.size() == it.mLines;
        for (quint32 line = 0; fits && line < it.mLines; ++line) {
            mWriter.takeSample(it, line % 360 == 359 || line + 1 == it.mLines);
            const SampleRecord& record = records[line];
            fits = record.mAuxWord == line && record.mValues[0] == static_cast<qint32>(number) &&
                   record.mValues[7] == 8 && stampOf(record) == mWriter.mStamp;
        }
        const qint64 lead = mWriter.mStamp - toNanoseconds(mSystem.mRealtime);
        const std::vector<quint32> f2h = TestDevice::words(kF2hPath);
        if (!fits || std::abs(lead) > kLeadAtMost || f2h != mWriter.mF2h) {
            ADD_FAILURE() << "case " << mCasesPlayed << " should have been " << number << "; lead "
                          << lead << "; f2h " << testing::PrintToString(f2h) << " for "
                          << testing::PrintToString(mWriter.mF2h);
            throw EndOfTest();
        }
        ++mCasesPlayed;
    }

    /** Sends up to two lines at random; returns the next line that the program takes, if any. */
    std::string command()
    {
        const char* const lines[] = {"0", "1", "2", "s0", "s1", "s2", "x", "7"};
        for (unsigned count = mRandom() % 4 == 0 ? 1 + mRandom() % 2 : 0; count > 0; --count) {
            mSent.emplace_back(lines[mRandom() % std::size(lines)]);
            TestDevice::send(mSent.back() + "\n");
        }
        if (mSent.empty()) {
            return "x";
        }
        const std::string line = mSent.front();
        mSent.pop_front();
        return line;
    }

    std::mt19937 mRandom = seededRandom();
    PlayModel mPlay;
    WriterModel mWriter{toNanoseconds(mSystem.mRealtime)};
    std::deque<std::string> mSent;
    int mBuffer = -1;
    off_t mSeen = 0;
    int mCasesPlayed = 0;
};

TEST_F(SoakTest, EveryRecordIsTheExpectedOneForHours)
{
    for (size_t number = 0; number < kCases.size(); ++number) {
        std::string text;
        for (quint32 line = 0; line < kCases[number].mLines; ++line) {
            text += ";;" + std::to_string(line) + ";0;" + kCases[number].mFrequency + ";" +
                    std::to_string(number) + ";2;3;4;5;6;7;8\n";
        }
        writeFile(std::to_string(number), text);
    }
    mBuffer = open(kSampleBufferPath, O_RDWR | O_CLOEXEC);
    ASSERT_GE(mBuffer, 0);
    const char* const wanted = std::getenv("VX_SOAK_HOURS");
    const int hours = wanted == nullptr ? 1 : std::atoi(wanted);
    const qint64 start = toNanoseconds(mSystem.mMonotonic);
    size_t bytes = 0; // allocated; always 0 under a sanitizer, whose heap is another one
    int descriptors = 0;
    mSystem.mOnPoll = [&] {
        const std::vector<SampleRecord> records = takeRecords();
        if (records.empty()) {
            return; // the poll for the rest of a line
        }
        checkCase(records);
        mPlay.goOn(command());
        for (const LogEvent& event : mLog.mEvents) {
            ASSERT_NE(event.mText, "Zeit angepasst");
        }
        mLog.mEvents.clear();
        mSystem.mSleeps.clear();
        mSystem.mOversleep = mRandom() % kMaxOversleep;
        mSystem.advance(mRandom() % kMaxWork);
        const qint64 played = toNanoseconds(mSystem.mMonotonic) - start;
        if (played >= hours * kHour / 10 && descriptors == 0) {
            bytes = mallinfo2().uordblks;
            descriptors = openDescriptors();
        }
        if (played >= hours * kHour) {
            throw EndOfTest();
        }
    };
    runUntilEndOfTest(PlayModel::kConfiguration);
    EXPECT_LE(mallinfo2().uordblks, bytes + kGrowthAtMost);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_GT(mCasesPlayed, hours * 1000);
    std::cout << mCasesPlayed << " cases" << std::endl;
    close(mBuffer);
}
} // namespace
