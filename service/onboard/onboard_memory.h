#pragma once

#include "onboard/onboard_backups.h"
#include "onboard/onboard_map.h"

#include <json/value.h>

#include <QString>

#include <stdexcept>

namespace trovek::service {

class MachineDriver;

/** A backup that is not there, or that this firmware cannot read. */
class UnknownBackupError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/**
 * The onboard memory of one machine as its firmware sees it.
 *
 * A memory that is erased or damaged gets factory values before its first use, one that another
 * firmware has laid out is converted. Every change is made to the memory as a whole, after a
 * backup: whatever happens, it holds the earlier settings or the new ones.
 */
class OnboardMemory
{
public:
    /** None is owned; all must outlive it. @param folder where its backups stand */
    OnboardMemory(MachineDriver& driver, const OnboardMaps& maps, const OnboardMap& map,
                  const QString& folder);

    /** @throws std::runtime_error as keep() */
    Json::Value read();

    /**
     * Checks all, makes a backup, writes, and reads back.
     * @throws OnboardValueError before anything is changed
     * @throws std::runtime_error when the backup cannot be written, and as keep()
     */
    void write(const Json::Value& document);

    /** Of the memory as it is now. @throws std::runtime_error when it cannot be written */
    void makeBackup();

    /** Makes the backup and starts the driver's reset, which ends with its memoryReset(). */
    void startReset();
    /** When memoryReset() has come. @throws std::runtime_error unless factory values are there */
    void checkReset() const;

    /** Those that this firmware can read, newest first. */
    std::vector<EepromBackup> backups() const;
    /** @throws UnknownBackupError */
    Json::Value readBackup(const std::string& name) const;

private:
    QByteArray current();
    void backUp(const QByteArray& image) const;
    /** @throws std::runtime_error "The machine did not keep its settings" */
    void keep(const QByteArray& image);

    MachineDriver& m_driver;
    const OnboardMaps& m_maps;
    const OnboardMap& m_map;
    const OnboardBackups m_backups;
};

} // namespace trovek::service
