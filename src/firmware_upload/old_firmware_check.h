#pragma once

#include "trovek-ui/export.h"

#include <trovek/machine_name.h>
#include <trovek/printer.h>

#include <QObject>
#include <QPointer>
#include <QSettings>

#include <set>

namespace trovek {

class FirmwareVersion;
class MessageBox;
class OldFirmwareHandler;
class TrovekQt;
class WidgetFactory;

/** Whether a machine of this type has a firmware that is too old; false for an invalid version. */
TROVEK_UI_EXPORT bool isOldFirmware(Printer::Type type, const FirmwareVersion& version);

/** Looks at each machine when it comes. */
class TROVEK_UI_EXPORT OldFirmwareCheck : public QObject
{
    Q_OBJECT

public:
    /** Looks at the machines that are there at once. */
    OldFirmwareCheck(TrovekQt& facade, WidgetFactory* factory, QSettings* settings);
    ~OldFirmwareCheck() override;

public slots:
    void checkMachine(Printer* machine);

private:
    void checkAll();
    void warn(const Printer& machine);
    bool isWarnedAbout(const MachineName& machine) const;

    TrovekQt& m_facade;
    const QPointer<WidgetFactory> m_factory;
    const QPointer<QSettings> m_settings;
    /** Of the warnings that are open. */
    std::set<const OldFirmwareHandler*> m_handlers;
};

/** What the user answers to one warning; a child of its message box. */
class TROVEK_UI_EXPORT OldFirmwareHandler : public QObject
{
    Q_OBJECT

public:
    OldFirmwareHandler(TrovekQt& facade, const MachineName& machine, WidgetFactory* factory,
                       MessageBox* box);

    const MachineName& machine() const { return m_machine; }

public slots:
    void messageBoxFinished(int code);

private:
    TrovekQt& m_facade;
    const MachineName m_machine;
    const QPointer<WidgetFactory> m_factory;
};

} // namespace trovek
