#include "support/thrown_text.h"

#include <slicing/slice_profile.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

using namespace trovek::service;

namespace {

/** A copy of a built-in profile. */
class ProfileFolder
{
public:
    ProfileFolder()
    {
        const QDir builtIn(QStringLiteral(TROVEK_PROFILES "/Orvane PLA Standard"));
        for (const QString& name : builtIn.entryList(QDir::Files))
            QFile::copy(builtIn.filePath(name), filePath(name));
    }

    std::string path() const { return m_folder.path().toStdString(); }
    QString filePath(const QString& name) const { return m_folder.filePath(name); }

    QByteArray read(const QString& name) const
    {
        QFile file(filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("cannot read");
        return file.readAll();
    }

    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile::remove(filePath(name));
        QFile file(filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            throw std::runtime_error("cannot write");
    }

    void remove(const QString& name) const { QFile::remove(filePath(name)); }

    std::string problem() const
    {
        return thrownText([this] { loadSliceProfile(path()); });
    }

private:
    QTemporaryDir m_folder;
};

const QString kSettings = QStringLiteral("strandel.json");
const QString kStart = QStringLiteral("start.gcode");
const QString kEnd = QStringLiteral("end.gcode");

} // namespace

class tst_SliceProfile : public QObject
{
    Q_OBJECT

private slots:
    void readsAFolder();
    void bearsWhatEditorsLeave();
    void namesTheFileThatIsMissing_data();
    void namesTheFileThatIsMissing();
    void refusesOddFiles();
    void refusesOddSettings();
    void refusesAnOddFolder();
};

void tst_SliceProfile::readsAFolder()
{
    const ProfileFolder folder;

    const SliceProfile profile = loadSliceProfile(folder.path());

    QCOMPARE(profile.config.tools[0].material, std::string("pla"));
    QCOMPARE(profile.config.layerHeight, 0.2);
    QCOMPARE(profile.startCode, folder.read(kStart).toStdString());
    QCOMPARE(profile.endCode, folder.read(kEnd).toStdString());
}

void tst_SliceProfile::bearsWhatEditorsLeave()
{
    const ProfileFolder folder;
    const QByteArray settings = folder.read(kSettings);
    QByteArray changed = settings;
    changed.replace("\"layer_height\"",
                    "// \"layer_height\": 9 \"\r\n/* and * so / on\n \" */\"layer_height\"");
    changed.replace("\"version\"",
                    "\"http://x\": \"// not a comment, /* nor \\\" this */\", \"version\"");
    QVERIFY(changed.size() > settings.size() + 60);
    folder.write(kSettings, "\xef\xbb\xbf" + changed + "// the end");
    folder.write(kStart, "\xef\xbb\xbf; mine\r\n");
    folder.write(kEnd, QByteArray());

    const SliceProfile profile = loadSliceProfile(folder.path());

    QCOMPARE(profile.config.layerHeight, 0.2);
    QCOMPARE(profile.startCode, std::string("; mine\r\n"));
    QCOMPARE(profile.endCode, std::string());

    // As on an old system.
    changed.replace("\r\n", "\n").replace('\n', '\r');
    folder.write(kSettings, changed);
    QCOMPARE(loadSliceProfile(folder.path()).config.layerHeight, 0.2);
}

void tst_SliceProfile::namesTheFileThatIsMissing_data()
{
    QTest::addColumn<QString>("name");

    for (const QString& name : {kSettings, kStart, kEnd})
        QTest::newRow(qPrintable(name)) << name;
}

void tst_SliceProfile::namesTheFileThatIsMissing()
{
    QFETCH(QString, name);
    const ProfileFolder folder;

    folder.remove(name);

    QVERIFY(folder.problem().find(folder.filePath(name).toStdString()) != std::string::npos);

    // A folder of that name is no file.
    QVERIFY(QDir().mkdir(folder.filePath(name)));
    QVERIFY(folder.problem().find(folder.filePath(name).toStdString()) != std::string::npos);
}

void tst_SliceProfile::refusesOddFiles()
{
    const ProfileFolder folder;
    const QByteArray endless(1 << 20, ' ');
    folder.write(kStart, endless);
    QCOMPARE(folder.problem(), std::string("nothing thrown"));
    folder.write(kStart, endless + " ");
    QCOMPARE(folder.problem(), std::string("start.gcode: is larger than 1 MiB"));
    folder.write(kSettings, endless + "{}");
    QCOMPARE(folder.problem(), std::string("strandel.json: is larger than 1 MiB"));
}

void tst_SliceProfile::refusesOddSettings()
{
    const ProfileFolder folder;
    const std::string invalid = "strandel.json: is not valid JSON: ";
    for (const char* text :
         {"", "{", "{\"version\": 3} 4", "/* {}", "\xff\xfe{", "{'version': 3}"}) {
        folder.write(kSettings, text);
        QCOMPARE(folder.problem().substr(0, invalid.size()), invalid);
    }
    folder.write(kSettings, "[]");
    QCOMPARE(folder.problem(), std::string("strandel.json: must hold an object"));
    folder.write(kSettings, "{\"version\": 2}");
    QCOMPARE(folder.problem(),
             std::string("strandel.json: \"version\" is 2; this service reads version 3"));
    folder.write(kSettings, "{\"version\": 3}");
    QCOMPARE(folder.problem(), std::string("strandel.json: \"layer_height\" is missing"));
}

void tst_SliceProfile::refusesAnOddFolder()
{
    QCOMPARE(thrownText([] { loadSliceProfile("profiles/mine"); }),
             std::string("The profile's folder is not an absolute path"));
    QCOMPARE(thrownText([] { loadSliceProfile("."); }),
             std::string("The profile's folder is not an absolute path"));
    QVERIFY(thrownText([] { loadSliceProfile("/no/such/folder"); }).find("strandel.json") !=
            std::string::npos);
}

QTEST_GUILESS_MAIN(tst_SliceProfile)
#include "tst_slice_profile.moc"
