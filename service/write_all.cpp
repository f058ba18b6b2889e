#include "write_all.h"

#include <trovek/text.h>

#include <QIODevice>

namespace trovek::service {

WriteError::WriteError(const QIODevice& file)
    : std::runtime_error(toStdString(file.errorString()))
{}

void writeAll(QIODevice& file, const char* bytes, qint64 size)
{
    while (size > 0) {
        const qint64 written = file.write(bytes, size);
        if (written <= 0)
            throw WriteError(file);
        bytes += written;
        size -= written;
    }
}

} // namespace trovek::service
