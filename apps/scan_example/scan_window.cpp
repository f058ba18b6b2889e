#include "scan_window.h"

#include "shape_view.h"

#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <exception>
#include <utility>

namespace scan_example {

namespace {

constexpr char kLogUnit[] = "apps\\scan_example\\scan_window";
constexpr char kPicturesKey[] = "scan_example/pictures_per_turn";
constexpr char kFolderKey[] = "scan_example/folder";

QString documentsDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

ScanWindow::ScanWindow(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent)
    : QWidget(parent)
    , m_facade(facade)
    , m_settings(settings)
    , m_chain(facade)
    , m_view(new ShapeView(this))
    , m_pictures(new QSpinBox(this))
    , m_status(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_cancel(new QPushButton(tr("&Cancel"), this))
    , m_makeButton(new QPushButton(tr("&8  Make…"), this))
{
    setWindowTitle(tr("Scan Example"));
    resize(940, 640);
    m_status->setObjectName(QStringLiteral("status"));
    m_status->setWordWrap(true);
    m_progress->setObjectName(QStringLiteral("progress"));
    m_progress->setRange(0, 100);
    m_cancel->setObjectName(QStringLiteral("cancel"));

    auto* const bottom = new QHBoxLayout;
    bottom->addWidget(m_status, 1);
    bottom->addWidget(m_progress);
    bottom->addWidget(m_cancel);
    auto* const right = new QVBoxLayout;
    right->addWidget(m_view, 1);
    right->addLayout(bottom);
    auto* const all = new QHBoxLayout(this);
    all->addWidget(makeButtons());
    all->addLayout(right, 1);

    connect(&facade, &trovek::TrovekQt::connected, this, &ScanWindow::update);
    connect(&facade, &trovek::TrovekQt::disconnected, this, &ScanWindow::update);
    connect(m_cancel, &QPushButton::clicked, &m_chain, &ScanChain::cancel);
    connect(m_makeButton, &QPushButton::clicked, this, &ScanWindow::make);
    connect(&m_chain, &ScanChain::changed, this, &ScanWindow::update);
    connect(&m_chain, &ScanChain::progressed, m_progress, &QProgressBar::setValue);
    connect(&m_chain, &ScanChain::stepDone, this, &ScanWindow::showDone);
    connect(&m_chain, &ScanChain::stepFailed, this, &ScanWindow::showFailure);
    m_status->setText(tr("Press Scan: something stands on the scanner's table."));
    update();
    m_buttons[ScanChain::Scan]->setFocus();
}

ScanWindow::~ScanWindow() = default;

void ScanWindow::setPicturesPerTurn(int pictures)
{
    m_pictures->setValue(pictures);
}

QWidget* ScanWindow::makeButtons()
{
    const QString texts[] = {
        tr("&1  Scan"),  tr("&2  Clean"),       tr("&3  Turn and scan again"),
        tr("&4  Align"), tr("&5  Reconstruct"), tr("&6  Place on the platform"),
        tr("&7  Save…")};
    auto* const column = new QWidget(this);
    auto* const layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const label = new QLabel(tr("&Pictures for one turn:"), column);
    label->setBuddy(m_pictures);
    m_pictures->setObjectName(QStringLiteral("pictures"));
    m_pictures->setRange(20, 2000);
    m_pictures->setValue(m_settings.value(QLatin1String(kPicturesKey), 240).toInt());
    connect(m_pictures, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int pictures) { m_settings.setValue(QLatin1String(kPicturesKey), pictures); });
    layout->addWidget(label);
    layout->addWidget(m_pictures);
    layout->addSpacing(12);
    for (int i = 0; i < ScanChain::kSteps; ++i) {
        const auto step = static_cast<ScanChain::Step>(i);
        auto* const button = new QPushButton(texts[i], column);
        button->setObjectName(QStringLiteral("step%1").arg(i + 1));
        connect(button, &QPushButton::clicked, this, [this, step] { press(step); });
        m_buttons[step] = button;
    }
    for (QPushButton* button : m_buttons)
        layout->addWidget(button);
    m_makeButton->setObjectName(QStringLiteral("make"));
    layout->addWidget(m_makeButton);
    layout->addStretch();
    QWidget* before = m_pictures;
    for (QPushButton* button : m_buttons) {
        setTabOrder(before, button);
        before = button;
    }
    setTabOrder(before, m_makeButton);
    setTabOrder(m_makeButton, m_view);
    setTabOrder(m_view, m_cancel);
    return column;
}

void ScanWindow::press(ScanChain::Step step)
{
    if (step == ScanChain::Save && !chooseFile())
        return;
    m_chain.setPicturesPerTurn(m_pictures->value());
    m_chain.start(step);
}

void ScanWindow::update()
{
    const bool running = m_chain.isRunning();
    const bool connected = m_facade.isConnected();
    for (int i = 0; i < ScanChain::kSteps; ++i)
        m_buttons[i]->setEnabled(connected && m_chain.canStart(static_cast<ScanChain::Step>(i)));
    m_makeButton->setEnabled(!running && m_chain.stepsDone() == ScanChain::kSteps);
    m_pictures->setEnabled(!running);
    m_progress->setVisible(running);
    m_cancel->setVisible(running);
    if (!running) {
        focusNext();
        return;
    }
    m_wasRunning = true;
    m_status->setText(tr("Working…"));
    // What is no scan ends soon, and tells nothing before.
    const auto step = static_cast<ScanChain::Step>(m_chain.stepsDone());
    const bool scans = step == ScanChain::Scan || step == ScanChain::ScanAgain;
    m_progress->setRange(0, scans ? 100 : 0);
    m_progress->setValue(0);
    m_cancel->setEnabled(scans);
}

/** Where the buttons were switched off for a step, so that the keyboard goes on from there. */
void ScanWindow::focusNext()
{
    if (!std::exchange(m_wasRunning, false))
        return;
    QPushButton* const next = m_chain.stepsDone() < ScanChain::kSteps
                                  ? m_buttons[std::size_t(m_chain.stepsDone())]
                                  : m_makeButton;
    if (next->isEnabled())
        next->setFocus();
}

void ScanWindow::showShapes()
{
    if (m_chain.stepsDone() > ScanChain::Reconstruct)
        m_view->showMesh(m_chain.mesh());
    else if (m_chain.clouds().empty())
        m_view->showNothing();
    else
        m_view->showClouds(m_chain.clouds());
}

void ScanWindow::showDone(ScanChain::Step step)
{
    showShapes();
    int points = 0;
    for (const auto& cloud : m_chain.clouds())
        points += static_cast<int>(cloud.positions.size());
    const auto triangles = static_cast<int>(m_chain.mesh().triangles.size());
    switch (step) {
    case ScanChain::Save:
        m_status->setText(tr("Saved as %1.").arg(m_chain.file()));
        break;
    case ScanChain::Reconstruct:
    case ScanChain::Place:
        m_status->setText(tr("%L1 triangles.").arg(triangles));
        break;
    default:
        m_status->setText(tr("%L1 points.").arg(points));
    }
}

void ScanWindow::showFailure(ScanChain::Step step, const QString& reason)
{
    const QString name = m_buttons[step]->text().mid(1).simplified();
    m_status->setText(tr("%1: %2").arg(name, reason));
    showShapes();
}

bool ScanWindow::chooseFile()
{
    const QString folder = m_settings.value(QLatin1String(kFolderKey), documentsDir()).toString();
    QFileDialog dialog(this, tr("Save the model"), folder,
                       tr("STL files (*.stl);;OBJ files (*.obj);;PLY files (*.ply)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("stl"));
    dialog.selectFile(QStringLiteral("scan.stl"));
    connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.left(3).toLower());
    });
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    m_chain.setFile(dialog.selectedFiles().first());
    m_settings.setValue(QLatin1String(kFolderKey), QFileInfo(m_chain.file()).absolutePath());
    return true;
}

void ScanWindow::make()
{
    try {
        auto* const dialog = new trovek::MakeThingDialog(
            m_facade, m_chain.file(), trovek::SlicerConfiguration::Right, &m_settings, nullptr,
            documentsDir(), false, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        m_status->setText(QString::fromUtf8(error.what()));
    }
}

} // namespace scan_example
