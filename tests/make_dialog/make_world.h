#pragma once

#include "support/modal_driver.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/trovekqt.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace trovek {

/** What a test of the make dialogs stands on: a connected service, settings, a file to make. */
class MakeWorld
{
public:
    /** The facade may be connected before; it is disconnected when the world goes. */
    MakeWorld(TrovekQt& connectedFacade, std::initializer_list<Printer::Data> machines)
        : facade(connectedFacade)
    {
        for (const Printer::Data& machine : machines)
            service.addPrinter(machine);
        writeFile(inputFile, "G28\n");
        connectFacade();
    }

    ~MakeWorld()
    {
        facade.disconnectFromDaemon();
        QCoreApplication::processEvents();
        // Dialogs that have closed themselves.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /** Everything that is there has been announced. */
    void connectFacade()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        QTRY_COMPARE(added.count(), int(facade.printers().size()));
    }

    void loseConnection()
    {
        service.stop();
        QTRY_VERIFY(!facade.isConnected());
    }

    Printer* printer(const char* key) const { return facade.printerFromKey(MachineName(key)); }

    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }

    static void writeFile(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    static QByteArray readFile(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }

    /** What one unit has logged, in order. */
    static QStringList logOf(const TestLog& log, const char* unit)
    {
        QStringList lines;
        for (const LogEntry& entry : log.sink().entries()) {
            if (entry.file == unit)
                lines.append(QString::fromStdString(entry.message));
        }
        return lines;
    }

    TrovekQt& facade;
    ScriptedService service;
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
    const QString inputFile = folder.filePath(QStringLiteral("my.part.gcode"));
};

inline QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

inline QStringList textsOf(const Json::Value& array)
{
    QStringList list;
    for (const Json::Value& value : array)
        list.append(QString::fromStdString(value.asString()));
    return list;
}

inline const QStringList kPrinterIsBusy =
    words({"Printer is busy",
           "Wait until your current activity finishes before starting a new job on this Orvane."});
inline const QStringList kGenericTrovekError =
    words({"An error occurred in the background service."});
inline const QStringList kFailedToStartPrint =
    words({"Print Failed", "An unexpected error occurred while starting print."});
inline const QStringList kFileNotFound =
    words({"File not found", "The input file no longer exists."});
inline const QStringList kExportJobMoverFailed =
    words({"Export failed", "An error prevented the file from being saved."});

} // namespace trovek
