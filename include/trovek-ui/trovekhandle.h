#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/trovekqt.h"

#include <QObject>

#include <string>

class QSettings;

namespace trovek::ui {

/**
 * What a host creates first: it owns the service facade and opens machines that it recognises.
 *
 * A port that is attached is opened when the client has it on its whitelist, or when a machine was
 * seen on the same device before. What was seen is kept in the settings under
 * "KnownMachineTypes/" followed by the port's identity, percent-encoded, as a machine type
 * identifier such as "fabrino_2". An error in either is logged and the port stays closed.
 */
class TROVEK_UI_EXPORT TrovekHandle : public QObject
{
    Q_OBJECT

public:
    /**
     * @param settings not owned; must outlive the handle
     * @throws std::logic_error "null settings"
     */
    explicit TrovekHandle(QSettings* const settings);
    ~TrovekHandle() override;

    /** The facade lives exactly as long as the handle; the host connects it to the service. */
    TrovekQt* operator->() { return &m_facade; }
    TrovekQt& operator*() { return m_facade; }

private slots:
    void slotPortAttached(const std::string& portName);
    void slotPrinterAdded(trovek::Printer* printer);

private:
    void openIfKnown(const std::string& portName);
    void remember(const Printer& printer);

    TrovekQt m_facade;
    QSettings* const m_settings;
};

} // namespace trovek::ui
