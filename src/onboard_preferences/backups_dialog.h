#pragma once

#include <trovek/eeprom_backup.h>

#include <QDialog>
#include <QString>

#include <vector>

class QListWidget;
class QPushButton;

namespace trovek {

/** When the backup was made, to the second, in the user's time zone and language. */
QString backupTime(const EepromBackup& backup);

/** Lets the user choose one of a printer's backups; accepted only with one. */
class BackupsDialog : public QDialog
{
    Q_OBJECT

public:
    /** @param backups as they are to be listed; may be empty */
    explicit BackupsDialog(std::vector<EepromBackup> backups, QWidget* parent = nullptr);

    /** The one that is selected. Only for a dialog that was accepted. */
    const EepromBackup& chosen() const;

private:
    const std::vector<EepromBackup> m_backups;
    QListWidget* m_list = nullptr;
};

} // namespace trovek
