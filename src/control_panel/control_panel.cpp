#include "trovek-ui/control_panel.h"

#include "direct_controls/printer_pixmap.h"
#include "util/wait_cursor.h"

#include "trovek-ui/machine_types.h"
#include "trovek-ui/messages/service.h"
#include "trovek-ui/port_list.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QApplication>
#include <QGridLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <exception>

namespace trovek {

static constexpr char kLogUnit[] = "src\\control_panel\\control_panel";

namespace {

constexpr int kPictureSize = 160;
constexpr int kIconSizes[] = {16, 24, 32, 64, 128, 256, 512};

QIcon panelIcon()
{
    QIcon icon;
    for (const int size : kIconSizes) {
        icon.addFile(QStringLiteral(":/app_icons/hicolor/%1x%1/apps/trovek_ui.png").arg(size),
                     QSize(size, size));
    }
    return icon;
}

/** For what devices call themselves. */
QLabel* plainLabel(const char* name, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QPushButton* button(const char* name, const QString& text, QWidget* parent)
{
    auto* made = new QPushButton(text, parent);
    made->setObjectName(QLatin1String(name));
    return made;
}

} // namespace

ControlPanel::ControlPanel(TrovekQt& facade, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_facade(facade)
    , m_ports(new PortListModel(facade, this))
    , m_view(new PortListView(this))
    , m_picture(new QLabel(this))
    , m_name(plainLabel("printerName", this))
    , m_status(plainLabel("printerStatus", this))
    , m_port(plainLabel("printerPort", this))
    , m_connect(button("connect", tr("Connect"), this))
    , m_disconnect(button("disconnect", tr("Disconnect"), this))
    , m_directControls(button("directControls", tr("&Direct Controls"), this))
    , m_onboardPreferences(button("onboardPreferences", tr("&Onboard Preferences"), this))
    , m_uploadFirmware(button("uploadFirmware", tr("&Upload Firmware"), this))
    , m_close(button("close", tr("&Close"), this))
{
    setObjectName(QStringLiteral("controlPanel"));
    setWindowTitle(tr("Orvane Control Panel"));
    setWindowIcon(panelIcon());
    layOut();
    m_view->setModel(m_ports);
    if (m_ports->rowCount() > 0)
        m_view->setCurrentIndex(m_ports->index(0, 0));
    connectSignals();
    sanitize();
}

ControlPanel::~ControlPanel() = default;

void ControlPanel::layOut()
{
    m_view->setObjectName(QStringLiteral("ports"));
    m_view->setAccessibleName(tr("Ports"));
    m_view->setMinimumSize(200, 240);
    m_picture->setObjectName(QStringLiteral("printerPicture"));
    m_picture->setFixedSize(kPictureSize, kPictureSize);
    m_picture->setAlignment(Qt::AlignCenter);
    QFont nameFont = m_name->font();
    nameFont.setBold(true);
    m_name->setFont(nameFont);
    for (QLabel* label : {m_name, m_status, m_port})
        label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);

    m_connect->setToolTip(tr("Open the machine on this port"));
    m_disconnect->setToolTip(tr("Let go of the machine, so that another program can use it"));
    m_directControls->setToolTip(tr("Home the machine, heat it and move its filament"));
    m_onboardPreferences->setToolTip(tr("Edit the preferences that the machine keeps itself"));
    m_uploadFirmware->setToolTip(tr("Give the machine another firmware"));

    auto* machine = new QVBoxLayout;
    machine->addWidget(m_picture, 0, Qt::AlignHCenter);
    machine->addWidget(m_name);
    machine->addWidget(m_status);
    machine->addWidget(m_port);
    machine->addStretch();

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(m_connect);
    buttons->addWidget(m_disconnect);
    buttons->addSpacing(12);
    buttons->addWidget(m_directControls);
    buttons->addWidget(m_onboardPreferences);
    buttons->addWidget(m_uploadFirmware);
    buttons->addStretch();
    buttons->addWidget(m_close);

    auto* columns = new QHBoxLayout(this);
    columns->addWidget(m_view, 1);
    columns->addSpacing(12);
    columns->addLayout(machine);
    columns->addSpacing(12);
    columns->addLayout(buttons);
    m_view->setFocus();
}

void ControlPanel::connectSignals()
{
    connect(m_view, &PortListView::portSelectionChanged, this, &ControlPanel::sanitize);
    connect(m_view, &QAbstractItemView::activated, this, &ControlPanel::activate);
    connect(m_connect, &QAbstractButton::clicked, this, &ControlPanel::connectToPort);
    connect(m_disconnect, &QAbstractButton::clicked, this, &ControlPanel::disconnectFromPort);
    connect(m_directControls, &QAbstractButton::clicked, this, &ControlPanel::showDirectControls);
    connect(m_onboardPreferences, &QAbstractButton::clicked, this,
            &ControlPanel::showOnboardPreferences);
    connect(m_uploadFirmware, &QAbstractButton::clicked, this, &ControlPanel::showFirmwareUpload);
    connect(m_close, &QAbstractButton::clicked, this, &QWidget::close);
    // The model, which was made before, has changed by then.
    for (const auto signal :
         {&TrovekQt::printerAdded, &TrovekQt::printerRemoved, &TrovekQt::printerChanged})
        connect(&m_facade, signal, this, &ControlPanel::sanitize);
    for (const auto signal : {&TrovekQt::connected, &TrovekQt::disconnected})
        connect(&m_facade, signal, this, &ControlPanel::sanitize);
    connect(m_ports, &QAbstractItemModel::rowsRemoved, this, &ControlPanel::sanitize);
}

std::string ControlPanel::selectedPort() const
{
    const QModelIndex current = m_view->currentIndex();
    return current.isValid() ? m_ports->port(current).name() : std::string();
}

Printer* ControlPanel::selectedPrinter() const
{
    const std::string port = selectedPort();
    return port.empty() ? nullptr : m_facade.printerFromKey(m_facade.printerFromPortName(port));
}

void ControlPanel::sanitize()
{
    try {
        const std::string port = selectedPort();
        m_port->setText(toQString(port));
        if (port.empty()) {
            m_picture->clear();
            m_name->setText(tr("No printer selected"));
            m_status->clear();
            enableButtons(false, false);
            return;
        }
        const Printer* printer = selectedPrinter();
        showPrinter(printer);
        enableButtons(m_facade.isConnected(), printer && printer->isConnected());
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void ControlPanel::showPrinter(const Printer* printer)
{
    m_picture->setPixmap(pixmapFromPrinter(printer));
    m_name->setText(printer ? printerTypeToHumanString(printer->type(), PrinterStringInSentence)
                            : tr("Unknown Printer"));
    if (!printer || !printer->isConnected())
        m_status->setText(tr("Not Connected"));
    else if (printer->state() == Printer::Idle)
        m_status->setText(tr("Status: Idle"));
    else
        m_status->setText(tr("Status: Busy"));
}

void ControlPanel::enableButtons(bool hasPort, bool isConnected)
{
    m_connect->setEnabled(hasPort && !isConnected);
    m_disconnect->setEnabled(hasPort && isConnected);
    for (QPushButton* tool : {m_directControls, m_onboardPreferences, m_uploadFirmware})
        tool->setEnabled(isConnected);
}

void ControlPanel::activate()
{
    if (m_connect->isEnabled())
        connectToPort();
}

void ControlPanel::connectToPort()
{
    const std::string name = selectedPort();
    if (name.empty())
        return;
    try {
        const WaitCursor wait;
        m_facade.connectToPort(m_facade.portFromName(name));
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << "Connecting to port " << name << ": " << e.what() << std::endl;
        message::ConnectToPortFailed(toQString(name), this).exec();
    }
}

void ControlPanel::disconnectFromPort()
{
    const std::string name = selectedPort();
    if (name.empty())
        return;
    try {
        const WaitCursor wait;
        m_facade.disconnectFromPort(name);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << "Disconnecting from port " << name << ": " << e.what() << std::endl;
        message::GenericTrovekError(this).exec();
    }
}

void ControlPanel::showDirectControls()
{
    if (Printer* printer = selectedPrinter())
        emit requestDirectControls(printer, parentWidget());
}

void ControlPanel::showOnboardPreferences()
{
    if (Printer* printer = selectedPrinter())
        emit requestOnboardPrefs(printer, parentWidget());
}

void ControlPanel::showFirmwareUpload()
{
    if (Printer* printer = selectedPrinter())
        emit requestFirmwareUpload(printer, parentWidget());
}

void ControlPanel::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace trovek
