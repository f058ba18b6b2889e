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

signals:
    void preferencesRequested(const QString& machine);

private:
    void fill();

    trovek::TrovekQt& m_facade;
    QTimer m_fillTimer;
    /** What is shown now. */
    QStringList m_shown;
};

} // namespace ostrand
