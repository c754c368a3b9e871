#include "journal/Journal.h"

#include <fmt/format.h>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "journal/StepOrder.h"

namespace journal {

namespace {
/** Max length of a line. The first line has all cases and plays of a night. */
constexpr size_t kMaxLineBytes = size_t{64} << 20U;

/** Bytes that are read ahead first. Most lines are shorter. */
constexpr size_t kUsualLineBytes = 4096;

/** The next line with its line end, which may be missing in the last one; empty at the end. */
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

/** Reads the steps of a journal. */
class StepReader
{
public:
    explicit StepReader(const std::string& path) : mFile(path) {}

    Journal readAll()
    {
        while (takeEntry()) {
        }
        return std::move(mJournal);
    }

private:
    /** False at the end of the journal, or where it was cut off. */
    bool takeEntry()
    {
        const std::string_view line = nextLine(&mFile);
        const std::optional<Entry> entry = entryOf(line);
        if (!entry) {
            return false;
        }
        const bool isFirst = mJournal.mEntries.empty();
        if (isFirst != std::holds_alternative<NightBegin>(entry->mStep)) {
            fail(isFirst ? "step: the first line is not a night" : "step: a second night");
        }
        try {
            mOrder.add(entry->mStep);
        } catch (const base::CaseError& error) {
            fail(error.what());
        }
        mJournal.mEntries.push_back(*entry);
        mJournal.mWholeBytes = mFile.position();
        return true;
    }

    /** No value if this is the last line and it was cut off. */
    std::optional<Entry> entryOf(std::string_view line) const
    {
        if (line.empty() || line.back() != '\n') {
            return std::nullopt;
        }
        try {
            return parseEntry(line);
        } catch (const base::CaseError& error) {
            if (mFile.left() > 0) {
                fail(error.what());
            }
            return std::nullopt;
        }
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        throw base::CaseError(fmt::format("{}:{}: {}; expected a journal of vx-campaign run",
                                          mFile.name(), mJournal.mEntries.size() + 1, what));
    }

    base::InputFile mFile;
    StepOrder mOrder;
    Journal mJournal;
};
} // namespace

const NightBegin* Journal::night() const
{
    return mEntries.empty() ? nullptr : std::get_if<NightBegin>(&mEntries.front().mStep);
}

Journal readJournal(const std::string& path)
{
    return StepReader(path).readAll();
}

} // namespace journal
