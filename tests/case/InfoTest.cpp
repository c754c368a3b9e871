#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "CommandRunner.h"
#include "Files.h"
#include "ReadSignal.h"
#include "SeededRandom.h"
#include "input/OpenInput.h"
#include "waveform/Measures.h"

using testing::HasSubstr;

/** Separator, decimal sign and units are detected. */
TEST(InputTest, ReadsTextFilesWithAHeading)
{
    struct Row
    {
        const char* mText;
        std::string mUnit;
        double mLastSeconds;
        double mLastValue;
    };
    const TestFiles files;
    for (const Row& row : {
             Row{"Zeit [ms];U1 [kV];x\n0,5;1,5;0\n\n1,5;-2,5;0\n", "kV", 0.001, -2.5},
             Row{"t,a (V)\r\n1e-3,1\r\n2e-3,1e1\r\n", "V", 0.001, 10},
             Row{"time\tU/V\n0\t1,25\n1000\t\n", "V", 1000, 1.25},
             Row{"Model,X 1\nInterval,0.5\n\n\"x "
                 "axis\",\"1\"\n(ms),(mV)\n\"0\",\"1\"\n\"2\",\"-3\"",
                 "mV", 0.002, -3},
             Row{"time_ms,a\n0,1\n2,-3\n", "", 0.002, -3},
             Row{"Time MS,a\n0,1\n2,-3\n", "", 0.002, -3},
             Row{"  t/\xB5s   u \n 1  7\n 3  8", "", 2e-6, 8},
         }) {
        const auto source = input::openInput(files.make("scope", row.mText).toStdString(), {});
        const waveform::SignalBlock all = readAll(*source);
        ASSERT_EQ(all.size(), 2) << row.mText;
        EXPECT_EQ(source->description().mChannels[0].mUnit, row.mUnit) << row.mText;
        EXPECT_NEAR(all.mSeconds[1], row.mLastSeconds, 1e-12) << row.mText;
        EXPECT_EQ(all.mValues[0][1], row.mLastValue) << row.mText;
    }
    const auto late = input::openInput(
        files.make("scope", "t;u\n" + repeated("0;1\n", 60) + "1;x\n").toStdString(), {});
    EXPECT_THAT(late->description().mRemarks,
                testing::ElementsAre("the time column \"t\" has no unit: s is assumed"));
    EXPECT_THAT(errorOf([&] { readAll(*late); }),
                HasSubstr("scope:62: expected a number in field 2, found \"x\""));
}

/** Any separator, decimal sign, line end and number of decimals; the numbers are the same. */
TEST(InputTest, ReadsTextFilesOfAnyForm)
{
    std::mt19937 random = seededRandom();
    const TestFiles files;
    for (int round = 0; round < 200; ++round) {
        const char separator = ";\t,"[random() % 3];
        const char decimalSign = separator != ',' && random() % 2 == 0 ? ',' : '.';
        const std::string lineEnd = random() % 2 == 0 ? "\r\n" : "\n";
        const auto decimals = static_cast<int>(1 + random() % 6);
        std::string text = "Time (ms)" + std::string(1, separator) + "U1 (kV)" + lineEnd;
        std::vector<double> written;
        for (int line = 0; line < 20; ++line) {
            // Four digits before the sign show that it does not separate thousands.
            std::string number = fmt::format(
                "{:.{}f}", std::uniform_real_distribution<double>(-4e3, 4e3)(random), decimals);
            written.push_back(std::stod(number));
            std::replace(number.begin(), number.end(), '.', decimalSign);
            text += fmt::format("{}{}5{}{}{}", line, decimalSign, separator, number, lineEnd);
            text += random() % 9 == 0 ? lineEnd : "";
        }
        const auto source = input::openInput(files.make("scope", text).toStdString(), {});
        const waveform::SignalBlock all = readAll(*source);
        ASSERT_EQ(all.size(), written.size()) << text;
        EXPECT_EQ(all.mValues[0], written) << text;
        EXPECT_NEAR(all.mSeconds.back(), 0.019, 1e-12) << text;
    }
}

TEST(InputTest, MissingValuesOfTextFilesAreReported)
{
    const TestFiles files;
    const auto source = input::openInput(
        files.make("scope", "t (ms);a;b;c\n0;1;;3\n1;;2;3\n2;;2;3\n").toStdString(), {});
    EXPECT_THAT(readAll(*source).mValues[0], testing::ElementsAre(1, 1, 1));
    EXPECT_THAT(
        source->description().mRemarks,
        testing::UnorderedElementsAre(
            "channel 1: missing values (2, the first at 0.001000 s): held at the value before",
            "channel 2: missing values (1, the first at 0.000000 s): 0 at the beginning, then held "
            "at the value before"));
}

/** "1,234" is refused if nothing shows that it is not 1234. */
TEST(InputTest, GroupedDigitsAreRefused)
{
    const TestFiles files;
    const std::tuple<const char*, const char*> rows[] = {
        {"0;999\n1;-1,234\n2;1,000\n", ":3: \"-1,234\" in field 2: the ',' seems to"},
        {"0;999\n1;1.234\n", ":3: \"1.234\" in field 2: the '.' seems to"},
        {"998;5\n999;6\n1,000;7\n", ":4: \"1,000\" in field 1: "},
        {"0;999\n1;1.234\n2;0.5\n", ""},
        {"0;999\n1;1.234\n2;0.123\n", ""},
        {"0;999\n1;1.234\n2;-1.25\n", ""},
        {"0;999\n1;1.234\n2;1000\n", ""},
        {"0.000;999\n0.001;1.234\n", ""},
        {"0;325.100\n1;-12.345\n", ""},
    };
    for (const auto& [text, message] : rows) {
        const auto source = input::openInput(
            files.make("scope", std::string("t (ms);u\n") + text).toStdString(), {});
        if (*message == '\0') {
            EXPECT_NO_THROW(readAll(*source)) << text;
        } else {
            EXPECT_THAT(errorOf([&] { readAll(*source); }), HasSubstr(message)) << text;
        }
    }
}

/**
 * The time is the column with such a heading, and it rises; a counter or a value is not accepted.
 */
TEST(InputTest, TimeColumnIsFound)
{
    const TestFiles files;
    const auto open = [&](const char* text) {
        return input::openInput(files.make("scope", text).toStdString(), {});
    };
    const std::tuple<const char*, double, const char*> rows[] = {
        {"No;Time (s);UA (V)\n1;0;5\n2;0.5;3\n", 0.5, "No UA "},
        {"No;UA;Sample time_ms\n1;0;5\n2;0.5;7\n", 0.002, "No UA "},
        {"n,time,UA\n,ms,V\n1,0,5\n2,3,4\n", 0.003, "n UA "},
        {"R;S;T;t\n1;1;5;0\n2;2;6;0.25\n", 0.25, "R S T "},
        {"x;UA [V]\n1;0\n2;5\n", 1, "UA "},
        {"x_ms;UR/US\n0;0\n4;5\n", 0.004, "UR "},
    };
    for (const auto& [text, lastSeconds, names] : rows) {
        const auto source = open(text);
        EXPECT_NEAR(readAll(*source).mSeconds.back(), lastSeconds, 1e-12) << text;
        std::string found;
        for (const auto& channel : source->description().mChannels) {
            found += channel.mName + " ";
        }
        EXPECT_EQ(found, names) << text;
    }
    const char* const kNone = "none of its columns is a time";
    const std::pair<const char*, const char*> errors[] = {
        {"UR/US;x_ms\n1;0\n0;5\n", kNone},
        {"No;n\n2;0\n1;5\n", kNone},
        {"UA (V);UB (V)\n1;0\n2;5\n", kNone},
        {"No;t (V)\n1;0\n2;5\n", "\"t\" has the unit \"V\""},
        {"Time (s);No\n1;0\n0.5;1\n0;2\n", "\"Time\" does not rise"},
    };
    for (const auto& [text, message] : errors) {
        EXPECT_THAT(errorOf([&, bad = text] { open(bad); }), HasSubstr(message)) << text;
    }
    const auto falling = input::openInput(
        files.make("scope", "t;u\n" + repeated("0;1\n", 60) + repeated("2;1\n1;1\n", 9))
            .toStdString(),
        {});
    EXPECT_THAT(errorOf([&] { readAll(*falling); }),
                HasSubstr("scope: its time column \"t\" falls"));
}

/** The message about a refused file has the reason for each kind. */
TEST(InputTest, KindOfFileIsFoundByItsContent)
{
    const TestFiles files;
    const auto formatOf = [&](const std::string& name, const std::string& bytes) {
        return input::openInput(files.make(name, bytes).toStdString(), {})->description().mFormat;
    };
    EXPECT_EQ(formatOf("a.txt", "# comment\n" + valueLine("1", "50")), "value file");
    const std::string heading = "t (s);a;b" + repeated(";c", 10) + "\n";
    EXPECT_EQ(formatOf("a.txt", heading + "0;1;2" + repeated(";3", 10)),
              "text file, decimal sign '.'");
    const std::string record = std::string(4, '\0') + "\1" + std::string(43, '\0');
    EXPECT_EQ(formatOf("a.csv", std::string(48, '\0') + record), "recording of the driver");
    EXPECT_EQ(
        errorOf([&] { formatOf("a.dat", record + record); }),
        files.path("a.dat") +
            ": cannot tell what it is\n"
            "  not a value file: its first line has 1 instead of 13 fields between \";\"\n"
            "  not a recording of the driver: record 2 has no rising time stamp\n"
            "  not a COMTRADE recording: it may be the data of one, but no configuration (.cfg) "
            "lies beside it\n"
            "  not a text file with a heading: it has no heading line with lines of numbers "
            "after it");
    EXPECT_THAT(errorOf([&] { formatOf("a.csv", std::string(3'000'000, 'x')); }),
                HasSubstr("expected a line end within 1 MiB"));
    EXPECT_THAT(errorOf([] { input::openInput("/dev/zero", {}); }), HasSubstr("a regular file"));
}

/** A fault, harmonics, noise and DC do not affect the frequency. */
TEST(MeasuresTest, RmsPeaksAndFrequency)
{
    for (const auto& [nominal, actual] :
         {std::pair{50.0, 50.02}, {60.0, 59.1}, {0.0, 60.0}, {0.0, 16.7}}) {
        waveform::SignalDescription signal;
        signal.mNominalHz = nominal;
        signal.mChannels.resize(2);
        waveform::Measures measures(signal);
        waveform::SignalBlock block;
        for (size_t first = 0; first < 9600; first += 100) {
            block.resize(2, 100);
            for (size_t i = 0; i < 100; ++i) {
                const double seconds = static_cast<double>(first + i) / 4800;
                const double phase = 2 * M_PI * actual * seconds + (seconds > 1.6 ? 1.0 : 0.0);
                block.mSeconds[i] = seconds;
                block.mValues[0][i] = (first == 0 && i == 7) ? -5.0 : 0.0;
                block.mValues[1][i] = 10 * std::sin(phase) + 2 * std::sin(5 * phase) + 3;
            }
            measures.add(block);
        }
        EXPECT_NEAR(measures.frequency().mHertz, actual, 0.005) << nominal;
        EXPECT_NEAR(measures.channel(1).mRms, std::sqrt(50 + 2 + 9), 0.05);
        EXPECT_NEAR(measures.channel(1).mLargest, 15, 0.05);
        EXPECT_EQ(measures.channel(0).mSmallest, -5);
        EXPECT_EQ(measures.channel(0).mRms, 5 / std::sqrt(9600));
        EXPECT_DOUBLE_EQ(measures.seconds(), 9599.0 / 4800);
    }
}

/** Any frequency near the nominal one, with harmonics, DC and noise. */
TEST(MeasuresTest, AnyFrequencyIsMeasured)
{
    std::mt19937 random = seededRandom();
    const auto number = [&random](double min, double max) {
        return std::uniform_real_distribution<double>(min, max)(random);
    };
    for (int round = 0; round < 40; ++round) {
        waveform::SignalDescription signal;
        signal.mNominalHz = round % 2 == 0 ? 50.0 : 60.0;
        signal.mChannels.resize(1);
        const double hertz = signal.mNominalHz + number(-2.0, 2.0);
        const double constant = number(-3.0, 3.0);
        const auto order = static_cast<double>(2 + random() % 20);
        waveform::Measures measures(signal);
        waveform::SignalBlock block;
        block.resize(1, 9600);
        for (size_t i = 0; i < block.size(); ++i) {
            block.mSeconds[i] = double(i) / 4800.0;
            const double phase = 2 * M_PI * hertz * block.mSeconds[i];
            block.mValues[0][i] =
                10 * std::sin(phase) + 2 * std::sin(order * phase) + constant + number(-0.1, 0.1);
        }
        measures.add(block);
        EXPECT_NEAR(measures.frequency().mHertz, hertz, 0.002) << signal.mNominalHz;
    }
}

/** A transformer that saturates in the fault and recovers slowly: its phase creeps. */
TEST(MeasuresTest, FrequencyIsMeasuredWhereTheSignalIsSteady)
{
    waveform::SignalDescription signal;
    signal.mNominalHz = 50.0;
    signal.mChannels.resize(1);
    waveform::Measures measures(signal);
    waveform::SignalBlock block;
    block.resize(1, 7200);
    for (int i = 0; i < 7200; ++i) {
        const double seconds = i / 4800.0;
        const double phase = 2 * M_PI * 50.0 * seconds;
        const double rest = seconds < 0.3 ? 0.0 : std::exp((0.3 - seconds) / 0.4);
        block.mSeconds[i] = seconds;
        block.mValues[0][i] = (seconds < 0.3 ? 5 : 40 - 20 * rest) * std::sin(phase + 0.6 * rest) +
                              8 * rest * std::sin(2 * phase) + 10 * rest;
    }
    measures.add(block);
    const waveform::FrequencyMeter::Result measured = measures.frequency();
    EXPECT_NEAR(measured.mHertz, 50.0, 1e-6);
    EXPECT_LE(measured.mTo, 0.3);
    EXPECT_GE(measured.mTo - measured.mFrom, 0.2);
}

TEST(MeasuresTest, ChangeOfTheRateDoesNotMislead)
{
    waveform::SignalDescription signal;
    signal.mChannels.resize(1);
    waveform::Measures measures(signal);
    waveform::SignalBlock block;
    block.resize(1, 3000);
    for (int i = 0; i < 3000; ++i) {
        block.mSeconds[i] = i < 600 ? i / 1200.0 : 0.5 + (i - 600.0) / 4800.0;
        block.mValues[0][i] = std::sin(2 * M_PI * 50.13 * block.mSeconds[i]);
    }
    measures.add(block);
    EXPECT_NEAR(measures.frequency().mHertz, 50.13, 1e-4);
}

TEST(InfoTest, DescribesAFile)
{
    const TestFiles files;
    CommandRunner runner;
    const std::string name =
        files.make("case.csv", repeated(valueLine("7", "50"), 3600)).toStdString();
    const CommandResult text = runner.run({VX_CASE, "info", name});
    EXPECT_THAT(text.mOutput, HasSubstr("format    value file\nsamples   3600\n"));
    const auto json = nlohmann::json::parse(runner.run({VX_CASE, "info", "--json", name}).mOutput);
    EXPECT_EQ(json["nominalHz"], 50);
    EXPECT_EQ(json["channels"][7]["rms"], 8);
    EXPECT_EQ(runner.run({VX_CASE, "info", "/no/such"}).mExitCode, 1);
    EXPECT_EQ(runner.run({VX_CASE, "info", "--encoding", "none", name}).mExitCode, 2);
}

/** Eight changes of a status channel in the text, all in JSON; a ratio if there is one. */
TEST(InfoTest, ReportsRatiosAndStates)
{
    const TestFiles files;
    const CommandRunner runner;
    std::string data;
    for (int i = 0; i < 12; ++i) {
        data += fmt::format("{},0,{},7,{}\n", i + 1, i, i % 2);
    }
    files.make("c.dat", data);
    const std::string name = files
                                 .make("c.cfg",
                                       "S,D,1999\n3,2A,1D\n1,UA,A,,V,1,0,0,-9,9,100,1,P\n"
                                       "2,UB,B,,V,1,0,0,-9,9,1,1,P\n1,Trip,,,0\n50\n1\n1000,12\n"
                                       "01/02/2020,03:04:05\n01/02/2020,03:04:05\nASCII\n1\n")
                                 .toStdString();
    EXPECT_THAT(runner.run({VX_CASE, "info", name}).mOutput,
                testing::AllOf(testing::ContainsRegex("1 +UA +A +V +P +100:1 +[0-9]"),
                               testing::ContainsRegex("2 +UB +B +V +P +7 +7"),
                               HasSubstr(", 0 at 0.008000 s and 3 more\n")));
    const auto json = nlohmann::json::parse(runner.run({VX_CASE, "info", "--json", name}).mOutput);
    const auto& changes = json["statusChannels"][0]["changes"];
    ASSERT_EQ(changes.size(), 11U);
    EXPECT_EQ(changes[0]["state"], 1);
    EXPECT_EQ(changes[1]["state"], 0);
}
