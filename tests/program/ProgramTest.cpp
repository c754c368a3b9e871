#include <gmock/gmock.h>

#include "PlayTest.h"

using testing::EndsWith;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {
constexpr char kOneCase[] = "0,1,case-4.csv\n";
constexpr char kOnceOne[] = "INFO Configuration Execute Config 1 once\n";
} // namespace

class ProgramTest : public PlayTest
{
};

TEST_F(ProgramTest, PlaysInOrderAndFollowsTheOperator)
{
    play(
        "# number, repetitions, file\n0 , 2 ,case-1.csv # the first\n\n0,0,case-2.csv\n"
        "0,1,case-22.csv\n0,3,case-3.csv\n"
        "1,1,case-11.csv\n1,2,case-12.csv\n2,1,case-21.csv\n",
        {"--for", "2", "--send", "0.1:abc", "--send", "0.9:s1", "--send", "1.4:2"});
    expectInStep();
    EXPECT_THAT(mPlayed, MatchesRegex("(case-1.csv ){2}.*case-11.csv (case-12.csv ){2}case-1.csv "
                                      ".*case-21.csv "));
    EXPECT_EQ(mLog, std::string("ERROR Configuration Could not convert abc\nto unsigned\n") +
                        kOnceOne + "INFO Configuration Execute Config 2 continuous\n");
}

/**
 * With nothing to play at first, the program does not spin or flood the log, and follows the
 * operator, even if it was started without its three standard descriptors.
 */
TEST_F(ProgramTest, IdleProgramWaitsForTheOperator)
{
    play("0,0,case-4.csv\n1,1,case-11.csv\n", {"--for", "0.3"},
         after("mkfifo /etc/vx/simulator_control; (exec >/etc/vx/simulator_control; sleep 2; echo "
               "s1) & exec <&- >&- 2>&-",
               kSimulator));
    EXPECT_EQ(mPlayed, "case-11.csv ");
    EXPECT_THAT(mLog, StartsWith("INFO Simulator Config 0 has nothing to play: no entry with "
                                 "samples and repetitions\n" +
                                 std::string(kOnceOne)));
}

/** The stream keeps its pace, and valid commands are followed. */
TEST_F(ProgramTest, FifoAbuseDoesNotStopTheStream)
{
    for (const auto& [writer, lastLine] :
         {std::pair("yes s0 | head -10000", "INFO Configuration Execute Config 0 once\n"),
          std::pair("tr '\\0' x </dev/zero",
                    "ERROR Configuration Command line without its end after 65536 bytes, "
                    "dropped\n")}) {
        play(kOneCase, {"--for", "1.5"},
             after("mkfifo /etc/vx/simulator_control; (exec 2>&- >/etc/vx/simulator_control; " +
                       std::string(writer) + ") &",
                   kSimulator));
        EXPECT_THAT(mLog, EndsWith(lastLine));
        expectInStep();
    }
}

/** Every kind of fault on every file that is written. */
TEST_F(ProgramTest, PlaysOnAfterEveryFault)
{
    Words options = {"--for", "8"};
    for (const char* fault :
         {"adc-in:30:EIO", "adc-in:40:vanish", "adc-in:50:EINTR:101", "adc-in:160:short=0",
          "adc-in:170:short=4800", "adc-in:180:stall=0.7", "f2h:2:EIO", "f2h:3:vanish",
          "f2h:4:EINTR", "f2h:6:short=0", "f2h:8:short=8", "f2h:10:stall=0.3", "r2h:3:EIO",
          "r2h:4:vanish", "r2h:5:EINTR", "r2h:7:short=0", "r2h:9:short=8", "r2h:11:stall=0.3"}) {
        options = joined(options, {"--fault", fault});
    }
    play(kOneCase, options);
    EXPECT_EQ(mMissing, 4U * 360U) << "of those blocks that were not taken at all";
    EXPECT_EQ(mLog, repeated("ERROR PrussSimulation error writing file /dev/adc-in\n"
                             "ERROR Simulator Error while writing data to sample buffer.\n",
                             4));
    expectInStep();
    EXPECT_EQ(summary(mResult)["faulted writes"], std::to_string(106 + 6 + 6)) << mResult;
    // The rest of a record after a short write: an attribute refuses a write at an offset.
    EXPECT_EQ(summary(mResult)["refused writes"], "2") << mResult;
}

TEST_F(ProgramTest, SurvivesAPermanentFault)
{
    play(kOneCase, {"--for", "3", "--fault", "adc-in:0.5s:EIO:on", "--fault", "f2h:0.5s:EIO:on",
                    "--fault", "r2h:0.5s:EIO:on"});
    EXPECT_EQ(mMissing, 0U) << "none can be seen to be lost: no block follows them";
    const size_t lines = split(mLog, '\n').size();
    EXPECT_GE(lines, 2U);
    // Eight attempts with growing waits, then one a second.
    EXPECT_LE(static_cast<double>(lines), 2 * (9 + mResult.mSeconds)) << "no flood" << mLog;
}

/** During a write that stalls for long, and during a sleep; no block is cut. */
TEST_F(ProgramTest, SignalsEndItAtOnce)
{
    play(kOneCase, {"--for", "1", "--fault", "adc-in:30:stall=100"});
    EXPECT_LT(mResult.mSeconds, 60);
    EXPECT_EQ(mRecords.size() % 360, 0U);
    EXPECT_EQ(sandbox({}, after("(sleep 1; kill -INT $$) &", kSimulator)).mExitCode, 130);
}
