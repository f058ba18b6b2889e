#pragma once

#include <QString>

#include <string>

namespace trovek {

/** From the client's UTF-8; bytes that are not UTF-8 show as U+FFFD. */
inline QString toQString(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/** To the client's UTF-8. */
inline std::string toStdString(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return std::string(utf8.constData(), static_cast<std::size_t>(utf8.size()));
}

} // namespace trovek
