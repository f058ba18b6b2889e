#include "profile/profile_world.h"
#include "support/thrown_text.h"

#include <profile/json_file.h>
#include <profile/profile_json.h>
#include <profile/strandel_config.h>

#include <QTest>

#include <limits>
#include <memory>

using namespace trovek;

class tst_JsonFile : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void keepsEveryNumber_data();
    void keepsEveryNumber();
    void keepsCommentsAndUnknownKeys();
    void keepsTheOldFileWhenTheDiskIsFull_data();
    void keepsTheOldFileWhenTheDiskIsFull();
    void keepsTheOldFileWhenItIsProtected();
    void writesThroughALink();
    void readsStrandelSettings_data();
    void readsStrandelSettings();
    void readsNoPipe();
    void tellsWhyStrandelSettingsAreNotWritten();
    void tellsWhyADescriptionIsNotWritten();

private:
    QString path(const char* name) const { return m_folder->filePath(text(name)); }
    QDir folder() const { return QDir(m_folder->path()); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_JsonFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_JsonFile::keepsEveryNumber_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("written");

    QTest::newRow("as typed") << 0.2 << QByteArray("0.2");
    QTest::newRow("whole") << 80.0 << QByteArray("80.0");
    QTest::newRow("computed") << 0.1 + 0.2 << QByteArray("0.30000000000000004");
    QTest::newRow("tiny") << std::numeric_limits<double>::min()
                          << QByteArray("2.2250738585072014e-308");
}

void tst_JsonFile::keepsEveryNumber()
{
    QFETCH(double, number);
    QFETCH(QByteArray, written);
    Json::Value config;
    config["n"] = number;

    writeStrandelConfig(folder(), config);

    QCOMPARE(readFile(path("strandel.json")), "{\n   \"n\" : " + written + "\n}\n");
    QVERIFY(readStrandelConfig(folder()) == config);
}

void tst_JsonFile::keepsCommentsAndUnknownKeys()
{
    writeFile(path("strandel.json"),
              "// mine\n{ \"mine\": {\"\xc3\xbc\": [true, null, -1, \"x\"]},\n"
              "// why\n\"shells\": 3, \"layerHeight\": 0.1 }\n");
    Json::Value config = readStrandelConfig(folder());

    config["layerHeight"] = 0.3;
    writeStrandelConfig(folder(), config);

    const QByteArray written = readFile(path("strandel.json"));
    QVERIFY2(written.startsWith("// mine\n"), written);
    QVERIFY2(written.contains("\xc3\xbc"), written);
    QVERIFY2(written.contains("// why"), written);
    QVERIFY(readStrandelConfig(folder()) == config);
}

void tst_JsonFile::keepsTheOldFileWhenTheDiskIsFull_data()
{
    QTest::addColumn<int>("bytes");

    // Less than what is buffered, and more.
    QTest::newRow("few") << 1000;
    QTest::newRow("many") << 100000;
}

void tst_JsonFile::keepsTheOldFileWhenTheDiskIsFull()
{
#ifdef Q_OS_UNIX
    QFETCH(int, bytes);
    writeFile(path("a"), "old");

    std::string error;
    {
        const FileSizeLimit limit(100);
        error = thrownText(
            [&] { replaceFile(path("a"), QByteArray(bytes, 'x'), "cannot open", "cannot write"); });
    }
    QCOMPARE(error, std::string("cannot write"));
    QCOMPARE(readFile(path("a")), QByteArray("old"));
    QCOMPARE(tree(m_folder->path()), QStringList{text("a")});
#else
    QSKIP("No limit of file sizes here");
#endif
}

void tst_JsonFile::keepsTheOldFileWhenItIsProtected()
{
    writeFile(path("a"), "old");
#ifdef Q_OS_UNIX
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0777), 0);
    const OrdinaryUser user;
#else
    QVERIFY(QFile::setPermissions(path("a"), QFile::ReadOwner));
#endif

    QCOMPARE(thrownText([&] { replaceFile(path("a"), "new", "cannot open", "cannot write"); }),
             std::string("cannot open"));
    QCOMPARE(readFile(path("a")), QByteArray("old"));
    QCOMPARE(
        thrownText([&] { replaceFile(path("missing/a"), "new", "cannot open", "cannot write"); }),
        std::string("cannot open"));
}

void tst_JsonFile::writesThroughALink()
{
#ifdef Q_OS_UNIX
    writeFile(path("shared/a"), "old");
    QVERIFY(QFile::link(path("shared/a"), path("a")));

    replaceFile(path("a"), "new", "cannot open", "cannot write");

    QVERIFY(QFileInfo(path("a")).isSymLink());
    QCOMPARE(readFile(path("shared/a")), QByteArray("new"));
#else
    QSKIP("Links are of another kind here");
#endif
}

void tst_JsonFile::readsStrandelSettings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("good") << QByteArray("{\"layerHeight\": 0.2}") << QByteArray("nothing thrown");
    QTest::newRow("byte order mark")
        << QByteArray("\xef\xbb\xbf{}") << QByteArray("nothing thrown");
    QTest::newRow("empty") << QByteArray() << QByteArray("Failed to parse strandel.json");
    QTest::newRow("cut off") << QByteArray("{\"layerHeight\"")
                             << QByteArray("Failed to parse strandel.json");
    QTest::newRow("huge") << "{}" + QByteArray(2 << 20, ' ')
                          << QByteArray("Failed to parse strandel.json");
}

void tst_JsonFile::readsStrandelSettings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, error);
    writeFile(path("strandel.json"), bytes);

    QCOMPARE(thrownText([&] { readStrandelConfig(folder()); }), error.toStdString());
}

void tst_JsonFile::readsNoPipe()
{
#ifdef Q_OS_UNIX
    QCOMPARE(::mkfifo(qPrintable(path("strandel.json")), 0600), 0);
#endif
    QCOMPARE(thrownText([&] { readStrandelConfig(folder()); }),
             std::string("Failed to open strandel.json"));
}

void tst_JsonFile::tellsWhyStrandelSettingsAreNotWritten()
{
    Json::Value config;
    config["version"] = 2;
    writeStrandelConfig(folder(), config);
    QVERIFY(readStrandelConfig(folder()) == config);

    QCOMPARE(thrownText([&] { writeStrandelConfig(QDir(path("missing")), config); }),
             std::string("Failed to open strandel.json for write"));
#ifdef Q_OS_UNIX
    std::string error;
    {
        const FileSizeLimit limit(10);
        error = thrownText([&] { writeStrandelConfig(folder(), config); });
    }
    QCOMPARE(error, std::string("Failed to write strandel.json"));
    QVERIFY(readStrandelConfig(folder()) == config);
#endif
}

void tst_JsonFile::tellsWhyADescriptionIsNotWritten()
{
    const Json::Value json = makeProfileJson(SlicerConfiguration::Strandel, {Printer::CubioDual});

    QCOMPARE(thrownText([&] { writeProfileJson(QDir(path("missing")), json); }),
             std::string("Cannot open profile.json for writing"));
    writeProfileJson(folder(), json);
    QCOMPARE(readFile(path("profile.json")),
             QByteArray("{\n"
                        "   \"machine_type\" : [ \"cubio_dual\" ],\n"
                        "   \"slicer\" : \"strandel\"\n"
                        "}\n"));
}

QTEST_MAIN(tst_JsonFile)
#include "tst_json_file.moc"
