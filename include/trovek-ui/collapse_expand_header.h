#pragma once

#include "trovek-ui/export.h"

#include <QToolButton>

namespace trovek {

/**
 * The header of a section that opens and closes, with an arrow that tells which.
 *
 * Closed, that is not checked, at first. The owner connects toggled(bool) and shows the section.
 */
class TROVEK_UI_EXPORT CollapseExpandHeader : public QToolButton
{
    Q_OBJECT

public:
    explicit CollapseExpandHeader(const QString& text, QWidget* parent = nullptr);

public slots:
    void buttonToggled(bool checked);
};

} // namespace trovek
