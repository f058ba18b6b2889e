#pragma once

#include "file_kinds.h"
#include "gcode_page.h"

#include <QStackedWidget>

namespace ostrand {

/** The middle of the window: the open file, or an invitation to open one. */
class FileView : public QStackedWidget
{
    Q_OBJECT

public:
    explicit FileView(QWidget* parent = nullptr);

    /** Shows the file with what the disk says of it now; an empty path shows the invitation. */
    void setFile(const QString& path);
    const QString& file() const { return m_path; }

    /** The machine whose build volume stands around the toolpaths of a sliced file. */
    void setMachine(const ViewedMachine& machine);
    /** Null unless a sliced file is open. */
    pathscope::ToolpathGLWidget* toolpathView() const;

signals:
    void openRequested();
    void makeRequested();

private:
    QWidget* makeInvitation();
    void choosePage(FileKind kind);

    QString m_path;
    ViewedMachine m_machine;
    FileKind m_kind = FileKind::Unknown;
    FilePage* m_page = nullptr;
};

} // namespace ostrand
