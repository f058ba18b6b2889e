#pragma once

#include <QtGlobal>

#include <stdexcept>

class QIODevice;

namespace trovek::service {

/** The system's reason, such as a full disk. */
class WriteError : public std::runtime_error
{
public:
    explicit WriteError(const QIODevice& file);
};

/** Writes all of it. A file takes what fits on a disk for a success and gives no error then. */
void writeAll(QIODevice& file, const char* bytes, qint64 size);

} // namespace trovek::service
