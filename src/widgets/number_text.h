#pragma once

#include <QLocale>
#include <QString>

class QLineEdit;

namespace trovek {

/** The part of a number box's text between prefix and suffix, of which either may be missing. */
QStringRef numberIn(const QString& text, const QString& prefix, const QString& suffix);

/** The text with every point and comma of its number as the locale's decimal sign. */
QString withLocalDecimalSign(QString text, const QString& prefix, const QString& suffix,
                             const QLocale& locale);

/** Whether there is a blank or the locale's group separator that is not its decimal sign too. */
bool hasGroupSeparator(const QStringRef& number, const QLocale& locale);

/** Whether there is any sign that no whole number has. */
bool hasSeparator(const QStringRef& number, const QLocale& locale);

/**
 * Backspace inside the suffix deletes nothing and moves the cursor to the end of the text; this
 * brings it before the suffix, where the next one deletes a digit.
 * @param length of the text before the key
 */
void leaveSuffix(QLineEdit* edit, int length, const QString& suffix);

} // namespace trovek
