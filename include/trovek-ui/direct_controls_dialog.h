#pragma once

#include "trovek-ui/export.h"

#include <trovek/machine_name.h>

#include <QDialog>

#include <functional>

class QLabel;
class QPushButton;

namespace trovek {

class ExtruderControlWidget;
class TrovekQt;

/** Whether the machine is there and one of the older Cubios, which have a calibration script. */
TROVEK_UI_EXPORT bool isCbo(TrovekQt& facade, const MachineName& machine);

/**
 * Hands-on controls of one machine: homing, calibration where it has one, and the extruders.
 *
 * What would disturb a job that somebody else has started on the machine is disabled while it
 * runs.
 */
class TROVEK_UI_EXPORT DirectControlsDialog : public QDialog
{
    Q_OBJECT

public:
    /**
     * @param facade  not owned; must outlive the dialog
     * @param machine may be away now, but then the log has an error and the picture is empty
     */
    DirectControlsDialog(TrovekQt& facade, const MachineName& machine, QWidget* parent = nullptr);
    ~DirectControlsDialog() override;

protected:
    bool event(QEvent* event) override;

private slots:
    void slotHome();
    /** Shows what to do, waits for the machine, and says that it is done. */
    void slotCalibrateCBO();

private:
    void layOut();
    void showMachine();
    void sanitize();
    void stopJog();
    /** @return false when it failed; the log and the dialog say why */
    bool runScript(const QString& title, const std::function<void()>& script);

    TrovekQt& m_facade;
    const MachineName m_machine;
    QLabel* m_picture;
    QLabel* m_name;
    QLabel* m_status;
    QPushButton* m_home;
    QPushButton* m_calibrate = nullptr;
    QLabel* m_notice;
    ExtruderControlWidget* m_extruders;
};

} // namespace trovek
