#include "firmware/firmware_cache.h"

#include "firmware/firmware_image.h"
#include "gcode/machine_definition.h"
#include "state_file.h"
#include "system.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\firmware\\firmware_cache";

namespace {

/** The hash of the image in a file of this name; empty for any other file's. */
QByteArray hashInName(const QString& name)
{
    static const QRegularExpression& form =
        *new QRegularExpression(QStringLiteral("\\A[a-z0-9_]+-\\d+\\.\\d+-([0-9a-f]{64})\\.fw\\z"));
    const QRegularExpressionMatch match = form.match(name);
    return match.hasMatch() ? match.captured(1).toLatin1() : QByteArray();
}

QString fileName(const QByteArray& image)
{
    const FirmwareHeader header = readFirmwareHeader(image);
    return toQString(machineTypeName(header.type) + "-" + header.version.str()) + QLatin1Char('-') +
           QString::fromLatin1(firmwareHash(image)) + QStringLiteral(".fw");
}

JsonRpcException damaged(const QString& path)
{
    return wire::makeError(
        wire::error::kFirmwareImage,
        toStdString(QStringLiteral("The downloaded file %1 is damaged").arg(path)));
}

} // namespace

FirmwareCache::FirmwareCache(QString folder)
    : m_folder(std::move(folder))
{}

std::string FirmwareCache::add(const QByteArray& image)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    try {
        makePrivateFolder(m_folder);
        const QString path = QDir(m_folder).filePath(fileName(image));
        if (!writeStateBytes(path, image)) {
            throw std::runtime_error(toStdString(
                QStringLiteral("Cannot write into %1; is the disk full?").arg(m_folder)));
        }
        forgetOldOnes(path);
        return toStdString(path);
    } catch (const std::exception& error) {
        throw wire::makeError(wire::error::kFirmwareCache,
                              std::string("The firmware cannot be kept: ") + error.what());
    }
}

QByteArray FirmwareCache::read(const std::string& path) const
{
    const QFileInfo info(toQString(path));
    const QByteArray hash = hashInName(info.fileName());
    const QString folder = QFileInfo(m_folder).canonicalFilePath();
    const bool isOurs = !hash.isEmpty() && info.isAbsolute() && info.isFile() &&
                        !info.isSymLink() && !folder.isEmpty() &&
                        QFileInfo(info.path()).canonicalFilePath() == folder;
    if (!isOurs) {
        throw wire::makeError(wire::error::kFirmwareUnavailable,
                              "This is no firmware that the service has downloaded: " + path);
    }
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        throw damaged(info.filePath());
    const QByteArray image = file.read(kFirmwareBytesAtMost + 1LL);
    if (firmwareHash(image) != hash)
        throw damaged(info.filePath());
    return image;
}

void FirmwareCache::forgetOldOnes(const QString& newest) const
{
    int kept = 1;
    const QDir folder(m_folder);
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Time)) {
        if (hashInName(file.fileName()).isEmpty() ||
            file.fileName() == QFileInfo(newest).fileName())
            continue;
        if (++kept > kKept && !QFile::remove(file.filePath()))
            TROVEK_LOG(0) << "Cannot remove " << toStdString(file.filePath()) << std::endl;
    }
}

} // namespace trovek::service
