#pragma once

#include "trovek-ui/export.h"

#include <QPushButton>

/** A push button that can be as narrow as its text. */
class TROVEK_UI_EXPORT PushButton : public QPushButton
{
    Q_OBJECT

public:
    PushButton(const QIcon& icon, const QString& text, QWidget* parent = nullptr);
    explicit PushButton(const QString& text, QWidget* parent = nullptr);
    explicit PushButton(QWidget* parent = nullptr);

    /** Tight: as wide as the text and 24 pixels, an icon not counted. False at first. */
    void setTight(bool tight);

    QSize sizeHint() const override;

private:
    bool m_tight = false;
};
