#include "onboard/onboard_image.h"

#include <QtEndian>

#include <tuple>

namespace trovek::service {

namespace {

constexpr char kMark[] = {'O', 'V'};
constexpr int kTypeAt = 2;
constexpr int kMajorAt = 4;
constexpr int kMinorAt = 6;
constexpr int kChecksumAt = 8;

quint16 number(const QByteArray& image, int offset)
{
    return qFromLittleEndian<quint16>(image.constData() + offset);
}

void setNumber(QByteArray& image, int offset, int value)
{
    qToLittleEndian(static_cast<quint16>(value), image.data() + offset);
}

quint16 checksum(QByteArray image)
{
    setNumber(image, kChecksumAt, 0);
    return qChecksum(image.constData(), static_cast<uint>(image.size()));
}

} // namespace

bool OnboardLayout::operator<(const OnboardLayout& other) const
{
    return std::tie(type, major, minor) < std::tie(other.type, other.major, other.minor);
}

QByteArray sealedImage(QByteArray image, const OnboardLayout& layout)
{
    image.replace(0, kOnboardHeaderBytes, QByteArray(kOnboardHeaderBytes, '\0'));
    image.replace(0, sizeof kMark, QByteArray(kMark, sizeof kMark));
    image[kTypeAt] = static_cast<char>(layout.type);
    setNumber(image, kMajorAt, layout.major);
    setNumber(image, kMinorAt, layout.minor);
    setNumber(image, kChecksumAt, checksum(image));
    return image;
}

std::optional<OnboardLayout> layoutOfImage(const QByteArray& image)
{
    if (image.size() != kOnboardBytes || !image.startsWith(QByteArray(kMark, sizeof kMark)) ||
        number(image, kChecksumAt) != checksum(image)) {
        return std::nullopt;
    }
    OnboardLayout layout;
    layout.type = static_cast<Printer::Type>(static_cast<unsigned char>(image.at(kTypeAt)));
    layout.major = number(image, kMajorAt);
    layout.minor = number(image, kMinorAt);
    return layout;
}

} // namespace trovek::service
