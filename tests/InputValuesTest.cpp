#include "InputValues.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cmath>
#include <limits>

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

double fieldOf(const InputValueItem& item, int column)
{
    switch (column) {
        case 2:
            return item.mAuxWord;
        case 3:
            return item.mFlags;
        case 4:
            return static_cast<double>(item.mFrequency);
        default:
            return item.mValues[column - 5];
    }
}

class InputValuesTest : public testing::Test
{
protected:
    LogCapture mLog;
};

TEST_F(InputValuesTest, AcceptsFields)
{
    const struct
    {
        int column;
        const char* text;
        double value;
    } kCases[] = {
        {2, "4294967295", 4294967295.0},
        {2, "007", 7},
        {2, "  5 ", 5},
        {2, "+5", 5},
        {3, "0", 0},
        {3, "4294967295", 4294967295.0},
        {4, "50", 50},
        {4, "49.95", static_cast<double>(49.95F)},
        {4, "5e1", 50},
        {4, " 60 ", 60},
        {4, "-1", -1},
        {4, "inf", std::numeric_limits<double>::infinity()},
        {5, "2147483647", 2147483647.0},
        {5, "-2147483648", -2147483648.0},
        {12, " -3 ", -3},
        {12, "010", 10},
    };
    for (const auto& row : kCases) {
        InputValues values;
        ASSERT_TRUE(values.parseLine(lineWith(row.column, row.text))) << row.text;
        values.resetIterator();
        const InputValueItem* item = values.nextItem();
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(fieldOf(*item, row.column), row.value) << row.column << ": " << row.text;
        EXPECT_EQ(values.nextItem(), nullptr);
    }
    InputValues values;
    EXPECT_TRUE(values.parseLine(lineWith(4, "nan")));
    EXPECT_EQ(mLog.takeLines(), Lines{});
}

TEST_F(InputValuesTest, RejectsFieldsWithTheirMessage)
{
    const struct
    {
        int column;
        const char* type;
        std::vector<const char*> texts;
    } kCases[] = {
        {2, "quint32", {"-1", "0x10", "1.5", "", "4294967296", "1e3", "a", "1 2", "1,000"}},
        {3, "quint32", {"-1", "0x10", "1.5", "", "4294967296", "ü"}},
        {4, "float", {"49,95", "", "x", "1e99", "0x10", "50Hz", "1,000.0"}},
        {5, "qint32", {"2147483648", "-2147483649", "1.0", "", "0x10", "--1"}},
        {12, "qint32", {"2147483648", "", "1e1"}},
    };
    for (const auto& row : kCases) {
        for (const char* text : row.texts) {
            InputValues values;
            EXPECT_FALSE(values.parseLine(lineWith(row.column, text)));
            EXPECT_EQ(mLog.takeLines(), Lines{std::string("ERROR :0: Parameter (") + text +
                                              ") is not of type " + row.type});
            values.resetIterator();
            EXPECT_EQ(values.nextItem(), nullptr) << "nothing is appended";
        }
    }
}

TEST_F(InputValuesTest, OnlyTheFirstBadFieldIsReported)
{
    InputValues values;
    EXPECT_FALSE(values.parseLine(QStringLiteral(";;x;y;z;a;b;c;d;e;f;g;h")));
    EXPECT_EQ(mLog.mEvents.at(0).mLogger, "CsvParser");
    EXPECT_EQ(mLog.mEvents.at(0).mMethod, "InputValues::parseUInt");
    EXPECT_EQ(mLog.takeLines(), Lines{"ERROR :0: Parameter (x) is not of type quint32"});
}

TEST_F(InputValuesTest, FailedConversionKeepsTheValue)
{
    InputValues values;
    quint32 unsignedValue = 1;
    qint32 signedValue = 2;
    float floatValue = 3;
    EXPECT_FALSE(values.parseUInt(QStringLiteral("-4"), &unsignedValue));
    EXPECT_FALSE(values.parseInt(QStringLiteral("4.0"), &signedValue));
    EXPECT_FALSE(values.parseFloat(QStringLiteral("1e99"), &floatValue));
    EXPECT_EQ(unsignedValue, 1U);
    EXPECT_EQ(signedValue, 2);
    EXPECT_EQ(floatValue, 3.0F);
    EXPECT_EQ(mLog.errors(), 3);
}

TEST_F(InputValuesTest, RejectsOtherNumbersOfFields)
{
    const struct
    {
        const char* line;
        const char* found;
    } kCases[] = {
        {"1", "1"}, {";;7;2;50;1;2;3;4;5;6;7", "12"}, {";;7;2;50;1;2;3;4;5;6;7;8;", "14"}};
    for (const auto& row : kCases) {
        InputValues values;
        EXPECT_FALSE(values.parseLine(QString::fromLatin1(row.line)));
        EXPECT_EQ(mLog.takeLines(),
                  Lines{std::string("ERROR :0: Wrong number of parameter. Expected: 13, found ") +
                        row.found + ": " + row.line});
    }
}

TEST_F(InputValuesTest, ReportsFileAndLineAndKeepsTheItemsBefore)
{
    const TestFiles files;
    const QString name = files.make(
        "werte-ä.csv", "# head\n" + valueLine("1", "50") + valueLine("2", "49,95") + "x\n");
    InputValues values;
    ASSERT_TRUE(values.openFile(name));
    EXPECT_FALSE(values.parseCompleteFile());
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"ERROR " + name.toStdString() + ":3: Parameter (49,95) is not of type float",
                     "ERROR Problem while handling line. abort.", "INFO Total 3 lines parsed."}));
    values.resetIterator();
    const InputValueItem* item = values.nextItem();
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->mAuxWord, 1U);
    EXPECT_EQ(item->mSeconds, 0U);
    EXPECT_EQ(item->mNanoseconds, 0U);
    EXPECT_EQ(values.nextItem(), nullptr);
}

TEST_F(InputValuesTest, WalksItemsAgainWithTheirStamps)
{
    InputValues values;
    values.resetIterator();
    EXPECT_EQ(values.nextItem(), nullptr);
    for (const char* aux : {"1", "2", "3"}) {
        ASSERT_TRUE(values.parseLine(lineWith(2, aux)));
    }
    for (quint32 pass = 0; pass < 2; ++pass) {
        values.resetIterator();
        for (quint32 i = 1; i <= 3; ++i) {
            InputValueItem* item = values.nextItem();
            ASSERT_NE(item, nullptr);
            EXPECT_EQ(item->mAuxWord, i);
            EXPECT_EQ(item->mSeconds, pass * 10 * i);
            item->mSeconds = 10 * i;
        }
        EXPECT_EQ(values.nextItem(), nullptr);
        EXPECT_EQ(values.nextItem(), nullptr);
    }
}

InputValueItem itemWith(quint32 aux)
{
    InputValueItem item{};
    item.mAuxWord = aux;
    return item;
}

std::vector<InputValueItem*> addresses(ItemStore& store)
{
    std::vector<InputValueItem*> items;
    store.rewind();
    while (InputValueItem* item = store.next()) {
        items.push_back(item);
    }
    return items;
}

TEST(ItemStoreTest, KeepsOrderAndAddressesWhileItGrows)
{
    ItemStore store;
    std::vector<InputValueItem*> before;
    quint32 size = 0;
    for (const quint32 next : {1U, 255U, 256U, 257U, 767U, 768U, 769U, 1792U, 3840U, 7935U, 7936U,
                               12030U, 12031U, 50'000U}) {
        for (; size < next; ++size) {
            store.append(itemWith(size));
        }
        const std::vector<InputValueItem*> items = addresses(store);
        ASSERT_EQ(items.size(), next);
        for (quint32 i = 0; i < next; ++i) {
            ASSERT_EQ(items[i]->mAuxWord, i);
        }
        ASSERT_TRUE(std::equal(before.begin(), before.end(), items.begin()));
        before = items;
    }
}

TEST(ItemStoreTest, CopyOwnsItsItems)
{
    for (const quint32 size : {0U, 1U, 256U, 300U, 9000U}) {
        ItemStore store;
        for (quint32 i = 0; i < size; ++i) {
            store.append(itemWith(i));
        }
        ItemStore copy(store);
        for (InputValueItem* item : addresses(store)) {
            item->mSeconds = 5;
        }
        store.append(itemWith(77));
        for (quint32 i = size; i < size + 1000; ++i) {
            copy.append(itemWith(i));
        }
        const std::vector<InputValueItem*> items = addresses(copy);
        ASSERT_EQ(items.size(), size + 1000);
        for (quint32 i = 0; i < items.size(); ++i) {
            ASSERT_EQ(items[i]->mAuxWord, i);
            ASSERT_EQ(items[i]->mSeconds, 0U);
        }
        EXPECT_EQ(addresses(store).size(), size + 1);
    }
}
} // namespace
