#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/trovekqt.h>

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

namespace {

QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromLatin1(text));
    return list;
}

QString nameOf(const Printer* printer)
{
    return printer == nullptr ? QStringLiteral("none")
                              : QString::fromStdString(printer->key().name());
}

struct World
{
    explicit World(std::initializer_list<Printer::Data> machines = {})
    {
        for (const Printer::Data& machine : machines)
            service.addPrinter(machine);
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        [&] {
            QTRY_COMPARE(added.count(), int(facade.printers().size()));
        }();
    }

    Printer* printer(const char* key) { return facade.printerFromKey(MachineName(key)); }

    ScriptedService service;
    TrovekQt facade;
};

/** Names of the machines that a box has told to be selected. */
class Selections : public QObject
{
public:
    explicit Selections(MachineComboBox& box)
    {
        connect(&box, &MachineComboBox::machineSelected, this,
                [this](const Printer* machine) { names.append(nameOf(machine)); });
    }
    QStringList names;
};

QComboBox& innerBox(const MachineComboBox& box)
{
    return *box.findChild<QComboBox*>();
}

} // namespace

class tst_MachineComboBox : public QObject
{
    Q_OBJECT

private slots:
    void isDisabledWithoutMachines();
    void isEnabledWithMachines();
    void followsTheLink();
    void isDisabledEvenWhenNothingWasSelected();
    void tellsTheMachineThatAUserChooses();
    void listsItsMachines();
    void selectsAMachine();
    void selectsByName();
    void selectsNothingByNameWithoutAConnection();
    void selectsTheLastOfAType();
    void keepsTheTypeWhenArchetypesAreToggled();
    void forwardsToItsModel();
    void keepsTheSelectionWhenAnotherGoes();
    void tellsWhenTheSelectedOneGoes();
    void selectsNoNeighbourOfOneThatGoes_data();
    void selectsNoNeighbourOfOneThatGoes();
    void takesTheFocusForItsInnerBox();
    void isReachedByALabelsMnemonic();
    void mayBeQueuedAndSpiedOn();
    void hasNoMarginsOfItsOwn();
};

void tst_MachineComboBox::isDisabledWithoutMachines()
{
    TestLog log;
    World world;
    const MachineComboBox box(world.facade);

    QVERIFY(!box.isEnabled());
    QVERIFY(box.machine() == nullptr);
    QVERIFY(box.machines().isEmpty());
}

void tst_MachineComboBox::isEnabledWithMachines()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    const MachineComboBox box(world.facade);

    QVERIFY(box.isEnabled());
    QCOMPARE(nameOf(box.machine()), QStringLiteral("a"));
    QVERIFY(innerBox(box).itemIcon(0).isNull());
}

void tst_MachineComboBox::followsTheLink()
{
    TestLog log;
    log.allowErrors("");
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("a", Printer::Fabrino2));
    TrovekQt facade;
    MachineComboBox box(facade);
    const Selections selections(box);
    QVERIFY(!box.isEnabled());

    facade.connectToDaemon(service.address());
    QVERIFY(box.isEnabled());
    QCOMPARE(selections.names, words({"a"}));

    service.stop();
    QTRY_VERIFY(!box.isEnabled());
    QCOMPARE(selections.names, words({"a", "none"}));
    QVERIFY(box.machine() == nullptr);

    service.start();
    facade.connectToDaemon(service.address());
    QVERIFY(box.isEnabled());
    QCOMPARE(selections.names, words({"a", "none", "a"}));
}

void tst_MachineComboBox::isDisabledEvenWhenNothingWasSelected()
{
    TestLog log;
    log.allowErrors("");
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    innerBox(box).setCurrentIndex(-1);
    QVERIFY(box.isEnabled());

    world.service.stop();

    QTRY_VERIFY(!world.facade.isConnected());
    QTRY_VERIFY(!box.isEnabled());
}

void tst_MachineComboBox::tellsTheMachineThatAUserChooses()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::CubioDual)};
    MachineComboBox box(world.facade);
    const Selections selections(box);

    box.show();
    QTest::keyClick(&innerBox(box), Qt::Key_Down);

    QCOMPARE(selections.names, words({"b"}));
    QCOMPARE(nameOf(box.machine()), QStringLiteral("b"));
}

void tst_MachineComboBox::listsItsMachines()
{
    TestLog log;
    World world{ScriptedService::machine("z", Printer::Fabrino2),
                ScriptedService::archetype(Printer::Fabrino2),
                ScriptedService::machine("a", Printer::CubioDual)};
    const MachineComboBox box(world.facade);

    QCOMPARE(box.machines(), (QList<Printer*>{world.printer("z"), world.printer("a")}));
}

void tst_MachineComboBox::selectsAMachine()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::Fabrino2),
                ScriptedService::archetype(Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    const Selections selections(box);

    box.select(world.printer("b"));
    QCOMPARE(nameOf(box.machine()), QStringLiteral("b"));
    // Not listed here.
    box.select(world.printer("archetype 3"));
    box.select(static_cast<Printer*>(nullptr));
    QCOMPARE(nameOf(box.machine()), QStringLiteral("b"));

    QCOMPARE(selections.names, words({"b"}));
}

void tst_MachineComboBox::selectsByName()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b\xc3\xbc", Printer::Fabrino2)};
    MachineComboBox box(world.facade);

    box.select(QStringLiteral(u"b\u00fc"));
    QCOMPARE(innerBox(box).currentIndex(), 1);
    box.select(QStringLiteral("A"));
    box.select(QString());
    QCOMPARE(innerBox(box).currentIndex(), 1);
}

void tst_MachineComboBox::selectsNothingByNameWithoutAConnection()
{
    TestLog log;
    log.allowErrors("");
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    world.service.stop();
    QTRY_VERIFY(!world.facade.isConnected());

    box.select(QStringLiteral("a"));

    QVERIFY(box.machine() == nullptr);
}

void tst_MachineComboBox::selectsTheLastOfAType()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::CubioDual),
                ScriptedService::machine("c", Printer::Fabrino2),
                ScriptedService::machine("d", Printer::CubioDual)};
    MachineComboBox box(world.facade);
    box.select(Printer::CubioDual);
    const Selections selections(box);

    box.select(Printer::Fabrino2);
    box.select(Printer::FabrinoDual);

    QCOMPARE(selections.names, words({"a", "c"}));
}

void tst_MachineComboBox::keepsTheTypeWhenArchetypesAreToggled()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::CubioDual),
                ScriptedService::archetype(Printer::FabrinoSingle),
                ScriptedService::archetype(Printer::Fabrino2),
                ScriptedService::archetype(Printer::CubioDual)};
    MachineComboBox box(world.facade);
    box.select(world.printer("b"));

    box.toggleArchetypes(true);
    QVERIFY(box.archetypesEnabled());
    QCOMPARE(nameOf(box.machine()), QStringLiteral("archetype 6"));

    // There is no real machine of this type.
    box.select(world.printer("archetype 1"));
    box.toggleArchetypes(false);
    QCOMPARE(nameOf(box.machine()), QStringLiteral("a"));
    QVERIFY(box.isEnabled());
}

void tst_MachineComboBox::forwardsToItsModel()
{
    TestLog log;
    World world{ScriptedService::machine("single", Printer::Fabrino2),
                ScriptedService::machine("dual", Printer::Fabrino2X),
                ScriptedService::archetype(Printer::CubioSingle),
                ScriptedService::archetype(Printer::CubioDual)};
    MachineComboBox box(world.facade);

    box.toggleSingleToolMachines(false);
    QCOMPARE(box.machines(), QList<Printer*>{world.printer("dual")});
    box.toggleSingleToolMachines(true);
    QCOMPARE(box.machines().size(), 2);
    box.toggleArchetypes(true);
    box.setShowCboArchetypes(false);
    QCOMPARE(box.machines(), QList<Printer*>{world.printer("archetype 6")});
}

void tst_MachineComboBox::keepsTheSelectionWhenAnotherGoes()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::Fabrino2),
                ScriptedService::machine("c", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    box.select(world.printer("b"));

    world.service.removePrinter("a");
    QTRY_COMPARE(box.machines().size(), 2);
    QCOMPARE(nameOf(box.machine()), QStringLiteral("b"));
    world.service.addPrinter(ScriptedService::machine("d", Printer::Fabrino2));
    QTRY_COMPARE(box.machines().size(), 3);
    QCOMPARE(nameOf(box.machine()), QStringLiteral("b"));
}

void tst_MachineComboBox::tellsWhenTheSelectedOneGoes()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    const Selections selections(box);

    world.service.removePrinter("a");
    QTRY_VERIFY(!box.isEnabled());
    QCOMPARE(selections.names, words({"none"}));

    world.service.addPrinter(ScriptedService::machine("b", Printer::Fabrino2));
    QTRY_VERIFY(box.isEnabled());
    QCOMPARE(selections.names, words({"none", "b"}));
}

void tst_MachineComboBox::selectsNoNeighbourOfOneThatGoes_data()
{
    QTest::addColumn<QByteArray>("key");

    QTest::newRow("the first") << QByteArray("a");
    QTest::newRow("in the middle") << QByteArray("b");
    QTest::newRow("the last") << QByteArray("c");
}

void tst_MachineComboBox::selectsNoNeighbourOfOneThatGoes()
{
    TestLog log;
    QFETCH(QByteArray, key);
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::Fabrino2),
                ScriptedService::machine("c", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    box.select(world.printer(key));
    const Selections selections(box);

    world.service.removePrinter(key.toStdString());
    QTRY_COMPARE(box.machines().size(), 2);
    QVERIFY(box.machine() == nullptr);
    QCOMPARE(selections.names, words({"none"}));
    QVERIFY(box.isEnabled());

    // Nor when another comes; the choice is the user's.
    world.service.addPrinter(ScriptedService::machine("d", Printer::Fabrino2));
    QTRY_COMPARE(box.machines().size(), 3);
    QVERIFY(box.machine() == nullptr);
    box.show();
    QTest::keyClick(&innerBox(box), Qt::Key_Down);
    QCOMPARE(nameOf(box.machine()), nameOf(box.machines().first()));
}

void tst_MachineComboBox::takesTheFocusForItsInnerBox()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    QWidget window;
    QFormLayout layout(&window);
    QLineEdit before;
    MachineComboBox box(world.facade);
    layout.addRow(&before);
    layout.addRow(&box);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    before.setFocus();

    QTest::keyClick(&before, Qt::Key_Tab);
    QVERIFY(innerBox(box).hasFocus());
    before.setFocus();
    box.setFocus();
    QVERIFY(innerBox(box).hasFocus());
}

void tst_MachineComboBox::isReachedByALabelsMnemonic()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2)};
    QWidget window;
    QFormLayout layout(&window);
    QLineEdit other;
    MachineComboBox box(world.facade);
    QLabel label(QStringLiteral("&Machine"));
    label.setBuddy(&box);
    layout.addRow(&other);
    layout.addRow(&label, &box);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    other.setFocus();

    QTest::keyClick(&window, Qt::Key_M, Qt::AltModifier);

    QVERIFY(innerBox(box).hasFocus());
}

void tst_MachineComboBox::mayBeQueuedAndSpiedOn()
{
    TestLog log;
    World world{ScriptedService::machine("a", Printer::Fabrino2),
                ScriptedService::machine("b", Printer::Fabrino2)};
    MachineComboBox box(world.facade);
    QSignalSpy spy(&box, &MachineComboBox::machineSelected);
    Printer* queued = nullptr;
    connect(
        &box, &MachineComboBox::machineSelected, this,
        [&queued](Printer* machine) { queued = machine; }, Qt::QueuedConnection);

    box.select(world.printer("b"));

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().value<Printer*>(), world.printer("b"));
    QTRY_COMPARE(queued, world.printer("b"));
}

void tst_MachineComboBox::hasNoMarginsOfItsOwn()
{
    TestLog log;
    World world;
    MachineComboBox box(world.facade);

    QCOMPARE(box.layout()->contentsMargins(), QMargins());
    QCOMPARE(box.sizeHint(), innerBox(box).sizeHint());
}

QTEST_MAIN(tst_MachineComboBox)
#include "tst_machine_combo_box.moc"
