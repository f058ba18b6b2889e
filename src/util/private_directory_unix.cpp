#include "util/private_directory.h"

#include <QFile>

#include <sys/stat.h>
#include <sys/types.h>

namespace trovek {

bool makePrivateDirectory(const QString& path, bool enterable)
{
    const mode_t mode = enterable ? 0711 : 0700;
    // The process's mask would take the others' right to enter. This one takes all that the mode
    // does not have, so what another thread makes in the meantime is never open to writers.
    const mode_t previous = ::umask(0777 & ~mode);
    const bool made = ::mkdir(QFile::encodeName(path).constData(), mode) == 0;
    ::umask(previous);
    return made;
}

} // namespace trovek
