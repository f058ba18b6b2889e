#include "file_kinds.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

namespace ostrand {
namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ostrand::FileKinds", text);
}

QStringList gcodeSuffixes()
{
    return {QStringLiteral("gcode"), QStringLiteral("gco"), QStringLiteral("g")};
}

QStringList modelSuffixes()
{
    return {QStringLiteral("stl"), QStringLiteral("obj"), QStringLiteral("3mf"),
            QStringLiteral("amf")};
}

} // namespace

FileKind fileKindOf(const QString& path)
{
    if (trovek::FileFilter(tr("G-code"), gcodeSuffixes()).acceptsFileName(path))
        return FileKind::GCode;
    if (trovek::FileFilter(tr("3D models"), modelSuffixes()).acceptsFileName(path))
        return FileKind::Model;
    return FileKind::Unknown;
}

QString fileKindText(FileKind kind)
{
    switch (kind) {
    case FileKind::GCode:
        return tr("G-code");
    case FileKind::Model:
        return tr("3D model");
    case FileKind::Unknown:
        break;
    }
    return tr("Unknown kind of file");
}

trovek::FileFilterList openFileFilters()
{
    return trovek::FileFilterList(
        {trovek::FileFilter(tr("G-code and models"), gcodeSuffixes() + modelSuffixes()),
         trovek::FileFilter(tr("G-code"), gcodeSuffixes()),
         trovek::FileFilter(tr("3D models"), modelSuffixes())});
}

QString fileSizeText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace ostrand
