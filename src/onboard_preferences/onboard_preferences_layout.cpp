#include "onboard_preferences/onboard_preferences_layout.h"

#include "onboard_preferences/preferences_notice.h"

#include "trovek-ui/eeprom_grama.h"
#include "trovek-ui/onboard_preferences.h"
#include "trovek-ui/util.h"

#include <trovek/printer.h>
#include <trovek/text.h>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace trovek {

using ui::OnboardPreferences;

namespace {

/** Enter in a field belongs to the field: no button of this dialog is pressed by it. */
QPushButton* addButton(const QString& text, const char* name, const QString& toolTip,
                       QWidget* parent)
{
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

} // namespace

void OnboardPreferencesLayout::build(const Json::Value& map, const Printer& machine,
                                     QDialog* dialog)
{
    dialog->setWindowTitle(OnboardPreferences::tr("Onboard Preferences"));
    printer = new QLabel(dialog);
    printer->setObjectName(QStringLiteral("printer"));
    printer->setTextFormat(Qt::PlainText);
    // A long name makes the window no wider.
    printer->setWordWrap(true);
    showPrinter(machine);
    QFont bold = printer->font();
    bold.setBold(true);
    printer->setFont(bold);
    notice = new PreferencesNotice(dialog);

    grama = new EepromGrama(map, dialog);
    grama->setObjectName(QStringLiteral("grama"));
    QHBoxLayout* const filterBar = grama->createFilterBar();
    showChangedOnly = new QCheckBox(OnboardPreferences::tr("Show changed only"), dialog);
    showChangedOnly->setObjectName(QStringLiteral("showChangedOnly"));
    showChangedOnly->setToolTip(
        OnboardPreferences::tr("Show only settings whose values are not the printer's"));
    filterBar->addWidget(showChangedOnly);
    QObject::connect(showChangedOnly, &QCheckBox::toggled, grama, &EepromGrama::setShowChangedOnly);

    auto* const rows = new QVBoxLayout(dialog);
    rows->addWidget(printer);
    rows->addWidget(notice);
    rows->addLayout(filterBar);
    rows->addWidget(grama, 1);
    buildButtons(dialog);

    if (auto* const filter = dialog->findChild<QLineEdit*>(QStringLiteral("filterEdit"))) {
        auto* const find = new QShortcut(QKeySequence::Find, dialog);
        QObject::connect(find, &QShortcut::activated, filter, [filter] {
            filter->setFocus(Qt::ShortcutFocusReason);
            filter->selectAll();
        });
        // Before the form with all that is in it.
        QWidget::setTabOrder(dialog->findChild<QPushButton*>(QStringLiteral("noticeButton")),
                             filter);
        QWidget::setTabOrder(filter, showChangedOnly);
        filter->setFocus();
    }
    dialog->resize(860, 680);
}

void OnboardPreferencesLayout::buildButtons(QDialog* dialog)
{
    factoryReset = addButton(
        OnboardPreferences::tr("&Factory Reset"), "factoryResetButton",
        OnboardPreferences::tr("Reset the Orvane's onboard preferences to factory defaults"),
        dialog);
    backups = addButton(OnboardPreferences::tr("Backups..."), "backupsButton",
                        OnboardPreferences::tr("Load the values of a backup as changes"), dialog);
    loadFromFile =
        addButton(OnboardPreferences::tr("Load from File..."), "loadFromFileButton",
                  OnboardPreferences::tr("Load the values of a file as changes"), dialog);
    saveToFile =
        addButton(OnboardPreferences::tr("Save to File..."), "saveToFileButton",
                  OnboardPreferences::tr("Save all values shown here, with the changes"), dialog);
    changedCount = new QLabel(dialog);
    changedCount->setObjectName(QStringLiteral("changedCount"));
    cancel =
        addButton(OnboardPreferences::tr("&Cancel"), "cancelButton",
                  OnboardPreferences::tr("Close the dialog without saving any changes"), dialog);
    write = addButton(
        OnboardPreferences::tr("&Write Changes"), "writeButton",
        OnboardPreferences::tr("Save changes to the onboard preferences to the printer"), dialog);

    // In two rows, or the window would be wider than a small screen.
    auto* const sources = new QHBoxLayout;
    for (QPushButton* const button : {backups, loadFromFile, saveToFile})
        sources->addWidget(button);
    sources->addStretch();
    sources->addWidget(changedCount);
    auto* const row = new QHBoxLayout;
    row->addWidget(factoryReset);
    row->addStretch();
    row->addWidget(cancel);
    row->addWidget(write);
    QWidget::setTabOrder(saveToFile, factoryReset);
    auto* const rows = static_cast<QVBoxLayout*>(dialog->layout());
    rows->addLayout(sources);
    rows->addLayout(row);
}

void OnboardPreferencesLayout::showPrinter(const Printer& machine)
{
    printer->setText(OnboardPreferences::tr("%1, firmware %2")
                         .arg(toQString(machine.displayName()),
                              firmwareVersionToString(machine.firmwareVersion())));
}

void OnboardPreferencesLayout::setPrinterUsable(bool usable)
{
    if (grama)
        grama->setEnabled(usable);
    for (QPushButton* const button : {factoryReset, backups, loadFromFile, write})
        button->setEnabled(usable);
}

} // namespace trovek
