#pragma once

#include <trovek/eeprom_backup.h>

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

namespace trovek::service {

/**
 * The last images of a machine's onboard memory, each a file in a folder.
 *
 * They are numbered in the order in which they are made, so that neither two in one millisecond nor
 * a clock that was set back confuses them. Other files in the folder are left alone.
 */
class OnboardBackups
{
public:
    static constexpr int kKept = 10;

    /** @param folder made when the first one is written */
    explicit OnboardBackups(QString folder);

    /**
     * Keeps the image, and forgets the oldest ones above kKept.
     * @param time milliseconds since 1970, UTC
     * @throws std::runtime_error "The backup of the onboard memory cannot be written"
     */
    void add(const QByteArray& image, std::int64_t time) const;

    /** Newest first. */
    std::vector<EepromBackup> list() const;

    /** What a backup of the list holds, whole or not; empty when it is not there (any more). */
    QByteArray image(const std::string& name) const;

private:
    QString filePath(const std::string& name) const;

    const QString m_folder;
};

} // namespace trovek::service
