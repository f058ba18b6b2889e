#include "daemon.h"
#include "platform/trovek/recording_trovek.h"
#include "service_world.h"
#include "support/environment.h"
#include "support/test_log.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek;

class tst_Trovekd : public QObject
{
    Q_OBJECT

private slots:
    void printsItsAddressWhenItIsReady();
    void aPlainNameLeadsItsClientsToIt_data();
    void aPlainNameLeadsItsClientsToIt();
    void leavesNoSocketWhenItIsTerminated();
    void endsInOrderInTheMiddleOfAPrint();
    void startsAgainAfterItWasKilled();
    void refusesToStartTwice();
    void offersTcpWithAndWithoutAPort_data();
    void offersTcpWithAndWithoutAPort();
    void writesItsLogToAFile();
    void offersTheFirmwareOfAFolder_data();
    void offersTheFirmwareOfAFolder();
    void explainsItsOptions();
    void refusesOptions_data();
    void refusesOptions();
};

namespace {

constexpr QFile::Permissions kOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                       QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

void tst_Trovekd::printsItsAddressWhenItIsReady()
{
    TestLog log;
    const QTemporaryDir folder;
    Daemon daemon(folder.path());

    const QByteArray line = daemon.start();

    QCOMPARE(line, QByteArray("local:") + daemon.socket().toUtf8());
    RecordingTrovek client;
    client.connectToDaemon(Address::fromText(line.toStdString()));
    QCOMPARE(client.ports().size(), std::size_t(2));
}

void tst_Trovekd::aPlainNameLeadsItsClientsToIt_data()
{
    QTest::addColumn<QByteArray>("runtimeDir");
    QTest::addColumn<QString>("socketFolder");

    QTest::newRow("with a runtime folder")
        << QByteArray("FOLDER/run") << QStringLiteral("run/trovek");
    QTest::newRow("without one") << QByteArray() << QStringLiteral("data/trovek");
    QTest::newRow("with one that is relative")
        << QByteArray("run") << QStringLiteral("data/trovek");
}

void tst_Trovekd::aPlainNameLeadsItsClientsToIt()
{
    QFETCH(QByteArray, runtimeDir);
    QFETCH(QString, socketFolder);
    TestLog log;
    const QTemporaryDir folder;
    const QByteArray path = folder.path().toUtf8();
    const Environment data("XDG_DATA_HOME", path + "/data");
    const Environment runtime("XDG_RUNTIME_DIR", runtimeDir.replace("FOLDER", path));
    Daemon daemon(folder.path());

    daemon.launch({QStringLiteral("--socket"), QStringLiteral("x")});

    QCOMPARE(daemon.readLine(),
             "local:" + folder.filePath(socketFolder + QStringLiteral("/x")).toUtf8());
    QCOMPARE(QFileInfo(folder.filePath(socketFolder)).permissions() & kOthers,
             QFile::Permissions());
    RecordingTrovek client;
    client.connectToDaemon(Address::fromText("local:x"));
    QVERIFY(client.isConnected());
}

void tst_Trovekd::leavesNoSocketWhenItIsTerminated()
{
    TestLog log;
    const QTemporaryDir folder;
    Daemon daemon(folder.path());
    QVERIFY(!daemon.start().isEmpty());
    RecordingTrovek client;
    client.connectToDaemon(Address::local(toStdString(daemon.socket())));

    daemon.process().terminate();

    QCOMPARE(daemon.waitForEnd(), 0);
    QCOMPARE(entries(folder.filePath(QStringLiteral("run"))), QStringList());
    QTRY_VERIFY(!client.events.empty() && client.events.back() == "disconnected");
}

void tst_Trovekd::endsInOrderInTheMiddleOfAPrint()
{
    TestLog log;
    const QTemporaryDir folder;
    Daemon daemon(folder.path());
    QVERIFY(!daemon.start().isEmpty());
    RecordingTrovek client;
    client.connectToDaemon(Address::local(toStdString(daemon.socket())));
    ServiceWorld::openMachine(client);
    QFile file(folder.filePath(QStringLiteral("a.gcode")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(longGCode());
    file.close();
    const int job = client.print(MachineName(ServiceWorld::kMachine), toStdString(file.fileName()),
                                 {}, {"pla"}, true);
    QTRY_COMPARE(client.jobFromID(job).stage(), std::string("Printing"));

    daemon.process().terminate();

    QCOMPARE(daemon.waitForEnd(), 0);
    QVERIFY(QFile::exists(
        folder.filePath(QStringLiteral("state/machines/virtual_fabrino_2/state.json"))));
    const QByteArray errors = daemon.process().readAllStandardError();
    QVERIFY2(errors.contains("The service was shut down"), errors.constData());
}

void tst_Trovekd::startsAgainAfterItWasKilled()
{
    TestLog log;
    const QTemporaryDir folder;
    int before = 0;
    RecordingTrovek client;
    {
        Daemon daemon(folder.path());
        QVERIFY(!daemon.start().isEmpty());
        client.connectToDaemon(Address::local(toStdString(daemon.socket())));
        ServiceWorld::openMachine(client);
        before = client.jog(MachineName(ServiceWorld::kMachine), Printer::XAxis, 1, 1000000);
        daemon.process().kill();
        QVERIFY(daemon.process().waitForFinished());
        QVERIFY(QFile::exists(daemon.socket()));
    }
    QTRY_VERIFY(!client.isConnected());
    Daemon daemon(folder.path());
    QVERIFY(!daemon.start().isEmpty());

    client.connectToDaemon(Address::local(toStdString(daemon.socket())));
    ServiceWorld::openMachine(client);

    QVERIFY(client.jog(MachineName(ServiceWorld::kMachine), Printer::XAxis, 1, 1000000) > before);
}

void tst_Trovekd::refusesToStartTwice()
{
    TestLog log;
    const QTemporaryDir folder;
    const QTemporaryDir other;
    Daemon first(folder.path());
    QVERIFY(!first.start().isEmpty());
    Daemon second(other.path());

    QVERIFY(second.start({QStringLiteral("--socket"), first.socket()}).isEmpty());

    QCOMPARE(second.waitForEnd(), 1);
    const QByteArray expected =
        "trovekd: Another service listens on \"" + first.socket().toUtf8() + "\"\n";
    const QByteArray errors = second.process().readAllStandardError();
    QVERIFY2(errors.contains(expected), errors.constData());
    RecordingTrovek client;
    client.connectToDaemon(Address::local(toStdString(first.socket())));
    QVERIFY(client.isConnected());
}

void tst_Trovekd::offersTcpWithAndWithoutAPort_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("last") << QStringList{QStringLiteral("--tcp")};
    QTest::newRow("before another option") << QStringList{
        QStringLiteral("--tcp"), QStringLiteral("--time-scale"), QStringLiteral("5")};
    QTest::newRow("any free port") << QStringList{QStringLiteral("--tcp"), QStringLiteral("0")};
    QTest::newRow("in one word") << QStringList{QStringLiteral("--tcp=0")};
}

void tst_Trovekd::offersTcpWithAndWithoutAPort()
{
    QFETCH(QStringList, arguments);
    TestLog log;
    const QTemporaryDir folder;
    Daemon daemon(folder.path());

    const QList<QByteArray> words = daemon.start(arguments).split(' ');

    QCOMPARE(words.size(), 2);
    QFile file(folder.filePath(QStringLiteral("state/token")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const Address address = Address::fromText(words[1].toStdString());
    RecordingTrovek client;
    client.connectToDaemon(
        Address::tcp(address.host(), address.port(), file.readAll().toStdString()));
    QVERIFY(client.isConnected());
    daemon.process().terminate();
    QCOMPARE(daemon.waitForEnd(), 0);
    QVERIFY(!file.exists());
}

void tst_Trovekd::writesItsLogToAFile()
{
    TestLog log;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.log"));
    Daemon daemon(folder.path());
    QVERIFY(!daemon.start({QStringLiteral("--log"), path}).isEmpty());

    daemon.process().terminate();

    QCOMPARE(daemon.waitForEnd(), 0);
    QCOMPARE(daemon.process().readAllStandardError(), QByteArray());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY2(text.contains("Listening on local:"), text.constData());
    QVERIFY2(text.contains("Shutting down"), text.constData());
}

void tst_Trovekd::offersTheFirmwareOfAFolder_data()
{
    QTest::addColumn<QString>("address");

    QTest::newRow("an absolute path") << QStringLiteral("FOLDER/catalogue");
    QTest::newRow("a path from where it is started") << QStringLiteral("catalogue");
    QTest::newRow("an address") << QStringLiteral("file://FOLDER/catalogue");
}

void tst_Trovekd::offersTheFirmwareOfAFolder()
{
    QFETCH(QString, address);
    TestLog log;
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("catalogue")));
    QFile index(folder.filePath(QStringLiteral("catalogue/catalogue.json")));
    QVERIFY(index.open(QIODevice::WriteOnly));
    index.write(R"({"firmware": [{"machine": "mine", "type": "fabrino_2", "version": "9.9",
                    "description": "", "file": "a.fw", "size": 1, "sha256": ")" +
                QByteArray(64, '0') + "\"}]}");
    index.close();
    Daemon daemon(folder.path());
    daemon.process().setWorkingDirectory(folder.path());
    QVERIFY(!daemon
                 .start({QStringLiteral("--firmware"),
                         address.replace(QLatin1String("FOLDER"), folder.path()),
                         QStringLiteral("--firmware-cache"), QStringLiteral("cache")})
                 .isEmpty());
    RecordingTrovek client;
    client.connectToDaemon(Address::local(toStdString(daemon.socket())));

    const Json::Value machines = client.getUploadableMachines();

    QCOMPARE(machines.size(), 1U);
    QCOMPARE(machines[0].asString(), std::string("mine"));
    // Nothing is there that could be downloaded.
    QCOMPARE(errorOf([&] { client.downloadFirmware("mine", 3, FirmwareVersion("9.9")); }),
             std::string("FirmwareImageError"));
}

void tst_Trovekd::explainsItsOptions()
{
    TestLog log;
    Daemon daemon(QString{});
    daemon.launch({QStringLiteral("--help")});
    QCOMPARE(daemon.waitForEnd(), 0);

    const QByteArray text = daemon.process().readAllStandardOutput();
    for (const char* option : {"--socket", "--state", "--machines", "--firmware",
                               "--firmware-cache", "--time-scale", "--tcp", "--log", "--help"})
        QVERIFY2(text.contains(option), option);
}

void tst_Trovekd::refusesOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("expectedText");

    QTest::newRow("an unknown one")
        << QStringList{QStringLiteral("--no-such-option")} << QByteArray("no-such-option");
    QTest::newRow("a word too many")
        << QStringList{QStringLiteral("word")} << QByteArray("Unexpected argument: word");
    QTest::newRow("a scale of zero")
        << QStringList{QStringLiteral("--time-scale"), QStringLiteral("0")}
        << QByteArray("--time-scale needs a number above 0");
    QTest::newRow("an endless scale")
        << QStringList{QStringLiteral("--time-scale"), QStringLiteral("inf")}
        << QByteArray("--time-scale needs a number above 0");
    QTest::newRow("a port that is none")
        << QStringList{QStringLiteral("--tcp=70000")} << QByteArray("--tcp needs a port number");
    QTest::newRow("no address of firmware")
        << QStringList{QStringLiteral("--firmware"), QStringLiteral("ftp://site/firmware")}
        << QByteArray("Neither a folder nor an address of firmware: \"ftp://site/firmware\"");
    QTest::newRow("a missing machines file")
        << QStringList{QStringLiteral("--machines"), QStringLiteral("/nowhere/m.json")}
        << QByteArray("Cannot read the machines file \"/nowhere/m.json\"");
}

void tst_Trovekd::refusesOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, expectedText);
    TestLog log;
    const QTemporaryDir folder;
    Daemon daemon(folder.path());

    QVERIFY(daemon.start(arguments).isEmpty());

    QCOMPARE(daemon.waitForEnd(), 1);
    const QByteArray errors = daemon.process().readAllStandardError();
    QVERIFY2(errors.contains(expectedText), errors.constData());
    QCOMPARE(entries(folder.filePath(QStringLiteral("run"))), QStringList());
}

QTEST_GUILESS_MAIN(tst_Trovekd)
#include "tst_trovekd.moc"
