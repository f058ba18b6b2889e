#include "catalogue_folder.h"

#include <rpcwire/json_text.h>
#include <service/gcode/machine_definition.h>
#include <trovek/firmware_version.h>
#include <trovek/text.h>

#include <QCryptographicHash>
#include <QFile>
#include <QtEndian>

namespace trovek {

namespace {

template <typename Number>
void setNumber(QByteArray& bytes, int offset, int value)
{
    qToLittleEndian(static_cast<Number>(value), bytes.data() + offset);
}

} // namespace

QByteArray firmwareImage(Printer::Type type, int majorVersion, int minorVersion, int payloadBytes)
{
    QByteArray head("OVFW", 4);
    head.append(12, '\0');
    head[4] = 1;
    head[5] = static_cast<char>(type);
    setNumber<quint16>(head, 6, majorVersion);
    setNumber<quint16>(head, 8, minorVersion);
    setNumber<quint32>(head, 10, payloadBytes);
    return head + QByteArray(payloadBytes, static_cast<char>(minorVersion));
}

CatalogueFolder::CatalogueFolder()
    : index(Json::objectValue)
{
    index["firmware"] = Json::Value(Json::arrayValue);
    writeIndex();
}

void CatalogueFolder::add(const std::string& machine, Printer::Type type,
                          const std::string& version, const std::string& description)
{
    const FirmwareVersion number(version);
    const QByteArray image = firmwareImage(type, number.major(), number.minor());
    const QString name =
        toQString(service::machineTypeName(type) + "-" + version) + QStringLiteral(".fw");
    writeFile(name, image);
    Json::Value entry = entryFor(name, image);
    entry["machine"] = machine;
    entry["type"] = service::machineTypeName(type);
    entry["version"] = version;
    entry["description"] = description;
    index["firmware"].append(entry);
    writeIndex();
}

Json::Value CatalogueFolder::entryFor(const QString& file, const QByteArray& image)
{
    Json::Value entry(Json::objectValue);
    entry["machine"] = "fabrino_2";
    entry["type"] = "fabrino_2";
    entry["version"] = "7.6";
    entry["description"] = "";
    entry["file"] = toStdString(file);
    entry["size"] = image.size();
    entry["sha256"] =
        QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex().toStdString();
    return entry;
}

void CatalogueFolder::writeIndex() const
{
    writeFile(QStringLiteral("catalogue.json"),
              QByteArray::fromStdString(rpcwire::toJsonLine(index)));
}

void CatalogueFolder::writeFile(const QString& name, const QByteArray& bytes) const
{
    QFile file(filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("The test cannot write %s", qPrintable(file.fileName()));
}

QByteArray CatalogueFolder::readFile(const QString& name) const
{
    QFile file(filePath(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The test cannot read %s", qPrintable(file.fileName()));
    return file.readAll();
}

} // namespace trovek
