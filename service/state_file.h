#pragma once

#include <json/value.h>

#include <QByteArray>
#include <QString>

namespace trovek::service {

/** Reads a JSON document; null when the file is missing or unreadable (the latter is logged). */
Json::Value readStateFile(const QString& path);

/**
 * Replaces a file as a whole, so that a crash leaves the earlier or the new one, never half.
 *
 * What a crash may leave besides is one file "unfinished" in the folder, until the next write
 * there.
 * @return false, after logging why, when it cannot be written
 */
bool writeStateFile(const QString& path, const Json::Value& value);
bool writeStateBytes(const QString& path, const QByteArray& bytes);

} // namespace trovek::service
