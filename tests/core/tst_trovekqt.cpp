#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/wire.h>

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

namespace {

/** Writes down what a facade signals, in order, in words. */
class Recorder : public QObject
{
    Q_OBJECT

public:
    explicit Recorder(TrovekQt& facade, Qt::ConnectionType type = Qt::DirectConnection)
    {
        const auto link = [&](const char* signal, const char* slot) {
            QVERIFY(connect(&facade, signal, this, slot, type));
        };
        link(SIGNAL(connected()), SLOT(connected()));
        link(SIGNAL(disconnected()), SLOT(disconnected()));
        link(SIGNAL(printerAdded(Printer*)), SLOT(printerAdded(Printer*)));
        link(SIGNAL(printerRemoved(Printer*)), SLOT(printerRemoved(Printer*)));
        link(SIGNAL(printerChanged(Printer*)), SLOT(printerChanged(Printer*)));
        link(SIGNAL(jobAdded(const trovek::Job::ID)), SLOT(jobAdded(const trovek::Job::ID)));
        link(SIGNAL(jobConcluded(const trovek::Job::ID)),
             SLOT(jobConcluded(const trovek::Job::ID)));
        link(SIGNAL(jobChanged(const trovek::Job::ID)), SLOT(jobChanged(const trovek::Job::ID)));
        link(SIGNAL(portAttached(std::string)), SLOT(portAttached(std::string)));
        link(SIGNAL(portDetached(std::string)), SLOT(portDetached(std::string)));
        link(SIGNAL(cameraClosed(std::string)), SLOT(cameraClosed(std::string)));
    }

    QStringList lines;

private slots:
    void connected() { lines.append(QStringLiteral("connected")); }
    void disconnected() { lines.append(QStringLiteral("disconnected")); }
    void printerAdded(Printer* printer) { note("printer added ", printer->key().name()); }
    void printerRemoved(Printer* printer) { note("printer removed ", printer->key().name()); }
    void printerChanged(Printer* printer) { note("printer changed ", printer->key().name()); }
    void jobAdded(trovek::Job::ID id) { note("job added ", std::to_string(id)); }
    void jobConcluded(trovek::Job::ID id) { note("job concluded ", std::to_string(id)); }
    void jobChanged(trovek::Job::ID id) { note("job changed ", std::to_string(id)); }
    void portAttached(std::string name) { note("port attached ", name); }
    void portDetached(std::string name) { note("port detached ", name); }
    void cameraClosed(std::string path) { note("camera closed ", path); }

private:
    void note(const char* what, const std::string& which)
    {
        lines.append(QString::fromLatin1(what) + QString::fromStdString(which));
    }
};

QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromLatin1(text));
    return list;
}

} // namespace

class tst_TrovekQt : public QObject
{
    Q_OBJECT

private slots:
    void registersWhatItsSignalsCarry_data();
    void registersWhatItsSignalsCarry();
    void declaresItsSignalsInOrder();
    void isNamedAfterItsNamespace();
    void announcesTheConnectionBeforeItReturns();
    void announcesNoConnectionThatFailed();
    void announcesWhatIsThereOnce();
    void repeatsWhatTheServiceReports_data();
    void repeatsWhatTheServiceReports();
    void announcesTheLossLast();
    void connectsAgainAfterALoss();
};

void tst_TrovekQt::registersWhatItsSignalsCarry_data()
{
    QTest::addColumn<QByteArray>("name");

    for (const char* name :
         {"trovek::Job::ID", "std::string", "trovek::MachineName", "trovek::digitizer::MeshID",
          "trovek::digitizer::PointCloudID", "Printer*"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_TrovekQt::registersWhatItsSignalsCarry()
{
    TestLog log;
    QFETCH(QByteArray, name);
    const TrovekQt facade;

    QVERIFY(QMetaType::type(name) != QMetaType::UnknownType);
    if (name == "trovek::Job::ID")
        QCOMPARE(QMetaType::type(name), int(QMetaType::Int));
}

void tst_TrovekQt::declaresItsSignalsInOrder()
{
    TestLog log;
    QStringList signatures;
    const QMetaObject& meta = TrovekQt::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.append(QString::fromLatin1(meta.method(i).methodSignature()));

    QCOMPARE(signatures, words({"connected()", "disconnected()", "printerAdded(Printer*)",
                                "printerRemoved(Printer*)", "printerChanged(Printer*)",
                                "jobAdded(trovek::Job::ID)", "jobConcluded(trovek::Job::ID)",
                                "jobChanged(trovek::Job::ID)", "portAttached(std::string)",
                                "portDetached(std::string)", "cameraClosed(std::string)"}));
}

void tst_TrovekQt::isNamedAfterItsNamespace()
{
    TestLog log;
    QCOMPARE(QByteArray(TrovekQt::staticMetaObject.className()), QByteArray("trovek::TrovekQt"));
}

void tst_TrovekQt::announcesTheConnectionBeforeItReturns()
{
    TestLog log;
    ScriptedService service;
    TrovekQt facade;
    bool wasConnected = false;
    connect(&facade, &TrovekQt::connected, this, [&] { wasConnected = facade.isConnected(); });
    QSignalSpy spy(&facade, &TrovekQt::connected);

    // As a host does it that holds the client only.
    static_cast<Trovek&>(facade).connectToDaemon(service.address());

    QCOMPARE(spy.count(), 1);
    QVERIFY(wasConnected);
}

void tst_TrovekQt::announcesNoConnectionThatFailed()
{
    TestLog log;
    log.allowErrors("");
    ScriptedService service;
    service.stop();
    TrovekQt facade;
    const Recorder recorder(facade);

    QVERIFY_EXCEPTION_THROWN(facade.connectToDaemon(service.address()), std::exception);

    QCoreApplication::processEvents();
    QCOMPARE(recorder.lines, QStringList());
    QVERIFY(!facade.isConnected());
}

void tst_TrovekQt::announcesWhatIsThereOnce()
{
    TestLog log;
    ScriptedService service;
    service.addPort(ScriptedService::port("usb1"));
    Printer::Data machine = ScriptedService::machine("left", Printer::Fabrino2);
    machine.portName = "usb1";
    service.addPrinter(machine);
    TrovekQt facade;
    const Recorder recorder(facade);

    facade.connectToDaemon(service.address());
    QCOMPARE(recorder.lines, words({"connected"}));

    const QStringList all = words({"connected", "port attached usb1", "printer added left"});
    QTRY_COMPARE(recorder.lines, all);
    QCoreApplication::processEvents();
    QCOMPARE(recorder.lines, all);
}

void tst_TrovekQt::repeatsWhatTheServiceReports_data()
{
    QTest::addColumn<int>("connection");

    QTest::newRow("at once") << int(Qt::DirectConnection);
    QTest::newRow("through the event queue") << int(Qt::QueuedConnection);
}

void tst_TrovekQt::repeatsWhatTheServiceReports()
{
    TestLog log;
    QFETCH(int, connection);
    ScriptedService service;
    TrovekQt facade;
    facade.connectToDaemon(service.address());
    const Recorder recorder(facade, static_cast<Qt::ConnectionType>(connection));
    Printer::Data machine = ScriptedService::machine("left", Printer::Fabrino2);
    Job::Data job;
    job.id = 7;
    Json::Value camera(Json::objectValue);
    camera["device_path"] = "/dev/video0";

    service.addPort(ScriptedService::port("usb1"));
    service.addPrinter(machine);
    machine.state = Printer::Running;
    service.changePrinter(machine);
    service.setJob(job);
    service.notifyJobAdded(7);
    service.notifyJobChanged(7);
    service.notifyJobConcluded(7);
    service.notify(wire::notification::kCameraClosed, camera);
    service.removePrinter("left");
    service.removePort("usb1");

    QTRY_COMPARE(recorder.lines, words({"port attached usb1", "printer added left",
                                        "printer changed left", "job added 7", "job changed 7",
                                        "job concluded 7", "camera closed /dev/video0",
                                        "printer removed left", "port detached usb1"}));
}

void tst_TrovekQt::announcesTheLossLast()
{
    TestLog log;
    log.allowErrors("");
    ScriptedService service;
    service.addPort(ScriptedService::port("usb1"));
    service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    TrovekQt facade;
    facade.connectToDaemon(service.address());
    QSignalSpy added(&facade, &TrovekQt::printerAdded);
    QTRY_COMPARE(added.count(), 1);
    const Recorder recorder(facade);

    service.stop();

    QTRY_COMPARE(recorder.lines,
                 words({"printer removed left", "port detached usb1", "disconnected"}));
    QVERIFY(!facade.isConnected());
}

void tst_TrovekQt::connectsAgainAfterALoss()
{
    TestLog log;
    log.allowErrors("");
    ScriptedService service;
    TrovekQt facade;
    QSignalSpy connected(&facade, &TrovekQt::connected);
    QSignalSpy disconnected(&facade, &TrovekQt::disconnected);

    for (int round = 1; round <= 2; ++round) {
        facade.connectToDaemon(service.address());
        QCOMPARE(connected.count(), round);
        service.dropConnections();
        QTRY_COMPARE(disconnected.count(), round);
    }
}

QTEST_MAIN(tst_TrovekQt)
#include "tst_trovekqt.moc"
