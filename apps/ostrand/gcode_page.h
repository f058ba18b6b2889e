#pragma once

#include "picture_page.h"

#include <qtshared/bounding_box.h>

namespace pathscope {
class ToolpathGLWidget;
class ToolpathKeys;
} // namespace pathscope

namespace ostrand {

/** What the toolpath view has to know of a machine. */
struct ViewedMachine
{
    /** Empty when no machine is known. */
    Orvane::BoundingBox buildVolume;
    int extruders = 1;

    bool operator==(const ViewedMachine& other) const;
    bool operator!=(const ViewedMachine& other) const { return !(*this == other); }
};

/** The page of a sliced file: its toolpaths, below a bar with the file and the button. */
class GCodePage : public PicturePage
{
    Q_OBJECT

public:
    explicit GCodePage(const ViewedMachine& machine, QWidget* parent = nullptr);

    /** Draws the build volume of this machine. */
    void setMachine(const ViewedMachine& machine);
    pathscope::ToolpathGLWidget& view() const { return *m_view; }

protected:
    void read(const QFileInfo& file) override;

private:
    void makeView();
    void renderPicture();

    ViewedMachine m_machine;
    pathscope::ToolpathGLWidget* m_view = nullptr;
    pathscope::ToolpathKeys* m_keys = nullptr;
};

} // namespace ostrand
