#include "simulate_menu.h"

#include "icons.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <QActionGroup>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\simulate_menu";
constexpr int kLateMs = 3000;
constexpr int kUploadFailurePercent = 50;

QString textMember(const Json::Value& object, const char* name)
{
    return object.isObject() && object[name].isString() ? trovek::toQString(object[name].asString())
                                                        : QString();
}

/** No letter of a name is a key. */
QString inMenu(QString name)
{
    return name.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

SimulateMenu::SimulateMenu(trovek::TrovekQt& facade, QWidget* parent)
    : QMenu(tr("&Simulate"), parent)
    , m_facade(facade)
{
    setObjectName(QStringLiteral("simulate"));
    m_fillTimer.setSingleShot(true);
    m_fillTimer.setInterval(0);
    connect(&m_fillTimer, &QTimer::timeout, this, &SimulateMenu::fill);
    const auto fillLater = [this] {
        m_fillTimer.start();
    };
    connect(&m_facade, &trovek::TrovekQt::connected, this, fillLater);
    connect(&m_facade, &trovek::TrovekQt::disconnected, this, fillLater);
    connect(&m_facade, &trovek::TrovekQt::portAttached, this, fillLater);
    connect(&m_facade, &trovek::TrovekQt::portDetached, this, fillLater);
    fill();
}

void SimulateMenu::fill()
{
    for (QMenu* menu : findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
        menu->deleteLater();
    clear();
    if (m_facade.isConnected()) {
        try {
            const Json::Value machines = m_facade.simulatedMachines();
            if (machines.isArray()) {
                for (const Json::Value& machine : machines)
                    addMachine(machine);
                if (!isEmpty()) {
                    addSeparator();
                    addFirmwares(machines);
                    addTroubles(machines);
                }
            }
        } catch (const std::exception& e) {
            // A service for real machines only does not know the question.
            TROVEK_LOG(1) << "No virtual machines: " << e.what() << std::endl;
        }
    }
    if (actions().isEmpty())
        addAction(tr("No virtual machines"))->setEnabled(false);
}

void SimulateMenu::addMachine(const Json::Value& machine)
{
    const QString name = textMember(machine, "name");
    if (name.isEmpty())
        return;
    const bool pluggedIn = machine["plugged_in"].isBool() && machine["plugged_in"].asBool();
    const QString typeName = textMember(machine, "type_name");
    QAction* action = addAction(
        inMenu(typeName.isEmpty() || typeName == name ? name : tr("%1 (%2)").arg(name, typeName)));
    action->setData(name);
    action->setCheckable(true);
    action->setChecked(pluggedIn);
    action->setStatusTip(pluggedIn ? tr("Pull this virtual machine's plug")
                                   : tr("Plug this virtual machine in"));
    // Queued: the answer may make the menu anew, and with it this action.
    connect(
        action, &QAction::triggered, this,
        [this, name](bool checked) { setPluggedIn(name, checked); }, Qt::QueuedConnection);
}

void SimulateMenu::addFirmwares(const Json::Value& machines)
{
    QMenu* firmwares = nullptr;
    for (const Json::Value& machine : machines) {
        const QString name = textMember(machine, "name");
        if (name.isEmpty() || !machine["firmware_versions"].isArray())
            continue;
        if (!firmwares)
            firmwares = addMenu(tr("&Firmware"));
        QMenu* choices = firmwares->addMenu(inMenu(name));
        auto* group = new QActionGroup(choices);
        for (const Json::Value& offered : machine["firmware_versions"]) {
            if (!offered.isString())
                continue;
            const QString version = trovek::toQString(offered.asString());
            QAction* action = group->addAction(choices->addAction(inMenu(version)));
            action->setCheckable(true);
            action->setChecked(version == textMember(machine, "firmware_version"));
            action->setStatusTip(
                tr("Give this virtual machine firmware %1 and plug it in again").arg(version));
            connect(
                action, &QAction::triggered, this,
                [this, name, version] { setFirmware(name, version); }, Qt::QueuedConnection);
        }
    }
}

void SimulateMenu::addMachineChoices(QMenu* menu, const QString& title, const QString& objectName,
                                     const Json::Value& machines,
                                     const std::function<void(const std::string& machine)>& request)
{
    QMenu* choices = menu->addMenu(title);
    choices->setObjectName(objectName);
    for (const Json::Value& machine : machines) {
        const QString name = textMember(machine, "name");
        if (name.isEmpty())
            continue;
        const auto act = [this, name, request] {
            ask([&] { request(trovek::toStdString(name)); });
        };
        connect(choices->addAction(inMenu(name)), &QAction::triggered, this, act,
                Qt::QueuedConnection);
    }
}

void SimulateMenu::addTroubles(const Json::Value& machines)
{
    QMenu* troubles = addMenu(tr("&Trouble"));
    troubles->setObjectName(QStringLiteral("simulateTrouble"));
    addMachineChoices(troubles, tr("Move to Another &Port"), QStringLiteral("simulatePort"),
                      machines, [this](const std::string& machine) {
                          m_facade.simulatePort(machine, "moved" + std::to_string(++m_movedPorts));
                      });
    addMachineChoices(troubles, tr("Let the Next &Upload Fail"), QStringLiteral("simulateUpload"),
                      machines, [this](const std::string& machine) {
                          m_facade.simulateUploadFailure(machine, kUploadFailurePercent);
                      });
    addFaults(troubles);
}

void SimulateMenu::addFaults(QMenu* menu)
{
    using trovek::SimulatedFault;
    QMenu* faults = menu->addMenu(tr("The Next &Request"));
    faults->setObjectName(QStringLiteral("simulateFault"));
    const auto add = [this, faults](const QString& text, const char* name,
                                    const SimulatedFault& fault) {
        QAction* action = faults->addAction(text);
        action->setObjectName(QLatin1String(name));
        connect(
            action, &QAction::triggered, this,
            [this, fault] { ask([&] { m_facade.simulateFault(fault); }); }, Qt::QueuedConnection);
    };
    const std::string any("*");
    add(tr("Is Answered &Late"), "faultLate", SimulatedFault::late(any, kLateMs));
    add(tr("Is &Never Answered"), "faultNever", SimulatedFault::never(any));
    add(tr("&Fails"), "faultError",
        SimulatedFault::error(any, JsonRpcException("A simulated fault", Json::Value())));
    add(tr("Gets an &Odd Answer"), "faultAnswer", SimulatedFault::answer(any, Json::Value("odd")));
    add(tr("Loses the &Link"), "faultDrop", SimulatedFault::dropBefore(any));
    faults->addSeparator();
    QAction* clear = faults->addAction(tr("&Clear All Faults"));
    clear->setObjectName(QStringLiteral("clearFaults"));
    connect(
        clear, &QAction::triggered, this,
        [this] { ask([this] { m_facade.clearSimulatedFaults(); }); }, Qt::QueuedConnection);
}

void SimulateMenu::setPluggedIn(const QString& name, bool pluggedIn)
{
    ask([this, machine = trovek::toStdString(name), pluggedIn] {
        if (pluggedIn)
            m_facade.simulatePlugIn(machine);
        else
            m_facade.simulateUnplug(machine);
    });
}

void SimulateMenu::setFirmware(const QString& name, const QString& version)
{
    ask([&] {
        m_facade.simulateFirmware(trovek::toStdString(name), trovek::toStdString(version));
    });
}

void SimulateMenu::ask(const std::function<void()>& request)
{
    try {
        request();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        emit failed(QString::fromUtf8(e.what()));
    }
    m_fillTimer.start();
}

} // namespace ostrand
