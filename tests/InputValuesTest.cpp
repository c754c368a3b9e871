#include "InputValues.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cmath>
#include <tuple>

#include "Files.h"
#include "ItemStore.h"
#include "LogCapture.h"

namespace {
/** A valid line with one column replaced. */
QString lineWith(int column, const std::string& text)
{
    QStringList fields = QStringLiteral("x;;7;2;50;1;2;3;4;5;6;7;8").split(QLatin1Char(';'));
    fields[column] = QString::fromStdString(text);
    return fields.join(QLatin1Char(';'));
}

class InputValuesTest : public testing::Test
{
protected:
    /** Parses a line of its own and gives its item; null when there is none. */
    const InputValueItem* parse(const QString& line)
    {
        mValues = InputValues();
        const bool ok = mValues.parseLine(line);
        mValues.resetIterator();
        const InputValueItem* item = mValues.nextItem();
        EXPECT_EQ(ok, item != nullptr);
        return item;
    }

    LogCapture mLog;
    InputValues mValues;
};

TEST_F(InputValuesTest, AcceptsFields)
{
    const InputValueItem* item =
        parse(QStringLiteral("x;;4294967295; +2 ; -5e1;1;-2;3;-4;5;2147483647;-2147483648;-08"));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(std::make_tuple(item->mSeconds, item->mNanoseconds, item->mAuxWord, item->mFlags),
              std::make_tuple(0U, 0U, 4294967295U, 2U));
    EXPECT_EQ(item->mFrequency, -50.0F);
    EXPECT_EQ(std::vector<qint32>(item->mValues, item->mValues + kChannelCount),
              (std::vector<qint32>{1, -2, 3, -4, 5, 2147483647, -2147483647 - 1, -8}));
    EXPECT_TRUE(std::isnan(parse(lineWith(4, "nan"))->mFrequency));
    EXPECT_TRUE(std::isinf(parse(lineWith(4, "inf"))->mFrequency));
    EXPECT_EQ(mLog.take(), Lines{});
}

TEST_F(InputValuesTest, RejectsFieldsWithTheirMessage)
{
    const std::tuple<int, const char*, Lines> kCases[] = {
        {2, "quint32", {"-1", "0x10", "1.5", "", "4294967296", "1 2", "1,000", "ü"}},
        {3, "quint32", {"-1", ""}},
        {4, "float", {"49,95", "", "1e99", "0x10", "1,000.0"}},
        {5, "qint32", {"2147483648", "-2147483649", "1.0", ""}},
        {12, "qint32", {"2147483648"}}};
    for (const auto& [column, type, texts] : kCases) {
        for (const std::string& text : texts) {
            EXPECT_EQ(parse(lineWith(column, text)), nullptr);
            EXPECT_EQ(mLog.take(),
                      Lines{"ERROR :0: Parameter (" + text + ") is not of type " + type});
        }
    }
    parse(QStringLiteral(";;x;y;z;a;b;c;d;e;f;g;h"));
    EXPECT_EQ(mLog.mEvents.at(0).mOrigin,
              "CsvParser source/InputValues.cpp InputValues::parseUInt");
    EXPECT_EQ(mLog.take(), Lines{"ERROR :0: Parameter (x) is not of type quint32"});
    EXPECT_EQ(parse(QStringLiteral(";;7;2;50;1;2;3;4;5;6;7;8;")), nullptr);
    EXPECT_EQ(mLog.take(), Lines{"ERROR :0: Wrong number of parameter. Expected: 13, found 14: "
                                 ";;7;2;50;1;2;3;4;5;6;7;8;"});
}

/** Sees its lines. */
class SeeingValues : public InputValues
{
public:
    bool parseLine(QString line) override
    {
        ++mSeen;
        return InputValues::parseLine(line);
    }

    int mSeen = 0;
};

TEST_F(InputValuesTest, AHandlerOfItsOwnSeesEveryLine)
{
    const TestFiles files;
    SeeingValues values;
    ASSERT_TRUE(values.openFile(files.make("values", repeated(valueLine("7", "50"), 3))));
    EXPECT_TRUE(values.parseCompleteFile());
    EXPECT_EQ(values.mSeen, 3);
}

TEST_F(InputValuesTest, FailedConversionKeepsTheValue)
{
    quint32 unsignedValue = 1;
    qint32 signedValue = 2;
    float floatValue = 3;
    EXPECT_FALSE(mValues.parseUInt(QStringLiteral("-4"), &unsignedValue));
    EXPECT_FALSE(mValues.parseInt(QStringLiteral("4.0"), &signedValue));
    EXPECT_FALSE(mValues.parseFloat(QStringLiteral("1e99"), &floatValue));
    EXPECT_EQ(std::make_tuple(unsignedValue, signedValue, floatValue),
              std::make_tuple(1U, 2, 3.0F));
}

/** The items, which carry their place in the auxiliary word. */
std::vector<InputValueItem*> walk(ItemStore& store)
{
    std::vector<InputValueItem*> items;
    store.rewind();
    while (InputValueItem* item = store.next()) {
        EXPECT_EQ(item->mAuxWord, items.size());
        EXPECT_EQ(item->mSeconds, 0U);
        items.push_back(item);
    }
    return items;
}

TEST(ItemStoreTest, KeepsOrderAndAddressesWhileItGrowsAndIsCopied)
{
    ItemStore store;
    InputValueItem item{};
    std::vector<InputValueItem*> before;
    for (const quint32 size : {0U, 1U, 256U, 257U, 512U, 513U, 4096U, 4097U, 4353U, 50'000U}) {
        for (; item.mAuxWord < size; ++item.mAuxWord) {
            store.append(item);
        }
        const std::vector<InputValueItem*> items = walk(store);
        ASSERT_EQ(items.size(), size);
        ASSERT_TRUE(std::equal(before.begin(), before.end(), items.begin()));
        before = items;

        ItemStore copy(store);
        for (InputValueItem* copied : walk(copy)) {
            copied->mSeconds = 5;
        }
        copy.append(item);
        ASSERT_EQ(walk(store), items);
    }
}
} // namespace
