#include "onboard_preferences/backups_dialog.h"

#include <trovek/text.h>

#include <QDateTime>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace trovek {

QString backupTime(const EepromBackup& backup)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(backup.time);
    const QString date = QLocale().toString(time.date(), QLocale::ShortFormat);
    // Two writes in one minute are told apart by their seconds.
    const QString clock = time.time().toString(QStringLiteral("HH:mm:ss"));
    return date.isEmpty() || clock.isEmpty() ? toQString(backup.name)
                                             : BackupsDialog::tr("%1, %2").arg(date, clock);
}

BackupsDialog::BackupsDialog(std::vector<EepromBackup> backups, QWidget* parent)
    : QDialog(parent)
    , m_backups(std::move(backups))
    , m_list(new QListWidget(this))
{
    setObjectName(QStringLiteral("backupsDialog"));
    setWindowTitle(tr("Backups"));
    auto* const help = new QLabel(
        m_backups.empty()
            ? tr("There are no backups yet. The printer's preferences are backed up whenever they "
                 "are about to be written or reset.")
            : tr("The preferences as they were before they were written or reset. The values of "
                 "a backup are loaded as changes; the printer keeps its own until you write them."),
        this);
    help->setWordWrap(true);
    help->setMinimumWidth(360);

    m_list->setObjectName(QStringLiteral("backups"));
    m_list->setVisible(!m_backups.empty());
    for (const EepromBackup& backup : m_backups)
        m_list->addItem(backupTime(backup));

    auto* const buttons = new QDialogButtonBox(this);
    if (m_backups.empty()) {
        buttons->addButton(tr("&Close"), QDialogButtonBox::RejectRole);
    } else {
        buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
        QPushButton* const load = buttons->addButton(tr("&Load"), QDialogButtonBox::AcceptRole);
        load->setDefault(true);
        m_list->setCurrentRow(0);
        m_list->setFocus();
        // A click beside the items takes the selection away.
        connect(m_list, &QListWidget::itemSelectionChanged, load,
                [this, load] { load->setEnabled(!m_list->selectedItems().isEmpty()); });
    }
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(help);
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
}

const EepromBackup& BackupsDialog::chosen() const
{
    return m_backups.at(static_cast<std::size_t>(m_list->currentRow()));
}

} // namespace trovek
