#pragma once

#include "trovek-ui/export.h"

#include <QWidget>

namespace trovek {

/** One line of plain text that takes whatever width it gets and ends with "…" where it is cut. */
class TROVEK_UI_EXPORT ElidedLabel : public QWidget
{
public:
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};

} // namespace trovek
