#include "support/thrown_text.h"

#include <gcode/gcode_estimate.h>
#include <slicing/raft_tool.h>
#include <slicing/slice_settings.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek::service;

namespace {

constexpr int kRight = 0;
constexpr int kLeft = 1;
constexpr int kSame = -1;

SliceSettings settings(int modelTool, int raftTool, int supportTool)
{
    SliceSettings result;
    result.tools.resize(2);
    result.tools[kRight].celsius = 210;
    result.tools[kLeft].celsius = 240;
    result.modelTool = modelTool;
    result.raft = {true, static_cast<ExtraPart::Tool>(raftTool)};
    result.supports = {true, static_cast<ExtraPart::Tool>(supportTool)};
    return result;
}

/** Supports and raft by the right tool, the model by the left one. */
constexpr char kSliced[] = "M104 S210 T0\n"
                           "M104 S240 T1\n"
                           "M109 S210 T0\n"
                           "M109 S240 T1\n"
                           "T0\n"
                           ";LAYER_CHANGE\n"
                           ";TYPE:Support material\n"
                           "G1 X1 Y1 E2.00000\n"
                           "G1 E-1 F2400\n"
                           ";LAYER_CHANGE\n"
                           "G1 Z.5 F7800\n"
                           "G1 E-2 F2400\n"
                           "T1\n"
                           "G1 X2 Y2 F7800\n"
                           ";TYPE:Perimeter\n"
                           "G1 X3 Y3 E1.00000\n"
                           "; filament used [mm] = 2.00, 1.00\n"
                           "; filament used [cm3] = 0.01, 0.00\n"
                           "; end\n";

class SlicedText
{
public:
    explicit SlicedText(const QByteArray& text)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write");
    }

    QString path() const { return m_folder.filePath(QStringLiteral("sliced.gcode")); }

    QByteArray rewritten(const SliceSettings& settings) const
    {
        printRaftWithItsTool(settings, path(), [] { return true; });
        return text();
    }

    QByteArray text() const
    {
        QFile file(path());
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    int files() const { return QDir(m_folder.path()).entryList(QDir::Files).size(); }

private:
    QTemporaryDir m_folder;
};

} // namespace

class tst_RaftTool : public QObject
{
    Q_OBJECT

private slots:
    void saysWhenItIsNeeded_data();
    void saysWhenItIsNeeded();
    void changesTheToolBelowTheModel();
    void heatsWhatNothingElseUses();
    void pushesWhatTheOtherFilamentNeeds();
    void theModelsFirstToolPrintsARaftThatIsLikeIt();
    void bringsAllToolsToWhereTheSlicerBelievesThem();
    void leavesAFileWithoutARaft();
    void leavesTheFileWhenItIsCanceled();
    void tellsOfAFileThatIsNotThere();
};

void tst_RaftTool::saysWhenItIsNeeded_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("raft");
    QTest::addColumn<int>("supports");
    QTest::addColumn<bool>("isNeeded");

    QTest::newRow("both right") << kLeft << kRight << kRight << false;
    QTest::newRow("raft left, supports right") << kLeft << kLeft << kRight << true;
    QTest::newRow("both as the model") << kLeft << kSame << kSame << false;
    QTest::newRow("raft as the model, which the supports are") << kLeft << kSame << kLeft << false;
    QTest::newRow("raft as the model, which the supports are not")
        << kLeft << kSame << kRight << true;
    QTest::newRow("the model has both, and so have they") << kSame << kSame << kSame << false;
    QTest::newRow("the model has both, the supports one") << kSame << kSame << kRight << true;
}

void tst_RaftTool::saysWhenItIsNeeded()
{
    QFETCH(int, model);
    QFETCH(int, raft);
    QFETCH(int, supports);
    QFETCH(bool, isNeeded);
    SliceSettings wanted = settings(model, raft, supports);

    QCOMPARE(raftHasItsOwnTool(wanted), isNeeded);
    wanted.raft.isOn = false;
    QCOMPARE(raftHasItsOwnTool(wanted), false);
    wanted = settings(model, raft, supports);
    wanted.supports.isOn = false;
    QCOMPARE(raftHasItsOwnTool(wanted), false);
    wanted = settings(model, raft, supports);
    wanted.tools.resize(1);
    QCOMPARE(raftHasItsOwnTool(wanted), false);
}

void tst_RaftTool::changesTheToolBelowTheModel()
{
    const SlicedText file(kSliced);

    // The right tool has pulled back what the slicer believes; the left one stands as at first.
    QCOMPARE(file.rewritten(settings(kLeft, kLeft, kRight)),
             QByteArray("M104 S210 T0\n"
                        "M104 S240 T1\n"
                        "M109 S210 T0\n"
                        "M109 S240 T1\n"
                        "T1\n"
                        ";LAYER_CHANGE\n"
                        ";TYPE:Support material\n"
                        "G1 X1 Y1 E2.00000\n"
                        "G1 E-1 F2400\n"
                        "G1 E1.00000 F1800\n"
                        "T0\n"
                        "G1 E-1.00000 F1800\n"
                        ";LAYER_CHANGE\n"
                        "G1 Z.5 F7800\n"
                        "G1 E-2 F2400\n"
                        "T1\n"
                        "G1 X2 Y2 F7800\n"
                        ";TYPE:Perimeter\n"
                        "G1 X3 Y3 E1.00000\n"
                        "; filament used [mm] = 0.00, 3.00\n"
                        "; end\n"));
    QCOMPARE(file.files(), 1);
}

void tst_RaftTool::heatsWhatNothingElseUses()
{
    const SlicedText file("M104 S210\n"
                          "M109 S210\n"
                          ";LAYER_CHANGE\n"
                          ";TYPE:Support material\n"
                          "G1 X1 Y1 E2.00000\n"
                          ";LAYER_CHANGE\n"
                          ";TYPE:External perimeter\n"
                          "G1 X3 Y3 E1.00000\n"
                          "; filament used [mm] = 3.00\n");

    QCOMPARE(file.rewritten(settings(kRight, kLeft, kRight)),
             QByteArray("M104 S210\n"
                        "M109 S210\n"
                        "M104 S240 T1\n"
                        "M109 S240 T1\n"
                        "T1\n"
                        ";LAYER_CHANGE\n"
                        ";TYPE:Support material\n"
                        "G1 X1 Y1 E2.00000\n"
                        "T0\n"
                        ";LAYER_CHANGE\n"
                        ";TYPE:External perimeter\n"
                        "G1 X3 Y3 E1.00000\n"
                        "; filament used [mm] = 1.00, 2.00\n"));
}

void tst_RaftTool::pushesWhatTheOtherFilamentNeeds()
{
    const SlicedText file(kSliced);
    SliceSettings wanted = settings(kLeft, kLeft, kRight);
    wanted.tools[kRight].filamentDiameter = 3;
    wanted.tools[kLeft].filamentDiameter = 1.5;
    wanted.tools[kLeft].flow = 1.1;

    const QByteArray text = file.rewritten(wanted);

    QVERIFY(text.contains("G1 X1 Y1 E8.80000\n"));
    QVERIFY(text.contains("G1 X3 Y3 E1.00000\n"));
    QVERIFY(text.contains("; filament used [mm] = 0.00, 9.80\n"));
    // What is pulled back is a length whatever the filament.
    QVERIFY(text.contains("G1 E-1 F2400\n"));
}

void tst_RaftTool::theModelsFirstToolPrintsARaftThatIsLikeIt()
{
    const SlicedText file(kSliced);

    QVERIFY(file.rewritten(settings(kSame, kSame, kRight)).contains("M109 S240 T1\nT1\n;LAYER"));
}

void tst_RaftTool::bringsAllToolsToWhereTheSlicerBelievesThem()
{
    // Both tools print the raft, and both are pulled back when it ends.
    const SlicedText file("M109 S210 T0\n"
                          "M109 S240 T1\n"
                          "T0\n"
                          ";LAYER_CHANGE\n"
                          ";TYPE:Support material\n"
                          "G1 X1 Y1 E2.00000\n"
                          "G1 E-3 F2400\n"
                          "T1\n"
                          "G1 X2 E1.00000\n"
                          "G1 E-.5 F2400\n"
                          ";LAYER_CHANGE\n"
                          ";TYPE:Perimeter\n");

    QCOMPARE(file.rewritten(settings(kSame, kLeft, kSame)), QByteArray("M109 S210 T0\n"
                                                                       "M109 S240 T1\n"
                                                                       "T1\n"
                                                                       ";LAYER_CHANGE\n"
                                                                       ";TYPE:Support material\n"
                                                                       "G1 X1 Y1 E2.00000\n"
                                                                       "G1 E-3 F2400\n"
                                                                       "G1 E3.00000 F1800\n"
                                                                       "G1 X2 E1.00000\n"
                                                                       "G1 E-.5 F2400\n"
                                                                       "T0\n"
                                                                       "G1 E-3.00000 F1800\n"
                                                                       "T1\n"
                                                                       ";LAYER_CHANGE\n"
                                                                       ";TYPE:Perimeter\n"));
}

void tst_RaftTool::leavesAFileWithoutARaft()
{
    for (const char* text : {"", "T0\n;LAYER_CHANGE\n;TYPE:Perimeter\nG1 X1 E1\n",
                             "T0\n;LAYER_CHANGE\n;TYPE:Perimeter\nT1\n;TYPE:Support material\n"}) {
        const SlicedText file(text);
        QCOMPARE(file.rewritten(settings(kRight, kLeft, kRight)), QByteArray(text));
    }
}

void tst_RaftTool::leavesTheFileWhenItIsCanceled()
{
    const SlicedText file(kSliced);
    int asked = 0;

    // Once while it looks for the raft, once while it writes.
    for (const int patience : {0, 1}) {
        asked = 0;
        bool isCanceled = false;
        try {
            printRaftWithItsTool(settings(kLeft, kLeft, kRight), file.path(),
                                 [&] { return asked++ < patience; });
        } catch (const GCodeCanceled&) {
            isCanceled = true;
        }
        QVERIFY(isCanceled);
        QCOMPARE(asked, patience + 1);
        QCOMPARE(file.text(), QByteArray(kSliced));
        QCOMPARE(file.files(), 1);
    }
}

void tst_RaftTool::tellsOfAFileThatIsNotThere()
{
    const std::string text = thrownText([] {
        printRaftWithItsTool(settings(kLeft, kLeft, kRight),
                             QStringLiteral("/no/such/folder/x.gcode"), [] { return true; });
    });
    QVERIFY2(text.rfind("Cannot give the raft its extruder: ", 0) == 0, text.c_str());
}

QTEST_GUILESS_MAIN(tst_RaftTool)
#include "tst_raft_tool.moc"
