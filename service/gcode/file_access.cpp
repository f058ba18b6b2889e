#include "file_access.h"

#include <QFile>

#include <stdexcept>

namespace trovek::service {

ByteSource byteSourceOf(std::shared_ptr<QFile> file)
{
    return [file = std::move(file), begun = false](char* buffer, std::size_t size) mutable {
        if (!begun && !file->seek(0))
            throw std::runtime_error("Failed to read the input file");
        begun = true;
        const qint64 count = file->read(buffer, static_cast<qint64>(size));
        if (count < 0)
            throw std::runtime_error("Failed to read the input file");
        return static_cast<std::size_t>(count);
    };
}

} // namespace trovek::service
