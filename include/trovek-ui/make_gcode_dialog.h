#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/make_dialog.h"

class QCheckBox;
class QComboBox;
class QLabel;

namespace trovek {

class MaterialComboBox;

/**
 * Prints or exports a G-code file that was made elsewhere.
 *
 * Nothing is sliced; the user only says whether the machine's start and end code is added, and then
 * for which material (which decides about the heated platform) and which extruder.
 */
class TROVEK_UI_EXPORT MakeGCodeDialog : public MakeDialog
{
    Q_OBJECT

public:
    /** As MakeDialog's; `inputFile` is the G-code file. */
    MakeGCodeDialog(TrovekQt& facade, const QString& inputFile, QSettings* settings,
                    const Printer* printer, const QString& defaultExportDir, bool showCboArchetypes,
                    QWidget* parent = nullptr);
    ~MakeGCodeDialog() override;

protected:
    /** ABS or PLA; whatever else is selected counts as PLA. */
    Orvane::Material singleMaterial() override;
    Orvane::Material leftMaterial() override;
    Orvane::Material rightMaterial() override;
    SlicerConfiguration slicerConfiguration() override;
    bool skipStartEndCode() override;
    void sanitize() override;

private:
    QCheckBox* const m_addStartEnd;
    QLabel* const m_materialLabel;
    MaterialComboBox* const m_material;
    QLabel* const m_extruderLabel;
    QComboBox* const m_extruder;
    QLabel* const m_extruderWarning;
};

} // namespace trovek
