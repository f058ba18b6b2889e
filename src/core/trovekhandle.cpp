#include "trovek-ui/trovekhandle.h"

#include "trovek-ui/machine_types.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QSettings>
#include <QString>
#include <QUrl>

#include <exception>
#include <stdexcept>

static constexpr char kLogUnit[] = "src\\core\\trovekhandle";

namespace trovek::ui {

namespace {

// An identity may hold a slash, which would make a group of its own in the settings.
QString knownTypeKey(const Port& port)
{
    const QByteArray identity = QUrl::toPercentEncoding(toQString(port.identity()));
    return QStringLiteral("KnownMachineTypes/%1").arg(QString::fromLatin1(identity));
}

} // namespace

TrovekHandle::TrovekHandle(QSettings* const settings)
    : m_settings(settings)
{
    if (m_settings == nullptr)
        throw std::logic_error("null settings");
    connect(&m_facade, &TrovekQt::printerAdded, this, &TrovekHandle::slotPrinterAdded);
    connect(&m_facade, &TrovekQt::portAttached, this, &TrovekHandle::slotPortAttached);
}

TrovekHandle::~TrovekHandle() = default;

void TrovekHandle::slotPortAttached(const std::string& portName)
{
    try {
        openIfKnown(portName);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

void TrovekHandle::slotPrinterAdded(trovek::Printer* printer)
{
    if (printer == nullptr) {
        TROVEK_LOG(0) << "null printer" << std::endl;
        return;
    }
    try {
        remember(*printer);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

void TrovekHandle::openIfKnown(const std::string& portName)
{
    const Port port = m_facade.portFromName(portName);
    TROVEK_LOG(1) << to_string(port) << std::endl;
    if (portInConnectionWhitelist(port)) {
        m_facade.connectToPort(port);
        return;
    }
    const QString known = m_settings->value(knownTypeKey(port), QString()).toString();
    // A device that never was a known machine is opened by the user only.
    if (!known.isEmpty() && printerTypeFromIdentifier(known) != Printer::UnknownType)
        m_facade.connectToPort(port);
}

void TrovekHandle::remember(const Printer& printer)
{
    const QString identifier = printerTypeToIdentifier(printer.type());
    const std::string portName = printer.portName();
    for (const Port& port : m_facade.ports()) {
        if (port.name() == portName)
            m_settings->setValue(knownTypeKey(port), identifier);
    }
}

} // namespace trovek::ui
