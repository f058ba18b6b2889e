#pragma once

#include "trovek-ui/export.h"

#include <QDialog>

#include <memory>

class QSettings;

namespace Json {
class Value;
}

namespace trovek {

class Printer;
class TrovekQt;

namespace ui {

/**
 * The editor of a printer's onboard preferences.
 *
 * What is edited reaches the printer only by "&Write Changes"; so do the values of a backup or of a
 * file, which are loaded as edits. While the printer is away nothing can be edited; when it is
 * back its values are read anew, and changes that were not written can be taken over. What stands
 * in the way shows as a message or as a line above the form; the dialog stays open.
 *
 * It deletes itself when it is closed. It waits for the printer without an event loop, for a
 * minute when it restores the factory's values. GUI thread only.
 */
class TROVEK_UI_EXPORT OnboardPreferences : public QDialog
{
    Q_OBJECT

public:
    /**
     * Reads the printer's preferences and makes the dialog for them, which the caller shows.
     *
     * Runs the event loop while it shows why there is none.
     * @param facade  not owned; must outlive the dialog
     * @param printer one of the facade's; null and archetypes are refused
     * @return null when it was refused or could not be read; the user has been told why
     */
    static OnboardPreferences* create(TrovekQt& facade, Printer* const printer,
                                      QWidget* const parent);
    ~OnboardPreferences() override;

    /**
     * Where the window's place and the folder of the last file are kept, in
     * "onboard_preferences/geometry" and "onboard_preferences/lastDir". Nothing is kept without.
     * @param settings not owned; may be null, and may go before the dialog
     */
    void setSettings(QSettings* settings);

public slots:
    /** Closes; asks first when there are changes. Nothing happens while a message is open. */
    void reject() override;

private slots:
    void eepromGramaUpdated();
    void writeChanges();
    void resetCompletelyClicked();
    void printerAdded(Printer* printer);
    void printerRemoved(Printer* printer);

protected:
    void hideEvent(QHideEvent* event) override;

private:
    class TROVEK_UI_NO_EXPORT Private;

    OnboardPreferences(TrovekQt& facade, Printer* printer, const Json::Value& map, QWidget* parent);

    void connectSignals();

    const std::unique_ptr<Private> d;
};

} // namespace ui
} // namespace trovek
