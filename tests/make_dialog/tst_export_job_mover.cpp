#include "make_dialog/make_world.h"
#include "support/thrown_text.h"

#include <trovek-ui/export_job_mover.h>

#include <filesystem>

using namespace trovek;

namespace {

constexpr char kUnit[] = "src\\make_dialog\\export_job_mover";

/** A mover with one running job, number 5. */
struct World : MakeWorld
{
    explicit World(TrovekQt& connectedFacade)
        : MakeWorld(connectedFacade, {})
        , mover(facade)
    {
        setConclusion(5, JobNotConcluded);
        writeFile(source, "the result");
    }

    void setConclusion(int id, int conclusion)
    {
        Job::Data job;
        job.id = id;
        job.conclusion = static_cast<JobConclusion>(conclusion);
        service.setJob(job);
    }

    /** The mover has done all that follows. */
    void conclude(int id, int conclusion)
    {
        setConclusion(id, conclusion);
        // The mover was connected first, so it is through when this is heard.
        bool heard = false;
        QObject context;
        QObject::connect(&facade, &TrovekQt::jobConcluded, &context,
                         [&heard, id](int concluded) { heard = heard || concluded == id; });
        service.notifyJobConcluded(id);
        QTRY_VERIFY(heard);
    }

    const QString source = path("temporary.x3g");
    const QString destination = path("wanted.x3g");
    ExportJobMover mover;
};

} // namespace

class tst_ExportJobMover : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(QApplication::topLevelWidgets(), QWidgetList()); }

    void isOneForTheProcess();
    void ignoresAJobThatIsNoExport();
    void createsTheDestinationAtOnce();
    void replacesAFileThatStandsThere();
    void bringsTheResultWhenTheJobEnds_data();
    void bringsTheResultWhenTheJobEnds();
    void removesTheDestinationWhenTheJobFails_data();
    void removesTheDestinationWhenTheJobFails();
    void recreatesADestinationThatTheUserRemoved();
    void tellsWhenItCannotBeRecreated();
    void refusesAFolderThatDoesNotExist();
    void refusesAFileThatCannotBeOpened();
    void keepsTheFirstRecordWhenTheSecondIsRefused();
    void replacesAnEarlierRecordOfTheSameJob();
    void namesUnfinishedExportsInOrder();
    void tellsWhenTheSourceIsMissing();
    void tellsWhenTheSourceIsShorterThanItsSize();
    void tellsWhenTheSourceCannotBeOpened();
    void tellsWhenTheDiskIsFull();
    void copiesEveryByte_data();
    void copiesEveryByte();
    void survivesAServiceThatDoesNotKnowTheJob();
    void keepsRecordsOverALostLink();
    void bringsAnotherResultWhileAMessageIsOpen();
};

void tst_ExportJobMover::isOneForTheProcess()
{
    TestLog log;
    // Never destroyed, as the mover that it is made for.
    static auto* const facade = new TrovekQt;
    TrovekQt other;

    ExportJobMover& first = ExportJobMover::instance(*facade);

    QCOMPARE(&ExportJobMover::instance(other), &first);
    QCOMPARE(first.unfinishedExports(), QStringList());
}

void tst_ExportJobMover::ignoresAJobThatIsNoExport()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    world.service.clearRequests();

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::logOf(log, kUnit), QStringList());
    QCOMPARE(world.service.requests("get_job").size(), std::size_t(0));
}

void tst_ExportJobMover::createsTheDestinationAtOnce()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);

    world.mover.addExport(5, world.destination, world.source);

    QVERIFY(QFile::exists(world.destination));
    QCOMPARE(QFileInfo(world.destination).size(), qint64(0));
    QCOMPARE(world.mover.unfinishedExports(), QStringList{world.destination});
}

void tst_ExportJobMover::replacesAFileThatStandsThere()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    MakeWorld::writeFile(world.destination, "what was there before, and is longer");
    // Another name of the same file keeps its contents.
    const QString otherName = world.path("linked.x3g");
    std::filesystem::create_hard_link(world.destination.toStdString(), otherName.toStdString());

    world.mover.addExport(5, world.destination, world.source);
    QCOMPARE(QFileInfo(world.destination).size(), qint64(0));
    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray("the result"));
    QCOMPARE(MakeWorld::readFile(otherName), QByteArray("what was there before, and is longer"));
}

void tst_ExportJobMover::bringsTheResultWhenTheJobEnds_data()
{
    QTest::addColumn<int>("conclusion");

    QTest::newRow("ended") << int(JobEnded);
    QTest::newRow("reported as concluded, but with another value") << 17;
}

void tst_ExportJobMover::bringsTheResultWhenTheJobEnds()
{
    TestLog log;
    QFETCH(int, conclusion);
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);

    world.conclude(5, conclusion);

    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray("the result"));
    QCOMPARE(MakeWorld::readFile(world.source), QByteArray("the result"));
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
    QCOMPARE(MakeWorld::logOf(log, kUnit),
             (QStringList{
                 QStringLiteral("job id=5"),
                 QStringLiteral("srcPath=%1\ndstFile=%2").arg(world.source, world.destination)}));
}

void tst_ExportJobMover::removesTheDestinationWhenTheJobFails_data()
{
    QTest::addColumn<int>("conclusion");

    QTest::newRow("failed") << int(JobFailed);
    QTest::newRow("canceled") << int(JobCanceled);
}

void tst_ExportJobMover::removesTheDestinationWhenTheJobFails()
{
    TestLog log;
    QFETCH(int, conclusion);
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);

    world.conclude(5, conclusion);

    QVERIFY(!QFile::exists(world.destination));
    QVERIFY(QFile::exists(world.source));
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
    QCOMPARE(MakeWorld::logOf(log, kUnit).last(),
             QStringLiteral("Export job failed, deleting output file"));
}

void tst_ExportJobMover::recreatesADestinationThatTheUserRemoved()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);
    QVERIFY(QFile::remove(world.destination));

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray("the result"));
    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2),
             words({"Destination file does not exist", "Successfully reopened"}));
}

void tst_ExportJobMover::tellsWhenItCannotBeRecreated()
{
    TestLog log;
    log.expectError("Failed to re-open file for writing");
    TrovekQt facade;
    World world(facade);
    ModalDriver driver;
    driver.expectMessage(kExportJobMoverFailed);
    QVERIFY(QDir(world.folder.path()).mkdir(QStringLiteral("stick")));
    world.mover.addExport(5, world.path("stick/wanted.x3g"), world.source);
    QVERIFY(QDir(world.path("stick")).removeRecursively());

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::logOf(log, kUnit).mid(2),
             words({"Destination file does not exist", "Failed to re-open file for writing"}));
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
}

void tst_ExportJobMover::refusesAFolderThatDoesNotExist()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);

    QCOMPARE(thrownText(
                 [&] { world.mover.addExport(5, world.path("missing/wanted.x3g"), world.source); }),
             std::string("Destination directory does not exist"));
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
}

void tst_ExportJobMover::refusesAFileThatCannotBeOpened()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    // A folder of that name, which is not empty.
    QVERIFY(QDir(world.folder.path()).mkpath(QStringLiteral("wanted.x3g/inside")));

    QCOMPARE(thrownText([&] { world.mover.addExport(5, world.destination, world.source); }),
             std::string("Failed to open export file for writing"));
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
}

void tst_ExportJobMover::keepsTheFirstRecordWhenTheSecondIsRefused()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);

    thrownText([&] { world.mover.addExport(5, world.path("missing/other.x3g"), world.source); });

    QCOMPARE(world.mover.unfinishedExports(), QStringList{world.destination});
}

void tst_ExportJobMover::replacesAnEarlierRecordOfTheSameJob()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    const QString other = world.path("other.x3g");
    world.mover.addExport(5, world.destination, world.source);
    world.mover.addExport(5, other, world.source);
    QCOMPARE(world.mover.unfinishedExports(), QStringList{other});

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::readFile(other), QByteArray("the result"));
    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray());
}

void tst_ExportJobMover::namesUnfinishedExportsInOrder()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    for (const int id : {12, 3, 7})
        world.mover.addExport(id, world.path(qPrintable(QString::number(id))), world.source);

    QCOMPARE(world.mover.unfinishedExports(),
             (QStringList{world.path("3"), world.path("7"), world.path("12")}));
    world.conclude(7, JobCanceled);
    QCOMPARE(world.mover.unfinishedExports(), (QStringList{world.path("3"), world.path("12")}));
}

void tst_ExportJobMover::tellsWhenTheSourceIsMissing()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    ModalDriver driver;
    driver.expectMessage(kExportJobMoverFailed);
    const QString expected = world.source + QStringLiteral(" does not exist");
    log.expectError(expected);
    world.mover.addExport(5, world.destination, world.source);
    QVERIFY(QFile::remove(world.source));

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), expected);
    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray());
    QCOMPARE(world.mover.unfinishedExports(), QStringList());
}

void tst_ExportJobMover::tellsWhenTheSourceIsShorterThanItsSize()
{
    TestLog log;
    TrovekQt facade;
    World world(facade);
    ModalDriver driver;
    driver.expectMessage(kExportJobMoverFailed);
    // The kernel reports a page, and gives a few bytes.
    const QString source = QStringLiteral("/sys/kernel/mm/transparent_hugepage/enabled");
    if (QFileInfo(source).size() == 0)
        QSKIP("There is no such file here");
    const QString expected = QStringLiteral("Failed to read all %1 bytes from %2")
                                 .arg(QString::number(QFileInfo(source).size()), source);
    log.expectError(expected);
    world.mover.addExport(5, world.destination, source);

    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::logOf(log, kUnit).last(), expected);
}

void tst_ExportJobMover::tellsWhenTheSourceCannotBeOpened()
{
    TestLog log;
    const QTemporaryDir folder;
    // There, but no file.
    QFile destination(folder.filePath(QStringLiteral("wanted")));
    QVERIFY(destination.open(QIODevice::WriteOnly));

    QCOMPARE(ExportJobMover::copy(folder.path(), destination),
             QStringLiteral("Failed to open %1 for reading").arg(folder.path()));
}

void tst_ExportJobMover::tellsWhenTheDiskIsFull()
{
    TestLog log;
    QFile full(QStringLiteral("/dev/full"));
    if (!full.exists())
        QSKIP("There is no such device here");
    const QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("result of 100%2"));
    const QString expected =
        QStringLiteral("Failed to copy all data from ") + source + QStringLiteral(" to /dev/full");
    QVERIFY(full.open(QIODevice::WriteOnly));

    // So little that it stays in the buffer until it is flushed.
    MakeWorld::writeFile(source, "small");
    QCOMPARE(ExportJobMover::copy(source, full), expected);
    MakeWorld::writeFile(source, QByteArray(1 << 20, 'x'));
    QCOMPARE(ExportJobMover::copy(source, full), expected);
}

void tst_ExportJobMover::copiesEveryByte_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QByteArray all;
    for (int i = 0; i < 256; ++i)
        all.append(char(i));
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one zero") << QByteArray(1, '\0');
    QTest::newRow("every value, with line ends") << all + "\r\n\n\r";
    QTest::newRow("more than a buffer") << all.repeated(5000);
}

void tst_ExportJobMover::copiesEveryByte()
{
    TestLog log;
    QFETCH(QByteArray, bytes);
    const QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("source"));
    MakeWorld::writeFile(source, bytes);
    QFile destination(folder.filePath(QStringLiteral("wanted")));
    QVERIFY(destination.open(QIODevice::WriteOnly));

    QCOMPARE(ExportJobMover::copy(source, destination), QString());
    // On its way to the disk before the file is closed.
    QCOMPARE(MakeWorld::readFile(destination.fileName()), bytes);
}

void tst_ExportJobMover::survivesAServiceThatDoesNotKnowTheJob()
{
    TestLog log;
    log.expectError("never heard of it");
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);
    world.service.failNext("get_job", JsonRpcException("never heard of it"));

    world.conclude(5, JobEnded);

    QCOMPARE(world.mover.unfinishedExports(), QStringList{world.destination});
    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray());
}

void tst_ExportJobMover::keepsRecordsOverALostLink()
{
    TestLog log;
    log.allowErrors("");
    TrovekQt facade;
    World world(facade);
    world.mover.addExport(5, world.destination, world.source);

    world.loseConnection();
    QCOMPARE(world.mover.unfinishedExports(), QStringList{world.destination});
    world.service.start();
    world.connectFacade();
    world.conclude(5, JobEnded);

    QCOMPARE(MakeWorld::readFile(world.destination), QByteArray("the result"));
}

void tst_ExportJobMover::bringsAnotherResultWhileAMessageIsOpen()
{
    TestLog log;
    log.expectError("does not exist");
    TrovekQt facade;
    World world(facade);
    ModalDriver driver;
    const QString other = world.path("other.x3g");
    world.mover.addExport(5, world.destination, world.path("missing"));
    world.mover.addExport(6, other, world.source);
    driver.expect([&](QDialog* box) {
        world.conclude(6, JobEnded);
        QCOMPARE(MakeWorld::readFile(other), QByteArray("the result"));
        pressButton(box, QStringLiteral("&OK"));
    });

    world.conclude(5, JobEnded);

    QCOMPARE(world.mover.unfinishedExports(), QStringList());
}

QTEST_MAIN(tst_ExportJobMover)
#include "tst_export_job_mover.moc"
