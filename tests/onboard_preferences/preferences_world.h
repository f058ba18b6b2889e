#pragma once

#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>
#include <trovek-ui/onboard_preferences.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/wire.h>

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <json/reader.h>

#include <memory>
#include <sstream>

namespace trovek {

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* one : texts)
        list.append(text(one));
    return list;
}

inline Json::Value parse(const std::string& json)
{
    Json::Value value;
    std::istringstream(json) >> value;
    return value;
}

namespace texts {
inline const QString kSame = QStringLiteral("Error displaying onboard preferences");
inline const QStringList kNotConnected = {kSame, QStringLiteral("Printer is not connected.")};
inline const QStringList kBusy = {
    kSame, QStringLiteral("Cannot edit onboard preferences while the printer is printing, in jog "
                          "mode, or otherwise busy.")};
inline const QStringList kMissingMap = {
    kSame, QStringLiteral("No map found for this printer's firmware version.")};
inline const QStringList kGeneric = {
    kSame, QStringLiteral("An error occurred displaying onboard preferences for firmware version "
                          "7.2.")};
inline const QStringList kDiscard = {
    QStringLiteral("Save changes to onboard preferences before closing?"),
    QStringLiteral("Closing without saving will not write changes to the bot.")};
inline const QStringList kConfirmReset = {
    QStringLiteral("Are you sure you want to factory reset?"),
    QStringLiteral("All settings in the onboard preferences will be reverted to factory defaults. "
                   "This may take up to a minute, and Ostrand will be unresponsive during this "
                   "process.")};
inline const QStringList kWritten = {QStringLiteral("Successfully updated onboard preferences")};
inline const QStringList kFailedWrite = {QStringLiteral("Failed to save onboard preferences")};
inline const QStringList kReset = {QStringLiteral("Successfully reset onboard preferences")};
inline const QStringList kFailedReset = {
    QStringLiteral("Error resetting onboard preferences"),
    QStringLiteral("An error occurred while reading or writing to the EEPROM.")};
inline const QStringList kAddedError = {
    QStringLiteral("Error reading onboard preferences"),
    QStringLiteral("An error occurred while reading the EEPROM.")};
} // namespace texts

constexpr char kPreferencesUnit[] = "src\\onboard_preferences\\onboard_preferences";

/** One entry of each kind, a group and members that no form knows. */
inline Json::Value sampleMap()
{
    return parse(R"({
        "schema": {"version": 3},
        "eeprom_map": {
            "axis_inversion": {"offset": "0x01", "type": "B", "value": [5], "axis_expand": "True"},
            "filament": {"note": "kept", "sub_map": {
                "density": {"offset": 9, "type": "f", "value": [1.25], "unit": "g/cm"},
                "material": {"offset": 8, "type": "B", "value": [1], "constraints": "l,0,1,2"}}},
            "heater_temperature": {"offset": 2, "type": "H", "value": [220], "unit": "C",
                                   "tooltip": "Of the right nozzle"},
            "machine_name": {"offset": 16, "type": "s", "value": ["Orvane"]},
            "nozzle_diameter": {"offset": 4, "type": "H", "value": [0.4],
                                "floating_point": "True"},
            "sound": {"offset": 6, "type": "B", "value": [1], "constraints": "l,0,1"}}})");
}

/** Values of an entry at the top, or of one in a group "filament/density". */
inline Json::Value& entryOf(Json::Value& map, const std::string& name)
{
    const std::size_t slash = name.find('/');
    if (slash == std::string::npos)
        return map["eeprom_map"][name]["value"];
    return map["eeprom_map"][name.substr(0, slash)]["sub_map"][name.substr(slash + 1)]["value"];
}

inline Json::Value sampleMapWithHeater(int celsius)
{
    Json::Value map = sampleMap();
    entryOf(map, "heater_temperature")[0] = celsius;
    return map;
}

/** What a test of the onboard preferences stands on: a connected service with one machine. */
class PreferencesWorld
{
public:
    explicit PreferencesWorld(const Json::Value& map = sampleMap())
    {
        service.setEeprom("left", map);
        service.addPrinter(machine());
        connectFacade();
    }

    ~PreferencesWorld()
    {
        if (dialog)
            delete dialog;
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    static Printer::Data machine()
    {
        Printer::Data data = ScriptedService::machine("left", Printer::Fabrino2X);
        data.displayName = "Left <b>one</b>";
        data.firmwareVersion = FirmwareVersion("7.2");
        data.portName = "usb1";
        return data;
    }

    void connectFacade()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(added.count(), int(facade.printers().size()));
    }

    Printer* printer(const char* key = "left") const
    {
        return facade.printerFromKey(MachineName(key));
    }

    ui::OnboardPreferences* create()
    {
        return ui::OnboardPreferences::create(facade, printer(), nullptr);
    }

    /** The dialog is shown and has the focus. */
    void open()
    {
        dialog = create();
        QVERIFY(dialog);
        if (settings)
            dialog->setSettings(settings.get());
        dialog->show();
        QApplication::setActiveWindow(dialog);
        QTRY_VERIFY(dialog->isActiveWindow());
        service.clearRequests();
    }

    void useSettings()
    {
        settings = std::make_unique<QSettings>(folder.filePath(QStringLiteral("host.ini")),
                                               QSettings::IniFormat);
    }

    template <typename Widget>
    Widget& child(const char* name) const
    {
        auto* const found = dialog->findChild<Widget*>(QLatin1String(name));
        if (found == nullptr)
            QTest::qFail(name, __FILE__, __LINE__);
        return *found;
    }

    QPushButton& button(const char* name) const { return child<QPushButton>(name); }
    void click(const char* name) const { QTest::mouseClick(&button(name), Qt::LeftButton); }
    EepromGrama& grama() const { return child<EepromGrama>("grama"); }

    // In the order of their entries' names.
    JsonSpinBox& density() const { return *boxes().at(0); }
    JsonSpinBox& heater() const { return *boxes().at(1); }
    JsonSpinBox& nozzle() const { return *boxes().at(2); }

    /** A change as a user makes it. */
    void setHeater(int celsius) const { type(heater(), QString::number(celsius)); }

    static void type(QWidget& widget, const QString& keys)
    {
        widget.setFocus();
        QTest::keyClick(&widget, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&widget, keys);
        QTest::keyClick(&widget, Qt::Key_Return);
    }

    QString notice() const
    {
        const auto& label = child<QLabel>("noticeText");
        return label.isVisible() ? label.text() : QString();
    }
    /** The text of the button in the notice; empty when there is none. */
    QString noticeButton() const
    {
        const QPushButton& offered = button("noticeButton");
        return offered.isVisible() ? offered.text() : QString();
    }

    /** Whether form, reset and write are enabled; backups and loading go with the form. */
    QString enabled() const
    {
        QString state;
        state += QLatin1Char(grama().isEnabled() ? 'F' : '-');
        state += QLatin1Char(button("factoryResetButton").isEnabled() ? 'R' : '-');
        state += QLatin1Char(button("writeButton").isEnabled() ? 'W' : '-');
        if (button("backupsButton").isEnabled() != grama().isEnabled() ||
            button("loadFromFileButton").isEnabled() != grama().isEnabled())
            state += QStringLiteral(" backups or files are not as the form");
        return state;
    }

    void unplug()
    {
        service.removePrinter("left");
        QTRY_VERIFY(!printer());
        QTRY_VERIFY(!dialog || !grama().isEnabled());
    }

    /** Returns when the machine's coming has been handled, unless a message is in the way. */
    void plugIn(const Printer::Data& data = machine())
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        service.addPrinter(data);
        QTRY_COMPARE(added.count(), 1);
    }

    /** Everything that was posted, also the deletion of a closed dialog. */
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    static JsonRpcException error(const char* exceptionName, const char* message = "Refused")
    {
        Json::Value data(Json::objectValue);
        data["exception"]["name"] = exceptionName;
        return JsonRpcException(message, data);
    }

    ScriptedService service;
    TrovekQt facade;
    QTemporaryDir folder;
    std::unique_ptr<QSettings> settings;
    QPointer<ui::OnboardPreferences> dialog;

private:
    QList<JsonSpinBox*> boxes() const { return grama().findChildren<JsonSpinBox*>(); }
};

} // namespace trovek
