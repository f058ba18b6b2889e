#include "service/service_world.h"
#include "support/test_log.h"
#include "test_models.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QTest>

using namespace trovek;

/** Whole jobs with models, by the installed slicer. */
class tst_SliceJobs : public QObject
{
    Q_OBJECT

private slots:
    void slicesEveryFormat_data();
    void slicesEveryFormat();
};

namespace {

constexpr int kSliceMs = 60000;

struct Fixture
{
    Fixture()
    {
        world.start();
        client.connectToDaemon(world.address());
    }

    int slice(const std::string& model, const std::string& out, bool addStartEnd = false)
    {
        return client.slice(archetype, model, out, configuration, {"pla"}, addStartEnd);
    }

    Job conclude(int job)
    {
        if (!QTest::qWaitFor([&] { return client.jobFromID(job).conclusion() != JobNotConcluded; },
                             kSliceMs))
            qWarning("The job did not conclude");
        return client.jobFromID(job);
    }

    /** What is left of slices. */
    QStringList leftovers() const
    {
        return QDir(world.stateDir() + QStringLiteral("/slices"))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    TestLog log;
    ServiceWorld world;
    RecordingTrovek client;
    SlicerConfiguration configuration;
    MachineName archetype{ServiceWorld::kArchetype};
};

} // namespace

void tst_SliceJobs::slicesEveryFormat_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("model");

    const Block block;
    QTest::newRow("binary STL") << QStringLiteral("part.stl") << block.binaryStl();
    QTest::newRow("ASCII STL") << QStringLiteral("part.stl") << block.asciiStl();
    QTest::newRow("upper case") << QStringLiteral("PART.STL") << block.binaryStl();
    QTest::newRow("OBJ") << QStringLiteral("part.obj") << block.obj();
    QTest::newRow("3MF") << QStringLiteral("part.3mf") << block.threeMf();
    QTest::newRow("AMF") << QStringLiteral("part.amf") << block.amf();
}

void tst_SliceJobs::slicesEveryFormat()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, model);
    Fixture f;
    const std::string out = f.world.emptyFile(QStringLiteral("out.gcode"));

    const Job job = f.conclude(f.slice(f.world.writeFile(name, model), out));

    QCOMPARE(job.failure(), std::string());
    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.progress(), 100);
    const QByteArray gcode = ServiceWorld::read(out);
    QCOMPARE(gcode.count(";LAYER_CHANGE"), 10);
    QTRY_COMPARE(f.leftovers(), QStringList());
}

QTEST_GUILESS_MAIN(tst_SliceJobs)
#include "tst_slice_jobs.moc"
