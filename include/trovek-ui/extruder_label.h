#pragma once

#include "trovek-ui/export.h"

#include <trovek/slicer_configuration.h>

#include <QWidget>

class QLabel;
class QStackedWidget;

namespace trovek {

class Printer;

/** Tells which extruder a file will be printed with, and whether the machine has it. */
class TROVEK_UI_EXPORT ExtruderLabel : public QWidget
{
    Q_OBJECT

public:
    /** Empty until the first update(). @param extruder what the file is made for */
    explicit ExtruderLabel(SlicerConfiguration::Extruder extruder, QWidget* parent = nullptr);
    ~ExtruderLabel() override;

    /**
     * Shows the extruder for this machine; nothing where there is no choice.
     * @param printer null for none; only read here
     */
    void update(const Printer* printer);
    using QWidget::update;

    /** Whether the file does not suit the machine. */
    bool isError() const { return m_isError; }

private:
    struct Display;
    Display displayFor(const Printer* printer) const;

    const SlicerConfiguration::Extruder m_extruder;
    QStackedWidget* m_pages;
    QLabel* m_warning;
    QLabel* m_value;
    bool m_isError = false;
};

} // namespace trovek
