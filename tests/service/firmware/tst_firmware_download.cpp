#include "firmware_world.h"
#include "http_site.h"
#include "service/raw_client.h"
#include "support/test_log.h"

#include <rpcwire/json_text.h>
#include <service/firmware/firmware_cache.h>
#include <service/firmware/firmware_image.h>
#include <service/system.h>
#include <trovek/wire.h>

#include <QDir>
#include <QFile>
#include <QTest>

#include <functional>

using namespace trovek;

/** What a test does to the catalogue; the last entry is the one that is asked for. */
using Spoil = std::function<void(CatalogueFolder&, Json::Value& entry)>;
Q_DECLARE_METATYPE(Spoil)

/** Lists and downloads of firmware, as clients ask for them. */
class tst_FirmwareDownload : public QObject
{
    Q_OBJECT

private slots:
    void theCompiledInFirmwareIsOfferedAtOnce();
    void aFolderIsOffered();
    void unknownNamesAreSaid();
    void theDownloadIsTheServicesOwnCopy();
    void nothingWrongIsKept_data();
    void nothingWrongIsKept();
    void aDownloadThatFailedCanBeRepeated();
    void theCacheFolderMayBeElsewhere();
    void aFullDiskIsSaid();
    void aCacheThatCannotBeIsSaid();
    void oldDownloadsAreForgotten();
    void aSiteThatCannotBeReachedSaysUrlopen();
    void aSiteIsOffered();
    void theServiceEndsWhileItWaitsForASite();
    void manyClientsAskAtOnce();
    void wrongParametersAreSaid_data();
    void wrongParametersAreSaid();
    void noServiceStartsWithAnAddressThatIsNone();
};

namespace {

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::System | QDir::Hidden);
}

std::string text(const Json::Value& value)
{
    return rpcwire::toJsonLine(value);
}

} // namespace

void tst_FirmwareDownload::theCompiledInFirmwareIsOfferedAtOnce()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    QCOMPARE(text(client.getUploadableMachines()),
             std::string(R"(["fabrino","fabrino_2","fabrino_2x","cubio","cubio_dual"])"));
    const std::set<FirmwareVersion> versions = client.getMachineVersions("fabrino", 2);
    QCOMPARE(versions.size(), std::size_t(3));
    QCOMPARE(versions.rbegin()->str(), std::string("6.3"));
    QVERIFY(versions.rbegin()->description().find(". ") != std::string::npos);
    const std::string path = client.downloadFirmware("fabrino", 2, *versions.rbegin());
    const QByteArray image = ServiceWorld::read(path);
    QCOMPARE(service::readFirmwareHeader(image).type, Printer::FabrinoDual);
    QCOMPARE(service::readFirmwareHeader(image).version.str(), std::string("6.3"));
}

void tst_FirmwareDownload::aFolderIsOffered()
{
    TestLog log;
    FirmwareWorld world;

    QCOMPARE(text(world.client->getUploadableMachines()),
             std::string(R"(["fabrino_2","fabrino_2x"])"));
    std::string versions;
    for (const FirmwareVersion& version : world.client->getMachineVersions("fabrino_2", 3))
        versions += version.str() + " (" + version.description() + ") ";
    QCOMPARE(versions, std::string("7.5 (The usual one.) 7.6 (Warm. Quiet.) "));
    // The name counts, and the type.
    QVERIFY(world.client->getMachineVersions("fabrino_2", 4).empty());
    QVERIFY(world.client->getMachineVersions("fabrino_2", -1).empty());
    // What is added later is there without a new start.
    world.catalogue.add("fabrino_2", Printer::Fabrino2, "7.10");
    QCOMPARE(world.client->getMachineVersions("fabrino_2", 3).rbegin()->str(), std::string("7.10"));
}

void tst_FirmwareDownload::unknownNamesAreSaid()
{
    TestLog log;
    FirmwareWorld world;
    QCOMPARE(refusalOf([&] { world.client->getMachineVersions("fabrino_3", 3); }),
             std::string("FirmwareUnavailableError: There is no firmware for machines named "
                         "\"fabrino_3\""));
    const auto download = [&](const char* machine, int type, const char* version) {
        const JsonRpcException error = thrown(
            [&] { world.client->downloadFirmware(machine, type, FirmwareVersion(version)); });
        // What a client shows of it.
        if (error.data()["error"] != Json::Value(error.message()))
            return std::string("no member \"error\"");
        return errorName(error) + ": " + error.message();
    };
    const std::string none = "FirmwareUnavailableError: There is no firmware 7.6 for this machine";
    QCOMPARE(download("fabrino_3", 3, "7.6"), none);
    QCOMPARE(download("fabrino_2", 4, "7.6"), none);
    QCOMPARE(download("fabrino_2", 2147483647, "7.6"), none);
    QCOMPARE(download("fabrino_2", 3, "7.7"),
             std::string("FirmwareUnavailableError: There is no firmware 7.7 for this machine"));
    QCOMPARE(download("fabrino_2", 3, ""),
             std::string("FirmwareUnavailableError: There is no firmware  for this machine"));
    QVERIFY(filesIn(world.cacheFolder()).isEmpty());
}

void tst_FirmwareDownload::theDownloadIsTheServicesOwnCopy()
{
    TestLog log;
    FirmwareWorld world;

    const std::string path = world.download();

    const QByteArray image = world.catalogue.readFile(QStringLiteral("fabrino_2-7.6.fw"));
    QCOMPARE(toQString(path), world.cacheFolder() + QStringLiteral("/fabrino_2-7.6-") +
                                  QString::fromLatin1(service::firmwareHash(image)) +
                                  QStringLiteral(".fw"));
    QCOMPARE(ServiceWorld::read(path), image);
    QCOMPARE(world.download(), path);
    QCOMPARE(filesIn(world.cacheFolder()).size(), 1);
    // It is made whole again, whatever has become of it.
    QFile file(toQString(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QCOMPARE(world.download(), path);
    QCOMPARE(ServiceWorld::read(path), image);
}

void tst_FirmwareDownload::nothingWrongIsKept_data()
{
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<QByteArray>("expected");

    const QString name = QStringLiteral("fabrino_2-9.9.fw");
    const auto row = [](const char* title, const QByteArray& expected, const Spoil& spoil) {
        QTest::newRow(title) << spoil << expected;
    };
    row("no index", "FirmwareCatalogueError: There is no file ",
        [](CatalogueFolder& folder, Json::Value&) {
            QFile::remove(folder.filePath(QStringLiteral("catalogue.json")));
        });
    row("an index that is cut",
        "FirmwareCatalogueError: Firmware catalogue: ", [](CatalogueFolder& folder, Json::Value&) {
            const QByteArray index = folder.readFile(QStringLiteral("catalogue.json"));
            folder.writeFile(QStringLiteral("catalogue.json"), index.left(index.size() / 2));
        });
    row("an entry without its hash",
        "FirmwareCatalogueError: Firmware catalogue: firmware[3]: Missing member \"sha256\"",
        [](CatalogueFolder& folder, Json::Value& entry) {
            entry.removeMember("sha256");
            folder.writeIndex();
        });
    row("no image", "FirmwareImageError: There is no file ",
        [=](CatalogueFolder& folder, Json::Value&) { QFile::remove(folder.filePath(name)); });
    row("an image that is cut",
        "FirmwareImageError: The firmware file fabrino_2-9.9.fw is not complete",
        [=](CatalogueFolder& folder, Json::Value&) {
            folder.writeFile(name, folder.readFile(name).chopped(1));
        });
    row("an empty image", "FirmwareImageError: The firmware file fabrino_2-9.9.fw is not complete",
        [=](CatalogueFolder& folder, Json::Value&) { folder.writeFile(name, QByteArray()); });
    row("an image that has grown", "FirmwareImageError: /",
        [=](CatalogueFolder& folder, Json::Value&) {
            folder.writeFile(name, folder.readFile(name) + 'x');
        });
    row("another bit",
        "FirmwareImageError: The firmware file fabrino_2-9.9.fw is damaged: its SHA-256 is "
        "not the catalogue's",
        [=](CatalogueFolder& folder, Json::Value&) {
            QByteArray image = folder.readFile(name);
            image[500] = static_cast<char>(image.at(500) ^ 1);
            folder.writeFile(name, image);
        });
    const auto exchange = [=](const QByteArray& image) {
        return [=](CatalogueFolder& folder, Json::Value& entry) {
            folder.writeFile(name, image);
            const Json::Value right = CatalogueFolder::entryFor(name, image);
            entry["size"] = right["size"];
            entry["sha256"] = right["sha256"];
            folder.writeIndex();
        };
    };
    const QByteArray other = "FirmwareImageError: The firmware file fabrino_2-9.9.fw is for "
                             "another machine or of another version";
    row("an image of another type", other, exchange(firmwareImage(Printer::Fabrino2X, 9, 9)));
    row("an image of another version", other, exchange(firmwareImage(Printer::Fabrino2, 9, 8)));
    row("no image at all", "FirmwareImageError: The firmware file fabrino_2-9.9.fw is no firmware",
        exchange("Please sign in"));
}

void tst_FirmwareDownload::nothingWrongIsKept()
{
    QFETCH(Spoil, spoil);
    QFETCH(QByteArray, expected);
    TestLog log;
    FirmwareWorld world;
    const std::string before = world.download();
    const QByteArray kept = ServiceWorld::read(before);
    world.catalogue.add("fabrino_2", Printer::Fabrino2, "9.9");
    const Json::Value index = world.catalogue.index;
    const QByteArray image = world.catalogue.readFile(QStringLiteral("fabrino_2-9.9.fw"));

    spoil(world.catalogue, world.catalogue.index["firmware"][3]);

    const JsonRpcException error = thrown([&] { world.download("9.9"); });
    const std::string refusal = errorName(error) + ": " + error.message();
    QVERIFY2(refusal.rfind(expected.toStdString(), 0) == 0, refusal.c_str());
    QCOMPARE(error.data()["error"].asString(), error.message());
    QCOMPARE(filesIn(world.cacheFolder()).size(), 1);
    QCOMPARE(ServiceWorld::read(before), kept);
    // A catalogue that is put right again.
    world.catalogue.index = index;
    world.catalogue.writeIndex();
    world.catalogue.writeFile(QStringLiteral("fabrino_2-9.9.fw"), image);
    QCOMPARE(ServiceWorld::read(world.download("9.9")), image);
}

void tst_FirmwareDownload::aDownloadThatFailedCanBeRepeated()
{
    TestLog log;
    FirmwareWorld world;
    world.catalogue.writeFile(QStringLiteral("catalogue.json"), "{");
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(errorOf([&] { world.client->getUploadableMachines(); }),
                 std::string("FirmwareCatalogueError"));
        QCOMPARE(errorOf([&] { world.client->getMachineVersions("fabrino_2", 3); }),
                 std::string("FirmwareCatalogueError"));
        QCOMPARE(errorOf([&] { world.download(); }), std::string("FirmwareCatalogueError"));
    }
    world.catalogue.writeIndex();
    QCOMPARE(world.client->getUploadableMachines().size(), 2U);
    QVERIFY(!world.download().empty());
}

void tst_FirmwareDownload::theCacheFolderMayBeElsewhere()
{
    TestLog log;
    const CatalogueFolder folder;
    ServiceWorld world;
    world.options.firmwareCache = toStdString(folder.filePath(QStringLiteral("a/cache")));
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    const std::string path = client.downloadFirmware("fabrino_2", 3, FirmwareVersion("7.6"));
    QVERIFY(toQString(path).startsWith(folder.filePath(QStringLiteral("a/cache/"))));
    QVERIFY(!QDir(world.stateDir() + QStringLiteral("/firmware")).exists());
}

void tst_FirmwareDownload::aFullDiskIsSaid()
{
    if (!QFile::exists(QStringLiteral("/dev/full")))
        QSKIP("This system has no disk that is always full");
    TestLog log;
    FirmwareWorld world;
    // The file that images are written to before they get their name.
    service::makePrivateFolder(world.cacheFolder());
    QVERIFY(QFile::link(QStringLiteral("/dev/full"),
                        world.cacheFolder() + QStringLiteral("/unfinished")));
    log.expectError("Cannot write ");

    QCOMPARE(refusalOf([&] { world.download(); }),
             "FirmwareCacheError: The firmware cannot be kept: Cannot write into " +
                 toStdString(world.cacheFolder()) + "; is the disk full?");
    QVERIFY(filesIn(world.cacheFolder()).isEmpty());
    QVERIFY(QFile::exists(QString::fromStdString(world.download())));
}

void tst_FirmwareDownload::aCacheThatCannotBeIsSaid()
{
    TestLog log;
    FirmwareWorld world;
    QFile file(world.cacheFolder());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const std::string refusal = refusalOf([&] { world.download(); });
    QVERIFY2(refusal.rfind("FirmwareCacheError: The firmware cannot be kept: ", 0) == 0,
             refusal.c_str());
    QVERIFY(file.remove());
    QVERIFY(!world.download().empty());
}

void tst_FirmwareDownload::oldDownloadsAreForgotten()
{
    TestLog log;
    FirmwareWorld world;
    constexpr int kMore = 5;
    const QString foreign = world.cacheFolder() + QStringLiteral("/notes.txt");
    std::string last;
    for (int i = 0; i < service::FirmwareCache::kKept + kMore; ++i) {
        const std::string version = "8." + std::to_string(i);
        world.catalogue.add("fabrino_2", Printer::Fabrino2, version);
        last = world.download(version);
        if (i == 0) {
            QFile file(foreign);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }
    QCOMPARE(filesIn(world.cacheFolder()).size(), service::FirmwareCache::kKept + 1);
    QVERIFY(QFile::exists(foreign));
    QVERIFY(QFile::exists(toQString(last)));
}

void tst_FirmwareDownload::aSiteThatCannotBeReachedSaysUrlopen()
{
    TestLog log;
    ServiceWorld world;
    world.options.firmwareCatalogue = "http://127.0.0.1:1/firmware";
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    const auto check = [](const std::string& refusal) {
        QVERIFY2(refusal.rfind("FirmwareCatalogueError: ", 0) == 0, refusal.c_str());
        QVERIFY2(refusal.find("urlopen") != std::string::npos, refusal.c_str());
    };
    check(refusalOf([&] { client.getUploadableMachines(); }));
    check(refusalOf([&] { client.getMachineVersions("fabrino_2", 3); }));
    check(refusalOf([&] { client.downloadFirmware("fabrino_2", 3, FirmwareVersion("7.6")); }));
    QVERIFY(client.isConnected());
}

void tst_FirmwareDownload::aSiteIsOffered()
{
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino_2", Printer::Fabrino2, "7.6");
    HttpSite site;
    const QByteArray image = folder.readFile(QStringLiteral("fabrino_2-7.6.fw"));
    site.serve("/firmware/catalogue.json", folder.readFile(QStringLiteral("catalogue.json")));
    site.serve("/firmware/fabrino_2-7.6.fw", image);
    ServiceWorld world;
    world.options.firmwareCatalogue = toStdString(site.address());
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    QCOMPARE(text(client.getUploadableMachines()), std::string(R"(["fabrino_2"])"));
    const std::string path = client.downloadFirmware("fabrino_2", 3, FirmwareVersion("7.6"));
    QCOMPARE(ServiceWorld::read(path), image);
    // A page where the image should be, as hotels send it.
    site.serve("/firmware/fabrino_2-7.6.fw", "<html>Please sign in</html>");
    QCOMPARE(refusalOf([&] { client.downloadFirmware("fabrino_2", 3, FirmwareVersion("7.6")); }),
             std::string("FirmwareImageError: The firmware file fabrino_2-7.6.fw is not "
                         "complete"));
    QCOMPARE(ServiceWorld::read(path), image);
}

void tst_FirmwareDownload::theServiceEndsWhileItWaitsForASite()
{
    TestLog log;
    HttpSite site;
    site.hang("/firmware/catalogue.json");
    ServiceWorld world;
    world.options.firmwareCatalogue = toStdString(site.address());
    world.start();
    RawClient client(world.address());
    client.greet();
    client.call(1, wire::method::kGetUploadableMachines);
    QTRY_COMPARE(site.requests(), 1);

    QElapsedTimer clock;
    clock.start();
    world.stop();

    QVERIFY(clock.elapsed() < 10'000);
    QVERIFY(client.waitForEnd());
}

void tst_FirmwareDownload::manyClientsAskAtOnce()
{
    TestLog log;
    FirmwareWorld world;
    RawClient client(world.service.address());
    client.greet();
    Json::Value params(Json::objectValue);
    params["machine"] = "fabrino_2";
    params["type"] = 3;
    constexpr int kRequests = 60;
    for (int i = 1; i <= kRequests; ++i) {
        params["version"] = i % 2 == 0 ? "7.5" : "7.6";
        client.call(i, wire::method::kDownloadFirmware, params);
    }
    std::set<std::string> paths;
    std::set<int> answered;
    for (int i = 0; i < kRequests; ++i) {
        const Json::Value answer = client.readLine();
        QVERIFY2(answer["result"].isString(), text(answer).c_str());
        paths.insert(answer["result"].asString());
        answered.insert(answer["id"].asInt());
    }
    QCOMPARE(answered.size(), std::size_t(kRequests));
    QCOMPARE(paths.size(), std::size_t(2));
    QCOMPARE(filesIn(world.cacheFolder()).size(), 2);
}

void tst_FirmwareDownload::wrongParametersAreSaid_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("params");

    QTest::newRow("versions without a machine")
        << QByteArray("getmachineversions") << QByteArray(R"({"type": 3})");
    QTest::newRow("versions without a type")
        << QByteArray("getmachineversions") << QByteArray(R"({"machine": "a"})");
    QTest::newRow("a type in words")
        << QByteArray("getmachineversions") << QByteArray(R"({"machine": "a", "type": "b"})");
    QTest::newRow("a download without a version")
        << QByteArray("downloadfirmware") << QByteArray(R"({"machine": "a", "type": 3})");
    QTest::newRow("a download of a number")
        << QByteArray("downloadfirmware")
        << QByteArray(R"({"machine": "a", "type": 3, "version": 7.6})");
    QTest::newRow("an upload without a path")
        << QByteArray("uploadfirmware") << QByteArray(R"({"machine": "virtual_fabrino_2"})");
    QTest::newRow("an upload to nothing")
        << QByteArray("uploadfirmware") << QByteArray(R"({"path": "/a"})");
}

void tst_FirmwareDownload::wrongParametersAreSaid()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, params);
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();
    Json::Value value;
    QVERIFY(rpcwire::parseJson(params.toStdString(), &value, nullptr));

    client.call(1, method.constData(), value);

    const Json::Value error = client.readLine()["error"];
    QCOMPARE(error["data"]["name"].asString(), std::string("InvalidArgumentError"));
    QCOMPARE(error["data"].isMember("error"), method == "downloadfirmware");
}

void tst_FirmwareDownload::noServiceStartsWithAnAddressThatIsNone()
{
    TestLog log;
    ServiceWorld world;
    world.options.firmwareCatalogue = "ftp://site/firmware";
    try {
        world.start();
        QFAIL("It starts");
    } catch (const std::exception& error) {
        QCOMPARE(error.what(),
                 "Neither a folder nor an address of firmware: \"ftp://site/firmware\"");
    }
    world.options.firmwareCatalogue.clear();
    world.start();
}

QTEST_GUILESS_MAIN(tst_FirmwareDownload)
#include "tst_firmware_download.moc"
