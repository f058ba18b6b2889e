#pragma once

#include "trovek-ui/export.h"

#include <json/value.h>

#include <QByteArray>
#include <QString>

#include <string>

namespace trovek {

/** In bytes; many times what a profile's files have. More is something else. */
constexpr qint64 kLargestProfileFile = 1024 * 1024;

/**
 * Reads a JSON text that a user may have edited: comments and a byte order mark are allowed.
 * @return false when it is anything but one JSON value
 */
TROVEK_UI_EXPORT bool parseJson(const QByteArray& bytes, Json::Value* value);

/**
 * Reads such a file. Only regular files of a sane size are opened: a pipe or a device would block
 * the window.
 * @param path       may be a resource's
 * @param openError  thrown when there is no such file
 * @param parseError thrown when parseJson() gives false
 * @throws std::runtime_error
 */
TROVEK_UI_EXPORT Json::Value readJsonFile(const QString& path, const std::string& openError,
                                          const std::string& parseError);

/**
 * Writes the file as a whole, so that whatever fails leaves the old one.
 * @param openError  thrown when it cannot be written at all, for example because it is read-only
 * @param writeError thrown when not everything could be written
 * @throws std::runtime_error
 */
TROVEK_UI_EXPORT void replaceFile(const QString& path, const QByteArray& bytes,
                                  const std::string& openError, const std::string& writeError);

} // namespace trovek
