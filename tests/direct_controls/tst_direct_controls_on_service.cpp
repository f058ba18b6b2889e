#include "direct_controls/direct_world.h"
#include "service/service_world.h"
#include "support/test_log.h"

#include <trovek-ui/direct_controls_dialog.h>
#include <trovek-ui/extruder_control_widget.h>

#include <QLabel>
#include <QPushButton>

#include <memory>

using namespace trovek;

namespace {

/** The real service with a machine that is open, and the dialog for it. */
class Scene
{
public:
    Scene()
    {
        m_world.start();
        facade.connectToDaemon(m_world.address());
        other.connectToDaemon(m_world.address());
        facade.connectToPort(facade.portFromName(ServiceWorld::kPort));
        waitUntil([this] { return state() == Printer::Idle; });
        dialog = std::make_unique<DirectControlsDialog>(facade, name());
        dialog->show();
    }

    ~Scene()
    {
        dialog.reset();
        facade.disconnectFromDaemon();
        other.disconnectFromDaemon();
        QCoreApplication::processEvents();
    }

    MachineName name() const { return MachineName(ServiceWorld::kMachine); }
    Printer::State state() const
    {
        const Printer* const printer = facade.printerFromKey(name());
        return printer ? printer->state() : Printer::UnknownState;
    }
    bool isEnabled(const char* control) const { return child(*dialog, control)->isEnabled(); }
    void press(const char* button)
    {
        QTest::mouseClick(child<QPushButton>(*dialog, button), Qt::LeftButton);
    }
    bool isJogging() const
    {
        return child<ExtruderControlWidget>(*dialog, "extruders")->isJogging();
    }

    /** Heats as far as the filament needs it. */
    void heat()
    {
        press("heat");
        waitUntil([this] { return facade.printerFromKey(name())->toolTemperature().at(0) > 220; });
    }
    void startJog()
    {
        heat();
        press("load");
        waitUntil([this] { return state() == Printer::Running; });
    }

    template <typename Condition>
    static void waitUntil(Condition condition)
    {
        if (!QTest::qWaitFor(condition, 10000))
            throw std::runtime_error("It did not happen");
    }

private:
    ServiceWorld m_world;

public:
    TrovekQt facade;
    /** Another program of the same user. */
    TrovekQt other;
    std::unique_ptr<DirectControlsDialog> dialog;
};

} // namespace

class tst_DirectControlsOnService : public QObject
{
    Q_OBJECT

private slots:
    void heatsAndCools();
    void refusesToExtrudeCold();
    void jogsUntilItIsStopped();
    void jogsUntilItIsClosed();
    void endsTheJogWhenTheMachineLeaves();
    void waitsForTheHomingOfAnother();
};

void tst_DirectControlsOnService::heatsAndCools()
{
    TestLog log;
    Scene scene;
    const auto* const heat = child<QPushButton>(*scene.dialog, "heat");

    scene.heat();
    QCOMPARE(heat->text(), QStringLiteral("Stop Heating"));
    QVERIFY(
        child<QLabel>(*scene.dialog, "currentTemperature")->text().startsWith(QLatin1Char('2')));
    scene.press("heat");
    QTRY_COMPARE(heat->text(), QStringLiteral("Heat"));
}

void tst_DirectControlsOnService::refusesToExtrudeCold()
{
    TestLog log;
    log.expectError("The extruder must have at least");
    Scene scene;

    scene.press("load");

    QVERIFY(child<QLabel>(*scene.dialog, "notice")->text().isEmpty());
    QVERIFY(child<QLabel>(*child(*scene.dialog, "extruders"), "notice")
                ->text()
                .startsWith(QStringLiteral("The extruder must have at least")));
}

void tst_DirectControlsOnService::jogsUntilItIsStopped()
{
    TestLog log;
    Scene scene;
    scene.startJog();
    QVERIFY(scene.isEnabled("unload"));
    QVERIFY(scene.isEnabled("home"));

    scene.press("unload");
    QVERIFY(scene.isJogging());
    scene.press("stop");
    QVERIFY(!scene.isJogging());
    QTRY_COMPARE(scene.state(), Printer::Idle);
    QVERIFY(scene.isEnabled("load"));
}

void tst_DirectControlsOnService::jogsUntilItIsClosed()
{
    TestLog log;
    Scene scene;
    scene.startJog();

    scene.dialog->close();

    QTRY_COMPARE(scene.state(), Printer::Idle);
}

void tst_DirectControlsOnService::endsTheJogWhenTheMachineLeaves()
{
    TestLog log;
    Scene scene;
    scene.startJog();

    scene.other.disconnectFromPort(ServiceWorld::kPort);

    QTRY_VERIFY(!scene.isEnabled("home"));
    QVERIFY(!scene.isJogging());
    QVERIFY(!scene.isEnabled("load"));
}

void tst_DirectControlsOnService::waitsForTheHomingOfAnother()
{
    TestLog log;
    Scene scene;
    QStringList seen;
    connect(&scene.facade, &TrovekQt::printerChanged, this, [&] {
        seen.append(QStringLiteral("%1 %2 %3")
                        .arg(scene.state() == Printer::Running ? QStringLiteral("busy")
                                                               : QStringLiteral("idle"))
                        .arg(scene.isEnabled("load"))
                        .arg(scene.isEnabled("home")));
    });

    scene.other.home(scene.name());

    QTRY_VERIFY(seen.contains(QStringLiteral("busy 0 0")));
    QTRY_VERIFY(seen.last() == QStringLiteral("idle 1 1"));
}

QTEST_MAIN(tst_DirectControlsOnService)
#include "tst_direct_controls_on_service.moc"
