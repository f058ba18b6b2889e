#include "simulate_menu.h"

#include "icons.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/text.h>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\simulate_menu";

QString textMember(const Json::Value& object, const char* name)
{
    return object.isObject() && object[name].isString() ? trovek::toQString(object[name].asString())
                                                        : QString();
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
    clear();
    if (m_facade.isConnected()) {
        try {
            const Json::Value machines = m_facade.simulatedMachines();
            if (machines.isArray()) {
                for (const Json::Value& machine : machines) {
                    const QString name = textMember(machine, "name");
                    if (name.isEmpty())
                        continue;
                    const Json::Value& pluggedIn = machine["plugged_in"];
                    addMachine(name, textMember(machine, "type_name"),
                               pluggedIn.isBool() && pluggedIn.asBool());
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

void SimulateMenu::addMachine(const QString& name, const QString& typeName, bool pluggedIn)
{
    QString text =
        typeName.isEmpty() || typeName == name ? name : tr("%1 (%2)").arg(name, typeName);
    text.replace(QLatin1Char('&'), QLatin1String("&&"));
    QAction* action = addAction(text);
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

void SimulateMenu::setPluggedIn(const QString& name, bool pluggedIn)
{
    try {
        if (pluggedIn)
            m_facade.simulatePlugIn(trovek::toStdString(name));
        else
            m_facade.simulateUnplug(trovek::toStdString(name));
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        emit failed(QString::fromUtf8(e.what()));
    }
    m_fillTimer.start();
}

} // namespace ostrand
