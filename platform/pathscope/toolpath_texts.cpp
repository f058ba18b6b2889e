#include "pathscope/toolpath_texts.h"

#include "pathscope/toolpath_scene.h"

#include <QCoreApplication>
#include <QLocale>

#include <cmath>

namespace pathscope {
namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("pathscope::Texts", text);
}

QString number(double value, int decimals)
{
    return QLocale().toString(value, 'f', decimals);
}

QString filamentLine(const ToolTotal& tool)
{
    // A number and its unit stay on one line.
    QString length = filamentText(tool.millimetres);
    length.replace(QLatin1Char(' '), QChar::Nbsp);
    if (tool.grams < 0)
        return tr("%1, %2").arg(tool.name, length);
    return tr("%1, %2, %3\u00a0g")
        .arg(tool.name, length, number(tool.grams, tool.grams < 10 ? 1 : 0));
}

} // namespace

QString durationText(double seconds)
{
    // Longer than any print, and still a number that can be divided.
    constexpr double kLongest = 1e12;
    if (!(seconds >= 0) || seconds > kLongest)
        return QString();
    const auto whole = static_cast<qint64>(std::llround(seconds));
    const qint64 minutes = whole / 60;
    const qint64 hours = minutes / 60;
    if (minutes == 0)
        return tr("%1 s").arg(whole);
    if (hours == 0)
        return tr("%1 min %2 s").arg(minutes).arg(whole % 60);
    if (hours < 24)
        return tr("%1 h %2 min").arg(hours).arg(minutes % 60);
    return tr("%1 d %2 h").arg(hours / 24).arg(hours % 24);
}

QString filamentText(double millimetres)
{
    return tr("%1 m").arg(number(millimetres / 1000, 2));
}

QStringList totalsLines(const Totals& totals)
{
    QStringList lines{tr("Layers: %1").arg(QLocale().toString(totals.layers))};
    if (totals.width > 0 || totals.depth > 0 || totals.height > 0)
        lines.append(
            tr("Size: %1 x %2 x %3 mm")
                .arg(number(totals.width, 1), number(totals.depth, 1), number(totals.height, 1)));
    if (const QString time = durationText(totals.seconds); !time.isEmpty())
        lines.append(tr("Time: %1").arg(time));
    for (const ToolTotal& tool : totals.tools)
        lines.append(filamentLine(tool));
    return lines;
}

QString skippedText(const Skipped& skipped)
{
    const std::uint64_t count = skipped.lines + skipped.badNumbers + skipped.badArcs;
    if (count == 0)
        return QString();
    if (count == 1)
        return tr("1 line of the file was not understood.");
    return tr("%1 lines of the file were not understood.")
        .arg(QLocale().toString(qulonglong(count)));
}

} // namespace pathscope
