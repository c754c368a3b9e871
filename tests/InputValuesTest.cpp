#include "InputValues.h"

#include <gmock/gmock.h>

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
    /** Parses a line of a new object and returns its item; null if there is none. */
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
        {5, "qint32", {"2147483648", "-2147483649", "1.0", "0x10", ""}},
        {12, "qint32", {"2147483648"}}};
    for (const auto& [column, type, texts] : kCases) {
        for (const std::string& text : texts) {
            EXPECT_EQ(parse(lineWith(column, text)), nullptr);
            EXPECT_EQ(mLog.take(),
                      Lines{"ERROR :0: Parameter (" + text + ") is not of type " + type});
        }
    }
    quint32 value = 1;
    EXPECT_FALSE(mValues.parseUInt(QStringLiteral("-4"), &value));
    EXPECT_EQ(value, 1U) << "kept";
    EXPECT_EQ(mLog.takeFrom("CsvParser source/InputValues.cpp InputValues::parseUInt").size(), 1U);
    EXPECT_EQ(parse(QStringLiteral(";;7;2;50;1;2;3;4;5;6;7;8;")), nullptr);
    EXPECT_EQ(mLog.take(), Lines{"ERROR :0: Wrong number of parameter. Expected: 13, found 14: "
                                 ";;7;2;50;1;2;3;4;5;6;7;8;"});
    parse(QString(100'000, QLatin1Char('x'))); // quoted by its beginning
    EXPECT_THAT(mLog.take(), testing::ElementsAre(testing::EndsWith(
                                 "found 1: " + std::string(64 * 1024 + 1, 'x') + "...")));
}

TEST_F(InputValuesTest, OverriddenHandlerSeesEveryLine)
{
    class SeeingValues : public InputValues
    {
    public:
        bool parseLine(QString line) override
        {
            return InputValues::parseLine(line) && ++mSeen > 0;
        }

        int mSeen = 0;
    };
    const TestFiles files;
    SeeingValues values;
    ASSERT_TRUE(values.openFile(files.make("values", repeated(valueLine("7", "50"), 3))));
    EXPECT_TRUE(values.parseCompleteFile());
    EXPECT_EQ(values.mSeen, 3);
}

/** The items, which carry their index in the auxiliary word. */
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
    for (const quint32 size : {0U, 1U, 16U, 17U, 1000U, 100'000U}) {
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
