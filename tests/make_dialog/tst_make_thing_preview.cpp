#include "make_dialog/thing_preview.h"

#include <trovek-ui/color_combo_box.h>

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_overlay.h>
#include <pathscope/toolpath_scene.h>

#include <QFileInfo>

using namespace trovek;

/** The look at the toolpaths before a make or an export. */
class tst_MakeThingPreview : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void makesAtOnceWithoutAPreview();
    void slicesIntoAFileOfItsOwn_data();
    void slicesIntoAFileOfItsOwn();
    void showsTheProgress();
    void keepsItsSizeWhileItSlices();
    void holdsEverythingElse();
    void showsTheToolpaths();
    void showsTimeAndFilament();
    void showsAJobThatIsOverAtOnce();
    void makesWhatWasLookedAt();
    void exportsWhatWasLookedAt();
    void comesBackWhenThePreviewIsRejected();
    void slicesAgain();
    void remembersThatItIsWanted();

private:
    TrovekQt m_facade;
};

void tst_MakeThingPreview::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingPreview::makesAtOnceWithoutAPreview()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    QSignalSpy accepted(opened.dialog, &QDialog::accepted);

    opened.clickMain();

    QCOMPARE(accepted.count(), 1);
    QCOMPARE(world.service.requests("slice").size(), std::size_t(0));
    QCOMPARE(world.service.requests("print").size(), std::size_t(1));
}

void tst_MakeThingPreview::slicesIntoAFileOfItsOwn_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("slicedFor");
    QTest::newRow("to make: the archetype") << QByteArray("single") << QByteArray("archetype 3");
    QTest::newRow("to export") << QByteArray("archetype 4") << QByteArray("archetype 4");
}

void tst_MakeThingPreview::slicesIntoAFileOfItsOwn()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, slicedFor);
    ThingWorld world(m_facade);
    const OpenedPreview opened(world, key);
    QSignalSpy started(opened.dialog, &MakeDialog::sliceFileStarted);

    const int job = opened.slice();

    QCOMPARE(started.count(), 1);
    QCOMPARE(started.first().first().toInt(), job);
    const Json::Value request = world.service.lastRequest("slice");
    QCOMPARE(request["machine"].asString(), slicedFor.toStdString());
    QCOMPARE(QString::fromStdString(request["input_path"].asString()), world.inputFile);
    QCOMPARE(request["add_start_end"].asBool(), false);
    const QFileInfo output(opened.output());
    QCOMPARE(output.fileName(), QStringLiteral("slicedFile.gcode"));
    QCOMPARE(output.size(), qint64(0));
    QVERIFY(output.permission(QFileDevice::WriteOther));
    QVERIFY(log.contains("Slice the file for Print Preview: set job ID " + std::to_string(job)));
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
}

void tst_MakeThingPreview::showsTheProgress()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    QVERIFY(!opened.isSlicing());

    const int id = opened.slice();

    QVERIFY(opened.isSlicing());
    QVERIFY(!opened.previewWanted().isVisible());
    QCOMPARE(opened.progress().value(), 0);
    const auto& stage = opened.find<QLabel>("previewStage");
    QCOMPARE(stage.text(), QStringLiteral("Preparing"));
    QCOMPARE(opened.cancelPreview().text(), QStringLiteral("C&ancel Preview"));
    QVERIFY(opened.cancelPreview().hasFocus());

    Job::Data job = world.service.job(id);
    job.stage = "Generating <b>support</b>";
    job.progress = 42;
    world.service.setJob(job);
    world.service.notifyJobChanged(id);
    QTRY_COMPARE(opened.progress().value(), 42);
    QCOMPARE(stage.toolTip(),
             Qt::convertFromPlainText(QStringLiteral("Generating <b>support</b>")));
    QCOMPARE(stage.textFormat(), Qt::PlainText);

    job.stage.clear();
    job.progress = 300;
    world.service.setJob(job);
    world.service.notifyJobChanged(id);
    QTRY_COMPARE(opened.progress().value(), 100);
    QCOMPARE(stage.text(), QStringLiteral("Slicing"));
}

void tst_MakeThingPreview::keepsItsSizeWhileItSlices()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    QCoreApplication::processEvents();
    const QSize before = opened.dialog->size();

    const int id = opened.slice();
    Job::Data job = world.service.job(id);
    job.stage = std::string(500, 'm');
    world.service.setJob(job);
    world.service.notifyJobChanged(id);
    QTRY_VERIFY(opened.find<QLabel>("previewStage").text().endsWith(QChar(0x2026)));

    QCOMPARE(opened.dialog->size(), before);
    QTest::mouseClick(&opened.cancelPreview(), Qt::LeftButton);
    QCoreApplication::processEvents();
    QCOMPARE(opened.dialog->size(), before);
}

void tst_MakeThingPreview::holdsEverythingElse()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);

    opened.slice();
    opened.dialog->requestSanitize();
    QCoreApplication::processEvents();

    QVERIFY(!opened.mainButton().isEnabled());
    for (const char* name : {"makeRadio", "machineCombo", "singleMaterial", "advancedHeader"})
        QVERIFY(!opened.find<QWidget>(name).isEnabled());
    QVERIFY(opened.button("cancelButton").isEnabled());
    // Neither does Return begin another one.
    QTest::keyClick(opened.dialog, Qt::Key_Return);
    QCOMPARE(world.service.requests("slice").size(), std::size_t(1));

    QTest::mouseClick(&opened.cancelPreview(), Qt::LeftButton);
    for (const char* name : {"makeRadio", "machineCombo", "singleMaterial", "advancedHeader"})
        QVERIFY(opened.find<QWidget>(name).isEnabled());
}

void tst_MakeThingPreview::showsTheToolpaths()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world, "dual");
    opened.material("leftMaterial").select(Orvane::Dissolvable);
    opened.material("rightMaterial").select(Orvane::PLA);

    opened.finish(opened.slice());

    QVERIFY(opened.mainButton().isEnabled());
    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.preview()->isVisible());
    QCOMPARE(opened.preview()->windowModality(), Qt::WindowModal);
    QCOMPARE(opened.previewButton("acceptButton").text(), QStringLiteral("Make It!"));
    const auto* const view = opened.preview()->findChild<pathscope::ToolpathGLWidget*>();
    const pathscope::SceneSetting setting = view->toolpathScene()->setting();
    QVERIFY(setting.dualExtrusion);
    // As tools count: the right one first.
    QCOMPARE(setting.materials, (std::vector{Orvane::PLA, Orvane::Dissolvable}));
    QCOMPARE(setting.colours, (std::vector{ColorComboBox::colorToQColor(ColorComboBox::TrueOrange),
                                           ColorComboBox::colorToQColor(ColorComboBox::TrueBlue)}));
    QCOMPARE(setting.buildVolume.xMax, kDual.buildVolume[3]);
    QTRY_VERIFY(view->toolpathScene()->toolpaths()->complete);
}

void tst_MakeThingPreview::showsTimeAndFilament()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);

    opened.finish(opened.slice());

    const auto texts = [&opened] {
        QString all;
        for (const QLabel* label : opened.preview()->findChildren<QLabel*>()) {
            if (label->isVisible())
                all += label->text() + QLatin1Char('\n');
        }
        return all.replace(QChar::Nbsp, QLatin1Char(' '));
    };
    QTRY_VERIFY2(texts().contains(QStringLiteral("Time: 1 h 2 min")), qPrintable(texts()));
    QVERIFY2(texts().contains(QStringLiteral("Orvane PLA, 0.20 m")), qPrintable(texts()));
}

void tst_MakeThingPreview::showsAJobThatIsOverAtOnce()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.service.onRequest("slice", [&world](const Json::Value& params) {
        QFile file(QString::fromStdString(params["output_path"].asString()));
        if (file.open(QIODevice::WriteOnly))
            file.write(kTower);
        Job::Data job;
        job.id = 7;
        job.conclusion = JobEnded;
        world.service.setJob(job);
        Json::Value answer(Json::objectValue);
        answer["id"] = job.id;
        return answer;
    });
    const OpenedPreview opened(world);

    opened.clickMain();

    QVERIFY(opened.preview() != nullptr);
    QVERIFY(!opened.isSlicing());
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingPreview::makesWhatWasLookedAt()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    QSignalSpy accepted(opened.dialog, &QDialog::accepted);
    opened.finish(opened.slice());
    const QPointer<PathscopeDialog> preview = opened.preview();

    QTest::mouseClick(&opened.previewButton("acceptButton"), Qt::LeftButton);

    QTRY_COMPARE(accepted.count(), 1);
    const Json::Value request = world.service.lastRequest("print");
    QCOMPARE(request["machine"].asString(), std::string("single"));
    QCOMPARE(QString::fromStdString(request["input_path"].asString()), world.inputFile);
    QTRY_VERIFY(preview.isNull());
}

void tst_MakeThingPreview::exportsWhatWasLookedAt()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world, "archetype 3");
    opened.finish(opened.slice());
    QCOMPARE(opened.previewButton("acceptButton").text(), QStringLiteral("Export!"));
    ModalDriver driver;
    driver.expectSaveDialog(world.path("out.x3g"));

    QTest::mouseClick(&opened.previewButton("acceptButton"), Qt::LeftButton);

    QTRY_COMPARE(world.service.requests("print_to_file").size(), std::size_t(1));
    world.endExport();
}

void tst_MakeThingPreview::comesBackWhenThePreviewIsRejected()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    opened.finish(opened.slice());

    QTest::mouseClick(&opened.previewButton("cancelButton"), Qt::LeftButton);

    QTRY_VERIFY(opened.preview() == nullptr);
    QVERIFY(opened.dialog->isVisible());
    QVERIFY(opened.mainButton().isEnabled());
    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
}

void tst_MakeThingPreview::slicesAgain()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedPreview opened(world);
    for (int round = 1; round <= 2; ++round) {
        opened.finish(opened.slice());
        QCOMPARE(world.service.requests("slice").size(), std::size_t(round));
        QTest::mouseClick(&opened.previewButton("cancelButton"), Qt::LeftButton);
        QTRY_VERIFY(opened.preview() == nullptr);
    }
}

void tst_MakeThingPreview::remembersThatItIsWanted()
{
    TestLog log;
    ThingWorld world(m_facade);
    {
        const OpenedPreview opened(world);
        opened.slice();
    }

    const OpenedThing again(world);

    QVERIFY(again.previewWanted().isChecked());
}

QTEST_MAIN(tst_MakeThingPreview)
#include "tst_make_thing_preview.moc"
