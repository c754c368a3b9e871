#include "base/ResultFile.h"

#include <QFileInfo>

#include <algorithm>

#include "base/CaseError.h"
#include "base/StandardOutput.h"

namespace base {

namespace {
constexpr size_t kPendingBytes = size_t{1} << 16U;
} // namespace

ResultFile::ResultFile(const std::string& name, Existing existing) : mName(name)
{
    if (mName.empty()) {
        return;
    }
    const QString path = QString::fromStdString(mName);
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        fail("expected a regular file or a new name");
    }
    if (info.exists() && existing == Existing::Keep) {
        mKept.setFileName(path);
        if (!mKept.open(QIODevice::ReadOnly)) {
            fail(mKept.errorString().toStdString());
        }
        return;
    }
    mFile.setFileName(path);
    if (!mFile.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        fail(mFile.errorString().toStdString());
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
    if (mKept.isOpen()) {
        compare({}); // the kept file must end here
        return;
    }
    if (!mName.empty() && !mFile.commit()) {
        fail(mFile.errorString().toStdString());
    }
}

void ResultFile::flush()
{
    if (mName.empty()) {
        writeToStandardOutput(mPending);
    } else if (mKept.isOpen()) {
        compare(mPending);
    } else {
        writeToFile(mPending);
    }
    mPending.clear();
}

/** Compares bytes with the next ones of the kept file. Without bytes, expects its end. */
void ResultFile::compare(std::string_view bytes)
{
    const QByteArray kept = mKept.read(std::max<qint64>(qint64(bytes.size()), 1));
    if (bytes != std::string_view(kept.constData(), size_t(kept.size()))) {
        fail("exists with other content; remove it or name another directory");
    }
}

/** A disk that fills up takes a part of the bytes; only the next write reports the reason. */
void ResultFile::writeToFile(std::string_view bytes)
{
    while (!bytes.empty()) {
        const qint64 written = mFile.write(bytes.data(), static_cast<qint64>(bytes.size()));
        if (written <= 0) {
            fail(mFile.errorString().toStdString());
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

void ResultFile::fail(const std::string& reason) const
{
    throw CaseError(mName + ": " + reason);
}

} // namespace base
