#include "comtrade/ComtradeFiles.h"

#include <fmt/format.h>

#include <QDir>
#include <QFileInfo>
#include <limits>
#include <optional>
#include <utility>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/TextEncoding.h"
#include "comtrade/ComtradeConfigParser.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

namespace {
constexpr size_t kLargestConfig = size_t{16} << 20U;

/** Parses the configuration and adds its remarks to those about the encoding. */
void takeConfig(const std::string& name, std::string_view text, size_t firstLine,
                const std::string& encoding, ComtradeParts* parts)
{
    const base::DecodedText decoded = base::decodeText(text, encoding);
    if (decoded.mIsGuessed) {
        parts->mRemarks.add(base::kGuessedEncoding);
    }
    ComtradeConfigParser parser(name, decoded.mText, firstLine);
    parts->mHeader = parser.parse();
    for (const std::string& remark : parser.remarks().take()) {
        parts->mRemarks.add(remark);
    }
}

/** The heading of a section: "--- file type: DAT BINARY: 702 ---". */
struct Heading
{
    std::string mType;            ///< "CFG", "DAT", ... in upper case
    std::string mKind;            ///< only for data; may be empty
    std::optional<size_t> mBytes; ///< only for data, if the heading has it
};

std::optional<Heading> parseHeading(std::string_view line)
{
    line = base::trimmed(line);
    if (line.substr(0, kSectionMark.size()) != kSectionMark) {
        return std::nullopt;
    }
    const QString text = QString::fromLatin1(line.data(), static_cast<int>(line.size()))
                             .remove('-')
                             .simplified()
                             .toUpper();
    const QStringList parts = text.split(':');
    if (parts.size() < 2 || parts[0].simplified() != QLatin1String("FILE TYPE")) {
        return std::nullopt;
    }
    Heading heading;
    const QStringList words = parts[1].split(' ', Qt::SkipEmptyParts);
    heading.mType = words.value(0).toStdString();
    heading.mKind = words.value(1).toStdString();
    size_t bytes = 0;
    if (parts.size() > 2 && base::parseNumber(parts[2].toStdString(), &bytes)) {
        heading.mBytes = bytes;
    }
    return heading;
}

/** Reads the sections of a single file. */
class SectionReader
{
public:
    explicit SectionReader(base::InputFile& file) : mFile(file) {}

    std::string mConfig;
    size_t mConfigLine = 1;
    Heading mDataHeading;
    size_t mDataLine = 1;
    size_t mDataBegin = 0; ///< 0 while there is no data section
    size_t mDataEnd = 0;

    /** Stops once both sections have been found; what follows them is not read. */
    void read()
    {
        std::string_view line;
        std::string type;
        bool isWhole = false;
        while (!isWhole && mFile.takeLine(&line)) {
            ++mLine;
            const auto heading = parseHeading(line);
            if (heading) {
                type = heading->mType;
                beginSection(*heading);
            } else if (type == "CFG") {
                addConfigLine(line);
            }
            isWhole = mDataBegin > 0 && !mConfig.empty() && type != "CFG";
        }
    }

private:
    void beginSection(const Heading& heading)
    {
        if (heading.mType == "CFG") {
            mConfigLine = mLine + 1;
        } else if (heading.mType == "DAT") {
            mDataHeading = heading;
            mDataLine = mLine + 1;
            mDataBegin = mFile.position();
            const size_t left = mFile.left();
            mDataEnd = mDataBegin + std::min(left, heading.mBytes.value_or(left));
            if (heading.mBytes && mConfig.empty()) {
                mFile.setPart(mDataEnd, mFile.size());
            }
        }
    }

    void addConfigLine(std::string_view line)
    {
        if (mConfig.size() + line.size() > kLargestConfig) {
            throw base::CaseError(fmt::format("{}:{}: expected a configuration of at most 16 MiB",
                                              mFile.name(), mLine));
        }
        mConfig.append(line).append("\n");
    }

    base::InputFile& mFile;
    size_t mLine = 0;
};

/** If the heading of the data section and the configuration differ, the heading is right. */
void adoptHeading(const SectionReader& sections, ComtradeParts* parts)
{
    const Heading& heading = sections.mDataHeading;
    ComtradeKind kind = parts->mHeader.mKind;
    if (parseKind(heading.mKind, &kind) && kind != parts->mHeader.mKind) {
        parts->mRemarks.add(
            fmt::format("the configuration says {} data, the heading of their section {}: the "
                        "heading is used",
                        nameOf(parts->mHeader.mKind), nameOf(kind)));
        parts->mHeader.mKind = kind;
    }
    const size_t bytes = sections.mDataEnd - sections.mDataBegin;
    if (heading.mBytes && *heading.mBytes != bytes) {
        parts->mRemarks.add(
            fmt::format("{} bytes of data are announced, {} are there", *heading.mBytes, bytes));
    }
}

/** Some configurations name a wrong kind of data; the first bytes show the true one. */
void adoptKindOfData(ComtradeParts* parts)
{
    constexpr size_t kProbedBytes = 256;
    constexpr std::string_view kBytesOfText = "0123456789+-.eE, \t\r\n\x1a";
    const std::string_view bytes = parts->mData->peek(kProbedBytes);
    const bool isText = bytes.find_first_not_of(kBytesOfText) == std::string_view::npos;
    ComtradeKind& kind = parts->mHeader.mKind;
    if (kind == ComtradeKind::kAscii && bytes.find('\0') != std::string_view::npos) {
        throw base::CaseError(
            fmt::format("{}: byte {}: expected text, since the configuration says ASCII data",
                        parts->mData->name(), parts->mData->position() + bytes.find('\0')));
    }
    if (kind != ComtradeKind::kAscii && isText && !bytes.empty()) {
        parts->mRemarks.add(fmt::format(
            "the configuration says {} data, they are text: read as ASCII", nameOf(kind)));
        kind = ComtradeKind::kAscii;
    }
}
} // namespace

std::string findBeside(const std::string& path, const std::string& suffix)
{
    const QFileInfo info(QString::fromStdString(path));
    const QString wanted = info.completeBaseName() + "." + QString::fromStdString(suffix);
    std::string found;
    for (const QString& name : info.dir().entryList(QDir::Files)) {
        // If several names differ in case only, prefers the spelling of the given name.
        if (name.compare(wanted, Qt::CaseInsensitive) == 0 &&
            (found.empty() || name.startsWith(info.completeBaseName()))) {
            found = path.substr(0, path.rfind('/') + 1) + name.toStdString();
        }
    }
    return found;
}

ComtradeParts openComtradePair(const std::string& configPath, const std::string& dataPath,
                               const std::string& encoding)
{
    ComtradeParts parts;
    base::InputFile config(configPath);
    if (config.size() > kLargestConfig) {
        throw base::CaseError(configPath + ": expected a configuration of at most 16 MiB");
    }
    takeConfig(configPath, config.peek(config.size()), 1, encoding, &parts);
    parts.mName = configPath;
    parts.mData = std::make_unique<base::InputFile>(dataPath);
    adoptKindOfData(&parts);
    return parts;
}

ComtradeParts openComtradeSingle(const std::string& path, const std::string& encoding)
{
    ComtradeParts parts;
    parts.mName = path;
    parts.mData = std::make_unique<base::InputFile>(path);
    SectionReader sections(*parts.mData);
    sections.read();
    if (sections.mConfig.empty() || sections.mDataBegin == 0) {
        throw base::CaseError(fmt::format("{}: expected a section \"--- file type: {} ---\"", path,
                                          sections.mConfig.empty() ? "CFG" : "DAT"));
    }
    takeConfig(path, sections.mConfig, sections.mConfigLine, encoding, &parts);
    adoptHeading(sections, &parts);
    parts.mFirstDataLine = sections.mDataLine;
    parts.mData->setPart(sections.mDataBegin, sections.mDataEnd);
    adoptKindOfData(&parts);
    return parts;
}

bool looksLikeComtradeSingle(std::string_view text)
{
    return parseHeading(text.substr(0, text.find('\n'))).has_value();
}

} // namespace comtrade
