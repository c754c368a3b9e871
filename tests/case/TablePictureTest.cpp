#include "assess/TablePicture.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "CommandRunner.h"
#include "assess/CurveShapes.h"
#include "base/CaseError.h"
#include "measure/UtcText.h"

using testing::HasSubstr;

namespace {
constexpr qint64 kTick = 200'000'000; // ns: a window of ten periods

qint64 beginNs()
{
    return *measure::parseUtc("2026-01-01T00:00:00Z");
}

/** Rms with a gap in UA, harmonics of three windows, phasors of two frames, a dip. */
assess::ValueTable makeTable()
{
    assess::ValueTable table;
    for (const int window : {1, 2, 3, 4, 8, 9, 10}) {
        table.series({"rms", "UA"}).add({beginNs() + window * kTick, 230.0 + window});
        table.series({"rms", "IA"}).add({beginNs() + window * kTick, 5.0});
    }
    for (const int window : {1, 2, 3}) {
        for (const int order : {2, 10}) {
            for (const char* const channel : {"UA", "UB"}) {
                table.series({"harmonic-" + std::to_string(order), channel})
                    .add({beginNs() + window * kTick, order + window / 10.0});
            }
        }
    }
    for (const int frame : {0, 1}) {
        const qint64 utcNs = beginNs() + frame * kTick / 10;
        table.series({"phasor-magnitude", "UA"}).add({utcNs, 100.0 + frame});
        table.series({"phasor-angle", "UA"}).add({utcNs, 90.0});
        table.series({"phasor-magnitude", "IC"}).add({utcNs, 0.001});
        table.series({"positive-sequence-magnitude", "U"}).add({utcNs, 50.0});
        table.series({"positive-sequence-angle", "U"}).add({utcNs, -30.0});
    }
    table.series({"dip-residual", "UA"}).add({beginNs() + kTick, 160.0});
    return table;
}

std::string messageOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const base::CaseError& error) {
        return error.what();
    }
    return "";
}

class TablePictureTest : public testing::Test
{
protected:
    assess::ValueTable mTable = makeTable();
    assess::TablePicture mPicture{mTable, "t.csv"};
};

/** Runs plot with a gnuplot that gives back its script. */
class TablePlotTest : public testing::Test
{
protected:
    TablePlotTest()
    {
        mRunner.writeFile("gnuplot", "#!/bin/sh\nexec /bin/cat\n");
        mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
        mRunner.writeFile("t.csv",
                          "utc,quantity,channel,value,unit,origin\n"
                          "2026-01-01T00:00:00.2Z,harmonic-5,UA,6,%,measured\n"
                          "2026-01-01T00:00:00.2Z,phasor-magnitude,UA,230,V,measured\n"
                          "2026-01-01T00:00:00.3Z,harmonic-5,UA,7,%,measured\n");
        mRunner.writeFile("wide.csv", "utc,origin,rms UA V\n");
        mRunner.writeFile("signal.csv", "t;V\n0;1\n1;2\n2;1\n");
    }

    CommandResult plot(const std::string& arguments) const
    {
        return mRunner.run(joined({"env", "PATH=.", VX_CASE, "plot"}, split(arguments)));
    }

    CommandRunner mRunner;
};
} // namespace

/**
 * Volts and amperes are separate, over the time since the first value, without a line over a gap.
 */
TEST_F(TablePictureTest, DrawsAQuantityOverTime)
{
    const plot::Picture picture = mPicture.overTime("rms");
    ASSERT_EQ(picture.mColumns.size(), 1U);
    const plot::WaveColumn& column = picture.mColumns[0];
    EXPECT_NEAR(column.mFrom, 0.2, 1e-9);
    EXPECT_NEAR(column.mTo, 2.0, 1e-9);
    ASSERT_EQ(column.mPanels.size(), 2U);
    EXPECT_EQ(column.mPanels[0].mAxis + column.mPanels[1].mAxis, "VA");
    ASSERT_EQ(column.mPanels[0].mCurves.size(), 1U);
    const std::vector<plot::Point>& points = column.mPanels[0].mCurves[0].mPoints;
    ASSERT_EQ(points.size(), 8U);
    EXPECT_EQ(points[3].mY, 234.0);
    EXPECT_TRUE(std::isnan(points[4].mY));
    EXPECT_NEAR(points[5].mX, 1.6, 1e-9);
    EXPECT_EQ(points[5].mY, 238.0);
    const std::vector<plot::Point> alone = assess::splitAtGaps({{0.0, 1.0}, {9.0, 2.0}}, 5.0);
    ASSERT_EQ(alone.size(), 5U);
    EXPECT_EQ(alone[0].mX, 1.0); // a single value is a dash
    EXPECT_EQ(alone[3].mX, 8.0);
    EXPECT_THAT(picture.mCaption, HasSubstr("14 values; 0 s is 2026-01-01T00:00:00.0"));
}

/** Otherwise a voltage and a current would have the same colour. Intervals are in the title. */
TEST_F(TablePictureTest, KeepsVoltagesAndCurrentsApart)
{
    mTable.series({"thd-10min", "UA"}).add({beginNs(), 1.0});
    mTable.series({"thd-10min", "IA"}).add({beginNs(), 2.0});
    const plot::WaveColumn column = mPicture.overTime("thd-10min").mColumns[0];
    ASSERT_EQ(column.mPanels.size(), 2U);
    EXPECT_EQ(column.mPanels[0].mAxis, "%, voltages");
    EXPECT_EQ(column.mPanels[1].mAxis, "%, currents");
    EXPECT_THAT(column.mTitle, HasSubstr("10 minutes"));
}

/** An event has one value, and a line with one point would be invisible. */
TEST_F(TablePictureTest, DrawsEventsAsBarsFromZero)
{
    const plot::WaveColumn column = mPicture.overTime("dip-residual").mColumns[0];
    EXPECT_TRUE(column.mPanels[0].mCurves[0].mHasBars);
    EXPECT_EQ(column.mPanels[0].mLow, 0.0);
    EXPECT_GT(column.mPanels[0].mHigh, 160.0);
    EXPECT_LT(column.mFrom, 0.2);
    EXPECT_GT(column.mTo, 0.2);
}

/** The window contains the moment; its time stamp is its end. */
TEST_F(TablePictureTest, DrawsTheHarmonicsOfTheWindow)
{
    for (const auto& [at, second] : std::vector<std::pair<std::string, double>>{
             {"", 2.1}, {"0", 2.1}, {"0.2", 2.1}, {"0.21", 2.2}, {"2026-01-01T00:00:00.5Z", 2.3}}) {
        const plot::Picture picture = mPicture.harmonics(at);
        ASSERT_EQ(picture.mColumns[0].mPanels.size(), 1U) << at;
        const std::vector<plot::Curve>& curves = picture.mColumns[0].mPanels[0].mCurves;
        ASSERT_EQ(curves.size(), 2U) << at;
        ASSERT_EQ(curves[1].mPoints.size(), 2U) << at;
        EXPECT_EQ(curves[1].mLabel, "UB");
        EXPECT_NEAR(curves[0].mPoints[0].mX, 1.9, 1e-9); // beside that of UB
        EXPECT_NEAR(curves[1].mPoints[0].mX, 2.1, 1e-9);
        EXPECT_NEAR(curves[1].mPoints[0].mY, second, 1e-9) << at;
        EXPECT_NEAR(curves[1].mPoints[1].mX, 10.1, 1e-9);
    }
    EXPECT_THAT(messageOf([this] { mPicture.harmonics("0.61"); }),
                HasSubstr("t.csv: no harmonics at 2026-01-01T00:00:00.610000000Z; the table has "
                          "2026-01-01T00:00:00.200000000Z to 2026-01-01T00:00:00.600000000Z"));
}

/** The nearest frame is drawn; a phasor without an angle has no arrow. */
TEST_F(TablePictureTest, DrawsThePhasorsOfTheFrame)
{
    for (const auto& [at, volts] : std::vector<std::pair<std::string, double>>{
             {"", 100.0}, {"0.009", 100.0}, {"0.011", 101.0}, {"0.029", 101.0}}) {
        const plot::Picture picture = mPicture.phasors(at);
        ASSERT_EQ(picture.mColumns.size(), 2U);
        const plot::Panel& voltages = picture.mColumns[0].mPanels[0];
        ASSERT_EQ(voltages.mCurves.size(), 2U); // the circle, and UA
        EXPECT_EQ(voltages.mCurves[1].mLabel, "A");
        EXPECT_NEAR(voltages.mCurves[1].mPoints[1].mX, 0.0, 1e-9);
        EXPECT_NEAR(voltages.mCurves[1].mPoints[1].mY, volts, 1e-9) << at;
        EXPECT_EQ(picture.mColumns[0].mFrom, voltages.mLow);
        EXPECT_EQ(picture.mColumns[1].mPanels[0].mCurves.size(), 1U);
        EXPECT_THAT(
            picture.mCaption,
            testing::AllOf(HasSubstr("V at 90.000°; "), HasSubstr("IC 0.001 A without angle"),
                           HasSubstr("U positive sequence 50 V at -30.000°")));
    }
    EXPECT_NE(messageOf([this] { mPicture.phasors("0.031"); }), "");
}

/** By default, the first row decides what is drawn. */
TEST_F(TablePlotTest, DrawsATableIntoAFile)
{
    ASSERT_EQ(plot("t.csv -o x.svg").mExitCode, 0);
    EXPECT_THAT(mRunner.readFile("x.svg"),
                testing::AllOf(HasSubstr("t.csv: harmonic-5"), HasSubstr("using 1:2 with lines")));
    ASSERT_EQ(plot("t.csv --quantity harmonics --at 0.05 -o x.svg").mExitCode, 0);
    EXPECT_THAT(mRunner.readFile("x.svg"),
                testing::AllOf(HasSubstr("\n5 7\n"), HasSubstr("using 1:2 with impulses"),
                               HasSubstr("order of the harmonic")));
}

TEST_F(TablePlotTest, ReportsErrors)
{
    for (const auto& [arguments, status, message] :
         std::vector<std::tuple<std::string, int, std::string>>{
             {"t.csv --quantity rmss", 2, "the nearest is rms"},
             {"t.csv --quantity pst", 1,
              "t.csv: no values of pst; it has harmonic, phasor-magnitude"},
             {"t.csv --quantity harmonics --at 9 -o x.svg", 1, "t.csv: no harmonics at 2026-01"},
             {"t.csv --quantity harmonics --at now", 2, "for a table also UTC"},
             {"t.csv --at 1", 2,
              "--at: for a table, expected --quantity harmonics or phasors, too"},
             {"t.csv --from 1", 2, "--from: does not apply to a table of measure"},
             {"t.csv --events e", 2, "--events: does not apply to a table"},
             {"t.csv signal.csv", 2, "a table of measure must be the only input"},
             {"t.csv --quantity phasors", 2, "expected -o FILE"},
             {"wide.csv", 1, "without --wide and --json"},
             {"signal.csv --quantity rms", 2, "'signal.csv' is not a table of measure"},
             {"signal.csv --at 2026-01-01T00:00:00Z", 2, "expected seconds, 0 or more"}}) {
        const CommandResult result = plot(arguments);
        EXPECT_EQ(result.mExitCode, status) << arguments;
        EXPECT_THAT(result.mErrors, HasSubstr(message)) << arguments;
        EXPECT_EQ(mRunner.readFile("x.svg"), "") << arguments;
    }
}
