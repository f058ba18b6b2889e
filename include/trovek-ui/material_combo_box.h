#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/printer.h>

#include <QComboBox>

namespace trovek {

/** A combo box of the filament materials, one a row in the order of Orvane::Material. */
class TROVEK_UI_EXPORT MaterialComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit MaterialComboBox(QWidget* parent = nullptr);
    ~MaterialComboBox() override;

    /** Orvane::UnknownMaterial when nothing is selected. */
    Orvane::Material material() const;
    /** Whether the machine of the last sanitizeForBot() takes it, as all do before. */
    bool isUsable(Orvane::Material material) const;
    /** A value that is no material clears the selection. */
    void select(Orvane::Material material);

public slots:
    void indexChanged(int index);
    /**
     * Refills the box, greys what a machine of this type cannot use and selects its usual material.
     *
     * The signal comes more than once on the way, also with values that are no material.
     */
    void sanitizeForBot(trovek::Printer::Type printer);

signals:
    /** The current row's number as a material; -1 when nothing is selected. */
    void materialChanged(Orvane::Material material);

private:
    void addMaterials();
};

} // namespace trovek
