#include "SandboxedTest.h"

/** Faults that are asked for. */
class FaultTest : public SandboxedTest
{
};

TEST_F(FaultTest, WrongDescriptionsAreRejected)
{
    for (const char* text :
         {"", "adc-in", "adc-in:1", "nowhere:1:EIO", "adc-in:0:EIO", "f2h:-1:EIO", "f2h:1:EFOO",
          "f2h:1:short=", "adc-in:1:short=47", "f2h:1:stall=x", "f2h:1:EIO:0", "f2h:1:EIO:1:1",
          "f2h:s:EIO", "f2h::EIO"}) {
        const CommandResult result = sandbox({"--fault", text}, {"true"});
        EXPECT_EQ(result.mExitCode, 125) << text << result;
        EXPECT_NE(result.mErrors.find("--fault takes "), std::string::npos) << text << result;
    }
}

TEST_F(FaultTest, FileThatHasVanishedCannotBeFound)
{
    const CommandResult result =
        sandbox({"--fault", "adc-in:2:vanish", "--fault", "r2h:9:EIO"},
                {"sh", "-c",
                 "try() { head -c 48 /dev/zero >/dev/adc-in && test -e /dev/adc-in; "
                 "echo $?; }; exec 3>/dev/adc-in; try; head -c 48 /dev/zero >&3; try"});
    EXPECT_EQ(programOutput(result), "1\n0\n") << result;
    EXPECT_NE(result.mErrors.find("before a write met the fault r2h:9:EIO"), std::string::npos);
    EXPECT_EQ(summary(result)["faulted writes"], "1");
}
