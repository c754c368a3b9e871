#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "CommandRunner.h"
#include "MemoryFile.h"
#include "ReadSignal.h"
#include "assess/Limits.h"
#include "assess/TableReader.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {
constexpr qint64 kMillisecond = 1'000'000;

assess::ReadTable readText(const std::string& text, const assess::MeasuredMap& map)
{
    const MemoryFile file(text);
    return assess::readTable(file.path().toStdString(), map);
}

constexpr char kWide[] = "time = 'T'\n[[column]]\nname = 'V'\nquantity = 'rms'\nchannel = 'UA'\n";
} // namespace

/** The same instant, 2026-11-25 20:00:00.25 UTC, in many formats. */
TEST(TimeFormatTest, ReadsWhatDevicesWrite)
{
    constexpr qint64 kNs = 1'795'636'800'250 * kMillisecond;
    struct Case
    {
        const char* mFormat;
        const char* mText;
        std::optional<qint64> mNs;
    };
    const Case cases[] = {
        {"iso", "2026-11-25T20:00:00.25Z", kNs},
        {"iso", " 2026-11-25 20:00:00,250000000 ", kNs},
        {"iso", "2026-11-25T21:00:00.25+01:00", kNs},
        {"iso", "2026-11-25T14:30:00.25-0530", kNs},
        {"iso", "2026-11-25T20:00Z", kNs - 250 * kMillisecond},
        {"iso", "2026-11-25T20:00:00.2500000001", kNs},
        {"iso", "2026-11-31T20:00:00Z", std::nullopt},
        {"iso", "2026-11-25", std::nullopt},
        {"iso", "2026-11-25T20:00:00.Z", std::nullopt},
        {"iso", "2026-11-25T20:00:00 CET", std::nullopt},
        {"iso", "1969-12-31T23:59:59Z", std::nullopt},
        {"iso", "1970-01-01T00:30:00+01:00", std::nullopt},
        {"s", "1795636800.25", kNs},
        {"s", "1795636800", kNs - 250 * kMillisecond},
        {"s", "1795636800.", std::nullopt},
        {"s", "-1", std::nullopt},
        {"ms", "1795636800250", kNs},
        {"us", "1795636800250000", kNs},
        {"ns", "1795636800250000000", kNs},
        {"ns", "99999999999999999999", std::nullopt},
        {"%d.%m.%Y %H:%M:%S.%f", "25.11.2026 20:00:00.25", kNs},
        {"%d.%m.%Y %H:%M:%S.%f", "25.11.2026 20:00:00", std::nullopt},
        {"%b %d %Y %H:%M:%S.%f %z", "Nov 25 2026 22:00:00.25 +02", kNs},
        {"%Y%j%H%M%S%f", "202632920000025", kNs},
        {"%d/%m/%Y", "29/02/2025", std::nullopt},
        {"%d/%m/%Y", "29/02/2024", 1'709'164'800'000 * kMillisecond},
    };
    for (const Case& it : cases) {
        EXPECT_EQ(assess::TimeFormat(it.mFormat).parse(it.mText, '.'), it.mNs)
            << it.mFormat << " " << it.mText;
    }
}

/** Each message has the position in the map, and what was expected. */
TEST(MapTest, ReportsErrorsWithTheirPosition)
{
    struct Case
    {
        std::string mText;
        const char* mMessage; ///< behind the name of the file
    };
    const Case cases[] = {
        {"", "1:1: time: missing; expected the name of a column or its number"},
        {"tme = 'T'\n", "1:1: tme: unknown key; the nearest is time, and all are time, format, o"},
        {"time = 1.5\n", "1:8: time: expected the name of a column in quotes, or its number"},
        {"time = 0\n", "1:8: time: expected a number of at least 1 and at most 10000"},
        {"time = 'T'\n", "1:1: expected [[column]] for each column of a wide table, or [long]"},
        {"time = 'T'\nformat = 'utc'\n",
         "2:10: format: expected iso, s, ms, us, ns or a pattern such as %d.%m.%Y %H:%M:%S.%f"},
        {"time = 'T'\nformat = '%Y-%q'\n",
         "2:10: format: '%q' is unknown; expected %Y %m %d %H %M %S %f %b %j %z or %%"},
        {"time = 'T'\nformat = '%H:%M'\n", "2:10: format: expected a year, %Y, in it"},
        {"time = 'T'\nseparator = ','\ndecimal = ','\n",
         "3:11: decimal: separator and decimal are the same; expected different ones"},
        {"time = 'T'\nseparator = 'tab'\n",
         "2:13: separator: expected one of \",\", \";\", \"|\" or \"\\t\""},
        {"time = 'T'\nmissing = '-'\n",
         "2:11: missing: expected a list of words, such as [\"-\", \"NaN\"]"},
        {"time = 'T'\n[column]\nname = 'V'\n",
         "2:1: column: expected [[column]] before each column"},
        {"time = 'T'\n[[column]]\nname = 'V'\nquantity = 'Rms'\n",
         "4:12: column.quantity: 'Rms' is unknown; the nearest are rms, "},
        {"time = 'T'\n[[column]]\nname = 'V'\nquantity = 'harmonic-51'\n",
         "4:12: column.quantity: 'harmonic-51' is unknown; the nearest are harmonic-"},
        {"time = 'T'\n[[column]]\nname = 'V'\nquantity = 'rms'\nchannel = 'UAA'\n",
         "5:11: column.channel: 'UAA' is unknown; the nearest are UA, "},
        {std::string(kWide) + "unit = 'Hz'\n",
         "6:8: column.unit: 'Hz' is not a unit of rms; expected 'V'"},
        {std::string(kWide) + "[[column]]\nname = 'W'\nquantity = 'rms'\nchannel = 'UA'\n",
         "6:1: column: two columns with rms UA"},
        {"time = 'T'\n[long]\nquantity = 'Q'\n",
         "2:1: long.value: missing; expected the name of a column or its number"},
        {"time = 'T'\n[long]\nquantity = 'Q'\nvalue = 'V'\n[quantities]\nUrms = 'rmss'\n",
         "6:8: quantities.Urms: 'rmss' is unknown; the nearest are rms, "},
    };
    for (const Case& it : cases) {
        EXPECT_THAT(errorIfAny([&it] { assess::parseMeasuredMap(it.mText, "m.toml"); }),
                    StartsWith("m.toml:" + std::string(it.mMessage)))
            << it.mText;
    }
}

/** Tables that a device may write, each with its one value of rms UA. */
TEST(MapTest, TablesAreReadAsTheMapSays)
{
    constexpr qint64 kNs = 1'795'636'800'000 * kMillisecond;
    struct Case
    {
        std::string mMap;
        const char* mTable;
        qint64 mNs;
        double mValue;
    };
    const Case cases[] = {
        {kWide, "T,V\n2026-11-25T20:00:00Z,230.5\n", kNs, 230.5},
        {std::string("offset = -3600\n") + kWide, "V,T\r\n230.5,2026-11-25 21:00:00\r\n", kNs,
         230.5},
        {std::string("separator = ';'\ndecimal = ','\n") + kWide + "unit = 'kV'\n",
         "T;\"V\"\n2026-11-25T20:00:00Z;\"0,2305\"\n", kNs, 230.5},
        {std::string("format = 'ms'\nheading = 3\nseparator = \"\\t\"\n") + kWide + "factor = 2\n",
         "Device 7\n\nT\tV\n1795636800500\t115.25\n", kNs + 500 * kMillisecond, 230.5},
        {std::string("missing = ['---']\n") + kWide,
         "T,V\n2026-11-25T19:00:00Z,---\n2026-11-25T20:00:00Z,230.5\n2026-11-25T21:00:00Z,\n", kNs,
         230.5},
        {"time = 1\n[[column]]\nname = 3\nquantity = 'rms'\nchannel = 'UA'\n",
         "x,x,x\n2026-11-25T20:00:00Z,1,230.5\n", kNs, 230.5},
        {"time = 'T'\nfactor = 0.5\n[long]\nquantity = 'Q'\nchannel = 'C'\nvalue = 'V'\nunit = "
         "'U'\n[quantities]\n'U eff' = 'rms'\n[channels]\nL1 = 'UA'\n",
         "T,Q,C,V,U\n2026-11-25T20:00:00Z,U eff,L1,0.461,kV\n2026-11-25T20:00:00Z,Temp,L1,7,K\n",
         kNs, 230.5},
    };
    for (const Case& it : cases) {
        const auto table = readText(it.mTable, assess::parseMeasuredMap(it.mMap, "m.toml"));
        const assess::Series* const series = table.mValues.find({"rms", "UA"});
        ASSERT_NE(series, nullptr) << it.mMap;
        ASSERT_EQ(series->mSamples.size(), 1U) << it.mMap;
        EXPECT_EQ(series->mSamples[0].mUtcNs, it.mNs) << it.mMap;
        EXPECT_NEAR(series->mSamples[0].mValue, it.mValue, 1e-9) << it.mMap;
    }
}

/** Each message has file, line and field. */
TEST(TableTest, ReportsErrorsWithTheirPosition)
{
    constexpr char kHeading[] = "utc,quantity,channel,value,unit,origin\n";
    struct Case
    {
        const char* mMap; ///< none: the format of measure
        std::string mTable;
        const char* mMessage; ///< a part
    };
    const Case cases[] = {
        {nullptr, "", ":1: expected a heading with the names of the columns"},
        {nullptr, "time,value\n", ":1: no column 'utc'; the nearest is 'time'; see --map"},
        {nullptr, std::string(kHeading) + "2026-11-25T20:00:00Z,rms,UA,1,V\n",
         ":2: 5 fields: expected 6, as in the heading"},
        {nullptr, std::string(kHeading) + "25.11.2026,rms,UA,1,V,measured\n",
         ":2: field 1 ('utc'): \"25.11.2026\": expected a time of the format iso"},
        {nullptr, std::string(kHeading) + "2026-11-25T20:00:00Z,rmss,UA,1,V,measured\n",
         ":2: field 2 ('quantity'): \"rmss\": expected a quantity; the nearest is rms"},
        {nullptr, std::string(kHeading) + "2026-11-25T20:00:00Z,rms,L1,1,V,measured\n",
         ":2: field 3 ('channel'): \"L1\": expected a channel; the nearest is "},
        {nullptr, std::string(kHeading) + "2026-11-25T20:00:00Z,rms,UA,1;5,V,measured\n",
         ":2: field 4 ('value'): \"1;5\": expected a number, or a word for a missing value"},
        {nullptr, std::string(kHeading) + "2026-11-25T20:00:00Z,rms,UA,1,A,measured\n",
         ":2: field 5 ('unit'): \"A\": expected a unit of rms, such as 'V'"},
        {kWide, "T,Vrms\n", "m.toml:3:8: "},
        {kWide, "T,Vrms\n", ":1: no column 'V'; the nearest is 'T'"},
        {kWide, "T,V,V\n", ":1: two columns 'V'; expected a number"},
        {"time = 4\n[[column]]\nname = 1\nquantity = 'rms'\nchannel = 'UA'\n", "T,V\n",
         ":1: column 4: the table has 2 columns"},
    };
    for (const Case& it : cases) {
        const auto map =
            it.mMap == nullptr ? assess::measureMap() : assess::parseMeasuredMap(it.mMap, "m.toml");
        EXPECT_THAT(errorIfAny([&] { readText(it.mTable, map); }), HasSubstr(it.mMessage))
            << it.mTable;
    }
}

/** Each message has the position in the file. */
TEST(LimitFileTest, ReportsErrorsWithTheirPosition)
{
    struct Case
    {
        const char* mRow; ///< below the key tolerance and [[limit]], in line 3
        const char* mMessage;
    };
    const Case cases[] = {
        {"", "2:1: quantity: missing"},
        {"quantity = 'rmss'", "3:12: quantity: 'rmss' is unknown; the nearest are rms, "},
        {"quantity = ['rms', 3]", "3:20: quantity: '' is unknown"},
        {"quantity = 'rms'", "2:1: absolute: missing; a limit has absolute, reading or nominal"},
        {"quantity = 'rms'\nabsolute = 0", "4:12: absolute: expected a number above 0 and at most"},
        {"quantity = 'rms'\nabsolute = '2/f0'",
         "4:12: absolute: expected a number above 0: periods or frames are for times only"},
        {"quantity = 'dip-start'\nabsolute = '2/f1'",
         "4:12: absolute: expected seconds, periods such as \"2/f0\" or frames such as \"7/fr\""},
        {"quantity = 'pst'\nnominal = 1",
         "4:11: nominal: pst has no nominal value; expected absolute or reading"},
        {"quantity = 'rms'\nabsolute = 1\nfrom = '10'",
         "5:8: from: expected a number, or percent of the nominal value, such as \"10 %\""},
        {"quantity = 'rms'\nabsolute = 1\nfrom = '10 %'\nto = 20",
         "6:6: to: expected percent only if from has it, too"},
        {"quantity = 'rms'\nabsolute = 1\nfrom = 30\nto = 20",
         "6:6: to: expected a value above from"},
        {"quantity = 'rms'\nabsolute = 1\nwhile = 'calm'",
         "5:9: while: expected \"steady\", \"ramp\" or \"varying\""},
        {"quantity = 'rms'\nabsolute = 1\nafter = -1", "5:9: after: expected a number of at least"},
        {"quantity = 'rms'\nabsolute = 1\nchannel = 'L1'", "5:11: channel: 'L1' is unknown"},
    };
    for (const Case& it : cases) {
        const std::string text = std::string("tolerance = 0.01\n[[limit]]\n") + it.mRow + "\n";
        EXPECT_THAT(errorIfAny([&text] { assess::parseLimits(text, "l.toml"); }),
                    StartsWith("l.toml:" + std::string(it.mMessage)))
            << it.mRow;
    }
    EXPECT_EQ(errorIfAny([] { assess::parseLimits("[[limit]]\n", "l.toml"); }),
              "l.toml:1:1: tolerance: missing");
    EXPECT_THAT(errorIfAny([] { assess::readLimits("pq-b"); }), HasSubstr("pq-b: no such file"));
}

/** The command as the user calls it. */
class JudgeCommandTest : public testing::Test
{
protected:
    JudgeCommandTest()
    {
        std::string expected = "utc,quantity,channel,value,unit,origin\n";
        std::string device = "Zeit;U1;U2\n";
        for (int i = 1; i <= 5; ++i) {
            for (const char* const channel : {"UA", "UB"}) {
                expected += "2026-11-25T20:00:0" + std::to_string(i) + "Z,rms," + channel +
                            ",230,V,measured\n";
            }
            device += "25.11.2026 21:00:0" + std::to_string(i) + ";0,2301;" +
                      (i == 4   ? "-"
                       : i == 3 ? "0,2299"
                                : "0,23") +
                      "\n";
        }
        mRunner.writeFile("e.csv", expected);
        mRunner.writeFile("e.svg", expected);
        mRunner.writeFile("d.csv", device);
        std::string map =
            "time = 'Zeit'\nformat = '%d.%m.%Y %H:%M:%S'\noffset = -3600\n"
            "separator = ';'\ndecimal = ','\nmissing = ['-']\n";
        for (const char* const channel : {"1", "2"}) {
            map += std::string("[[column]]\nname = 'U") + channel +
                   "'\nquantity = 'rms'\nunit = 'kV'\nchannel = 'U" +
                   (channel == std::string("1") ? "A" : "B") + "'\n";
        }
        mRunner.writeFile("map.toml", map);
    }

    CommandResult judge(const std::string& arguments) const
    {
        return mRunner.run(joined({VX_CASE, "judge"}, split(arguments)));
    }

    CommandRunner mRunner;
};

TEST_F(JudgeCommandTest, VerdictIsInTheFirstLineAndInTheStatus)
{
    struct Case
    {
        const char* mArguments;
        int mStatus;
        const char* mFirst; ///< the beginning of what it says
    };
    const Case cases[] = {
        {"e.csv e.csv --limits pq-a --nominal 230,5,50", 0,
         "verdict: good: 10 values within their limits\n"},
        {"e.csv e.csv --limits pq-a --nominal 230,5,60", 0, "verdict: good: 10 values"},
        {"e.csv e.csv --limits pq-a --nominal 230,5,50 --quantities harmonic-5", 1,
         "verdict: NOT OBSERVED: no value"},
        {"e.svg e.csv --limits pq-a --nominal 230,5,50 --plot e.svg", 2, "vx-case: e.svg: --plot"},
        {"e.csv d.csv --map map.toml --limits pq-s --nominal 230,5,50", 1,
         "verdict: BAD: 1 missing\n"},
        {"e.csv e.csv --limits pmu-p --nominal 230,5,50", 1,
         "verdict: NOT OBSERVED: no value could be compared with a limit; not judged: 2 series"},
        {"e.csv e.csv --limits pq-a --nominal 230,5,50 --quantities pst", 1,
         "verdict: NOT OBSERVED: no value"},
        {"e.csv e.csv --limits pq-a", 2,
         "vx-case: pq-a: the limit of rms UA refers to the nominal value; expected --nominal\n"},
        {"e.csv d.csv --limits pq-a", 2,
         "vx-case: d.csv:1: no column 'utc'; the nearest is 'Zeit;U1;U2'"},
        {"e.csv no.csv --limits pq-a", 2, "vx-case: no.csv: no such file\n"},
        {"e.csv --limits pq-a", 2, "vx-case: EXPECTED and MEASURED are required; see --help\n"},
        {"e.csv e.csv --limits pq-a --quantities rsm", 2,
         "vx-case: --quantities: 'rsm' is unknown"},
        {"e.csv e.csv --limits pq-a --plot p.jpg", 2, "vx-case: --plot: 'p.jpg': expected a name"},
        {"e.csv d.csv --map map.toml --limits pq-a -o map.toml", 2, "vx-case: "},
    };
    for (const Case& it : cases) {
        const CommandResult result = judge(it.mArguments);
        EXPECT_EQ(result.mExitCode, it.mStatus) << it.mArguments << result;
        EXPECT_THAT(it.mStatus == 2 ? result.mErrors : result.mOutput, StartsWith(it.mFirst));
    }
    for (const char* const name : {"pmu-p", "pmu-m", "pq-a", "pq-s"}) {
        EXPECT_THAT(judge(std::string("--list-limits --limits ") + name).mOutput,
                    StartsWith(std::string(name) + ": IEC"));
    }
}

/** All results agree. */
TEST_F(JudgeCommandTest, ResultsAgree)
{
    mRunner.writeFile("gnuplot", "#!/bin/sh\nexec /bin/cat\n");
    mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
    const std::string command =
        "e.csv d.csv --map map.toml --limits l.toml --junit j.xml --json "
        "j.json --plot p.svg -o text.txt";
    mRunner.writeFile("l.toml", "tolerance = 0.1\n[[limit]]\nquantity = 'rms'\nabsolute = 0.05\n");
    const CommandResult result =
        mRunner.run(joined({"env", "PATH=.", VX_CASE, "judge"}, split(command)));
    EXPECT_EQ(result.mExitCode, 1) << result;
    EXPECT_EQ(result.mErrors, "remark: fields of the measured file without a value: 1\n");

    const std::string verdict = "BAD: 6 of 9 values beyond their limits, 1 missing";
    EXPECT_THAT(mRunner.readFile("text.txt"), StartsWith("verdict: " + verdict + "\n"));
    const auto json = nlohmann::json::parse(mRunner.readFile("j.json"));
    EXPECT_EQ(json["verdict"], verdict);
    EXPECT_EQ(json["good"], false);
    EXPECT_EQ(json["series"][0]["beyond"], 5);
    EXPECT_NEAR(json["series"][1]["largest"]["error"], -0.1, 1e-9);
    EXPECT_EQ(json["series"][1]["largest"]["utc"], "2026-11-25T20:00:03.000000000Z");
    EXPECT_EQ(json["worst"].size(), 6U) << "exact values are not among the worst";
    const std::string junit = mRunner.readFile("j.xml");
    EXPECT_THAT(junit, HasSubstr(R"(tests="3" failures="3" errors="0" skipped="0")"));
    EXPECT_THAT(junit, HasSubstr("message=\"" + verdict + '"'));
    const std::string script = mRunner.readFile("p.svg");
    EXPECT_THAT(script, HasSubstr("'rms UA: BEYOND'"));
    EXPECT_THAT(script, HasSubstr("\n0 230.1\n"));
}
