#include "make_dialog/thing_preview.h"

#include <json/reader.h>

using namespace trovek;

/** The make-thing dialog over a service that is gone, hangs or says odd things. */
class tst_MakeThingFaults : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void staysUsableWhateverBreaks_data();
    void staysUsableWhateverBreaks();
    void cancelsAgainstAServiceThatHangs();
    void takesNoOtherJobForItsOwn();
    void takesAConclusionOnce();
    void keepsTheLastProgressWhenTheServiceSaysOddThings();
    void survivesItsEndWhenTheSliceStarts();
    void survivesItsEndInItsMessage();
    void survivesTheEndOfItsParent_data();
    void survivesTheEndOfItsParent();
    void tellsNothingWhenItIsClosed();
    void survivesTheEndOfItsMachine();
    void opensAndClosesAgainAndAgain();

private:
    TrovekQt m_facade;
};

void tst_MakeThingFaults::cleanup()
{
    m_facade.setDeadlineScale(1);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingFaults::staysUsableWhateverBreaks_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QStringList>("texts");
    const auto row = [](const char* method, const char* fault, const QStringList& texts) {
        QTest::addRow("%s: %s", method, fault) << QByteArray(method) << QByteArray(fault) << texts;
    };
    row("slice", "hangs", kFailedToStartPrint);
    row("slice", "drops instead", kFailedToStartPrint);
    row("slice", "drops after", kTrovekNotConnected);
    row("slice", "answers nonsense", kFailedToStartPrint);
    row("slice", "fails", kGenericTrovekError);
    row("get_job", "hangs", kTrovekNotConnected);
    row("get_job", "drops instead", kTrovekNotConnected);
    row("get_job", "drops after", kTrovekNotConnected);
    row("get_job", "answers nonsense", kFailedToStartPrint);
    row("get_job", "fails", kFailedToStartPrint);
}

void tst_MakeThingFaults::staysUsableWhateverBreaks()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, fault);
    QFETCH(QStringList, texts);
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    const std::string name = method.toStdString();
    if (fault == "hangs") {
        m_facade.setDeadlineScale(0.05);
        world.service.hangNext(name);
    } else if (fault == "drops instead") {
        world.service.dropConnectionOn(name);
    } else if (fault == "drops after") {
        world.service.dropConnectionOn(name, ScriptedService::Drop::AfterAnswering);
    } else if (fault == "answers nonsense") {
        world.service.answerNext(name, Json::Value("nonsense"));
    } else {
        world.service.failNext(name, JsonRpcException("no"));
    }
    ModalDriver driver;
    driver.expectMessage(texts);

    opened.clickMain();

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(opened.dialog->isVisible());
    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.find<QWidget>("frame").isEnabled());
}

void tst_MakeThingFaults::cancelsAgainstAServiceThatHangs()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();
    QVERIFY(opened.isSlicing());
    m_facade.setDeadlineScale(0.05);
    world.service.hangNext("cancel_job");
    ModalDriver driver;

    QTest::mouseClick(&opened.button("cancelPreviewButton"), Qt::LeftButton);

    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.mainButton().isEnabled());
    QTRY_VERIFY(!m_facade.isConnected());
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingFaults::takesNoOtherJobForItsOwn()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();
    const int job = world.service.lastJobID();
    ModalDriver driver;
    driver.expectMessage(kTrovekNotConnected);
    world.service.dropConnections();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);

    // Another run of the service counts its jobs anew.
    world.connectFacade();
    world.service.concludeJob(job, JobEnded);
    QTRY_VERIFY(m_facade.isConnected());
    QTest::qWait(1);
    QCoreApplication::processEvents();

    QVERIFY(opened.dialog->findChild<PathscopeDialog*>() == nullptr);
}

void tst_MakeThingFaults::takesAConclusionOnce()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();
    const int job = world.service.lastJobID();

    world.service.concludeJob(job, JobEnded);
    QTRY_VERIFY(opened.dialog->findChild<PathscopeDialog*>() != nullptr);
    QSignalSpy concluded(&m_facade, &TrovekQt::jobConcluded);
    world.service.concludeJob(job, JobEnded);
    world.service.concludeJob(job, JobFailed, "late");
    QTRY_VERIFY(concluded.count() >= 2);

    QCOMPARE(opened.dialog->findChildren<PathscopeDialog*>().size(), 1);
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingFaults::keepsTheLastProgressWhenTheServiceSaysOddThings()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();
    Job::Data job = world.service.job(world.service.lastJobID());
    job.progress = 30;
    world.service.setJob(job);
    world.service.notifyJobChanged(job.id);
    QTRY_COMPARE(opened.find<QProgressBar>("previewProgress").value(), 30);

    // Before the watch asks, and when the row does.
    for (const char* odd : {"[]", "{\"id\": \"x\"}", "null", "7"}) {
        Json::Value value;
        QVERIFY(Json::Reader().parse(std::string("[") + odd + "]", value));
        world.service.answerNext("get_job", value[0]);
        world.service.notifyJobChanged(job.id);
        const std::size_t asked = world.service.requests("get_job").size();
        QTRY_VERIFY(world.service.requests("get_job").size() > asked);
        QCoreApplication::processEvents();
        QVERIFY(opened.isSlicing());
        QCOMPARE(opened.find<QProgressBar>("previewProgress").value(), 30);
    }

    world.service.concludeJob(job.id, JobCanceled);
    QTRY_VERIFY(!opened.isSlicing());
}

void tst_MakeThingFaults::survivesItsEndWhenTheSliceStarts()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    connect(opened.dialog.data(), &MakeDialog::sliceFileStarted, this,
            [&opened] { delete opened.dialog.data(); });

    opened.clickMain();

    QVERIFY(opened.dialog.isNull());
}

void tst_MakeThingFaults::survivesItsEndInItsMessage()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();
    ModalDriver driver;
    driver.expect([&opened](QDialog*) { delete opened.dialog.data(); });

    world.service.concludeJob(world.service.lastJobID(), JobFailed);

    QTRY_VERIFY(driver.isDone());
    QVERIFY(opened.dialog.isNull());
}

void tst_MakeThingFaults::survivesTheEndOfItsParent_data()
{
    QTest::addColumn<bool>("looking");
    QTest::newRow("while it slices") << false;
    QTest::newRow("while the preview is open") << true;
}

void tst_MakeThingFaults::survivesTheEndOfItsParent()
{
    TestLog log;
    QFETCH(bool, looking);
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    auto* const window = new QWidget;
    opened.dialog->setParent(window, opened.dialog->windowFlags());
    opened.dialog->show();
    opened.clickMain();
    const int job = world.service.lastJobID();
    const QString output =
        QString::fromStdString(world.service.lastRequest("slice")["output_path"].asString());
    if (looking) {
        world.service.concludeJob(job, JobEnded);
        QTRY_VERIFY(opened.dialog->findChild<PathscopeDialog*>() != nullptr);
    }

    delete window;

    QVERIFY(opened.dialog.isNull());
    QCOMPARE(world.service.requests("cancel_job").size(), std::size_t(looking ? 0 : 1));
    QTRY_VERIFY(!QFile::exists(output));
}

void tst_MakeThingFaults::tellsNothingWhenItIsClosed()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    ModalDriver driver;
    const OpenedPreview opened(world);
    opened.clickMain();

    opened.dialog->close();
    world.service.stop();

    QTRY_VERIFY(opened.dialog.isNull());
    QTRY_VERIFY(!m_facade.isConnected());
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingFaults::survivesTheEndOfItsMachine()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.clickMain();

    world.service.removePrinter("single");
    world.service.removePrinter("heated");
    world.service.removePrinter("dual");
    QTRY_VERIFY(world.printer("dual") == nullptr);
    QCoreApplication::processEvents();

    QVERIFY(opened.isSlicing());
    QVERIFY(!opened.mainButton().isEnabled());
    world.service.concludeJob(world.service.lastJobID(), JobEnded);
    QTRY_VERIFY(opened.dialog->findChild<PathscopeDialog*>() != nullptr);
}

void tst_MakeThingFaults::opensAndClosesAgainAndAgain()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const auto openAndClose = [&world] {
        const OpenedPreview opened(world);
        opened.openAdvanced();
        opened.clickMain();
        opened.dialog->close();
    };
    openAndClose();
    const int widgets = QApplication::allWidgets().size();
    for (int round = 0; round < 10; ++round)
        openAndClose();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

QTEST_MAIN(tst_MakeThingFaults)
#include "tst_make_thing_faults.moc"
