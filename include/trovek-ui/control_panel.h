#pragma once

#include "trovek-ui/export.h"

#include <QWidget>

#include <string>

class QAbstractButton;
class QLabel;
class QPushButton;

namespace trovek {

class PortListModel;
class PortListView;
class Printer;
class TrovekQt;

/**
 * The window in which a user picks a port, connects and disconnects its machine, and asks for the
 * tools that work on it. Whoever made the panel opens the tools. GUI thread only.
 */
class TROVEK_UI_EXPORT ControlPanel : public QWidget
{
    Q_OBJECT

public:
    /** @param facade not owned; must outlive the panel */
    explicit ControlPanel(TrovekQt& facade, QWidget* parent = nullptr);
    ~ControlPanel() override;

public slots:
    /** Brings the panel in line with the chosen port. */
    void sanitize();
    /** Waits for the service. What goes wrong is shown; the event loop runs meanwhile. */
    void connectToPort();
    void disconnectFromPort();
    void showDirectControls();
    void showOnboardPreferences();
    void showFirmwareUpload();

signals:
    // The parent is the panel's own: a tool must not go with the panel.
    void requestDirectControls(Printer* printer, QWidget* parent);
    void requestOnboardPrefs(Printer* printer, QWidget* parent);
    void requestFirmwareUpload(Printer* printer, QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void layOut();
    void connectSignals();
    void activate();
    /** The chosen port's name; empty when none is chosen. */
    std::string selectedPort() const;
    /** On the chosen port; null when there is none. */
    Printer* selectedPrinter() const;
    void showPrinter(const Printer* printer);
    void enableButtons(bool hasPort, bool isConnected);

    TrovekQt& m_facade;
    PortListModel* const m_ports;
    PortListView* const m_view;
    QLabel* const m_picture;
    QLabel* const m_name;
    QLabel* const m_status;
    QLabel* const m_port;
    QPushButton* const m_connect;
    QPushButton* const m_disconnect;
    QPushButton* const m_directControls;
    QPushButton* const m_onboardPreferences;
    QPushButton* const m_uploadFirmware;
    QPushButton* const m_close;
};

} // namespace trovek
