#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "CommandRunner.h"
#include "SampleRecord.h"
#include "base/Numbers.h"
#include "plot/DrawnBlock.h"
#include "plot/Envelope.h"
#include "plot/Moment.h"
#include "plot/Overview.h"
#include "plot/WaveformWindows.h"

using testing::HasSubstr;

namespace {

/** A voltage of 1 V that falls to 0.4 V at the sample `jump`, and a constant current. */
class Sag : public waveform::SignalSource
{
public:
    Sag(double hertz, double rate, size_t jump) : mHertz(hertz), mRate(rate), mJump(jump)
    {
        mDescription.mNominalHz = 60.0;
        mDescription.mChannels.resize(2);
        mDescription.mChannels[0].mUnit = "kV";
        mDescription.mChannels[1].mUnit = "A";
    }

    const waveform::SignalDescription& description() const override { return mDescription; }
    double progress() const override { return 0.0; }

    bool read(waveform::SignalBlock& block) override
    {
        block.resize(2, mNext < 2000 ? 100 : 0);
        block.mFirst = mNext;
        for (size_t i = 0; i < block.size(); ++i, ++mNext) {
            block.mSeconds[i] = static_cast<double>(mNext) / mRate;
            const double sine = std::sin(2.0 * base::kPi * mHertz * block.mSeconds[i] + 1.0);
            block.mValues[0][i] = sine * (mNext < mJump ? 1.0 : 0.4);
            block.mValues[1][i] = sine;
        }
        return block.size() > 0;
    }

private:
    waveform::SignalDescription mDescription;
    double mHertz;
    double mRate;
    size_t mJump;
    size_t mNext = 0;
};

/** Runs plot with a gnuplot that gives back its script, so that nothing depends on the drawing. */
class PlotTest : public testing::Test
{
protected:
    PlotTest()
    {
        mRunner.writeFile("gnuplot", "#!/bin/sh\nexec /bin/cat\n");
        mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
        mRunner.writeFile("a.csv", repeated(valueLine("0", "50"), 720));
        mRunner.writeFile("b.csv",
                          repeated(valueLine("0", "50"), 719) + "0;0;0;0;50;1;2;3;4;5;6;7;6008\n");
    }

    CommandResult plot(const std::string& arguments, const std::string& programs = ".") const
    {
        return mRunner.run(joined({"env", "PATH=" + programs, VX_CASE, "plot"}, split(arguments)));
    }

    CommandRunner mRunner;
};
} // namespace

/**
 * For any length of the curve few points remain, in order, including the smallest and the largest.
 */
TEST(EnvelopeTest, KeepsTheExtremesWithinItsColumns)
{
    for (const int count : {1, 199, 200, 201, 100'000}) {
        plot::Envelope envelope(1, 100);
        for (int i = 0; i < count; ++i) {
            envelope.add(i, {i == count / 3 ? 9.0 : i == count / 2 ? -9.0 : std::sin(i)});
        }
        const std::vector<plot::Point> points = envelope.curve(0);
        EXPECT_LE(points.size(), 400) << count;
        const auto isExtreme = [](const plot::Point& it) { return std::abs(it.mY) == 9.0; };
        EXPECT_EQ(std::count_if(points.begin(), points.end(), isExtreme), count == 1 ? 1 : 2);
        const auto rises = [](const plot::Point& a, const plot::Point& b) { return a.mX < b.mX; };
        EXPECT_TRUE(std::is_sorted(points.begin(), points.end(), rises)) << count;
    }
}

/** Even if the period is not a whole number of samples, or the frequency not the nominal one. */
TEST(OverviewTest, FindsTheJumpAndFollowsTheFrequency)
{
    for (const auto& [hertz, rate, jump] :
         {std::tuple{60.0, 3600.0, 1010}, {59.0, 3600.0, 1000}, {60.0, 1000.0, 1000}}) {
        Sag sag(hertz, rate, static_cast<size_t>(jump));
        const plot::DrawnChannels channels(sag.description());
        plot::Overview overview(sag.description(), channels, 500);
        waveform::SignalBlock block;
        while (sag.read(block)) {
            overview.add(plot::drawnBlock(block, channels, 0.0));
        }
        overview.finish();
        const std::vector<plot::Change>& changes = overview.changes().changes();
        ASSERT_EQ(changes.size(), 1) << hertz << ' ' << rate;
        EXPECT_NEAR(changes[0].mSeconds, jump / rate, 3.0 / rate) << hertz << ' ' << rate;
        EXPECT_THAT(overview.changes().textOf(changes[0]), HasSubstr(" V"));
        EXPECT_NEAR(overview.rms(0).back().mY, 400 * std::sqrt(0.5), 20);
        for (const plot::Point& point : overview.hertz()) {
            EXPECT_NEAR(point.mY, hertz, 0.1) << point.mX;
        }
    }
}

/** As an import chooses them, or by its --channels. */
TEST(DrawnChannelsTest, AreInTheOrderOfThePhases)
{
    waveform::SignalDescription description;
    for (const char* const name : {"UN", "1UB", "2UA", "1UA", "1UC", "2UB", "2UC"}) {
        waveform::ChannelDescription& channel = description.mChannels.emplace_back();
        channel.mNumber = static_cast<int>(description.mChannels.size());
        channel.mName = name;
        channel.mUnit = "V";
    }
    for (const auto& [sources, indexes] : std::vector<std::pair<Words, std::vector<size_t>>>{
             {{}, {3, 1, 4, 0}}, {{"2UC", "6", "1UC*0.5", "2UA+2UB"}, {6, 5, 4}}}) {
        const plot::DrawnChannels channels(description, sources);
        std::vector<size_t> drawn;
        for (const plot::DrawnChannel& it : channels.groups().front().mChannels) {
            EXPECT_EQ(it.mConductor, drawn.size());
            drawn.push_back(it.mIndex);
        }
        EXPECT_EQ(drawn, indexes);
    }
}

/**
 * Of hundreds of equal changes and one larger one, the larger one is kept, from its first change in
 * any channel; of the equal ones the first.
 */
TEST(ChangeDetectorTest, KeepsTheHighestScores)
{
    plot::ChangeDetector detector{plot::DrawnChannels(Sag(50.0, 1000.0, 0).description())};
    plot::Period last;
    for (int i = 0; i < 1800; ++i) {
        const double level = i % 3 == 0 && i != 600 ? 200.0 : 100.0;
        const double current = i == 600 ? 80.0 : 0.0;
        const double late = i == 600 ? 200.0 : -level;
        const plot::Period period{
            i * 1.0, i + 1.0, {i * 1.0, i + 0.5}, {0.0, 0.5}, {{level, late}, {current, current}}};
        detector.add(last, period, {200.0, current});
        last = period;
    }
    std::vector<plot::Moment> moments;
    for (const plot::Change& change : detector.changes()) {
        moments.push_back({change.mSeconds, change.mScore, ""});
    }
    EXPECT_EQ(plot::chooseMoments(moments, 1, 1.0)[0].mSeconds, 600.0);
    const std::vector<plot::Moment> three = plot::chooseMoments(moments, 3, 5.0);
    ASSERT_EQ(three.size(), 3);
    EXPECT_EQ(three[0].mSeconds, 3.0);
    EXPECT_EQ(three[1].mSeconds, 9.0);
    const size_t hertz = 2; // behind both curves
    EXPECT_EQ(detector.textOf({12.3456, 1.0, 0, hertz, 1234.4, 99.44}),
              "12.35 s: 1234 Hz → 99.4 Hz");
}

/** A window that is opened late has the samples before, except for those that were released. */
TEST(WaveformWindowsTest, KeepsTimesThatAreRequestedLater)
{
    plot::WaveformWindows windows(1);
    const auto add = [&](double begin) {
        waveform::SignalBlock block;
        block.resize(1, 10);
        for (size_t i = 0; i < 10; ++i) {
            block.mSeconds[i] = begin + static_cast<double>(i);
            block.mValues[0][i] = block.mSeconds[i] * 2.0;
        }
        windows.add(std::make_shared<const waveform::SignalBlock>(block));
    };
    const plot::Span late{5.0, 24.0};
    const plot::Span forgotten{0.0, 12.0};
    add(0.0);
    add(10.0);
    windows.open({late, late}, 100);
    add(20.0);
    windows.forgetBefore(10.5);
    windows.open({late, forgotten}, 100);
    const std::vector<plot::Point> points = windows.curve(late, 0, 100);
    ASSERT_EQ(points.size(), 20);
    EXPECT_EQ(points.front().mX, 5.0);
    EXPECT_EQ(points.back().mY, 48.0);
    EXPECT_EQ(windows.curve(late, 0, 5).size(), 10) << "two a column";
    EXPECT_EQ(windows.curve(forgotten, 0, 100).front().mX, 10.0);
}

TEST_F(PlotTest, ReportsDifferencesAndOddities)
{
    plot("a.csv b.csv -o both.PNG");
    EXPECT_THAT(mRunner.readFile("both.PNG"),
                AllOf(HasSubstr("set terminal pngcairo"),
                      HasSubstr("largest difference 0 V; largest difference 6 A at 0.039")));
    EXPECT_THAT(plot("a.csv b.csv").mOutput, HasSubstr("title 'U_L1 (2)'"));
    mRunner.writeFile("m.cfg",
                      "s,d,1999\n1,1A,0D\n1,UA,A,,V,1,0,0,-9,9,1,1,P\n50\n1\n1000,3\n"
                      "01/01/2020,00:00:00\n01/01/2020,00:00:00\nASCII\n1\n");
    mRunner.writeFile("m.dat", "1,0,5\n2,1000,99999\n3,2000,5\n");
    EXPECT_THAT(plot("m.cfg").mErrors, HasSubstr("remark: m.cfg: channel 1: missing values"));
}

TEST_F(PlotTest, ChoosesUnits)
{
    const std::string line = "0;0;0;0;50;90000000;-90000000;0;0;0;0;0;0\n";
    mRunner.writeFile("kv.csv", repeated(line, 360 * 60));
    plot("kv.csv -o x.svg");
    EXPECT_THAT(mRunner.readFile("x.svg"), HasSubstr("set label 'kV rms'"));
    EXPECT_THAT(plot("kv.csv --from 1.0001 --to 1.0004").mOutput,
                AllOf(HasSubstr("set xrange [1.0001:1.0004]"), HasSubstr("[-103.5:103.5]")));
}

/** A recording of the driver: what was played, the command, and the waveforms at the switch. */
TEST_F(PlotTest, ShowsWhatWasPlayedAndWhereItChanged)
{
    mRunner.writeFile("vx.conf", "0,1,a.csv\n1,1,b.csv\n");
    std::vector<SampleRecord> records(2160);
    for (size_t i = 0; i < records.size(); ++i) {
        const auto nanoseconds = static_cast<quint32>(i * 55'555);
        records[i] = {5, nanoseconds, 0, 0, {1, 2, 3, 4, 5, 6, 7, i / 720 == 1 ? 6008 : 8}};
    }
    for (size_t i = 720; i < 1439; ++i) {
        records[i].mValues[7] = 8; // b.csv differs in its last sample
    }
    mRunner.writeFile("r.bin", {reinterpret_cast<const char*>(records.data()),
                                records.size() * sizeof(SampleRecord)});
    mRunner.writeFile("e.jsonl",
                      R"({"t":5010000000,"file":"adc-in","bytes":34560,"accepted":true})"
                      "\n"
                      R"({"t":5020000000,"file":"simulator_control","bytes":3,"accepted":true,)"
                      R"("text":"s1"})"
                      "\n"
                      R"({"t":5030000000,"file":"simulator_control","bytes":2,"accepted":true,)"
                      R"("text":"x"})"
                      "\n"
                      R"({"t":5090000000,"file":"adc-in","bytes":69120,"accepted":true})"
                      "\n");
    EXPECT_THAT(plot("r.bin --events e.jsonl --config vx.conf").mOutput,
                HasSubstr("     0.000 s  playing 0: a\n"
                          "     0.040 s  playing 1: b\n"
                          "     0.080 s  playing 0: a\n"
                          "     0.020 s  command “s1”: play configuration 1 once\n"
                          "     0.030 s  command “x”: rejected\n"));
    plot("r.bin --events e.jsonl --config vx.conf -o x.svg");
    EXPECT_THAT(mRunner.readFile("x.svg"), HasSubstr("'playing'"));
    EXPECT_THAT(plot("r.bin --events e.jsonl").mOutput, HasSubstr("s  command “s1”\n"));
    plot("r.bin --events e.jsonl -o x.svg");
    EXPECT_THAT(mRunner.readFile("x.svg"), Not(HasSubstr("'playing'")));
    EXPECT_THAT(plot("r.bin --at 0.05").mOutput,
                HasSubstr("set title 'around 0.05 s: voltage, V'"));
    EXPECT_THAT(plot("r.bin --from 0.02 --to 0.03").mOutput, HasSubstr("set xrange [0.02:0.03]"));
    EXPECT_THAT(plot("r.bin --from 0 --to 0.03").mOutput, HasSubstr("set xrange [0:0.03]"));
}

/** For any imported part, and any number of periods before it. */
TEST_F(PlotTest, DrawsAnImportOverItsRecording)
{
    const auto vxCase = [this](const std::string& arguments) {
        ASSERT_EQ(mRunner.run(joined({VX_CASE}, split(arguments))).mExitCode, 0) << arguments;
    };
    vxCase("generate --duration 0.3 --disturbance 0.1:0.1:0.4:0:0 -o w.csv");
    EXPECT_THAT(plot("w.csv").mOutput, Not(HasSubstr("92 → 230 V"))) << "one moment";
    vxCase("export w.csv -o w.cfg");
    for (const std::string part : {"--before 3", "--from 0.0599994 --before 2"}) {
        vxCase("import w.cfg --frequency 50 -o i.csv " + part);
        plot("w.cfg i.csv -o x.svg");
        const double begin = part.size() < 12 ? -0.0599994 : 0.0;
        EXPECT_THAT(mRunner.readFile("x.svg"),
                    AllOf(HasSubstr("largest difference 0 V; largest difference 0 A"),
                          HasSubstr(fmt::format("set xrange [{:.12g}:", begin))))
            << part;
        vxCase("export i.csv -o ix.cfg");
        plot("i.csv ix.cfg -o x.svg");
        EXPECT_THAT(mRunner.readFile("x.svg"), HasSubstr("largest difference 0 V")) << part;
    }
}

TEST_F(PlotTest, ReportsErrorsAndLeavesNoPicture)
{
    mRunner.writeFile("line.csv", valueLine("0", "50"));
    mRunner.writeFile("fc-list", "#!/bin/sh\n");
    mRunner.run({"chmod", "+x", mRunner.path("fc-list")});
    for (const auto& [arguments, message] : std::vector<std::pair<std::string, std::string>>{
             {"a.csv -o x.pdf", "'x.pdf': expected a name that ends in .svg or .png"},
             {"a.csv -o x.svg --from 1", "nothing to show from 1 s to 0.03"},
             {"a.csv -o x.svg --at 1", "nothing to show at 1 s: the end is at 0.03"},
             {"a.csv --at -1", "--at: '-1': expected seconds, 0 or more"},
             {"a.csv --to nan", "--to: 'nan': expected seconds, 0 or more"},
             {"line.csv", "line.csv: expected samples at two or more instants"},
             {"a.csv -o x.png", "install the package fonts-dejavu-core"},
             {"a.csv -o x.svg --events e", "a.csv: expected a recording of the driver"}}) {
        const CommandResult result = plot(arguments);
        EXPECT_THAT(result.mErrors, HasSubstr(message));
        EXPECT_NE(result.mExitCode, 0) << arguments;
    }
    EXPECT_THAT(plot("a.csv -o x.svg", "/nowhere").mErrors, HasSubstr("the package gnuplot-nox"));
    mRunner.writeFile("gnuplot", "#!/bin/sh\nprintf '  \\f  \\n a  \\n  \\f \\n b \\n  '\n");
    EXPECT_THAT(plot("a.csv").mOutput, testing::EndsWith("s\n a\n b\n"));
    mRunner.writeFile("gnuplot", "#!/bin/sh\necho half; echo broken >&2; exit 1\n");
    EXPECT_THAT(plot("a.csv -o x.svg").mErrors, HasSubstr("gnuplot: broken"));
    EXPECT_EQ(mRunner.readFile("x.svg"), "");
}
