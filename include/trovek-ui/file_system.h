#pragma once

#include "trovek-ui/export.h"

#include <QDir>
#include <QString>

#include <memory>

namespace trovek {

/**
 * Copies what is in `srcDir` into a new folder in `dstDir`. Hidden entries are left out.
 *
 * Stops at the first failure and leaves what is there already. A source that contains itself
 * through a link, or that contains the destination, is refused before anything is made.
 *
 * @param dstName a plain name, nothing that leads out of `dstDir`
 * @return the new folder
 * @throws std::runtime_error "Copy failed: " and the path and " doesn't exist", or "Copy failed: "
 *         and "couldn't create directory ", "couldn't cd to ", "couldn't copy " and the paths
 */
TROVEK_UI_EXPORT QDir recursiveCopyRename(QDir dstDir, QDir srcDir, const QString& dstName);

/**
 * Deletes the folder with everything in it; nothing happens when it does not exist.
 *
 * Links are removed, and what they point to stays. Stops at the first failure.
 *
 * @throws std::runtime_error "Unable to delete file " or "Unable to delete directory " and the path
 */
TROVEK_UI_EXPORT void recursiveDelete(QDir dir);

/**
 * A new folder in the system's temporary one, readable only by its user, that is deleted with its
 * contents when the last copy of the object goes. Hidden entries and links that point nowhere are
 * not looked for: a folder that has one remains.
 *
 * Not thread-safe.
 */
class TROVEK_UI_EXPORT TemporaryDir : public QDir
{
public:
    /**
     * @throws std::runtime_error "Failed to create temporary directory" or
     *         "UUID generation spectacularly wrong."
     */
    TemporaryDir();
    /** Copies share the folder. */
    TemporaryDir(const TemporaryDir& other);
    TemporaryDir& operator=(const TemporaryDir& other);
    ~TemporaryDir();

    /** A new folder that lives until cleanManagedDirectories(); throws as the constructor. */
    static QDir managedDir();

    /** Deletes all managed folders. For the host, before it exits: nothing else does it. */
    static void cleanManagedDirectories();

    /**
     * For a host whose background service runs under another account: folders made from now on can
     * be entered, but not listed, by others, so that the service reaches a file whose name it is
     * told. False at first.
     */
    static void setServiceRunsUnderAnotherAccount(bool enabled);

private:
    struct State;

    static QDir tempBase();
    static void deleteContents(QDir dir);

    std::shared_ptr<const State> m_state;
};

} // namespace trovek
