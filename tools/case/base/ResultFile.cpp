#include "base/ResultFile.h"

#include <unistd.h>

#include <QFileInfo>

#include "base/CaseError.h"

namespace base {

namespace {
constexpr size_t kPendingBytes = size_t{1} << 16U;
} // namespace

ResultFile::ResultFile(const std::string& name) : mName(name.empty() ? "standard output" : name)
{
    if (name.empty()) {
        mDevice = &mStandardOutput;
        if (!mStandardOutput.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            fail(mStandardOutput.errorString().toStdString());
        }
        return;
    }
    const QString path = QString::fromStdString(name);
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        fail("expected a regular file or a new name");
    }
    mDevice = &mSaved;
    mSaved.setFileName(path);
    if (!mSaved.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        fail(mSaved.errorString().toStdString());
    }
}

ResultFile::~ResultFile() = default;

void ResultFile::write(std::string_view bytes)
{
    mPending += bytes;
    if (mPending.size() >= kPendingBytes) {
        flush();
    }
}

void ResultFile::commit()
{
    flush();
    if (mDevice == &mSaved && !mSaved.commit()) {
        fail(mSaved.errorString().toStdString());
    }
}

void ResultFile::flush()
{
    const auto size = static_cast<qint64>(mPending.size());
    if (mDevice->write(mPending.data(), size) != size) {
        fail(mDevice->errorString().toStdString());
    }
    mPending.clear();
}

void ResultFile::fail(const std::string& reason) const
{
    throw CaseError(mName + ": " + reason);
}

} // namespace base
