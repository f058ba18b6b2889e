#pragma once

#include "pathscope/export.h"

#include <QObject>

#include <cstdint>

namespace pathscope {

/** What of the toolpaths is shown, and how; the user's choices, without the paths or a window. */
class PATHSCOPE_EXPORT ToolpathViewModel : public QObject
{
    Q_OBJECT

public:
    enum ColourMode {
        ByExtruder,
        ByFeature,
        ByHeight,
        ByWidth,
        BySpeed,
        ByTemperature,
        ByLayerTime
    };
    Q_ENUM(ColourMode)
    static constexpr int kColourModeCount = 7;

    explicit ToolpathViewModel(QObject* parent = nullptr);

    /** Layers are counted from 0; the range is inclusive and lies in [0, layerCount() - 1]. */
    int layerCount() const { return m_layerCount; }
    int firstLayer() const { return m_singleLayer ? m_lastLayer : m_firstLayer; }
    int lastLayer() const { return m_lastLayer; }
    bool isSingleLayer() const { return m_singleLayer; }

    /** How many segments of the top layer are shown; moveCount() shows them all. */
    int moveCount() const { return m_moveCount; }
    int shownMoves() const { return m_shownMoves; }

    ColourMode colourMode() const { return m_colourMode; }
    bool showsTravels() const { return m_travels; }
    bool showsRetractions() const { return m_retractions; }
    bool isOrthographic() const { return m_orthographic; }

    /**
     * Called by the scene when layers come in. While the last layer was the top one it stays so;
     * a range that a user chose is kept as far as it fits.
     */
    void setLayerCount(int count);
    /** Called by the scene for another file: all of its layers are shown. Switches stay. */
    void startOver(int layerCount);
    /** Called by the scene when the top layer changes; shows all of its moves. */
    void setMoveCount(int count);
    /** Called by the scene when more of the top layer comes in; a user's choice is kept. */
    void extendMoveCount(int count);

public slots:
    /** Numbers outside of the file are taken for its ends; a range turned round is turned back. */
    void setLayerRange(int first, int last);
    /** The first layer moves along where it would be above. */
    void setLastLayer(int layer);
    /** The last layer moves along where it would be below. */
    void setFirstLayer(int layer);
    /** One layer up; at the top nothing happens. The first layer stays. */
    void layerUp();
    /** One layer down; below the first layer of the range the range moves along. */
    void layerDown();
    /** Only the top layer is shown; the range's beginning is kept for afterwards. */
    void setSingleLayer(bool single);
    void singleLayerToggled();
    void setShownMoves(int moves);
    void setColourMode(pathscope::ToolpathViewModel::ColourMode mode);
    void setTravelsShown(bool shown);
    void setRetractionsShown(bool shown);
    void setOrthographic(bool orthographic);
    /** From perspective to orthographic and back. */
    void orthoViewToggled();

signals:
    /** Each only on a change. */
    void layersChanged();
    void movesChanged();
    void coloursChanged();
    void visibilityChanged();
    void projectionChanged();
    /** Once for each change, after all of the others that it brings about. */
    void changed();

private:
    using Signal = void (ToolpathViewModel::*)();

    void takeLayers(int count, int first, int last, bool single);
    void takeMoves(int count, int shown);
    void takeSwitch(bool& present, bool wanted, Signal signal);
    void announce(Signal signal);

    int m_layerCount = 0;
    int m_firstLayer = 0;
    int m_lastLayer = 0;
    bool m_singleLayer = false;
    int m_moveCount = 0;
    int m_shownMoves = 0;
    ColourMode m_colourMode = ByFeature;
    bool m_travels = false;
    bool m_retractions = false;
    bool m_orthographic = false;
    int m_announcements = 0;
};

} // namespace pathscope
