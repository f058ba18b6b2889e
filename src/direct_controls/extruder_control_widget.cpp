#include "trovek-ui/extruder_control_widget.h"

#include "direct_controls/extruder_control_form.h"

#include "trovek-ui/spin_box.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QComboBox>
#include <QHideEvent>
#include <QLabel>
#include <QPushButton>

#include <exception>

namespace trovek {

static constexpr char kLogUnit[] = "src\\direct_controls\\extruder_control_widget";

namespace {

constexpr int kJogMm = 2000;
/** So long that the motion goes on until it is stopped. */
constexpr int kJogLimitMs = 1000000000;

} // namespace

class ExtruderControlWidget::Private
{
public:
    Private(TrovekQt& trovekQt, const MachineName& name, QWidget* owner)
        : facade(trovekQt)
        , machine(name)
        , form(owner)
    {}

    const Printer* printer() const { return facade.printerFromKey(machine); }
    void tellError(const std::exception& error);
    void clearNotice() { form.notice->hide(); }

    TrovekQt& facade;
    const MachineName machine;
    ExtruderControlForm form;
    /** The last one, also when it is over. */
    Job::ID jobID = Job::kInvalidID;
    bool jogging = false;
    bool heating = false;
};

ExtruderControlWidget::ExtruderControlWidget(TrovekQt& facade, const MachineName& machine,
                                             QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(facade, machine, this))
{
    const ExtruderControlForm& form = d->form;
    connect(form.use, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ExtruderControlWidget::sanitize);
    connect(form.heat, &QPushButton::clicked, this, &ExtruderControlWidget::setTemperatureClicked);
    connect(form.unload, &QPushButton::clicked, this, &ExtruderControlWidget::unloadClicked);
    connect(form.load, &QPushButton::clicked, this, &ExtruderControlWidget::loadClicked);
    connect(form.stop, &QPushButton::clicked, this, &ExtruderControlWidget::slotStopJogging);

    connect(&facade, &TrovekQt::printerAdded, this, &ExtruderControlWidget::printerChanged);
    connect(&facade, &TrovekQt::printerChanged, this, &ExtruderControlWidget::printerChanged);
    connect(&facade, &TrovekQt::printerRemoved, this, &ExtruderControlWidget::printerRemoved);
    connect(&facade, &TrovekQt::jobConcluded, this, &ExtruderControlWidget::jobConcluded);
    // The service has ended the motion itself, and may be another one when it is back.
    connect(&facade, &TrovekQt::disconnected, this, [this] { d->jobID = Job::kInvalidID; });
    sanitize();
}

ExtruderControlWidget::~ExtruderControlWidget()
{
    stopOwnJog();
}

bool ExtruderControlWidget::isJogging() const
{
    return d->jogging;
}

bool ExtruderControlWidget::isMachineFree() const
{
    const Printer* const printer = d->printer();
    if (!printer)
        return false;
    // One job at a time runs on a machine, so that it is this one while this one runs.
    const bool hasJob = printer->state() == Printer::Running || printer->state() == Printer::Paused;
    return !hasJob || d->jogging;
}

void ExtruderControlWidget::loadClicked()
{
    jogExtruder(false);
}

void ExtruderControlWidget::unloadClicked()
{
    jogExtruder(true);
}

void ExtruderControlWidget::slotStopJogging()
{
    TROVEK_LOG(1) << "Before stop job ID: " << d->jobID << std::endl;
    try {
        d->clearNotice();
        d->facade.cancelJob(d->jobID);
        d->jogging = false;
    } catch (const std::exception& e) {
        d->tellError(e);
    }
    TROVEK_LOG(1) << "After stop job ID: " << d->jobID << std::endl;
}

void ExtruderControlWidget::setTemperatureClicked()
{
    try {
        d->clearNotice();
        const int target = d->heating ? 0 : d->form.targetTemperature->value();
        d->facade.setToolheadTemperature(d->machine, static_cast<Printer::Toolhead>(toolhead()),
                                         target);
    } catch (const std::exception& e) {
        d->tellError(e);
    }
}

void ExtruderControlWidget::sanitize()
{
    d->heating = false;
    try {
        const Printer* const printer = d->printer();
        const bool free = isMachineFree();
        d->form.load->setEnabled(free);
        d->form.unload->setEnabled(free);
        d->form.showTemperatures(printer);
        if (printer) {
            d->form.offerTwoExtruders(printer->numberOfExtruders() > 1);
            const int index = toolhead();
            d->heating = printer->toolheadTargetTemperature().at(std::size_t(index)) != 0;
            d->form.currentTemperature->setText(
                ExtruderControlForm::celsiusText(printer->toolTemperature().at(index)));
        } else {
            d->form.currentTemperature->clear();
        }
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << "Sanitize error: " << e.what() << std::endl;
    }
    d->form.showHeating(d->heating);
}

void ExtruderControlWidget::printerChanged(Printer* printer)
{
    try {
        if (printer && printer->key() == d->machine)
            sanitize();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

// Whoever minimizes the window sees it again; whoever closes it cannot press "Stop" any more.
void ExtruderControlWidget::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        stopOwnJog();
}

void ExtruderControlWidget::printerRemoved(Printer* printer)
{
    if (printer->key() != d->machine)
        return;
    stopOwnJog();
    d->jogging = false;
    sanitize();
}

void ExtruderControlWidget::jobConcluded(Job::ID id)
{
    if (id == d->jobID)
        d->jogging = false;
}

void ExtruderControlWidget::jogExtruder(const bool reverse)
{
    TROVEK_LOG(1) << "Before jog job ID: " << d->jobID << std::endl;
    try {
        if (d->jobID != Job::kInvalidID)
            slotStopJogging();
        d->clearNotice();
        d->jobID = d->facade.jog(d->machine, static_cast<Printer::Axis>(toolhead()),
                                 reverse ? -kJogMm : kJogMm, kJogLimitMs);
        d->jogging = true;
        TROVEK_LOG(1) << "After jog job ID: " << d->jobID << std::endl;
    } catch (const std::exception& e) {
        d->tellError(e);
    }
}

void ExtruderControlWidget::stopOwnJog()
{
    // Without the link the service has ended the motion itself. What could not be stopped when the
    // widget was hidden is stopped at its end.
    if (d->jogging && d->facade.isConnected())
        slotStopJogging();
}

int ExtruderControlWidget::toolhead() const
{
    const QComboBox& use = *d->form.use;
    return use.count() == 2 && use.currentIndex() == 0 ? Printer::LeftToolhead
                                                       : Printer::RightToolhead;
}

void ExtruderControlWidget::Private::tellError(const std::exception& error)
{
    TROVEK_LOG(0) << error.what() << std::endl;
    form.notice->setText(toQString(error.what()));
    form.notice->show();
}

} // namespace trovek
