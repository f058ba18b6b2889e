#pragma once

#include "file_page.h"

#include <qtshared/bounding_box.h>

#include <QDateTime>
#include <QPixmap>

namespace pathscope {
class ToolpathGLWidget;
class ToolpathKeys;
} // namespace pathscope

class QVBoxLayout;

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
class GCodePage : public FilePage
{
    Q_OBJECT

public:
    explicit GCodePage(const ViewedMachine& machine, QWidget* parent = nullptr);

    /** Reads the file when it is another one, or has changed on the disk. */
    void showFile(const QString& path) override;
    /** Draws the build volume of this machine. */
    void setMachine(const ViewedMachine& machine);
    pathscope::ToolpathGLWidget& view() const { return *m_view; }

private:
    void makeBar();
    void makeView();
    void renderPicture();
    void showPicture();

    ViewedMachine m_machine;
    QVBoxLayout* const m_column;
    pathscope::ToolpathGLWidget* m_view = nullptr;
    pathscope::ToolpathKeys* m_keys = nullptr;
    QString m_path;
    qint64 m_bytes = -1;
    QDateTime m_changed;
    /** Of the file as it was read last; null until it is drawn. */
    QPixmap m_rendered;
};

} // namespace ostrand
