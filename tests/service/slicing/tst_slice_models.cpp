#include "slice_world.h"
#include "sliced_gcode.h"
#include "test_models.h"

#include <trovek/text.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace trovek;

/** What the installed slicer makes of models of all kinds, good and bad. */
class tst_SliceModels : public QObject
{
    Q_OBJECT

private slots:
    void slicesEveryFormat_data();
    void slicesEveryFormat();
    void readsFilesOfAnyName_data();
    void readsFilesOfAnyName();
    void tellsWhyItCannotSlice_data();
    void tellsWhyItCannotSlice();
    void aFileBringsNoProgramsAndNoSettings_data();
    void aFileBringsNoProgramsAndNoSettings();

private:
    QTemporaryDir m_folder;
    /** What a program would make that a file names. */
    const QString m_evil = m_folder.filePath(QStringLiteral("evil"));
};

namespace {

const Block kBlock;
constexpr double kLayerHeight = 0.2;
constexpr char kPartSettings[] = "Metadata/Slic3r_PE_model.config";

std::string fileOf(const SliceWorld& f, const char* name, const QByteArray& bytes)
{
    return f.world.writeFile(QString::fromUtf8(name), bytes);
}

/** What a preview of the model makes. */
QByteArray sliced(SliceWorld& f, const std::string& model)
{
    const std::string out = f.world.emptyFile(QStringLiteral("out.gcode"));
    const Job job = f.conclude(f.preview(model, out));
    if (job.conclusion() != JobEnded)
        qWarning("%s", job.failure().c_str());
    return ServiceWorld::read(out);
}

QByteArray sliced(SliceWorld& f, const char* name, const QByteArray& bytes)
{
    return sliced(f, fileOf(f, name, bytes));
}

} // namespace

void tst_SliceModels::slicesEveryFormat_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");

    QTest::newRow("binary STL") << QByteArray("part.stl") << kBlock.binaryStl();
    QTest::newRow("ASCII STL") << QByteArray("part.stl") << kBlock.asciiStl();
    QTest::newRow("upper case") << QByteArray("PART.STL") << kBlock.binaryStl();
    QTest::newRow("OBJ") << QByteArray("part.obj") << kBlock.obj();
    QTest::newRow("3MF") << QByteArray("part.3mf") << kBlock.threeMf();
    QTest::newRow("AMF") << QByteArray("part.amf") << kBlock.amf();
    QTest::newRow("packed AMF") << QByteArray("part.amf") << zipOf({{"part.amf", kBlock.amf()}});
    QTest::newRow("a thing with a 3MF") << QByteArray("part.thing") << kBlock.threeMf();
}

void tst_SliceModels::slicesEveryFormat()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    SliceWorld f;
    const std::string out = f.world.emptyFile(QStringLiteral("out.gcode"));

    const Job job = f.conclude(f.preview(fileOf(f, name.constData(), model), out));

    QCOMPARE(job.failure(), std::string());
    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.progress(), 100);
    QCOMPARE(job.kind(), std::string("slice"));
    const SlicedGCode gcode = SlicedGCode::read(ServiceWorld::read(out));
    QCOMPARE(gcode.layers.size(), std::size_t(10));
    for (std::size_t i = 0; i < gcode.layers.size(); ++i)
        QVERIFY(qFuzzyCompare(gcode.layers[i].z, kLayerHeight * static_cast<double>(i + 1)));
    // In the middle of the platform.
    QVERIFY(std::abs(gcode.maxX - gcode.minX - kBlock.x) < 1);
    QVERIFY(std::abs(gcode.maxX + gcode.minX - 285) < 1);
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceModels::readsFilesOfAnyName_data()
{
    QTest::addColumn<QString>("name");

    for (const char* const name :
         {"-o.stl", "a b.stl", "K\xc3\xb6rper \xe2\x82\xac.stl", "$(touch x).stl", "a\nb.stl",
          "'.stl", "--post-process=x.stl", ".stl.stl"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_SliceModels::readsFilesOfAnyName()
{
    QFETCH(QString, name);
    SliceWorld f;

    QVERIFY(!sliced(f, f.world.writeFile(name, kBlock.binaryStl())).isEmpty());
}

void tst_SliceModels::tellsWhyItCannotSlice_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("failure");

    const QByteArray png = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(1000, '\0');
    const QByteArray cannot =
        "The model cannot be read: it is damaged, or it is not in the format ";
    QTest::newRow("too wide") << QByteArray("a.stl") << Block{400, 10, 2}.binaryStl()
                              << QByteArray("The model is too large for the machine, which has "
                                            "285 x 150 x 155 mm");
    QTest::newRow("too tall") << QByteArray("a.stl") << Block{10, 10, 200}.binaryStl()
                              << QByteArray("The print is too large for the machine: on Z it "
                                            "reaches from 0.2 to 200 mm, and the machine from 0 "
                                            "to 155 mm");
    QTest::newRow("tiny") << QByteArray("a.stl") << Block{0.01, 0.01, 0.01}.binaryStl()
                          << QByteArray("The model is too small or too thin: no layer of it would "
                                        "be printed");
    QTest::newRow("flat") << QByteArray("a.stl") << Block{10, 10, 0}.binaryStl()
                          << QByteArray("The model is damaged: it encloses no volume");
    QTest::newRow("an STL of nothing")
        << QByteArray("a.stl") << Block().binaryStl().left(80) + QByteArray(4, '\0')
        << QByteArray("The model is empty");
    QTest::newRow("a text STL of nothing")
        << QByteArray("a.stl") << QByteArray("solid x\nendsolid x\n")
        << QByteArray("The model is empty");
    QTest::newRow("an STL that is cut off")
        << QByteArray("a.stl") << Block().binaryStl().left(400) << cannot + "STL";
    QTest::newRow("a picture as STL") << QByteArray("a.stl") << png << cannot + "STL";
    QTest::newRow("a picture as OBJ")
        << QByteArray("a.obj") << png << QByteArray("The model is empty");
    QTest::newRow("an OBJ with places that are not there")
        << QByteArray("a.obj") << QByteArray("v 0 0 0\nf 1 2 3\n") << cannot + "OBJ";
    QTest::newRow("a lone triangle crashes the slicer")
        << QByteArray("a.obj") << QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
        << QByteArray("The slicer crashed (Segmentation fault); the model may be damaged");
    QTest::newRow("a 3MF without shapes in its model")
        << QByteArray("a.3mf") << zipOf({{"3D/3dmodel.model", "<model/>"}})
        << QByteArray("The model is empty");
    QTest::newRow("an AMF of nothing")
        << QByteArray("a.amf") << QByteArray("<amf unit=\"millimeter\"></amf>")
        << QByteArray("The model is empty");
}

void tst_SliceModels::tellsWhyItCannotSlice()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    QFETCH(QByteArray, failure);
    SliceWorld f;
    const std::string out = f.world.writeFile(QStringLiteral("out.gcode"), "old");

    const Job job = f.conclude(f.preview(fileOf(f, name.constData(), model), out));

    QCOMPARE(QByteArray::fromStdString(job.failure()), failure);
    QCOMPARE(job.conclusion(), JobFailed);
    QCOMPARE(ServiceWorld::read(out), QByteArray());
    QTRY_COMPARE(f.leftovers(), QStringList());
}

void tst_SliceModels::aFileBringsNoProgramsAndNoSettings_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");

    const QByteArray settings = "; post_process = /usr/bin/touch " + m_evil.toUtf8() +
                                "\n"
                                "; start_gcode = M104 S999\n"
                                "; layer_gcode = M104 S999\n"
                                "; gcode_substitutions = G1;M999;;\n"
                                "; output_filename_format = " +
                                m_evil.toUtf8() +
                                "\n"
                                "; z_offset = 5\n"
                                "; skirts = 5\n"
                                "; temperature = 290\n";
    QTest::newRow("a configuration in a 3MF")
        << QByteArray("a.3mf") << kBlock.threeMf({{"Metadata/Slic3r_PE.config", settings}});
    QTest::newRow("another printer's in a 3MF")
        << QByteArray("a.3mf")
        << kBlock.threeMf(
               {{"Metadata/Slic3r_PE.config", settings + "; printer_technology = SLA\n"}});
    QTest::newRow("parts of a 3MF")
        << QByteArray("a.3mf")
        << kBlock.threeMf(
               {{kPartSettings, "<config><object id=\"1\">"
                                "<metadata type=\"object\" key=\"layer_height\" value=\"0.1\"/>"
                                "<metadata type=\"object\" key=\"raft_layers\" value=\"5\"/>"
                                "<volume firstid=\"0\" lastid=\"11\">"
                                "<metadata type=\"volume\" key=\"fill_density\" value=\"90%\"/>"
                                "<metadata type=\"volume\" key=\"perimeters\" value=\"9\"/>"
                                "</volume></object></config>"}});
    QTest::newRow("code at a height in a 3MF")
        << QByteArray("a.3mf")
        << kBlock.threeMf({{"Metadata/Prusa_Slicer_custom_gcode_per_print_z.xml",
                            "<custom_gcodes_per_print_z><code print_z=\"1\" type=\"4\" "
                            "extruder=\"1\" color=\"\" extra=\"M104 S999\" gcode=\"M104 S999\"/>"
                            "<mode value=\"SingleExtruder\"/></custom_gcodes_per_print_z>"}});
    QTest::newRow("a configuration in an AMF")
        << QByteArray("a.amf")
        << kBlock.amf("<metadata type=\"slic3rpe_config\">\n" + settings + "</metadata>");
    QTest::newRow("an object of an AMF")
        << QByteArray("a.amf")
        << kBlock.amf("<metadata type=\"slic3r.layer_height\">0.1</metadata>"
                      "<metadata type=\"slic3r.raft_layers\">5</metadata>");
}

void tst_SliceModels::aFileBringsNoProgramsAndNoSettings()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    SliceWorld f;

    const QByteArray gcode = sliced(f, name.constData(), model);

    QVERIFY(!QFileInfo::exists(m_evil));
    const SlicedGCode read = SlicedGCode::read(gcode);
    const SlicedGCode plain = SlicedGCode::read(sliced(f, "plain.stl", kBlock.binaryStl()));
    QCOMPARE(read.layers.size(), plain.layers.size());
    QCOMPARE(read.codes.at("M104"), plain.codes.at("M104"));
    QCOMPARE(read.toolCelsius, plain.toolCelsius);
    QCOMPARE(read.codes.count("M999"), std::size_t(0));
    QCOMPARE(read.features(), plain.features());
    // Where a line begins may differ.
    QVERIFY(std::abs(read.filament.at(0) / plain.filament.at(0) - 1) < 0.02);
    // All of it that a file could bring stands in no comment either.
    QVERIFY(!gcode.contains(m_evil.toUtf8()));
    QVERIFY(gcode.contains("\n; post_process = \n"));
}

QTEST_GUILESS_MAIN(tst_SliceModels)
#include "tst_slice_models.moc"
