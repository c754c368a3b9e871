#include "waveform/ValueFileWriter.h"

#include <gtest/gtest.h>

#include <limits>

#include "Files.h"

TEST(ValueFileWriterTest, ReadsBackIdentically)
{
    using Limits = std::numeric_limits<qint32>;
    const TestFiles files;
    base::ResultFile result(files.path("case.csv"));
    waveform::ValueFileWriter writer(result);
    writer.writeComments({"two\nlines", "#"});
    writer.write(
        {-7, 0.1 + 0.2, 0xFFFFFFFF, 2, 49.95F, {Limits::min(), -1, 0, 1, 2, 3, 4, Limits::max()}});
    writer.write({});
    result.commit();
    EXPECT_EQ(readFile(files.path("case.csv")),
              "# two lines\n# #\n"
              "-7;0.300000000;4294967295;2;49.95;-2147483648;-1;0;1;2;3;4;2147483647\n"
              "0;0.000000000;0;0;0;0;0;0;0;0;0;0;0\n");
}
