#include "trovek-ui/firmware_upload_dialog.h"

#include "firmware_upload/firmware_upload_pages.h"
#include "util/wait_cursor.h"

#include "trovek-ui/messages/firmware.h"
#include "trovek-ui/trovekqt.h"
#include "trovek-ui/util.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <json/writer.h>

#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

namespace trovek {
namespace ui {

static constexpr char kLogUnit[] = "src\\firmware_upload\\firmwareuploaddialog";

namespace {

/** Whether the user has to press it when firmware is written. */
bool hasResetButton(const Printer* printer)
{
    switch (printer ? printer->type() : Printer::UnknownType) {
    case Printer::FabrinoSingle:
    case Printer::FabrinoDual:
    case Printer::CubioSingle:
    case Printer::CubioDual:
        return true;
    case Printer::Fabrino2:
    case Printer::Fabrino2X:
        return false;
    default:
        throw std::runtime_error("hasResetButton failed");
    }
}

/** A line for each sentence, and no gaps from its source's line ends. */
QString tidy(const std::string& description)
{
    return toQString(description)
        .replace(QLatin1String("  "), QLatin1String(" "))
        .replace(QLatin1String(". "), QLatin1String(".\n"));
}

/** The member of an answer's data; null where there is none or the data is no object. */
Json::Value dataMember(const JsonRpcException& error, const char* name)
{
    return error.data().isObject() ? error.data()[name] : Json::Value();
}

} // namespace

class FirmwareUploadDialog::Private
{
public:
    Private(FirmwareUploadDialog* dialog, TrovekQt& client)
        : q(dialog)
        , facade(client)
        , pages(dialog)
    {}

    void setPrinter(Printer* newPrinter);
    void lookUpFirmware();
    std::optional<std::string> findMachine() const;
    void fillVersions();
    void showOnlyItem(const QString& text);
    void showError(const QString& text);
    void showNoInternet();
    void tellNoInternet();
    void updateNext();
    QString download();
    QString upload();
    void showReady(const QString& text, bool isDownloaded);
    void showResult(const QString& text, bool isUploaded);

    FirmwareUploadDialog* const q;
    TrovekQt& facade;
    FirmwareUploadPages pages;
    /** Null while it is away. */
    Printer* printer = nullptr;
    MachineName key;
    std::string machine;
    std::vector<FirmwareVersion> versions;
    bool noFirmware = false;
    /** What was chosen on the first page: lists that come later change nothing of it. */
    int wantedType = Printer::UnknownType;
    std::string wantedMachine;
    FirmwareVersion wantedVersion;
    bool isDownloaded = false;
    std::string path;
    bool isUploaded = false;
    bool isTelling = false;
};

// ---- The printer and what there is for it

void FirmwareUploadDialog::Private::setPrinter(Printer* newPrinter)
{
    printer = newPrinter;
    pages.bot->setText(printer ? toQString(printer->displayName())
                               : FirmwareUploadDialog::tr("No Printer"));
    pages.currentVersion->setText(printer ? firmwareVersionToString(printer->firmwareVersion())
                                          : QString());
    if (!printer) {
        showError(QString());
        return;
    }
    try {
        const WaitCursor cursor;
        pages.paintNow();
        lookUpFirmware();
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        if (error.message().find("urlopen") != std::string::npos)
            showNoInternet();
        else
            showError(FirmwareUploadDialog::tr("Error: %1").arg(toQString(error.message())));
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        showError(QStringLiteral("Error: ") + QString::fromUtf8(error.what()));
    } catch (...) {
        TROVEK_LOG(0) << "Unknown Error" << std::endl;
        showError(QStringLiteral("Unknown Error"));
    }
}

void FirmwareUploadDialog::Private::lookUpFirmware()
{
    // Throws where there is none: nothing can be written to such a printer.
    facade.portFromName(printer->portName());
    const std::optional<std::string> found = findMachine();
    if (found) {
        machine = *found;
        fillVersions();
        return;
    }
    versions.clear();
    noFirmware = true;
    showOnlyItem(FirmwareUploadDialog::tr("No Firmware Found"));
    pages.versions->setEnabled(false);
}

/** The first name that the service offers firmware for and that is also the printer's. */
std::optional<std::string> FirmwareUploadDialog::Private::findMachine() const
{
    const Json::Value names = facade.getUploadableMachines();
    if (!names.isArray())
        throw std::runtime_error("Odd answer to getuploadablemachines: not a list");
    const std::vector<std::string>& own = printer->machineNames();
    for (const Json::Value& name : names) {
        if (name.isString() && std::find(own.begin(), own.end(), name.asString()) != own.end())
            return name.asString();
    }
    return std::nullopt;
}

void FirmwareUploadDialog::Private::fillVersions()
{
    const std::set<FirmwareVersion> offered = facade.getMachineVersions(machine, printer->type());
    versions.assign(offered.begin(), offered.end());
    noFirmware = versions.empty();
    pages.showError(QString());
    pages.versions->setEnabled(true);
    if (versions.empty()) {
        showOnlyItem(FirmwareUploadDialog::tr("No Versions Found"));
        return;
    }
    {
        const QSignalBlocker blocker(pages.versions);
        pages.versions->clear();
        for (const FirmwareVersion& version : versions)
            pages.versions->addItem(firmwareVersionToString(version));
        // The newest, also when the machine was away: it may have come back with another version.
        pages.versions->setCurrentIndex(int(versions.size()) - 1);
    }
    q->versionChanged(pages.versions->currentIndex());
}

void FirmwareUploadDialog::Private::showOnlyItem(const QString& text)
{
    const QSignalBlocker blocker(pages.versions);
    pages.showError(QString());
    pages.versions->clear();
    pages.versions->addItem(text);
    pages.description->clear();
    updateNext();
}

void FirmwareUploadDialog::Private::showError(const QString& text)
{
    pages.showError(text);
    pages.versions->setEnabled(false);
    pages.next->setEnabled(false);
}

void FirmwareUploadDialog::Private::showNoInternet()
{
    showError(FirmwareUploadDialog::tr("Unable to connect to internet"));
    // From the event loop: nobody has the dialog yet while it is being made.
    if (!isTelling)
        QMetaObject::invokeMethod(
            q, [this] { tellNoInternet(); }, Qt::QueuedConnection);
    isTelling = true;
}

void FirmwareUploadDialog::Private::tellNoInternet()
{
    const QPointer<FirmwareUploadDialog> self(q);
    message::FirmwareUploadNoInternetConnection notice(q);
    notice.exec();
    delete notice.box();
    if (self)
        isTelling = false;
}

void FirmwareUploadDialog::Private::updateNext()
{
    pages.next->setEnabled(printer != nullptr && !noFirmware);
}

// ---- Download and upload

/** @return what the user reads of it; isDownloaded tells whether it has gone well */
QString FirmwareUploadDialog::Private::download()
{
    isDownloaded = false;
    try {
        path = facade.downloadFirmware(wantedMachine, wantedType, wantedVersion);
        const QString text =
            hasResetButton(printer)
                ? FirmwareUploadDialog::tr(
                      "Ready to upload firmware.\n \nPress the reset button on the back of your "
                      "Orvane immediately after clicking\nUpload. Note that the correct timing for "
                      "pressing the reset button may vary from\ncomputer to computer.")
                : FirmwareUploadDialog::tr("Ready to upload firmware.\n \nClick the Upload button "
                                           "to start the process.");
        isDownloaded = true;
        return text;
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        return FirmwareUploadDialog::tr("Download failed:\n") +
               toQString(dataMember(error, "error").toStyledString());
    } catch (const std::runtime_error& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        return FirmwareUploadDialog::tr("Download failed\n\n%1")
            .arg(QString::fromUtf8(error.what()));
    } catch (...) {
        TROVEK_LOG(0) << "Unknown error" << std::endl;
        return FirmwareUploadDialog::tr("Download failed");
    }
}

/** @return what the user reads of it; isUploaded tells whether it has gone well */
QString FirmwareUploadDialog::Private::upload()
{
    isUploaded = false;
    try {
        if (!printer) {
            TROVEK_LOG(0) << "Printer disconnected" << std::endl;
            return FirmwareUploadDialog::tr("Upload failed:\nPrinter disconnected");
        }
        facade.uploadFirmware(printer->key(), path);
        isUploaded = true;
        return FirmwareUploadDialog::tr("Firmware upload successful");
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        if (dataMember(error, "name") == Json::Value("PrinterThreadNotIdleError"))
            return FirmwareUploadDialog::tr(
                "Upload failed:\nCannot upload firmware while printing");
        return FirmwareUploadDialog::tr("Upload failed:\nUnknown error from trovek");
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << "Unknown error: " << error.what() << std::endl;
    } catch (...) {
        TROVEK_LOG(0) << "Unknown error" << std::endl;
    }
    return FirmwareUploadDialog::tr("Upload failed:\nUnknown error");
}

void FirmwareUploadDialog::Private::showReady(const QString& text, bool canUpload)
{
    pages.readyStatus->setText(text);
    pages.upload->setEnabled(canUpload);
    pages.upload->setAutoDefault(true);
    if (canUpload)
        pages.upload->setFocus();
    else
        pages.readyCancel->setFocus();
}

void FirmwareUploadDialog::Private::showResult(const QString& text, bool canClose)
{
    pages.resultStatus->setText(text);
    pages.main->setText(canClose ? FirmwareUploadDialog::tr("&OK")
                                 : FirmwareUploadDialog::tr("&Retry"));
    pages.resultCancel->setVisible(!canClose);
    QObject::disconnect(pages.main, &QPushButton::clicked, nullptr, nullptr);
    if (canClose)
        connect(pages.main, &QPushButton::clicked, q, &FirmwareUploadDialog::accept);
    else
        connect(pages.main, &QPushButton::clicked, q, &FirmwareUploadDialog::downloadFirmware);
    pages.main->setEnabled(true);
    pages.main->setFocus();
}

// ---- The dialog

FirmwareUploadDialog::FirmwareUploadDialog(TrovekQt& facade, Printer* printer, QWidget* parent)
    : QDialog(parent)
    , d(std::make_unique<Private>(this, facade))
{
    setObjectName(QStringLiteral("firmwareUploadDialog"));
    setWindowTitle(tr("Upload Firmware"));
    const FirmwareUploadPages& pages = d->pages;
    connect(pages.versions, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &FirmwareUploadDialog::versionChanged);
    connect(pages.next, &QPushButton::clicked, this, &FirmwareUploadDialog::nextClicked);
    connect(pages.upload, &QPushButton::clicked, this, &FirmwareUploadDialog::uploadFirmware);
    for (QPushButton* cancel : {pages.choiceCancel, pages.readyCancel, pages.resultCancel})
        connect(cancel, &QPushButton::clicked, this, &FirmwareUploadDialog::reject);
    connect(&facade, &TrovekQt::printerAdded, this, &FirmwareUploadDialog::printerAdded);
    connect(&facade, &TrovekQt::printerRemoved, this, &FirmwareUploadDialog::printerRemoved);

    if (printer)
        d->key = printer->key();
    d->setPrinter(printer);
    pages.versions->setFocus();
}

FirmwareUploadDialog::~FirmwareUploadDialog() = default;

void FirmwareUploadDialog::versionChanged(int index)
{
    const bool isVersion = index >= 0 && index < int(d->versions.size());
    d->pages.description->setText(isVersion ? tidy(d->versions[std::size_t(index)].description())
                                            : QString());
    d->updateNext();
}

void FirmwareUploadDialog::nextClicked()
{
    const int index = d->pages.versions->currentIndex();
    if (!d->printer || index < 0 || index >= int(d->versions.size()))
        return;
    d->wantedMachine = d->machine;
    d->wantedType = d->printer->type();
    d->wantedVersion = d->versions[std::size_t(index)];
    downloadFirmware();
}

void FirmwareUploadDialog::downloadFirmware()
{
    d->pages.show(FirmwareUploadPages::Ready);
    d->showReady(tr("Downloading new firmware..."), false);
    const WaitCursor cursor;
    d->pages.paintNow();
    const QString text = d->download();
    d->showReady(text, d->isDownloaded);
}

void FirmwareUploadDialog::uploadFirmware()
{
    FirmwareUploadPages& pages = d->pages;
    pages.resultStatus->setText(
        tr("Uploading new firmware...\nThis may take a couple minutes to complete."));
    pages.resultCancel->hide();
    pages.main->setText(tr("&OK"));
    pages.main->setEnabled(false);
    pages.show(FirmwareUploadPages::Result);
    const WaitCursor cursor;
    pages.paintNow();
    const QString text = d->upload();
    d->showResult(text, d->isUploaded);
}

void FirmwareUploadDialog::printerAdded(Printer* printer)
{
    if (printer->key() == d->key && !d->printer)
        d->setPrinter(printer);
}

void FirmwareUploadDialog::printerRemoved(Printer* printer)
{
    if (printer == d->printer)
        d->setPrinter(nullptr);
}

} // namespace ui
} // namespace trovek
