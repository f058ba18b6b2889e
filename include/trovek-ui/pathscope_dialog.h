#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>

#include <QColor>
#include <QDialog>

#include <memory>
#include <vector>

class QGLWidget;

namespace trovek {

class Printer;

/**
 * Shows the toolpaths of a sliced file before it is printed or exported, and asks whether to go on.
 *
 * accepted() comes when the user agrees, rejected() otherwise. The view opens where there is no
 * OpenGL too, and then tells in words what will be made. The keys of the view (Up, Down, PageUp,
 * PageDown, Home, End, O, X, F) work wherever the focus is. Its parent's window waits for the
 * answer. The dialog deletes itself when it is closed. GUI thread only.
 */
class TROVEK_UI_EXPORT PathscopeDialog : public QDialog
{
    Q_OBJECT

public:
    /**
     * @param share      the view shares its OpenGL context; not owned, must outlive the dialog.
     * Null gives the dialog one of its own
     * @param printer    whose build volume is drawn; only read here. Null draws none
     * @param materials  one an extruder
     * @param colors     one an extruder, in which its paths are drawn
     * @param file       the sliced file
     * @param acceptText of the button that goes on, for example "Make It!"
     */
    PathscopeDialog(QGLWidget* share, const Printer* printer,
                    const std::vector<Orvane::Material>& materials,
                    const std::vector<QColor>& colors, const QString& file,
                    const QString& acceptText, QWidget* parent = nullptr);
    ~PathscopeDialog() override;

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
