#pragma once

#include <QString>

namespace trovek {

/** A text of the form, which is checked word for word. */
inline QString operator""_s(const char* text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}

} // namespace trovek
