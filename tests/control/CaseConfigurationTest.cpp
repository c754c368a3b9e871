#include "CaseConfiguration.h"

#include <gtest/gtest.h>

#include "Files.h"
#include "PlayList.h"

/** Entries as text, so that one comparison shows them all. */
static std::string contentOf(const configuration::CaseConfiguration& cases)
{
    std::string text;
    for (auto it = cases.configurations().begin(); it != cases.configurations().end(); ++it) {
        for (const configuration::CaseEntry& entry : it.value()) {
            text += std::to_string(it.key()) + ":" + std::to_string(entry.mRepetitions) + "x" +
                    entry.mFileName.toStdString() + "@" + std::to_string(entry.mLineNumber) + " ";
        }
    }
    return text + std::to_string(cases.continuousNumber()) + "@" +
           std::to_string(cases.continuousLine());
}

TEST(CaseConfigurationTest, ReadsLikeTheProgramOrContinuesAfterErrors)
{
    configuration::CaseConfiguration::keepLogSilent();
    const TestFiles files;
    const QString name = files.make("cases.conf",
                                    "# cases\n1, 2 ,b.csv\n0,1,a.csv\n-1,1,\nx,1,c.csv\n"
                                    "1,1,d.csv\n2,1\n-3,0,\n");
    configuration::CaseConfiguration program;
    ASSERT_TRUE(program.read(name, configuration::CaseConfiguration::Rejected::Stop));
    EXPECT_EQ(contentOf(program), "0:1xa.csv@3 1:2xb.csv@2 1@4");
    EXPECT_EQ(program.lineErrors().size(), 1U);

    configuration::CaseConfiguration all;
    ASSERT_TRUE(all.read(name, configuration::CaseConfiguration::Rejected::Continue));
    EXPECT_EQ(contentOf(all), "0:1xa.csv@3 1:2xb.csv@2 1:1xd.csv@6 0@8");
    const std::string prefix = name.toStdString() + ":";
    EXPECT_EQ(all.lineErrors(),
              (std::vector<std::string>{
                  prefix + "5: First parameter (x) is not of type quint32",
                  prefix + "7: Wrong number of parameter. Expected: 3, found 2: 2,1"}));

    for (const auto& [unreadable, reason] :
         {std::pair("/no/such.conf", ": No such file or directory"),
          {"/proc/self/mem", ":1: Reading failed: Input/output error"},
          {"/dev/null", ": expected a regular file"}}) {
        configuration::CaseConfiguration none;
        EXPECT_FALSE(none.read(unreadable, configuration::CaseConfiguration::Rejected::Stop));
        EXPECT_EQ(none.fileError(), std::string(unreadable) + reason);
    }
}

TEST(PlayListTest, FindsConfigurationsByNameOrNumber)
{
    configuration::CaseConfiguration::keepLogSilent();
    const TestFiles files;
    configuration::CaseConfiguration cases;
    ASSERT_TRUE(cases.read(files.make("cases.conf",
                                      "0,1,dir/idle.csv\n1,2,a.b.csv\n1,1,a.b.csv\n2,0, sag.csv\n"
                                      "3,1,sag.csv\n-1,1,\n"),
                           configuration::CaseConfiguration::Rejected::Stop));
    const control::PlayList list(cases);
    EXPECT_EQ(list.lines().join('\n').toStdString(),
              "0  1 x dir/idle.csv\n1  2 x a.b.csv, 1 x a.b.csv  (continuous from the start)\n"
              "2  0 x  sag.csv\n3  1 x sag.csv");
    const struct
    {
        const char* mTarget;
        qint32 mNumber;
        const char* mProblem;
    } rows[] = {
        {"3", 3, ""},
        {"idle", 0, ""},
        {"a.b", 1, ""},
        {"4", -1, "4: no such configuration; there are 4, numbered from 0"},
        {"a", -1, "'a': no configuration plays a value file of that name"},
        {"sag", -1, "'sag' is played by several configurations; give a number: 2, 3"},
        {"-1", -1, "'-1': no configuration plays a value file of that name"},
    };
    for (const auto& row : rows) {
        qint32 number = -1;
        EXPECT_EQ(list.find(row.mTarget, &number), row.mProblem);
        EXPECT_EQ(number, row.mNumber) << row.mTarget;
    }
}
