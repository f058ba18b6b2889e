#include "support/thrown_text.h"
#include "test_models.h"

#include <service/gcode/gcode_estimate.h>
#include <service/slicing/model_file.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek;
using namespace trovek::service;

/** What of a model reaches the slicer. */
class tst_ModelFile : public QObject
{
    Q_OBJECT

private slots:
    void knowsModelsByTheirNames_data();
    void knowsModelsByTheirNames();
    void copiesShapesAsTheyAre_data();
    void copiesShapesAsTheyAre();
    void copiesFromTheBeginning();
    void showsTheSlicerThatABinaryStlIsNone_data();
    void showsTheSlicerThatABinaryStlIsNone();
    void looksIntoThings_data();
    void looksIntoThings();
    void leavesSettingsOutOfA3mf_data();
    void leavesSettingsOutOfA3mf();
    void keepsThePartsOfA3mf();
    void dropsToolsWhereAllPartsHaveOne();
    void dropsToolsPaintedOnA3mf();
    void findsPaintThatLiesInTwoPieces();
    void leavesSettingsOutOfAnAmf_data();
    void leavesSettingsOutOfAnAmf();
    void readsAPackedAmf();
    void readsAnAmfOfManyElements();
    void refusesWhatIsNone_data();
    void refusesWhatIsNone();
    void stopsWhenItIsCanceled_data();
    void stopsWhenItIsCanceled();
    void aFullDiskIsTold();
};

namespace {

const Block kBlock;

/** Copies bytes as a file of some name. */
struct Copy
{
    PartTools tools = PartTools::Kept;

    QString make(
        const QByteArray& bytes, const char* name,
        const std::function<bool()>& goOn = [] { return true; })
    {
        QFile input(dir.filePath(QString::fromLatin1(name)));
        if (!input.open(QIODevice::ReadWrite | QIODevice::Truncate) ||
            input.write(bytes) != bytes.size())
            throw std::runtime_error("The test cannot write its model");
        QDir(dir.path()).mkdir(QStringLiteral("copy"));
        const QString path = copyModel(input, input.fileName().toStdString(),
                                       dir.filePath(QStringLiteral("copy")), tools, goOn);
        return path;
    }

    QByteArray bytes(const QByteArray& model, const char* name)
    {
        QFile copy(make(model, name));
        copy.open(QIODevice::ReadOnly);
        return copy.readAll();
    }

    QTemporaryDir dir;
};

QByteArray nothingLeft(QByteArray bytes, const QByteArray& part)
{
    return bytes.contains(part) ? bytes : QByteArray();
}

const char kPartSettings[] = "Metadata/Slic3r_PE_model.config";

} // namespace

void tst_ModelFile::knowsModelsByTheirNames_data()
{
    QTest::addColumn<bool>("isModel");

    for (const char* const name :
         {"/a/b.stl", "/a/b.STL", "/a/b.obj", "/a/b.3mf", "/a/b.amf", "/a/b.thing", "/a/b.x.stl"})
        QTest::newRow(name) << true;
    for (const char* const name : {"/a/b.gcode", "/a/stl", "/a.stl/b", "/a/b.stl.gcode", "", "/"})
        QTest::newRow(*name ? name : "nothing") << false;
}

void tst_ModelFile::knowsModelsByTheirNames()
{
    QFETCH(bool, isModel);
    const std::string name = QTest::currentDataTag();
    QCOMPARE(isModelName(name == "nothing" ? std::string() : name), isModel);
}

void tst_ModelFile::copiesShapesAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");

    QTest::newRow("OBJ") << QByteArray("a.obj") << kBlock.obj();
    QTest::newRow("ASCII STL") << QByteArray("a.stl") << kBlock.asciiStl();
    QTest::newRow("several buffers")
        << QByteArray("a.obj") << QByteArray("v 1 2 3\n").repeated(99999);
    QTest::newRow("what is none is the slicer's to tell")
        << QByteArray("a.stl") << QByteArray(300, 'x');
    QTest::newRow("hardly anything") << QByteArray("a.stl") << QByteArray("x");
}

void tst_ModelFile::copiesShapesAsTheyAre()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    Copy copy;

    const QString path = copy.make(model, name.constData());

    QCOMPARE(path, copy.dir.filePath(QStringLiteral("copy/model.") +
                                     QFileInfo(QString::fromLatin1(name)).suffix()));
    QCOMPARE(copy.bytes(model, name.constData()), model);
}

void tst_ModelFile::copiesFromTheBeginning()
{
    // The file stands at its end when it has been written.
    Copy copy;
    QCOMPARE(copy.bytes("v 0 0 0\n", "a.OBJ"), QByteArray("v 0 0 0\n"));
}

void tst_ModelFile::showsTheSlicerThatABinaryStlIsNone_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<int>("changedAt");
    QTest::addColumn<QByteArray>("changed");

    const QByteArray binary = kBlock.binaryStl();
    QByteArray solid = binary;
    solid.replace(0, 5, "solid");
    QByteArray text = kBlock.asciiStl();
    text.replace("solid block\n", "solid " + QByteArray(100, 'x') + "\xc3\xa4\n");
    QTest::newRow("binary") << binary << 133 << QByteArray("\xff");
    QTest::newRow("binary that begins like a text") << solid << 133 << QByteArray("\xff");
    QTest::newRow("a text with an umlaut") << text << 106 << QByteArray("??");
}

void tst_ModelFile::showsTheSlicerThatABinaryStlIsNone()
{
    QFETCH(QByteArray, model);
    QFETCH(int, changedAt);
    QFETCH(QByteArray, changed);
    Copy copy;

    const QByteArray made = copy.bytes(model, "a.stl");

    QCOMPARE(made.mid(changedAt, changed.size()), changed);
    QCOMPARE(made, QByteArray(model).replace(changedAt, changed.size(), changed));
}

void tst_ModelFile::looksIntoThings_data()
{
    QTest::addColumn<QByteArray>("thing");
    QTest::addColumn<QByteArray>("result");

    const QByteArray refusal =
        "Things of this kind cannot be sliced; save the model as STL, OBJ, 3MF or AMF";
    QTest::newRow("a 3MF") << kBlock.threeMf() << QByteArray("3mf");
    QTest::newRow("an AMF") << kBlock.amf() << QByteArray("amf");
    QTest::newRow("a packed AMF") << zipOf({{"part.amf", kBlock.amf()}}) << QByteArray("amf");
    QTest::newRow("another archive") << zipOf({{"readme.txt", "x"}}) << refusal;
    QTest::newRow("an archive of nothing") << zipOf({}) << refusal;
    QTest::newRow("a text") << QByteArray("hello") << refusal;
    QTest::newRow("an archive that is cut off")
        << kBlock.threeMf().left(500) << QByteArray("The model cannot be read: it is no archive");
}

void tst_ModelFile::looksIntoThings()
{
    QFETCH(QByteArray, thing);
    QFETCH(QByteArray, result);
    Copy copy;
    QString path;

    const std::string thrown = thrownText([&] { path = copy.make(thing, "a.thing"); });

    QCOMPARE(path.isEmpty() ? QByteArray::fromStdString(thrown)
                            : QFileInfo(path).suffix().toLatin1(),
             result);
}

void tst_ModelFile::leavesSettingsOutOfA3mf_data()
{
    QTest::addColumn<QByteArray>("name");

    for (const char* const name :
         {"Metadata/Slic3r_PE.config", "metadata/slic3r_pe.CONFIG", "Metadata\\Slic3r_PE.config",
          "Metadata/Slic3r_PE_layer_heights_profile.txt",
          "Metadata/Prusa_Slicer_layer_config_ranges.xml",
          "Metadata/Prusa_Slicer_custom_gcode_per_print_z.xml", "Metadata/thumbnail.png",
          "Metadata/project_settings.config", "3D/../Metadata/Slic3r_PE.config",
          "3D/Slic3r_PE.config", "/Metadata/Slic3r_PE.config"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_ModelFile::leavesSettingsOutOfA3mf()
{
    QFETCH(QByteArray, name);
    Copy copy;

    const QByteArray made =
        copy.bytes(kBlock.threeMf({{name, "; post_process = /bin/evil\n"}}), "a.3mf");

    QCOMPARE(nothingLeft(made, "evil"), QByteArray());
    QCOMPARE(filesOf(made), filesOf(kBlock.threeMf()));
}

void tst_ModelFile::keepsThePartsOfA3mf()
{
    const QByteArray settings =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE config [<!ENTITY evil \"evil\">]>\n"
        "<config><object id=\"1\" instances_count=\"1\">\n"
        "<metadata type=\"object\" key=\"name\" value=\"K&#246;rper\"/>"
        "<metadata type=\"object\" key=\"extruder\" value=\"2\"/>"
        "<metadata type=\"object\" key=\"layer_height\" value=\"evil\"/>"
        "<metadata type=\"object\" key=\"post_process\" value=\"&evil;\"/>"
        "<volume firstid=\"0\" lastid=\"11\">"
        "<metadata type=\"volume\" key=\"volume_type\" value=\"ModelPart\"/>"
        "<metadata type=\"volume\" key=\"matrix\" value=\"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\"/>"
        "<metadata type=\"volume\" key=\"modifier\" value=\"0\"/>"
        "<metadata type=\"volume\" key=\"perimeter_speed\" value=\"evil\"/>"
        "<metadata type=\"volume\" key=\"source_file\" value=\"evil\"/>"
        "<metadata type=\"volume\" KEY=\"extruder\" value=\"evil\"/>"
        "<mesh edges_fixed=\"evil\"/>"
        "</volume></object><evil><volume/></evil></config>";
    Copy copy;

    const auto files = filesOf(copy.bytes(kBlock.threeMf({{kPartSettings, settings}}), "a.3mf"));

    QCOMPARE(files.size(), std::size_t(4));
    QCOMPARE(files[3].first, QByteArray(kPartSettings));
    QCOMPARE(files[3].second,
             QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                        "<config><object id=\"1\" instances_count=\"1\">"
                        "<metadata type=\"object\" key=\"name\" value=\"K\xc3\xb6rper\"/>"
                        "<metadata type=\"object\" key=\"extruder\" value=\"2\"/>"
                        "<volume firstid=\"0\" lastid=\"11\">"
                        "<metadata type=\"volume\" key=\"volume_type\" value=\"ModelPart\"/>"
                        "<metadata type=\"volume\" key=\"matrix\" "
                        "value=\"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\"/>"
                        "<metadata type=\"volume\" key=\"modifier\" value=\"0\"/>"
                        "</volume></object></config>\n"));
}

void tst_ModelFile::dropsToolsWhereAllPartsHaveOne()
{
    const QByteArray settings =
        "<config><object id=\"1\"><metadata type=\"object\" key=\"extruder\" value=\"2\"/>"
        "<metadata type=\"object\" key=\"name\" value=\"x\"/></object></config>";
    const QByteArray amf = kBlock.amf("<metadata type=\"slic3r.extruder\">2</metadata>"
                                      "<metadata type=\"name\">x</metadata>");
    const QByteArray threeMf = kBlock.threeMf({{kPartSettings, settings}});
    Copy kept;
    QVERIFY(kept.bytes(amf, "a.amf").contains("extruder"));
    QVERIFY(filesOf(kept.bytes(threeMf, "a.3mf"))[3].second.contains("extruder"));
    Copy dropped;
    dropped.tools = PartTools::Dropped;

    QVERIFY(!dropped.bytes(amf, "a.amf").contains("extruder"));
    QVERIFY(dropped.bytes(amf, "a.amf").contains("<metadata type=\"name\">x</metadata>"));
    QCOMPARE(
        filesOf(dropped.bytes(threeMf, "a.3mf"))[3].second,
        QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?><config><object id=\"1\">"
                   "<metadata type=\"object\" key=\"name\" value=\"x\"/></object></config>\n"));
}

void tst_ModelFile::dropsToolsPaintedOnA3mf()
{
    QByteArray shape = kBlock.modelXml();
    shape.replace("<triangle ", "<triangle slic3rpe:mmu_segmentation=\"8\" ");
    QVERIFY(shape.contains("mmu_segmentation"));
    // So much before the paint that it comes in several pieces.
    shape.replace("<mesh>", "<mesh><!--" + QByteArray(3 << 20, 'x') + "-->");
    const QByteArray painted = zipOf({{"3D/3dmodel.model", shape}});

    Copy kept;
    QCOMPARE(filesOf(kept.bytes(painted, "a.3mf"))[0].second, shape);
    Copy dropped;
    dropped.tools = PartTools::Dropped;
    const auto files = filesOf(dropped.bytes(painted, "a.3mf"));
    QCOMPARE(files.size(), std::size_t(1));
    QCOMPARE(files[0].first, QByteArray("3D/3dmodel.model"));
    QCOMPARE(files[0].second.size(), shape.size());
    QCOMPARE(files[0].second, shape.replace("mmu_seg", "not_seg"));
    // One that is not painted stays as it is packed.
    QCOMPARE(dropped.bytes(kBlock.threeMf(), "b.3mf"), kept.bytes(kBlock.threeMf(), "b.3mf"));
}

void tst_ModelFile::findsPaintThatLiesInTwoPieces()
{
    constexpr int kPieceBytes = 1 << 18;
    QByteArray shape = "<model><!--";
    shape += QByteArray(kPieceBytes - shape.size() - 8, 'x') + "mmu_segmentation--></model>";
    Copy dropped;
    dropped.tools = PartTools::Dropped;

    const auto files = filesOf(dropped.bytes(zipOf({{"3D/a.model", shape}}), "a.3mf"));

    QVERIFY(!files[0].second.contains("mmu_segmentation"));
    QCOMPARE(files[0].second.size(), shape.size());
}

void tst_ModelFile::leavesSettingsOutOfAnAmf_data()
{
    QTest::addColumn<QByteArray>("metadata");

    QTest::newRow("a whole configuration")
        << QByteArray("<metadata type=\"slic3rpe_config\">\n; post_process = evil\n</metadata>");
    QTest::newRow("a setting") << QByteArray(
        "<metadata type=\"slic3r.post_process\">evil</metadata>");
    QTest::newRow("disguised") << QByteArray(
        "<metadata type=\"slic3rpe&#95;config\">; post_process = evil</metadata>");
    QTest::newRow("in other quotes")
        << QByteArray("<metadata   type = 'slic3r.layer_height' >evil</metadata >");
    QTest::newRow("in a section of its own")
        << QByteArray("<metadata type=\"slic3rpe_config\"><![CDATA[evil]]></metadata>");
    QTest::newRow("by heights") << QByteArray(
        "<layer_config_ranges><range id=\"0;5\"><option opt_key=\"layer_height\">evil"
        "</option></range></layer_config_ranges>");
    QTest::newRow("code by heights")
        << QByteArray("<custom_code_per_height><code height=\"1\" gcode=\"evil\" extra=\"evil\"/>"
                      "</custom_code_per_height>");
    QTest::newRow("an attribute twice by a prefix")
        << QByteArray("<metadata type=\"evil\" x:type=\"name\">evil</metadata>");
    QTest::newRow("whatever else") << QByteArray("<evil evil=\"evil\">evil</evil>");
    QTest::newRow("a comment") << QByteArray("<!-- evil -->");
}

void tst_ModelFile::leavesSettingsOutOfAnAmf()
{
    QFETCH(QByteArray, metadata);
    Copy copy;

    const QByteArray made =
        copy.bytes(kBlock.amf("<metadata type=\"name\">a &lt; b</metadata>" + metadata +
                              "<metadata type=\"slic3r.extruder\">2</metadata>"),
                   "a.amf");

    QCOMPARE(nothingLeft(made, "evil"), QByteArray());
    QCOMPARE(made, copy.bytes(kBlock.amf("<metadata type=\"name\">a &lt; b</metadata>"
                                         "<metadata type=\"slic3r.extruder\">2</metadata>"),
                              "a.amf"));
    QVERIFY(made.contains("<metadata type=\"name\">a &lt; b</metadata>"
                          "<metadata type=\"slic3r.extruder\">2</metadata>"));
    QCOMPARE(made.count("<vertex>"), 8);
    QCOMPARE(made.count("<triangle>"), 12);
    QVERIFY(made.contains("<coordinates><x>10</x><y>10</y><z>2</z></coordinates>"));
}

void tst_ModelFile::readsAPackedAmf()
{
    Copy copy;
    const QByteArray plain = copy.bytes(kBlock.amf(), "a.amf");

    QCOMPARE(copy.bytes(zipOf({{"x.txt", "x"}, {"part.AMF", kBlock.amf()}}), "a.zip.amf"), plain);

    QCOMPARE(QDir(copy.dir.filePath(QStringLiteral("copy"))).entryList(QDir::Files),
             QStringList(QStringLiteral("model.amf")));
}

void tst_ModelFile::readsAnAmfOfManyElements()
{
    const QByteArray name = "<metadata type=\"name\">x</metadata>";
    Copy copy;

    QCOMPARE(copy.bytes(kBlock.amf(name.repeated(500)), "a.amf").count(name), 500);
}

void tst_ModelFile::refusesWhatIsNone_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<QByteArray>("text");

    const QByteArray cannot = "The model cannot be read: ";
    for (const char* const name : {"a.stl", "a.obj", "a.3mf", "a.amf", "a.thing"}) {
        QTest::addRow("nothing, %s", name)
            << QByteArray(name) << QByteArray() << QByteArray("The model is empty");
    }
    QTest::newRow("a text as 3MF")
        << QByteArray("a.3mf") << QByteArray("hello") << cannot + "it is no archive";
    QTest::newRow("another archive as 3MF")
        << QByteArray("a.3mf") << zipOf({{"a.txt", "x"}}) << cannot + "it is not in the format 3MF";
    QTest::newRow("a 3MF with an empty model")
        << QByteArray("a.3mf") << zipOf({{"3D/3dmodel.model", ""}})
        << cannot + "it is not in the format 3MF";
    QTest::newRow("a 3MF whose parts make no sense")
        << QByteArray("a.3mf") << kBlock.threeMf({{kPartSettings, "<config><object></config>"}})
        << cannot + "it is damaged";
    QTest::newRow("a text as AMF")
        << QByteArray("a.amf") << QByteArray("hello") << cannot + "it is damaged";
    QTest::newRow("another XML as AMF")
        << QByteArray("a.amf") << QByteArray("<svg/>") << cannot + "it is not in the format AMF";
    QTest::newRow("an AMF that is cut off")
        << QByteArray("a.amf") << kBlock.amf().left(600) << cannot + "it is damaged";
    QTest::newRow("an archive without an AMF")
        << QByteArray("a.amf") << kBlock.threeMf() << cannot + "it is not in the format AMF";
    const QByteArray encrypted = withNumber(kBlock.threeMf(), 8, 1, 1);
    QTest::newRow("encrypted") << QByteArray("a.3mf") << encrypted << cannot + "it is encrypted";
    QTest::newRow("above 4 GiB") << QByteArray("a.3mf")
                                 << withNumber(kBlock.threeMf(), 24, 0xffffffff)
                                 << cannot + "it is too large";
    QTest::newRow("above 2 GiB") << QByteArray("a.3mf")
                                 << withNumber(kBlock.threeMf(), 24, 0x8fffffff)
                                 << cannot + "it is too large";
    QTest::newRow("an AMF above 2 GiB")
        << QByteArray("a.amf") << withNumber(zipOf({{"a.amf", kBlock.amf()}}), 24, 0x8fffffff)
        << cannot + "it is too large";
    QTest::newRow("parts above 64 MiB")
        << QByteArray("a.3mf")
        << withNumber(zipOf({{kPartSettings, "<config/>"}}), 24, (64 << 20) + 1)
        << cannot + "it is too large";
    QTest::newRow("more than ten thousand files")
        << QByteArray("a.3mf")
        << zipOf(std::vector<std::pair<QByteArray, QByteArray>>(10001, {"3D/a.model", "x"}))
        << cannot + "it is too large";
    // Ten thousand of these would fill a disk from a file of a few megabytes.
    const QByteArray block = kBlock.threeMf();
    const QByteArray shared = withNumber(block, 20, static_cast<quint32>(block.size() / 2));
    QTest::newRow("files that lie in each other")
        << QByteArray("a.3mf") << shared << cannot + "it is damaged";
    QTest::newRow("an AMF with a text that does not end")
        << QByteArray("a.amf") << QByteArray("<amf><x>") + QByteArray(17 << 20, '1')
        << cannot + "it is too large";
    QTest::newRow("an AMF whose elements stand in each other")
        << QByteArray("a.amf")
        << "<amf>" + QByteArray("<x>").repeated(1000) + QByteArray("</x>").repeated(1000) + "</amf>"
        << cannot + "it is damaged";
}

void tst_ModelFile::refusesWhatIsNone()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    QFETCH(QByteArray, text);
    Copy copy;

    QCOMPARE(QByteArray::fromStdString(thrownText([&] { copy.make(model, name.constData()); })),
             text);
}

void tst_ModelFile::stopsWhenItIsCanceled_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("model");

    QTest::newRow("STL") << QByteArray("a.stl") << kBlock.binaryStl();
    QTest::newRow("3MF") << QByteArray("a.3mf") << kBlock.threeMf();
    QTest::newRow("AMF") << QByteArray("a.amf")
                         << kBlock.amf(QByteArray("<metadata type=\"name\"/>").repeated(5000));
    QTest::newRow("packed AMF") << QByteArray("a.amf") << zipOf({{"a.amf", kBlock.amf()}});
}

void tst_ModelFile::stopsWhenItIsCanceled()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, model);
    Copy copy;

    QVERIFY_EXCEPTION_THROWN(copy.make(model, name.constData(), [] { return false; }),
                             GCodeCanceled);
}

void tst_ModelFile::aFullDiskIsTold()
{
    QTemporaryDir dir;
    QFile input(dir.filePath(QStringLiteral("a.obj")));
    QVERIFY(input.open(QIODevice::ReadWrite));
    input.write(kBlock.obj());
    // What stands there under the copy's name takes nothing.
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), dir.filePath(QStringLiteral("model.obj"))));

    QCOMPARE(thrownText([&] {
                 copyModel(input, "a.obj", dir.path(), PartTools::Kept, [] { return true; });
             }),
             std::string("Cannot copy the model: No space left on device"));
}

QTEST_GUILESS_MAIN(tst_ModelFile)
#include "tst_model_file.moc"
