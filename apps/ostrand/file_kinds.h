#pragma once

#include <trovek-ui/file_chooser.h>

#include <QString>

namespace ostrand {

/** What the host can do with a file, told by the suffix of its name. */
enum class FileKind : int {
    GCode,
    Model,
    Unknown,
};

FileKind fileKindOf(const QString& path);

/** What a user reads, for example "G-code". */
QString fileKindText(FileKind kind);

/** What "Open" offers; everything that can be opened comes first. */
trovek::FileFilterList openFileFilters();

/** "12.4 MB", "3 bytes". */
QString fileSizeText(qint64 bytes);

} // namespace ostrand
