#include "make_dialog/export_files.h"
#include "make_dialog/make_thing_dialog_p.h"
#include "make_dialog/preview_row.h"
#include "make_dialog/start_error.h"
#include "make_dialog/tell.h"

#include "trovek-ui/color_combo_box.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/pathscope_dialog.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/printer.h>

#include <QFormLayout>
#include <QPointer>
#include <QPushButton>

#include <exception>
#include <optional>

// The part of the dialog that is about the look at the toolpaths before they are made.

static constexpr char kLogUnit[] = "src\\make_dialog\\make_thing_dialog";

namespace trovek {

namespace {

/** Of the right (or only) and the left extruder: far apart, also without colour vision. */
const std::vector<QColor>& filamentColors()
{
    static const std::vector<QColor> colors = {
        ColorComboBox::colorToQColor(ColorComboBox::TrueOrange),
        ColorComboBox::colorToQColor(ColorComboBox::TrueBlue)};
    return colors;
}

} // namespace

void MakeThingDialog::makeOrExportRequested()
{
    if (!d->form.preview->isWanted()) {
        makeOrExport(inputFile());
        return;
    }
    const QPointer<MakeThingDialog> self(this);
    try {
        slicePreview();
    } catch (...) {
        reportStartError(self);
    }
}

void MakeThingDialog::slicePreview()
{
    const QPointer<MakeThingDialog> self(this);
    // A profile that needs an upgrade would fail only in the slicer, and nobody would be asked.
    const std::optional<MachineName> machine = checkBeforeStart(inputFile());
    if (!machine || self.isNull() || d->slice.isRunning())
        return;
    d->previewedMachine = *machine;
    const Job::ID job = startPrintPreviewSlice(d->slice.createFile());
    if (self.isNull())
        return;
    if (job == Job::kInvalidID) {
        d->slice.removeFile();
        return;
    }
    showPreviewProgress(QString(), 0);
    d->slice.watch(job);
}

/** Nothing that counts for the print may change before it was looked at. */
void MakeThingDialog::showPreviewProgress(const QString& stage, int percent)
{
    formLayout().parentWidget()->setEnabled(false);
    mainButton().setEnabled(false);
    d->form.preview->showProgress(stage, percent);
}

void MakeThingDialog::endPreviewProgress(const QString& notice)
{
    d->form.preview->showQuestion(notice);
    formLayout().parentWidget()->setEnabled(true);
    updateMainButton();
    mainButton().setFocus();
}

void MakeThingDialog::cancelPreview()
{
    d->slice.cancel();
    endPreviewProgress();
}

void MakeThingDialog::tellOfFailedPreview(const QString& reason)
{
    endPreviewProgress(reason);
    if (isVisible())
        tell<message::FailedToStartPrint>(this);
}

void MakeThingDialog::tellOfLostLink()
{
    TROVEK_LOG(0) << "Trovek not connected" << std::endl;
    endPreviewProgress();
    if (isVisible())
        tell<message::TrovekNotConnected>(this);
}

void MakeThingDialog::showPrintPreview()
{
    endPreviewProgress();
    try {
        const std::vector<Orvane::Material> materials =
            d->dual ? std::vector{rightMaterial(), leftMaterial()} : std::vector{singleMaterial()};
        const QString file = d->slice.takeFile();
        auto* const preview =
            new PathscopeDialog(nullptr, machineComboBox().machine(), materials, filamentColors(),
                                file, mainButton().text(), this);
        connect(preview, &QObject::destroyed, [file] { removeServiceOutput(file); });
        // When the preview has gone, and not inside its button's click.
        connect(preview, &PathscopeDialog::accepted, this, &MakeThingDialog::makePreviewed,
                Qt::QueuedConnection);
        preview->open();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

/** The machine may have gone meanwhile, and another is not what was looked at. */
void MakeThingDialog::makePreviewed()
{
    const Printer* const machine = machineComboBox().machine();
    if (facade().isConnected() &&
        (machine == nullptr || !(machine->key() == d->previewedMachine))) {
        TROVEK_LOG(0) << "The machine is no longer there" << std::endl;
        tell<message::FailedToStartPrint>(this);
        return;
    }
    makeOrExport(inputFile());
}

} // namespace trovek
