#pragma once

#include "platform/pathscope/sample_paths.h"

#include <pathscope/layer_slider.h>
#include <pathscope/toolpath_overlay.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QDialog>
#include <QLabel>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>

namespace pathscope {

/** The controls over a tower, and the widgets in them by their names. */
struct Opened
{
    explicit Opened(int layers = 50, const std::vector<Orvane::Material>& materials = {})
        : scene(settingWith(materials))
        , overlay(new ToolpathOverlay(&scene, &window))
        , model(*scene.viewModel())
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(overlay);
        if (layers > 0)
            scene.setToolpaths(tower(layers));
        window.resize(280, 700);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not get the focus");
    }

    static SceneSetting settingWith(const std::vector<Orvane::Material>& materials)
    {
        SceneSetting setting;
        setting.materials = materials;
        return setting;
    }

    template <typename Widget>
    Widget& find(const char* name) const
    {
        auto* found = overlay->findChild<Widget*>(QString::fromLatin1(name));
        if (found == nullptr)
            qFatal("there is no %s", name);
        return *found;
    }

    /** Many layers, each with another thickness, time and number of moves, and nothing to draw. */
    void showUnevenLayers(int count)
    {
        // No machine is higher.
        const double distance = std::min(0.1, 900.0 / count);
        auto paths = std::make_shared<Toolpaths>();
        paths->bounds = {{0, 0, 0}, {20, 20, distance * count}, true};
        paths->objectBounds = paths->bounds;
        paths->layers.resize(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            Layer& layer = paths->layers[static_cast<std::size_t>(i)];
            const auto moves = static_cast<std::uint64_t>(1 + i % 3);
            layer.segments = {paths->segmentCount, paths->segmentCount + moves};
            layer.height = 0.1F + 0.01F * float(i % 7);
            layer.z = float(distance * (i + 1));
            layer.amount.seconds = 90 - i % 40;
            paths->segmentCount += moves;
        }
        paths->complete = true;
        scene.setToolpaths(paths);
    }

    QString text(const char* label) const { return find<QLabel>(label).text(); }
    QSpinBox& box(const char* name) const { return find<QSpinBox>(name); }
    LayerSlider& slider() const { return find<LayerSlider>("layerSlider"); }

    void type(QAbstractSpinBox& into, const char* keys) const
    {
        into.setFocus();
        into.selectAll();
        QTest::keyClicks(&into, QString::fromLatin1(keys));
    }

    ToolpathScene scene;
    QDialog window;
    ToolpathOverlay* const overlay;
    ToolpathViewModel& model;
};

} // namespace pathscope
