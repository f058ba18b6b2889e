#include "onboard_preferences/eeprom_entry.h"

#include <trovek/text.h>

#include <QCoreApplication>
#include <QLocale>
#include <QVector>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <stdexcept>

namespace trovek {

namespace {

constexpr char kTypes[] = "BHIbdfhiqs";
constexpr char kAxes[] = "XYZAB";

/** No machine sends more editors for one row, or more choices in one. */
constexpr Json::ArrayIndex kMaximumValues = 1000;
constexpr int kMaximumAllowedValues = 1000;
constexpr int kMaximumShownLength = 4000;

struct EepromText
{
    Q_DECLARE_TR_FUNCTIONS(trovek::EepromGrama)
};

std::string textMember(const Json::Value& entry, const char* name)
{
    return entry.isMember(name) && entry[name].isString() ? entry[name].asString() : std::string();
}

bool isTrueText(const Json::Value& entry, const char* name)
{
    return textMember(entry, name) == "True";
}

void checkKind(bool fits)
{
    if (!fits)
        throw std::runtime_error("Wrong type of value");
}

/** As a combo box reads them: "07" and " 7" are 7. */
bool isAmong(const QStringList& allowed, qlonglong number)
{
    return std::any_of(allowed.begin(), allowed.end(), [number](const QString& text) {
        bool ok = false;
        return text.toLongLong(&ok) == number && ok;
    });
}

QString readableElement(const EepromEntry& entry, const Json::Value& element)
{
    if (element.isString())
        return toQString(element.asString());
    if (element.type() == Json::realValue)
        return QLocale().toString(element.asDouble(), 'g', QLocale::FloatingPointShortest);
    if (!element.isInt64())
        return toQString(element.toStyledString()).trimmed();
    if (isListOfValues(entry.constraints) && isOnOrOff(allowedValues(entry.constraints)))
        return element.asInt64() != 0 ? EepromText::tr("Enabled") : EepromText::tr("Disabled");
    if (!entry.isAxisBitfield)
        return QLocale().toString(qlonglong(element.asInt64()));
    QStringList axes;
    for (int bit = 0; bit < 5; ++bit) {
        if ((element.asInt64() >> bit) & 1)
            axes.append(QString(QLatin1Char(kAxes[bit])));
    }
    return axes.isEmpty() ? EepromText::tr("none") : axes.join(QStringLiteral(", "));
}

/** What a machine may hold, which at some ends is more than the form lets a user enter. */
NumberRange storedRange(const EepromEntry& entry)
{
    if (entry.isFloatingPoint)
        return {-128.0, 127.0 + 255.0 / 256.0};
    const NumberRange offered = rangeOfType(entry.type);
    if (entry.type == 'h')
        return {-32768.0, offered.second};
    // With the fewest digits that stand for it the largest single is told a little above itself.
    constexpr double largestSingle = 3.4028235e38;
    return entry.type == 'f' ? NumberRange(-largestSingle, largestSingle) : offered;
}

} // namespace

bool isEepromLeaf(const Json::Value& json)
{
    return json.isObject() && json.isMember("offset") && json.isMember("type") &&
           json.isMember("value");
}

EepromEntry readEepromEntry(const Json::Value* entry)
{
    const auto check = [](bool isRight, const std::string& text) {
        if (!isRight)
            throw std::runtime_error(text);
    };
    check(entry != nullptr && entry->isObject(), "JSON is not object");
    check(entry->isMember("type"), "Missing type");
    check(entry->isMember("value"), "Missing value");
    const Json::Value& values = (*entry)["value"];
    check((*entry)["type"].isString(), "Invalid type of type");
    check(values.isArray(), "Invalid type of value");

    const std::string types = (*entry)["type"].asString();
    check(types.size() == values.size(), "Size mismatch");
    check(!types.empty(), "Empty array");
    check(types.find_first_not_of(types[0]) == std::string::npos, "Heterogeneous types");

    EepromEntry read;
    read.type = types[0];
    check(std::string(kTypes).find(read.type) != std::string::npos,
          std::string("Invalid type: ") + read.type);
    read.isFloatingPoint = isTrueText(*entry, "floating_point");
    check(!read.isFloatingPoint || read.type == 'H', "Bad floating-point type");
    read.isAxisBitfield = isTrueText(*entry, "axis_expand");
    check(!read.isAxisBitfield || (read.type == 'B' && values.size() == 1),
          "Bad axis bitfield type");
    check(values.size() <= kMaximumValues, "Too many values");

    read.constraints = textMember(*entry, "constraints");
    const auto commas = std::count(read.constraints.begin(), read.constraints.end(), ',');
    check(commas <= kMaximumAllowedValues, "Too many allowed values");
    const std::string unit = textMember(*entry, "unit");
    if (entry->isMember("unit") && (*entry)["unit"].isString())
        read.unit = EepromText::tr(" %1").arg(shownText(toQString(unit)));
    return read;
}

QString labelFromKey(const QString& key)
{
    // By code points: a letter of a script beyond the first plane is one character too.
    QVector<uint> characters = key.toUcs4();
    bool startsWord = true;
    for (uint& character : characters) {
        const bool isUnderscore = character == '_';
        if (isUnderscore)
            character = ' ';
        else
            character = startsWord ? QChar::toUpper(character) : QChar::toLower(character);
        startsWord = isUnderscore;
    }
    return QString::fromUcs4(characters.constData(), characters.size());
}

QString shownText(const QString& text)
{
    return text.size() <= kMaximumShownLength ? text
                                              : text.left(kMaximumShownLength) + QChar(0x2026);
}

bool isListOfValues(const std::string& constraints)
{
    return !constraints.empty() && constraints[0] == 'l';
}

QStringList allowedValues(const std::string& constraints)
{
    QStringList allowed = toQString(constraints).split(QLatin1Char(','));
    allowed.removeFirst();
    return allowed;
}

bool isOnOrOff(const QStringList& allowed)
{
    return allowed.size() == 2 && allowed.contains(QStringLiteral("0")) &&
           allowed.contains(QStringLiteral("1"));
}

NumberRange fixedPointRange()
{
    return {-128.0, 127.0};
}

NumberRange rangeOfType(char type)
{
    switch (type) {
    case 'B':
        return {0.0, 255.0};
    case 'b':
        return {-128.0, 127.0};
    case 'H':
        return {0.0, 65535.0};
    case 'h':
        // One off at both ends, as it has always been shown.
        return {-32767.0, 32768.0};
    case 'I':
        return {0.0, std::ldexp(1.0, 32)};
    case 'i':
        // Single precision cannot hold one less than a power of two of this size: the upper end of
        // both types is the power itself.
        return {-std::ldexp(1.0, 31), double(float(std::ldexp(1.0, 31)) - 1.0F)};
    case 'q':
        return {-std::ldexp(1.0, 63), double(float(std::ldexp(1.0, 63)) - 1.0F)};
    case 'f':
        return {-double(FLT_MAX), double(FLT_MAX)};
    case 'd':
        return {-DBL_MAX, DBL_MAX};
    default:
        throw std::runtime_error("Invalid EEPROM type, must be one of [BbHhIifdq]");
    }
}

bool isRealType(char type)
{
    return type == 'f' || type == 'd';
}

void checkElement(const EepromEntry& entry, const Json::Value& element)
{
    if (entry.type == 's') {
        checkKind(element.isString());
        return;
    }
    if (isListOfValues(entry.constraints)) {
        checkKind(element.type() == Json::intValue);
        if (!isAmong(allowedValues(entry.constraints), element.asInt64()))
            throw std::runtime_error("Value out of range");
        return;
    }
    if (isRealType(entry.type) || entry.isFloatingPoint)
        checkKind(element.type() == Json::realValue);
    else
        checkKind(element.type() == (entry.type == 'I' ? Json::uintValue : Json::intValue));
    const NumberRange range = storedRange(entry);
    if (!(element.asDouble() >= range.first && element.asDouble() <= range.second))
        throw std::runtime_error("Value out of range");
}

QString readableValues(const EepromEntry& entry, const Json::Value& values)
{
    QStringList texts;
    for (const Json::Value& element : values)
        texts.append(readableElement(entry, element));
    return texts.join(QStringLiteral(", ")) + entry.unit;
}

} // namespace trovek
