#pragma once

#include <QMenu>
#include <QTimer>

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/** The connected machines, each with what can be done with it. */
class MachineMenu : public QMenu
{
    Q_OBJECT

public:
    /** @param facade not owned; must outlive the menu */
    explicit MachineMenu(trovek::TrovekQt& facade, QWidget* parent = nullptr);

    /** The action's objectName for a machine. */
    static QString preferencesActionName(const QString& machine);
    static QString directControlsActionName(const QString& machine);
    static QString firmwareActionName(const QString& machine);

signals:
    void controlPanelRequested();
    void preferencesRequested(const QString& machine);
    void directControlsRequested(const QString& machine);
    void firmwareUploadRequested(const QString& machine);

private:
    using Request = void (MachineMenu::*)(const QString& machine);

    void fill();
    void addTool(QMenu* menu, const QString& text, const QString& statusTip,
                 const QString& objectName, const QString& machine, Request request);

    trovek::TrovekQt& m_facade;
    QTimer m_fillTimer;
    /** What is shown now. */
    QStringList m_shown;
};

} // namespace ostrand
