#include "service/service_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/geometry/mesh.h>
#include <service/geometry/point_cloud.h>
#include <service/scanner/shape_list.h>

#include <trovek/wire.h>

#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <memory>

using namespace trovek;
using namespace trovek::service;
using geometry::PointCloud;

namespace {

constexpr ShapeKind kCloud = ShapeKind::PointCloud;

using Texts = std::vector<std::string>;

class FakeClient : public Client
{
public:
    void close() override {}
};

/** Holds a piece of work until the test lets it go; asks meanwhile whether it is canceled. */
struct Gate
{
    ShapeWork work(int points)
    {
        return [this, points](ShapeTask& task) {
            entered.release();
            while (!opened.tryAcquire(1, 5)) {
                if (!task.progress(0.5))
                    throw geometry::Canceled();
            }
            task.result =
                Shape(PointCloud{std::vector<geometry::Vector>(std::size_t(points)), {}, {}});
            return Json::Value(points);
        };
    }

    QSemaphore entered;
    QSemaphore opened;
};

/** Answers with the number of points that the work found in each of its clouds. */
Json::Value sizes(ShapeTask& task)
{
    Json::Value list(Json::arrayValue);
    for (const Shape& shape : task.shapes)
        list.append(Json::UInt64(shape.size()));
    return list;
}

ShapeWork fill(std::size_t points)
{
    return [points](ShapeTask& task) {
        task.result = Shape(PointCloud{std::vector<geometry::Vector>(points), {}, {}});
        return Json::Value(Json::UInt64(points));
    };
}

struct Fixture
{
    int run(Client& asking, std::vector<ShapeUse> uses, ShapeAccess access, ShapeWork work,
            const std::string& name)
    {
        return list->run({asking,
                          std::move(uses),
                          access,
                          std::move(work),
                          {[this, name](const Json::Value& result) {
                               answers.push_back(name + " " + oneLine(result));
                           },
                           [this, name](const JsonRpcException& error) {
                               answers.push_back(name + " " + errorName(error));
                           }},
                          [this, name] { started.push_back(name); },
                          [this, name](int percent) {
                              progress.push_back(name + " " + std::to_string(percent));
                          }});
    }

    int change(Client& asking, int cloud, ShapeWork work, const std::string& name)
    {
        return run(asking, {{kCloud, cloud}}, ShapeAccess::ChangesFirst, std::move(work), name);
    }

    int look(Client& asking, int cloud, const std::string& name)
    {
        return run(asking, {{kCloud, cloud}}, ShapeAccess::Reads, sizes, name);
    }

    static std::string oneLine(const Json::Value& value)
    {
        if (!value.isArray())
            return value.asString();
        std::string text;
        for (const Json::Value& element : value)
            text += (text.empty() ? "" : "+") + element.asString();
        return text;
    }

    TestLog log;
    FakeClient client;
    FakeClient other;
    std::unique_ptr<ShapeList> list = std::make_unique<ShapeList>();
    Texts answers;
    Texts started;
    Texts progress;
};

} // namespace

class tst_ShapeList : public QObject
{
    Q_OBJECT

private slots:
    void numbersAreNeverGivenTwice();
    void anotherClientsShapesAreUnknown();
    void theOtherKindIsUnknown();
    void aClientMayHaveAHundred();
    void workSeesWhatEarlierWorkLeft();
    void workOnOneShapeKeepsItsOrder();
    void workOnOtherShapesGoesOnMeanwhile();
    void readersDoNotWaitForEachOther();
    void aReaderIsNotOvertaken();
    void nobodyWaitsForAllOfAnother();
    void workThatFailsChangesNothing_data();
    void workThatFailsChangesNothing();
    void tellsProgress();
    void tooManyPointsAreRefused();
    void cancelsWhatRunsAndWhatWaits();
    void whatFinishedAfterItsCancellationIsDropped();
    void destroyingGivesUpWhatNobodyWouldSee();
    void destroyingWaitsForWhoReads();
    void aClientsShapesGoWithIt();
    void aListMayGoWhileWorkRuns();
};

void tst_ShapeList::numbersAreNeverGivenTwice()
{
    Fixture f;
    const int first = f.list->create(kCloud, f.client);
    const int second = f.list->create(ShapeKind::Mesh, f.client);
    f.list->destroy({ShapeKind::Mesh, second}, f.client);
    const int third = f.list->create(ShapeKind::Mesh, f.other);
    QCOMPARE(first, 1);
    QCOMPARE(second, 2);
    QCOMPARE(third, 3);
}

void tst_ShapeList::anotherClientsShapesAreUnknown()
{
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    QCOMPARE(errorOf([&] { f.look(f.other, cloud, "look"); }),
             std::string("UnknownPointCloudError"));
    QCOMPARE(errorOf([&] {
                 f.list->destroy({kCloud, cloud}, f.other);
             }),
             std::string("UnknownPointCloudError"));
    QCOMPARE(thrownText([&] {
                 f.list->check({kCloud, 77}, f.client);
             }),
             std::string("No such point cloud: 77"));
    f.list->check({kCloud, cloud}, f.client);
    QVERIFY(f.answers.empty());
}

void tst_ShapeList::theOtherKindIsUnknown()
{
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const int mesh = f.list->create(ShapeKind::Mesh, f.client);
    QCOMPARE(errorOf([&] {
                 f.list->check({ShapeKind::Mesh, cloud}, f.client);
             }),
             std::string("UnknownMeshError"));
    QCOMPARE(errorOf([&] {
                 f.list->check({kCloud, mesh}, f.client);
             }),
             std::string("UnknownPointCloudError"));
}

void tst_ShapeList::aClientMayHaveAHundred()
{
    Fixture f;
    for (int i = 0; i < ShapeList::kShapesAtMost; ++i)
        f.list->create(i % 2 == 0 ? kCloud : ShapeKind::Mesh, f.client);
    QCOMPARE(errorOf([&] { f.list->create(kCloud, f.client); }), std::string("LimitError"));
    const int others = f.list->create(kCloud, f.other);
    QCOMPARE(others, ShapeList::kShapesAtMost + 1);
    f.list->destroy({kCloud, 1}, f.client);
    f.list->create(kCloud, f.client);
}

void tst_ShapeList::workSeesWhatEarlierWorkLeft()
{
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    f.look(f.client, cloud, "empty");
    f.change(f.client, cloud, fill(3), "three");
    f.look(f.client, cloud, "then");
    f.change(f.client, cloud, fill(5), "five");
    f.look(f.client, cloud, "last");
    QVERIFY(f.answers.empty());
    QTRY_COMPARE(f.answers.size(), std::size_t(5));
    QCOMPARE(f.answers, (Texts{"empty 0", "three 3", "then 3", "five 5", "last 5"}));
}

void tst_ShapeList::workOnOneShapeKeepsItsOrder()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const int second = f.list->create(kCloud, f.client);
    f.change(f.client, cloud, gate.work(4), "slow");
    f.run(f.client, {{kCloud, second}, {kCloud, cloud}}, ShapeAccess::ChangesFirst, sizes, "copy");
    f.look(f.client, second, "look");
    QTRY_VERIFY(gate.entered.available() > 0);
    QTest::qWait(20);
    QCOMPARE(f.started, Texts{"slow"});
    gate.opened.release();
    QTRY_COMPARE(f.answers.size(), std::size_t(3));
    QCOMPARE(f.answers, (Texts{"slow 4", "copy 0+4", "look 0"}));
}

void tst_ShapeList::workOnOtherShapesGoesOnMeanwhile()
{
    Gate gate;
    Fixture f;
    const int slow = f.list->create(kCloud, f.client);
    const int fast = f.list->create(kCloud, f.client);
    f.change(f.client, slow, gate.work(1), "slow");
    f.change(f.client, fast, fill(2), "fast");
    QTRY_COMPARE(f.answers, Texts{"fast 2"});
    gate.opened.release();
    QTRY_COMPARE(f.answers, (Texts{"fast 2", "slow 1"}));
}

void tst_ShapeList::readersDoNotWaitForEachOther()
{
    QSemaphore entered;
    QSemaphore opened;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const auto meet = [&](ShapeTask&) {
        entered.release();
        opened.acquire();
        return Json::Value("met");
    };
    f.run(f.client, {{kCloud, cloud}}, ShapeAccess::Reads, meet, "one");
    f.run(f.client, {{kCloud, cloud}}, ShapeAccess::Reads, meet, "two");
    QVERIFY(QTest::qWaitFor([&] { return entered.available() == 2; }, 5000));
    opened.release(2);
    QTRY_COMPARE(f.answers.size(), std::size_t(2));
}

void tst_ShapeList::aReaderIsNotOvertaken()
{
    Gate gate;
    Fixture f;
    const int first = f.list->create(kCloud, f.client);
    const int second = f.list->create(kCloud, f.client);
    f.change(f.client, first, gate.work(1), "slow");
    // It waits for the first, and must see the second as it is now.
    f.run(f.client, {{kCloud, first}, {kCloud, second}}, ShapeAccess::Reads, sizes, "both");
    f.change(f.client, second, fill(9), "later");
    QTRY_VERIFY(gate.entered.available() > 0);
    QTest::qWait(20);
    QVERIFY(f.answers.empty());
    gate.opened.release();
    QTRY_COMPARE(f.answers, (Texts{"slow 1", "both 1+0", "later 9"}));
}

void tst_ShapeList::nobodyWaitsForAllOfAnother()
{
    Gate gate;
    Fixture f;
    // More than there are threads, so that most of them wait.
    const int many = 3 * std::max(2, QThread::idealThreadCount());
    for (int i = 0; i < many; ++i)
        f.change(f.client, f.list->create(kCloud, f.client), gate.work(1), "many");
    f.change(f.other, f.list->create(kCloud, f.other), fill(1), "one");
    QTRY_VERIFY(gate.entered.available() > 0);
    gate.opened.release(1);
    QTRY_VERIFY(std::count(f.answers.begin(), f.answers.end(), "one 1") == 1);
    QVERIFY(f.answers.size() <= 2);
    gate.opened.release(many);
    QTRY_COMPARE(f.answers.size(), std::size_t(many + 1));
}

void tst_ShapeList::workThatFailsChangesNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("a name of its own") << 0 << QByteArray("FileAccessError");
    QTest::newRow("empty") << 1 << QByteArray("EmptyShapeError");
    QTest::newRow("format") << 2 << QByteArray("FileFormatError");
    QTest::newRow("geometry") << 3 << QByteArray("GeometryError");
    QTest::newRow("canceled") << 4 << QByteArray("CanceledError");
    QTest::newRow("memory") << 5 << QByteArray("LimitError");
    QTest::newRow("anything else") << 6 << QByteArray("InternalError");
}

void tst_ShapeList::workThatFailsChangesNothing()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, expected);
    Fixture f;
    if (kind == 6)
        f.log.expectError("Work of the scanner failed: odd");
    const int cloud = f.list->create(kCloud, f.client);
    f.change(f.client, cloud, fill(2), "two");
    f.change(
        f.client, cloud,
        [kind](ShapeTask& task) -> Json::Value {
            task.result = Shape(kCloud);
            switch (kind) {
            case 0:
                throw wire::makeError("FileAccessError", "no");
            case 1:
                throw geometry::EmptyError("no");
            case 2:
                throw geometry::FileFormatError("no");
            case 3:
                throw geometry::GeometryError("no");
            case 4:
                throw geometry::Canceled();
            case 5:
                throw std::bad_alloc();
            default:
                throw std::runtime_error("odd");
            }
        },
        "fails");
    f.look(f.client, cloud, "look");
    QTRY_COMPARE(f.answers.size(), std::size_t(3));
    QCOMPARE(f.answers, (Texts{"two 2", "fails " + expected.toStdString(), "look 2"}));
}

void tst_ShapeList::tellsProgress()
{
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    f.run(
        f.client, {{kCloud, cloud}}, ShapeAccess::Reads,
        [](ShapeTask& task) {
            for (const double done : {0.0, 0.255, 0.5, 1.0})
                task.progress(done);
            return Json::Value("done");
        },
        "work");
    QTRY_COMPARE(f.answers, Texts{"work done"});
    QCOMPARE(f.progress, (Texts{"work 0", "work 25", "work 50", "work 100"}));
}

void tst_ShapeList::tooManyPointsAreRefused()
{
    Fixture f;
    constexpr std::size_t most = 1000;
    f.list = std::make_unique<ShapeList>(most);
    const int first = f.list->create(kCloud, f.client);
    const int second = f.list->create(kCloud, f.client);
    f.change(f.client, first, fill(most / 2 + 1), "large");
    // Work on different shapes runs side by side, and whoever is first gets the room.
    QTRY_COMPARE(f.answers.size(), std::size_t(1));
    f.change(f.client, second, fill(most / 2), "one too many");
    f.look(f.client, second, "look");
    QTRY_COMPARE(f.answers.size(), std::size_t(3));
    // In the place of the first there is room for it.
    f.change(f.client, first, fill(most / 2), "instead");
    f.run(
        f.client, {{kCloud, second}, {kCloud, first}}, ShapeAccess::ChangesFirst,
        [](ShapeTask& task) {
            task.result = task.shapes[1];
            return Json::Value("copied");
        },
        "all of it");
    QTRY_COMPARE(f.answers.size(), std::size_t(5));
    const auto has = [&f](const std::string& answer) {
        return std::count(f.answers.begin(), f.answers.end(), answer) == 1;
    };
    QVERIFY(has("large " + std::to_string(most / 2 + 1)));
    QVERIFY(has("one too many LimitError"));
    QVERIFY(has("look 0"));
    QVERIFY(has("all of it copied"));
}

void tst_ShapeList::cancelsWhatRunsAndWhatWaits()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const int running = f.change(f.client, cloud, gate.work(4), "running");
    const int waiting = f.change(f.client, cloud, fill(5), "waiting");
    f.look(f.client, cloud, "look");
    QTRY_VERIFY(gate.entered.available() > 0);
    f.list->cancel(waiting);
    QCOMPARE(f.answers, Texts{"waiting CanceledError"});
    f.list->cancel(running);
    QTRY_COMPARE(f.answers, (Texts{"waiting CanceledError", "running CanceledError", "look 0"}));
    f.list->cancel(running);
    f.list->cancel(12345);
}

void tst_ShapeList::whatFinishedAfterItsCancellationIsDropped()
{
    QSemaphore entered;
    QSemaphore opened;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const int operation = f.change(
        f.client, cloud,
        [&](ShapeTask& task) {
            entered.release();
            opened.acquire();
            task.result = Shape(PointCloud{std::vector<geometry::Vector>(7), {}, {}});
            return Json::Value(7);
        },
        "deaf");
    QVERIFY(QTest::qWaitFor([&] { return entered.available() == 1; }, 5000));
    f.list->cancel(operation);
    opened.release();
    f.look(f.client, cloud, "look");
    QTRY_COMPARE(f.answers, (Texts{"deaf CanceledError", "look 0"}));
}

void tst_ShapeList::destroyingGivesUpWhatNobodyWouldSee()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    f.change(f.client, cloud, gate.work(4), "running");
    f.change(f.client, cloud, fill(5), "waiting");
    QTRY_VERIFY(gate.entered.available() > 0);
    f.list->destroy({kCloud, cloud}, f.client);
    QCOMPARE(errorOf([&] { f.look(f.client, cloud, "look"); }),
             std::string("UnknownPointCloudError"));
    QTRY_COMPARE(f.answers, (Texts{"waiting CanceledError", "running CanceledError"}));
}

void tst_ShapeList::destroyingWaitsForWhoReads()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    f.change(f.client, cloud, gate.work(4), "slow");
    f.look(f.client, cloud, "save");
    QTRY_VERIFY(gate.entered.available() > 0);
    f.list->destroy({kCloud, cloud}, f.client);
    QCOMPARE(errorOf([&] {
                 f.list->destroy({kCloud, cloud}, f.client);
             }),
             std::string("UnknownPointCloudError"));
    gate.opened.release();
    QTRY_COMPARE(f.answers, (Texts{"slow 4", "save 4"}));
}

void tst_ShapeList::aClientsShapesGoWithIt()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    const int kept = f.list->create(kCloud, f.other);
    f.change(f.client, cloud, gate.work(4), "running");
    f.change(f.client, cloud, fill(2), "waiting");
    f.change(f.other, kept, fill(3), "other");
    QTRY_VERIFY(gate.entered.available() > 0);
    emit f.client.gone();
    QTRY_COMPARE(f.answers.size(), std::size_t(3));
    std::sort(f.answers.begin(), f.answers.end());
    QCOMPARE(f.answers, (Texts{"other 3", "running CanceledError", "waiting CanceledError"}));
    QCOMPARE(errorOf([&] {
                 f.list->check({kCloud, cloud}, f.client);
             }),
             std::string("UnknownPointCloudError"));
    f.list->check({kCloud, kept}, f.other);
}

void tst_ShapeList::aListMayGoWhileWorkRuns()
{
    Gate gate;
    Fixture f;
    const int cloud = f.list->create(kCloud, f.client);
    f.change(f.client, cloud, gate.work(4), "running");
    f.change(f.client, cloud, fill(2), "waiting");
    QTRY_VERIFY(gate.entered.available() > 0);
    f.list.reset();
    QTest::qWait(10);
    QVERIFY(f.answers.empty());
}

QTEST_GUILESS_MAIN(tst_ShapeList)
#include "tst_shape_list.moc"
