#include "pathscope/picture_schedule.h"

#include <QRandomGenerator>
#include <QTest>

using namespace pathscope;
using Step = PictureSchedule::Step;

namespace {

/** Carries the steps out on numbers in place of pixels. */
class Canvas
{
public:
    explicit Canvas(PictureSchedule& schedule)
        : m_schedule(schedule)
    {}

    /** All steps until there is nothing to do, in words, those of one kind in a row as one. */
    QString work(std::uint64_t slice = 10'000)
    {
        QStringList names;
        const auto say = [&names](const QString& name) {
            if (names.isEmpty() || names.last() != name)
                names.append(name);
        };
        for (int i = 0; i < 1'000'000; ++i) {
            const Step step = m_schedule.next(slice);
            switch (step.kind) {
            case Step::Rest:
                return names.join(QLatin1Char(' '));
            case Step::Coarse:
                say(QStringLiteral("coarse"));
                picture = {7, 7};
                break;
            case Step::Begin:
                say(QStringLiteral("begin"));
                picture = {};
                break;
            case Step::Restore:
                say(QStringLiteral("restore"));
                picture = checkpoints[step.checkpoint];
                break;
            case Step::Save:
                say(QStringLiteral("save"));
                checkpoints[step.checkpoint] = picture;
                break;
            case Step::Draw:
                say(QStringLiteral("draw"));
                if (step.segments.count() > slice)
                    return QStringLiteral("too much at once");
                if (picture.isEmpty())
                    picture = {step.segments.first, step.segments.first};
                if (picture.end != step.segments.first)
                    return QStringLiteral("a gap");
                picture.end = step.segments.end;
                drawn += step.segments.count();
                break;
            case Step::Show:
                say(QStringLiteral("show"));
                shown = picture;
                break;
            }
        }
        return QStringLiteral("no end");
    }

    SegmentRange picture;
    SegmentRange checkpoints[PictureSchedule::kCheckpoints];
    SegmentRange shown;
    std::uint64_t drawn = 0;

private:
    PictureSchedule& m_schedule;
};

constexpr std::uint64_t kLayer = 8'000;

} // namespace

class tst_PictureSchedule : public QObject
{
    Q_OBJECT

private slots:
    void drawsAnEmptyPictureOnce();
    void drawsAShortPictureAtOnce();
    void showsALongPictureCoarseFirst();
    void drawsInFullWithoutCoarsePaths();
    void aLayerUpDrawsThatLayerOnly();
    void aLayerDownGoesOnFromACheckpoint();
    void manyLayersUpLeaveACheckpointBehind();
    void anotherFirstLayerBeginsAnew();
    void whileTheCameraMovesOnlyCoarsePicturesAreDrawn();
    void whileTheCameraMovesAShortPictureIsDrawnInFull();
    void aChangeInTheMiddleIsTakenUp();
    void aRandomWalkAlwaysShowsTheTarget();
};

void tst_PictureSchedule::drawsAnEmptyPictureOnce()
{
    PictureSchedule schedule;
    Canvas canvas(schedule);

    QVERIFY(schedule.isBusy());
    QCOMPARE(canvas.work(), QStringLiteral("begin show"));

    QVERIFY(!schedule.isBusy());
    QVERIFY(schedule.isComplete());
    QCOMPARE(canvas.work(), QString());
}

void tst_PictureSchedule::drawsAShortPictureAtOnce()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 40'000});
    Canvas canvas(schedule);

    QCOMPARE(canvas.work(), QStringLiteral("begin draw show"));

    QCOMPARE(canvas.shown.end, std::uint64_t(40'000));
    schedule.setTarget({0, 40'000});
    QVERIFY(!schedule.isBusy());
}

void tst_PictureSchedule::showsALongPictureCoarseFirst()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 3'000'000});
    Canvas canvas(schedule);

    QCOMPARE(canvas.work(), QStringLiteral("coarse begin draw save draw save draw show"));

    QCOMPARE(canvas.shown.end, std::uint64_t(3'000'000));
    QCOMPARE(canvas.checkpoints[0].end, std::uint64_t(2'500'000));
    QCOMPARE(canvas.checkpoints[1].end, std::uint64_t(2'940'000));
}

void tst_PictureSchedule::drawsInFullWithoutCoarsePaths()
{
    PictureSchedule schedule;
    schedule.setInMotion(true);
    schedule.setTarget({0, 3'000'000});
    Canvas canvas(schedule);

    QCOMPARE(canvas.work(), QStringLiteral("begin draw show"));
}

void tst_PictureSchedule::aLayerUpDrawsThatLayerOnly()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 3'000'000});
    Canvas canvas(schedule);
    canvas.work();
    canvas.drawn = 0;

    schedule.setTarget({0, 3'000'000 + kLayer});

    QVERIFY(!schedule.isComplete());
    QCOMPARE(canvas.work(), QStringLiteral("draw show"));
    QCOMPARE(canvas.drawn, kLayer);
    QCOMPARE(canvas.shown.end, 3'000'000 + kLayer);
}

void tst_PictureSchedule::aLayerDownGoesOnFromACheckpoint()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 3'000'000});
    Canvas canvas(schedule);
    canvas.work();

    for (std::uint64_t layer = 1; layer <= 60; ++layer) {
        canvas.drawn = 0;
        schedule.setTarget({0, 3'000'000 - layer * kLayer});
        const QString steps = canvas.work();
        QVERIFY2(steps.startsWith(QLatin1String("restore draw")), qPrintable(steps));
        QVERIFY(canvas.drawn <= 500'000);
        QCOMPARE(canvas.shown.end, 3'000'000 - layer * kLayer);
    }
}

void tst_PictureSchedule::manyLayersUpLeaveACheckpointBehind()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 1'000'000});
    Canvas canvas(schedule);
    canvas.work();

    std::uint64_t end = 1'000'000;
    for (int layer = 0; layer < 200; ++layer) {
        end += kLayer;
        schedule.setTarget({0, end});
        canvas.work();
    }
    canvas.drawn = 0;
    schedule.setTarget({0, end - kLayer});
    canvas.work();

    QCOMPARE(canvas.shown.end, end - kLayer);
    QVERIFY2(canvas.drawn <= 2 * PictureSchedule::kMostWithoutCheckpoint,
             qPrintable(QString::number(canvas.drawn)));
}

void tst_PictureSchedule::anotherFirstLayerBeginsAnew()
{
    PictureSchedule schedule;
    schedule.setTarget({0, 200'000});
    Canvas canvas(schedule);
    canvas.work();

    schedule.setTarget({100'000, 200'000});
    canvas.work();

    QCOMPARE(canvas.shown.first, std::uint64_t(100'000));
    QCOMPARE(canvas.shown.end, std::uint64_t(200'000));
}

void tst_PictureSchedule::whileTheCameraMovesOnlyCoarsePicturesAreDrawn()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setTarget({0, 500'000});
    Canvas canvas(schedule);
    canvas.work();

    schedule.setInMotion(true);
    for (int frame = 0; frame < 3; ++frame) {
        schedule.invalidate();
        QCOMPARE(canvas.work(), QStringLiteral("coarse"));
        QVERIFY(!schedule.isBusy());
        QVERIFY(!schedule.isComplete());
    }
    schedule.setInMotion(false);

    QVERIFY(schedule.isBusy());
    QVERIFY(canvas.work().startsWith(QLatin1String("begin draw")));
    QCOMPARE(canvas.shown.end, std::uint64_t(500'000));
}

void tst_PictureSchedule::whileTheCameraMovesAShortPictureIsDrawnInFull()
{
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    schedule.setInMotion(true);
    schedule.setSegmentsAFrame(50'000);
    Canvas canvas(schedule);

    schedule.setTarget({0, 50'000});
    QCOMPARE(canvas.work(), QStringLiteral("begin draw show"));
    schedule.setTarget({0, 50'001});
    QCOMPARE(canvas.work(), QStringLiteral("coarse"));
}

void tst_PictureSchedule::aChangeInTheMiddleIsTakenUp()
{
    PictureSchedule schedule;
    schedule.setTarget({0, 100'000});
    Canvas canvas(schedule);
    QCOMPARE(schedule.next(1000).kind, Step::Begin);
    QCOMPARE(schedule.next(1000).segments.end, std::uint64_t(1000));
    canvas.picture = {0, 1000};

    schedule.setTarget({0, 2000});
    QCOMPARE(canvas.work(), QStringLiteral("draw show"));
    QCOMPARE(canvas.shown.end, std::uint64_t(2000));
    schedule.invalidate();
    QCOMPARE(canvas.work(), QStringLiteral("begin draw show"));
}

void tst_PictureSchedule::aRandomWalkAlwaysShowsTheTarget()
{
    QRandomGenerator random(7);
    PictureSchedule schedule;
    schedule.setCoarseReady(true);
    Canvas canvas(schedule);
    SegmentRange target{0, 1'000'000};
    for (int step = 0; step < 2000; ++step) {
        switch (random.bounded(8)) {
        case 0:
            schedule.invalidate();
            break;
        case 1:
            target = {std::uint64_t(random.bounded(500'000)), 500'000};
            break;
        case 2:
            target.end = target.first + std::uint64_t(random.bounded(2'000'000));
            break;
        case 3:
            schedule.next(1000);
            schedule.invalidate();
            break;
        default:
            target.end += random.bounded(2) == 0 ? kLayer : 0;
            if (target.count() > kLayer && random.bounded(2) == 0)
                target.end -= kLayer;
            break;
        }
        schedule.setTarget(target);
        const QString steps = canvas.work(100'000);
        QVERIFY2(!steps.contains(QLatin1String("gap")), qPrintable(steps));
        QVERIFY(schedule.isComplete());
        QCOMPARE(canvas.shown.count(), target.count());
        QVERIFY(canvas.shown == target || target.isEmpty());
    }
}

QTEST_APPLESS_MAIN(tst_PictureSchedule)
#include "tst_picture_schedule.moc"
