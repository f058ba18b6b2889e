#include "firmware_upload/old_firmware_check.h"

#include "trovek-ui/machine_types.h"
#include "trovek-ui/messages/firmware.h"
#include "trovek-ui/old_firmware_check.h"
#include "trovek-ui/trovekqt.h"
#include "trovek-ui/util.h"
#include "trovek-ui/widget_factory.h"

#include <trovek/firmware_version.h>
#include <trovek/log.h>

#include <QApplication>

#include <exception>
#include <vector>

namespace trovek {

static constexpr char kLogUnit[] = "src\\firmware_upload\\old_firmware_check";

bool isOldFirmware(Printer::Type type, const FirmwareVersion& version)
{
    if (!version.valid())
        return false;
    // The minor version decides alone as well: a Cubio's firmware 5.0 counts as old.
    if (type == Printer::CubioSingle || type == Printer::CubioDual)
        return version.major() < 4 || version.minor() < 1;
    return version.major() <= 5;
}

void enableOldFirmwareCheck(TrovekQt& facade, WidgetFactory* factory, QSettings* settings)
{
    // They live for the rest of the program.
    static auto* const checks = new std::vector<const OldFirmwareCheck*>;
    checks->push_back(new OldFirmwareCheck(facade, factory, settings));
}

OldFirmwareCheck::OldFirmwareCheck(TrovekQt& facade, WidgetFactory* factory, QSettings* settings)
    : m_facade(facade)
    , m_factory(factory)
    , m_settings(settings)
{
    checkAll();
    connect(&m_facade, &TrovekQt::printerAdded, this, &OldFirmwareCheck::checkMachine);
}

OldFirmwareCheck::~OldFirmwareCheck() = default;

void OldFirmwareCheck::checkAll()
{
    try {
        for (Printer* machine : m_facade.printers()) {
            if (machine->canPrint())
                checkMachine(machine);
        }
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void OldFirmwareCheck::checkMachine(Printer* machine)
{
    try {
        if (isOldFirmware(machine->type(), machine->firmwareVersion()) &&
            !isWarnedAbout(machine->key()))
            warn(*machine);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

bool OldFirmwareCheck::isWarnedAbout(const MachineName& machine) const
{
    for (const OldFirmwareHandler* handler : m_handlers) {
        if (handler->machine() == machine)
            return true;
    }
    return false;
}

void OldFirmwareCheck::warn(const Printer& machine)
{
    const message::OldFirmwareCheck warning(
        printerTypeToHumanString(machine.type(), PrinterStringWithBrand),
        firmwareVersionToString(machine.firmwareVersion()), nullptr, m_settings);
    MessageBox* const box = warning.box();
    auto* const handler = new OldFirmwareHandler(m_facade, machine.key(), m_factory, box);
    m_handlers.insert(handler);
    connect(handler, &QObject::destroyed, this, [this, handler] { m_handlers.erase(handler); });
    connect(box, &MessageBox::finished, handler, &OldFirmwareHandler::messageBoxFinished);
    connect(box, &MessageBox::finished, box, &QObject::deleteLater);
    // Nobody else owns it.
    if (!box->maybeShowNonModal())
        delete box;
}

OldFirmwareHandler::OldFirmwareHandler(TrovekQt& facade, const MachineName& machine,
                                       WidgetFactory* factory, MessageBox* box)
    : QObject(box)
    , m_facade(facade)
    , m_machine(machine)
    , m_factory(factory)
{}

void OldFirmwareHandler::messageBoxFinished(int code)
{
    if (code != message::OldFirmwareCheck::UpgradeFirmware || !m_factory)
        return;
    Printer* const printer = m_facade.printerFromKey(m_machine);
    if (!printer) {
        TROVEK_LOG(0) << "No firmware upgrade: the machine " << m_machine.name() << " has gone"
                      << std::endl;
        return;
    }
    m_factory->showFirmwareUploadDialog(printer, nullptr);
}

} // namespace trovek
