#include "OutputCheck.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Files.h"

namespace fs = std::filesystem;

/** The names are relative to the directory of the test. */
TEST(OutputCheckTest, FindsOneFileBehindTwoNames)
{
    const TestFiles files;
    const fs::path before = fs::current_path();
    fs::current_path(files.path(""));
    writeFile("file", "");
    fs::create_directory("dir");
    fs::create_hard_link("file", "dir/hard");
    fs::create_symlink("../file", "dir/soft");
    fs::create_directory_symlink("dir", "alias");
    fs::create_symlink("dir/missing", "dangling");
    fs::create_symlink("loop", "loop");
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    const struct
    {
        const char* mLeft;
        const char* mRight;
        bool mIsSame;
    } rows[] = {
        {"file", "./dir/../file", true},
        {"file", "dir/hard", true},
        {"file", "alias/soft", true},
        {"missing", "./missing", true},
        {"dir/missing", "alias/missing", true},
        {"dangling", "alias/missing", true},
        {"no/such/file", "./no/such/../such/file", true},
        {"fifo", "./fifo", true},
        {"file", "missing", false},
        {"missing", "dir/missing", false},
        {"missing", "other", false},
        {"no/such/file", "such/file", false},
        {"loop", "missing", false},
        {"/dev/null", "/dev/null", false},
        {"", "", false},
    };
    for (const auto& row : rows) {
        files::OutputCheck check;
        check.addOutput("-a", row.mLeft);
        check.addOutput("-b", row.mRight);
        EXPECT_EQ(!check.conflict().empty(), row.mIsSame) << row.mLeft << " " << row.mRight;
    }
    fs::current_path(before);
}

TEST(OutputCheckTest, NamesTheFirstConflictAsTheUserWroteIt)
{
    files::OutputCheck check;
    check.addInput("the recording", "rec.dat");
    check.addInput("--config", "rec.dat");
    EXPECT_EQ(check.conflict(), "") << "inputs may be one file";
    check.addOutput("-o", "out.cfg");
    check.addOutput("--csv", ".//out.cfg");
    EXPECT_EQ(check.conflict(),
              ".//out.cfg: --csv is the same file as -o out.cfg; name another file");
    files::OutputCheck overwriting;
    overwriting.addInput("the recording", "rec.dat");
    overwriting.addOutput("-o", "./rec.dat");
    overwriting.addOutput("--csv", "rec.dat");
    EXPECT_EQ(overwriting.conflict(),
              "./rec.dat: -o would overwrite the recording rec.dat; name another file");
}
