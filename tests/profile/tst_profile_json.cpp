// What a user's "profile.json" may hold, read as the profile of its folder.

#include "profile/profile_world.h"
#include "support/thrown_text.h"

#include <trovek-ui/profile.h>

#include <QElapsedTimer>
#include <QTest>

using namespace trovek;

class tst_ProfileJson : public QObject
{
    Q_OBJECT

private slots:
    void givesTheMachineTypes_data();
    void givesTheMachineTypes();
    void givesTheSlicer_data();
    void givesTheSlicer();
    void opensRegularFilesOnly_data();
    void opensRegularFilesOnly();
    void opensFilesOfASaneSizeOnly_data();
    void opensFilesOfASaneSizeOnly();
    void isMissingWhenItMustNotBeRead();
    void isReadQuicklyWhateverItHolds_data();
    void isReadQuicklyWhateverItHolds();

private:
    QTemporaryDir m_folder;
};

namespace {

constexpr char kInvalid[] = "profile.json does not contain valid JSON";
constexpr char kMissing[] = "profile.json is missing";
constexpr char kNoTypes[] = "profile.json is missing the machine_type field";
constexpr char kNoArray[] = "profile.json machine_type field not an array";
constexpr char kNoSlicer[] = "profile.json is missing the slicer field";
constexpr char kNoText[] = "profile.json slicer field not a string";

QByteArray nested(int depth)
{
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}

} // namespace

void tst_ProfileJson::givesTheMachineTypes_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QByteArray>("error");

    const auto good = [](const char* row, const QByteArray& json, const QStringList& types) {
        QTest::newRow(row) << json << types << QByteArray("nothing thrown");
    };
    const auto bad = [](const char* row, const QByteArray& json, const char* error) {
        QTest::newRow(row) << json << QStringList() << QByteArray(error);
    };
    good("one", R"({"machine_type": ["fabrino_2"]})", {text("fabrino_2")});
    good("in their order", R"({"machine_type": ["cubio_dual", "fabrino_single"]})",
         {text("cubio_dual"), text("fabrino_single")});
    good("twice", R"({"machine_type": ["fabrino_2x", "fabrino_2x"]})",
         {text("fabrino_2x"), text("fabrino_2x")});
    good("none", R"({"machine_type": []})", {});
    good("whatever the slicer is", R"({"machine_type": [], "slicer": 3})", {});
    good("byte order mark", "\xef\xbb\xbf{\"machine_type\": [\"fabrino_2\"]}", {text("fabrino_2")});
    good("comments", "// mine\n{\"machine_type\": /* one */ [\"fabrino_2\"]}\n// end\n",
         {text("fabrino_2")});
    good("blanks around", " \r\n\t{\"machine_type\": []} \n\n", {});
    good("member twice, the last counts", R"({"machine_type": 1, "machine_type": ["fabrino_2"]})",
         {text("fabrino_2")});

    bad("no object's member", "{}", kNoTypes);
    bad("other spelling", R"({"Machine_Type": []})", kNoTypes);
    bad("array as root", R"(["machine_type"])", kNoTypes);
    bad("empty array as root", "[]", kNoTypes);
    bad("text as root", R"("machine_type")", kNoTypes);
    bad("number as root", "1", kNoTypes);
    bad("null as root", "null", kNoTypes);
    bad("text", R"({"machine_type": "fabrino_2"})", kNoArray);
    bad("object", R"({"machine_type": {"0": "fabrino_2"}})", kNoArray);
    bad("null", R"({"machine_type": null})", kNoArray);
    bad("number", R"({"machine_type": 3})", kNoArray);
    bad("unknown name", R"({"machine_type": ["fabrino_2", "fabrino_9"]})",
        "machine_type contains invalid name fabrino_9");
    bad("empty name", R"({"machine_type": [""]})", "machine_type contains invalid name ");
    bad("other letters", R"({"machine_type": ["Fabrino_2"]})",
        "machine_type contains invalid name Fabrino_2");
    bad("number as name", R"({"machine_type": [3]})", "machine_type contains invalid name 3");
    bad("null as name", R"({"machine_type": [null]})", "machine_type contains invalid name null");
    bad("array as name", R"({"machine_type": [["fabrino_2"]]})",
        R"(machine_type contains invalid name ["fabrino_2"])");
    bad("object as name", R"({"machine_type": [{"a": 1}]})",
        R"(machine_type contains invalid name {"a":1})");
    bad("zero in the name", R"({"machine_type": ["fabrino_2\u0000"]})",
        QByteArray("machine_type contains invalid name fabrino_2\0", 46));

    bad("empty", "", kInvalid);
    bad("byte order mark only", "\xef\xbb\xbf", kInvalid);
    bad("no JSON", "machine_type = fabrino_2", kInvalid);
    bad("cut off", R"({"machine_type": ["fabri)", kInvalid);
    bad("comma at the end", R"({"machine_type": [],})", kInvalid);
    bad("something after it", R"({"machine_type": []} {})", kInvalid);
    bad("UTF-16", QByteArray("\xff\xfe{\0}\0", 6), kInvalid);
    bad("nested deeply", nested(100000), kInvalid);
}

void tst_ProfileJson::givesTheMachineTypes()
{
    QFETCH(QByteArray, json);
    QFETCH(QStringList, types);
    QFETCH(QByteArray, error);
    writeFile(m_folder.filePath(text("profile.json")), json);
    const DirectoryProfile profile(QDir(m_folder.path()));

    std::vector<Printer::Type> read;
    QCOMPARE(thrownText([&] { read = profile.machineTypes(); }), error.toStdString());
    QCOMPARE(identifiers(read), types);
}

void tst_ProfileJson::givesTheSlicer_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("good") << QByteArray(R"({"slicer": "strandel"})")
                          << QByteArray("nothing thrown");
    QTest::newRow("whatever the types are")
        << QByteArray(R"({"slicer": "strandel", "machine_type": 1})")
        << QByteArray("nothing thrown");
    QTest::newRow("none") << QByteArray("{}") << QByteArray(kNoSlicer);
    QTest::newRow("array as root") << QByteArray(R"(["slicer"])") << QByteArray(kNoSlicer);
    QTest::newRow("text as root") << QByteArray(R"("slicer")") << QByteArray(kNoSlicer);
    QTest::newRow("array") << QByteArray(R"({"slicer": ["strandel"]})") << QByteArray(kNoText);
    QTest::newRow("number") << QByteArray(R"({"slicer": 0})") << QByteArray(kNoText);
    QTest::newRow("null") << QByteArray(R"({"slicer": null})") << QByteArray(kNoText);
    QTest::newRow("another") << QByteArray(R"({"slicer": "other"})")
                             << QByteArray("Invalid slicer identifier\nother");
    QTest::newRow("empty") << QByteArray(R"({"slicer": ""})")
                           << QByteArray("Invalid slicer identifier\n");
    QTest::newRow("no JSON") << QByteArray("strandel") << QByteArray(kInvalid);
}

void tst_ProfileJson::givesTheSlicer()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    writeFile(m_folder.filePath(text("profile.json")), json);
    const DirectoryProfile profile(QDir(m_folder.path()));

    auto slicer = SlicerConfiguration::UnknownSlicer;
    QCOMPARE(thrownText([&] { slicer = profile.slicer(); }), error.toStdString());
    QCOMPARE(slicer == SlicerConfiguration::Strandel, error == "nothing thrown");
}

void tst_ProfileJson::opensRegularFilesOnly_data()
{
    QTest::addColumn<QString>("linkTarget");

    QTest::newRow("nothing there") << QString();
    QTest::newRow("folder") << text(".");
    QTest::newRow("link to nowhere") << text("nowhere");
#ifdef Q_OS_UNIX
    QTest::newRow("pipe") << text("pipe");
    QTest::newRow("device without end") << text("/dev/zero");
    QTest::newRow("device that waits") << text("/dev/tty");
#endif
}

void tst_ProfileJson::opensRegularFilesOnly()
{
    QFETCH(QString, linkTarget);
    const QTemporaryDir folder;
#ifdef Q_OS_UNIX
    QCOMPARE(::mkfifo(qPrintable(folder.filePath(text("pipe"))), 0600), 0);
#endif
    if (!linkTarget.isEmpty())
        QVERIFY(QFile::link(linkTarget, folder.filePath(text("profile.json"))));
    const DirectoryProfile profile(QDir(folder.path()));

    QCOMPARE(thrownText([&] { profile.json(); }), std::string(kMissing));
}

void tst_ProfileJson::opensFilesOfASaneSizeOnly_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QByteArray>("error");

    const int most = 1024 * 1024;
    QTest::newRow("largest") << most << QByteArray("nothing thrown");
    QTest::newRow("a byte more") << most + 1 << QByteArray(kInvalid);
    QTest::newRow("much more") << 40 * most << QByteArray(kInvalid);
}

void tst_ProfileJson::opensFilesOfASaneSizeOnly()
{
    QFETCH(int, bytes);
    QFETCH(QByteArray, error);
    const QByteArray json = profileJson("");
    writeFile(m_folder.filePath(text("profile.json")), json + QByteArray(bytes - json.size(), ' '));
    const DirectoryProfile profile(QDir(m_folder.path()));

    QCOMPARE(thrownText([&] { profile.json(); }), error.toStdString());
}

void tst_ProfileJson::isMissingWhenItMustNotBeRead()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir folder;
    writeFile(folder.filePath(text("profile.json")), profileJson(""));
    QVERIFY(QFile::setPermissions(folder.filePath(text("profile.json")), {}));
    const DirectoryProfile profile(QDir(folder.path()));

    const OrdinaryUser user;
    QCOMPARE(thrownText([&] { profile.json(); }), std::string(kMissing));
#else
    QSKIP("Files are protected in another way here");
#endif
}

void tst_ProfileJson::isReadQuicklyWhateverItHolds_data()
{
    QTest::addColumn<QByteArray>("bytes");

    const int size = 1000000;
    QTest::newRow("comments") << QByteArray("//\n").repeated(size / 3);
    QTest::newRow("members") << "{" + QByteArray("\"a\":1,").repeated(size / 6) + "\"b\":1}";
    QTest::newRow("numbers") << "[" + QByteArray("1,").repeated(size / 2) + "1]";
    QTest::newRow("one text") << "\"" + QByteArray(size, 'a') + "\"";
    QTest::newRow("errors") << QByteArray("[},").repeated(size / 3);
    QTest::newRow("open objects") << QByteArray("{\"a\":").repeated(size / 5);
    QTest::newRow("zeroes") << QByteArray(size, '\0');
}

void tst_ProfileJson::isReadQuicklyWhateverItHolds()
{
    QFETCH(QByteArray, bytes);
    writeFile(m_folder.filePath(text("profile.json")), bytes);
    const DirectoryProfile profile(QDir(m_folder.path()));

    QElapsedTimer timer;
    timer.start();
    thrownText([&] { profile.json(); });
    // Far more than it takes even under a sanitizer, far less than reading in square time would.
    QVERIFY2(timer.elapsed() < 40000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_MAIN(tst_ProfileJson)
#include "tst_profile_json.moc"
