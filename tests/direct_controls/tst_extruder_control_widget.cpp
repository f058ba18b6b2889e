#include "direct_controls/direct_world.h"
#include "support/test_log.h"

#include <trovek-ui/extruder_control_widget.h>

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include <memory>

using namespace trovek;

namespace {

QStringList logOf(const TestLog& log)
{
    QStringList lines;
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.file == "src\\direct_controls\\extruder_control_widget")
            lines.append(QStringLiteral("%1 %2")
                             .arg(entry.severity)
                             .arg(QString::fromStdString(entry.message)));
    }
    return lines;
}

QString text(const QWidget& panel, const char* label)
{
    const QLabel* const found = child<QLabel>(panel, label);
    return found->isVisibleTo(&panel) ? found->text() : QStringLiteral("hidden");
}

void press(const QWidget& panel, const char* button)
{
    QTest::mouseClick(child<QPushButton>(panel, button), Qt::LeftButton);
}

QString jog(int axis, int distance)
{
    return QStringLiteral("jog %1 %2 1000000000").arg(axis).arg(distance);
}

QString cancel(int id)
{
    return QStringLiteral("cancel %1").arg(id);
}

} // namespace

class tst_ExtruderControlWidget : public QObject
{
    Q_OBJECT

private slots:
    void namesItsControls();
    void offersTwoExtrudersOnlyWhereThereAreTwo();
    void followsAMachineThatComesLater();
    void extrudesAndReverses_data();
    void extrudesAndReverses();
    void stopsOneJogBeforeTheNext();
    void stopsTheLastJogBeforeTheNextAlsoWhenItIsOver();
    void stopsWhatRuns();
    void asksToStopAlsoWithNothingRunning();
    void logsWhatFails_data();
    void logsWhatFails();
    void forgetsAnErrorAtTheNextSuccess();
    void heatsTheExtruderInUse();
    void stopsHeating();
    void showsTheHeatOfTheExtruderInUse();
    void showsEveryTemperature();
    void logsAToolheadThatIsMissing();
    void ignoresOtherMachines();
    void leavesAMachineWithAnotherJobAlone_data();
    void leavesAMachineWithAnotherJobAlone();
    void isFreeDuringItsOwnJog();
    void isBusyAfterItsOwnJogIsOver();
    void stopsTheJogWhenItGoes_data();
    void stopsTheJogWhenItGoes();
    void stopsAtItsEndWhatItCouldNotStopBefore();
    void goesOnWhenMinimized();
    void stopsTheJogWhenTheMachineLeaves();
    void forgetsTheJogWithTheLink();
    void leavesTheJobsOfTheNextServiceAlone();
    void callsNothingWhenItGoesWithoutAJog();
    void showsNothingOfAMachineThatIsAway();
};

void tst_ExtruderControlWidget::namesItsControls()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, 2);
    const ExtruderControlWidget panel(world.facade, world.name());
    QStringList texts;
    for (const QLabel* label : panel.findChildren<QLabel*>())
        texts.append(label->text());
    QStringList buttons;
    for (const QPushButton* button : panel.findChildren<QPushButton*>())
        buttons.append(button->text());

    for (const char* label : {"Motor:", "Use:", "Current Temperature:", "Target Temperature:"})
        QVERIFY2(texts.contains(QString::fromLatin1(label)), label);
    QCOMPARE(buttons,
             QStringList({QStringLiteral("Extrude (Load)"), QStringLiteral("Reverse (Unload)"),
                          QStringLiteral("Stop"), QStringLiteral("Heat")}));
    // As a user reads it: "Heat & Extrude".
    QCOMPARE(panel.findChildren<QGroupBox*>().first()->title(), QStringLiteral("Heat && Extrude"));
    QCOMPARE(child(panel, "stop")->toolTip(),
             QStringLiteral("Stop loading or unloading the filament"));
    const auto* const target = child<QSpinBox>(panel, "targetTemperature");
    QCOMPARE(target->minimum(), 0);
    QCOMPARE(target->maximum(), 260);
    QCOMPARE(target->value(), 230);
    QCOMPARE(target->suffix(), QStringLiteral(" \u00b0C"));
    QCOMPARE(target->toolTip(),
             QStringLiteral("Temperature to heat the extruder to when \"Heat\" is clicked"));
}

void tst_ExtruderControlWidget::offersTwoExtrudersOnlyWhereThereAreTwo()
{
    TestLog log;
    DirectWorld dual(Printer::Fabrino2X, 2);
    const ExtruderControlWidget panel(dual.facade, dual.name());
    const auto* const use = child<QComboBox>(panel, "use");
    QCOMPARE(use->count(), 2);
    QCOMPARE(use->itemText(0), QStringLiteral("Left Extruder"));
    QCOMPARE(use->itemText(1), QStringLiteral("Right Extruder"));
    QVERIFY(use->isVisibleTo(&panel));
    QVERIFY(child(panel, "useLabel")->isVisibleTo(&panel));

    DirectWorld single(Printer::Fabrino2);
    const ExtruderControlWidget other(single.facade, single.name());
    QVERIFY(child<QComboBox>(other, "use")->count() <= 1);
    QVERIFY(!child(other, "use")->isVisibleTo(&other));
    QVERIFY(!child(other, "useLabel")->isVisibleTo(&other));
}

void tst_ExtruderControlWidget::followsAMachineThatComesLater()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, 2);
    world.unplug();
    ExtruderControlWidget panel(world.facade, world.name());
    QVERIFY(!child(panel, "load")->isEnabled());
    QVERIFY(!panel.isMachineFree());

    world.plugIn();

    QVERIFY(child(panel, "load")->isEnabled());
    QVERIFY(panel.isMachineFree());
    QCOMPARE(child<QComboBox>(panel, "use")->count(), 2);
    QCOMPARE(text(panel, "currentTemperature"), QStringLiteral("25 \u00b0C"));
}

void tst_ExtruderControlWidget::extrudesAndReverses_data()
{
    QTest::addColumn<int>("extruders");
    QTest::addColumn<int>("use");
    QTest::addColumn<int>("axis");

    QTest::newRow("single") << 1 << -1 << 0;
    QTest::newRow("dual, left") << 2 << 0 << 1;
    QTest::newRow("dual, right") << 2 << 1 << 0;
}

void tst_ExtruderControlWidget::extrudesAndReverses()
{
    QFETCH(int, extruders);
    QFETCH(int, use);
    QFETCH(int, axis);
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, extruders);
    ExtruderControlWidget panel(world.facade, world.name());
    child<QComboBox>(panel, "use")->setCurrentIndex(use);

    press(panel, "load");
    const int first = world.service.lastJobID();
    QVERIFY(panel.isJogging());
    press(panel, "unload");
    const int second = world.service.lastJobID();

    QCOMPARE(world.takeRequests(), QStringList({jog(axis, 2000), cancel(first), jog(axis, -2000)}));
    QCOMPARE(logOf(log),
             QStringList({QStringLiteral("1 Before jog job ID: %1").arg(Job::kInvalidID),
                          QStringLiteral("1 After jog job ID: %1").arg(first),
                          QStringLiteral("1 Before jog job ID: %1").arg(first),
                          QStringLiteral("1 Before stop job ID: %1").arg(first),
                          QStringLiteral("1 After stop job ID: %1").arg(first),
                          QStringLiteral("1 After jog job ID: %1").arg(second)}));
}

void tst_ExtruderControlWidget::stopsOneJogBeforeTheNext()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    const int first = world.service.lastJobID();
    world.takeRequests();

    press(panel, "load");

    QCOMPARE(world.takeRequests(), QStringList({cancel(first), jog(0, 2000)}));
    QCOMPARE(int(world.service.job(first).conclusion), int(JobCanceled));
    QVERIFY(panel.isJogging());
}

void tst_ExtruderControlWidget::stopsTheLastJogBeforeTheNextAlsoWhenItIsOver()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    const int first = world.service.lastJobID();
    press(panel, "stop");
    world.takeRequests();

    press(panel, "load");

    QCOMPARE(world.takeRequests(), QStringList({cancel(first), jog(0, 2000)}));
}

void tst_ExtruderControlWidget::stopsWhatRuns()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    world.takeRequests();

    press(panel, "stop");

    QCOMPARE(world.takeRequests(), QStringList(cancel(world.service.lastJobID())));
    QVERIFY(!panel.isJogging());
}

void tst_ExtruderControlWidget::asksToStopAlsoWithNothingRunning()
{
    TestLog log;
    log.allowErrors("");
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());

    press(panel, "stop");

    QCOMPARE(world.takeRequests(), QStringList(cancel(Job::kInvalidID)));
    const QStringList lines = logOf(log);
    QCOMPARE(lines.first(), QStringLiteral("1 Before stop job ID: %1").arg(Job::kInvalidID));
    QCOMPARE(lines.last(), QStringLiteral("1 After stop job ID: %1").arg(Job::kInvalidID));
}

void tst_ExtruderControlWidget::logsWhatFails_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("button");

    QTest::newRow("extruding") << QByteArray("jog") << QByteArray("load");
    QTest::newRow("reversing") << QByteArray("jog") << QByteArray("unload");
    QTest::newRow("stopping") << QByteArray("cancel_job") << QByteArray("stop");
    QTest::newRow("heating") << QByteArray("set_toolhead_temperature") << QByteArray("heat");
}

void tst_ExtruderControlWidget::logsWhatFails()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, button);
    TestLog log;
    log.expectError("The nozzle fell off");
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    world.service.failNext(method.toStdString(), JsonRpcException("The nozzle fell off"));

    press(panel, button);

    QVERIFY(logOf(log).contains(QStringLiteral("0 The nozzle fell off")));
    QCOMPARE(text(panel, "notice"), QStringLiteral("The nozzle fell off"));
    QCOMPARE(child<QLabel>(panel, "notice")->textFormat(), Qt::PlainText);
    QVERIFY(!panel.isJogging());
    // And everything can be tried again.
    for (const char* control : {"load", "unload", "stop", "heat", "targetTemperature"})
        QVERIFY(child(panel, control)->isEnabled());
}

void tst_ExtruderControlWidget::forgetsAnErrorAtTheNextSuccess()
{
    TestLog log;
    log.expectError("Too cold");
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    QCOMPARE(text(panel, "notice"), QStringLiteral("hidden"));
    world.service.failNext("jog", JsonRpcException("Too cold"));
    press(panel, "load");
    QCOMPARE(text(panel, "notice"), QStringLiteral("Too cold"));

    press(panel, "load");

    QCOMPARE(text(panel, "notice"), QStringLiteral("hidden"));
    for (const char* button : {"stop", "heat"}) {
        log.expectError("Too cold");
        world.service.failNext("jog", JsonRpcException("Too cold"));
        press(panel, "load");
        QCOMPARE(text(panel, "notice"), QStringLiteral("Too cold"));
        press(panel, button);
        QCOMPARE(text(panel, "notice"), QStringLiteral("hidden"));
    }
}

void tst_ExtruderControlWidget::heatsTheExtruderInUse()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, 2);
    ExtruderControlWidget panel(world.facade, world.name());
    const auto* const heat = child<QPushButton>(panel, "heat");
    QCOMPARE(heat->text(), QStringLiteral("Heat"));
    QCOMPARE(heat->toolTip(),
             QStringLiteral("Start heating the extruder to the target temperature"));

    child<QSpinBox>(panel, "targetTemperature")->setValue(199);
    press(panel, "heat");
    child<QComboBox>(panel, "use")->setCurrentIndex(1);
    press(panel, "heat");

    QCOMPARE(world.takeRequests(),
             QStringList({QStringLiteral("heat 1 199"), QStringLiteral("heat 0 199")}));
}

void tst_ExtruderControlWidget::stopsHeating()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    world.change([](Printer::Data& machine) { machine.toolheadTargetTemperature = {210}; });
    const auto* const heat = child<QPushButton>(panel, "heat");

    QCOMPARE(heat->text(), QStringLiteral("Stop Heating"));
    QCOMPARE(heat->toolTip(), QStringLiteral("Let the extruder cool down"));
    QVERIFY(heat->isEnabled());
    QVERIFY(!child(panel, "targetTemperature")->isEnabled());
    press(panel, "heat");
    QCOMPARE(world.takeRequests(), QStringList(QStringLiteral("heat 0 0")));

    world.change([](Printer::Data& machine) { machine.toolheadTargetTemperature = {0}; });
    QCOMPARE(heat->text(), QStringLiteral("Heat"));
    QVERIFY(child(panel, "targetTemperature")->isEnabled());
}

void tst_ExtruderControlWidget::showsTheHeatOfTheExtruderInUse()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, 2);
    ExtruderControlWidget panel(world.facade, world.name());
    world.change([](Printer::Data& machine) {
        machine.toolTemperature.toolheads = {31, 201};
        machine.toolheadTargetTemperature = {0, 220};
    });

    QCOMPARE(text(panel, "currentTemperature"), QStringLiteral("201 \u00b0C"));
    QCOMPARE(child<QPushButton>(panel, "heat")->text(), QStringLiteral("Stop Heating"));
    child<QComboBox>(panel, "use")->setCurrentIndex(1);
    QCOMPARE(text(panel, "currentTemperature"), QStringLiteral("31 \u00b0C"));
    QCOMPARE(child<QPushButton>(panel, "heat")->text(), QStringLiteral("Heat"));
}

void tst_ExtruderControlWidget::showsEveryTemperature()
{
    TestLog log;
    DirectWorld dual(Printer::Fabrino2X, 2, true);
    const ExtruderControlWidget panel(dual.facade, dual.name());
    dual.change([](Printer::Data& machine) {
        machine.toolTemperature.toolheads = {31, 201};
        machine.toolTemperature.platform = 65;
    });
    QCOMPARE(text(panel, "leftTemperature"), QStringLiteral("201 \u00b0C"));
    QCOMPARE(text(panel, "rightTemperature"), QStringLiteral("31 \u00b0C"));
    QCOMPARE(text(panel, "platformTemperature"), QStringLiteral("65 \u00b0C"));

    DirectWorld single(Printer::Fabrino2);
    const ExtruderControlWidget other(single.facade, single.name());
    QCOMPARE(text(other, "currentTemperature"), QStringLiteral("25 \u00b0C"));
    QVERIFY(!child(other, "temperatures")->isVisibleTo(&other));
}

void tst_ExtruderControlWidget::logsAToolheadThatIsMissing()
{
    TestLog log;
    log.expectError("Sanitize error");
    log.expectError("Sanitize error");
    DirectWorld world(Printer::Fabrino2X, 2);
    const ExtruderControlWidget panel(world.facade, world.name());

    world.change([](Printer::Data& machine) { machine.toolheadTargetTemperature = {0}; });
    world.change([](Printer::Data& machine) {
        machine.toolheadTargetTemperature = {0, 0};
        machine.toolTemperature.toolheads = {25};
    });

    QVERIFY(child(panel, "heat")->isEnabled());
    QVERIFY(child(panel, "stop")->isEnabled());
}

void tst_ExtruderControlWidget::ignoresOtherMachines()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    Printer::Data other = ScriptedService::machine("other", Printer::Fabrino2);
    world.service.addPrinter(other);
    QTRY_VERIFY(world.facade.printerFromKey(MachineName("other")));
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    world.takeRequests();

    auto* const celsius = child<QLabel>(panel, "currentTemperature");
    celsius->setText(QStringLiteral("as it was"));
    QSignalSpy changed(&world.facade, &TrovekQt::printerChanged);
    other.state = Printer::Running;
    other.toolheadTargetTemperature = {230};
    world.service.changePrinter(other);
    QTRY_COMPARE(changed.count(), 1);
    QVERIFY(child(panel, "load")->isEnabled());
    QCOMPARE(child<QPushButton>(panel, "heat")->text(), QStringLiteral("Heat"));
    QCOMPARE(celsius->text(), QStringLiteral("as it was"));

    QSignalSpy removed(&world.facade, &TrovekQt::printerRemoved);
    world.service.removePrinter("other");
    QTRY_COMPARE(removed.count(), 1);
    QVERIFY(panel.isJogging());
    QCOMPARE(world.takeRequests(), QStringList());
}

void tst_ExtruderControlWidget::leavesAMachineWithAnotherJobAlone_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("free");

    QTest::newRow("idle") << int(Printer::Idle) << true;
    QTest::newRow("running") << int(Printer::Running) << false;
    QTest::newRow("paused") << int(Printer::Paused) << false;
}

void tst_ExtruderControlWidget::leavesAMachineWithAnotherJobAlone()
{
    QFETCH(int, state);
    QFETCH(bool, free);
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    world.setState(static_cast<Printer::State>(state));
    ExtruderControlWidget panel(world.facade, world.name());

    QCOMPARE(panel.isMachineFree(), free);
    QCOMPARE(child(panel, "load")->isEnabled(), free);
    QCOMPARE(child(panel, "unload")->isEnabled(), free);
    QVERIFY(child(panel, "stop")->isEnabled());
    QVERIFY(child(panel, "heat")->isEnabled());
    // While it is heated too.
    world.change([](Printer::Data& machine) { machine.toolheadTargetTemperature = {230}; });
    QVERIFY(child(panel, "heat")->isEnabled());
    QCOMPARE(child(panel, "load")->isEnabled(), free);
    world.setState(Printer::Idle);
    QVERIFY(child(panel, "load")->isEnabled());
}

void tst_ExtruderControlWidget::isFreeDuringItsOwnJog()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");

    world.setState(Printer::Running);

    QVERIFY(panel.isMachineFree());
    QVERIFY(child(panel, "load")->isEnabled());
    QVERIFY(child(panel, "unload")->isEnabled());
}

void tst_ExtruderControlWidget::isBusyAfterItsOwnJogIsOver()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    QSignalSpy concluded(&world.facade, &TrovekQt::jobConcluded);
    world.service.notifyJobConcluded(world.service.lastJobID() + 1);
    QTRY_COMPARE(concluded.count(), 1);
    QVERIFY(panel.isJogging());
    world.service.concludeJob(world.service.lastJobID(), JobFailed, "Jammed");
    QTRY_COMPARE(concluded.count(), 2);
    QVERIFY(!panel.isJogging());

    world.setState(Printer::Running);

    QVERIFY(!child(panel, "load")->isEnabled());
}

void tst_ExtruderControlWidget::stopsTheJogWhenItGoes_data()
{
    QTest::addColumn<bool>("closes");

    QTest::newRow("closed") << true;
    QTest::newRow("destroyed") << false;
}

void tst_ExtruderControlWidget::stopsTheJogWhenItGoes()
{
    QFETCH(bool, closes);
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    auto panel = std::make_unique<ExtruderControlWidget>(world.facade, world.name());
    if (closes)
        panel->show();
    press(*panel, "load");
    const int id = world.service.lastJobID();
    world.takeRequests();

    if (closes)
        panel->close();
    else
        panel.reset();

    QCOMPARE(world.takeRequests(), QStringList(cancel(id)));
    panel.reset();
    QCOMPARE(world.takeRequests(), QStringList());
}

void tst_ExtruderControlWidget::stopsAtItsEndWhatItCouldNotStopBefore()
{
    TestLog log;
    log.expectError("Not now");
    DirectWorld world(Printer::Fabrino2);
    auto panel = std::make_unique<ExtruderControlWidget>(world.facade, world.name());
    panel->show();
    press(*panel, "load");
    const int id = world.service.lastJobID();
    world.takeRequests();
    world.service.failNext("cancel_job", JsonRpcException("Not now"));

    panel->close();
    QVERIFY(panel->isJogging());
    panel.reset();

    QCOMPARE(world.takeRequests(), QStringList({cancel(id), cancel(id)}));
}

void tst_ExtruderControlWidget::goesOnWhenMinimized()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    panel.show();
    press(panel, "load");

    // As the window system tells of it.
    QHideEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    static_cast<QObject&>(panel).event(&event);

    QVERIFY(panel.isJogging());
}

void tst_ExtruderControlWidget::stopsTheJogWhenTheMachineLeaves()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    const int id = world.service.lastJobID();
    world.takeRequests();

    world.unplug();

    QCOMPARE(world.takeRequests(), QStringList(cancel(id)));
    QVERIFY(!panel.isJogging());
    QVERIFY(!child(panel, "load")->isEnabled());
}

void tst_ExtruderControlWidget::forgetsTheJogWithTheLink()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    {
        ExtruderControlWidget panel(world.facade, world.name());
        press(panel, "load");
        world.service.stop();
        QTRY_VERIFY(!world.facade.isConnected());
        QTRY_VERIFY(!panel.isJogging());
        QVERIFY(!child(panel, "load")->isEnabled());
        QVERIFY(child(panel, "stop")->isEnabled());
    }
    // The service ends it; nobody could be asked, and nothing is logged as an error.
    QVERIFY(log.messages(Log::Error).empty());
}

void tst_ExtruderControlWidget::leavesTheJobsOfTheNextServiceAlone()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    ExtruderControlWidget panel(world.facade, world.name());
    press(panel, "load");
    QSignalSpy disconnected(&world.facade, &TrovekQt::disconnected);
    world.service.stop();
    QTRY_COMPARE(disconnected.count(), 1);
    world.service.start();
    world.connectFacade();
    world.takeRequests();

    press(panel, "load");

    // The number of the last one may be somebody's print by now.
    QCOMPARE(world.takeRequests(), QStringList(jog(0, 2000)));
}

void tst_ExtruderControlWidget::callsNothingWhenItGoesWithoutAJog()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2);
    auto panel = std::make_unique<ExtruderControlWidget>(world.facade, world.name());
    panel->show();
    press(*panel, "load");
    press(*panel, "stop");
    world.takeRequests();

    panel->close();
    panel.reset();

    QCOMPARE(world.takeRequests(), QStringList());
}

void tst_ExtruderControlWidget::showsNothingOfAMachineThatIsAway()
{
    TestLog log;
    DirectWorld world(Printer::Fabrino2X, 2, true);
    const ExtruderControlWidget panel(world.facade, world.name());
    world.change([](Printer::Data& machine) { machine.toolheadTargetTemperature = {220, 220}; });

    world.unplug();

    QCOMPARE(child<QPushButton>(panel, "heat")->text(), QStringLiteral("Heat"));
    QVERIFY(child(panel, "heat")->isEnabled());
    QVERIFY(child(panel, "targetTemperature")->isEnabled());
    QVERIFY(text(panel, "currentTemperature").isEmpty());
    QVERIFY(!child(panel, "temperatures")->isVisibleTo(&panel));
    world.plugIn();
    QCOMPARE(child<QPushButton>(panel, "heat")->text(), QStringLiteral("Stop Heating"));
    QCOMPARE(text(panel, "platformTemperature"), QStringLiteral("24 \u00b0C"));
}

QTEST_MAIN(tst_ExtruderControlWidget)
#include "tst_extruder_control_widget.moc"
