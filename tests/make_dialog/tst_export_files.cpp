#include "support/test_log.h"
#include "support/thrown_text.h"

#include "src/make_dialog/export_files.h"

#include <trovek-ui/file_system.h>

#include <QFileInfo>
#include <QTest>

using namespace trovek;

class tst_ExportFiles : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { TemporaryDir::cleanManagedDirectories(); }

    void offersThreeKindsInOrder();
    void preselectsTheSavedOne_data();
    void preselectsTheSavedOne();
    void needsFilters();
    void createsAnEmptyFileThatTheServiceMayWrite();
    void createsEachFileInAFolderOfItsOwn();
    void removesAFileWithItsFolder();
    void tellsWhenTheFileCannotBeCreated();
};

void tst_ExportFiles::offersThreeKindsInOrder()
{
    TestLog log;
    QStringList descriptions;
    QStringList suffixes;
    for (const FileFilter& filter : exportFilters()) {
        descriptions.append(filter.description());
        suffixes.append(filter.suffixes());
    }

    QCOMPARE(descriptions,
             (QStringList{QStringLiteral("X3G, SD print for firmware 7.0 or later"),
                          QStringLiteral("S3G, SD print for firmware earlier than 7.0"),
                          QStringLiteral("GCode, slice only")}));
    QCOMPARE(suffixes,
             (QStringList{QStringLiteral("x3g"), QStringLiteral("s3g"), QStringLiteral("gcode")}));
}

void tst_ExportFiles::preselectsTheSavedOne_data()
{
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("suffix");

    QTest::newRow("nothing") << QString() << QStringLiteral("x3g");
    QTest::newRow("the last") << QStringLiteral("GCode, slice only (*.gcode)")
                              << QStringLiteral("gcode");
    QTest::newRow("description only")
        << QStringLiteral("GCode, slice only") << QStringLiteral("x3g");
    QTest::newRow("another") << QStringLiteral("STL (*.stl)") << QStringLiteral("x3g");
}

void tst_ExportFiles::preselectsTheSavedOne()
{
    TestLog log;
    QFETCH(QString, saved);
    const FileFilterList filters = preselectFilter(exportFilters(), saved);

    QTEST(filters.defaultFilter().suffixes().first(), "suffix");
    QCOMPARE(filters.filters().size(), std::size_t(3));
}

void tst_ExportFiles::needsFilters()
{
    TestLog log;
    QCOMPARE(thrownText([] { preselectFilter({}, QString()); }), std::string("Empty filters"));
}

void tst_ExportFiles::createsAnEmptyFileThatTheServiceMayWrite()
{
    TestLog log;
    const QFileInfo file(createServiceOutput(QStringLiteral("cube.x3g")));

    QVERIFY(file.isAbsolute());
    QVERIFY(file.isFile());
    QCOMPARE(file.fileName(), QStringLiteral("cube.x3g"));
    QCOMPARE(file.size(), qint64(0));
    QVERIFY(file.permission(QFileDevice::WriteOther));
    QVERIFY(file.permission(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
}

void tst_ExportFiles::createsEachFileInAFolderOfItsOwn()
{
    TestLog log;
    const QFileInfo first(createServiceOutput(QStringLiteral("cube.x3g")));
    const QFileInfo second(createServiceOutput(QStringLiteral("cube.x3g")));

    QVERIFY(first.absolutePath() != second.absolutePath());
    TemporaryDir::cleanManagedDirectories();
    QVERIFY(!QFileInfo::exists(first.absolutePath()));
    QVERIFY(!QFileInfo::exists(second.absolutePath()));
}

void tst_ExportFiles::removesAFileWithItsFolder()
{
    TestLog log;
    const QFileInfo file(createServiceOutput(QStringLiteral("cube.x3g")));
    const QFileInfo other(createServiceOutput(QStringLiteral("cube.x3g")));

    removeServiceOutput(file.filePath());
    QVERIFY(!QFileInfo::exists(file.absolutePath()));
    QVERIFY(QFileInfo::exists(other.filePath()));

    // Somebody else has removed it.
    removeServiceOutput(file.filePath());
    QVERIFY(QFile::remove(other.filePath()));
    removeServiceOutput(other.filePath());
    QVERIFY(QFileInfo::exists(other.absolutePath()));
}

void tst_ExportFiles::tellsWhenTheFileCannotBeCreated()
{
    TestLog log;
    QCOMPARE(thrownText([] { createServiceOutput(QStringLiteral("missing/cube.x3g")); }),
             std::string("Failed to create temporary file"));
}

QTEST_MAIN(tst_ExportFiles)
#include "tst_export_files.moc"
