#include "scan_tour.h"

#include "scan_window.h"

#include <apps/ostrand/pictures.h>
#include <trovek-ui/make_thing_dialog.h>

#include <trovek/text.h>

#include <QDir>
#include <QEventLoop>
#include <QPushButton>
#include <QTextStream>
#include <QTimer>

#include <exception>
#include <stdexcept>

namespace scan_example {

namespace {

/** For one step; a large scan takes some seconds. */
constexpr int kDeadlineMs = 120 * 1000;

/** Runs the event loop until the signal has come. @return false when it does not in time */
template <typename Sender, typename Signal>
bool waitFor(Sender& sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(&sender, signal, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    bool inTime = true;
    QTimer::singleShot(kDeadlineMs, &loop, [&] {
        inTime = false;
        loop.quit();
    });
    loop.exec();
    return inTime;
}

} // namespace

ScanTour::ScanTour(ScanWindow& window, const QString& dir, QTextStream& lines)
    : m_window(window)
    , m_dir(QDir(dir).absolutePath())
    , m_lines(lines)
{}

int ScanTour::run()
{
    try {
        ostrand::Pictures pictures(m_dir);
        const auto photograph = [&](QWidget& window, const QString& name, const QString& caption) {
            say(QStringLiteral("%1: %2").arg(pictures.save(window, name, caption), caption));
        };
        const struct
        {
            ScanChain::Step step;
            const char* name;
            const char* caption;
        } steps[] = {
            {ScanChain::Scan, "scan", "The scanner has seen it from all sides"},
            {ScanChain::Clean, "clean", "Without what lies apart, and thinner"},
            {ScanChain::ScanAgain, "scan-again", "Laid on its back and scanned again"},
            {ScanChain::Align, "align", "Both scans where they belong"},
            {ScanChain::Reconstruct, "reconstruct", "A closed surface through both"},
            {ScanChain::Place, "place", "As it stands on the platform"},
            {ScanChain::Save, "save", "Saved as a model"},
        };
        for (const auto& [step, name, caption] : steps) {
            doStep(step, QLatin1String(name));
            photograph(m_window, QLatin1String(name), QLatin1String(caption));
        }
        openMakeDialog();
        auto* const dialog = m_window.findChild<trovek::MakeThingDialog*>();
        if (dialog == nullptr)
            throw std::runtime_error("The make dialog did not open");
        photograph(*dialog, QStringLiteral("make"), QStringLiteral("The model in the make dialog"));
        dialog->close();
        pictures.writeContactSheet(QStringLiteral("Scan Example"));
        return 0;
    } catch (const std::exception& error) {
        say(QStringLiteral("FAILED: ") + QString::fromUtf8(error.what()));
        return 1;
    }
}

void ScanTour::doStep(ScanChain::Step step, const QString& name)
{
    ScanChain& chain = m_window.chain();
    QString reason;
    const auto failure =
        QObject::connect(&chain, &ScanChain::stepFailed,
                         [&reason](ScanChain::Step, const QString& text) { reason = text; });
    if (step == ScanChain::Save) {
        // The button asks for the file first.
        chain.setFile(QDir(m_dir).filePath(QStringLiteral("scan.stl")));
        chain.start(step);
    } else {
        m_window.button(step).click();
    }
    while (chain.isRunning() && waitFor(chain, &ScanChain::changed)) {
    }
    QObject::disconnect(failure);
    if (chain.isRunning())
        reason = QStringLiteral("it does not end");
    else if (reason.isEmpty() && chain.stepsDone() != step + 1)
        reason = QStringLiteral("it did not start");
    if (!reason.isEmpty())
        throw std::runtime_error(trovek::toStdString(name + QStringLiteral(": ") + reason));
}

void ScanTour::openMakeDialog()
{
    m_window.makeButton().click();
    QCoreApplication::processEvents();
}

void ScanTour::say(const QString& line)
{
    m_lines << line << '\n';
    m_lines.flush();
}

} // namespace scan_example
