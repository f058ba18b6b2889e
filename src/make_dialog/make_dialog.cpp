#include "trovek-ui/make_dialog.h"

#include "make_dialog/export_files.h"
#include "make_dialog/length_validator.h"
#include "make_dialog/make_dialog_form.h"
#include "make_dialog/make_request.h"
#include "make_dialog/start_error.h"
#include "make_dialog/tell.h"

#include "trovek-ui/export_job_mover.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSettings>

#include <algorithm>
#include <exception>
#include <stdexcept>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_dialog";

namespace trovek {

namespace {

const QLatin1String kExportFilterKey("make_dialog/exportFilterString");
const QLatin1String kLastExportDirKey("make_dialog/lastExportDir");
const QLatin1String kPrinterKey("make_dialog/printer");

constexpr char kNoMode[] = "Dialog must be in either make or export mode";

QEvent::Type sanitizeEventType()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType(-1));
    return type;
}

} // namespace

class MakeDialog::Private
{
public:
    Private(TrovekQt& serviceFacade, const QString& file, QSettings* hostSettings,
            const QString& exportDir)
        : facade(serviceFacade)
        , inputFile(file)
        , settings(hostSettings)
        , defaultExportDir(exportDir)
    {}

    TrovekQt& facade;
    const QString inputFile;
    QSettings* const settings;
    const QString defaultExportDir;
    MakeDialogForm form;

    /** Alive while a make or an export runs, which holds it and may outlive the dialog. */
    std::weak_ptr<void> run;
};

bool testForPhysicalMachines(const TrovekQt& facade)
{
    const std::list<Printer*> printers = facade.printers();
    return std::any_of(printers.begin(), printers.end(),
                       [](const Printer* printer) { return printer->canPrint(); });
}

MakeDialog::MakeDialog(TrovekQt& facade, const QString& inputFile, QSettings* settings,
                       const Printer* printer, const QString& defaultExportDir,
                       bool showCboArchetypes, QWidget* parent)
    : QDialog(parent)
    , d(std::make_unique<Private>(facade, inputFile, settings, defaultExportDir))
{
    TROVEK_LOG(1) << "Starting MakeDialog construction" << std::endl;
    if (settings == nullptr)
        throw std::logic_error("null settings");
    setAttribute(Qt::WA_DeleteOnClose);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setWindowTitle(QStringLiteral(" "));

    d->form.build(facade, this);
    d->form.machineCombo->setShowCboArchetypes(showCboArchetypes);
    if (printer != nullptr)
        selectInitially(printer);
    connectSignals();
    MakeDialog::sanitize();
    // Only now are archetypes listed when there is nothing else.
    if (printer == nullptr)
        d->form.machineCombo->select(d->settings->value(kPrinterKey).toString());
    TROVEK_LOG(1) << "MakeDialog construction finished" << std::endl;
}

MakeDialog::~MakeDialog() = default;

void MakeDialog::selectInitially(const Printer* printer)
{
    d->form.machineCombo->toggleArchetypes(!printer->canPrint());
    d->form.machineCombo->select(d->facade.printerFromKey(printer->key()));
    const Printer* const selected = d->form.machineCombo->machine();
    const bool canMake = selected != nullptr && selected->canPrint();
    (canMake ? d->form.makeRadio : d->form.exportRadio)->setChecked(true);
}

void MakeDialog::connectSignals()
{
    connect(d->form.makeRadio, &QRadioButton::toggled, this, &MakeDialog::requestSanitize);
    connect(d->form.exportRadio, &QRadioButton::toggled, this, &MakeDialog::requestSanitize);
    connect(d->form.machineCombo, &MachineComboBox::machineSelected, this,
            &MakeDialog::requestSanitize);
    connect(d->form.cancelButton, &QPushButton::clicked, this, &MakeDialog::reject);
    connect(d->form.mainButton, &QPushButton::clicked, this, &MakeDialog::makeOrExportRequested);
    connect(&d->facade, &TrovekQt::connected, this, &MakeDialog::requestSanitize);
    connect(&d->facade, &TrovekQt::disconnected, this, &MakeDialog::requestSanitize);
    connect(&d->facade, &TrovekQt::printerAdded, this, &MakeDialog::requestSanitize);
    connect(&d->facade, &TrovekQt::printerRemoved, this, &MakeDialog::requestSanitize);
}

TrovekQt& MakeDialog::facade() const
{
    return d->facade;
}

QSettings& MakeDialog::settings() const
{
    return *d->settings;
}

QString MakeDialog::inputFile() const
{
    return d->inputFile;
}

MachineComboBox& MakeDialog::machineComboBox() const
{
    return *d->form.machineCombo;
}

QPushButton& MakeDialog::mainButton() const
{
    return *d->form.mainButton;
}

QFormLayout& MakeDialog::formLayout() const
{
    return *d->form.rows;
}

void MakeDialog::insertAboveButtons(QWidget* row)
{
    d->form.insertAboveButtons(row);
}

void MakeDialog::layOutAround(QWidget* row)
{
    if (isVisible())
        d->form.layOutAround(row);
}

void MakeDialog::moveButtonsToEndOfTabOrder()
{
    d->form.moveButtonsToEndOfTabOrder();
}

void MakeDialog::requestSanitize()
{
    QCoreApplication::removePostedEvents(this, sanitizeEventType());
    QCoreApplication::postEvent(this, new QEvent(sanitizeEventType()));
}

bool MakeDialog::event(QEvent* event)
{
    if (event->type() != sanitizeEventType())
        return QDialog::event(event);
    try {
        sanitize();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
    event->accept();
    return true;
}

// A dialog that has grown would otherwise reach below the screen.
void MakeDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    if (!isVisible() || screen() == nullptr)
        return;
    const QRect available = screen()->availableGeometry();
    const int below = frameGeometry().bottom() - available.bottom();
    if (below > 0)
        move(x(), qMax(available.top(), y() - below));
}

void MakeDialog::sanitize()
{
    if (testForPhysicalMachines(d->facade)) {
        d->form.makeRadio->setEnabled(true);
    } else {
        d->form.makeRadio->setEnabled(false);
        d->form.exportRadio->setChecked(true);
    }

    if (d->form.makeRadio->isChecked()) {
        if (d->form.machineCombo->archetypesEnabled())
            d->form.machineCombo->toggleArchetypes(false);
        d->form.machineLabel->setText(tr("Mak&e With:"));
        d->form.mainButton->setText(tr("Make It!"));
    } else if (d->form.exportRadio->isChecked()) {
        if (!d->form.machineCombo->archetypesEnabled())
            d->form.machineCombo->toggleArchetypes(true);
        d->form.machineLabel->setText(tr("&Export For:"));
        d->form.mainButton->setText(tr("Export!"));
    } else {
        throw std::runtime_error(kNoMode);
    }
}

void MakeDialog::saveSettings()
{
    if (const Printer* const machine = d->form.machineCombo->machine())
        d->settings->setValue(kPrinterKey, toQString(machine->key().name()));
}

bool MakeDialog::finalMakeOrExportCheck()
{
    return true;
}

void MakeDialog::makeOrExportRequested()
{
    makeOrExport(d->inputFile);
}

void MakeDialog::makeOrExport(const QString& inputFile)
{
    if (!d->run.expired())
        return;
    const auto run = std::make_shared<int>();
    d->run = run;

    const QPointer<MakeDialog> self(this);
    TROVEK_LOG(1) << "Make or export clicked" << std::endl;
    try {
        checkAndStart(inputFile);
    } catch (...) {
        reportStartError(self);
    }
    TROVEK_LOG(1) << "End of make/export" << std::endl;
}

// Every message and every question runs the event loop, in which the dialog, the machine and the
// link may go away: after one of them nothing of before is taken for granted.
void MakeDialog::checkAndStart(const QString& inputFile)
{
    const std::optional<MachineName> machine = checkBeforeStart(inputFile);
    if (!machine)
        return;
    if (d->form.makeRadio->isChecked())
        startMake(*machine, inputFile);
    else if (d->form.exportRadio->isChecked())
        startExport(*machine, inputFile);
    else
        throw std::runtime_error(kNoMode);
}

std::optional<MachineName> MakeDialog::checkBeforeStart(const QString& inputFile)
{
    const Printer* const machine = d->form.machineCombo->machine();
    if (!checkConnection())
        return {};
    if (!QFileInfo::exists(inputFile)) {
        TROVEK_LOG(0) << "Input file does not exist" << std::endl;
        tell<message::FileNotFound>(this);
        return {};
    }
    if (machine == nullptr) {
        TROVEK_LOG(0) << "Machine is null" << std::endl;
        return {};
    }

    const MachineName key = machine->key();
    const QPointer<MakeDialog> self(this);
    if (!finalMakeOrExportCheck()) {
        TROVEK_LOG(1) << "finalMakeOrExportCheck didn't pass" << std::endl;
        return {};
    }
    if (self.isNull() || !checkConnection())
        return {};
    // With the last machine the mode may have gone that the user meant.
    machineOf(key);
    return key;
}

bool MakeDialog::checkConnection()
{
    if (d->facade.isConnected())
        return true;
    TROVEK_LOG(0) << "Trovek not connected" << std::endl;
    tell<message::TrovekNotConnected>(this);
    return false;
}

void MakeDialog::startMake(const MachineName& key, const QString& inputFile)
{
    const Printer& machine = machineOf(key);
    const MakeRequest request = makeRequest(machine, inputFile);
    if (!machine.canPrintToFile())
        throw std::runtime_error("Make failed: printer is an archetype");
    startPrint(d->facade, request);
    accept();
}

void MakeDialog::startExport(const MachineName& key, const QString& inputFile)
{
    const FileFilterList filters =
        preselectFilter(exportFilters(), d->settings->value(kExportFilterKey).toString());
    const QDir lastExportDir(d->settings->value(kLastExportDirKey, d->defaultExportDir).toString());
    const QString suggestion = lastExportDir.filePath(QFileInfo(inputFile).completeBaseName());

    const QPointer<MakeDialog> self(this);
    LengthValidator validator;
    const FileChooserResult chosen =
        chooseSavePath(this, tr("Export"), suggestion, filters, &validator);
    if (self.isNull() || chosen.cancelled || !checkConnection())
        return;

    const Printer& machine = machineOf(key);
    const QString destination = chosen.paths.first();
    d->settings->setValue(kLastExportDirKey, QFileInfo(destination).absolutePath());
    d->settings->setValue(kExportFilterKey, chosen.filter.filterString());

    const MakeRequest request = makeRequest(machine, inputFile);
    const QString output = createServiceOutput(QFileInfo(destination).fileName());
    int jobID = Job::kInvalidID;
    try {
        jobID = startExportJob(d->facade, request, QFileInfo(destination).suffix(), output);
    } catch (...) {
        // Nobody will ever write into it or look for it.
        removeServiceOutput(output);
        throw;
    }
    ExportJobMover::instance(d->facade).addExport(jobID, destination, output);
    accept();
}

int MakeDialog::startPrintPreviewSlice(const QString& outputPath)
{
    const QPointer<MakeDialog> self(this);
    try {
        return startPreview(outputPath);
    } catch (...) {
        reportStartError(self);
    }
    return Job::kInvalidID;
}

int MakeDialog::startPreview(const QString& outputPath)
{
    const MakeRequest request = makeRequest(previewMachine(), d->inputFile);
    const int jobID = startPreviewSlice(d->facade, request, outputPath);
    emit sliceFileStarted(jobID);
    return jobID;
}

const Printer& MakeDialog::previewMachine() const
{
    const Printer* const machine = d->form.machineCombo->machine();
    if (machine == nullptr)
        throw std::runtime_error("Preview failed: no machine");
    if (d->form.exportRadio->isChecked())
        return *machine;
    if (!d->form.makeRadio->isChecked())
        throw std::runtime_error(kNoMode);
    for (const Printer* const printer : d->facade.printers()) {
        if (printer->type() == machine->type() && !printer->canPrint())
            return *printer;
    }
    throw std::runtime_error("Preview failed: no archetype");
}

const Printer& MakeDialog::machineOf(const MachineName& key) const
{
    const Printer* const machine = d->facade.printerFromKey(key);
    if (machine == nullptr)
        throw std::runtime_error("The machine is no longer there");
    return *machine;
}

MakeRequest MakeDialog::makeRequest(const Printer& machine, const QString& inputFile)
{
    saveSettings();
    std::vector<std::string> materials;
    const auto append = [&materials](Orvane::Material material) {
        materials.push_back(toStdString(Orvane::materialToIdentifier(material)));
    };
    if (machine.numberOfExtruders() < 2) {
        append(singleMaterial());
    } else {
        append(rightMaterial());
        append(leftMaterial());
    }
    return {machine.key(), toStdString(inputFile), slicerConfiguration(), materials,
            skipStartEndCode()};
}

} // namespace trovek
