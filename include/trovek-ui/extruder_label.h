#pragma once

#include "trovek-ui/export.h"

#include <trovek/slicer_configuration.h>

#include <QStackedWidget>

class QLabel;

namespace trovek {

class Printer;

/** Tells which extruder a file will be printed with, and whether the machine has it. */
class TROVEK_UI_EXPORT ExtruderLabel : public QWidget
{
    Q_OBJECT

public:
    explicit ExtruderLabel(SlicerConfiguration::Extruder extruder, QWidget* parent = nullptr);
    ~ExtruderLabel() override;

    /** @param printer null for none; only read here */
    void update(const Printer* printer);
    using QWidget::update;
    bool isError() const { return m_isError; }

private:
    const SlicerConfiguration::Extruder m_extruder;
    QStackedWidget* m_pages;
    QLabel* m_value;
    bool m_isError = false;
};

} // namespace trovek
