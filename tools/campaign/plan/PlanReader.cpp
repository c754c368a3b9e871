#include "plan/PlanReader.h"

#include <fmt/format.h>

#include <QFileInfo>
#include <algorithm>
#include <cmath>

#include "base/NearestName.h"
#include "base/Numbers.h"
#include "measure/Quantities.h"
#include "plan/PlanValues.h"
#include "plan/SourceReader.h"

namespace plan {

namespace {
constexpr size_t kMaxCases = 10'000;
constexpr size_t kMaxPlays = 100'000;
constexpr double kMaxTimes = double(kMaxPlays);
constexpr double kMaxGapSeconds = 3600.0;
constexpr double kDefaultGapSeconds = 2.0;
constexpr double kMaxPlaySeconds = 7.0 * 86400.0;

constexpr double kMaxNominal = 1e9;
constexpr states::ExpectedNumbers kExpectedNominal{
    3, "expected volts, amperes and 50 or 60 Hz such as [230, 5, 50]"};

/** A case cannot have this name: it is that of the steady signal's file. */
constexpr const char* kReservedName = "steady";

const std::vector<std::string>& caseKeys()
{
    static const std::vector<std::string> kKeys = [] {
        std::vector<std::string> keys = SourceReader::keys();
        keys.insert(keys.begin(), {"name", "times", "seconds", "expect"});
        return keys;
    }();
    return kKeys;
}

/** Names of groups of quantities, as in vx-case measure. */
std::vector<std::string> expectedQuantities(const states::TomlSection& section)
{
    const std::vector<std::string> known = measure::quantityGroups();
    std::vector<std::string> wanted = names(section, "expect");
    for (size_t i = 0; i < wanted.size(); ++i) {
        if (std::find(known.begin(), known.end(), wanted[i]) == known.end()) {
            section.fail(*section.find("expect")->as_array()->get(i), "expect",
                         fmt::format("'{}': no such quantity; the nearest is {}", wanted[i],
                                     base::nearestNames(wanted[i], known, 1).front()));
        }
    }
    return wanted;
}

} // namespace

PlanReader::PlanReader(Plan& plan, Mistakes& mistakes)
    : mPlan(plan),
      mFolder(QFileInfo(QString::fromStdString(plan.mFileName)).absolutePath().toStdString()),
      mMistakes(mistakes)
{
}

void PlanReader::read(const toml::table& table)
{
    const states::TomlSection file(mPlan.mFileName, table);
    mMistakes.add(file.unknownKeys({"name", "steady", "gap", "scale", "nominal", "case", "group"}));
    readHead(file);
    readMeasuring(file);
    mMistakes.collect([&] { readSteady(file); });
    mMistakes.collect([&] { readCases(file); });
    mMistakes.collect([&] { readGroups(file); });
}

void PlanReader::readHead(const states::TomlSection& file)
{
    mPlan.mName =
        QFileInfo(QString::fromStdString(mPlan.mFileName)).completeBaseName().toStdString();
    mMistakes.collect([&] { mPlan.mName = plainText(file, "name").value_or(mPlan.mName); });
    mMistakes.collect([&] {
        const double seconds =
            file.number("gap", {0.0, kMaxGapSeconds}).value_or(kDefaultGapSeconds);
        mPlan.mGapNs = std::llround(seconds * base::kNanosecondsPerSecond);
    });
}

void PlanReader::readMeasuring(const states::TomlSection& file)
{
    journal::Measuring& measuring = mPlan.mMeasuring;
    mMistakes.collect([&] {
        if (const auto scale =
                file.numbers("scale", {0.0, kMaxCounts, true}, states::kExpectedScale)) {
            measuring.mCountsPerVolt = scale->at(0);
            measuring.mCountsPerAmpere = scale->at(1);
        }
    });
    mMistakes.collect([&] {
        if (const auto nominal =
                file.numbers("nominal", {0.0, kMaxNominal, true}, kExpectedNominal)) {
            measuring.mNominalVolts = nominal->at(0);
            measuring.mNominalAmperes = nominal->at(1);
            measuring.mNominalHz = nominal->at(2);
            if (measuring.mNominalHz != 50.0 && measuring.mNominalHz != 60.0) {
                file.fail(*file.find("nominal"), "nominal", kExpectedNominal.mText);
            }
        }
    });
}

/** The default is the first signal of the table. */
void PlanReader::readSteady(const states::TomlSection& file)
{
    mPlan.mSteady.mSignal = generate::signalTable().front();
    mPlan.mSteady.mText = "signal " + mPlan.mSteady.mSignal.mName;
    mPlan.mSteady.mLocation = {1, 1};
    const toml::node* const node = file.find("steady");
    if (node == nullptr) {
        return;
    }
    const states::TomlSection section = file.section(*node, "steady");
    mMistakes.add(section.unknownKeys(SourceReader::keys()));
    mPlan.mSteady = SourceReader(section, mFolder, mMistakes).read();
}

void PlanReader::readCases(const states::TomlSection& file)
{
    const toml::array& cases = file.requiredTables("case");
    if (cases.size() > kMaxCases) {
        file.fail(cases, "case",
                  fmt::format("{} cases: expected at most {}", cases.size(), kMaxCases));
    }
    for (const toml::node& node : cases) {
        readCase(*node.as_table());
    }
    expectFewPlays();
}

/** Leaves a case with a mistake out of the plan. */
void PlanReader::readCase(const toml::table& table)
{
    const states::TomlSection section(mPlan.mFileName, table);
    const size_t mistakesBefore = mMistakes.texts().size();
    mMistakes.add(section.unknownKeys(caseKeys()));
    SourceReader source(section, mFolder, mMistakes);
    Case it;
    it.mLocation = states::locationOf(table);
    it.mSource = source.read();
    mMistakes.collect([&] { readName(section, source.defaultName(), it); });
    readNumbers(section, it);
    mMistakes.collect([&] { it.mExpected = expectedQuantities(section); });
    if (mMistakes.texts().size() == mistakesBefore) {
        mPlan.mCases.push_back(std::move(it));
    }
}

/** @param defaultName none if the source is faulty, which has been reported already */
void PlanReader::readName(const states::TomlSection& section,
                          const std::optional<std::string>& defaultName, Case& it)
{
    const std::optional<std::string> given = section.text("name");
    if (!given && !defaultName) {
        return;
    }
    it.mName = given ? *given : *defaultName;
    const toml::node& node = given ? *section.find("name") : section.table();
    if (!isName(it.mName)) {
        section.fail(node, "name",
                     given ? kExpectedName
                           : fmt::format("missing, and '{}' is not a valid name: {}", it.mName,
                                         kExpectedName));
    }
    if (it.mName == kReservedName) {
        section.fail(node, "name",
                     "'steady' is the signal between the cases; expected another name");
    }
    const auto [known, isNew] = mLineOfName.emplace(it.mName, it.mLocation.mLine);
    if (!isNew) {
        section.fail(node, "name",
                     fmt::format("the case of line {} is '{}', too; expected a unique name",
                                 known->second, it.mName));
    }
}

void PlanReader::readNumbers(const states::TomlSection& section, Case& it)
{
    mMistakes.collect([&] {
        it.mTimes = static_cast<int>(wholeNumber(section, "times", {1.0, kMaxTimes}).value_or(1));
    });
    mMistakes.collect([&] {
        it.mSeconds = section.number("seconds", {0.0, kMaxPlaySeconds, true});
    });
}

void PlanReader::expectFewPlays()
{
    size_t plays = 0;
    for (const Case& it : mPlan.mCases) {
        plays += static_cast<size_t>(it.mTimes);
        if (plays > kMaxPlays) {
            throw base::CaseError(states::messagePrefix(mPlan.mFileName, it.mLocation) +
                                  fmt::format("times: more than {} plays in total", kMaxPlays));
        }
    }
}

void PlanReader::readGroups(const states::TomlSection& file)
{
    const toml::node* const node = file.find("group");
    if (node == nullptr) {
        return;
    }
    if (!node->is_table()) {
        file.fail(*node, "group", "expected a table for each group, such as [group.nightly]");
    }
    for (const auto& [key, group] : *node->as_table()) {
        const std::string name(key.str());
        mMistakes.collect(
            [&, &entry = group] { readGroup(file.section(entry, "group." + name), name); });
    }
}

void PlanReader::readGroup(const states::TomlSection& section, const std::string& name)
{
    mMistakes.add(section.unknownKeys({"cases"}));
    const std::vector<std::string> members = names(section, "cases");
    if (members.empty()) {
        section.fail(section.table(), "cases", "missing; expected the names of cases");
    }
    if (!isName(name)) {
        section.fail(section.table(), "cases",
                     std::string("not a valid name of a group; ") + kExpectedName);
    }
    std::vector<std::string> known;
    for (const auto& [caseName, line] : mLineOfName) {
        known.push_back(caseName);
    }
    const toml::array& list = *section.find("cases")->as_array();
    for (size_t i = 0; i < members.size(); ++i) {
        if (mLineOfName.count(members[i]) == 0) {
            mMistakes.collect([&] {
                const std::string nearest =
                    known.empty()
                        ? "; there is none"
                        : "; the nearest is " + base::nearestNames(members[i], known, 1).front();
                section.fail(*list.get(i), "cases",
                             fmt::format("'{}': no case has this name{}", members[i], nearest));
            });
        }
    }
    mPlan.mGroups[name] = members;
}

} // namespace plan
