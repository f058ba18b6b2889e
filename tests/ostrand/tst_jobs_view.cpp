#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/job_list_model.h"
#include "apps/ostrand/jobs_view.h"

#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekqt.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>

using namespace ostrand;
using namespace trovek;

namespace {

struct World
{
    ScriptedService service;
    TrovekQt facade;
    JobListModel model{facade};
    JobsView view{model};

    World()
    {
        facade.connectToDaemon(service.address());
        view.resize(800, 200);
        view.show();
    }

    void add(int id, const std::string& kind = "print_to_file")
    {
        Job::Data job;
        job.id = id;
        job.name = "job " + std::to_string(id);
        job.kind = kind;
        service.setJob(job);
        service.notifyJobAdded(id);
        QTRY_VERIFY(model.indexOf(id).isValid());
    }

    QTreeView& list() { return *view.findChild<QTreeView*>(QStringLiteral("jobs")); }
    QAction& cancel() { return *view.findChild<QAction*>(QStringLiteral("cancelJob")); }
    QAction& clear() { return *view.findChild<QAction*>(QStringLiteral("clearFinished")); }

    void click(int row)
    {
        const QRect place = list().visualRect(model.index(row, JobListModel::StageColumn));
        QTest::mouseClick(list().viewport(), Qt::LeftButton, Qt::NoModifier, place.center());
    }
};

/** Presses the button of the next message box; remembers its texts. */
struct Answer
{
    QTimer timer;
    QString heading;
    QString body;
    int boxes = 0;

    explicit Answer(const QString& label)
    {
        QObject::connect(&timer, &QTimer::timeout, [this, label] {
            auto* box = qobject_cast<MessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            ++boxes;
            const auto labels = box->findChildren<QLabel*>();
            for (const QLabel* text : labels) {
                if (!text->text().isEmpty())
                    (heading.isEmpty() ? heading : body) = text->text();
            }
            for (QPushButton* button : box->findChildren<QPushButton*>()) {
                if (button->text() == label) {
                    QTest::mouseClick(button, Qt::LeftButton);
                    return;
                }
            }
            box->reject();
        });
        timer.start(10);
    }
};

} // namespace

class tst_JobsView : public QObject
{
    Q_OBJECT

private slots:
    void offersOnlyWhatCanBeDone();
    void deleteCancelsAnExportAtOnce();
    void cancelingAPrintIsAskedFirst();
    void keepingAPrintSendsNothing();
    void deleteDoesNothingToAJobThatHasEnded();
    void clearsWhatHasEnded();
    void aPrintThatEndsDuringTheQuestionIsNotCanceled();
    void drawsABarForEachJob();
};

void tst_JobsView::offersOnlyWhatCanBeDone()
{
    TestLog log;
    World world;
    QVERIFY(!world.cancel().isEnabled());
    QVERIFY(!world.clear().isEnabled());
    world.add(1);
    QVERIFY(!world.cancel().isEnabled());
    world.click(0);
    QVERIFY(world.cancel().isEnabled());
    QVERIFY(!world.clear().isEnabled());
    world.service.concludeJob(1, JobEnded);
    QTRY_VERIFY(world.clear().isEnabled());
    QVERIFY(!world.cancel().isEnabled());
}

void tst_JobsView::deleteCancelsAnExportAtOnce()
{
    TestLog log;
    World world;
    world.add(1);
    world.add(2);
    world.click(1);
    QTest::keyClick(&world.list(), Qt::Key_Delete);
    QTRY_COMPARE(world.service.requests("cancel_job").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("cancel_job")["id"].asInt(), 2);
    QTRY_COMPARE(world.model.conclusion(1), JobCanceled);
    QCOMPARE(world.model.conclusion(0), JobNotConcluded);
}

void tst_JobsView::cancelingAPrintIsAskedFirst()
{
    TestLog log;
    World world;
    world.add(1, "print");
    world.click(0);
    Answer answer(QStringLiteral("&Cancel Print"));
    world.cancel().trigger();
    QCOMPARE(answer.boxes, 1);
    QCOMPARE(answer.heading, QStringLiteral("Cancel this print?"));
    QCOMPARE(answer.body, QStringLiteral("A print that was canceled cannot be taken up again."));
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(1));
}

void tst_JobsView::keepingAPrintSendsNothing()
{
    TestLog log;
    World world;
    world.add(1, "print");
    world.click(0);
    Answer answer(QStringLiteral("&Keep Printing"));
    world.cancel().trigger();
    QCOMPARE(answer.boxes, 1);
    QVERIFY(world.service.requests("cancel_job").empty());
    QCOMPARE(world.model.conclusion(0), JobNotConcluded);
}

void tst_JobsView::deleteDoesNothingToAJobThatHasEnded()
{
    TestLog log;
    World world;
    world.add(1);
    world.click(0);
    world.service.concludeJob(1, JobEnded);
    QTRY_COMPARE(world.model.conclusion(0), JobEnded);
    QTest::keyClick(&world.list(), Qt::Key_Delete);
    QVERIFY(world.service.requests("cancel_job").empty());
}

void tst_JobsView::clearsWhatHasEnded()
{
    TestLog log;
    World world;
    world.add(1);
    world.add(2);
    world.service.concludeJob(1, JobFailed, "no");
    QTRY_VERIFY(world.clear().isEnabled());
    world.clear().trigger();
    QCOMPARE(world.model.rowCount(), 1);
    QVERIFY(world.model.indexOf(2).isValid());
    QVERIFY(!world.clear().isEnabled());
}

void tst_JobsView::aPrintThatEndsDuringTheQuestionIsNotCanceled()
{
    TestLog log;
    World world;
    world.add(1, "print");
    world.click(0);
    QTimer end;
    QObject::connect(&end, &QTimer::timeout, [&] {
        if (QApplication::activeModalWidget() && world.model.runningCount() > 0)
            world.service.concludeJob(1, JobEnded);
        else if (QApplication::activeModalWidget())
            qobject_cast<MessageBox*>(QApplication::activeModalWidget())
                ->findChildren<QPushButton*>()
                .last()
                ->click();
    });
    end.start(20);
    world.cancel().trigger();
    QVERIFY(world.service.requests("cancel_job").empty());
    QCOMPARE(world.model.conclusion(0), JobEnded);
}

void tst_JobsView::drawsABarForEachJob()
{
    TestLog log;
    World world;
    QVERIFY(QTest::qWaitForWindowExposed(&world.view));
    Job::Data job;
    job.id = 1;
    job.kind = "print";
    world.service.setJob(job);
    world.service.notifyJobAdded(1);
    QTRY_COMPARE(world.model.rowCount(), 1);
    const auto picture = [&] {
        const QRect cell =
            world.list().visualRect(world.model.index(0, JobListModel::ProgressColumn));
        return world.list().viewport()->grab(cell).toImage();
    };
    const QImage empty = picture();
    job.progress = 80;
    world.service.setJob(job);
    world.service.notifyJobChanged(1);
    QTRY_COMPARE(world.model.index(0, 0).data(JobListModel::ProgressRole).toInt(), 80);
    QVERIFY(picture() != empty);
}

QTEST_MAIN(tst_JobsView)
#include "tst_jobs_view.moc"
