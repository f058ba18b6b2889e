#include "server.h"
#include "service.h"
#include "system.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>

#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>
#include <optional>
#include <stdexcept>

namespace {

constexpr char kLogUnit[] = "service\\main";

struct Settings
{
    trovek::service::ServiceOptions service;
    trovek::service::ServerOptions server;
    QString logFile;
};

/** Gives "--tcp" its value in the same word, since the parser has no options with an optional one.
 */
QStringList joinTcpPort(const QStringList& arguments)
{
    QStringList joined;
    for (const QString& argument : arguments) {
        bool isNumber = false;
        argument.toUInt(&isNumber);
        if (!joined.isEmpty() && joined.last() == QLatin1String("--tcp")) {
            joined.last() += QLatin1Char('=') + (isNumber ? argument : QStringLiteral("0"));
            if (isNumber)
                continue;
        }
        joined.append(argument);
    }
    if (joined.last() == QLatin1String("--tcp"))
        joined.last() += QLatin1String("=0");
    return joined;
}

/** A folder as an absolute path; addresses, which have a colon in front, as they are. */
QString absoluteAddress(const QString& address)
{
    static constexpr char kScheme[] = "\\A[a-z]{2,}:";
    const bool isFolder =
        !address.isEmpty() && !QRegularExpression(QLatin1String(kScheme)).match(address).hasMatch();
    return isFolder ? QDir(address).absolutePath() : address;
}

/** @throws std::runtime_error for a value that is none */
Settings readSettings(const QStringList& arguments)
{
    const QCommandLineOption socket(QStringLiteral("socket"),
                                    QStringLiteral("Name or absolute path of the local socket."),
                                    QStringLiteral("NAME"), QStringLiteral("trovekd"));
    const QCommandLineOption state(
        QStringLiteral("state"), QStringLiteral("Folder for what is kept between runs."),
        QStringLiteral("DIR"), trovek::toQString(trovek::defaultStateDir()));
    const QCommandLineOption machines(QStringLiteral("machines"),
                                      QStringLiteral("JSON file with the virtual machines."),
                                      QStringLiteral("FILE"));
    const QCommandLineOption firmware(
        QStringLiteral("firmware"),
        QStringLiteral("Folder or address with a catalogue of firmware."),
        QStringLiteral("ADDRESS"));
    const QCommandLineOption firmwareCache(QStringLiteral("firmware-cache"),
                                           QStringLiteral("Folder for downloaded firmware."),
                                           QStringLiteral("DIR"));
    const QCommandLineOption slicer(QStringLiteral("slicer"),
                                    QStringLiteral("Program that slices models, a prusa-slicer."),
                                    QStringLiteral("PROGRAM"), QStringLiteral("prusa-slicer"));
    const QCommandLineOption scanner(
        QStringLiteral("scanner"),
        QStringLiteral("JSON file with the settings of the virtual scanner."),
        QStringLiteral("FILE"));
    const QCommandLineOption timeScale(
        QStringLiteral("time-scale"),
        QStringLiteral("Seconds of the virtual machines for each second of the clock."),
        QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption tcp(
        QStringLiteral("tcp"),
        QStringLiteral("Also listen on the loopback interface; any free port without a value."),
        QStringLiteral("PORT"));
    const QCommandLineOption log(QStringLiteral("log"),
                                 QStringLiteral("Log file; standard error without it."),
                                 QStringLiteral("FILE"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Drives virtual 3D printers for its clients."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions(
        {socket, state, machines, firmware, firmwareCache, slicer, scanner, timeScale, tcp, log});
    parser.process(arguments);
    if (!parser.positionalArguments().isEmpty()) {
        throw std::runtime_error("Unexpected argument: " +
                                 trovek::toStdString(parser.positionalArguments().first()));
    }

    Settings settings;
    settings.service.stateDir = QDir(parser.value(state)).absolutePath();
    settings.service.machinesFile = parser.value(machines);
    settings.service.firmwareCatalogue = absoluteAddress(parser.value(firmware));
    if (parser.isSet(firmwareCache))
        settings.service.firmwareCache = QDir(parser.value(firmwareCache)).absolutePath();
    settings.service.slicer = parser.value(slicer);
    settings.service.scannerFile = parser.value(scanner);
    bool isNumber = false;
    settings.service.timeScale = parser.value(timeScale).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(settings.service.timeScale) || settings.service.timeScale <= 0)
        throw std::runtime_error("--time-scale needs a number above 0");
    settings.server.socketName = trovek::toStdString(parser.value(socket));
    settings.server.stateDir = settings.service.stateDir;
    if (parser.isSet(tcp)) {
        const uint port = parser.value(tcp).toUInt(&isNumber);
        if (!isNumber || port > std::numeric_limits<quint16>::max())
            throw std::runtime_error("--tcp needs a port number");
        settings.server.tcpPort = static_cast<quint16>(port);
    }
    settings.logFile = parser.value(log);
    return settings;
}

int run(QCoreApplication& application)
{
    const Settings settings = readSettings(joinTcpPort(application.arguments()));
    trovek::addLogSink(settings.logFile.isEmpty() ? trovek::makeStandardErrorLogSink()
                                                  : trovek::makeRotatingFileLogSink(
                                                        trovek::toStdString(settings.logFile)));
    // Before the socket is there, so that nobody can end the service and leave it behind.
    const trovek::service::TerminationWatcher watcher;
    QObject::connect(&watcher, &trovek::service::TerminationWatcher::terminationRequested,
                     &application, &QCoreApplication::quit);

    trovek::service::Service service(settings.service);
    const trovek::service::Server server(service, settings.server);
    std::string line = server.localAddress().toText();
    if (const auto address = server.tcpAddress())
        line += " " + address->toText();
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);

    const int status = application.exec();
    TROVEK_LOG(1) << "Shutting down" << std::endl;
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    application.setApplicationName(QStringLiteral("trovekd"));
    application.setApplicationVersion(QStringLiteral("0.1.0"));
    try {
        return run(application);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "trovekd: %s\n", error.what());
        return 1;
    }
}
