#include "pathscope/toolpath_texts.h"

#include "pathscope/toolpath_scene.h"

#include <QCoreApplication>
#include <QLocale>

#include <cmath>

namespace pathscope {
namespace {

QString tr(const char* text, int count = -1)
{
    return QCoreApplication::translate("pathscope::Texts", text, nullptr, count);
}

QString number(double value, int decimals)
{
    return QLocale().toString(value, 'f', decimals);
}

QString filamentLine(int tool, double millimetres, const SceneSetting& setting)
{
    const auto index = static_cast<std::size_t>(tool);
    const QString amount = filamentText(millimetres);
    if (index >= setting.materials.size() || setting.materials[index] == Orvane::UnknownMaterial)
        return tr("Extruder %1: %2").arg(tool + 1).arg(amount);
    return tr("Extruder %1 (%2): %3")
        .arg(QString::number(tool + 1), Orvane::materialToHumanString(setting.materials[index]),
             amount);
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

QString sizeText(const Bounds& bounds)
{
    if (!bounds.valid)
        return QString();
    QStringList sides;
    for (std::size_t axis = 0; axis < 3; ++axis)
        sides.append(number(bounds.max[axis] - bounds.min[axis], 1));
    return tr("%1 x %2 x %3 mm").arg(sides[0], sides[1], sides[2]);
}

double printSeconds(const Toolpaths& toolpaths)
{
    return toolpaths.estimates.seconds >= 0 ? toolpaths.estimates.seconds : toolpaths.total.seconds;
}

QStringList totalsLines(const Toolpaths& toolpaths, const SceneSetting& setting)
{
    QStringList lines;
    lines.append(tr("Layers: %1").arg(QLocale().toString(qulonglong(toolpaths.layers.size()))));
    if (const QString size = sizeText(toolpaths.bounds); !size.isEmpty())
        lines.append(tr("Size: %1").arg(size));
    if (const QString time = durationText(printSeconds(toolpaths)); !time.isEmpty())
        lines.append(tr("Time: %1").arg(time));
    for (int tool = 0; tool < kToolCount; ++tool) {
        const double filament = toolpaths.toolAmounts[static_cast<std::size_t>(tool)].filament;
        if (filament > 0)
            lines.append(filamentLine(tool, filament, setting));
    }
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
