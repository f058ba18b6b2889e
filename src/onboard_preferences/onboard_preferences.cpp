#include "trovek-ui/onboard_preferences.h"

#include "onboard_preferences/onboard_preferences_p.h"
#include "util/wait_cursor.h"

#include "trovek-ui/eeprom_grama.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/trovekqt.h"
#include "trovek-ui/util.h"

#include <trovek/log.h>

#include <QLabel>
#include <QPushButton>

#include <exception>
#include <memory>

static constexpr char kLogUnit[] = "src\\onboard_preferences\\onboard_preferences";

namespace trovek {
namespace ui {

namespace {

const QLatin1String kGeometryKey("onboard_preferences/geometry");

/** Shows why there is no dialog; the box does not stay, also not without a parent. */
template <typename Notice>
void refuse(Notice notice)
{
    notice.exec();
    delete notice.box();
}

/** The name by which the service tells this dialog its errors; empty without one. */
std::string exceptionName(const JsonRpcException& error)
{
    const Json::Value& data = error.data();
    if (!data.isObject() || !data["exception"].isObject() || !data["exception"]["name"].isString())
        return std::string();
    return data["exception"]["name"].asString();
}

/** Shows why the printer's values cannot be read at first. */
void refuseFor(const std::string& name, const QString& firmwareVersion, QWidget* parent)
{
    if (name == "MachineStateException") {
        refuse(message::OnboardPreferencesPrinterBusy(parent));
    } else if (name == "MissingEepromMapError") {
        refuse(message::OnboardPreferencesMissingEepromMap(parent));
    } else {
        if (!name.empty())
            TROVEK_LOG(0) << "Trovek exception: " << name << std::endl;
        refuse(message::OnboardPreferencesGenericError(firmwareVersion, parent));
    }
}

} // namespace

OnboardPreferences* OnboardPreferences::create(TrovekQt& facade, Printer* const printer,
                                               QWidget* const parent)
{
    if (printer == nullptr) {
        TROVEK_LOG(0) << "Null machine" << std::endl;
        refuse(message::OnboardPreferencesPrinterNotConnected(parent));
        return nullptr;
    }
    const QString firmwareVersion = firmwareVersionToString(printer->firmwareVersion());
    if (!printer->canPrint()) {
        TROVEK_LOG(0) << "Archetype machine" << std::endl;
        refuse(message::OnboardPreferencesPrinterNotConnected(parent));
        return nullptr;
    }
    try {
        const WaitCursor cursor;
        const EepromMap map = facade.readEeprom(printer);
        return new OnboardPreferences(facade, printer, map.getEepromMap(), parent);
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        refuseFor(exceptionName(error), firmwareVersion, parent);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        refuse(message::OnboardPreferencesGenericError(firmwareVersion, parent));
    }
    return nullptr;
}

OnboardPreferences::OnboardPreferences(TrovekQt& facade, Printer* printer, const Json::Value& map,
                                       QWidget* parent)
    : QDialog(parent)
    , d(std::make_unique<Private>(this, facade, printer))
{
    setObjectName(QStringLiteral("onboardPreferences"));
    setAttribute(Qt::WA_DeleteOnClose);
    d->ui.build(map, *printer, this);
    connectSignals();
    eepromGramaUpdated();
}

OnboardPreferences::~OnboardPreferences() = default;

void OnboardPreferences::connectSignals()
{
    const OnboardPreferencesLayout& ui = d->ui;
    connect(ui.grama, &EepromGrama::updated, this, &OnboardPreferences::eepromGramaUpdated);
    connect(ui.grama, &EepromGrama::mapReset, this, &OnboardPreferences::eepromGramaUpdated);
    connect(ui.factoryReset, &QPushButton::clicked, this,
            &OnboardPreferences::resetCompletelyClicked);
    connect(ui.cancel, &QPushButton::clicked, this, &OnboardPreferences::reject);
    connect(ui.write, &QPushButton::clicked, this, &OnboardPreferences::writeChanges);
    connect(ui.backups, &QPushButton::clicked, this, [this] { d->chooseBackup(); });
    connect(ui.loadFromFile, &QPushButton::clicked, this, [this] { d->loadFromFile(); });
    connect(ui.saveToFile, &QPushButton::clicked, this, [this] { d->saveToFile(); });
    connect(&d->facade, &TrovekQt::printerAdded, this, &OnboardPreferences::printerAdded);
    connect(&d->facade, &TrovekQt::printerRemoved, this, &OnboardPreferences::printerRemoved);
    connect(&d->facade, &TrovekQt::printerChanged, this, [this](const Printer* changed) {
        if (changed == d->printer && d->m_readPending)
            d->readWhenReady();
    });
}

void OnboardPreferences::setSettings(QSettings* settings)
{
    d->settings = settings;
    if (settings != nullptr)
        restoreGeometry(settings->value(kGeometryKey).toByteArray());
}

void OnboardPreferences::hideEvent(QHideEvent* event)
{
    if (d->settings)
        d->settings->setValue(kGeometryKey, saveGeometry());
    QDialog::hideEvent(event);
}

void OnboardPreferences::reject()
{
    if (d->m_openWindows > 0)
        return;
    if (d->ui.grama && d->ui.grama->isModified()) {
        const QPointer<OnboardPreferences> self(this);
        using Question = message::OnboardPreferencesDiscardChanges;
        const Question::ResultCode answer = d->ask<Question>();
        if (answer == Question::Cancel)
            return;
        if (answer == Question::Save)
            writeChanges();
        if (self.isNull())
            return;
    }
    QDialog::reject();
}

void OnboardPreferences::eepromGramaUpdated()
{
    const bool isModified = d->ui.grama && d->ui.grama->isModified();
    d->ui.write->setEnabled(isModified);
    d->ui.changedCount->setText(isModified ? tr("Changed: %1").arg(d->ui.grama->changedCount())
                                           : QString());
}

void OnboardPreferences::writeChanges()
{
    if (!d->ui.grama) {
        TROVEK_LOG(0) << "Grama is null" << std::endl;
        return;
    }
    bool isWritten = false;
    try {
        const WaitCursor cursor;
        const Json::Value map = d->ui.grama->map();
        d->facade.writeEeprom(d->printer, EepromMap(map));
        d->ui.grama->resetToMap(map);
        d->forgetUnwritten();
        isWritten = true;
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        d->showAnswer(error);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
    if (isWritten)
        d->tell<message::OnboardPreferencesSuccessfulWrite>();
    else
        d->tell<message::OnboardPreferencesFailedWrite>();
}

void OnboardPreferences::resetCompletelyClicked()
{
    using Question = message::OnboardPreferencesConfirmReset;
    if (d->ask<Question>() != Question::Reset)
        return;
    bool isReset = false;
    bool isRead = false;
    try {
        const WaitCursor cursor;
        d->showNow(tr("Resetting..."));
        d->facade.resetEepromCompletely(d->printer->key());
        isReset = true;
        if (d->ui.grama)
            d->ui.grama->resetToMap(d->facade.readEeprom(d->printer).getEepromMap());
        d->forgetUnwritten();
        isRead = true;
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        if (isReset)
            d->showStale();
        else
            d->showAnswer(error);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        d->showStale();
    }
    if (isRead)
        d->tell<message::OnboardPreferencesSuccessfulReset>();
    else
        d->tell<message::OnboardPreferencesFailedReset>();
}

void OnboardPreferences::printerAdded(Printer* printer)
{
    if (!d->ui.grama)
        return;
    if (printer == d->printer)
        d->readWhenReady();
    else if (!d->printer->isConnected())
        d->showInPlace(*printer);
}

void OnboardPreferences::printerRemoved(Printer* printer)
{
    if (!d->ui.grama)
        return;
    if (printer != d->printer) {
        if (!d->printer->isConnected() && printer->portName() == d->portName)
            d->showGone();
        return;
    }
    d->m_readPending = false;
    d->ui.setPrinterUsable(false);
    d->showGone();
}

} // namespace ui
} // namespace trovek
