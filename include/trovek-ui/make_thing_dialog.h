#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/make_dialog.h"

#include <memory>

namespace trovek {

class Profile;

/** Slices a model, and prints or exports it; with a look at the toolpaths before, if wished. */
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
    Orvane::Material singleMaterial() override;
    Orvane::Material leftMaterial() override;
    Orvane::Material rightMaterial() override;
    SlicerConfiguration slicerConfiguration() override;
    bool skipStartEndCode() override;
    void saveSettings() override;
    bool finalMakeOrExportCheck() override;
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
    const std::unique_ptr<Private> d;
};

} // namespace trovek
