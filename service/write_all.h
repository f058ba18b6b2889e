#pragma once

#include <QtGlobal>

#include <stdexcept>

class QFile;

namespace trovek::service {

/** The system's reason, such as a full disk. */
class WriteError : public std::runtime_error
{
public:
    explicit WriteError(const QFile& file);
};

/** Writes all of it. QFile takes what fits on a disk for a success and gives no error then. */
void writeAll(QFile& file, const char* bytes, qint64 size);

} // namespace trovek::service
