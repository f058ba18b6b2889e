#include "catalogue_folder.h"
#include "http_site.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/firmware/firmware_source.h>

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QUrl>

using namespace trovek;
using namespace trovek::service;

/** Where the files of a catalogue come from. */
class tst_FirmwareSource : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatIsCompiledIn();
    void readsAFolderUnderEveryName_data();
    void readsAFolderUnderEveryName();
    void refusesWhatIsNoAddress_data();
    void refusesWhatIsNoAddress();
    void aFolderMayComeLater();
    void readsRegularFilesOnly();
    void readsNoMoreThanThereShouldBe();
    void readsASite();
    void followsASite();
    void aSiteThatCannotBeReachedSaysUrlopen_data();
    void aSiteThatCannotBeReachedSaysUrlopen();
    void aSiteThatRefusesIsReached();
    void aSiteSendsNoMoreThanThereShouldBe();
    void aSiteThatHangsIsGivenUp();
    void readingIsCanceled();
};

namespace {

constexpr int kTimeoutMs = 10'000;

bool neverCanceled()
{
    return false;
}

QByteArray read(const QString& address, const QString& name, int bytesAtMost = 100'000,
                int timeoutMs = kTimeoutMs)
{
    return FirmwareSource(address).read(name, bytesAtMost, timeoutMs, neverCanceled);
}

std::string refusal(const QString& address, const QString& name, int bytesAtMost = 100'000,
                    int timeoutMs = kTimeoutMs)
{
    return thrownText([&] { read(address, name, bytesAtMost, timeoutMs); });
}

QString indexName()
{
    return QStringLiteral("catalogue.json");
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

void tst_FirmwareSource::readsWhatIsCompiledIn()
{
    TestLog log;
    QVERIFY(read(QString(), indexName()).startsWith("{\n  \"firmware\": ["));
    QVERIFY(read(QString(), QStringLiteral("fabrino_2-7.6.fw")).startsWith("OVFW"));
    QVERIFY(contains(refusal(QString(), QStringLiteral("no.fw")), "There is no file "));
}

void tst_FirmwareSource::readsAFolderUnderEveryName_data()
{
    QTest::addColumn<QString>("form");

    QTest::newRow("a path") << QStringLiteral("FOLDER");
    QTest::newRow("a path with a slash") << QStringLiteral("FOLDER/");
    QTest::newRow("an address") << QStringLiteral("file://FOLDER");
    QTest::newRow("an address with a slash") << QStringLiteral("file://FOLDER/");
}

void tst_FirmwareSource::readsAFolderUnderEveryName()
{
    QFETCH(QString, form);
    TestLog log;
    const CatalogueFolder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("100% new #1?")));
    folder.writeFile(QStringLiteral("100% new #1?/a.fw"), "bytes");
    const QString path = folder.filePath(QStringLiteral("100% new #1?"));
    const bool isUrl = form.startsWith(QLatin1String("file:"));
    const QString written = isUrl ? QString::fromLatin1(QUrl::toPercentEncoding(path, "/")) : path;
    QCOMPARE(read(form.replace(QLatin1String("FOLDER"), written), QStringLiteral("a.fw")),
             QByteArray("bytes"));
}

void tst_FirmwareSource::refusesWhatIsNoAddress_data()
{
    QTest::addColumn<QString>("address");

    for (const char* const address :
         {"firmware", "./firmware", "ftp://site/firmware", "http:", "http://", "file:relative",
          "qrc:/trovek/firmware", ":/trovek/firmware", "javascript:1", "http://[::1/x"})
        QTest::newRow(address) << QString::fromLatin1(address);
}

void tst_FirmwareSource::refusesWhatIsNoAddress()
{
    QFETCH(QString, address);
    QCOMPARE(thrownText([&] { FirmwareSource{address}; }),
             "Neither a folder nor an address of firmware: \"" + address.toStdString() + "\"");
}

void tst_FirmwareSource::aFolderMayComeLater()
{
    TestLog log;
    const CatalogueFolder folder;
    const FirmwareSource source(folder.filePath(QStringLiteral("later")));

    QCOMPARE(thrownText([&] { source.read(indexName(), 100, kTimeoutMs, neverCanceled); }),
             "There is no file " +
                 folder.filePath(QStringLiteral("later/catalogue.json")).toStdString());
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("later")));
    folder.writeFile(QStringLiteral("later/catalogue.json"), "{}");
    QCOMPARE(source.read(indexName(), 100, kTimeoutMs, neverCanceled), QByteArray("{}"));
}

void tst_FirmwareSource::readsRegularFilesOnly()
{
    TestLog log;
    const CatalogueFolder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("a.fw")));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), folder.filePath(QStringLiteral("zero.fw"))));
    for (const char* const name : {"a.fw", "zero.fw", "no.fw"}) {
        QVERIFY2(contains(refusal(folder.path(), QString::fromLatin1(name)), "There is no file "),
                 name);
    }
}

void tst_FirmwareSource::readsNoMoreThanThereShouldBe()
{
    TestLog log;
    const CatalogueFolder folder;
    const QString name = QStringLiteral("a.fw");
    folder.writeFile(name, QByteArray(100, 'x'));

    QCOMPARE(read(folder.path(), name, 100).size(), 100);
    QCOMPARE(refusal(folder.path(), name, 99),
             folder.filePath(name).toStdString() + " is larger than it should be");
}

void tst_FirmwareSource::readsASite()
{
    TestLog log;
    HttpSite site;
    site.serve("/firmware/a.fw", QByteArray(50'000, 'x'));

    QCOMPARE(read(site.address(), QStringLiteral("a.fw")), QByteArray(50'000, 'x'));
    QCOMPARE(read(site.address() + QLatin1Char('/'), QStringLiteral("a.fw"), 50'000).size(),
             50'000);
    QCOMPARE(site.requests(), 2);
}

void tst_FirmwareSource::followsASite()
{
    TestLog log;
    HttpSite site;
    site.serveRaw("/firmware/a.fw", "HTTP/1.1 302 Found\r\nLocation: /elsewhere/a.fw\r\n"
                                    "Content-Length: 0\r\n\r\n");
    site.serve("/elsewhere/a.fw", "bytes");
    QCOMPARE(read(site.address(), QStringLiteral("a.fw")), QByteArray("bytes"));
    // One that leads in circles.
    site.serveRaw("/elsewhere/a.fw", "HTTP/1.1 302 Found\r\nLocation: /firmware/a.fw\r\n"
                                     "Content-Length: 0\r\n\r\n");
    QVERIFY(contains(refusal(site.address(), QStringLiteral("a.fw")), "urlopen"));
}

void tst_FirmwareSource::aSiteThatCannotBeReachedSaysUrlopen_data()
{
    QTest::addColumn<QString>("address");

    // Nothing listens on the first port, and that top-level domain is no one's.
    QTest::newRow("nobody there") << QStringLiteral("http://127.0.0.1:1/firmware");
    QTest::newRow("nobody there, encrypted") << QStringLiteral("https://127.0.0.1:1/firmware");
    QTest::newRow("no such name") << QStringLiteral("http://firmware.invalid/");
}

void tst_FirmwareSource::aSiteThatCannotBeReachedSaysUrlopen()
{
    QFETCH(QString, address);
    TestLog log;
    const std::string text = refusal(address, indexName());
    QVERIFY2(text.rfind("Cannot reach http", 0) == 0, text.c_str());
    QVERIFY2(contains(text, "catalogue.json: urlopen error: "), text.c_str());
}

void tst_FirmwareSource::aSiteThatRefusesIsReached()
{
    TestLog log;
    HttpSite site;
    QCOMPARE(refusal(site.address(), indexName()),
             "The site answers 404 for " + site.address().toStdString() + "/catalogue.json");
    site.serveRaw("/firmware/catalogue.json", "HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\nBusy");
    QCOMPARE(refusal(site.address(), indexName()),
             "The site answers 503 for " + site.address().toStdString() + "/catalogue.json");
    // One that breaks off.
    site.serveRaw("/firmware/catalogue.json", "HTTP/1.1 200 OK\r\nContent-Length: 400\r\n\r\n{");
    QVERIFY(contains(refusal(site.address(), indexName()), "urlopen"));
}

void tst_FirmwareSource::aSiteSendsNoMoreThanThereShouldBe()
{
    TestLog log;
    HttpSite site;
    site.serve("/firmware/a.fw", QByteArray(2'000'000, 'x'));
    QVERIFY(contains(refusal(site.address(), QStringLiteral("a.fw"), 1'999'999),
                     "is larger than it should be"));
    QCOMPARE(read(site.address(), QStringLiteral("a.fw"), 2'000'000).size(), 2'000'000);
}

void tst_FirmwareSource::aSiteThatHangsIsGivenUp()
{
    TestLog log;
    HttpSite site;
    site.hang("/firmware/a.fw");
    QVERIFY(contains(refusal(site.address(), QStringLiteral("a.fw"), 100, 50),
                     "urlopen error: No answer in time"));
}

void tst_FirmwareSource::readingIsCanceled()
{
    TestLog log;
    HttpSite site;
    site.hang("/firmware/a.fw");
    QElapsedTimer clock;
    clock.start();

    QVERIFY(
        contains(thrownText([&] {
                     FirmwareSource(site.address()).read(QStringLiteral("a.fw"), 100, 60'000, [] {
                         return true;
                     });
                 }),
                 "Cannot reach"));
    QVERIFY(clock.elapsed() < 30'000);
}

QTEST_GUILESS_MAIN(tst_FirmwareSource)
#include "tst_firmware_source.moc"
