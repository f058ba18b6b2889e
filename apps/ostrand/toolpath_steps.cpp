#include "toolpath_steps.h"

#include "host.h"
#include "main_window.h"
#include "robot.h"

#include <trovek-ui/pathscope_dialog.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QAction>
#include <QFileInfo>

#include <memory>
#include <stdexcept>

namespace ostrand {
namespace {

using pathscope::ToolpathGLWidget;
using pathscope::ToolpathViewModel;

ToolpathViewModel& modelOf(const ToolpathGLWidget& view)
{
    return *view.toolpathScene()->viewModel();
}

void trigger(const MainWindow& window, const char* action, int times = 1)
{
    auto* found = window.findChild<QAction*>(QLatin1String(action));
    if (!found)
        throw std::runtime_error(std::string("The toolpath view has no action ") + action);
    for (int i = 0; i < times; ++i)
        found->trigger();
}

void expect(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(std::string("The toolpath view did not ") + what);
}

bool usesTwoExtruders(const pathscope::Toolpaths& paths)
{
    return paths.toolAmounts[0].filament > 0 && paths.toolAmounts[1].filament > 0;
}

/** One with as many extruders as the file uses; null when there is none. */
const trovek::Printer* machineFor(const trovek::TrovekQt& facade, int extruders)
{
    for (const trovek::Printer* machine : facade.printers()) {
        if (machine->canPrint() && machine->numberOfExtruders() == extruders)
            return machine;
    }
    return nullptr;
}

} // namespace

void waitForToolpaths(Robot& robot, ToolpathGLWidget& view)
{
    robot.waitFor([&] { return view.toolpathScene()->toolpaths()->complete; },
                  QStringLiteral("the toolpaths"));
    robot.waitFor([&] { return view.isPictureComplete() || !view.whyNoPicture().isEmpty(); },
                  QStringLiteral("the picture of the toolpaths"));
}

void lookThroughToolpaths(MainWindow& window, Robot& robot, const Photographer& photograph)
{
    ToolpathGLWidget* const view = window.toolpathView();
    if (!view)
        return;
    ToolpathViewModel& model = modelOf(*view);
    const auto take = [&](const char* name, const QString& caption) {
        waitForToolpaths(robot, *view);
        photograph(window, QLatin1String(name), caption);
    };
    take("toolpaths", QStringLiteral("Its toolpaths"));

    const int top = model.lastLayer();
    const int steps = top / 2;
    trigger(window, "layerDown", steps);
    expect(model.lastLayer() == top - steps, "go down by layers");
    take("layers", QStringLiteral("Half of the layers"));
    trigger(window, "singleLayer");
    expect(model.isSingleLayer(), "show one layer alone");
    take("one-layer", QStringLiteral("One layer"));
    trigger(window, "singleLayer");
    trigger(window, "layerUp", steps);
    expect(model.lastLayer() == top, "go up by layers");

    trigger(window, "orthoViewToggled");
    expect(model.isOrthographic(), "change the projection");
    take("orthographic", QStringLiteral("Without perspective"));
    trigger(window, "orthoViewToggled");

    const ToolpathViewModel::ColourMode mode = model.colourMode();
    model.setColourMode(ToolpathViewModel::ByExtruder);
    take("by-extruder", QStringLiteral("Colors of the extruders"));
    model.setColourMode(mode);
    waitForToolpaths(robot, *view);
}

void photographPreview(Host& host, Robot& robot, const QString& file,
                       const Photographer& photograph)
{
    const QFileInfo info(file);
    const QString name = info.completeBaseName();
    MainWindow& window = host.window();
    window.openFile(info.absoluteFilePath());
    ToolpathGLWidget* const view = window.toolpathView();
    if (!view)
        throw std::runtime_error("There are no toolpaths in " + trovek::toStdString(file));
    waitForToolpaths(robot, *view);
    photograph(window, QStringLiteral("main-") + name, QStringLiteral("%1, open").arg(name));

    const int extruders = usesTwoExtruders(*view->toolpathScene()->toolpaths()) ? 2 : 1;
    const std::unique_ptr<trovek::PathscopeDialog> dialog(new trovek::PathscopeDialog(
        nullptr, machineFor(host.facade(), extruders), {Orvane::PLA, Orvane::PLA},
        {QColor(0xe8, 0x76, 0x1c), QColor(0x2f, 0x7f, 0xd0)}, info.absoluteFilePath(),
        QStringLiteral("Make It!"), &window));
    auto& preview = *dialog->findChild<ToolpathGLWidget*>();
    dialog->show();
    if (extruders == 2)
        modelOf(preview).setColourMode(ToolpathViewModel::ByExtruder);
    waitForToolpaths(robot, preview);
    photograph(*dialog, QStringLiteral("preview-") + name,
               QStringLiteral("%1, before it is made").arg(name));
}

} // namespace ostrand
