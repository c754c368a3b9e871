#include "journal/Journal.h"

#include <fmt/format.h>

#include "base/CaseError.h"
#include "base/InputFile.h"

namespace journal {

namespace {
/** The first line has all cases and plays of a night. */
constexpr size_t kMaxLineBytes = size_t{64} << 20U;

/** Most lines are shorter. */
constexpr size_t kUsualLineBytes = 4096;

/** With its line end, which the last one may not have; empty at the end of the file. */
std::string_view nextLine(base::InputFile* file)
{
    std::string_view ahead;
    size_t end = std::string_view::npos;
    for (size_t bytes = kUsualLineBytes;
         end == std::string_view::npos && ahead.size() < file->left(); bytes *= 2) {
        if (bytes > kMaxLineBytes) {
            throw base::CaseError(file->name() + ": expected a line end within 64 MiB");
        }
        ahead = file->peek(bytes);
        end = ahead.find('\n');
    }
    const std::string_view line = end == std::string_view::npos ? ahead : ahead.substr(0, end + 1);
    file->skip(line.size());
    return line;
}

/** Takes one line; false where the journal ends or was cut off. */
bool takeEntry(base::InputFile* file, Journal* journal)
{
    const std::string_view line = nextLine(file);
    if (line.empty()) {
        return false;
    }
    std::optional<Entry> entry = line.back() == '\n' ? parseEntry(line) : std::nullopt;
    const bool isFirst = journal->mEntries.empty();
    if (entry && isFirst == std::holds_alternative<NightBegin>(entry->mStep)) {
        journal->mEntries.push_back(*std::move(entry));
        journal->mWholeBytes = file->position();
        return true;
    }
    if (entry || file->left() > 0) {
        throw base::CaseError(
            fmt::format("{}:{}: expected a step of a night, as vx-campaign run "
                        "writes it",
                        file->name(), journal->mEntries.size() + 1));
    }
    return false;
}
} // namespace

const NightBegin* Journal::night() const
{
    return mEntries.empty() ? nullptr : std::get_if<NightBegin>(&mEntries.front().mStep);
}

Journal readJournal(const std::string& path)
{
    base::InputFile file(path);
    Journal journal;
    while (takeEntry(&file, &journal)) {
    }
    return journal;
}

} // namespace journal
