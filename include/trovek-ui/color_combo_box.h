#pragma once

#include "trovek-ui/export.h"

#include <QColor>
#include <QComboBox>
#include <QMetaType>
#include <QString>

namespace trovek {

/** A combo box of the brand's filament colours, each with a swatch beside its name in the list. */
class TROVEK_UI_EXPORT ColorComboBox : public QComboBox
{
    Q_OBJECT

public:
    enum Color : int {
        TrueRed = 0,
        TrueOrange = 1,
        TrueYellow = 2,
        TrueGreen = 3,
        TrueBlue = 4,
        TruePurple = 5,
        TrueGray = 6,
        TrueWhite = 7,
        TrueBlack = 8,
        UnknownColor = 9,
    };

    explicit ColorComboBox(QWidget* parent = nullptr);
    ~ColorComboBox() override;

    /** The current row's number; -1 when nothing is selected. */
    Color color() const;
    /** Black when nothing is selected. */
    QColor qcolor() const;

    /** Translated; "Unknown Color" for a value without a name. */
    static QString colorToString(Color color);
    /** Opaque black for a value without a colour. */
    static QColor colorToQColor(Color color);
    /** The first exactly equal one; UnknownColor when there is none. */
    static Color qcolorToColor(QColor color);

public slots:
    void indexChanged(int index);
    /** Nothing happens for a colour that is not listed. */
    void selectColor(const QColor& color);
    void selectColor(trovek::ColorComboBox::Color color);

signals:
    /** Both are emitted on a change, this one first. */
    void colorChanged(trovek::ColorComboBox::Color color);
    void colorChanged(QColor color);
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::ColorComboBox::Color)
