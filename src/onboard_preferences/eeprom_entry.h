#pragma once

#include <json/value.h>

#include <QString>
#include <QStringList>

#include <string>
#include <utility>

namespace trovek {

/** What an entry says about its values. */
struct EepromEntry
{
    /** One of B, H, I, b, d, f, h, i, q and s. */
    char type = 0;
    bool isFloatingPoint = false;
    bool isAxisBitfield = false;
    /** Empty when there are none. */
    std::string constraints;
    /** Empty when there is none. */
    QString unit;
};

/** Whether this is an entry with values of its own, rather than a group of entries. */
bool isEepromLeaf(const Json::Value& json);

/**
 * @param entry null is no object
 * @throws std::runtime_error that says what is wrong with the entry
 */
EepromEntry readEepromEntry(const Json::Value* entry);

/** "x_axis_home_offset" as "X Axis Home Offset". */
QString labelFromKey(const QString& key);

/** The text, or as much of it as a label can show in reasonable time. */
QString shownText(const QString& text);

/** Whether the constraints are a list of allowed values. */
bool isListOfValues(const std::string& constraints);
/** The allowed values of such a list, also empty ones, in its order. */
QStringList allowedValues(const std::string& constraints);
/** Whether the allowed values are 0 and 1, in any order. */
bool isOnOrOff(const QStringList& allowed);

using NumberRange = std::pair<double, double>;

/** For a fixed-point value, whatever its type. */
NumberRange fixedPointRange();
/**
 * The smallest and the largest number that can be entered.
 * @throws std::runtime_error "Invalid EEPROM type, must be one of [BbHhIifdq]"
 */
NumberRange rangeOfType(char type);
bool isRealType(char type);

/**
 * Whether an editor of the entry could have written this element, or a machine may hold it. Any
 * text passes: machines have some that cannot be typed.
 * @throws std::runtime_error "Wrong type of value" or "Value out of range" when not
 */
void checkElement(const EepromEntry& entry, const Json::Value& element);

/** The values as a user reads them, with their unit: "12.5 mm", "Enabled", "X, Z". */
QString readableValues(const EepromEntry& entry, const Json::Value& values);

} // namespace trovek
