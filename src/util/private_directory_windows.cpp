#include "util/private_directory.h"

#include <QDir>

namespace trovek {

bool makePrivateDirectory(const QString& path, bool)
{
    // The temporary folder belongs to one user there, and what is made in it inherits its rights.
    return QDir().mkdir(path);
}

} // namespace trovek
