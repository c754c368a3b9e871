#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <cfloat>

#include "Files.h"
#include "ReadSignal.h"
#include "SeededRandom.h"
#include "input/OpenInput.h"

namespace {
using Edits = std::vector<std::pair<std::string, std::string>>;

const std::string kConfig =
    "S,D,1999\n2,1A,1D\n1,UA,A,Line,V,0.5,1,0,-32767,32767,100,1,P\n1,Trip,,,0\n50\n1\n1000,3\n"
    "01/02/2020,03:04:05.000006\n01/02/2020,03:04:05.1\nASCII\n1\n";
const std::string kConfig1991 =
    "S,D\n1,1A,0D\n1,UA,A,,V,0.5,1,0,-32767,32767\n50\n1\n1000,3\n"
    "02/01/99,03:04:05.000006\n02/01/99,03:04:05.1\nBINARY\n";
const std::string kData = "1,0,2,0\n2,1000,4,1\n3,2000,-6,1\n";
const Edits kNoRate = {{"1\n1000,3", "0\n0,3"}};

std::string edited(std::string text, const Edits& edits)
{
    for (const auto& [from, to] : edits) {
        const size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos) << from;
        text.replace(place, from.size(), to);
    }
    return text;
}

Edits kindOf(const std::string& kind, Edits more = {})
{
    more.insert(more.begin(), {"ASCII", kind});
    return more;
}

template <typename... Numbers>
std::string bytes(Numbers... numbers)
{
    std::string all;
    (all.append(reinterpret_cast<const char*>(&numbers), sizeof(numbers)), ...);
    return all;
}

/** A record with one value and one word of states. */
template <typename Value>
std::string record(quint32 number, quint32 stamp, Value value)
{
    return bytes(number, stamp, value, quint16{1});
}

template <typename Value>
std::string threeRecords(Value value)
{
    return record<Value>(1, 0, 2) + record<Value>(2, 1000, value) + record<Value>(3, 2000, -6);
}

/** "values of the first channel @ times in ms | remarks", or the error. */
std::string summaryOf(const std::string& path)
{
    try {
        const auto source = input::openInput(path, {});
        const waveform::SignalBlock all = readAll(*source);
        std::vector<double> times;
        for (const double seconds : all.mSeconds) {
            times.push_back(seconds * 1e3);
        }
        return fmt::format("{:.6g} @ {:.6g} | {}", fmt::join(all.mValues.at(0), " "),
                           fmt::join(times, " "), fmt::join(source->description().mRemarks, " | "));
    } catch (const base::CaseError& error) {
        return std::string(error.what()).substr(path.rfind('/') + 1);
    }
}

struct Row
{
    const char* mName;
    Edits mEdits;
    std::string mData;
    std::string mExpected;
    std::string mConfig = kConfig;
};
} // namespace

/** Oddities of real files: each one is read, and reported if it matters. */
TEST(ComtradeTest, ReadsOddRecordings)
{
    const std::string plain = "2 3 -2 @ 0 1 2 | ";
    const std::string held =
        "2 2 -2 @ 0 1 2 | channel 1: missing values (1, the first at 0.001000 s): held at the "
        "value before";
    const auto stamped = [](const std::string& times) { return "2 3 -2 @ " + times + " | "; };
    const auto thinned = [](const std::string& samples) {
        return samples + " samples in a period: the recording was filtered or thinned";
    };
    const Row rows[] = {
        {"plain", {}, kData, plain},
        {"line ends, blanks",
         {{"1,UA,A", " 1 , UA , A"}, {"S,D,1999\n2", "\n\nS,D,1999\r\r\n2"}},
         "1, 0 ,2, 0\r\n\r\n 2,1000, 4 ,1\r\n3,2000,-6,1",
         plain},
        {"empty fields",
         {{"0,-32767,32767", ",-99999.5,99999.5"}, {"A,Line", ","}, {",0\n50", ",\n"}},
         kData,
         plain + "no nominal frequency"},
        {"comma in a name", {{"UA", "U,A"}}, kData, plain},
        {"numbers of channels",
         {{"2,1A,1D", "9,1a,1d"}},
         kData,
         plain + "\"9\" channels are 1 analog and 1 status channels"},
        {"ratio",
         {{"100,1,P", "0,1,"}},
         kData,
         plain + "channel 1: a ratio of 0: taken as unknown"},
        {"factor of 0",
         {{"0.5,1,", "0,1,"}},
         kData,
         "1 1 1 @ 0 1 2 | channel 1: its factor is 0 in the configuration: every value is 1"},
        {"long skew",
         {{"0,-32767,32767", "-20001,-32767,32767"}},
         kData,
         plain + "channel 1: a skew of -20001 µs, longer than a period of 50 Hz"},
        {"1997", {{"1999", "1997"}}, kData, plain + "revision of the year 1997: read as 1999"},
        {"2000", {{"1999", "2000"}}, kData, plain + "revision of the year 2000: read as 1999"},
        {"no year",
         {{",1999", ""}},
         kData,
         plain + "no year of a revision: read as 1999 by the form of its channels"},
        {"month first",
         {{"01/02", "02/13"}},
         kData,
         plain + "the start time has day and month swapped"},
        {"no date",
         {{"01/02/2020,03", "1.2.x"}},
         kData,
         plain + "the start time \"1.2.x:04:05.000006\" is no date and time: not known"},
        {"2013",
         {{"1999", "2013"}, {"ASCII\n1\n", "ASCII\n1\n+1,+1h30\n4,1\n"}},
         kData,
         plain + "times are UTC +1, local time is UTC +1h30: reported, not applied | "
                 "leap second indicator 1: reported, not applied"},
        {"thinned",
         {{"1000,3", "900,3"}},
         "1,0,2,0\n",
         "2 @ 0 | 3 samples are announced, 1 are there | " + thinned("18")},
        {"two rates",
         {{"1\n1000,3", "2\n1000,2\n2000,4"}},
         kData + "4,,8,0\n",
         "2 3 -2 5 @ 0 1 2 2.5 | "},
        {"beyond the last rate",
         {{"1000,3", "1000,2"}},
         kData,
         plain + "2 samples are announced, 3 are there"},
        {"stamps disagree",
         {},
         "1,0,2,0\n2,2000,4,0\n3,4000,-6,0\n",
         plain + "time stamps end at 0.004 s, the rate at 0.002 s: the rate is used"},
        {"stamps", kNoRate, "7,500,2,0\n8,1500,4,1\n9,4500,-6,1\n",
         stamped("0 1 4") + thinned("10")},
        {"stamps, no line", {{"1\n1000,3\n", "0\n"}}, kData, stamped("0 1 2")},
        {"stamps, factor",
         {{"1\n1000,3", "0\n0,3"}, {"ASCII\n1", "ASCII\n2.5"}},
         kData,
         stamped("0 2.5 5") + thinned("8")},
        {"stamps, no factor",
         {{"1\n1000,3", "0\n0,3"}, {"ASCII\n1", "ASCII\n"}},
         kData,
         stamped("0 1 2")},
        {"stamps in ns",
         {{"1\n1000,3", "0\n0,3"}, {".000006", ".000006000"}},
         "1,0,2,0\n2,1000000,4,1\n3,2000000,-6,1\n",
         stamped("0 1 2")},
        {"stamps missing and falling", kNoRate, "1,0,2,0\n2,1000,4,1\n3,,-6,1\n4,500,0,0\n",
         "2 3 -2 1 @ 0 1 2 3 | 3 samples are announced, 4 are there | 1 time stamps fall: the "
         "step before them is repeated"},
        {"no times", kNoRate, "1,,2,0\n2,,4,1\n",
         "c.dat: expected time stamps that rise, from the first record on, since the "
         "configuration has no rate"},
        {"stamps repeat", kNoRate, "1,5,2,0\n2,5,4,1\n3,2005,-6,1\n",
         stamped("0 0 2") + "1 time stamps repeat the one before them"},
        {"stamps stand still", kNoRate, "1,5,2,0\n2,5,4,1\n",
         "c.dat: expected time stamps that rise, from the first record on, since the "
         "configuration has no rate"},
        {"missing", {}, "1,0,2,0\n2,1000,,1\n3,2000,-6,1\n", held},
        {"missing from the first on",
         {},
         "1,0,,0\n2,1000,,1\n3,2000,-6,1\n",
         "0 0 -2 @ 0 1 2 | channel 1: missing values (2, the first at 0.000000 s): 0 at the "
         "beginning, then held at the value before"},
        {"missing 99999", {}, "1,0,2,0\n2,1000,99999,1\n3,2000,-6,1\n", held},
        {"99999 in 2013",
         {{"1999", "2013"}},
         "1,0,2,0\n2,1000,99999,1\n3,2000,-6,1\n",
         "2 50000.5 -2 @ 0 1 2 | "},
        {"missing 0x8000", kindOf("binary"), threeRecords<qint16>(-32768), held},
        {"-1 since 1999", kindOf("BINARY"), threeRecords<qint16>(-1), "2 0.5 -2 @ 0 1 2 | "},
        {"missing 0x80000000", kindOf("BINARY32"),
         threeRecords<qint32>(std::numeric_limits<qint32>::min()), held},
        {"missing least float", kindOf("FLOAT32"), threeRecords<float>(-FLT_MAX), held},
        {"missing NaN", kindOf("FLOAT32"), threeRecords<float>(std::nanf("")), held},
        {"float", kindOf("FLOAT32"), threeRecords<float>(0.25F), "2 1.125 -2 @ 0 1 2 | "},
        {"missing in 1991",
         {},
         bytes(1, 0, qint16{2}, 2, 1000, qint16{-1}, 3, 2000, qint16{-6}),
         held,
         kConfig1991},
        {"no sign in 1991",
         {{"-32767,32767", "0,65535"}},
         bytes(1, 0, qint16{2}, 2, 1000, quint16{0x8000}, 3, 2000, quint16{0xFFFE}),
         "2 16385 32768 @ 0 1 2 | ",
         kConfig1991},
        {"stamps of all ones", kindOf("BINARY"),
         record<qint16>(1, ~0U, 2) + record<qint16>(2, ~0U, 4) + record<qint16>(3, ~0U, -6), plain},
        {"stamps overflow", kindOf("BINARY", kNoRate),
         record<qint16>(1, ~0U - 999, 2) + record<qint16>(2, 0, 4) + record<qint16>(3, 1000, -6),
         stamped("0 1 2")},
        {"end marks", {}, kData + "\x1a", plain},
        {"end mark of binary data", kindOf("BINARY"), threeRecords<qint16>(4) + "\x1a", plain},
        {"bytes too many", kindOf("BINARY"), threeRecords<qint16>(4) + "rest",
         plain + "4 bytes after the last whole record of 12 bytes: left out"},
        {"a byte too many, no end mark", kindOf("BINARY"), threeRecords<qint16>(4) + "x",
         plain + "1 bytes after the last whole record of 12 bytes: left out"},
        {"numbers wrap", {}, "4294967295,0,2,0\n0,1000,4,1\n1,2000,-6,1\n", plain},
        {"numbers jump",
         {},
         "8,0,2,0\n9,1000,4,1\n12,2000,-6,1\n",
         plain + "the sample numbers jump 1 times, as if some were lost: taken in the order of the "
                 "file"},
        {"numbers repeat and fall",
         {},
         "8,0,2,0\n8,1000,4,1\n7,2000,-6,1\n",
         plain + "the sample numbers repeat or fall 2 times, as if records were repeated or out of "
                 "order: taken in the order of the file"},
        {"no numbers", {}, "0,0,2,0\n0,1000,4,1\n0,2000,-6,1\n", plain},
        {"last line cut off",
         {},
         kData + "4,3000\n",
         plain + "line 4 of the data is cut off: left out"},
        {"announces too much",
         {{"1000,3", "1000,999999999999"}},
         kData,
         plain + "999999999999 samples are announced, 3 are there"},
        {"counts lie",
         {{"2,1A,1D", "2,999999999A,1D"}},
         kData,
         "c.cfg:4: expected analog channel 2 of 999999999 with at least 7 fields, found 5"},
        {"rates lie",
         {{"1\n1000,3", "99999999999\n1000,3"}},
         kData,
         "c.cfg:8: expected sampling rate 2 of 99999999999 and its last sample, found "
         "\"01/02/2020,03:04:05.000006\""},
        {"no factor",
         {{"0.5,1,", "x,1,"}},
         kData,
         "c.cfg:3: expected analog channel 1 of 1 with a factor and an offset, found \"x\" and "
         "\"1\""},
        {"rate",
         {{"1000,3", "-1000,3"}},
         kData,
         "c.cfg:7: expected sampling rate 1 of 1 and its last sample, found \"-1000,3\""},
        {"numbers missing",
         {{"1,UA", ",UA"}, {"1,Trip", "x,Trip"}},
         kData,
         plain + "status channel 1 of 1: no number: numbered by its position | channel 1: no "
                 "number: numbered by its position"},
        {"factor of stamps 0",
         {{"ASCII\n1", "ASCII\n0"}},
         kData,
         plain + "a factor of 0 for time stamps: 1 is used"},
        {"rates fall",
         {{"1\n1000,3", "2\n1000,2\n2000,2"}},
         kData,
         "c.cfg:8: expected sampling rate 2 of 2 and its last sample above 2, where the rate "
         "before "
         "ends"},
        {"no count",
         {{"2,1A,1D", "2,1A,1X"}},
         kData,
         "c.cfg:2: expected numbers of channels such as \"8,8A,0D\", found \"2,1A,1X\""},
        {"too few status fields",
         {{"1,Trip,,,0", "1"}},
         kData,
         "c.cfg:4: expected status channel 1 of 1 with at least 2 fields, found 1"},
        {"a state that is none",
         {},
         "1,0,2,0\n2,1000,4,x\n",
         "c.dat:2: expected 0 or 1 in field 4, found \"x\""},
        {"kind", kindOf("MP3"), kData,
         "c.cfg:10: expected ASCII, BINARY, BINARY32 or FLOAT32, found \"MP3\""},
        {"ends early",
         {{"ASCII\n1\n", ""}},
         kData,
         "c.cfg:10: expected the kind of data, found the end of the configuration"},
        {"no number",
         {},
         "1,0,2,0\n2,1000,x,1\n",
         "c.dat:2: expected a number in field 3, found \"x\""},
        {"too few fields", {}, "1,0,2\n2,1000,4,1\n", "c.dat:1: expected 4 fields, found 3"},
        {"text in place of binary", kindOf("BINARY"), kData,
         plain + "the configuration says BINARY data, they are text: read as ASCII"},
        {"binary in place of text",
         {},
         threeRecords<qint16>(4),
         "c.dat: byte 1: expected text, since the configuration says ASCII data"},
        {"blank lines, units of rates",
         {{"\n50\n", "\n\n50 Hz\n"}, {"1000,3", "1000.0Hz,3"}, {"1999", "1999\n"}},
         kData,
         plain},
        {"no record", kindOf("BINARY"), "1234\5",
         "c.dat: byte 0: expected records of 12 bytes (1 analog, 1 status channels), found 5 "
         "bytes"},
    };
    for (const Row& row : rows) {
        const TestFiles files;
        files.make("c.dat", row.mData);
        const QString config = files.make("c.cfg", edited(row.mConfig, row.mEdits));
        EXPECT_EQ(summaryOf(config.toStdString()), row.mExpected) << row.mName;
    }
}

/** In every kind of data and revision; two status words, so that offsets in a record matter. */
TEST(ComtradeTest, AllKindsOfDataHaveTheSameNumbers)
{
    std::mt19937 random = seededRandom();
    const TestFiles files;
    for (const char* const year : {"1991", "1999", "2013"}) {
        std::vector<double> expected;
        std::map<std::string, std::string> data;
        for (quint32 i = 0; i < 500; ++i) {
            const auto number = static_cast<qint16>(static_cast<int>(random() % 60'000) - 30'000);
            const auto states = static_cast<quint16>(random());
            const quint16 last = i % 2;
            const auto all = [&](auto value) {
                return bytes(i + 1, i * 1000, value, states, last);
            };
            data["BINARY"] += all(number == -1 ? qint16{0} : number); // in 1991 this means missing
            data["BINARY32"] += all(qint32{number == -1 ? 0 : number});
            data["FLOAT32"] += all(static_cast<float>(number == -1 ? 0 : number));
            std::string line = fmt::format("{},{},{}", i + 1, i * 1000, number == -1 ? 0 : number);
            for (unsigned bit = 0; bit < 16; ++bit) {
                line += (states >> bit) % 2 == 0 ? ",0" : ",1";
            }
            data["ASCII"] += line + fmt::format(",{}\n", last);
            expected.push_back(0.5 * (number == -1 ? 0 : number) + 1.0);
        }
        std::string config = edited(kConfig, {{"2,1A,1D", "18,1A,17D"}, {"1000,3", "1000,500"}});
        config = edited(config, {{"1,Trip,,,0\n", repeated("1,Trip,,,0\n", 17)}, {"1999", year}});
        for (const auto& [kind, recorded] : data) {
            files.make("c.dat", recorded);
            const auto source = input::openInput(
                files.make("c.cfg", edited(config, kindOf(kind))).toStdString(), {});
            EXPECT_EQ(readAll(*source).mValues.at(0), expected) << year << kind;
            const auto& statuses = source->description().mStatusChannels;
            EXPECT_EQ(statuses.at(16).mChangeCount, 499U) << year << kind;
            EXPECT_GT(statuses.at(15).mChangeCount, 150U) << year << kind;
        }
    }
}

/** Either file may be named, in any case; a single file holds both, its data counted in bytes. */
TEST(ComtradeTest, FindsTheFilesOfARecording)
{
    const std::string expected = "2 3 -2 @ 0 1 2 | ";
    const TestFiles files;
    files.make("Some.Event.CFG", kConfig);
    files.make("some.event.Dat", kData);
    EXPECT_EQ(summaryOf(files.path("Some.Event.CFG")), expected);
    EXPECT_EQ(summaryOf(files.path("some.event.Dat")), expected);
    const std::string config = "--- file type: CFG ---\r\n" + kConfig;
    const auto single = [&](const std::string& text) {
        return summaryOf(files.make("single", text).toStdString());
    };
    EXPECT_EQ(single(config + "--- file type: INF ---\n\n--- FILE TYPE: DAT ASCII ---\n" + kData),
              expected);
    const std::string binary = "--- file type: DAT BINARY: 36 ---\n" + threeRecords<qint16>(4);
    const std::string remark =
        "the configuration says ASCII data, the heading of their section BINARY: the heading is "
        "used";
    EXPECT_EQ(single(config + binary + "\n"), expected + remark);
    EXPECT_EQ(single(binary + config), expected + remark);
    EXPECT_EQ(single(edited(config + binary, {{": 36", ": 99"}})),
              expected + remark + " | 99 bytes of data are announced, 36 are there");
    EXPECT_EQ(single(config), "single: expected a section \"--- file type: DAT ---\"");
    EXPECT_EQ(single(config + "--- file type: DAT ASCII ---\n1,0,x,0\n"),
              "single:14: expected a number in field 3, found \"x\"");
    EXPECT_EQ(summaryOf(files.make("alone.cfg", kConfig).toStdString()),
              "alone.cfg: a COMTRADE configuration; expected its data (.dat) beside it");
}

TEST(ComtradeTest, DescribesChannelsAndStates)
{
    std::string config =
        edited(kConfig, {{"2,1A,1D", "18,1A,17D"}, {"V,0.5,1,0", "kV,0.5,1,12.5"}});
    config = edited(config, {{"1,Trip,,,0\n", repeated("9,Trip,,,0\n", 16) + "17,L\xE4rm,,,0\n"}});
    const TestFiles files;
    files.make("c.dat", bytes(1, 0, qint16{0}, quint16{1}, quint16{0}, 2, 0, qint16{0}, quint16{0},
                              quint16{1}, 3, 0, qint16{0}, quint16{0}, quint16{0}));
    const std::string path = files.make("c.cfg", edited(config, kindOf("BINARY"))).toStdString();
    const auto source = input::openInput(path, {});
    readAll(*source);
    const waveform::SignalDescription& signal = source->description();
    EXPECT_EQ(signal.mFormat, "COMTRADE 1999, BINARY");
    EXPECT_EQ(signal.mStartTime, "2020-02-01 03:04:05.000006");
    EXPECT_EQ(signal.mChannels[0].mUnit, "kV");
    EXPECT_EQ(signal.mChannels[0].mSkewMicroseconds, 12.5);
    EXPECT_EQ(signal.mChannels[0].mSide, 'P');
    EXPECT_TRUE(signal.mStatusChannels[0].mFirstState);
    EXPECT_EQ(signal.mStatusChannels[0].mChangeCount, 1);
    const waveform::StatusChannel& last = signal.mStatusChannels[16];
    EXPECT_EQ(last.mName, "L\u00E4rm");
    EXPECT_FALSE(last.mFirstState);
    ASSERT_EQ(last.mChanges.size(), 2);
    EXPECT_DOUBLE_EQ(last.mChanges[1].mSeconds, 0.002);
    EXPECT_FALSE(last.mChanges[1].mState);
    EXPECT_THAT(signal.mRemarks, testing::ElementsAre(testing::StartsWith(
                                     "texts are not UTF-8, so they are read as Latin-1")));
    const auto russian = input::openInput(path, {"windows-1251"});
    EXPECT_EQ(russian->description().mStatusChannels[16].mName, "L\u0434rm");
    EXPECT_TRUE(russian->description().mRemarks.empty());
}
