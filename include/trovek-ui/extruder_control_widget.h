#pragma once

#include "trovek-ui/export.h"

#include <trovek/job.h>
#include <trovek/machine_name.h>
#include <trovek/printer.h>

#include <QWidget>

#include <memory>

namespace trovek {

class TrovekQt;

/**
 * Feeds or retracts the filament of one machine, and heats or cools its extruders.
 *
 * Filament moves until it is stopped: by "Stop", by hiding or destroying the widget, and when the
 * machine leaves. What the service refuses is logged and shown below the buttons.
 */
class TROVEK_UI_EXPORT ExtruderControlWidget : public QWidget
{
    Q_OBJECT

public:
    /**
     * @param facade  not owned; must outlive the widget
     * @param machine may be away now; it is looked up again for every action
     */
    ExtruderControlWidget(TrovekQt& facade, const MachineName& machine, QWidget* parent = nullptr);
    ~ExtruderControlWidget() override;

    /** Whether filament moves that this widget has set in motion. */
    bool isJogging() const;
    /** Whether the machine is there and has no other job than this widget's own. */
    bool isMachineFree() const;

public slots:
    void loadClicked();
    void unloadClicked();
    void slotStopJogging();
    /** Heats the extruder in use to the target, or lets it cool when it is heated. */
    void setTemperatureClicked();
    /** Brings the controls in line with the machine. */
    void sanitize();
    void printerChanged(Printer* printer);

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void printerRemoved(Printer* printer);
    void jobConcluded(Job::ID id);
    void jogExtruder(const bool reverse);
    void stopOwnJog();
    int toolhead() const;

    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
