#include "control_panel/panel_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/port_list.h>

#include <QStandardItemModel>

#include <memory>

using namespace trovek;

namespace {

QStringList textsOf(const QAbstractItemModel& model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, 0).data().toString());
    return texts;
}

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class tst_PortList : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void itemIsNamedByItsPortUntilThereIsAPrinter();
    void itemRefusesANullPrinter();
    void itemTellsOfAnotherText();
    void listsWhatIsThere();
    void followsPortsAndPrinters();
    void listsAPortOnceWhenItIsAnnouncedLater();
    void keepsTheNewDeviceOfANameWhenTheOldOneGoes();
    void showsTheMachineOfAPortThatComesAfterIt();
    void listsAnUnknownKindOfMachine();
    void isEmptyAfterTheLinkIsLost();
    void refusesAnIndexThatIsNotItsOwn();
    void choosesTheFirstPortThatComes();
    void keepsTheChoiceWhenMoreCome();
    void choosesNothingWhenTheChosenGoes_data();
    void choosesNothingWhenTheChosenGoes();
    void keepsTheChoiceWhenAnotherGoes();
    void cannotBeDeselected();
    void tellsTheChosenPortsName();
    void logsAModelOfAnotherKind();

private:
    std::unique_ptr<TestLog> m_log;
    std::unique_ptr<PanelWorld> m_world;
};

void tst_PortList::init()
{
    m_log = std::make_unique<TestLog>();
    m_world = std::make_unique<PanelWorld>();
}

void tst_PortList::cleanup()
{
    m_world.reset();
    m_log.reset();
}

void tst_PortList::itemIsNamedByItsPortUntilThereIsAPrinter()
{
    const Port port(ScriptedService::port("COM7"));
    PortListModel::PortItem item(port);
    QCOMPARE(item.text(), text("COM7"));
    QVERIFY(item.port() == port);
    QVERIFY(!item.isEditable());
    // A device says what it is called; what looks like markup is none.
    Port::Data odd = ScriptedService::port("COM8");
    odd.displayName = "<b>COM</b>";
    QCOMPARE(PortListModel::PortItem{Port(odd)}.toolTip(), text("&lt;b&gt;COM&lt;/b&gt;"));
    const Printer printer(ScriptedService::machine("m", Printer::Fabrino2X));
    item.setPrinter(&printer);
    QCOMPARE(item.text(), text("The Fabrino 2X"));
    item.clearPrinter();
    QCOMPARE(item.text(), text("COM7"));
}

void tst_PortList::itemRefusesANullPrinter()
{
    PortListModel::PortItem item{Port(ScriptedService::port("COM7"))};
    QVERIFY_EXCEPTION_THROWN(item.setPrinter(nullptr), std::logic_error);
    QCOMPARE(thrownText([&item] { item.setPrinter(nullptr); }),
             std::string("PortItem: null printer"));
    QCOMPARE(item.text(), text("COM7"));
}

void tst_PortList::itemTellsOfAnotherText()
{
    QStandardItemModel model;
    auto* item = new PortListModel::PortItem{Port(ScriptedService::port("COM7"))};
    model.appendRow(item);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    const Printer printer(ScriptedService::machine("m", Printer::Fabrino2));
    item->setPrinter(&printer);
    QCOMPARE(changed.count(), 1);
    item->setPrinter(&printer);
    QCOMPARE(changed.count(), 1);
}

void tst_PortList::listsWhatIsThere()
{
    m_world->addPort("COM1");
    m_world->addPort("COM2");
    m_world->addPort("COM3");
    m_world->addMachine("m2", Printer::FabrinoDual, "COM2");
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    QCOMPARE(textsOf(model), QStringList({text("COM1"), text("The Fabrino (Dual)"), text("COM3")}));
    QCOMPARE(model.port(model.index(1, 0)).name(), std::string("COM2"));
}

void tst_PortList::followsPortsAndPrinters()
{
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    QCOMPARE(model.rowCount(), 0);
    m_world->addPort("COM1");
    QTRY_COMPARE(textsOf(model), QStringList{text("COM1")});
    m_world->addMachine("m", Printer::CubioSingle, "COM1");
    QTRY_COMPARE(textsOf(model), QStringList{text("Cubio")});
    m_world->service.removePrinter("m");
    QTRY_COMPARE(textsOf(model), QStringList{text("COM1")});
    m_world->service.removePort("COM1");
    QTRY_COMPARE(model.rowCount(), 0);
}

void tst_PortList::listsAPortOnceWhenItIsAnnouncedLater()
{
    m_world->addPort("COM1");
    QSignalSpy attached(&m_world->facade, &TrovekQt::portAttached);
    m_world->facade.connectToDaemon(m_world->service.address());
    const PortListModel model(m_world->facade);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QCOMPARE(model.rowCount(), 1);
    QVERIFY(attached.isEmpty());
    QTRY_COMPARE(attached.count(), 1);
    QCOMPARE(model.rowCount(), 1);
    QVERIFY(removed.isEmpty());
}

void tst_PortList::keepsTheNewDeviceOfANameWhenTheOldOneGoes()
{
    Port::Data first = ScriptedService::port("COM1");
    Port::Data second = first;
    second.identity = "another device";
    m_world->service.addPort(first);
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    m_world->service.addPort(second);
    QTRY_COMPARE(model.rowCount(), 2);

    Json::Value gone(Json::objectValue);
    gone["name"] = first.name;
    gone["identity"] = first.identity;
    m_world->service.notify("port_detached", gone);

    QTRY_COMPARE(model.rowCount(), 1);
    QCOMPARE(model.port(model.index(0, 0)).identity(), second.identity);
}

void tst_PortList::showsTheMachineOfAPortThatComesAfterIt()
{
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    m_world->addMachine("m", Printer::Fabrino2, "COM1");
    Port::Data port = ScriptedService::port("COM1");
    port.machineName = "m";
    m_world->service.addPort(port);
    QTRY_COMPARE(textsOf(model), QStringList{text("The Fabrino 2")});
}

void tst_PortList::listsAnUnknownKindOfMachine()
{
    m_world->addPort("COM1");
    m_world->addMachine("m", static_cast<Printer::Type>(77), "COM1");
    m_world->connectFacade();
    QCOMPARE(textsOf(PortListModel(m_world->facade)), QStringList{text("bot")});
}

void tst_PortList::isEmptyAfterTheLinkIsLost()
{
    m_world->addPort("COM1");
    m_world->addPort("COM2");
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    m_world->service.stop();
    QTRY_COMPARE(model.rowCount(), 0);
}

void tst_PortList::refusesAnIndexThatIsNotItsOwn()
{
    m_world->addPort("COM1");
    m_world->connectFacade();
    const PortListModel model(m_world->facade);
    const std::string error("Invalid PortListModel index");
    QCOMPARE(thrownText([&] { model.port(QModelIndex()); }), error);
    QVERIFY_EXCEPTION_THROWN(model.port(QModelIndex()), std::logic_error);
    QStandardItemModel other(5, 1);
    QCOMPARE(thrownText([&] { model.port(other.index(4, 0)); }), error);
    PortListModel withBareItem(m_world->facade);
    withBareItem.appendRow(new QStandardItem(text("bare")));
    QCOMPARE(thrownText([&] { withBareItem.port(withBareItem.index(1, 0)); }), error);
}

void tst_PortList::choosesTheFirstPortThatComes()
{
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    QSignalSpy chosen(&view, &PortListView::portSelectionChanged);
    m_world->addPort("COM1");
    QTRY_COMPARE(chosen.count(), 1);
    QCOMPARE(view.currentIndex().row(), 0);
    QVERIFY(view.selectionModel()->isSelected(view.currentIndex()));
}

void tst_PortList::keepsTheChoiceWhenMoreCome()
{
    m_world->addPort("COM2");
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    view.setCurrentIndex(model.index(0, 0));
    QSignalSpy chosen(&view, &PortListView::portSelectionChanged);
    m_world->addPort("COM1");
    QTRY_COMPARE(model.rowCount(), 2);
    QCOMPARE(model.port(view.currentIndex()).name(), std::string("COM2"));
    QVERIFY(chosen.isEmpty());
}

void tst_PortList::choosesNothingWhenTheChosenGoes_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("first") << 0;
    QTest::newRow("middle") << 1;
    QTest::newRow("last") << 2;
}

void tst_PortList::choosesNothingWhenTheChosenGoes()
{
    QFETCH(int, row);
    for (const char* name : {"COM1", "COM2", "COM3"})
        m_world->addPort(name);
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    view.setCurrentIndex(model.index(row, 0));
    QSignalSpy chosen(&view, &PortListView::portSelectionChanged);
    m_world->service.removePort(model.port(view.currentIndex()).name());
    QTRY_COMPARE(model.rowCount(), 2);
    QVERIFY(!view.currentIndex().isValid());
    QVERIFY(view.selectionModel()->selectedIndexes().isEmpty());
    QVERIFY(chosen.isEmpty());
}

void tst_PortList::keepsTheChoiceWhenAnotherGoes()
{
    for (const char* name : {"COM1", "COM2", "COM3"})
        m_world->addPort(name);
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    view.setCurrentIndex(model.index(1, 0));
    for (const char* name : {"COM1", "COM3"})
        m_world->service.removePort(name);
    QTRY_COMPARE(model.rowCount(), 1);
    QCOMPARE(model.port(view.currentIndex()).name(), std::string("COM2"));
}

void tst_PortList::cannotBeDeselected()
{
    m_world->addPort("COM1");
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    view.setCurrentIndex(model.index(0, 0));
    view.show();
    const QPoint item = view.visualRect(model.index(0, 0)).center();
    const QPoint nowhere(item.x(), view.viewport()->height() - 2);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ControlModifier, item);
    QVERIFY(view.selectionModel()->isSelected(model.index(0, 0)));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, nowhere);
    QVERIFY(view.selectionModel()->isSelected(model.index(0, 0)));
}

void tst_PortList::tellsTheChosenPortsName()
{
    m_world->addPort("COM1");
    m_world->addPort("COM2");
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    PortListView view;
    view.setModel(&model);
    std::vector<std::string> chosen;
    connect(&view, &PortListView::portSelectionChanged, this,
            [&chosen](const std::string& name) { chosen.push_back(name); });
    view.setCurrentIndex(model.index(0, 0));
    QTest::keyClick(&view, Qt::Key_Down);
    QCOMPARE(chosen, (std::vector<std::string>{"COM1", "COM2"}));
}

void tst_PortList::logsAModelOfAnotherKind()
{
    m_world->connectFacade();
    PortListModel model(m_world->facade);
    model.appendRow(new QStandardItem(text("bare")));
    PortListView view;
    view.setModel(&model);
    m_log->expectError("Invalid PortListModel index");
    view.setCurrentIndex(model.index(0, 0));
    QCOMPARE(m_log->sink().entries().back().file, std::string("src\\control_panel\\port_list"));
}

QTEST_MAIN(tst_PortList)
#include "tst_port_list.moc"
