#include "support/scripted_service.h"
#include "support/test_log.h"

#include "apps/ostrand/export_watch.h"
#include "apps/ostrand/job_list_model.h"
#include "apps/ostrand/log_model.h"
#include "apps/ostrand/main_window.h"
#include "apps/ostrand/notice_bar.h"
#include "apps/ostrand/service_link.h"

#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekqt.h>
#include <trovek/wire.h>

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_scene.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

using namespace ostrand;
using namespace trovek;

namespace {

/** Another program's service, or, when it says so, one that the window may restart. */
class TestSource : public ServiceSource
{
public:
    TestSource(ScriptedService& service, bool own)
        : m_service(service)
        , m_own(own)
    {}

    Address address() override { return m_service.address(); }
    QString description() const override { return QStringLiteral("the test"); }
    bool canRestart() const override { return m_own; }
    void restart() override
    {
        m_service.stop();
        m_service.start();
    }

private:
    ScriptedService& m_service;
    const bool m_own;
};

struct World
{
    ScriptedService service;
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
    TrovekQt facade;
    LogModel log;
    ServiceLink link;
    std::map<int, QString> pending;
    ExportWatch exports{facade, [this] {
                            return pending;
                        }};
    std::unique_ptr<MainWindow> window;

    explicit World(bool own = false)
        : link(facade, std::make_unique<TestSource>(service, own), {10})
    {
        service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
        window = makeWindow();
    }

    std::unique_ptr<MainWindow> makeWindow()
    {
        return std::make_unique<MainWindow>(Surroundings{facade, settings, link, exports, log});
    }

    void show()
    {
        link.connectNow();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    QString write(const QString& name, const QByteArray& content = "G28\n")
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QAction& action(const char* name) { return *window->findChild<QAction*>(QLatin1String(name)); }

    QPushButton& makeButton()
    {
        return *window->findChild<QPushButton*>(QStringLiteral("makeButton"));
    }

    void runJob(int id, const std::string& kind)
    {
        Job::Data job;
        job.id = id;
        job.kind = kind;
        service.setJob(job);
        service.notifyJobAdded(id);
        QTRY_VERIFY(window->jobs().indexOf(id).isValid());
    }

    void loseLink()
    {
        QSignalSpy gone(&facade, &TrovekQt::disconnected);
        service.stop();
        QVERIFY(gone.wait());
    }
};

/** Answers message boxes by the label of a button, and remembers their headings. */
struct Answer
{
    QTimer timer;
    QStringList headings;

    explicit Answer(const QString& label)
    {
        QObject::connect(&timer, &QTimer::timeout, [this, label] {
            auto* box = qobject_cast<MessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            for (const QLabel* text : box->findChildren<QLabel*>()) {
                if (!text->text().isEmpty()) {
                    headings.append(text->text());
                    break;
                }
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

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void startsWithAnInvitation();
    void opensAFile();
    void drawsTheMachineUsedLastAroundToolpaths_data();
    void drawsTheMachineUsedLastAroundToolpaths();
    void keepsTheMachineAroundToolpathsWhenItGoes();
    void opensThroughTheChooser();
    void opensADroppedFile();
    void refusesOtherDrops();
    void saysThatAFileIsNotThere();
    void opensAnUnknownKindWithoutMakingIt();
    void opensTheDialogForAModel();
    void makeOpensTheDialogOnce();
    void makeTellsWhenTheFileHasGone();
    void makingSendsThePrintAndShowsTheJob();
    void showsTheStateOfTheLink();
    void saysOnceThatThereIsNoService();
    void namesExportsUnderWayWhenTheLinkBreaks();
    void theNoticeGoesWhenTheLinkIsBack();
    void namesLostExports();
    void aNoticeCanBeClosed();
    void reconnectsWhenAsked();
    void restartsItsOwnServiceAfterAQuestion();
    void controlsTheSystemsServiceWhereItIsNotItsOwn();
    void closesWithoutAQuestionWhenNothingRuns();
    void asksBeforeLeavingExports_data();
    void asksBeforeLeavingExports();
    void asksBeforeEndingItsOwnPrints();
    void leavesAnothersPrintsAlone();
    void remembersWhereItStood();
    void remembersTheLastFolder();
    void survivesALossWhileTheMakeDialogIsOpen();
    void survivesALossWhileMaking();
    void everyActionHasANameAndNoShortcutTwice();
    void givesWidgetsNamesForTheBlind();
};

void tst_MainWindow::startsWithAnInvitation()
{
    TestLog log;
    World world;
    world.show();
    QCOMPARE(world.window->windowTitle(), QStringLiteral("Ostrand"));
    QVERIFY(world.window->findChild<QLabel*>(QStringLiteral("invitation"))->isVisible());
    QVERIFY(!world.action("make").isEnabled());
    QVERIFY(world.window->findChild<QDockWidget*>(QStringLiteral("jobsDock"))->isVisible());
    QVERIFY(!world.window->findChild<QDockWidget*>(QStringLiteral("logDock"))->isVisible());
}

void tst_MainWindow::opensAFile()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    world.window->openFile(path);
    QCOMPARE(world.window->file(), path);
    QCOMPARE(world.window->windowTitle(), QStringLiteral("part.gcode - Ostrand"));
    QVERIFY(world.action("make").isEnabled());
    QVERIFY(world.makeButton().isVisible());
    QVERIFY(world.makeButton().hasFocus());
}

void tst_MainWindow::drawsTheMachineUsedLastAroundToolpaths_data()
{
    QTest::addColumn<QString>("lastUsed");
    QTest::addColumn<bool>("openBeforeConnecting");
    QTest::addColumn<float>("width");
    QTest::addColumn<bool>("dual");

    QTest::newRow("the first without any") << QString() << false << 100.0F << false;
    QTest::newRow("the one that was used") << QStringLiteral("wide") << false << 300.0F << true;
    QTest::newRow("the first when that is gone")
        << QStringLiteral("gone") << false << 100.0F << false;
    QTest::newRow("an open file gets it too") << QStringLiteral("wide") << true << 300.0F << true;
}

void tst_MainWindow::drawsTheMachineUsedLastAroundToolpaths()
{
    TestLog log;
    QFETCH(QString, lastUsed);
    QFETCH(bool, openBeforeConnecting);
    QFETCH(float, width);
    QFETCH(bool, dual);
    World world;
    const auto machine = [](const char* key, float size, int extruders) {
        Printer::Data data = ScriptedService::machine(key, Printer::Fabrino2);
        data.numberOfExtruders = extruders;
        const float volume[6] = {0, 0, 0, size, 80, 90};
        std::copy(std::begin(volume), std::end(volume), std::begin(data.buildVolume));
        return data;
    };
    world.service.changePrinter(machine("left", 100, 1));
    world.service.addPrinter(machine("wide", 300, 2));
    if (!lastUsed.isEmpty())
        world.settings.setValue(QStringLiteral("make_dialog/printer"), lastUsed);
    const QString path = world.write(QStringLiteral("part.gcode"));
    if (openBeforeConnecting)
        world.window->openFile(path);
    world.show();
    QTRY_COMPARE(int(world.facade.printers().size()), 2);
    if (!openBeforeConnecting)
        world.window->openFile(path);
    const auto setting = [&world] {
        return world.window->toolpathView()->toolpathScene()->setting();
    };
    QTRY_COMPARE(setting().buildVolume.width(), width);
    QCOMPARE(setting().buildVolume.depth(), 80.0F);
    QCOMPARE(setting().buildVolume.height(), 90.0F);
    QCOMPARE(setting().dualExtrusion, dual);
}

void tst_MainWindow::keepsTheMachineAroundToolpathsWhenItGoes()
{
    TestLog log;
    World world;
    world.show();
    QTRY_COMPARE(int(world.facade.printers().size()), 1);
    world.window->openFile(world.write(QStringLiteral("part.gcode")));
    const QWidget* before = world.window->toolpathView();
    world.loseLink();
    QCOMPARE(world.window->toolpathView(), before);
}

void tst_MainWindow::opensThroughTheChooser()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    QTimer answer;
    connect(&answer, &QTimer::timeout, &answer, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer.stop();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Open"));
        auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Enter);
    });
    answer.start(10);
    QTest::keyClick(world.window.get(), Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(world.window->file(), path);
}

void tst_MainWindow::opensADroppedFile()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://example.org/a.gcode")), QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(world.window.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(world.window.get(), &drop);
    QCOMPARE(world.window->file(), path);
}

void tst_MainWindow::refusesOtherDrops()
{
    TestLog log;
    World world;
    world.show();
    QMimeData data;
    data.setText(QStringLiteral("part.gcode"));
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(world.window.get(), &enter);
    QVERIFY(!enter.isAccepted());
}

void tst_MainWindow::saysThatAFileIsNotThere()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    world.window->openFile(path);
    Answer answer(QStringLiteral("&OK"));
    world.window->openFile(world.folder.filePath(QStringLiteral("gone.gcode")));
    QTRY_COMPARE(answer.headings, QStringList(QStringLiteral("File not found")));
    QCOMPARE(world.window->file(), path);
    // A folder is no file either.
    world.window->openFile(world.folder.path());
    QTRY_COMPARE(answer.headings.size(), 2);
}

void tst_MainWindow::opensAnUnknownKindWithoutMakingIt()
{
    TestLog log;
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.txt")));
    QVERIFY(!world.action("make").isEnabled());
    QVERIFY(!world.makeButton().isEnabled());
    QVERIFY(world.window->findChild<QLabel*>(QStringLiteral("fileRemark"))->isVisible());
}

void tst_MainWindow::opensTheDialogForAModel()
{
    TestLog log;
    // The program sets it once, which a test with many windows cannot.
    log.expectError("Profile directory not set");
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.stl")));
    QTest::mouseClick(&world.makeButton(), Qt::LeftButton);
    QVERIFY(qobject_cast<MakeThingDialog*>(world.window->makeDialog()));
    world.window->makeDialog()->reject();
    QTRY_VERIFY(!world.window->makeDialog());
}

void tst_MainWindow::makeOpensTheDialogOnce()
{
    TestLog log;
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.gcode")));
    QTest::mouseClick(&world.makeButton(), Qt::LeftButton);
    QVERIFY(qobject_cast<MakeGCodeDialog*>(world.window->makeDialog()));
    world.window->make();
    QCOMPARE(world.window->findChildren<MakeGCodeDialog*>().size(), 1);
    world.window->makeDialog()->reject();
    QTRY_VERIFY(!world.window->makeDialog());
    world.window->activateWindow();
    QTRY_VERIFY(world.window->isActiveWindow());
    QTest::keyClick(world.window.get(), Qt::Key_M, Qt::ControlModifier);
    QVERIFY(world.window->makeDialog());
}

void tst_MainWindow::makeTellsWhenTheFileHasGone()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    world.window->openFile(path);
    QFile::remove(path);
    QTest::mouseClick(&world.makeButton(), Qt::LeftButton);
    QVERIFY(!world.window->makeDialog());
    QVERIFY(world.window->notice().isVisible());
    QCOMPARE(world.window->notice().text(), QStringLiteral("This file no longer exists."));
    QVERIFY(!world.makeButton().isEnabled());
}

void tst_MainWindow::makingSendsThePrintAndShowsTheJob()
{
    TestLog log;
    World world;
    world.show();
    const QString path = world.write(QStringLiteral("part.gcode"));
    world.window->openFile(path);
    QTest::mouseClick(&world.makeButton(), Qt::LeftButton);
    auto* dialog = world.window->makeDialog();
    QVERIFY(dialog);
    QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("mainButton")),
                      Qt::LeftButton);
    QTRY_COMPARE(world.service.requests("print").size(), std::size_t(1));
    QCOMPARE(world.service.lastRequest("print")["input_path"].asString(), path.toStdString());
    QTRY_COMPARE(world.window->jobs().rowCount(), 1);
    QTRY_VERIFY(!world.window->makeDialog());
}

void tst_MainWindow::showsTheStateOfTheLink()
{
    TestLog log;
    World world;
    world.show();
    const auto* text = world.window->findChild<QLabel*>(QStringLiteral("linkText"));
    QCOMPARE(text->text(), QStringLiteral("Connected to the test"));
    QVERIFY(!world.action("reconnect").isEnabled());
    world.loseLink();
    QTRY_VERIFY(text->text().startsWith(QStringLiteral("No connection")));
    QVERIFY(world.action("reconnect").isEnabled());
    QCOMPARE(world.window->notice().heading(),
             QStringLiteral("The connection to the background service is lost"));
    QVERIFY(world.window->notice().isVisible());
}

void tst_MainWindow::saysOnceThatThereIsNoService()
{
    TestLog log;
    World world;
    world.service.stop();
    Answer answer(QStringLiteral("&OK"));
    world.show();
    QTRY_COMPARE(answer.headings, QStringList(QStringLiteral("Background Service Unavailable")));
    QSignalSpy states(&world.link, &ServiceLink::stateChanged);
    QTRY_VERIFY(states.count() > 3);
    QCOMPARE(answer.headings.size(), 1);
}

void tst_MainWindow::namesExportsUnderWayWhenTheLinkBreaks()
{
    TestLog log;
    World world;
    world.show();
    world.pending = {{4, QStringLiteral("/a/part.x3g")}, {5, QStringLiteral("/a/b%1.gcode")}};
    world.loseLink();
    QTRY_COMPARE(world.window->notice().text(),
                 QStringLiteral("Ostrand tries by itself to connect again. These exports are not "
                                "finished yet:\n/a/part.x3g\n/a/b%1.gcode"));
}

void tst_MainWindow::theNoticeGoesWhenTheLinkIsBack()
{
    TestLog log;
    World world;
    world.show();
    world.loseLink();
    QTRY_VERIFY(world.window->notice().isVisible());
    world.service.start();
    QTRY_VERIFY(!world.window->notice().isVisible());
    QCOMPARE(world.link.state(), ServiceLink::Connected);
}

void tst_MainWindow::namesLostExports()
{
    TestLog log;
    World world;
    world.show();
    for (int i = 1; i <= 10; ++i)
        world.pending[i] = QStringLiteral("/a/%1.x3g").arg(i);
    world.loseLink();
    world.service.failAlways("get_job", wire::makeError(wire::error::kUnknownJob, "No such job"));
    world.service.start();
    QTRY_COMPARE(world.window->notice().heading(), QStringLiteral("Exports were lost"));
    QVERIFY(world.window->notice().isVisible());
    const QStringList lines = world.window->notice().text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 10);
    QCOMPARE(lines.at(0),
             QStringLiteral("The background service stopped before these files were finished. "
                            "Please export them again:"));
    QCOMPARE(lines.at(1), QStringLiteral("/a/1.x3g"));
    QCOMPARE(lines.at(8), QStringLiteral("/a/8.x3g"));
    QCOMPARE(lines.at(9), QStringLiteral("and 2 more"));
    // They are no reason to keep the window open any more.
    Answer answer(QStringLiteral("&Cancel"));
    QVERIFY(world.window->close());
    QVERIFY(answer.headings.isEmpty());
}

void tst_MainWindow::aNoticeCanBeClosed()
{
    TestLog log;
    World world;
    world.show();
    world.loseLink();
    QTRY_VERIFY(world.window->notice().isVisible());
    QTest::mouseClick(world.window->notice().findChild<QWidget*>(QStringLiteral("noticeClose")),
                      Qt::LeftButton);
    QVERIFY(!world.window->notice().isVisible());
    // It stays closed until something new happens.
    QSignalSpy states(&world.link, &ServiceLink::stateChanged);
    QTRY_VERIFY(states.count() > 3);
    QVERIFY(!world.window->notice().isVisible());
}

void tst_MainWindow::reconnectsWhenAsked()
{
    TestLog log;
    World world;
    ServiceLink slow(world.facade, std::make_unique<TestSource>(world.service, false), {600000});
    MainWindow window(Surroundings{world.facade, world.settings, slow, world.exports, world.log});
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    world.service.stop();
    Answer answer(QStringLiteral("&OK"));
    slow.connectNow();
    QTRY_COMPARE(answer.headings.size(), 1);
    world.service.start();
    QTRY_VERIFY(!QApplication::activeModalWidget());
    window.activateWindow();
    QTRY_VERIFY(window.isActiveWindow());
    QTest::keyClick(&window, Qt::Key_F5);
    QCOMPARE(slow.state(), ServiceLink::Connected);
}

void tst_MainWindow::restartsItsOwnServiceAfterAQuestion()
{
    TestLog log;
    World world(true);
    world.show();
    world.runJob(1, "print");
    {
        Answer answer(QStringLiteral("&Cancel"));
        world.action("restartService").trigger();
        QCOMPARE(answer.headings, QStringList(QStringLiteral("Restart while jobs are running?")));
        QCOMPARE(world.service.requests("hello").size(), std::size_t(1));
    }
    Answer answer(QStringLiteral("&Restart"));
    world.action("restartService").trigger();
    QCOMPARE(answer.headings.size(), 1);
    QTRY_COMPARE(world.service.requests("hello").size(), std::size_t(2));
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
}

void tst_MainWindow::controlsTheSystemsServiceWhereItIsNotItsOwn()
{
    TestLog log;
    World world;
    world.show();
    for (const char* name : {"startService", "stopService", "restartService"}) {
        QVERIFY(world.action(name).isVisible());
        QVERIFY(world.action(name).isEnabled());
    }
    World own(true);
    QVERIFY(!own.action("startService").isVisible());
    QVERIFY(!own.action("stopService").isVisible());
    QVERIFY(own.action("restartService").isEnabled());
}

void tst_MainWindow::closesWithoutAQuestionWhenNothingRuns()
{
    TestLog log;
    World world(true);
    world.show();
    Answer answer(QStringLiteral("&Cancel"));
    QVERIFY(world.window->close());
    QVERIFY(answer.headings.isEmpty());
}

void tst_MainWindow::asksBeforeLeavingExports_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<bool>("closes");
    QTest::newRow("stay") << QStringLiteral("&Cancel") << false;
    QTest::newRow("escape") << QStringLiteral("no such button") << false;
    QTest::newRow("leave") << QStringLiteral("Close &Ostrand") << true;
}

void tst_MainWindow::asksBeforeLeavingExports()
{
    QFETCH(QString, label);
    QFETCH(bool, closes);
    TestLog log;
    World world;
    world.show();
    world.pending = {{4, QStringLiteral("/a/part.x3g")}};
    Answer answer(label);
    world.action("quit").trigger();
    QCOMPARE(answer.headings, QStringList(QStringLiteral("Unfinished Exports")));
    QCOMPARE(world.window->isVisible(), !closes);
}

void tst_MainWindow::asksBeforeEndingItsOwnPrints()
{
    TestLog log;
    World world(true);
    world.show();
    world.runJob(1, "print");
    {
        Answer answer(QStringLiteral("&Cancel"));
        QVERIFY(!world.window->close());
        QCOMPARE(answer.headings, QStringList(QStringLiteral("Quit while printing?")));
    }
    Answer answer(QStringLiteral("&Quit"));
    QVERIFY(world.window->close());
}

void tst_MainWindow::leavesAnothersPrintsAlone()
{
    TestLog log;
    World world;
    world.show();
    world.runJob(1, "print");
    Answer answer(QStringLiteral("&Cancel"));
    QVERIFY(world.window->close());
    QVERIFY(answer.headings.isEmpty());
}

void tst_MainWindow::remembersWhereItStood()
{
    TestLog log;
    World world;
    world.show();
    world.window->resize(777, 555);
    world.window->findChild<QDockWidget*>(QStringLiteral("jobsDock"))->hide();
    QVERIFY(world.window->close());
    world.window = world.makeWindow();
    world.window->show();
    QCOMPARE(world.window->size(), QSize(777, 555));
    QVERIFY(!world.window->findChild<QDockWidget*>(QStringLiteral("jobsDock"))->isVisible());
}

void tst_MainWindow::remembersTheLastFolder()
{
    TestLog log;
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.gcode")));
    QCOMPARE(world.settings.value(QStringLiteral("ostrand/lastOpenDir")).toString(),
             world.folder.path());
}

void tst_MainWindow::survivesALossWhileTheMakeDialogIsOpen()
{
    TestLog log;
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.gcode")));
    world.window->make();
    world.loseLink();
    QTRY_COMPARE(world.window->notice().isVisible(), true);
    QVERIFY(world.window->makeDialog());
    world.service.start();
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
    QTRY_VERIFY(world.window->makeDialog()
                    ->findChild<QPushButton*>(QStringLiteral("mainButton"))
                    ->isEnabled());
}

void tst_MainWindow::survivesALossWhileMaking()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.show();
    world.window->openFile(world.write(QStringLiteral("part.gcode")));
    world.window->make();
    world.service.dropConnectionOn("print");
    Answer answer(QStringLiteral("&OK"));
    QTest::mouseClick(
        world.window->makeDialog()->findChild<QPushButton*>(QStringLiteral("mainButton")),
        Qt::LeftButton);
    QTRY_COMPARE(answer.headings.size(), 1);
    QTRY_COMPARE(world.link.state(), ServiceLink::Connected);
    QVERIFY(world.window->makeDialog());
}

void tst_MainWindow::everyActionHasANameAndNoShortcutTwice()
{
    TestLog log;
    World world;
    QStringList shortcuts;
    for (const QAction* action : world.window->findChildren<QAction*>()) {
        if (action->isSeparator() || action->shortcut().isEmpty())
            continue;
        QVERIFY(!action->text().isEmpty());
        QVERIFY2(!shortcuts.contains(action->shortcut().toString()),
                 qPrintable(action->shortcut().toString()));
        shortcuts.append(action->shortcut().toString());
    }
    for (const char* expected : {"Ctrl+O", "Ctrl+M", "Ctrl+Q", "F5", "Del"})
        QVERIFY2(shortcuts.contains(QLatin1String(expected)), expected);
}

void tst_MainWindow::givesWidgetsNamesForTheBlind()
{
    TestLog log;
    World world;
    for (const char* name : {"jobs", "log", "logSearch", "noticeClose"}) {
        const auto* widget = world.window->findChild<QWidget*>(QLatin1String(name));
        QVERIFY2(widget && !widget->accessibleName().isEmpty(), name);
    }
}

QTEST_MAIN(tst_MainWindow)
#include "tst_main_window.moc"
