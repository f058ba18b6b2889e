#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/make_dialog.h"

#include <memory>

namespace trovek {

class Profile;

/**
 * Slices a model, and prints or exports it; if the user wishes, with a look at the toolpaths
 * before.
 *
 * The user chooses materials, one of the presets or a profile of their own, and under "Advanced
 * Options" the preset's numbers. What was chosen last is there again when the dialog opens. While a
 * preview is sliced nothing else can be changed; closing the dialog cancels it.
 *
 * Settings: MakeDialog's, and whatever else begins with "make_dialog/" in docs/settings.md.
 */
class TROVEK_UI_EXPORT MakeThingDialog : public MakeDialog
{
    Q_OBJECT

public:
    /** As MakeDialog's. @param extruder which extruders the file is made for */
    MakeThingDialog(TrovekQt& facade, const QString& inputFile,
                    SlicerConfiguration::Extruder extruder, QSettings* settings,
                    const Printer* printer, const QString& defaultExportDir, bool showCboArchetypes,
                    QWidget* parent = nullptr);
    ~MakeThingDialog() override;

protected:
    void changeEvent(QEvent* event) override;

    /** PLA when nothing is selected, here and below. */
    Orvane::Material singleMaterial() override;
    Orvane::Material leftMaterial() override;
    Orvane::Material rightMaterial() override;
    SlicerConfiguration slicerConfiguration() override;
    bool skipStartEndCode() override;
    void saveSettings() override;
    /** Whether the slicer takes the settings of the user's profile. */
    bool finalMakeOrExportCheck() override;
    /** Throws nothing: what is wrong is logged. */
    void sanitize() override;
    void makeOrExportRequested() override;

private slots:
    void machineSelected(Printer* printer);
    void materialChanged(Orvane::Material material);
    void leftMaterialChanged(Orvane::Material material);
    void lowQualityRadioButtonToggled(bool checked);
    void mediumQualityRadioButtonToggled(bool checked);
    void highQualityRadioButtonToggled(bool checked);
    void profileSelected(Profile* profile);
    void createProfile();
    void deleteProfile();
    void editProfile();
    void showPrintPreview();

private:
    class TROVEK_UI_NO_EXPORT Private;

    void connectSignals();
    void restoreSettings();
    QString numbersContext() const;

    void updateMainButton();
    void tellMachine();
    void selectMaterials();
    void updateMaterials();
    void warnOf(Orvane::Material material);

    const Profile& profile() const;
    void selectPreset(SlicerConfiguration::Preset preset);
    void selectUserProfile(const QString& name);
    void updateCustomProfileHelpText();
    bool isProfileCompatibleWithMachine() const;

    void slicePreview();
    void showPreviewProgress(const QString& stage, int percent);
    void endPreviewProgress(const QString& notice = QString());
    void cancelPreview();
    void tellOfFailedPreview(const QString& reason);
    void tellOfLostLink();
    void makePreviewed();

    const std::unique_ptr<Private> d;
};

} // namespace trovek
