#include "plan/SourceReader.h"

#include <fmt/format.h>

#include <QDir>
#include <QFileInfo>
#include <array>

#include "plan/ImportReader.h"
#include "plan/PlanValues.h"

namespace plan {

namespace {
/** A kind of source: its key, and the further keys that it allows. */
struct Kind
{
    const char* mKey;
    std::vector<std::string> mKeys;
};

/** In the order of SourceKind. */
const std::array<Kind, 4>& kinds()
{
    static const std::array<Kind, 4> kKinds{{{"signal", {"set"}},
                                             {"recording", ImportReader::keys()},
                                             {"states", {"align"}},
                                             {"file", {}}}};
    return kKinds;
}
} // namespace

std::vector<std::string> SourceReader::keys()
{
    std::vector<std::string> all;
    for (const Kind& kind : kinds()) {
        all.emplace_back(kind.mKey);
    }
    for (const Kind& kind : kinds()) {
        all.insert(all.end(), kind.mKeys.begin(), kind.mKeys.end());
    }
    return all;
}

Source SourceReader::read()
{
    mSource.mLocation = states::locationOf(mSection.table());
    mMistakes.collect([this] {
        findKind();
        expectOwnKeys();
        readKind();
    });
    return mSource;
}

void SourceReader::readKind()
{
    if (mSource.mKind == SourceKind::Signal) {
        readSignal();
    } else {
        readFile();
    }
}

/** Throws unless the section has exactly one kind of source. */
void SourceReader::findKind()
{
    std::vector<size_t> found;
    for (size_t i = 0; i < kinds().size(); ++i) {
        if (mSection.find(kinds()[i].mKey) != nullptr) {
            found.push_back(i);
        }
    }
    if (found.size() == 1) {
        mSource.mKind = static_cast<SourceKind>(found.front());
        return;
    }
    const char* const key = kinds()[found.empty() ? 0 : found[1]].mKey;
    const toml::node* const node = mSection.find(key);
    mSection.fail(node != nullptr ? *node : mSection.table(), key,
                  found.empty() ? "missing; expected signal, recording, states or file"
                                : fmt::format("{} is given, too; expected one of the two",
                                              kinds()[found.front()].mKey));
}

/** Refuses keys of other kinds of source: they would have no effect, and nobody would notice. */
void SourceReader::expectOwnKeys()
{
    for (size_t i = 0; i < kinds().size(); ++i) {
        for (const std::string& key : kinds()[i].mKeys) {
            const toml::node* const node = mSection.find(key);
            if (node != nullptr && i != static_cast<size_t>(mSource.mKind)) {
                mMistakes.collect([this, node, &key, i] {
                    mSection.fail(*node, key, fmt::format("allowed only with {}", kinds()[i].mKey));
                });
            }
        }
    }
}

void SourceReader::readSignal()
{
    const std::string name = plainText(mSection, "signal").value();
    const generate::Signal* const row = generate::findSignal(name);
    if (row == nullptr) {
        mSection.fail(*mSection.find("signal"), "signal", generate::unknownSignal(name));
    }
    mDefaultName = name;
    mSource.mText = "signal " + name;
    mSource.mSignal = *row;
    if (mSection.find("set") != nullptr) {
        readSettings(generate::familyOf(row->mFamily));
        // Both apply to the unchanged row only.
        mSource.mSignal.mText.clear();
        mSource.mSignal.mPst = 0.0;
    }
}

void SourceReader::readSettings(const generate::SignalFamily& family)
{
    std::vector<std::string> known;
    for (const generate::FamilyParameter& parameter : family.mParameters) {
        known.push_back(parameter.mName);
    }
    const states::TomlSection settings = mSection.section(*mSection.find("set"), "set");
    mMistakes.add(settings.unknownKeys(known));
    for (const generate::FamilyParameter& parameter : family.mParameters) {
        mMistakes.collect([&] {
            const std::optional<double> value =
                settings.number(parameter.mName, {parameter.mMin, parameter.mMax});
            if (value && !parameter.accepts(*value)) {
                settings.fail(*settings.find(parameter.mName), parameter.mName,
                              "expected " + parameter.mMeaning);
            }
            if (value) {
                mSource.mSignal.mSettings[parameter.mName] = *value;
                mSource.mText += fmt::format(", {}={}", parameter.mName, *value);
            }
        });
    }
}

void SourceReader::readFile()
{
    const char* const key = kinds().at(static_cast<size_t>(mSource.mKind)).mKey;
    const std::string name = plainText(mSection, key).value();
    const QString path = QString::fromStdString(name);
    mDefaultName = QFileInfo(path).completeBaseName().toStdString();
    mSource.mText = std::string(key) + ' ' + name;
    mSource.mPath =
        QDir::cleanPath(QDir(QString::fromStdString(mFolder)).absoluteFilePath(path)).toStdString();
    if (mSource.mKind == SourceKind::Recording) {
        mSource.mText += ImportReader(mSection, mMistakes).read(mSource.mImport, mSource.mEncoding);
        mSource.mImport.mSourceName = name;
    }
    if (mSource.mKind == SourceKind::States && flag(mSection, "align")) {
        mSource.mIsAligned = true;
        mSource.mText += ", align";
    }
}

} // namespace plan
