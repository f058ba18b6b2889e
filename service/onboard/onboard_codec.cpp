#include "onboard/onboard_codec.h"

#include <QLocale>
#include <QtEndian>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace trovek::service {

namespace {

constexpr double kFixedPointParts = 256.0;

/** One end of the range, as a user would write it. */
std::string endText(double end, const OnboardEntry& entry)
{
    if (entry.isReal())
        return QString::number(end, 'g', QLocale::FloatingPointShortest).toStdString();
    // The end of the widest type is the only one that a double cannot hold.
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    return std::to_string(end < static_cast<double>(most) ? static_cast<std::int64_t>(end) : most);
}

bool isPrintable(char character)
{
    return character >= ' ' && character <= '~';
}

std::string whatIsWrongWithText(const Json::Value& value, const OnboardEntry& entry)
{
    if (!value.isString())
        return "must be a text";
    const std::string text = value.asString();
    if (!std::all_of(text.begin(), text.end(), isPrintable))
        return "must hold nothing but letters, digits and signs of ASCII";
    if (text.size() >= static_cast<std::size_t>(entry.elementBytes))
        return "must have at most " + std::to_string(entry.elementBytes - 1) + " characters";
    return std::string();
}

std::string whatIsWrongWithList(std::int64_t number, const OnboardEntry& entry)
{
    if (entry.allowed.empty() ||
        std::find(entry.allowed.begin(), entry.allowed.end(), number) != entry.allowed.end())
        return std::string();
    std::string all;
    for (const std::int64_t one : entry.allowed)
        all += (all.empty() ? "" : ", ") + std::to_string(one);
    return "must be one of " + all;
}

template <typename T>
QByteArray bytesOf(T number)
{
    QByteArray bytes(sizeof(T), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

template <typename T>
T numberOf(const QByteArray& bytes)
{
    return qFromLittleEndian<T>(bytes.constData());
}

/** The bits of a real number travel as those of an integer of its size. */
template <typename Bits, typename Real>
QByteArray bytesOfReal(Real number)
{
    static_assert(sizeof(Bits) == sizeof(Real));
    Bits bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bytesOf(bits);
}

/** What is told of the largest one is above what a conversion takes. */
float singleOf(double number)
{
    return static_cast<float>(std::clamp(number, -double(FLT_MAX), double(FLT_MAX)));
}

template <typename Bits, typename Real>
std::optional<Json::Value> realOf(const QByteArray& bytes)
{
    const Bits bits = numberOf<Bits>(bytes);
    Real number = 0;
    std::memcpy(&number, &bits, sizeof number);
    if (!std::isfinite(number))
        return std::nullopt;
    // The fewest digits that say the same: 0.1 in single precision is not told as
    // 0.10000000149011612, so what a user has entered is what is read again.
    char digits[64];
    const auto written = std::to_chars(digits, digits + sizeof digits, number);
    double read = 0;
    std::from_chars(digits, written.ptr, read);
    return Json::Value(read);
}

std::optional<Json::Value> textOf(const QByteArray& bytes)
{
    const int end = bytes.indexOf('\0');
    if (end < 0 || !std::all_of(bytes.begin(), bytes.begin() + end, isPrintable))
        return std::nullopt;
    return Json::Value(bytes.left(end).toStdString());
}

} // namespace

std::string whatIsWrongWith(const Json::Value& value, const OnboardEntry& entry)
{
    if (entry.isText())
        return whatIsWrongWithText(value, entry);
    const bool isWhole = value.type() == Json::intValue || value.type() == Json::uintValue;
    if (!isWhole && (!entry.isReal() || value.type() != Json::realValue))
        return entry.isReal() ? "must be a number" : "must be a whole number";
    const double number = value.asDouble();
    // As a double 2 to the power 63 is no larger than the largest 64-bit number.
    const bool isTooWide = !entry.isReal() && !value.isInt64();
    if (isTooWide || !(number >= entry.least) || !(number <= entry.most)) {
        return "must be from " + endText(entry.least, entry) + " to " + endText(entry.most, entry);
    }
    return entry.isReal() ? std::string() : whatIsWrongWithList(value.asInt64(), entry);
}

QByteArray encodeElement(const Json::Value& value, const OnboardEntry& entry)
{
    if (entry.fixedPoint) {
        return bytesOf(static_cast<qint16>(std::lround(value.asDouble() * kFixedPointParts)));
    }
    switch (entry.type) {
    case 'B':
    case 'b':
        return QByteArray(1, static_cast<char>(value.asInt64()));
    case 'H':
    case 'h':
        return bytesOf(static_cast<quint16>(value.asInt64()));
    case 'I':
    case 'i':
        return bytesOf(static_cast<quint32>(value.asInt64()));
    case 'q':
        return bytesOf(static_cast<qint64>(value.asInt64()));
    case 'f':
        return bytesOfReal<quint32>(singleOf(value.asDouble()));
    case 'd':
        return bytesOfReal<quint64>(value.asDouble());
    default:
        return QByteArray::fromStdString(value.asString()).leftJustified(entry.elementBytes, '\0');
    }
}

std::optional<Json::Value> decodeElement(const QByteArray& bytes, const OnboardEntry& entry)
{
    if (entry.fixedPoint)
        return Json::Value(numberOf<qint16>(bytes) / kFixedPointParts);
    switch (entry.type) {
    case 'B':
        return Json::Value(numberOf<quint8>(bytes));
    case 'b':
        return Json::Value(numberOf<qint8>(bytes));
    case 'H':
        return Json::Value(numberOf<quint16>(bytes));
    case 'h':
        return Json::Value(numberOf<qint16>(bytes));
    case 'I':
        return Json::Value(Json::UInt64(numberOf<quint32>(bytes)));
    case 'i':
        return Json::Value(numberOf<qint32>(bytes));
    case 'q':
        return Json::Value(Json::Int64(numberOf<qint64>(bytes)));
    case 'f':
        return realOf<quint32, float>(bytes);
    case 'd':
        return realOf<quint64, double>(bytes);
    default:
        return textOf(bytes);
    }
}

} // namespace trovek::service
