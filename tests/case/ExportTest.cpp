#include <gtest/gtest.h>

#include "CommandRunner.h"
#include "SampleRecord.h"
#include "SeededRandom.h"
#include "exporting/ExportedSignal.h"
#include "input/OpenInput.h"

namespace {
/** A block of 50 Hz, the others of 49.5 Hz; every value differs. */
std::string valueFile(int lines)
{
    std::string text;
    for (int i = 0; i < lines; ++i) {
        text += ";;7;0;" + std::string(i < kSamplesPerPeriod ? "50" : "49.5");
        for (int channel = 0; channel < kChannelCount; ++channel) {
            text += ';' + std::to_string((i - 5) * 1000 + channel);
        }
        text += '\n';
    }
    return text;
}

waveform::SignalBlock readAll(const std::string& path)
{
    const auto source = input::openInput(path, {});
    waveform::SignalBlock all;
    source->read(all);
    waveform::SignalBlock rest;
    EXPECT_FALSE(source->read(rest)) << "more than a block";
    return all;
}
} // namespace

class ExportTest : public testing::Test
{
protected:
    CommandResult exported(const std::string& arguments) const
    {
        return mRunner.run(split(VX_CASE + (" export " + arguments)));
    }

    CommandRunner mRunner;
};

/** Written files read back as the same counts at the same times, including a change of rate. */
TEST_F(ExportTest, ReadsBackIdentically)
{
    constexpr size_t kLines = 800;
    mRunner.writeFile("in.csv", valueFile(kLines));
    const waveform::SignalBlock in = readAll(mRunner.path("in.csv"));
    for (const char* const name : {"out.cfg", "out.cff", "OUT.CFG"}) {
        const CommandResult result = exported(std::string("in.csv --scale 500,0.25 -o ") + name);
        ASSERT_EQ(result.mExitCode, 0) << result;
        EXPECT_EQ(result.mErrors, "");
        const waveform::SignalBlock out = readAll(mRunner.path(name));
        ASSERT_EQ(out.size(), kLines) << name;
        for (size_t i = 0; i < kLines; ++i) {
            ASSERT_NEAR(out.mSeconds[i], in.mSeconds[i], 1e-9) << name << ' ' << i;
            ASSERT_DOUBLE_EQ(out.mValues[0][i] * 500, in.mValues[0][i]) << name << ' ' << i;
            ASSERT_DOUBLE_EQ(out.mValues[7][i] * 0.25, in.mValues[7][i]) << name << ' ' << i;
        }
    }
}

/** Any counts except the smallest, which means missing; the names give the import the channels. */
TEST_F(ExportTest, ImportsAsTheSameCounts)
{
    std::mt19937 random = seededRandom();
    std::vector<std::string> counts;
    std::string text;
    for (int line = 0; line < 720; ++line) {
        std::string& values = counts.emplace_back();
        for (int channel = 0; channel < kChannelCount; ++channel) {
            const auto count = static_cast<qint32>(static_cast<quint32>(random()));
            values += ';' + std::to_string(std::max(count, -std::numeric_limits<qint32>::max()));
        }
        text += ";;7;0;50" + values + '\n';
    }
    mRunner.writeFile("in.csv", text);
    for (const std::string name : {"out.cfg", "out.cff", "out.csv"}) {
        ASSERT_EQ(exported("in.csv --scale 500,0.25 -o " + name).mExitCode, 0);
        const CommandResult result = mRunner.run(
            {VX_CASE, "import", name, "--scale", "500,0.25", "--frequency", "50", "-o", "back"});
        ASSERT_EQ(result.mExitCode, 0) << result;
        std::vector<std::string> back;
        for (const std::string& line : split(mRunner.readFile("back"), '\n')) {
            if (line[0] != '#') {
                size_t begin = 0;
                for (int field = 0; field < 5; ++field) {
                    begin = line.find(';', begin + 1);
                }
                back.push_back(line.substr(begin));
            }
        }
        EXPECT_EQ(back, counts) << name;
    }
}

TEST_F(ExportTest, WritesTextWithUnits)
{
    mRunner.writeFile("in.csv", valueFile(3));
    ASSERT_EQ(exported("in.csv --scale 1000,3 --from 0.00005 -o out.csv").mExitCode, 0);
    EXPECT_EQ(mRunner.readFile("out.csv"),
              "time (s),UA (V),UB (V),UC (V),UN (V),IA (A),IB (A),IC (A),IN (A)\n"
              "0.000000000,-4,-3.999,-3.998,-3.997,-1332,-1331.66666667,-1331.33333333,-1331\n"
              "0.000055555,-3,-2.999,-2.998,-2.997,-998.666666667,-998.333333333,-998,"
              "-997.666666667\n");
}

/** The bytes by the standard: our own reader could have the same error as our writer. */
TEST_F(ExportTest, WritesWhatTheStandardRequires)
{
    const std::string extremes = ";;0;0;49.975;2147483647;-2147483648;-1;1;0;0;0;0\n";
    mRunner.writeFile("in.csv", extremes + extremes + extremes);
    const CommandResult result = exported("in.csv --from 0.00005 --to 0.0002 -o out.cfg");
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors,
              "vx-case: in.csv: 2 values are -2147483648, which means missing there\n");
    EXPECT_EQ(mRunner.readFile("out.cfg"),
              "vx-simulator,in.csv,2013\r\n8,8A,0D\r\n"
              "1,UA,A,,V,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "2,UB,B,,V,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "3,UC,C,,V,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "4,UN,N,,V,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "5,IA,A,,A,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "6,IB,B,,A,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "7,IC,C,,A,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "8,IN,N,,A,0.001,0,0,-2147483647,2147483647,1,1,P\r\n"
              "49.975\r\n1\r\n17991.112390479102,2\r\n01/01/1970,00:00:00.000055\r\n"
              "01/01/1970,00:00:00.000055\r\nBINARY32\r\n1\r\n0,0\r\nF,3\r\n");
    const std::string values("\xff\xff\xff\x7f\0\0\0\x80\xff\xff\xff\xff\1\0\0\0", 16);
    const std::string zeros(16, '\0');
    EXPECT_EQ(mRunner.readFile("out.dat"), std::string("\1\0\0\0\0\0\0\0", 8) + values + zeros +
                                               std::string("\2\0\0\0\x38\0\0\0", 8) + values +
                                               zeros);
}

TEST_F(ExportTest, RefusesWhatItCannotExport)
{
    mRunner.writeFile("in.csv", valueFile(3));
    EXPECT_EQ(exported("in.csv -o out.cfg").mExitCode, 0);
    const struct
    {
        const char* mArguments;
        int mExitCode;
        const char* mError;
    } rows[] = {
        {"in.csv -o out.txt", 2, "-o: 'out.txt': expected a name in .cfg, .cff or .csv"},
        {"in.csv --scale 0,1 -o out.csv", 2, "--scale: '0,1': expected V,A"},
        {"in.csv --scale 1,0 -o out.csv", 2, "--scale: '1,0': expected V,A"},
        {"in.csv --from 1 -o new.csv", 1, "in.csv: no sample to export"},
        {"out.cfg -o new.csv", 1, "out.cfg: expected a value file or a recording of the driver"},
    };
    for (const auto& row : rows) {
        const CommandResult result = exported(row.mArguments);
        EXPECT_EQ(result.mExitCode, row.mExitCode) << result;
        EXPECT_NE(result.mErrors.find(row.mError), std::string::npos) << result;
    }
    EXPECT_EQ(mRunner.readFile("new.csv"), "");
}

/** The part includes the sample at its beginning, not the one at its end. */
TEST(ExportedSignalTest, PartBeginsAndEndsOnItsSamples)
{
    const CommandRunner runner;
    runner.writeFile("in.csv", valueFile(800));
    const waveform::SignalBlock in = readAll(runner.path("in.csv"));
    for (const auto& [first, end] : {std::pair<size_t, size_t>{0, 1}, {100, 200}, {359, 361}}) {
        const exporting::ExportPart part{in.mSeconds[first], in.mSeconds[end]};
        const auto facts = exporting::ExportedSignal(runner.path("in.csv"), part).readFacts();
        EXPECT_EQ(facts.mSamples, end - first);
        EXPECT_EQ(facts.mSkippedSeconds, in.mSeconds[first]);
        EXPECT_DOUBLE_EQ(facts.mSeconds, in.mSeconds[end - 1] - in.mSeconds[first]);
        EXPECT_EQ(facts.mMissing, 0U);
        exporting::ExportedSignal exported(runner.path("in.csv"), part);
        waveform::SignalBlock block;
        ASSERT_TRUE(exported.read(block));
        EXPECT_EQ(block.mValues[0].front(), in.mValues[0][first]);
        EXPECT_EQ(block.mSeconds.front(), 0.0);
    }
}

/**
 * The frequency of a recording of the driver follows from its steps; each run of equal steps has a
 * rate.
 */
TEST(ExportedSignalTest, RatesMatchTheTimeStamps)
{
    const CommandRunner runner;
    const struct
    {
        qint64 mStepNs;
        double mHertz;
    } rows[] = {{55'555, 50.0}, {46'296, 60.0}, {56'116, 49.5}, {27'777'777, 0.1}};
    for (const auto& row : rows) {
        std::vector<SampleRecord> records;
        qint64 ns = 5'000'000'000;
        for (int i = 0; i < 30; ++i, ns += i < 20 ? row.mStepNs : 2 * row.mStepNs) {
            records.push_back({quint32(ns / 1'000'000'000), quint32(ns % 1'000'000'000), 0, 0, {}});
        }
        records[3].mValues[2] = std::numeric_limits<qint32>::min();
        records[4].mValues[7] = std::numeric_limits<qint32>::min() + 1;
        runner.writeFile("in.bin", {reinterpret_cast<const char*>(records.data()),
                                    records.size() * sizeof(SampleRecord)});
        const auto facts = exporting::ExportedSignal(runner.path("in.bin"), {}).readFacts();
        EXPECT_EQ(facts.mFrequency, row.mHertz);
        EXPECT_EQ(facts.mMissing, 1U);
        ASSERT_EQ(facts.mRates.size(), 2U) << row.mHertz;
        EXPECT_EQ(facts.mRates[0].mEnd, 19U);
        EXPECT_EQ(facts.mRates[1].mEnd, 30U);
        EXPECT_DOUBLE_EQ(facts.mRates[0].mHz, 1e9 / double(row.mStepNs));
        EXPECT_DOUBLE_EQ(facts.mRates[1].mHz, 0.5e9 / double(row.mStepNs));
    }
}
