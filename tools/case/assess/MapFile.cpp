#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>

#include "assess/MeasuredMap.h"
#include "assess/QuantityNames.h"
#include "base/CaseError.h"
#include "base/NearestName.h"
#include "base/Numbers.h"
#include "base/WholeFile.h"
#include "states/TomlSection.h"

namespace assess {

namespace {
constexpr size_t kMaxMapBytes = size_t{1} << 20U;
constexpr double kMaxOffsetSeconds = 1e6;
constexpr double kMaxFactor = 1e12;
constexpr double kMaxColumn = 10'000.0;
constexpr double kMaxHeadingLine = 1000.0;

/** Reads one map. */
class MapReader
{
public:
    MapReader(MeasuredMap& map, const toml::table& table)
        : mMap(map),
          mFile(map.mFileName, table, "",
                {"time", "format", "offset", "separator", "decimal", "heading", "missing", "factor",
                 "column", "long", "quantities", "channels"})
    {
    }

    void read();

private:
    using Section = states::TomlSection;

    ColumnName requiredColumn(const Section& section, const char* key) const;
    std::optional<ColumnName> column(const Section& section, const char* key) const;
    void readTime();
    void readSigns();
    char sign(const char* key, char standard, std::string_view allowed) const;
    void readMissing();
    void readWide();
    WideColumn wideColumn(const toml::node& node) const;
    double factorOf(const Section& section, const SeriesKey& key) const;
    void readLong();
    void readWords(const char* key, std::map<std::string, std::string>& words,
                   bool (*isKnown)(std::string_view), const std::vector<std::string>& names) const;
    std::string knownText(const Section& section, const char* key,
                          bool (*isKnown)(std::string_view),
                          const std::vector<std::string>& names) const;

    MeasuredMap& mMap;
    Section mFile;
};

void MapReader::read()
{
    readTime();
    readSigns();
    readMissing();
    readWide();
    readLong();
    if (mMap.mWide.empty() == !mMap.mLong.has_value()) {
        throw base::CaseError(states::messagePrefix(mMap.mFileName, {1, 1}) +
                              "expected [[column]] for each column of a wide table, or [long]");
    }
}

std::optional<ColumnName> MapReader::column(const Section& section, const char* key) const
{
    const toml::node* const node = section.find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    ColumnName name;
    name.mLocation = states::locationOf(*node);
    if (node->is_integer()) {
        name.mNumber = static_cast<size_t>(section.numberOf(*node, key, {1.0, kMaxColumn}));
    } else if (node->is_string()) {
        name.mName = node->as_string()->get();
    } else {
        section.fail(*node, key, "expected the name of a column in quotes, or its number");
    }
    return name;
}

ColumnName MapReader::requiredColumn(const Section& section, const char* key) const
{
    const std::optional<ColumnName> name = column(section, key);
    if (!name) {
        section.fail(section.table(), key, "missing; expected the name of a column or its number");
    }
    return *name;
}

void MapReader::readTime()
{
    mMap.mTime = requiredColumn(mFile, "time");
    if (const auto format = mFile.text("format")) {
        const std::string reason = TimeFormat::reasonNotFormat(*format);
        if (!reason.empty()) {
            mFile.fail(*mFile.find("format"), "format", reason);
        }
        mMap.mFormat = TimeFormat(*format);
    }
    const auto seconds = mFile.number("offset", {-kMaxOffsetSeconds, kMaxOffsetSeconds});
    mMap.mOffsetNs = std::llround(seconds.value_or(0.0) * base::kNanosecondsPerSecond);
    const auto line = mFile.number("heading", {1.0, kMaxHeadingLine});
    mMap.mHeadingLine = static_cast<size_t>(line.value_or(1.0));
}

char MapReader::sign(const char* key, char standard, std::string_view allowed) const
{
    const auto text = mFile.text(key);
    if (text && (text->size() != 1 || allowed.find((*text)[0]) == std::string_view::npos)) {
        mFile.fail(*mFile.find(key), key,
                   std::string("expected one of ") +
                       (allowed.size() > 2 ? R"(",", ";", "|" or "\t")" : R"("." or ",")"));
    }
    return text ? (*text)[0] : standard;
}

void MapReader::readSigns()
{
    mMap.mSeparator = sign("separator", ',', ",;|\t");
    mMap.mDecimalSign = sign("decimal", '.', ".,");
    if (mMap.mSeparator == mMap.mDecimalSign) {
        const char* const key = mFile.find("decimal") != nullptr ? "decimal" : "separator";
        mFile.fail(*mFile.find(key), key,
                   "separator and decimal are the same; expected different ones");
    }
    mMap.mFactor = mFile.number("factor", {-kMaxFactor, kMaxFactor}).value_or(1.0);
}

void MapReader::readMissing()
{
    const toml::node* const node = mFile.find("missing");
    if (node == nullptr) {
        return;
    }
    if (!node->is_array()) {
        mFile.fail(*node, "missing", "expected a list of words, such as [\"-\", \"NaN\"]");
    }
    for (const toml::node& word : *node->as_array()) {
        if (!word.is_string()) {
            mFile.fail(word, "missing", "expected text in quotes");
        }
        mMap.mMissing.push_back(word.as_string()->get());
    }
}

std::string MapReader::knownText(const Section& section, const char* key,
                                 bool (*isKnown)(std::string_view),
                                 const std::vector<std::string>& names) const
{
    const std::string text = section.text(key).value_or("");
    if (!isKnown(text)) {
        const toml::node& node = section.find(key) != nullptr
                                     ? *section.find(key)
                                     : static_cast<const toml::node&>(section.table());
        section.fail(node, key,
                     fmt::format("'{}' is unknown; the nearest are {}", text,
                                 fmt::join(base::nearestNames(text, names, 3), ", ")));
    }
    return text;
}

double MapReader::factorOf(const Section& section, const SeriesKey& key) const
{
    const double factor = section.number("factor", {-kMaxFactor, kMaxFactor}).value_or(1.0);
    const auto unit = section.text("unit");
    const auto scale = unit ? unitFactor(*unit, unitOf(key)) : std::optional(1.0);
    if (!scale) {
        section.fail(*section.find("unit"), "unit",
                     fmt::format("'{}' is not a unit of {}; expected '{}'", *unit, key.mQuantity,
                                 unitOf(key)));
    }
    return factor * *scale;
}

WideColumn MapReader::wideColumn(const toml::node& node) const
{
    const Section section =
        mFile.section(node, "column", {"name", "quantity", "channel", "unit", "factor"});
    WideColumn wide;
    wide.mColumn = requiredColumn(section, "name");
    wide.mQuantity = knownText(section, "quantity", isMeasured, measuredNames());
    wide.mChannel = knownText(section, "channel", isChannel, channelNames());
    wide.mFactor = factorOf(section, {wide.mQuantity, wide.mChannel});
    return wide;
}

void MapReader::readWide()
{
    const toml::array* const list = mFile.tables("column");
    if (list == nullptr) {
        return;
    }
    for (const toml::node& node : *list) {
        const WideColumn wide = wideColumn(node);
        for (const WideColumn& other : mMap.mWide) {
            if (other.mQuantity == wide.mQuantity && other.mChannel == wide.mChannel) {
                mFile.fail(node, "column",
                           "two columns with " + nameOf({wide.mQuantity, wide.mChannel}));
            }
        }
        mMap.mWide.push_back(wide);
    }
}

void MapReader::readLong()
{
    readWords("quantities", mMap.mQuantities, isMeasured, measuredNames());
    readWords("channels", mMap.mChannels, isChannel, channelNames());
    const toml::node* const node = mFile.find("long");
    if (node == nullptr) {
        return;
    }
    const Section section = mFile.section(*node, "long", {"quantity", "channel", "value", "unit"});
    LongColumns columns;
    columns.mQuantity = requiredColumn(section, "quantity");
    columns.mChannel = column(section, "channel");
    columns.mValue = requiredColumn(section, "value");
    columns.mUnit = column(section, "unit");
    mMap.mLong = columns;
}

/** Reads a table of the device's words with the names that they stand for. */
void MapReader::readWords(const char* key, std::map<std::string, std::string>& words,
                          bool (*isKnown)(std::string_view),
                          const std::vector<std::string>& names) const
{
    const toml::node* const node = mFile.find(key);
    if (node == nullptr) {
        return;
    }
    if (!node->is_table()) {
        mFile.fail(*node, key, "expected a table such as { L1 = \"UA\" }");
    }
    const Section section(mMap.mFileName, *node->as_table(), key);
    for (const auto& [word, meaning] : *node->as_table()) {
        const std::string name(word.str());
        if (!meaning.is_string()) {
            section.fail(meaning, name, "expected text in quotes");
        }
        words[name] = knownText(section, name.c_str(), isKnown, names);
    }
}
} // namespace

MeasuredMap measureMap()
{
    MeasuredMap map;
    map.mTime.mName = "utc";
    map.mLong = LongColumns{{"quantity", 0, {}},
                            ColumnName{"channel", 0, {}},
                            {"value", 0, {}},
                            ColumnName{"unit", 0, {}}};
    return map;
}

MeasuredMap parseMeasuredMap(std::string_view text, const std::string& name)
{
    MeasuredMap map;
    map.mFileName = name;
    const toml::table table = states::parseTables(text, name);
    MapReader(map, table).read();
    return map;
}

MeasuredMap readMeasuredMap(const std::string& path)
{
    return parseMeasuredMap(base::readWholeFile(path, kMaxMapBytes), path);
}

} // namespace assess
