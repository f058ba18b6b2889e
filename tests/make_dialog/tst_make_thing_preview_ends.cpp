#include "make_dialog/thing_preview.h"

#include <QApplication>
#include <QFileInfo>

using namespace trovek;

/** How the look at the toolpaths ends when it does not go on: canceled, failed, closed, too late.
 */
class tst_MakeThingPreviewEnds : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void cancels();
    void comesBackWhenSomebodyElseCancels();
    void tellsOfAFailedSlice_data();
    void tellsOfAFailedSlice();
    void tellsOfAJobThatNobodyKnows();
    void tellsOfALostLink();
    void cancelsTheSliceWhenItIsClosed_data();
    void cancelsTheSliceWhenItIsClosed();
    void cancelsNothingThatIsOver();
    void checksBeforeItSlices_data();
    void checksBeforeItSlices();
    void showsWhatTheServiceRefuses();
    void makesOnNoOtherMachine();
    void leavesNoFile_data();
    void leavesNoFile();

private:
    TrovekQt m_facade;
};

void tst_MakeThingPreviewEnds::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingPreviewEnds::cancels()
{
    TestLog log;
    ThingWorld world(m_facade);
    // A cancel is what the user wanted: no message.
    ModalDriver driver;
    const OpenedPreview opened(world);
    const int job = opened.slice();

    QTest::mouseClick(&opened.cancelPreview(), Qt::LeftButton);

    QCOMPARE(world.service.lastRequest("cancel_job")["id"].asInt(), job);
    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(opened.mainButton().hasFocus());
    QTRY_COMPARE(world.service.job(job).conclusion, JobCanceled);
    QCoreApplication::processEvents();
    QVERIFY(opened.dialog->isVisible());
    QVERIFY(opened.preview() == nullptr);
}

void tst_MakeThingPreviewEnds::comesBackWhenSomebodyElseCancels()
{
    TestLog log;
    ThingWorld world(m_facade);
    ModalDriver driver;
    const OpenedPreview opened(world);
    const int job = opened.slice();

    world.service.concludeJob(job, JobCanceled);

    QTRY_VERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(0));
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingPreviewEnds::tellsOfAFailedSlice_data()
{
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("with the service's words") << QByteArray("The model <b>\"x\"</b> is empty.");
    QTest::newRow("without") << QByteArray();
}

void tst_MakeThingPreviewEnds::tellsOfAFailedSlice()
{
    TestLog log;
    log.expectError("The slice for the preview failed: ");
    QFETCH(QByteArray, reason);
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    const int job = opened.slice();
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    world.service.concludeJob(job, JobFailed, reason.toStdString());

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
    const auto& notice = opened.find<QLabel>("previewNotice");
    QCOMPARE(notice.isVisible(), !reason.isEmpty());
    QCOMPARE(notice.text(), QString::fromUtf8(reason));
    QCOMPARE(notice.textFormat(), Qt::PlainText);

    // It may be another story with what was changed, and the next one starts afresh.
    opened.find<QCheckBox>("supportsCheckBox").click();
    QVERIFY(!notice.isVisible());
    opened.slice();
    QVERIFY(!notice.isVisible());
}

void tst_MakeThingPreviewEnds::tellsOfAJobThatNobodyKnows()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    Json::Value answer(Json::objectValue);
    answer["id"] = 4711;
    world.service.answerNext("slice", answer);
    const OpenedPreview opened(world);
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    opened.clickMain();

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
}

void tst_MakeThingPreviewEnds::tellsOfALostLink()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.slice();
    ModalDriver driver;
    driver.expectMessage(kTrovekNotConnected);

    world.service.stop();

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(opened.dialog->isVisible());
    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
    QVERIFY(log.contains("Trovek not connected"));
}

void tst_MakeThingPreviewEnds::cancelsTheSliceWhenItIsClosed_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("cancel button") << QStringLiteral("cancel");
    QTest::newRow("escape") << QStringLiteral("escape");
    QTest::newRow("window closed") << QStringLiteral("close");
    QTest::newRow("destroyed") << QStringLiteral("delete");
}

void tst_MakeThingPreviewEnds::cancelsTheSliceWhenItIsClosed()
{
    TestLog log;
    QFETCH(QString, how);
    ThingWorld world(m_facade);
    ModalDriver driver;
    const OpenedPreview opened(world);
    const int job = opened.slice();

    if (how == QLatin1String("cancel"))
        QTest::mouseClick(&opened.button("cancelButton"), Qt::LeftButton);
    else if (how == QLatin1String("escape"))
        QTest::keyClick(opened.dialog, Qt::Key_Escape);
    else if (how == QLatin1String("close"))
        opened.dialog->close();
    else
        delete opened.dialog.data();

    QTRY_VERIFY(opened.dialog.isNull());
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("cancel_job")["id"].asInt(), job);
}

void tst_MakeThingPreviewEnds::cancelsNothingThatIsOver()
{
    TestLog log;
    ThingWorld world(m_facade);
    {
        const OpenedPreview opened(world);
        opened.finish(opened.slice());
        QTest::mouseClick(&opened.previewButton("cancelButton"), Qt::LeftButton);
    }
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(0));
}

void tst_MakeThingPreviewEnds::checksBeforeItSlices_data()
{
    QTest::addColumn<QString>("wrong");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("link") << QStringLiteral("link") << kTrovekNotConnected;
    QTest::newRow("file") << QStringLiteral("file") << kFileNotFound;
    QTest::newRow("profile") << QStringLiteral("profile") << kFailedToStartPrint;
}

void tst_MakeThingPreviewEnds::checksBeforeItSlices()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QString, wrong);
    QFETCH(QStringList, texts);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedPreview opened(world);
    if (wrong == QLatin1String("link")) {
        world.loseConnection();
    } else if (wrong == QLatin1String("file")) {
        QVERIFY(QFile::remove(world.inputFile));
    } else {
        opened.select("mine");
        writeFile(world.profilePath("mine/strandel.json"), "{");
    }
    ModalDriver driver;
    driver.expectMessage(texts);

    opened.clickMain();

    QCOMPARE(world.service.requests("slice").size(), std::size_t(0));
    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingPreviewEnds::showsWhatTheServiceRefuses()
{
    TestLog log;
    log.expectError("not now");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    world.service.failNext("slice", JsonRpcException("not now"));
    ModalDriver driver;
    driver.expectMessage(kGenericTrovekError);

    opened.clickMain();

    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingPreviewEnds::makesOnNoOtherMachine()
{
    TestLog log;
    log.expectError("The machine is no longer there");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.finish(opened.slice());
    world.service.removePrinter("single");
    QTRY_VERIFY(world.printer("single") == nullptr);
    QCoreApplication::processEvents();
    opened.select(world.printer("dual"));
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    QTest::mouseClick(&opened.previewButton("acceptButton"), Qt::LeftButton);

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QVERIFY(opened.dialog->isVisible());
}

void tst_MakeThingPreviewEnds::leavesNoFile_data()
{
    QTest::addColumn<QString>("end");
    for (const char* end : {"canceled", "failed", "rejected", "accepted", "closed", "destroyed"})
        QTest::newRow(end) << QString::fromLatin1(end);
}

void tst_MakeThingPreviewEnds::leavesNoFile()
{
    TestLog log;
    log.allowErrors("The slice for the preview failed: ");
    QFETCH(QString, end);
    ThingWorld world(m_facade);
    QString output;
    {
        const OpenedPreview opened(world);
        const int job = opened.slice();
        output = opened.output();
        QVERIFY(QFile::exists(output));
        if (end == QLatin1String("canceled")) {
            QTest::mouseClick(&opened.cancelPreview(), Qt::LeftButton);
        } else if (end == QLatin1String("failed")) {
            ModalDriver driver;
            driver.expectMessage(kFailedToStartPrint);
            world.service.concludeJob(job, JobFailed);
            QTRY_VERIFY(driver.isDone());
        } else if (end == QLatin1String("closed")) {
            opened.dialog->close();
        } else {
            opened.finish(job);
            if (end == QLatin1String("rejected"))
                QTest::mouseClick(&opened.previewButton("cancelButton"), Qt::LeftButton);
            else if (end == QLatin1String("accepted"))
                QTest::mouseClick(&opened.previewButton("acceptButton"), Qt::LeftButton);
        }
        if (end == QLatin1String("rejected") || end == QLatin1String("accepted"))
            QTRY_VERIFY(!QFile::exists(output));
    }

    QTRY_VERIFY(!QFile::exists(output));
    QVERIFY(!QFileInfo::exists(QFileInfo(output).path()));
}

QTEST_MAIN(tst_MakeThingPreviewEnds)
#include "tst_make_thing_preview_ends.moc"
