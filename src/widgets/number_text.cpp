#include "widgets/number_text.h"

#include <QLineEdit>

#include <algorithm>

namespace trovek {

namespace {

bool isPointOrComma(QChar character)
{
    return character == QLatin1Char('.') || character == QLatin1Char(',');
}

} // namespace

QStringRef numberIn(const QString& text, const QString& prefix, const QString& suffix)
{
    QStringRef number(&text);
    if (number.startsWith(prefix))
        number = number.mid(prefix.size());
    if (number.endsWith(suffix))
        number.chop(suffix.size());
    return number;
}

QString withLocalDecimalSign(QString text, const QString& prefix, const QString& suffix,
                             const QLocale& locale)
{
    const QStringRef number = numberIn(text, prefix, suffix);
    const int begin = number.position();
    const int end = begin + number.size();
    std::replace_if(text.begin() + begin, text.begin() + end, isPointOrComma,
                    locale.decimalPoint());
    return text;
}

bool hasGroupSeparator(const QStringRef& number, const QLocale& locale)
{
    return std::any_of(number.begin(), number.end(), [&locale](QChar character) {
        return character.isSpace() ||
               (character == locale.groupSeparator() && character != locale.decimalPoint());
    });
}

bool hasSeparator(const QStringRef& number, const QLocale& locale)
{
    return hasGroupSeparator(number, locale) ||
           std::any_of(number.begin(), number.end(), isPointOrComma);
}

void leaveSuffix(QLineEdit* edit, int length, const QString& suffix)
{
    if (edit->cursorPosition() == length)
        edit->setCursorPosition(length - suffix.size());
}

} // namespace trovek
