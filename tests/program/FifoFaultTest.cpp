#include <algorithm>

#include "Playback.h"
#include "SandboxedTest.h"

namespace {
/** One playing takes 200 ms. */
const ValueCase kCase{1, {steady(3600)}};
constexpr qint64 kCaseNs = 3600 * qint64{55'555};

/** What somebody does to the control FIFO before the program starts, and while it plays. */
struct Abuse
{
    const char* mName;
    const char* mBefore;
    const char* mWhile;      ///< with standard output into the FIFO
    const char* mLastLogged; ///< the log ends with it
};

constexpr char kNothing[] = "INFO Simulator Starting endless simulation loop\n";
constexpr char kOnce[] = "INFO Configuration Execute Config 0 once\n";
constexpr char kDropped[] =
    "ERROR Configuration Command line without its end after 65536 bytes, dropped\n";

const Abuse kAbuses[] = {
    {"TenThousandCommands", "", "yes s0 | head -10000", kOnce},
    {"SingleBytes", "", "for byte in s ' ' 0 ' ' ' '; do printf \"$byte\"; sleep 0.1; done; echo",
     kOnce},
    {"NoLineEnd", "", "printf s; sleep 9", kNothing},
    {"Garbage", "", "head -c 65537 /dev/zero | tr '\\0' x; sleep 9", kDropped},
    {"EndlessGarbage", "", "tr '\\0' x </dev/zero", kDropped},
    {"NulAndInvalidUtf8", "", "printf '\\0\\n\\377\\376\\n s\\0\\n'; sleep 0.7; echo s0", kOnce},
    {"SeveralWriters", "", "for i in 1 2 3 4 5 6 7 8; do yes s0 | head -99 & done; wait", kOnce},
    {"MadeAgainByAnother", "",
     "echo s0; rm /etc/vx/simulator_control; mkfifo /etc/vx/simulator_control", kOnce},
    {"OpenToAll", "mkfifo -m 666 /etc/vx/simulator_control", "echo s0", kOnce},
    {"Directory", "mkdir /etc/vx/simulator_control", ":", kNothing},
    {"LinkToNowhere", "ln -s /etc/vx/nowhere /etc/vx/simulator_control", ":", kNothing},
};

void PrintTo(const Abuse& abuse, std::ostream* stream)
{
    *stream << abuse.mName;
}
} // namespace

class FifoFaultTest : public SandboxedTest, public testing::WithParamInterface<Abuse>
{
};

/** Whatever is done there, the stream keeps its pace, and what can be understood is done. */
TEST_P(FifoFaultTest, StreamKeepsItsPace)
{
    mRunner.writeFile("vx-simulator.conf", "0,1," + kCase.fileName() + "\n");
    mRunner.writeFile(kCase.fileName(), kCase.fileText());
    const CommandResult result =
        sandbox({"--record", "record.bin", "--events", "events.jsonl", "--for", "1.5"},
                after(std::string(GetParam().mBefore) +
                          "\n(until grep -q endless simulator.log; do kill -0 $$ || exit; sleep "
                          "0.05; done\n" +
                          "cd /etc/vx; [ -p simulator_control ] || exit; { " + GetParam().mWhile +
                          "\n} >simulator_control) 2>/dev/null &",
                      kSimulator));
    ASSERT_EQ(result.mExitCode, 0) << result;
    const std::string text = log();
    EXPECT_EQ(text.substr(text.size() -
                          std::min(text.size(), std::string(GetParam().mLastLogged).size())),
              GetParam().mLastLogged);
    EXPECT_EQ(text.find("mode 0666 and user") != std::string::npos,
              std::string(GetParam().mName) == "OpenToAll");

    const std::vector<SampleRecord> records = recordsOf(mRunner.readFile("record.bin"));
    playedCases(records, {kCase});
    std::size_t block = 0;
    qint64 latest = 0;
    for (const Event& it : eventsOf(mRunner.readFile("events.jsonl"))) {
        if (it.mFile == "adc-in") {
            latest = std::max(latest, it.mArrivalNs - stampNs(records.at(block)));
            block += static_cast<std::size_t>(it.mBytes) / sizeof(SampleRecord);
        }
    }
    EXPECT_LT(latest, kCaseNs);
    RecordProperty("latest_ms", std::to_string(latest / 1'000'000));
}

INSTANTIATE_TEST_SUITE_P(, FifoFaultTest, testing::ValuesIn(kAbuses),
                         [](const auto& it) { return std::string(it.param.mName); });
