#include "apps/ostrand/model_extruders.h"

#include <KZip>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;
using trovek::SlicerConfiguration;

namespace {

QByteArray amf(const QByteArray& volumes)
{
    return "<?xml version=\"1.0\"?>\n<amf unit=\"millimeter\"><object id=\"0\"><mesh>" + volumes +
           "</mesh></object></amf>\n";
}

QByteArray settings(const QByteArray& parts)
{
    return "<?xml version=\"1.0\"?>\n<config>" + parts + "</config>\n";
}

QByteArray extruder(int number)
{
    return "<metadata type=\"volume\" key=\"extruder\" value=\"" + QByteArray::number(number) +
           "\"/>";
}

} // namespace

class tst_ModelExtruders : public QObject
{
    Q_OBJECT

private slots:
    void knowsWhichExtrudersAFileNames_data();
    void knowsWhichExtrudersAFileNames();
    void takesWhatItCannotReadForTheRightOne_data();
    void takesWhatItCannotReadForTheRightOne();
};

void tst_ModelExtruders::knowsWhichExtrudersAFileNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("expected");
    const auto row = [](const char* title, const char* name, const char* entry,
                        const QByteArray& content, SlicerConfiguration::Extruder expected) {
        QTest::newRow(title) << QByteArray(name) << QByteArray(entry) << content << int(expected);
    };
    const char* const settingsFile = "Metadata/Slic3r_PE_model.config";
    row("stl", "a.stl", "", "solid", SlicerConfiguration::Right);
    row("amf, one material", "a.amf", "", amf("<volume materialid=\"1\"/>"),
        SlicerConfiguration::Right);
    row("amf, two materials", "a.AMF", "",
        amf("<volume materialid=\"1\"/><volume materialid=\"2\"/>"), SlicerConfiguration::Both);
    row("amf, named extruders", "a.amf", "",
        amf("<volume><metadata type=\"slic3r.extruder\">2</metadata></volume>"),
        SlicerConfiguration::Left);
    row("zipped amf", "a.amf", "a.amf", amf("<volume materialid=\"1\"/><volume materialid=\"2\"/>"),
        SlicerConfiguration::Both);
    row("3mf without settings", "a.3mf", "3D/3dmodel.model", "<model/>",
        SlicerConfiguration::Right);
    row("3mf, right", "a.3mf", settingsFile, settings(extruder(1)), SlicerConfiguration::Right);
    row("3mf, left", "a.3mf", settingsFile, settings(extruder(2)), SlicerConfiguration::Left);
    row("3mf, both", "a.3mf", settingsFile, settings(extruder(1) + extruder(2)),
        SlicerConfiguration::Both);
    row("3mf, no extruder", "a.3mf", settingsFile, settings(extruder(0)),
        SlicerConfiguration::Right);
}

void tst_ModelExtruders::knowsWhichExtrudersAFileNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, content);
    QFETCH(int, expected);
    QTemporaryDir folder;
    const QString path = folder.filePath(QString::fromLatin1(name));
    if (entry.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    } else {
        KZip archive(path);
        QVERIFY(archive.open(QIODevice::WriteOnly));
        QVERIFY(archive.writeFile(QString::fromLatin1(entry), content));
        QVERIFY(archive.close());
    }
    QCOMPARE(int(extrudersOfModel(path)), expected);
}

void tst_ModelExtruders::takesWhatItCannotReadForTheRightOne_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no archive") << QByteArray("a.3mf") << QByteArray("PK and no more");
    QTest::newRow("empty 3mf") << QByteArray("a.3mf") << QByteArray();
    QTest::newRow("no xml") << QByteArray("a.amf") << QByteArray("\xff\xfe\x00<volume", 10);
    QTest::newRow("cut off") << QByteArray("a.amf") << amf("<volume materialid=\"1\"/>").left(80);
}

void tst_ModelExtruders::takesWhatItCannotReadForTheRightOne()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QTemporaryDir folder;
    const QString path = folder.filePath(QString::fromLatin1(name));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    QCOMPARE(extrudersOfModel(path), SlicerConfiguration::Right);
    QCOMPARE(extrudersOfModel(folder.filePath(QStringLiteral("gone.3mf"))),
             SlicerConfiguration::Right);
    QCOMPARE(extrudersOfModel(folder.path()), SlicerConfiguration::Right);
}

QTEST_GUILESS_MAIN(tst_ModelExtruders)
#include "tst_model_extruders.moc"
