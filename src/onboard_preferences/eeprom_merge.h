#pragma once

#include <json/value.h>

namespace trovek {

/**
 * Assigns every value of `source` to the entry of `destination` at the same place, element by
 * element: no element of `destination` moves in memory. Nothing but values is taken.
 *
 * @throws std::runtime_error "Leafiness mismatch", "Value size mismatch", "Objectiness mismatch",
 *         "Member size mismatch" or "Member name mismatch" where the structures part; the values
 *         before that place are assigned then
 */
void mergeValues(Json::Value& destination, const Json::Value& source);

/** Whether two documents are equal; what is not a number equals itself here. */
bool isSameDocument(const Json::Value& first, const Json::Value& second);

/**
 * Checks that every element of `loaded` that differs from the one in `present` could have been
 * entered by a user or read from a machine. Both have the same structure.
 *
 * @throws std::runtime_error "Wrong type of value: " or "Value out of range: " and the label of the
 *         first entry that could not be
 */
void checkLoadedValues(const Json::Value& present, const Json::Value& loaded);

/**
 * Gives the entries of `present` that differ between `read` and `edited` their edited values. All
 * three have the same structure.
 */
void takeEdits(Json::Value& present, const Json::Value& read, const Json::Value& edited);

} // namespace trovek
