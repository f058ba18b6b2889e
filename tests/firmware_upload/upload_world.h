#pragma once

#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/firmware_upload_dialog.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/wire.h>

#include <rpcwire/json_text.h>

#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

#include <string>

namespace trovek {

constexpr char kUploadUnit[] = "src\\firmware_upload\\firmwareuploaddialog";

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline Json::Value parse(const std::string& json)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(json, &value, &error))
        qFatal("Test data is not JSON: %s in %s", error.c_str(), json.c_str());
    return value;
}

/** What a user could read on a label, each time that it was painted. */
class PaintedTexts : public QObject
{
public:
    explicit PaintedTexts(QLabel* label)
        : m_label(label)
    {
        label->installEventFilter(this);
    }

    /** Texts that were painted under the wait cursor. */
    QStringList whileWaiting;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QCursor* const cursor = QApplication::overrideCursor();
        if (event->type() == QEvent::Paint && cursor && cursor->shape() == Qt::WaitCursor)
            whileWaiting.append(m_label->text());
        return QObject::eventFilter(watched, event);
    }

private:
    QLabel* const m_label;
};

/** A service with one machine on a port and firmware for it, and the dialog. */
class UploadWorld
{
public:
    explicit UploadWorld(Printer::Type type = Printer::Fabrino2)
    {
        service.addPort(ScriptedService::port("usb1"));
        Printer::Data machine = ScriptedService::machine("left", type);
        machine.displayName = "Left Orvane";
        machine.portName = "usb1";
        machine.machineNames = {"fabrino_2", "fabrino"};
        machine.firmwareVersion = FirmwareVersion("7.1");
        service.addPrinter(machine);
        offer(R"([["7.2", "Old."], ["7.10", "New. Better."], ["7.5", "Usual."]])");
        service.onRequest("getuploadablemachines", [](const Json::Value&) {
            return parse(R"(["cubio", "fabrino", "fabrino_2"])");
        });
        connectFacade();
    }

    ~UploadWorld()
    {
        delete dialog;
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
    }

    void connectFacade()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(added.count(), int(facade.printers().size()));
    }

    /** What getmachineversions answers from now on. */
    void offer(const std::string& versions)
    {
        service.onRequest("getmachineversions",
                          [versions](const Json::Value&) { return parse(versions); });
    }

    Printer* printer() const { return facade.printerFromKey(MachineName("left")); }

    void make() { dialog = new ui::FirmwareUploadDialog(facade, printer()); }

    void open()
    {
        make();
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog));
    }

    void unplug()
    {
        const Printer::Data kept = service.printer("left");
        QSignalSpy removed(&facade, &TrovekQt::printerRemoved);
        service.removePrinter("left");
        QTRY_COMPARE(removed.count(), 1);
        m_unplugged = kept;
    }

    void plugIn()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        service.addPrinter(m_unplugged);
        QTRY_COMPARE(added.count(), 1);
    }

    template <typename Widget = QLabel>
    Widget* find(const char* name) const
    {
        auto* const found = dialog->findChild<Widget*>(QLatin1String(name));
        if (!found)
            qFatal("There is no %s", name);
        return found;
    }
    QPushButton* button(const char* name) const { return find<QPushButton>(name); }
    QComboBox* versions() const { return find<QComboBox>("versions"); }
    QString label(const char* name) const { return find(name)->text(); }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    int page() const { return find<QStackedWidget>("pages")->currentIndex(); }
    /** Empty while it is hidden. */
    QString error() const { return find("error")->isHidden() ? QString() : label("error"); }
    bool canGoOn() const { return button("next")->isEnabled(); }
    int requests(const char* method) const { return int(service.requests(method).size()); }

    ScriptedService service;
    TrovekQt facade;
    QPointer<ui::FirmwareUploadDialog> dialog;

private:
    Printer::Data m_unplugged;
};

/** The two clicks of a double click, as the window system tells them; the second may go elsewhere.
 */
inline void doubleClick(QWidget* first, QWidget* second)
{
    QTest::mouseClick(first, Qt::LeftButton);
    const QPointF middle = second->rect().center();
    QMouseEvent press(QEvent::MouseButtonDblClick, middle, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(second, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, middle, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(second, &release);
}

} // namespace trovek
