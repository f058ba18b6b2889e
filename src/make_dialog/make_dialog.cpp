#include "trovek-ui/make_dialog.h"

#include "make_dialog/export_files.h"
#include "make_dialog/length_validator.h"

#include "trovek-ui/export_job_mover.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/trovekqt.h"
#include "trovek-ui/util.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QButtonGroup>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <stdexcept>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_dialog";

namespace trovek {

namespace {

constexpr QLatin1String kExportFilterKey("make_dialog/exportFilterString");
constexpr QLatin1String kLastExportDirKey("make_dialog/lastExportDir");
constexpr QLatin1String kPrinterKey("make_dialog/printer");

constexpr char kNoMode[] = "Dialog must be in either make or export mode";

QEvent::Type sanitizeEventType()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType(-1));
    return type;
}

bool isPrintQueued(const JsonRpcException& error)
{
    const Json::Value& data = error.data();
    return data.isObject() && data["name"].isString() &&
           data["name"].asString() == wire::error::kPrintQueued;
}

/** Logs the exception that is being handled and shows what a user can know of it. */
void reportStartError(QWidget* parent)
{
    try {
        throw;
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        if (isPrintQueued(error))
            message::PrinterIsBusy(parent).exec();
        else
            message::GenericTrovekError(parent).exec();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        message::FailedToStartPrint(parent).exec();
    } catch (...) {
        TROVEK_LOG(0) << "Something was thrown that is no exception" << std::endl;
        message::FailedToStartPrint(parent).exec();
    }
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

    QPushButton* mainButton = nullptr;
    QPushButton* cancelButton = nullptr;
    QFormLayout* formLayout = nullptr;
    QRadioButton* makeRadio = nullptr;
    QRadioButton* exportRadio = nullptr;
    QLabel* machineLabel = nullptr;
    MachineComboBox* machineCombo = nullptr;

    /** Alive while a make or an export runs; what runs holds it, so that it may outlive the dialog.
     */
    std::weak_ptr<void> run;
};

/** What print(), printToFile() and slice() have in common. */
struct MakeDialog::Request
{
    MachineName machine;
    std::string inputFile;
    SlicerConfiguration configuration;
    std::vector<std::string> materials;
    bool skipStartEndCode;
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

    buildWidgets();
    d->machineCombo->setShowCboArchetypes(showCboArchetypes);
    if (printer != nullptr)
        selectInitially(printer);
    connectSignals();
    MakeDialog::sanitize();
    // Only now are archetypes listed when there is nothing else.
    if (printer == nullptr)
        d->machineCombo->select(d->settings->value(kPrinterKey).toString());
    TROVEK_LOG(1) << "MakeDialog construction finished" << std::endl;
}

MakeDialog::~MakeDialog() = default;

void MakeDialog::buildWidgets()
{
    auto* const frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("frame"));
    frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);

    d->makeRadio = new QRadioButton(tr("Ma&ke It Now"), frame);
    d->makeRadio->setObjectName(QStringLiteral("makeRadio"));
    d->makeRadio->setToolTip(tr("Begin making when the \"Make It!\" button is pressed"));
    d->makeRadio->setChecked(true);
    d->exportRadio = new QRadioButton(tr("E&xport to a File"), frame);
    d->exportRadio->setObjectName(QStringLiteral("exportRadio"));
    d->exportRadio->setToolTip(tr("Export to a file to make via SD card"));
    auto* const modes = new QButtonGroup(this);
    modes->addButton(d->makeRadio);
    modes->addButton(d->exportRadio);
    auto* const modeRow = new QHBoxLayout;
    modeRow->addWidget(d->makeRadio);
    modeRow->addSpacing(12);
    modeRow->addWidget(d->exportRadio);
    modeRow->addStretch();

    d->machineCombo = new MachineComboBox(d->facade, frame);
    d->machineCombo->setObjectName(QStringLiteral("machineCombo"));
    d->machineCombo->setToolTip(tr("The machine to build with"));
    d->machineLabel = new QLabel(frame);
    d->machineLabel->setObjectName(QStringLiteral("machineLabel"));
    d->machineLabel->setBuddy(d->machineCombo);

    d->formLayout = new QFormLayout(frame);
    d->formLayout->addRow(tr("I want to:"), modeRow);
    d->formLayout->addRow(d->machineLabel, d->machineCombo);

    d->cancelButton = new QPushButton(tr("Cancel"), this);
    d->cancelButton->setObjectName(QStringLiteral("cancelButton"));
    d->mainButton = new QPushButton(this);
    d->mainButton->setObjectName(QStringLiteral("mainButton"));
    d->mainButton->setAutoDefault(true);
    d->mainButton->setDefault(true);
    d->mainButton->setFocus();
    auto* const buttonRow = new QHBoxLayout;
    buttonRow->addWidget(d->cancelButton, 1);
    buttonRow->addWidget(d->mainButton, 2);

    auto* const outerLayout = new QVBoxLayout(this);
    outerLayout->setSizeConstraint(QLayout::SetFixedSize);
    outerLayout->addWidget(frame);
    outerLayout->addLayout(buttonRow);
    ignoreWheelUnlessFocused(this);
}

void MakeDialog::selectInitially(const Printer* printer)
{
    d->machineCombo->toggleArchetypes(!printer->canPrint());
    d->machineCombo->select(d->facade.printerFromKey(printer->key()));
    const Printer* const selected = d->machineCombo->machine();
    const bool canMake = selected != nullptr && selected->canPrint();
    (canMake ? d->makeRadio : d->exportRadio)->setChecked(true);
}

void MakeDialog::connectSignals()
{
    connect(d->makeRadio, &QRadioButton::toggled, this, &MakeDialog::requestSanitize);
    connect(d->exportRadio, &QRadioButton::toggled, this, &MakeDialog::requestSanitize);
    connect(d->machineCombo, &MachineComboBox::machineSelected, this, &MakeDialog::requestSanitize);
    connect(d->cancelButton, &QPushButton::clicked, this, &MakeDialog::reject);
    connect(d->mainButton, &QPushButton::clicked, this, &MakeDialog::makeOrExportRequested);
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
    return *d->machineCombo;
}

QPushButton& MakeDialog::mainButton() const
{
    return *d->mainButton;
}

QFormLayout& MakeDialog::formLayout() const
{
    return *d->formLayout;
}

void MakeDialog::setRowTabOrder(std::initializer_list<QWidget*> rows)
{
    QWidget* last = d->machineCombo;
    for (QWidget* const row : rows) {
        setTabOrder(last, row);
        last = row;
    }
    setTabOrder(last, d->cancelButton);
    setTabOrder(d->cancelButton, d->mainButton);
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

void MakeDialog::sanitize()
{
    if (testForPhysicalMachines(d->facade)) {
        d->makeRadio->setEnabled(true);
    } else {
        d->makeRadio->setEnabled(false);
        d->exportRadio->setChecked(true);
    }

    if (d->makeRadio->isChecked()) {
        if (d->machineCombo->archetypesEnabled())
            d->machineCombo->toggleArchetypes(false);
        d->machineLabel->setText(tr("Mak&e With:"));
        d->mainButton->setText(tr("Make It!"));
    } else if (d->exportRadio->isChecked()) {
        if (!d->machineCombo->archetypesEnabled())
            d->machineCombo->toggleArchetypes(true);
        d->machineLabel->setText(tr("&Export For:"));
        d->mainButton->setText(tr("Export!"));
    } else {
        throw std::runtime_error(kNoMode);
    }
}

void MakeDialog::saveSettings()
{
    if (const Printer* const machine = d->machineCombo->machine())
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
    const Printer* const machine = d->machineCombo->machine();
    if (!checkConnection())
        return;
    if (!QFileInfo::exists(inputFile)) {
        TROVEK_LOG(0) << "Input file does not exist" << std::endl;
        message::FileNotFound(this).exec();
        return;
    }
    if (machine == nullptr) {
        TROVEK_LOG(0) << "Machine is null" << std::endl;
        return;
    }

    const MachineName key = machine->key();
    const QPointer<MakeDialog> self(this);
    if (!finalMakeOrExportCheck()) {
        TROVEK_LOG(1) << "finalMakeOrExportCheck didn't pass" << std::endl;
        return;
    }
    if (self.isNull() || !checkConnection())
        return;

    if (d->makeRadio->isChecked())
        startMake(key, inputFile);
    else if (d->exportRadio->isChecked())
        startExport(key, inputFile);
    else
        throw std::runtime_error(kNoMode);
}

bool MakeDialog::checkConnection()
{
    if (d->facade.isConnected())
        return true;
    TROVEK_LOG(0) << "Trovek not connected" << std::endl;
    message::TrovekNotConnected(this).exec();
    return false;
}

void MakeDialog::startMake(const MachineName& key, const QString& inputFile)
{
    const Printer& machine = machineOf(key);
    const Request request = makeRequest(machine, inputFile);
    if (!machine.canPrintToFile())
        throw std::runtime_error("Make failed: printer is an archetype");
    d->facade.print(request.machine, request.inputFile, request.configuration, request.materials,
                    request.skipStartEndCode);
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

    const Request request = makeRequest(machine, inputFile);
    const QString output = createServiceOutput(QFileInfo(destination).fileName());
    const int jobID = startExportJob(request, destination, output);
    ExportJobMover::instance(d->facade).addExport(jobID, destination, output);
    accept();
}

int MakeDialog::startExportJob(const Request& request, const QString& destination,
                               const QString& output)
{
    const std::string suffix = toStdString(QFileInfo(destination).suffix());
    const std::string outputFile = toStdString(output);
    if (suffix == "x3g" || suffix == "s3g")
        return d->facade.printToFile(request.machine, request.inputFile, outputFile,
                                     request.configuration, request.materials,
                                     request.skipStartEndCode, suffix);
    // The last flag of slice() asks for the code that the other operations leave out.
    if (suffix == "gcode")
        return d->facade.slice(request.machine, request.inputFile, outputFile,
                               request.configuration, request.materials, !request.skipStartEndCode);
    throw std::runtime_error("Export failed: invalid suffix " + suffix);
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
    const Request request = makeRequest(previewMachine(), d->inputFile);
    // A preview shows what the machine's file holds without asking for more, so this flag stays.
    const int jobID =
        d->facade.slice(request.machine, request.inputFile, toStdString(outputPath),
                        request.configuration, request.materials, request.skipStartEndCode);
    emit sliceFileStarted(jobID);
    return jobID;
}

const Printer& MakeDialog::previewMachine() const
{
    const Printer* const machine = d->machineCombo->machine();
    if (machine == nullptr)
        throw std::runtime_error("Preview failed: no machine");
    if (d->exportRadio->isChecked())
        return *machine;
    if (!d->makeRadio->isChecked())
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

MakeDialog::Request MakeDialog::makeRequest(const Printer& machine, const QString& inputFile)
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
