// Values from backups and files.

#include "onboard_preferences/backups_dialog.h"
#include "onboard_preferences/onboard_preferences_p.h"
#include "onboard_preferences/preferences_file.h"
#include "onboard_preferences/preferences_notice.h"
#include "util/wait_cursor.h"

#include "trovek-ui/eeprom_grama.h"
#include "trovek-ui/file_chooser.h"
#include "trovek-ui/message_box.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

#include <optional>
#include <string_view>

static constexpr char kLogUnit[] = "src\\onboard_preferences\\onboard_preferences";

namespace trovek {
namespace ui {

namespace {

const QLatin1String kLastDirKey("onboard_preferences/lastDir");

FileFilterList preferencesFilters()
{
    return FileFilterList(
        {FileFilter(OnboardPreferences::tr("Onboard preferences"), QStringLiteral("json"))});
}

/** A name for files of this printer on every system. */
QString proposedName(const Printer& printer)
{
    static const QRegularExpression forbidden(QStringLiteral("[\\x00-\\x1f<>:\"/\\\\|?*]"));
    const QString name = toQString(printer.displayName()).replace(forbidden, QStringLiteral("_"));
    return OnboardPreferences::tr("%1 preferences").arg(name) + QStringLiteral(".json");
}

/** What is behind the prefix, when the text begins with it. */
std::optional<QString> after(std::string_view prefix, const std::string& text)
{
    if (text.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    return toQString(text.substr(prefix.size()));
}

/** Why the form did not take a document, for the user. */
QString whyRefused(const QString& source, const std::string& reason)
{
    if (const auto label = after("Wrong type of value: ", reason))
        return OnboardPreferences::tr("%1 has a value of the wrong type for \"%2\".")
            .arg(source, *label);
    if (const auto label = after("Value out of range: ", reason))
        return OnboardPreferences::tr("%1 has a value for \"%2\" that the printer does not take.")
            .arg(source, *label);
    return OnboardPreferences::tr("%1 is of another printer or of another firmware version.")
        .arg(source);
}

} // namespace

void OnboardPreferences::Private::tellFailure(const QString& heading, const QString& text)
{
    showOver([&] {
        const QPointer<MessageBox> box(
            new MessageBox({MessageBox::Button(tr("&OK"), 0, MessageBox::Button::Default)}, heading,
                           text, QMessageBox::Critical, q));
        // Names of files and of settings stand in it.
        box->setTextFormat(Qt::PlainText);
        box->maybeShowModal();
        delete box;
    });
}

void OnboardPreferences::Private::loadChanges(const Json::Value& map, const QString& source)
{
    if (!ui.grama || !ui.grama->isEnabled())
        return;
    try {
        const WaitCursor cursor;
        ui.grama->loadEdits(map);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tellFailure(tr("Failed to load onboard preferences"), whyRefused(source, error.what()));
        return;
    }
    m_unwritten.reset();
    ui.notice->showNotice(
        ui.grama->isModified()
            ? tr("%1 has been loaded. The printer keeps its own values until you write the "
                 "changes.")
                  .arg(source)
            : tr("%1 has been loaded. Its values are the same as the printer's.").arg(source));
}

void OnboardPreferences::Private::chooseBackup()
{
    try {
        std::vector<EepromBackup> backups;
        {
            const WaitCursor cursor;
            backups = facade.eepromBackups(printer);
        }
        std::optional<EepromBackup> chosen;
        const bool isThere = showOver([&] {
            const QPointer<BackupsDialog> dialog(new BackupsDialog(backups, q));
            if (dialog->exec() == QDialog::Accepted && dialog)
                chosen = dialog->chosen();
            delete dialog;
        });
        if (!isThere || !chosen || !ui.grama || !ui.grama->isEnabled())
            return;
        Json::Value map;
        {
            const WaitCursor cursor;
            map = facade.readEepromBackup(printer, chosen->name).getEepromMap();
        }
        loadChanges(map, tr("The backup of %1").arg(backupTime(*chosen)));
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tellFailure(tr("Failed to read the backups"), toQString(error.what()));
    }
}

void OnboardPreferences::Private::saveToFile()
{
    try {
        const QString proposal = QDir(lastDir()).filePath(proposedName(*printer));
        FileChooserResult chosen;
        const bool isThere = showOver([&] {
            chosen = chooseSavePath(q, tr("Save to File"), proposal, preferencesFilters(), nullptr);
        });
        if (!isThere || chosen.cancelled || !ui.grama)
            return;
        rememberDirOf(chosen.paths.first());
        savePreferencesFile(chosen.paths.first(), ui.grama->map());
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tellFailure(tr("Failed to save the file"), toQString(error.what()));
    }
}

void OnboardPreferences::Private::loadFromFile()
{
    try {
        FileChooserResult chosen;
        const bool isThere = showOver([&] {
            chosen = chooseOpenPath(q, tr("Load from File"), lastDir(), preferencesFilters());
        });
        if (!isThere || chosen.cancelled)
            return;
        const QString path = chosen.paths.first();
        rememberDirOf(path);
        loadChanges(loadPreferencesFile(path), QFileInfo(path).fileName());
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tellFailure(tr("Failed to load onboard preferences"), toQString(error.what()));
    }
}

QString OnboardPreferences::Private::lastDir() const
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return settings ? settings->value(kLastDirKey, documents).toString() : documents;
}

void OnboardPreferences::Private::rememberDirOf(const QString& path)
{
    if (settings)
        settings->setValue(kLastDirKey, QFileInfo(path).absolutePath());
}

} // namespace ui
} // namespace trovek
