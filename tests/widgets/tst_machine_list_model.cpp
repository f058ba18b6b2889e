#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/machine_list_model.h>
#include <trovek-ui/trovekqt.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace trovek;

namespace {

/** Everything that a model can announce, counted together. */
class ModelSignals
{
public:
    explicit ModelSignals(QAbstractItemModel& model)
    {
        const auto listen = [&](auto signal) {
            m_spies.push_back(std::make_unique<QSignalSpy>(&model, signal));
        };
        listen(&QAbstractItemModel::rowsInserted);
        listen(&QAbstractItemModel::rowsRemoved);
        listen(&QAbstractItemModel::rowsMoved);
        listen(&QAbstractItemModel::dataChanged);
        // Its arguments are of types that a spy cannot keep.
        QObject::connect(&model, &QAbstractItemModel::layoutChanged, &m_context,
                         [this] { ++m_layoutChanges; });
        listen(&QAbstractItemModel::modelReset);
    }

    int count() const
    {
        int sum = m_layoutChanges;
        for (const auto& spy : m_spies)
            sum += spy->count();
        return sum;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
    int m_layoutChanges = 0;
    QObject m_context;
};

struct World
{
    /** Announced, too, so that what comes next is new. */
    void connect()
    {
        QSignalSpy added(&facade, &TrovekQt::printerAdded);
        facade.connectToDaemon(service.address());
        const int expected = int(facade.printers().size());
        QTRY_COMPARE(added.count(), expected);
    }

    Printer* printer(const char* key) { return facade.printerFromKey(MachineName(key)); }

    ScriptedService service;
    TrovekQt facade;
};

QStringList keys(const MachineListModel& model)
{
    QStringList all;
    for (int row = 0; row < model.rowCount(); ++row) {
        const auto* item = dynamic_cast<MachineListModel::Item*>(model.item(row));
        all.append(item == nullptr ? QStringLiteral("no item")
                                   : QString::fromStdString(item->key().name()));
    }
    return all;
}

QStringList words(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromLatin1(text));
    return list;
}

} // namespace

class tst_MachineListModel : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyWithoutAConnection();
    void fillsOnConnectingAndEmptiesOnALoss();
    void listsRealMachinesInTheServicesOrder();
    void listsArchetypesInstead();
    void leavesSinglesOut();
    void leavesTheSingleCubioArchetypeOut();
    void keepsOrderWhenMachinesComeAndGo();
    void namesMachinesAsInASentence_data();
    void namesMachinesAsInASentence();
    void hasIconsWhenAskedTo();
    void findsMachines();
    void givesNullForAMachineThatIsGone();
    void announcesNothingWhenNothingChanged();
    void announcesOneInsertForAll();
    void tellsTwinsApart();
    void showsAKeyThatReadsLikeMarkup();
    void survivesAFlagChangedInItsSignal();
};

void tst_MachineListModel::isEmptyWithoutAConnection()
{
    TestLog log;
    TrovekQt facade;
    const MachineListModel model(facade, false);

    QCOMPARE(model.rowCount(), 0);
    QVERIFY(!model.archetypesEnabled());
}

void tst_MachineListModel::fillsOnConnectingAndEmptiesOnALoss()
{
    TestLog log;
    log.allowErrors("");
    World world;
    world.service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    MachineListModel model(world.facade, false);
    const QAbstractItemModelTester tester(&model);

    world.facade.connectToDaemon(world.service.address());
    QCOMPARE(keys(model), words({"left"}));

    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    world.service.stop();
    QTRY_COMPARE(model.rowCount(), 0);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(removed.count(), 1);

    world.service.start();
    world.facade.connectToDaemon(world.service.address());
    QCOMPARE(keys(model), words({"left"}));
}

void tst_MachineListModel::listsRealMachinesInTheServicesOrder()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("z", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::machine("a", Printer::CubioSingle));
    world.connect();
    const MachineListModel model(world.facade, false);

    QCOMPARE(keys(model), words({"z", "a"}));
    QCOMPARE(model.columnCount(), 1);
}

void tst_MachineListModel::listsArchetypesInstead()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("z", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::CubioSingle));
    world.connect();
    MachineListModel model(world.facade, false);

    model.toggleArchetypes(true);
    QVERIFY(model.archetypesEnabled());
    QCOMPARE(keys(model), words({"archetype 3", "archetype 5"}));

    model.toggleArchetypes(false);
    QVERIFY(!model.archetypesEnabled());
    QCOMPARE(keys(model), words({"z"}));
}

void tst_MachineListModel::leavesSinglesOut()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("single", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::machine("dual", Printer::Fabrino2X));
    world.connect();
    MachineListModel model(world.facade, false);
    QCOMPARE(keys(model), words({"single", "dual"}));

    model.toggleSingleToolMachines(false);
    QCOMPARE(keys(model), words({"dual"}));

    model.toggleSingleToolMachines(true);
    QCOMPARE(keys(model), words({"dual", "single"}));
}

void tst_MachineListModel::leavesTheSingleCubioArchetypeOut()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("real", Printer::CubioSingle));
    for (const auto type : {Printer::Fabrino2, Printer::CubioSingle, Printer::CubioDual})
        world.service.addPrinter(ScriptedService::archetype(type));
    world.connect();
    MachineListModel model(world.facade, false);

    model.setShowCboArchetypes(false);
    QCOMPARE(keys(model), words({"real"}));
    model.toggleArchetypes(true);
    // The dual one stays.
    QCOMPARE(keys(model), words({"archetype 3", "archetype 6"}));

    model.setShowCboArchetypes(true);
    QCOMPARE(keys(model), words({"archetype 3", "archetype 6", "archetype 5"}));
}

void tst_MachineListModel::keepsOrderWhenMachinesComeAndGo()
{
    TestLog log;
    World world;
    for (const char* key : {"a", "b", "c"})
        world.service.addPrinter(ScriptedService::machine(key, Printer::Fabrino2));
    world.connect();
    MachineListModel model(world.facade, false);
    const QAbstractItemModelTester tester(&model);
    const QPersistentModelIndex last = model.index(2, 0);

    world.service.removePrinter("b");
    QTRY_COMPARE(keys(model), words({"a", "c"}));
    world.service.addPrinter(ScriptedService::machine("b", Printer::Fabrino2));
    QTRY_COMPARE(keys(model), words({"a", "c", "b"}));

    QCOMPARE(last.row(), 1);
}

void tst_MachineListModel::namesMachinesAsInASentence_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");

    QTest::newRow("first type") << 1 << QStringLiteral("The Fabrino");
    QTest::newRow("in the middle") << 3 << QStringLiteral("The Fabrino 2");
    QTest::newRow("last type") << 6 << QStringLiteral("Cubio (Dual)");
    QTest::newRow("unknown") << 0 << QStringLiteral("bot");
}

void tst_MachineListModel::namesMachinesAsInASentence()
{
    TestLog log;
    QFETCH(int, type);
    World world;
    world.service.addPrinter(ScriptedService::machine("it", static_cast<Printer::Type>(type)));
    world.connect();
    const MachineListModel model(world.facade, false);

    QTEST(model.item(0)->text(), "text");
    QVERIFY(model.item(0)->icon().isNull());
    QVERIFY(model.item(0)->toolTip().isEmpty());
}

void tst_MachineListModel::hasIconsWhenAskedTo()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("it", Printer::Fabrino2));
    world.connect();
    const MachineListModel model(world.facade, true);

    QVERIFY(!model.item(0)->icon().isNull());
}

void tst_MachineListModel::findsMachines()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("a", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::machine("b", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    world.connect();
    const MachineListModel model(world.facade, false);
    Printer* const b = world.printer("b");

    QCOMPARE(model.indexOf(b), model.index(1, 0));
    QVERIFY(model.contains(b));
    QCOMPARE(model.machineAt(model.index(1, 0)), b);
    QVERIFY(!model.contains(world.printer("archetype 3")));
    QVERIFY(!model.contains(nullptr));
    QVERIFY(!model.indexOf(nullptr).isValid());
    QVERIFY(model.machineAt(QModelIndex()) == nullptr);
    QVERIFY(model.machineAt(model.index(2, 0)) == nullptr);
}

void tst_MachineListModel::givesNullForAMachineThatIsGone()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("a", Printer::Fabrino2));
    world.connect();
    MachineListModel model(world.facade, false);
    disconnect(&world.facade, nullptr, &model, nullptr);
    QSignalSpy removed(&world.facade, &TrovekQt::printerRemoved);

    world.service.removePrinter("a");
    QTRY_COMPARE(removed.count(), 1);
    QCOMPARE(model.rowCount(), 1);
    QVERIFY(model.machineAt(model.index(0, 0)) == nullptr);

    model.update();
    QCOMPARE(model.rowCount(), 0);
}

void tst_MachineListModel::announcesNothingWhenNothingChanged()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("a", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::machine("b", Printer::Fabrino2));
    world.connect();
    MachineListModel model(world.facade, true);
    const ModelSignals announced(model);

    model.update();
    model.toggleArchetypes(false);
    model.toggleSingleToolMachines(true);
    model.setShowCboArchetypes(false);
    // An archetype is not listed here.
    QSignalSpy added(&world.facade, &TrovekQt::printerAdded);
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    QTRY_COMPARE(added.count(), 1);
    QCOMPARE(announced.count(), 0);

    TrovekQt unconnected;
    MachineListModel empty(unconnected, false);
    const ModelSignals announcedByEmpty(empty);
    empty.update();
    QCOMPARE(announcedByEmpty.count(), 0);
}

void tst_MachineListModel::announcesOneInsertForAll()
{
    TestLog log;
    World world;
    for (int i = 0; i < 50; ++i)
        world.service.addPrinter(
            ScriptedService::machine("m" + std::to_string(i), Printer::CubioDual));
    MachineListModel model(world.facade, false);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);

    world.connect();

    QCOMPARE(model.rowCount(), 50);
    QCOMPARE(inserted.count(), 1);
}

void tst_MachineListModel::tellsTwinsApart()
{
    TestLog log;
    World world;
    Printer::Data first = ScriptedService::machine("serial 1", Printer::Fabrino2);
    first.portName = "usb1";
    world.service.addPrinter(first);
    world.service.addPrinter(ScriptedService::machine("other", Printer::CubioDual));
    world.connect();
    const MachineListModel model(world.facade, false);
    QCOMPARE(model.item(0)->toolTip(), QString());

    // A name that looks like a place to be filled.
    Printer::Data second = ScriptedService::machine("serial %2", Printer::Fabrino2);
    second.portName = "usb2";
    world.service.addPrinter(second);
    QTRY_COMPARE(model.rowCount(), 3);
    QCOMPARE(model.item(0)->toolTip(), QStringLiteral("serial 1 on port usb1"));
    QCOMPARE(model.item(1)->toolTip(), QString());
    QCOMPARE(model.item(2)->toolTip(), QStringLiteral("serial %2 on port usb2"));

    world.service.removePrinter("serial 1");
    QTRY_COMPARE(model.rowCount(), 2);
    QCOMPARE(model.item(1)->toolTip(), QString());
}

void tst_MachineListModel::showsAKeyThatReadsLikeMarkup()
{
    TestLog log;
    World world;
    world.service.addPrinter(ScriptedService::machine("<b>1</b>", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::machine("2", Printer::Fabrino2));
    world.connect();
    const MachineListModel model(world.facade, false);

    QCOMPARE(model.item(0)->toolTip(), QStringLiteral("<p>&lt;b&gt;1&lt;/b&gt;</p>"));
    QCOMPARE(model.item(1)->toolTip(), QStringLiteral("2"));
}

void tst_MachineListModel::survivesAFlagChangedInItsSignal()
{
    TestLog log;
    World world;
    for (const char* key : {"a", "b", "c"})
        world.service.addPrinter(ScriptedService::machine(key, Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    world.connect();
    MachineListModel model(world.facade, false);
    bool done = false;
    connect(&model, &QAbstractItemModel::rowsRemoved, this, [&] {
        if (!std::exchange(done, true))
            model.toggleArchetypes(false);
    });

    model.toggleArchetypes(true);

    QVERIFY(done);
    QCOMPARE(model.rowCount(), 3);
    QVERIFY(!model.archetypesEnabled());
}

QTEST_MAIN(tst_MachineListModel)
#include "tst_machine_list_model.moc"
