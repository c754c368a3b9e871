#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <random>

#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "Simulator.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

namespace {
constexpr qint64 kNsPerSecond = 1'000'000'000;
constexpr qint64 kNsPerHour = 3600 * kNsPerSecond;
constexpr qint64 kLeadAtMost = 230'000'000;
constexpr long kGrowthAtMost = 256; ///< pages

struct EndOfTest
{
};

/** Lines of a value file, and the time from sample to sample. */
struct Case
{
    quint32 mLines;
    const char* mFrequency;
    qint64 mStep;
};

const std::vector<Case> kCases = {
    {360, "50", 55'555}, {5000, "50", 55'555}, {361, "60", 46'296}, {1, "45", 61'728}};

const char* const kConfiguration = "0,2,1\n0,1,2\n1,1,0\n1,3,3\n2,1,1\n2,0,0\n2,2,3\n-1,2,\n";

/** What should be playing, from the rules for commands alone. */
struct Model
{
    const std::vector<std::vector<int>> mPasses{{1, 1, 2}, {0, 3, 3, 3}, {1, 3, 3}};
    int mContinuous = 2;
    int mOnce = -1;
    int mCurrent = 2;
    size_t mAt = 0;

    int playing() const { return mPasses[static_cast<size_t>(mCurrent)][mAt]; }

    void goOn(const std::string& line)
    {
        const bool isOnce = line[0] == 's';
        const int number = std::atoi(line.c_str() + (isOnce ? 1 : 0));
        const bool isTaken = line != "x" && number < 3;
        if (isTaken) {
            (isOnce ? mOnce : mContinuous) = number;
        }
        if (++mAt == mPasses[static_cast<size_t>(mCurrent)].size() || isTaken) {
            mCurrent = mOnce >= 0 ? std::exchange(mOnce, -1) : mContinuous;
            mAt = 0;
        }
    }
};

/** Plays for hours of virtual time; VX_SOAK_HOURS and VX_SOAK_SEED choose how long and what. */
class SoakTest : public testing::Test
{
protected:
    SoakTest()
    {
        TestDevice::makeDriver();
        const char* const seed = std::getenv("VX_SOAK_SEED");
        mSeed = seed != nullptr ? static_cast<unsigned>(std::strtoul(seed, nullptr, 10))
                                : std::random_device()();
        mRandom.seed(mSeed);
    }

    /** The bytes that have arrived since the last call. They make room for the next. */
    std::vector<SampleRecord> takeRecords()
    {
        const auto end = lseek(mBuffer, 0, SEEK_END);
        std::vector<SampleRecord> records;
        if (end > mSeen) {
            records.resize(static_cast<size_t>(end - mSeen) / sizeof(SampleRecord));
            EXPECT_EQ(pread(mBuffer, records.data(), static_cast<size_t>(end - mSeen), mSeen),
                      end - mSeen);
            mSeen = end;
            EXPECT_EQ(ftruncate(mBuffer, 0), 0); // the program goes on at its own offset
        }
        return records;
    }

    /** Between two cases: what has arrived is the case that should have been playing. */
    void checkCase(const std::vector<SampleRecord>& records)
    {
        const Case& it = kCases[static_cast<size_t>(mModel.playing())];
        bool fits = records.size() == it.mLines;
        for (size_t line = 0; fits && line < records.size(); ++line) {
            const SampleRecord& record = records[line];
            const qint64 stamp = record.mSeconds * kNsPerSecond + record.mNanoseconds;
            fits = record.mAuxWord == line && record.mValues[0] == mModel.playing() &&
                   record.mValues[7] == 8 && (mStamp == 0 || stamp == mStamp + it.mStep);
            mStamp = stamp;
        }
        const qint64 lead = mStamp - toNanoseconds(mSystem.mRealtime);
        if (!fits || std::abs(lead) > kLeadAtMost) {
            ADD_FAILURE() << "case " << mCasesPlayed << " should have been " << mModel.playing()
                          << "; lead " << lead;
            throw EndOfTest();
        }
        ++mCasesPlayed;
    }

    /** Sends up to two lines now and then; the next line that the program takes, if any. */
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

    static long residentPages()
    {
        long size = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        return resident;
    }

    TestDevice mDevice;
    TestFiles mFiles;
    LogCapture mLog;
    VirtualSystem mSystem;
    Model mModel;
    unsigned mSeed = 0;
    std::mt19937 mRandom;
    std::deque<std::string> mSent;
    int mBuffer = -1;
    off_t mSeen = 0;
    qint64 mStamp = 0;
    quint64 mCasesPlayed = 0;
};

TEST_F(SoakTest, EveryRecordOfHoursIsTheOneThatShouldCome)
{
    const char* const hours = std::getenv("VX_SOAK_HOURS");
    const qint64 length = (hours != nullptr ? std::atoi(hours) : 1) * kNsPerHour;
    std::cout << "VX_SOAK_SEED=" << mSeed << std::endl;
    std::string configuration = kConfiguration;
    for (size_t number = 0; number < kCases.size(); ++number) {
        std::string text;
        for (quint32 line = 0; line < kCases[number].mLines; ++line) {
            text += ";;" + std::to_string(line) + ";0;" + kCases[number].mFrequency + ";" +
                    std::to_string(number) + ";2;3;4;5;6;7;8\n";
        }
        mFiles.make(std::to_string(number), text);
    }
    ASSERT_EQ(chdir(mFiles.path("").c_str()), 0);
    Simulator simulator;
    ASSERT_TRUE(simulator.loadConfigFile(mFiles.make("conf", configuration)));
    ASSERT_TRUE(simulator.loadDataFiles());
    mBuffer = open(kSampleBufferPath, O_RDWR | O_CLOEXEC);
    ASSERT_GE(mBuffer, 0);

    const qint64 start = toNanoseconds(mSystem.mMonotonic);
    long pages = 0;
    int descriptors = 0;
    mSystem.mOnPoll = [&] {
        const std::vector<SampleRecord> records = takeRecords();
        if (records.empty()) {
            return; // the poll for the rest of a line
        }
        checkCase(records);
        mModel.goOn(command());
        for (const LogEvent& event : mLog.mEvents) {
            ASSERT_EQ(event.mText.find("Zeit angepasst"), std::string::npos);
        }
        mLog.mEvents.clear();
        mSystem.mSleeps.clear();
        const qint64 played = toNanoseconds(mSystem.mMonotonic) - start;
        if (played >= length / 10 && pages == 0) {
            pages = residentPages();
            descriptors = openDescriptors();
        }
        if (played >= length) {
            throw EndOfTest();
        }
    };
    EXPECT_THROW(simulator.startEndless(), EndOfTest);
    EXPECT_LE(residentPages() - pages, kGrowthAtMost);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_GT(mCasesPlayed, static_cast<quint64>(length / kNsPerHour) * 1000);
    std::cout << mCasesPlayed << " cases, " << residentPages() - pages << " pages more"
              << std::endl;
    close(mBuffer);
}
} // namespace
