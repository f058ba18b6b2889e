#include "options.h"

#include <trovek/address.h>
#include <trovek/text.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cmath>
#include <stdexcept>

namespace ostrand {
namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ostrand::Options", text);
}

[[noreturn]] void refuse(const QString& text)
{
    throw std::runtime_error(trovek::toStdString(text));
}

struct Parser
{
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, tr("Show this text.")};
    QCommandLineOption version{QStringLiteral("version"), tr("Show the version.")};
    QCommandLineOption service{
        QStringLiteral("service"),
        tr("Use the background service at ADDRESS (local:NAME or tcp:HOST:PORT) instead of "
           "starting one."),
        QStringLiteral("ADDRESS")};
    QCommandLineOption tokenFile{QStringLiteral("token-file"),
                                 tr("Read the token of a tcp service from FILE."),
                                 QStringLiteral("FILE")};
    QCommandLineOption settings{QStringLiteral("settings"), tr("Keep the settings in FILE."),
                                QStringLiteral("FILE")};
    QCommandLineOption state{QStringLiteral("state"),
                             tr("Keep the background service's state in DIR."),
                             QStringLiteral("DIR")};
    QCommandLineOption machines{QStringLiteral("machines"),
                                tr("Read the virtual machines from FILE."), QStringLiteral("FILE")};
    QCommandLineOption timeScale{QStringLiteral("time-scale"),
                                 tr("Let the virtual machines run N times as fast."),
                                 QStringLiteral("N")};
    QCommandLineOption file{QStringLiteral("file"), tr("Open FILE; may be repeated."),
                            QStringLiteral("FILE")};
    QCommandLineOption tour{
        QStringLiteral("tour"),
        tr("Open, print and export each file without hands, and save pictures into DIR."),
        QStringLiteral("DIR")};
    QCommandLineOption gallery{QStringLiteral("gallery"),
                               tr("Save pictures of every window into DIR."),
                               QStringLiteral("DIR")};
    QCommandLineOption dark{QStringLiteral("dark"), tr("Use dark colors for the gallery.")};
    QCommandLineParser parser;

    Parser()
    {
        parser.setApplicationDescription(tr("Prints on 3D printers and exports for them."));
        parser.addOptions({help, version, service, tokenFile, settings, state, machines, timeScale,
                           file, tour, gallery, dark});
        parser.addPositionalArgument(QStringLiteral("FILE"), tr("Files to open."),
                                     QStringLiteral("[FILE...]"));
    }
};

double positiveNumber(const QString& text, const QString& option)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok || !std::isfinite(number) || number <= 0)
        refuse(tr("%1 needs a number above zero, not \"%2\".").arg(option, text));
    return number;
}

void checkCombination(const Options& options, bool timeScaleGiven)
{
    if (!options.serviceAddress.isEmpty()) {
        const auto address = trovek::Address::fromText(trovek::toStdString(options.serviceAddress));
        if (!options.tokenFile.isEmpty() && address.kind() != trovek::Address::Tcp)
            refuse(tr("--token-file is for a tcp service only."));
        if (!options.stateDir.isEmpty() || !options.machinesFile.isEmpty() || timeScaleGiven)
            refuse(tr("--state, --machines and --time-scale are for the own service only, not "
                      "together with --service."));
    } else if (!options.tokenFile.isEmpty()) {
        refuse(tr("--token-file is for a tcp service only."));
    }
    if (!options.tourDir.isEmpty() && !options.galleryDir.isEmpty())
        refuse(tr("--tour and --gallery cannot be used together."));
    if (!options.tourDir.isEmpty() && options.files.isEmpty())
        refuse(tr("--tour needs at least one --file."));
    if (options.dark && options.galleryDir.isEmpty())
        refuse(tr("--dark is for the gallery only."));
}

} // namespace

Options parseOptions(const QStringList& arguments)
{
    Parser p;
    if (!p.parser.parse(arguments))
        refuse(p.parser.errorText());
    Options options;
    options.showHelp = p.parser.isSet(p.help);
    options.showVersion = p.parser.isSet(p.version);
    if (options.showHelp || options.showVersion)
        return options;

    for (const auto* option : {&p.service, &p.tokenFile, &p.settings, &p.state, &p.machines,
                               &p.file, &p.tour, &p.gallery}) {
        if (p.parser.isSet(*option) && p.parser.values(*option).contains(QString()))
            refuse(tr("--%1 must not be empty.").arg(option->names().last()));
    }
    options.serviceAddress = p.parser.value(p.service);
    options.tokenFile = p.parser.value(p.tokenFile);
    options.settingsFile = p.parser.value(p.settings);
    options.stateDir = p.parser.value(p.state);
    options.machinesFile = p.parser.value(p.machines);
    if (p.parser.isSet(p.timeScale)) {
        options.timeScale =
            positiveNumber(p.parser.value(p.timeScale), QStringLiteral("--time-scale"));
    }
    options.files = p.parser.values(p.file) + p.parser.positionalArguments();
    options.tourDir = p.parser.value(p.tour);
    options.galleryDir = p.parser.value(p.gallery);
    options.dark = p.parser.isSet(p.dark);
    checkCombination(options, p.parser.isSet(p.timeScale));
    return options;
}

QString optionsHelp()
{
    return Parser().parser.helpText();
}

} // namespace ostrand
