#include <gmock/gmock.h>

#include "CommandRunner.h"

namespace {
/** The helpers of the package bash-completion, reduced to what the completions use. */
constexpr char kHelpers[] = R"(
_init_completion() {
    words=("${COMP_WORDS[@]}") cword=$((${#COMP_WORDS[@]} - 1))
    cur=${words[cword]} prev=${words[cword - 1]}
    [[ $* != -s || $cur != --*=* ]] || { prev=${cur%%=*} cur=${cur#*=}; }
}
_filedir() { COMPREPLY=("file$*"); }
_command_offset() { COMPREPLY=("command from word $1"); }
compopt() { :; }
file=$1
. "$file"
shift
COMP_WORDS=("$@")
name=${file##*/}
"_${name//-/_}"
printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort
)";
} // namespace

/** The completions of the last word of a command line, sorted. */
class CompletionTest : public testing::Test
{
protected:
    std::string offered(const Words& line) const
    {
        const std::string name = line[0].substr(line[0].rfind('/') + 1);
        const std::string file = VX_COMPLETIONS "/" + name.substr(0, name.find("-emulated"));
        const std::string directory = std::string(VX_CASE).substr(0, sizeof(VX_CASE) - 9);
        const CommandResult result = mRunner.run(joined(
            {"env", "PATH=" + directory + ":/usr/bin:/bin", "bash", "-c", kHelpers, "bash", file},
            line));
        EXPECT_EQ(result.mErrors, "") << result;
        return result.mOutput.substr(0, result.mOutput.size() - 1);
    }

    CommandRunner mRunner;
};

/** Names that several configurations play, or that look like numbers, are not offered. */
TEST_F(CompletionTest, OffersWordsOfVxControl)
{
    mRunner.writeFile("c.conf",
                      "0,1,idle.csv\n1,1,a/sag.csv\n2,1,sag.csv\n2,2,long name.csv\n"
                      "2,1,long name.csv\n3,1,7.csv\n");
    const std::pair<Words, const char*> rows[] = {
        {{""}, "list\nonce\nplay"},
        {{"pl"}, "play"},
        {{"--f"}, "--fifo"},
        {{"--log", ""}, "file"},
        {{"--config=c"}, "file"},
        {{"--wait", "5", "--config", "c.conf", "once", ""}, "0\n1\n2\n3\nidle\nlong\\ name"},
        {{"--config=c.conf", "play", "l"}, "long\\ name"},
        {{"--config", "c.conf", "play", "s"}, ""},
        {{"--config", "c.conf", "play", "idle", ""}, ""},
        {{"--config", "no.conf", "play", ""}, ""},
        {{"list", ""}, ""},
    };
    for (const auto& [words, expected] : rows) {
        EXPECT_EQ(offered(joined({VX_CONTROL}, words)), expected) << testing::PrintToString(words);
    }
}

TEST_F(CompletionTest, OffersWordsOfTheOtherPrograms)
{
    const std::pair<Words, const char*> rows[] = {
        {{"vx-case", "ex"}, "explain\nexport"},
        {{"vx-case", "plot", "--e"}, "--encoding\n--events"},
        {{"vx-case", "generate", "--signal", "steady"}, "steady-50hz\nsteady-60hz"},
        {{"vx-case", "generate", "--tr"}, "--truth"},
        {{"vx-case", "import", "--side", ""}, "primary\nsecondary"},
        {{"vx-case", "import", "--scale", ""}, ""},
        {{"vx-case", "import", "fa"}, "file"},
        {{"vx-case", "catalogue", ""}, "file-d"},
        {{"vx-case", "judge", "--limits", "pq"}, "file\npq-a\npq-s"},
        {{"vx-case", "judge", "--json", ""}, "file"},
        {{"vx-case", "check", "--directory", ""}, "file-d"},
        {{"vx-campaign", "r"}, "report\nrun"},
        {{"vx-campaign", "check", "n"}, "filetoml"},
        {{"vx-campaign", "check", "--"}, "--group\n--help\n--only"},
        {{"vx-campaign", "report", "n"}, "file-d"},
        {{"vx-sandbox", "--fault", "ad"}, "adc-in:"},
        {{"vx-sandbox", "--fo"}, "--for"},
        {{"vx-sandbox", "--record", ""}, "file"},
        {{"vx-sandbox", "--for", "3", "vx-simulator", ""}, "command from word 3"},
        {{"vx-sandbox", "--", "vx-simulator", "--"}, "command from word 2"},
        {{"vx-simulator", "--t"}, "--track"},
        {{"vx-simulator", "--track", ""}, "filexml"},
    };
    for (const auto& [words, expected] : rows) {
        EXPECT_EQ(offered(words), expected) << testing::PrintToString(words);
    }
}
