#include "pathscope/toolpath_view_model.h"

#include <QPointer>

#include <algorithm>
#include <tuple>

namespace pathscope {

ToolpathViewModel::ToolpathViewModel(QObject* parent)
    : QObject(parent)
{}

void ToolpathViewModel::setLayerCount(int count)
{
    const bool topWasShown = m_lastLayer >= m_layerCount - 1;
    takeLayers(count, m_firstLayer, topWasShown ? count : m_lastLayer, m_singleLayer);
}

void ToolpathViewModel::startOver(int layerCount)
{
    takeLayers(layerCount, 0, layerCount, m_singleLayer);
}

void ToolpathViewModel::setMoveCount(int count)
{
    takeMoves(count, count);
}

void ToolpathViewModel::extendMoveCount(int count)
{
    takeMoves(count, m_shownMoves == m_moveCount ? count : m_shownMoves);
}

void ToolpathViewModel::setLayerRange(int first, int last)
{
    takeLayers(m_layerCount, std::min(first, last), std::max(first, last), m_singleLayer);
}

void ToolpathViewModel::setLastLayer(int layer)
{
    takeLayers(m_layerCount, std::min(m_firstLayer, layer), layer, m_singleLayer);
}

void ToolpathViewModel::setFirstLayer(int layer)
{
    takeLayers(m_layerCount, layer, std::max(layer, m_lastLayer), m_singleLayer);
}

void ToolpathViewModel::layerUp()
{
    setLastLayer(m_lastLayer + 1);
}

void ToolpathViewModel::layerDown()
{
    setLastLayer(m_lastLayer - 1);
}

void ToolpathViewModel::setSingleLayer(bool single)
{
    takeLayers(m_layerCount, m_firstLayer, m_lastLayer, single);
}

void ToolpathViewModel::singleLayerToggled()
{
    setSingleLayer(!m_singleLayer);
}

void ToolpathViewModel::setShownMoves(int moves)
{
    takeMoves(m_moveCount, moves);
}

void ToolpathViewModel::setColourMode(ColourMode mode)
{
    if (mode == m_colourMode || mode < 0 || mode >= kColourModeCount)
        return;
    m_colourMode = mode;
    announce(&ToolpathViewModel::coloursChanged);
}

void ToolpathViewModel::setTravelsShown(bool shown)
{
    takeSwitch(m_travels, shown, &ToolpathViewModel::visibilityChanged);
}

void ToolpathViewModel::setRetractionsShown(bool shown)
{
    takeSwitch(m_retractions, shown, &ToolpathViewModel::visibilityChanged);
}

void ToolpathViewModel::setOrthographic(bool orthographic)
{
    takeSwitch(m_orthographic, orthographic, &ToolpathViewModel::projectionChanged);
}

void ToolpathViewModel::orthoViewToggled()
{
    setOrthographic(!m_orthographic);
}

void ToolpathViewModel::takeLayers(int count, int first, int last, bool single)
{
    const auto seen = [this] {
        return std::make_tuple(m_layerCount, firstLayer(), lastLayer(), m_singleLayer);
    };
    const auto before = seen();

    m_layerCount = std::max(count, 0);
    // Callers may ask for more than there is: the count itself stands for the top layer.
    const int top = std::max(m_layerCount - 1, 0);
    m_firstLayer = std::clamp(first, 0, top);
    m_lastLayer = std::clamp(last, 0, top);
    m_singleLayer = single;

    if (seen() != before)
        announce(&ToolpathViewModel::layersChanged);
}

void ToolpathViewModel::takeMoves(int count, int shown)
{
    count = std::max(count, 0);
    shown = std::clamp(shown, 0, count);
    if (count == m_moveCount && shown == m_shownMoves)
        return;
    m_moveCount = count;
    m_shownMoves = shown;
    announce(&ToolpathViewModel::movesChanged);
}

void ToolpathViewModel::takeSwitch(bool& present, bool wanted, Signal signal)
{
    if (present == wanted)
        return;
    present = wanted;
    announce(signal);
}

void ToolpathViewModel::announce(Signal signal)
{
    const QPointer<ToolpathViewModel> self(this);
    ++m_announcements;
    emit(this->*signal)();
    if (self && --m_announcements == 0)
        emit changed();
}

} // namespace pathscope
