#pragma once

#include <QString>
#include <QStringList>

namespace ostrand {

/** What the command line asks for. */
struct Options
{
    /** Text form of the service's address; empty starts a service inside this program. */
    QString serviceAddress;
    /** File with the token of a TCP service; its last line break is dropped. */
    QString tokenFile;
    /** INI file; empty stands for the user's own settings. */
    QString settingsFile;
    /** Folder of the own service's state; empty stands for the user's data folder. */
    QString stateDir;
    /** Machines of the own service; empty stands for its built-in ones. */
    QString machinesFile;
    /** Virtual seconds a second in the own service. */
    double timeScale = 1;
    QStringList files;
    /** Where a run without hands leaves its pictures; empty when the user is at the mouse. */
    QString tourDir;
    /** Where pictures of every window go; empty otherwise. */
    QString galleryDir;
    bool dark = false;
    bool showHelp = false;
    bool showVersion = false;
};

/**
 * Reads the command line; the first argument is the program's name.
 * @throws std::runtime_error with a text for the user that names the faulty option
 */
Options parseOptions(const QStringList& arguments);

/** What --help prints. */
QString optionsHelp();

} // namespace ostrand
