#include "base/ResultFile.h"

#include <gtest/gtest.h>

#include <QDir>

#include "Files.h"
#include "base/CaseError.h"

/** A result is never visible in part: the name refers to the old file or to the new one. */
TEST(ResultFileTest, AppearsWholeOrNotAtAll)
{
    const TestFiles files;
    const std::string name = files.make("result.csv", "old").toStdString();
    {
        base::ResultFile abandoned(name);
        abandoned.write(std::string(200'000, 'x'));
    }
    EXPECT_EQ(readFile(name), "old");
    base::ResultFile result(name);
    result.write("ne");
    result.write("w");
    EXPECT_EQ(readFile(name), "old");
    result.commit();
    EXPECT_EQ(readFile(name), "new");
    EXPECT_EQ(QDir(files.path("").c_str()).entryList(QDir::Files).size(), 1);
}

/** A kept file may only be written with the same content. */
TEST(ResultFileTest, KeepsExistingFiles)
{
    const std::string old = std::string(100'000, 'x') + "end";
    const std::pair<std::string, bool> rows[] = {
        {old, true}, {old + "x", false}, {old.substr(1), false}, {"", false}};
    const TestFiles files;
    const std::string name = files.make("result.csv", old).toStdString();
    for (const auto& [bytes, isSame] : rows) {
        base::ResultFile result(name, base::ResultFile::Existing::Keep);
        bool isTaken = true;
        try {
            result.write(bytes);
            result.commit();
        } catch (const base::CaseError&) {
            isTaken = false;
        }
        EXPECT_EQ(isTaken, isSame) << bytes.size();
        EXPECT_EQ(readFile(name), old);
    }
}

TEST(ResultFileTest, RejectsWhatIsNotAFile)
{
    for (const char* const name : {"/dev/null", "/tmp", "/no/such/directory/file"}) {
        EXPECT_THROW(base::ResultFile{name}, base::CaseError) << name;
    }
}
