#pragma once

#include "support/scripted_service.h"

#include <trovek-ui/trovekqt.h>

#include <QSignalSpy>
#include <QTest>

#include <string>
#include <vector>

namespace trovek {

/** A service with one machine, "bot", and a facade that is connected to it. */
class DirectWorld
{
public:
    static constexpr char kMachine[] = "bot";

    explicit DirectWorld(Printer::Type type, int extruders = 1, bool heatedPlatform = false)
        : m_machine(ScriptedService::machine(kMachine, type))
    {
        m_machine.numberOfExtruders = extruders;
        m_machine.hasHeatedPlatform = heatedPlatform;
        m_machine.toolTemperature.toolheads.assign(std::size_t(extruders), 25);
        m_machine.toolTemperature.platform = heatedPlatform ? 24 : 0;
        m_machine.toolheadTargetTemperature.assign(std::size_t(extruders), 0);
        service.addPrinter(m_machine);
        connectFacade();
    }

    ~DirectWorld()
    {
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void connectFacade()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(added.count(), int(facade.printers().size()));
    }

    MachineName name() const { return MachineName(kMachine); }

    /** Changes the machine, and returns when the facade has told of it. */
    template <typename Change>
    void change(Change change)
    {
        QSignalSpy changed(&facade, &TrovekQt::printerChanged);
        change(m_machine);
        service.changePrinter(m_machine);
        QTRY_VERIFY(!changed.isEmpty());
    }
    void setState(Printer::State state)
    {
        change([state](Printer::Data& machine) { machine.state = state; });
    }

    void unplug()
    {
        QSignalSpy removed(&facade, &TrovekQt::printerRemoved);
        service.removePrinter(kMachine);
        QTRY_COMPARE(removed.count(), 1);
    }
    void plugIn()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        service.addPrinter(m_machine);
        QTRY_COMPARE(added.count(), 1);
    }

    /** Of the requests that move and heat, each as "method value value ...". */
    QStringList takeRequests()
    {
        QStringList all;
        for (const ScriptedService::Request& request : service.requests()) {
            const Json::Value& p = request.params;
            if (request.method == "jog")
                all.append(QStringLiteral("jog %1 %2 %3")
                               .arg(p["axis"].asInt())
                               .arg(p["distance"].asInt())
                               .arg(p["limit_ms"].asInt()));
            else if (request.method == "cancel_job")
                all.append(QStringLiteral("cancel %1").arg(p["id"].asInt()));
            else if (request.method == "set_toolhead_temperature")
                all.append(QStringLiteral("heat %1 %2")
                               .arg(p["toolhead"].asInt())
                               .arg(p["target"].asInt()));
            else if (request.method == "home" || request.method == "cbo_calibration")
                all.append(QString::fromStdString(request.method));
            else
                continue;
            if (p.isMember("machine") && p["machine"] != kMachine)
                all.last() += QStringLiteral(" on another machine");
        }
        service.clearRequests();
        return all;
    }

    ScriptedService service;
    TrovekQt facade;

private:
    Printer::Data m_machine;
};

/** An inner widget by its name. */
template <typename Widget = QWidget>
Widget* child(const QWidget& parent, const char* name)
{
    auto* const found = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

} // namespace trovek
