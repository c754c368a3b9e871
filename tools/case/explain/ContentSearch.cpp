#include "explain/ContentSearch.h"

#include <algorithm>
#include <string_view>

namespace explain {

namespace {
constexpr unsigned kNumberBits = 32;

quint64 hashOf(const SampleContent& content)
{
    const size_t hash = std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(content.data()), sizeof(content)});
    return static_cast<quint64>(hash) << kNumberBits;
}

/** Whether the file has the contents from this sample on, up to the end of the shorter one. */
bool continues(const PlayedFile& file, size_t sample, const std::vector<SampleContent>& contents)
{
    const size_t count = std::min(contents.size(), file.size() - sample);
    for (size_t i = 0; i < count; ++i) {
        if (file.samples()[sample + i] != contents[i]) {
            return false;
        }
    }
    return true;
}
} // namespace

std::vector<Positions> ContentSearch::scan(const std::vector<SampleContent>& contents) const
{
    std::vector<Positions> all;
    std::vector<size_t> samples;
    for (size_t index = 0; index < mPlan.files().size(); ++index) {
        const PlayedFile& file = mPlan.files()[index];
        samples.clear();
        for (size_t sample = 0; sample < file.size(); ++sample) {
            if (continues(file, sample, contents)) {
                samples.push_back(sample);
            }
        }
        addPositions(index, samples, &all);
    }
    return all;
}

std::vector<Positions> ContentSearch::find(const std::vector<SampleContent>& contents) const
{
    if (mIndex.empty()) {
        makeIndex();
    }
    const quint64 hash = hashOf(contents.front());
    std::vector<Positions> all;
    std::vector<size_t> samples;
    size_t index = 0;
    size_t begin = 0; // number of the file's first sample among all samples
    for (auto it = std::lower_bound(mIndex.begin(), mIndex.end(), hash);
         it != mIndex.end() && *it >> kNumberBits == hash >> kNumberBits; ++it) {
        const size_t number = *it & ~quint32{0};
        while (number >= begin + mPlan.files()[index].size()) {
            addPositions(index, samples, &all);
            samples.clear();
            begin += mPlan.files()[index++].size();
        }
        if (continues(mPlan.files()[index], number - begin, contents)) {
            samples.push_back(number - begin);
        }
    }
    addPositions(index, samples, &all);
    return all;
}

void ContentSearch::makeIndex() const
{
    quint32 number = 0;
    for (const PlayedFile& file : mPlan.files()) {
        for (size_t sample = 0; sample < file.size(); ++sample) {
            mIndex.push_back(hashOf(file.samples()[sample]) | number++);
        }
    }
    std::sort(mIndex.begin(), mIndex.end());
}

/** Like PlayedFile::repeats(), but remembers the last result. */
bool ContentSearch::repeats(size_t file, size_t first, size_t end, size_t stride) const
{
    mRuns.resize(mPlan.files().size());
    RepeatedRun& run = mRuns[file];
    const bool isSameStride = run.mStride == stride;
    if (isSameStride && run.mFirst <= first && end <= run.mEnd) {
        return true;
    }
    if (!mPlan.files()[file].repeats(first, end, stride)) {
        return false;
    }
    const bool adjoins = isSameStride && first <= run.mEnd && run.mFirst <= end;
    run = adjoins ? RepeatedRun{stride, std::min(run.mFirst, first), std::max(run.mEnd, end)}
                  : RepeatedRun{stride, first, end};
    return true;
}

/** Combines the samples into as few Positions as possible. Requires: samples in rising order. */
void ContentSearch::addPositions(size_t file, const std::vector<size_t>& samples,
                                 std::vector<Positions>* all) const
{
    for (size_t i = 0; i < samples.size();) {
        Positions positions{file, samples[i], 0, 1};
        for (++i; i < samples.size(); ++i, ++positions.mCount) {
            const size_t before = samples[i - 1];
            const size_t stride = samples[i] - before;
            const bool isNext =
                positions.mCount == 1 ||
                (stride == positions.mStride && repeats(file, before - stride, before, stride));
            if (!isNext) {
                break;
            }
            positions.mStride = stride;
        }
        all->push_back(positions);
    }
}

} // namespace explain
