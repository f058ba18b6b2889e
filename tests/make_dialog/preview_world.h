#pragma once

#include "make_dialog/make_world.h"

#include <trovek-ui/pathscope_dialog.h>

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QLabel>
#include <QPushButton>

namespace trovek {

/** An open preview of a tower of thirty layers, 0.2 mm each. */
class PreviewWorld
{
public:
    explicit PreviewWorld(std::shared_ptr<const Printer> shownPrinter = printerWith(2),
                          const QString& otherFile = QString(), QGLWidget* share = nullptr)
        : printer(std::move(shownPrinter))
    {
        const QString file = folder.filePath(QStringLiteral("sliced.gcode"));
        MakeWorld::writeFile(file, towerCode());
        dialog = new PathscopeDialog(share, printer.get(), {Orvane::PLA, Orvane::ABS},
                                     {Qt::red, Qt::blue}, otherFile.isEmpty() ? file : otherFile,
                                     QStringLiteral("Make It!"));
        dialog->show();
        dialog->activateWindow();
        if (!QTest::qWaitForWindowActive(dialog))
            qFatal("the dialog does not get the focus");
    }
    ~PreviewWorld() { delete dialog.data(); }

    static std::shared_ptr<const Printer> printerWith(int extruders)
    {
        Printer::Data data = ScriptedService::machine("left", Printer::Fabrino2);
        data.numberOfExtruders = extruders;
        const float volume[6] = {-110, -70, 1, 115, 75, 150};
        std::copy(std::begin(volume), std::end(volume), std::begin(data.buildVolume));
        return std::make_shared<const Printer>(data);
    }

    static QByteArray towerCode()
    {
        QByteArray code = "G90\nM83\nG1 X40 Y40 F3000\n";
        for (int layer = 0; layer < 30; ++layer) {
            code += ";LAYER_CHANGE\nG1 Z" + QByteArray::number(0.2 * (layer + 1), 'f', 2) + "\n";
            code += ";TYPE:External perimeter\n";
            for (const char* corner : {"X80 Y40", "X80 Y80", "X40 Y80", "X40 Y40"})
                code += QByteArray("G1 ") + corner + " E1.3\n";
        }
        return code;
    }

    template <typename Object>
    Object* find(const char* name) const
    {
        auto* const found = dialog->findChild<Object*>(QString::fromLatin1(name));
        if (found == nullptr)
            qFatal("there is no %s", name);
        return found;
    }

    QPushButton& cancel() const { return *find<QPushButton>("cancelButton"); }
    QPushButton& go() const { return *find<QPushButton>("acceptButton"); }
    QLabel& question() const { return *find<QLabel>("question"); }
    pathscope::ToolpathGLWidget& view() const
    {
        return *find<pathscope::ToolpathGLWidget>("toolpathView");
    }
    pathscope::ToolpathViewModel& model() const { return *view().toolpathScene()->viewModel(); }

    void waitForLayers() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(view().toolpathScene()->toolpaths()->complete, 30000);
    }

    QTemporaryDir folder;
    const std::shared_ptr<const Printer> printer;
    QPointer<PathscopeDialog> dialog;
};

} // namespace trovek
