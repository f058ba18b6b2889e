#pragma once

#include <trovek/firmware_version.h>
#include <trovek/printer.h>

#include <QByteArray>

#include <optional>

namespace trovek::service {

/** Bytes of an onboard memory. */
constexpr int kOnboardBytes = 4096;
/** At its beginning, where no setting lies: whose image it is, and a checksum. */
constexpr int kOnboardHeaderBytes = 16;
/** What an erased memory holds. */
constexpr char kErasedByte = '\xff';

/** Which firmware laid out an image: its settings make sense to that one only. */
struct OnboardLayout
{
    Printer::Type type = Printer::UnknownType;
    int major = 0;
    int minor = 0;

    bool operator==(const OnboardLayout& other) const
    {
        return type == other.type && major == other.major && minor == other.minor;
    }
    bool operator<(const OnboardLayout& other) const;
};

/** The image with a header that fits its bytes. @param image of kOnboardBytes */
QByteArray sealedImage(QByteArray image, const OnboardLayout& layout);

/** Nothing for an image that is erased, too short or damaged. */
std::optional<OnboardLayout> layoutOfImage(const QByteArray& image);

} // namespace trovek::service
