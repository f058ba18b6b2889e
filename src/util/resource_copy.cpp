#include "util/resource_copy.h"

#include "util/plain_name.h"

#include <QDataStream>
#include <QFile>

#include <stdexcept>

namespace trovek {

namespace {

/** Qt 5 keeps to derived classes what is a folder, and what it holds. */
struct ResourceAccess : QResource
{
    using QResource::children;
    using QResource::isFile;
};

bool isFile(const QResource& resource)
{
    return (resource.*&ResourceAccess::isFile)();
}

QStringList children(const QResource& resource)
{
    return (resource.*&ResourceAccess::children)();
}

void writeFile(const QResource& resource, const QDir& dstDir, const QString& dstName)
{
    QFile file(dstDir.absoluteFilePath(dstName));
    if (!isPlainName(dstName) || !file.open(QIODevice::WriteOnly))
        throw std::runtime_error("Failed to open QResource copy for writing");
    const QByteArray data = qResourceData(resource);
    QDataStream stream(&file);
    if (stream.writeRawData(data.constData(), data.size()) != data.size() || !file.flush())
        throw std::runtime_error("Failed to write QResource copy");
}

} // namespace

void copyQResource(const QResource& resource, const QDir& dstDir, const QString& dstName)
{
    if (!resource.isValid())
        throw std::runtime_error("Failed to copy invalid QResource");
    if (isFile(resource)) {
        writeFile(resource, dstDir, dstName);
        return;
    }
    QDir copy(dstDir);
    if (!isPlainName(dstName) || !copy.mkdir(dstName) || !copy.cd(dstName))
        throw std::runtime_error("Failed to create QResource copy directory");
    for (const QString& name : children(resource))
        copyQResource(QResource(resource.absoluteFilePath() + QLatin1Char('/') + name), copy, name);
}

QByteArray qResourceData(const QResource& resource)
{
    if (!resource.isValid())
        throw std::runtime_error("Failed to get data for invalid QResource");
    if (!isFile(resource))
        throw std::runtime_error("Failed to get data for non-file QResource");
    if (resource.compressionAlgorithm() == QResource::NoCompression)
        return QByteArray(reinterpret_cast<const char*>(resource.data()),
                          static_cast<int>(resource.size()));
    return resource.uncompressedData();
}

} // namespace trovek
