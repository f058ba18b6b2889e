#include "gallery.h"
#include "host.h"
#include "machine_windows.h"
#include "main_window.h"
#include "options.h"
#include "tour.h"

#include <trovek-ui/old_firmware_check.h>
#include <trovek-ui/profile_list_model.h>

#include <trovek/log.h>

#include <QApplication>
#include <QSessionManager>
#include <QStyleFactory>
#include <QTextStream>
#include <QTimer>

#include <exception>
#include <stdexcept>

using namespace ostrand;

namespace {

constexpr int kBadUsage = 2;

void setNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Ostrand"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRAND_VERSION));
}

/** What needs no windows must work where there is no display. */
bool asksForText(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--help" || argument == "-h" || argument == "--version")
            return true;
    }
    return false;
}

int printText(const Options& options)
{
    QTextStream out(stdout);
    if (options.showVersion)
        out << "Ostrand " << QCoreApplication::applicationVersion() << '\n';
    else
        out << optionsHelp();
    return 0;
}

/** The same style everywhere, so that pictures can be compared. */
void setReproducibleStyle(bool dark)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
}

int runWithoutHands(Host& host, const Options& options)
{
    QTextStream out(stdout);
    if (!options.tourDir.isEmpty())
        return Tour(host, options.tourDir, options.files, out).run();
    return Gallery(host, options.galleryDir, options.files, out).run();
}

int run(QApplication& application, const Options& options)
{
    const bool withoutHands = !options.tourDir.isEmpty() || !options.galleryDir.isEmpty();
    if (withoutHands)
        setReproducibleStyle(options.dark);
    Host host(options);
    trovek::setGlobalProfileDirectory(host.profileDir());
    MainWindow& window = host.window();
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window,
                     &MainWindow::endSession, Qt::DirectConnection);
    trovek::enableOldFirmwareCheck(host.facade(), &window.machineWindows().factory(),
                                   &host.settings());
    window.show();
    QTimer::singleShot(0, &window, [&] {
        host.link().connectNow();
        if (withoutHands) {
            QCoreApplication::exit(runWithoutHands(host, options));
            return;
        }
        for (const QString& file : options.files)
            window.openFile(file);
    });
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    setNames();
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // The toolpath view has a window of the system's own; nothing beside it needs one.
    QApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    // Closing asks its questions itself, once.
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    trovek::addLogSink(trovek::makeStandardErrorLogSink(trovek::Log::Error));
    try {
        if (asksForText(argc, argv)) {
            QCoreApplication application(argc, argv);
            return printText(parseOptions(QCoreApplication::arguments()));
        }
        QApplication application(argc, argv);
        Options options;
        try {
            options = parseOptions(QCoreApplication::arguments());
        } catch (const std::exception& e) {
            QTextStream(stderr) << "ostrand: " << e.what() << '\n';
            return kBadUsage;
        }
        return run(application, options);
    } catch (const std::exception& e) {
        QTextStream(stderr) << "ostrand: " << e.what() << '\n';
        return 1;
    }
}
