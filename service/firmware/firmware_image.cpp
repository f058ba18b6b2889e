#include "firmware/firmware_image.h"

#include "gcode/machine_definition.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <stdexcept>

namespace trovek::service {

namespace {

constexpr char kMark[] = "OVFW";
constexpr int kFormat = 1;
constexpr int kFormatAt = 4;
constexpr int kTypeAt = 5;
constexpr int kMajorAt = 6;
constexpr int kMinorAt = 8;
constexpr int kSizeAt = 10;
constexpr int kHeaderBytes = 16;

std::string number(const QByteArray& image, int offset)
{
    return std::to_string(qFromLittleEndian<quint16>(image.constData() + offset));
}

} // namespace

FirmwareHeader readFirmwareHeader(const QByteArray& image)
{
    if (image.size() < kHeaderBytes || !image.startsWith(kMark))
        throw std::runtime_error("is no firmware");
    if (image.at(kFormatAt) != kFormat)
        throw std::runtime_error("is firmware in a form that this version does not know");
    const quint32 behind = qFromLittleEndian<quint32>(image.constData() + kSizeAt);
    if (behind != static_cast<quint32>(image.size() - kHeaderBytes))
        throw std::runtime_error("is not complete");
    FirmwareHeader header;
    header.type = static_cast<Printer::Type>(static_cast<unsigned char>(image.at(kTypeAt)));
    if (machineTypeName(header.type).empty())
        throw std::runtime_error("is for a type of machine that this version does not know");
    header.version = FirmwareVersion(number(image, kMajorAt) + "." + number(image, kMinorAt));
    return header;
}

QByteArray firmwareHash(const QByteArray& image)
{
    return QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
}

} // namespace trovek::service
