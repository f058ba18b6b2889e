#pragma once

#include "toolpaths_maker.h"

#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QStringList>

namespace pathscope {

constexpr MoveStyle kWall = {Feature::OuterWall, 0, 0.4F, 0.2F, 40, 200, 0};

/** Squares of 20 mm, one a layer, each a travel and four lines. */
inline ToolpathsMaker tower(int layers, const MoveStyle& style = kWall)
{
    ToolpathsMaker maker;
    maker.style(style);
    for (int i = 1; i <= layers; ++i) {
        maker.layer(0.2F * float(i));
        maker.square(50, 50, 20);
    }
    return maker;
}

/** A scene with its view model, and the legend's names. */
struct World
{
    explicit World(const SceneSetting& setting = SceneSetting())
        : scene(setting)
        , model(*scene.viewModel())
    {}

    QStringList names() const
    {
        QStringList names;
        for (const LegendEntry& entry : scene.legend())
            names.append(entry.name);
        return names;
    }

    ToolpathScene scene;
    ToolpathViewModel& model;
};

/** From one text with bars between. */
inline QStringList lines(const char* text)
{
    return QString::fromUtf8(text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

} // namespace pathscope
