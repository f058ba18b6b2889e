#include "fault_scene.h"
#include "window_operation.h"

#include "direct_controls/direct_world.h"

#include <trovek-ui/control_panel.h>
#include <trovek-ui/port_list.h>

#include <trovek/text.h>

#include <QPushButton>

namespace trovek {

namespace {

/** The control panel with one of its buttons, for the machine's port. */
class Panel : public WindowInUse
{
public:
    Panel(FaultScene& scene, const char* button, bool opensPort)
        : m_scene(scene)
        , m_panel(scene.facade)
        , m_button(*child<QPushButton>(m_panel, button))
        , m_opensPort(opensPort)
    {
        m_panel.show();
    }

    bool prepare() override
    {
        FaultScene::settle();
        m_before = isMachineOpen();
        return selectPort() && m_button.isEnabled();
    }
    void press() override { QTest::mouseClick(&m_button, Qt::LeftButton); }
    bool isOpen() override { return m_panel.isVisible(); }
    bool isDone() override { return isMachineOpen() == m_opensPort && m_before != m_opensPort; }

private:
    bool isMachineOpen() const { return m_scene.witness.printerFromKey(m_scene.key) != nullptr; }

    /** Where the machine is now. */
    bool selectPort()
    {
        auto* const ports = child<PortListView>(m_panel, "ports");
        const auto* const model = qobject_cast<const PortListModel*>(ports->model());
        const std::string wanted =
            m_scene.witness.isConnected() ? m_scene.portName() : std::string();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->port(model->index(row, 0)).name() == wanted) {
                QTest::mouseClick(ports->viewport(), Qt::LeftButton, {},
                                  ports->visualRect(model->index(row, 0)).center());
                return true;
            }
        }
        return false;
    }

    FaultScene& m_scene;
    ControlPanel m_panel;
    QPushButton& m_button;
    const bool m_opensPort;
    bool m_before = false;
};

WindowOperation operation(const char* name, const char* method, const char* button, bool opensPort,
                          const QStringList& message)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.answerIsRead = false;
    made.isOpen = !opensPort;
    made.refused.messages = {message};
    made.broken.messages = {message};
    // There is no port that a button could be for.
    made.special[FaultKind::StopBefore] = Verdict();
    made.special[FaultKind::UnplugBefore] = Verdict();
    made.special[FaultKind::UnplugAtOnce] = made.refused;
    made.special[FaultKind::UnplugAtOnce].error = QStringLiteral("No such port: virtual1");
    made.special[FaultKind::StopUnseen] = made.broken;
    made.special[FaultKind::StopUnseen].error = QStringLiteral("port virtual1: ");
    made.open = [=](FaultScene& scene) {
        return std::make_unique<Panel>(scene, button, opensPort);
    };
    return made;
}

} // namespace

std::vector<WindowOperation> controlPanelOperations()
{
    WindowOperation opening =
        operation("control panel, connect", "connect_to_port", "connect", true,
                  {QStringLiteral("Failed to connect to printer"),
                   QStringLiteral("Couldn't connect to port virtual1")});
    opening.deadlineMs = 60000;
    WindowOperation closing =
        operation("control panel, disconnect", "disconnect_from_port", "disconnect", false,
                  {QStringLiteral("An error occurred in the background service.")});
    // With the service the machine goes, or with its cable.
    for (const FaultKind kind : {FaultKind::StopUnseen, FaultKind::StopDuring,
                                 FaultKind::KillDuring, FaultKind::UnplugAtOnce})
        closing.special.emplace(kind, closing.verdictOf(kind)).first->second.effect =
            Verdict::Either;
    return {opening, closing};
}

} // namespace trovek
