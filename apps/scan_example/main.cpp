#include "scan_tour.h"
#include "scan_window.h"

#include <apps/ostrand/own_service.h>
#include <trovek-ui/profile_list_model.h>
#include <trovek-ui/trovekhandle.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/address.h>
#include <trovek/log.h>
#include <trovek/text.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <exception>
#include <memory>
#include <stdexcept>

namespace {

struct Options
{
    QString tourDir;
    QString service;
    QString stateDir;
    int pictures = 0;
};

Options readOptions(const QStringList& arguments)
{
    const QCommandLineOption tour(
        QStringLiteral("tour"),
        QStringLiteral("Take all steps without hands, and save pictures into DIR."),
        QStringLiteral("DIR"));
    const QCommandLineOption service(
        QStringLiteral("service"),
        QStringLiteral("Use the background service at ADDRESS instead of starting one."),
        QStringLiteral("ADDRESS"));
    const QCommandLineOption state(QStringLiteral("state"),
                                   QStringLiteral("Keep the background service's state in DIR."),
                                   QStringLiteral("DIR"));
    const QCommandLineOption pictures(QStringLiteral("pictures"),
                                      QStringLiteral("Pictures for one turn, 20 to 2000."),
                                      QStringLiteral("N"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Scans a thing, and makes a model of it that can be printed."));
    parser.addHelpOption();
    parser.addOptions({tour, service, state, pictures});
    parser.process(arguments);
    Options options;
    options.tourDir = parser.value(tour);
    options.service = parser.value(service);
    options.stateDir = parser.value(state);
    if (parser.isSet(pictures)) {
        options.pictures = parser.value(pictures).toInt();
        if (options.pictures < 20 || options.pictures > 2000)
            throw std::runtime_error("--pictures needs a number from 20 to 2000");
    }
    return options;
}

int run(const Options& options)
{
    // A run without hands neither reads nor changes what a user chose.
    const QTemporaryDir forTour;
    const bool isTour = !options.tourDir.isEmpty();
    const auto settings =
        isTour ? std::make_unique<QSettings>(forTour.filePath(QStringLiteral("settings.ini")),
                                             QSettings::IniFormat)
               : std::make_unique<QSettings>();
    trovek::setGlobalProfileDirectory(
        QDir(isTour ? forTour.path()
                    : QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
            .filePath(QStringLiteral("profiles")));
    ostrand::OwnService::Settings own;
    own.stateDir = isTour && options.stateDir.isEmpty() ? forTour.filePath(QStringLiteral("state"))
                                                        : options.stateDir;
    ostrand::OwnService ownService(own);
    trovek::ui::TrovekHandle handle(settings.get());
    scan_example::ScanWindow window(*handle, *settings);
    if (options.pictures > 0)
        window.setPicturesPerTurn(options.pictures);
    handle->connectToDaemon(options.service.isEmpty()
                                ? ownService.address()
                                : trovek::Address::fromText(trovek::toStdString(options.service)));
    window.show();
    if (isTour) {
        QTimer::singleShot(0, &window, [&] {
            QTextStream lines(stdout);
            QCoreApplication::exit(scan_example::ScanTour(window, options.tourDir, lines).run());
        });
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Scan Example"));
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    trovek::addLogSink(trovek::makeStandardErrorLogSink(trovek::Log::Error));
    try {
        return run(readOptions(QCoreApplication::arguments()));
    } catch (const std::exception& error) {
        QTextStream(stderr) << "scan_example: " << error.what() << '\n';
        return 1;
    }
}
