#include "plan/Hashes.h"

#include <QCryptographicHash>

#include "base/InputFile.h"

namespace plan {

namespace {
constexpr size_t kHashedBytes = size_t{1} << 20U; ///< read at a time
} // namespace

std::string fileHash(const std::string& path)
{
    base::InputFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (std::string_view bytes = file.peek(kHashedBytes); !bytes.empty();
         bytes = file.peek(kHashedBytes)) {
        hash.addData(bytes.data(), static_cast<int>(bytes.size()));
        file.skip(bytes.size());
    }
    return hash.result().toHex().toStdString();
}

std::string textHash(const std::string& text)
{
    return QCryptographicHash::hash(QByteArray::fromStdString(text), QCryptographicHash::Sha256)
        .toHex()
        .toStdString();
}

} // namespace plan
