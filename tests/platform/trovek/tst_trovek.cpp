#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"

#include <QTest>

using namespace trovek;

class tst_Trovek : public QObject
{
    Q_OBJECT
private slots:
    void announces();
};

void tst_Trovek::announces()
{
    TestLog log;
    ScriptedService service;
    service.addPort(ScriptedService::port("one"));
    service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QVERIFY(client.events.empty());
    QTRY_COMPARE(client.events, (std::vector<std::string>{"portAttached one", "printerAdded left"}));
    const int id = client.print(MachineName("left"), "/a/b.gcode", SlicerConfiguration(), {}, false);
    client.cancelJob(id);
    QTRY_COMPARE(client.events.size(), std::size_t(5));
    client.events.clear();
    service.stop();
    QTRY_COMPARE(client.events, (std::vector<std::string>{"printerRemoved left", "portDetached one", "disconnected"}));
}

QTEST_GUILESS_MAIN(tst_Trovek)
#include "tst_trovek.moc"
