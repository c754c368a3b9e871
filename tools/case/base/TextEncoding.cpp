#include "base/TextEncoding.h"

#include <QTextCodec>

namespace base {

bool isEncoding(const std::string& name)
{
    return QTextCodec::codecForName(name.c_str()) != nullptr;
}

DecodedText decodeText(std::string_view bytes, const std::string& encoding)
{
    const QTextCodec* const codec =
        QTextCodec::codecForName(encoding.empty() ? "UTF-8" : encoding.c_str());
    QTextCodec::ConverterState state;
    const QString text = codec->toUnicode(bytes.data(), static_cast<int>(bytes.size()), &state);
    const bool isWhole = state.invalidChars == 0 && state.remainingChars == 0;
    if (isWhole || !encoding.empty()) {
        return {text.toStdString(), false};
    }
    return {QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size())).toStdString(), true};
}

} // namespace base
