#include "apps/ostrand/log_model.h"
#include "apps/ostrand/log_view.h"

#include <trovek/log.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <thread>

using namespace ostrand;

namespace {

constexpr char kLogUnit[] = "tests\\ostrand\\log_view";

struct World
{
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
    LogModel model{20};
    LogView view{model, settings};

    QAbstractItemModel& shown() const { return *list().model(); }
    QTreeView& list() const { return *view.findChild<QTreeView*>(QStringLiteral("log")); }

    QStringList messages() const
    {
        QStringList texts;
        for (int row = 0; row < shown().rowCount(); ++row)
            texts.append(shown().index(row, LogModel::MessageColumn).data().toString());
        return texts;
    }
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

} // namespace

class tst_LogView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void showsEntriesAsTheyCome();
    void takesEntriesOfOtherThreads();
    void dropsTheOldestEntries();
    void boundsABurst();
    void showsOneLineForAnEntryWithLineBreaks();
    void filtersBySeverity();
    void findsAText();
    void followsTheNewestEntry();
    void staysWhereTheUserHasScrolled();
    void copiesTheSelectedLines();
    void savesWhatIsShown();
    void saysWhyItCannotSave();
    void savesWhereTheUserSays();
    void anEntryAfterTheModelsEndHarmsNobody();
};

void tst_LogView::showsEntriesAsTheyCome()
{
    World world;
    QAbstractItemModelTester tester(&world.model,
                                    QAbstractItemModelTester::FailureReportingMode::QtTest);
    TROVEK_LOG(1) << "first" << std::endl;
    TROVEK_LOG(0) << "second" << std::endl;
    QTRY_COMPARE(world.messages(),
                 QStringList({QStringLiteral("first"), QStringLiteral("second")}));
    QCOMPARE(world.shown().index(0, LogModel::SeverityColumn).data().toString(),
             QStringLiteral("Progress"));
    QCOMPARE(world.shown().index(1, LogModel::SeverityColumn).data().toString(),
             QStringLiteral("Error"));
    QCOMPARE(world.shown().index(0, LogModel::UnitColumn).data().toString(),
             QStringLiteral("tests\\ostrand\\log_view"));
}

void tst_LogView::takesEntriesOfOtherThreads()
{
    World world;
    std::thread other([] {
        for (int i = 0; i < 10; ++i)
            TROVEK_LOG(1) << "from afar " << i << std::endl;
    });
    other.join();
    QTRY_COMPARE(world.messages().size(), 10);
    QCOMPARE(world.messages().last(), QStringLiteral("from afar 9"));
}

void tst_LogView::dropsTheOldestEntries()
{
    World world;
    for (int i = 0; i < 15; ++i)
        TROVEK_LOG(1) << i << std::endl;
    QTRY_COMPARE(world.model.rowCount(), 15);
    for (int i = 15; i < 30; ++i)
        TROVEK_LOG(1) << i << std::endl;
    QTRY_COMPARE(world.messages().last(), QStringLiteral("29"));
    QCOMPARE(world.model.rowCount(), 20);
    QCOMPARE(world.messages().first(), QStringLiteral("10"));
}

void tst_LogView::boundsABurst()
{
    World world;
    for (int i = 0; i < 1000; ++i)
        TROVEK_LOG(1) << i << std::endl;
    QTRY_COMPARE(world.model.rowCount(), 20);
    QCOMPARE(world.messages().first(), QStringLiteral("980"));
    QCOMPARE(world.messages().last(), QStringLiteral("999"));
}

void tst_LogView::showsOneLineForAnEntryWithLineBreaks()
{
    World world;
    TROVEK_LOG(1) << "a\nb" << std::endl;
    QTRY_COMPARE(world.messages(), QStringList(QStringLiteral("a\u21B5b")));
}

void tst_LogView::filtersBySeverity()
{
    World world;
    auto* severity = world.view.findChild<QComboBox*>(QStringLiteral("logSeverity"));
    TROVEK_LOG(0) << "error" << std::endl;
    TROVEK_LOG(1) << "progress" << std::endl;
    TROVEK_LOG(2) << "detail" << std::endl;
    QTRY_COMPARE(world.model.rowCount(), 3);
    QCOMPARE(severity->currentText(), QStringLiteral("Errors and progress"));
    QCOMPARE(world.messages(), QStringList({QStringLiteral("error"), QStringLiteral("progress")}));
    QTest::keyClick(severity, Qt::Key_Down);
    QCOMPARE(severity->currentText(), QStringLiteral("Everything"));
    QCOMPARE(world.messages().size(), 3);
    QTest::keyClick(severity, Qt::Key_Home);
    QCOMPARE(severity->currentText(), QStringLiteral("Errors"));
    QCOMPARE(world.messages(), QStringList(QStringLiteral("error")));
}

void tst_LogView::findsAText()
{
    World world;
    TROVEK_LOG(1) << "Alpha" << std::endl;
    TROVEK_LOG(1) << "beta (%1)" << std::endl;
    QTRY_COMPARE(world.model.rowCount(), 2);
    auto* search = world.view.findChild<QLineEdit*>(QStringLiteral("logSearch"));
    QTest::keyClicks(search, QStringLiteral("BETA ("));
    QCOMPARE(world.messages(), QStringList(QStringLiteral("beta (%1)")));
    search->clear();
    QCOMPARE(world.messages().size(), 2);
}

void tst_LogView::followsTheNewestEntry()
{
    World world;
    world.view.resize(500, 160);
    world.view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&world.view));
    for (int i = 0; i < 15; ++i)
        TROVEK_LOG(1) << i << std::endl;
    QTRY_COMPARE(world.messages().size(), 15);
    const QScrollBar* bar = world.list().verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QTRY_COMPARE(bar->value(), bar->maximum());
}

void tst_LogView::staysWhereTheUserHasScrolled()
{
    World world;
    world.view.resize(500, 160);
    world.view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&world.view));
    for (int i = 0; i < 15; ++i)
        TROVEK_LOG(1) << i << std::endl;
    QScrollBar* bar = world.list().verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QTRY_COMPARE(bar->value(), bar->maximum());
    bar->setValue(0);
    TROVEK_LOG(1) << "late" << std::endl;
    QTRY_COMPARE(world.messages().last(), QStringLiteral("late"));
    QCoreApplication::processEvents();
    QCOMPARE(bar->value(), 0);
}

void tst_LogView::copiesTheSelectedLines()
{
    World world;
    world.view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&world.view));
    for (const char* text : {"one", "two", "three"})
        TROVEK_LOG(1) << text << std::endl;
    QTRY_COMPARE(world.messages().size(), 3);
    world.list().setFocus();
    world.list().selectAll();
    QTest::keyClick(&world.list(), Qt::Key_C, Qt::ControlModifier);
    const QStringList lines = QApplication::clipboard()->text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.first().endsWith(QStringLiteral("one")));
    QVERIFY(lines.last().endsWith(QStringLiteral("three")));
}

void tst_LogView::savesWhatIsShown()
{
    World world;
    TROVEK_LOG(0) << "gr\u00f6\u00dfe" << std::endl;
    TROVEK_LOG(2) << "detail" << std::endl;
    QTRY_COMPARE(world.model.rowCount(), 2);
    const QString path = world.folder.filePath(QStringLiteral("a.log"));
    QCOMPARE(world.view.saveTo(path), QString());
    const QByteArray content = contentOf(path);
    QCOMPARE(content.count('\n'), 1);
    QVERIFY(content.endsWith("gr\u00f6\u00dfe\n"));
}

void tst_LogView::saysWhyItCannotSave()
{
    World world;
    QVERIFY(!world.view.saveTo(world.folder.filePath(QStringLiteral("no/such/dir.log"))).isEmpty());
}

void tst_LogView::savesWhereTheUserSays()
{
    World world;
    world.view.show();
    TROVEK_LOG(1) << "kept" << std::endl;
    QTRY_COMPARE(world.messages().size(), 1);
    const QString path = world.folder.filePath(QStringLiteral("mine.log"));
    QTimer answer;
    connect(&answer, &QTimer::timeout, &world.view, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer.stop();
        auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Enter);
    });
    answer.start(10);
    QTest::mouseClick(world.view.findChild<QPushButton*>(QStringLiteral("saveLog")),
                      Qt::LeftButton);
    QVERIFY(contentOf(path).contains("kept\n"));
    QCOMPARE(world.settings.value(QStringLiteral("ostrand/lastLogDir")).toString(),
             world.folder.path());
}

void tst_LogView::anEntryAfterTheModelsEndHarmsNobody()
{
    {
        LogModel model(5);
        TROVEK_LOG(1) << "before" << std::endl;
    }
    TROVEK_LOG(1) << "after" << std::endl;
    QCoreApplication::processEvents();
}

QTEST_MAIN(tst_LogView)
#include "tst_log_view.moc"
