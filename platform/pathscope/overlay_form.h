#pragma once

#include <array>

class QAbstractButton;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QProgressBar;
class QScrollArea;
class QSlider;
class QSpinBox;
class QWidget;

namespace pathscope {

class HeightBox;
class LayerSlider;
class LegendList;

/** The widgets of the overlay as they stand, without what they do; all are children of its panel.
 */
class OverlayForm
{
public:
    struct View
    {
        /** A Camera::Preset, or -1 for "fit". */
        int preset = -1;
        QAbstractButton* button = nullptr;
    };

    explicit OverlayForm(QWidget& panel);

    /** Whether there are layers to go through, and whether a range has a beginning of its own. */
    void setNavigable(bool navigable, bool singleLayer);

    /** Sizes the number boxes, and the labels beside and below them, for the font of the panel. */
    void takeFont();

    /**
     * Gives one of those room for what it shows now. Their sizes are fixed and only grow: a step
     * through the layers then lays nothing out anew, and nothing moves to and fro.
     */
    void growToContent(QWidget& widget);

    LayerSlider* slider = nullptr;
    QSpinBox* layer = nullptr;
    QLabel* layerCount = nullptr;
    HeightBox* height = nullptr;
    QLabel* layerInfo = nullptr;
    QSpinBox* from = nullptr;
    QCheckBox* single = nullptr;
    QSlider* moves = nullptr;
    QSpinBox* move = nullptr;
    QLabel* moveCount = nullptr;
    QComboBox* colour = nullptr;
    LegendList* legend = nullptr;
    QLabel* totals = nullptr;
    QLabel* skipped = nullptr;
    QCheckBox* travels = nullptr;
    QCheckBox* retractions = nullptr;
    QCheckBox* orthographic = nullptr;
    std::array<View, 5> views;
    QProgressBar* progress = nullptr;

private:
    void makeNavigation(QBoxLayout& column);
    void makeColours(QBoxLayout& column);
    void makeTotals(QBoxLayout& column);
    void makeSwitches(QBoxLayout& column);
    void makeViews(QBoxLayout& column);
    void makeProgress(QWidget& panel, QBoxLayout& rows);

    /** Makes the panel as wide as its contents and a scroll bar need. */
    void widen();

    QScrollArea* m_area = nullptr;
    QWidget* m_column = nullptr;
};

} // namespace pathscope
