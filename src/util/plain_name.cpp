#include "util/plain_name.h"

namespace trovek {

namespace {

bool startsWithDrive(const QString& name)
{
    return name.size() > 1 && name.at(1) == QLatin1Char(':') && name.at(0).unicode() < 0x80 &&
           name.at(0).isLetter();
}

} // namespace

bool isPlainName(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) ||
        name.contains(QChar(QChar::Null)))
        return false;
    return !name.startsWith(QLatin1Char(':')) && !startsWithDrive(name);
}

} // namespace trovek
