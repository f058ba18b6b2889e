#include "trovek-ui/util.h"

#include "util/text_editor.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QObject>

#include <stdexcept>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src/util/util";

QString doublePicturePath(const QString& path)
{
    const QFileInfo file(path);
    return file.dir().filePath(
        QStringLiteral("%1@2x.%2").arg(file.completeBaseName(), file.suffix()));
}

} // namespace

QPixmap loadPixmap(const QString& path)
{
    if (!QFile::exists(path)) {
        TROVEK_LOG(0) << "Missing " << toStdString(path) << std::endl;
        throw std::runtime_error("Pixmap file not found");
    }
    // QIcon finds the double picture by itself, QPixmap does not.
    const QString doublePath = doublePicturePath(path);
    if (qGuiApp->devicePixelRatio() > 1 && QFile::exists(doublePath)) {
        QPixmap pixmap(doublePath);
        pixmap.setDevicePixelRatio(2);
        return pixmap;
    }
    return QPixmap(path);
}

QIcon loadButtonIcon(const QString& base)
{
    const QPixmap up = loadPixmap(base + QLatin1String("_up.png"));
    const QPixmap down = loadPixmap(base + QLatin1String("_down.png"));
    const QPixmap over = loadPixmap(base + QLatin1String("_over.png"));
    QIcon icon;
    icon.addPixmap(up, QIcon::Normal, QIcon::Off);
    icon.addPixmap(over, QIcon::Active, QIcon::Off);
    icon.addPixmap(down, QIcon::Selected, QIcon::Off);
    return icon;
}

void openInNotepad(const QString& path)
{
    startTextEditor(path);
}

QString firmwareVersionToString(const FirmwareVersion& version)
{
    return version.valid() ? toQString(version.str()) : QObject::tr("Invalid version number");
}

} // namespace trovek
