#include "trovek-ui/direct_controls_dialog.h"

#include "direct_controls/printer_pixmap.h"
#include "util/wait_cursor.h"

#include "trovek-ui/extruder_control_widget.h"
#include "trovek-ui/machine_types.h"
#include "trovek-ui/messages/printing.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/printer.h>
#include <trovek/text.h>

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <exception>

namespace trovek {

static constexpr char kLogUnit[] = "src\\direct_controls\\direct_controls_dialog";

bool isCbo(TrovekQt& facade, const MachineName& machine)
{
    const Printer* const printer = facade.printerFromKey(machine);
    return printer &&
           (printer->type() == Printer::CubioSingle || printer->type() == Printer::CubioDual);
}

DirectControlsDialog::DirectControlsDialog(TrovekQt& facade, const MachineName& machine,
                                           QWidget* parent)
    : QDialog(parent)
    , m_facade(facade)
    , m_machine(machine)
    , m_picture(new QLabel(this))
    , m_name(new QLabel(this))
    , m_status(new QLabel(this))
    , m_home(new QPushButton(tr("Home Axes"), this))
    , m_notice(new QLabel(this))
{
    setObjectName(QStringLiteral("directControls"));
    setWindowTitle(tr("Orvane Direct Controls"));
    if (isCbo(facade, machine))
        m_calibrate = new QPushButton(tr("Run Calibration Script"), this);
    m_extruders = new ExtruderControlWidget(facade, machine, this);
    layOut();

    connect(m_home, &QPushButton::clicked, this, &DirectControlsDialog::slotHome);
    if (m_calibrate)
        connect(m_calibrate, &QPushButton::clicked, this, &DirectControlsDialog::slotCalibrateCBO);
    for (const auto signal :
         {&TrovekQt::printerAdded, &TrovekQt::printerRemoved, &TrovekQt::printerChanged})
        connect(&facade, signal, this, &DirectControlsDialog::sanitize);
    connect(&facade, &TrovekQt::printerAdded, this, [this](const Printer* printer) {
        if (printer->key() == m_machine)
            showMachine();
    });
    showMachine();
    sanitize();
}

DirectControlsDialog::~DirectControlsDialog() = default;

void DirectControlsDialog::layOut()
{
    m_picture->setObjectName(QStringLiteral("printerPicture"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_name->setObjectName(QStringLiteral("printerName"));
    m_name->setAlignment(Qt::AlignCenter);
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);
    m_status->setObjectName(QStringLiteral("printerStatus"));
    m_status->setAlignment(Qt::AlignCenter);
    m_home->setObjectName(QStringLiteral("home"));
    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->setTextFormat(Qt::PlainText);
    m_notice->setWordWrap(true);
    m_extruders->setObjectName(QStringLiteral("extruders"));
    auto* const close = new QPushButton(tr("&Close"), this);
    close->setObjectName(QStringLiteral("close"));
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    auto* const machine = new QVBoxLayout;
    machine->addWidget(m_picture);
    machine->addWidget(m_name);
    machine->addWidget(m_status);
    machine->addSpacing(12);
    machine->addWidget(m_home);
    if (m_calibrate) {
        m_calibrate->setObjectName(QStringLiteral("calibrate"));
        machine->addWidget(m_calibrate);
    }
    machine->addWidget(m_notice);
    machine->addStretch();

    auto* const grid = new QGridLayout(this);
    grid->addLayout(machine, 0, 0);
    grid->addWidget(m_extruders, 0, 1);
    grid->addWidget(close, 1, 0, 1, 2, Qt::AlignRight);
    // Return in a field must not move the machine.
    for (QPushButton* button : findChildren<QPushButton*>())
        button->setAutoDefault(false);
    close->setFocus();
}

void DirectControlsDialog::showMachine()
{
    const Printer* const printer = m_facade.printerFromKey(m_machine);
    m_picture->setPixmap(pixmapFromPrinter(printer));
    m_name->setText(printer ? printerTypeToHumanString(printer->type(), PrinterStringInSentence)
                            : tr("Unknown Printer"));
}

void DirectControlsDialog::sanitize()
{
    // The panel knows which job is its own.
    const bool free = m_extruders->isMachineFree();
    m_home->setEnabled(free);
    if (m_calibrate)
        m_calibrate->setEnabled(free);
    const Printer* const printer = m_facade.printerFromKey(m_machine);
    if (!printer || !printer->isConnected())
        m_status->setText(tr("Not Connected"));
    else if (printer->state() == Printer::Idle)
        m_status->setText(tr("Status: Idle"));
    else
        m_status->setText(tr("Status: Busy"));
}

bool DirectControlsDialog::event(QEvent* event)
{
    const bool isHandled = QDialog::event(event);
    // A notice of several lines makes the window no higher by itself, and would cut the picture.
    if (event->type() == QEvent::LayoutRequest)
        resize(width(), qMax(height(), heightForWidth(width())));
    return isHandled;
}

void DirectControlsDialog::slotHome()
{
    runScript(tr("Home Script"), [this] { m_facade.home(m_machine); });
}

void DirectControlsDialog::slotCalibrateCBO()
{
    if (!isCbo(m_facade, m_machine)) {
        TROVEK_LOG(0) << "Calibration only for CBOs" << std::endl;
        return;
    }
    // Nobody could press "Stop" while the message is shown.
    stopJog();
    const QPointer<DirectControlsDialog> self(this);
    message::CBOCalibrationStart(this).exec();
    if (self && runScript(tr("Cubio Calibration"), [this] { m_facade.cboCalibration(m_machine); }))
        message::CBOCalibrationDone(this).exec();
}

void DirectControlsDialog::stopJog()
{
    if (m_extruders->isJogging())
        m_extruders->slotStopJogging();
}

bool DirectControlsDialog::runScript(const QString& title, const std::function<void()>& script)
{
    // One job at a time runs on a machine.
    stopJog();
    m_notice->setText(title);
    m_notice->repaint();
    try {
        const WaitCursor wait;
        script();
        m_notice->clear();
        return true;
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        m_notice->setText(tr("%1: %2").arg(title, toQString(e.what())));
        return false;
    }
}

} // namespace trovek
