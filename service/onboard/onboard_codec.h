#pragma once

#include "onboard/onboard_entry.h"

#include <json/value.h>

#include <QByteArray>

#include <optional>
#include <string>

namespace trovek::service {

/**
 * Why an entry does not take a value for one of its elements: the second half of a sentence, such
 * as "must be from 0 to 255". Empty when it takes it.
 *
 * A value is judged by its JSON type: 1.0 is no whole number, while 1 is good for a real one.
 */
std::string whatIsWrongWith(const Json::Value& value, const OnboardEntry& entry);

/** The bytes of a value that the entry takes; as many as an element has. */
QByteArray encodeElement(const Json::Value& value, const OnboardEntry& entry);

/**
 * The value of an element's bytes, also one that the entry does not take; nothing where the bytes
 * stand for no value at all: a number that is not finite, a text without an end.
 */
std::optional<Json::Value> decodeElement(const QByteArray& bytes, const OnboardEntry& entry);

} // namespace trovek::service
