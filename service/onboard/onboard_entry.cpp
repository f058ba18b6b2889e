#include "onboard/onboard_entry.h"

#include "onboard/onboard_codec.h"
#include "onboard/onboard_image.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr int kTextBytes = 16;
constexpr const char* kMembers[] = {"offset",         "type",        "factory",
                                    "floating_point", "axis_expand", "constraints",
                                    "unit",           "tooltip",     "length"};

struct TypeTraits
{
    char code;
    int bytes;
    double least;
    double most;
};

constexpr double kTwoTo63 = 9223372036854775808.0;
// FLT_MAX as it is told, a little above it.
constexpr double kLargestSingle = 3.4028235e38;
constexpr TypeTraits kTypes[] = {
    {'B', 1, 0, 255},
    {'b', 1, -128, 127},
    {'H', 2, 0, 65535},
    {'h', 2, -32768, 32767},
    {'I', 4, 0, 4294967295.0},
    {'i', 4, -2147483648.0, 2147483647},
    {'q', 8, -kTwoTo63, kTwoTo63},
    {'f', 4, -kLargestSingle, kLargestSingle},
    {'d', 8, -DBL_MAX, DBL_MAX},
    {'s', kTextBytes, 0, 0},
};
/** A signed high byte and a low byte of 256ths. */
constexpr TypeTraits kFixedPoint = {'H', 2, -128, 127.99609375};

std::string text(const Json::Value& source, const char* member)
{
    const Json::Value& value = source[member];
    if (!value.isNull() && !value.isString())
        throw std::runtime_error(std::string("\"") + member + "\" is not a text");
    return value.isString() ? value.asString() : std::string();
}

bool flag(const Json::Value& source, const char* member)
{
    const std::string value = text(source, member);
    if (!value.empty() && value != "True")
        throw std::runtime_error(std::string("\"") + member + "\" can only be \"True\"");
    return !value.empty();
}

void checkMembers(const Json::Value& source)
{
    for (const std::string& name : source.getMemberNames()) {
        if (std::find(std::begin(kMembers), std::end(kMembers), name) == std::end(kMembers))
            throw std::runtime_error("has an unknown member \"" + name + "\"");
    }
}

void readType(const Json::Value& source, OnboardEntry& entry)
{
    const std::string codes = text(source, "type");
    if (codes.empty() || codes.find_first_not_of(codes[0]) != std::string::npos)
        throw std::runtime_error("\"type\" must be one letter, once for each element");
    entry.type = codes[0];
    entry.fixedPoint = flag(source, "floating_point");
    if (entry.fixedPoint && entry.type != 'H')
        throw std::runtime_error("only an \"H\" can be a fixed-point number");
    if (flag(source, "axis_expand") && codes != "B")
        throw std::runtime_error("only a single \"B\" can be a field of axis bits");
    const auto traits = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [&](const TypeTraits& t) { return t.code == entry.type; });
    if (traits == std::end(kTypes))
        throw std::runtime_error("\"type\" has an unknown letter");
    const TypeTraits& kind = entry.fixedPoint ? kFixedPoint : *traits;
    entry.elementBytes = kind.bytes;
    entry.least = kind.least;
    entry.most = kind.most;

    const Json::Value& length = source["length"];
    if (length.isNull())
        return;
    if (!entry.isText() || !length.isInt() || length.asInt() < 2 || length.asInt() > kOnboardBytes)
        throw std::runtime_error("\"length\" is for texts, of two bytes at least");
    entry.elementBytes = length.asInt();
}

void readOffset(const Json::Value& source, OnboardEntry& entry)
{
    const std::string written = text(source, "offset");
    bool isNumber = false;
    entry.offset = QByteArray::fromStdString(written).toInt(&isNumber, 16);
    if (!isNumber || written.rfind("0x", 0) != 0 || entry.offset < kOnboardHeaderBytes)
        throw std::runtime_error("\"offset\" must be a place behind the header, as \"0x0010\"");
}

/** "l,1,2,4": these whole numbers only. */
void readAllowed(const QList<QByteArray>& pieces, OnboardEntry& entry)
{
    if (entry.isReal())
        throw std::runtime_error("a list of allowed values is for whole numbers");
    for (const QByteArray& piece : pieces) {
        bool isNumber = false;
        entry.allowed.push_back(piece.toLongLong(&isNumber));
        if (!isNumber)
            throw std::runtime_error("\"constraints\" lists what is no whole number");
    }
}

/** Otherwise what is stored of an allowed value could lie outside. */
bool isStoredAsItIs(double end, const OnboardEntry& entry)
{
    return !entry.isReal() || decodeElement(encodeElement(end, entry), entry) == Json::Value(end);
}

/** "m,0,300": from the first to the second. */
void readRange(const QList<QByteArray>& pieces, OnboardEntry& entry)
{
    bool isLeast = false;
    bool isMost = false;
    const double least = pieces.value(0).toDouble(&isLeast);
    const double most = pieces.value(1).toDouble(&isMost);
    if (pieces.size() != 2 || !isLeast || !isMost || !(entry.least <= least) || !(least < most) ||
        !(most <= entry.most)) {
        throw std::runtime_error("\"constraints\" gives no range within the type's");
    }
    if (!isStoredAsItIs(least, entry) || !isStoredAsItIs(most, entry))
        throw std::runtime_error("\"constraints\" has an end that the type cannot hold");
    entry.least = least;
    entry.most = most;
}

void readConstraints(const Json::Value& source, OnboardEntry& entry)
{
    const std::string written = text(source, "constraints");
    if (written.empty())
        return;
    QList<QByteArray> pieces = QByteArray::fromStdString(written).split(',');
    const QByteArray form = pieces.takeFirst();
    if (entry.isText() || pieces.isEmpty() || (form != "l" && form != "m"))
        throw std::runtime_error("\"constraints\" must be \"l,...\" or \"m,...\" of a number");
    if (form == "l")
        readAllowed(pieces, entry);
    else
        readRange(pieces, entry);
}

void readFactory(const Json::Value& source, OnboardEntry& entry)
{
    const Json::Value& values = source["factory"];
    if (!values.isArray() || values.size() != source["type"].asString().size())
        throw std::runtime_error("\"factory\" must be a list with a value for each element");
    for (const Json::Value& value : values) {
        const std::string wrong = whatIsWrongWith(value, entry);
        if (!wrong.empty())
            throw std::runtime_error("the factory value " + wrong);
        entry.factory.push_back(value);
    }
}

} // namespace

std::string OnboardEntry::name() const
{
    return entryName(path);
}

std::string entryName(const std::vector<std::string>& path)
{
    std::string joined;
    for (const std::string& part : path)
        joined += (joined.empty() ? "" : ".") + part;
    return joined;
}

OnboardEntry readOnboardEntry(const std::vector<std::string>& path, const Json::Value& source)
{
    OnboardEntry entry;
    entry.path = path;
    checkMembers(source);
    readType(source, entry);
    readOffset(source, entry);
    readConstraints(source, entry);
    text(source, "unit");
    text(source, "tooltip");
    readFactory(source, entry);
    if (entry.bytes() > kOnboardBytes - entry.offset)
        throw std::runtime_error("reaches beyond the end of the memory");
    return entry;
}

} // namespace trovek::service
