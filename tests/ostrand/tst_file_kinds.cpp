#include "apps/ostrand/file_kinds.h"
#include "apps/ostrand/file_view.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;

class tst_FileKinds : public QObject
{
    Q_OBJECT

private slots:
    void tellsTheKindByTheSuffix_data();
    void tellsTheKindByTheSuffix();
    void offersWhatCanBeOpened();
    void showsAnInvitationFirst();
    void showsAFile();
    void offersToMakeAModel();
    void saysWhyAnUnknownKindCannotBeMade();
    void saysThatAFileHasGone();
    void showsAnOddNameAsItIs();
};

namespace {

QString write(const QTemporaryDir& folder, const QString& name, const QByteArray& content)
{
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString textOf(const FileView& view, const char* label)
{
    return view.findChild<QLabel*>(QLatin1String(label))->text();
}

QPushButton& makeButton(const FileView& view)
{
    return *view.findChild<QPushButton*>(QStringLiteral("makeButton"));
}

} // namespace

void tst_FileKinds::tellsTheKindByTheSuffix_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, FileKind kind, const char* text) {
        QTest::newRow(name) << QString::fromLatin1(name) << static_cast<int>(kind)
                            << QString::fromLatin1(text);
    };
    row("a.gcode", FileKind::GCode, "G-code");
    row("a.GCODE", FileKind::GCode, "G-code");
    row("a.b.gco", FileKind::GCode, "G-code");
    row("a.g", FileKind::GCode, "G-code");
    row("a.stl", FileKind::Model, "3D model");
    row("a.OBJ", FileKind::Model, "3D model");
    row("a.3mf", FileKind::Model, "3D model");
    row("a.amf", FileKind::Model, "3D model");
    row("a.txt", FileKind::Unknown, "Unknown kind of file");
    row("gcode", FileKind::Unknown, "Unknown kind of file");
    row("a.gcode.bak", FileKind::Unknown, "Unknown kind of file");
}

void tst_FileKinds::tellsTheKindByTheSuffix()
{
    QFETCH(QString, name);
    QFETCH(int, kind);
    QFETCH(QString, text);
    QCOMPARE(static_cast<int>(fileKindOf(name)), kind);
    QCOMPARE(fileKindText(fileKindOf(name)), text);
}

void tst_FileKinds::offersWhatCanBeOpened()
{
    QCOMPARE(openFileFilters().joinedFilterString(),
             QStringLiteral("G-code and models (*.gcode *.gco *.g *.stl *.obj *.3mf *.amf);;"
                            "G-code (*.gcode *.gco *.g);;3D models (*.stl *.obj *.3mf *.amf)"));
}

void tst_FileKinds::showsAnInvitationFirst()
{
    FileView view;
    QSignalSpy open(&view, &FileView::openRequested);
    view.show();
    QCOMPARE(textOf(view, "invitation"), QStringLiteral("Open a model or a G-code file"));
    QTest::mouseClick(view.findChild<QPushButton*>(QStringLiteral("openButton")), Qt::LeftButton);
    QCOMPARE(open.count(), 1);
    QVERIFY(!makeButton(view).isVisible());
}

void tst_FileKinds::showsAFile()
{
    QTemporaryDir folder;
    FileView view;
    QSignalSpy make(&view, &FileView::makeRequested);
    view.show();
    view.setFile(write(folder, QStringLiteral("part.gcode"), QByteArray(1234, ' ')));
    QCOMPARE(textOf(view, "fileName"), QStringLiteral("part.gcode"));
    QCOMPARE(textOf(view, "fileFolder"), folder.path());
    QCOMPARE(textOf(view, "fileKind"), QStringLiteral("G-code"));
    QCOMPARE(textOf(view, "fileSize"), QStringLiteral("1.2 kB"));
    QVERIFY(makeButton(view).isEnabled());
    QVERIFY(makeButton(view).isDefault());
    QTest::mouseClick(&makeButton(view), Qt::LeftButton);
    QCOMPARE(make.count(), 1);
}

void tst_FileKinds::offersToMakeAModel()
{
    QTemporaryDir folder;
    FileView view;
    view.show();
    view.setFile(write(folder, QStringLiteral("part.stl"), "solid"));
    QCOMPARE(textOf(view, "fileKind"), QStringLiteral("3D model"));
    QCOMPARE(textOf(view, "fileRemark"), QString());
    QVERIFY(makeButton(view).isEnabled());
}

void tst_FileKinds::saysWhyAnUnknownKindCannotBeMade()
{
    QTemporaryDir folder;
    FileView view;
    view.show();
    view.setFile(write(folder, QStringLiteral("part.txt"), "solid"));
    const QString reason = QStringLiteral(
        "Ostrand does not know this kind of file. It prints models and G-code files.");
    QCOMPARE(textOf(view, "fileRemark"), reason);
    QVERIFY(!makeButton(view).isEnabled());
    QCOMPARE(makeButton(view).toolTip(), reason);
}

void tst_FileKinds::saysThatAFileHasGone()
{
    QTemporaryDir folder;
    const QString path = write(folder, QStringLiteral("part.gcode"), "G28");
    QFile::remove(path);
    FileView view;
    view.setFile(path);
    QCOMPARE(textOf(view, "fileRemark"), QStringLiteral("This file no longer exists."));
    QVERIFY(!makeButton(view).isEnabled());
}

void tst_FileKinds::showsAnOddNameAsItIs()
{
    QTemporaryDir folder;
    FileView view;
    view.setFile(write(folder, QStringLiteral("<b>&a %1.gcode"), "G28"));
    QCOMPARE(textOf(view, "fileName"), QStringLiteral("<b>&a %1.gcode"));
    QCOMPARE(view.findChild<QLabel*>(QStringLiteral("fileName"))->textFormat(), Qt::PlainText);
}

QTEST_MAIN(tst_FileKinds)
#include "tst_file_kinds.moc"
