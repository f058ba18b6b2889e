#include "trovek-ui/pathscope_dialog.h"

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_keys.h>
#include <trovek/log.h>
#include <trovek/printer.h>
#include <trovek/text.h>

#include <QGLWidget>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src\\make_dialog\\pathscope_dialog";
constexpr int kButtonWidth = 150;
constexpr QSize kComfortable(1080, 720);
/** Of the screen; the rest is for the window's frame and the bars of the desktop. */
constexpr double kPartOfWidth = 0.92;
constexpr double kPartOfHeight = 0.86;

Orvane::BoundingBox buildVolumeOf(const Printer& printer)
{
    return {printer.buildVolumeXmin(), printer.buildVolumeYmin(), printer.buildVolumeZmin(),
            printer.buildVolumeXmax(), printer.buildVolumeYmax(), printer.buildVolumeZmax()};
}

QSize fittingSize(const QWidget& dialog)
{
    const QScreen* const screen =
        dialog.parentWidget() ? dialog.parentWidget()->screen() : QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return kComfortable;
    const QSize available = screen->availableSize();
    return kComfortable.boundedTo(
        {int(available.width() * kPartOfWidth), int(available.height() * kPartOfHeight)});
}

} // namespace

class PathscopeDialog::Private : public QObject
{
public:
    Private(QGLWidget* share, const Printer* printer,
            const std::vector<Orvane::Material>& materials, const std::vector<QColor>& colors)
        : ownShare(share == nullptr ? std::make_unique<QGLWidget>() : nullptr)
        , view(std::make_unique<pathscope::ToolpathGLWidget>(
              share == nullptr ? ownShare.get() : share,
              printer != nullptr && printer->numberOfExtruders() >= 2, materials, colors,
              printer != nullptr ? buildVolumeOf(*printer) : Orvane::BoundingBox(),
              Orvane::Ground::Rectangular, Orvane::Ground::DrawBuildVolume))
    {}

    // The view goes first: it lives in the other's context.
    const std::unique_ptr<QGLWidget> ownShare;
    const std::unique_ptr<pathscope::ToolpathGLWidget> view;
};

PathscopeDialog::PathscopeDialog(QGLWidget* share, const Printer* printer,
                                 const std::vector<Orvane::Material>& materials,
                                 const std::vector<QColor>& colors, const QString& file,
                                 const QString& acceptText, QWidget* parent)
    : QDialog(parent)
    , d(std::make_unique<Private>(share, printer, materials, colors))
{
    setObjectName(QStringLiteral("pathscopeDialog"));
    setWindowTitle(tr("Toolpath Visualization"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto& view = *d->view;
    view.setObjectName(QStringLiteral("toolpathView"));
    connect(&view, &pathscope::ToolpathGLWidget::loadFailed, d.get(),
            [file](const QString& reason) {
                TROVEK_LOG(0) << "Cannot show " << toStdString(file) << ": " << toStdString(reason)
                              << std::endl;
            });
    view.setFile(QFileInfo(file));

    auto* const cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    cancel->setFixedWidth(kButtonWidth);
    auto* const question = new QLabel(tr("Are you happy with this preview?"), this);
    question->setObjectName(QStringLiteral("question"));
    auto* const go = new QPushButton(acceptText, this);
    go->setObjectName(QStringLiteral("acceptButton"));
    go->setFixedWidth(kButtonWidth);
    go->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(go, &QPushButton::clicked, this, &QDialog::accept);

    auto* const row = new QHBoxLayout;
    row->setObjectName(QStringLiteral("buttonRow"));
    row->addWidget(cancel);
    row->addWidget(question, 2, Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(go);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(&view, 1);
    column->addLayout(row);

    new pathscope::ToolpathKeys(*view.toolpathScene(), *view.overlayWidget(), *this,
                                Qt::WindowShortcut);
    resize(fittingSize(*this));
    go->setFocus();
}

PathscopeDialog::~PathscopeDialog() = default;

} // namespace trovek
