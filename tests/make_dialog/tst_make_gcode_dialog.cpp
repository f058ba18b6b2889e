#include "make_dialog/make_world.h"

#include <trovek-ui/elided_label.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/material_combo_box.h>

#include <trovek/wire.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QRadioButton>
#include <QWheelEvent>

using namespace trovek;

namespace {

Printer::Data machineWith(const char* key, int extruders, bool heatedPlatform)
{
    Printer::Data data = ScriptedService::machine(key, Printer::Fabrino2X);
    data.numberOfExtruders = extruders;
    data.hasHeatedPlatform = heatedPlatform;
    return data;
}

const auto kSingle = machineWith("single", 1, false);
const auto kSingleHeated = machineWith("single heated", 1, true);
const auto kDual = machineWith("dual", 2, false);
const auto kDualHeated = machineWith("dual heated", 2, true);

/** The dialog and the widgets in it, by the names that they have. */
struct Opened
{
    explicit Opened(MakeWorld& world, const char* key = nullptr)
        : dialog(new MakeGCodeDialog(world.facade, world.inputFile, &world.settings,
                                     key == nullptr ? nullptr : world.printer(key),
                                     world.folder.path(), true))
        , addStartEnd(find<QCheckBox>("addStartEnd"))
        , material(find<MaterialComboBox>("material"))
        , materialLabel(find<QLabel>("materialLabel"))
        , extruder(find<QComboBox>("extruder"))
        , extruderLabel(find<QLabel>("extruderLabel"))
        , warning(find<QLabel>("extruderWarning"))
        , machines(find<MachineComboBox>("machineCombo"))
        , mainButton(find<QPushButton>("mainButton"))
    {}
    ~Opened() { delete dialog.data(); }

    template <typename Widget>
    Widget* find(const char* name) const
    {
        return dialog->findChild<Widget*>(QString::fromLatin1(name));
    }

    QPointer<MakeGCodeDialog> dialog;
    QCheckBox* addStartEnd;
    MaterialComboBox* material;
    QLabel* materialLabel;
    QComboBox* extruder;
    QLabel* extruderLabel;
    QLabel* warning;
    MachineComboBox* machines;
    QPushButton* mainButton;
};

bool wheelOver(QWidget* widget)
{
    QWheelEvent event(QPointF(5, 5), widget->mapToGlobal(QPointF(5, 5).toPoint()), QPoint(),
                      QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    return QCoreApplication::sendEvent(widget, &event);
}

} // namespace

class tst_MakeGCodeDialog : public QObject
{
    Q_OBJECT

private slots:
    void hasItsRows();
    void hasItsTexts();
    void hasAPictureForEachExtruder();
    void startsWithoutStartEndCode();
    void enablesWhatTheMachineNeeds_data();
    void enablesWhatTheMachineNeeds();
    void enablesNothingWithoutAMachine();
    void followsTheCheckBoxAndTheMachine();
    void keepsAChosenExtruder();
    void mendsAMaterialThatIsNotSelected();
    void passesTheMaterialOn_data();
    void passesTheMaterialOn();
    void passesTheExtruderOn_data();
    void passesTheExtruderOn();
    void passesTheDefaultExtruderWithoutASelection();
    void passesTheStartEndFlagOn_data();
    void passesTheStartEndFlagOn();
    void visitsItsWidgetsInOrder();
    void isReachedByMnemonics();
    void ignoresTheWheelOverWhatIsNotFocused();
    void showsANameThatReadsLikeMarkup();
    void keepsItsSizeWhateverIsChosen();
};

void tst_MakeGCodeDialog::hasItsRows()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);

    auto* const form = qobject_cast<QFormLayout*>(opened.find<QFrame>("frame")->layout());
    QCOMPARE(form->rowCount(), 8);
    const auto field = [form](int row) {
        return form->itemAt(row, QFormLayout::FieldRole)->widget();
    };
    QVERIFY(dynamic_cast<ElidedLabel*>(field(2)) != nullptr);
    QCOMPARE(qobject_cast<QLabel*>(form->labelForField(field(2)))->text(), QStringLiteral("File:"));
    QVERIFY(field(3)->children().isEmpty());
    QCOMPARE(field(4), opened.addStartEnd);
    QCOMPARE(field(5), opened.material);
    QCOMPARE(form->labelForField(field(5)), opened.materialLabel);
    QCOMPARE(field(6), opened.extruder);
    QCOMPARE(form->labelForField(field(6)), opened.extruderLabel);
    QCOMPARE(field(7), opened.warning);
    for (const int row : {3, 4, 7})
        QVERIFY(form->labelForField(field(row)) == nullptr);
}

void tst_MakeGCodeDialog::hasItsTexts()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);

    QCOMPARE(opened.addStartEnd->text(), QStringLiteral("Add start/end GCode"));
    QCOMPARE(opened.addStartEnd->toolTip(),
             QStringLiteral("Add initialization GCode (not needed for GCode created by Ostrand)"));
    QCOMPARE(opened.materialLabel->text(), QStringLiteral("M&aterial:"));
    QCOMPARE(opened.material->toolTip(),
             QStringLiteral("If ABS is selected, heats the build platform"));
    QCOMPARE(opened.extruderLabel->text(), QStringLiteral("Extruder:"));
    QCOMPARE(opened.extruder->toolTip(),
             QStringLiteral("For a dual-extruder bot, set which extruder(s) to heat"));
    QCOMPARE(opened.warning->text(),
             QStringLiteral("Warning: always select the same extruder that the GCode file was "
                            "created with."));
    QCOMPARE(opened.mainButton->text(), QStringLiteral("Make It!"));
}

void tst_MakeGCodeDialog::hasAPictureForEachExtruder()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);

    QCOMPARE(opened.extruder->count(), 3);
    const char* const texts[] = {"Left", "Right", "Dual"};
    const char* const pictures[] = {"left", "right", "dual"};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(opened.extruder->itemText(i), QString::fromLatin1(texts[i]));
        const QPixmap picture(
            QStringLiteral(":/make/extruder_%1.png").arg(QString::fromLatin1(pictures[i])));
        QVERIFY(!picture.isNull());
        QCOMPARE(opened.extruder->itemIcon(i).pixmap(picture.size()).toImage(), picture.toImage());
    }
}

void tst_MakeGCodeDialog::startsWithoutStartEndCode()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);

    QVERIFY(!opened.addStartEnd->isChecked());
    QVERIFY(!opened.material->isEnabled());
    QVERIFY(!opened.extruder->isEnabled());
    QCOMPARE(opened.extruder->currentIndex(), -1);
}

void tst_MakeGCodeDialog::enablesWhatTheMachineNeeds_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("material");
    QTest::addColumn<bool>("extruder");

    QTest::newRow("single, off") << QByteArray("single") << false << false << false;
    QTest::newRow("single heated, off") << QByteArray("single heated") << false << false << false;
    QTest::newRow("dual, off") << QByteArray("dual") << false << false << false;
    QTest::newRow("dual heated, off") << QByteArray("dual heated") << false << false << false;
    QTest::newRow("single, on") << QByteArray("single") << true << false << false;
    QTest::newRow("single heated, on") << QByteArray("single heated") << true << true << false;
    QTest::newRow("dual, on") << QByteArray("dual") << true << false << true;
    QTest::newRow("dual heated, on") << QByteArray("dual heated") << true << true << true;
}

void tst_MakeGCodeDialog::enablesWhatTheMachineNeeds()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(bool, checked);
    QFETCH(bool, material);
    QFETCH(bool, extruder);
    TrovekQt facade;
    MakeWorld world(facade, {kSingle, kSingleHeated, kDual, kDualHeated});
    const Opened opened(world, key);
    opened.dialog->show();

    if (checked)
        QTest::mouseClick(opened.addStartEnd, Qt::LeftButton, {}, QPoint(8, 8));
    QCoreApplication::processEvents();

    QCOMPARE(opened.addStartEnd->isChecked(), checked);
    QCOMPARE(opened.material->isEnabled(), material);
    QCOMPARE(opened.materialLabel->isEnabled(), material);
    QCOMPARE(opened.extruder->isEnabled(), extruder);
    QCOMPARE(opened.extruderLabel->isEnabled(), extruder);
    QCOMPARE(opened.warning->isEnabled(), extruder);
    QCOMPARE(opened.extruder->currentIndex(), extruder ? 1 : -1);
}

void tst_MakeGCodeDialog::enablesNothingWithoutAMachine()
{
    TestLog log;
    log.allowErrors("");
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());

    world.loseConnection();

    QTRY_VERIFY(!opened.extruder->isEnabled());
    QVERIFY(!opened.material->isEnabled());
    QCOMPARE(opened.extruder->currentIndex(), -1);
}

void tst_MakeGCodeDialog::followsTheCheckBoxAndTheMachine()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kSingle, kDualHeated});
    const Opened opened(world, "single");
    opened.addStartEnd->setChecked(true);
    QCoreApplication::processEvents();
    QVERIFY(!opened.extruder->isEnabled());

    opened.machines->select(world.printer("dual heated"));
    QTRY_VERIFY(opened.extruder->isEnabled());
    QVERIFY(opened.material->isEnabled());

    opened.addStartEnd->setChecked(false);
    QTRY_VERIFY(!opened.extruder->isEnabled());
    QVERIFY(!opened.material->isEnabled());
}

void tst_MakeGCodeDialog::keepsAChosenExtruder()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDual, kDualHeated});
    const Opened opened(world, "dual");
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());
    opened.extruder->setCurrentIndex(2);

    opened.machines->select(world.printer("dual heated"));
    QTRY_VERIFY(opened.material->isEnabled());
    QCOMPARE(opened.extruder->currentIndex(), 2);

    opened.addStartEnd->setChecked(false);
    QTRY_COMPARE(opened.extruder->currentIndex(), -1);
    opened.addStartEnd->setChecked(true);
    QTRY_COMPARE(opened.extruder->currentIndex(), 1);
}

void tst_MakeGCodeDialog::mendsAMaterialThatIsNotSelected()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);
    QCOMPARE(int(opened.material->material()), int(Orvane::ABS));
    opened.material->setCurrentIndex(-1);

    opened.addStartEnd->setChecked(true);

    QTRY_COMPARE(opened.material->currentIndex(), 1);
}

void tst_MakeGCodeDialog::passesTheMaterialOn_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QStringList>("materials");

    QTest::newRow("ABS") << 0 << QByteArray("single heated") << words({"abs"});
    QTest::newRow("PLA") << 1 << QByteArray("single heated") << words({"pla"});
    QTest::newRow("dissolvable") << 2 << QByteArray("single heated") << words({"pla"});
    QTest::newRow("flexible") << 3 << QByteArray("single heated") << words({"pla"});
    QTest::newRow("none") << -1 << QByteArray("single heated") << words({"pla"});
    QTest::newRow("ABS for both") << 0 << QByteArray("dual heated") << words({"abs", "abs"});
}

void tst_MakeGCodeDialog::passesTheMaterialOn()
{
    TestLog log;
    QFETCH(int, row);
    QFETCH(QByteArray, key);
    TrovekQt facade;
    MakeWorld world(facade, {kSingleHeated, kDualHeated});
    const Opened opened(world, key);
    opened.material->setCurrentIndex(row);
    opened.dialog->show();

    QTest::mouseClick(opened.mainButton, Qt::LeftButton);

    QTEST(textsOf(world.service.lastRequest("print")["materials"]), "materials");
}

void tst_MakeGCodeDialog::passesTheExtruderOn_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("extruder");

    QTest::newRow("left") << 0 << int(SlicerConfiguration::Left);
    QTest::newRow("right") << 1 << int(SlicerConfiguration::Right);
    QTest::newRow("dual") << 2 << int(SlicerConfiguration::Both);
}

void tst_MakeGCodeDialog::passesTheExtruderOn()
{
    TestLog log;
    QFETCH(int, row);
    QFETCH(int, extruder);
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);
    opened.dialog->show();
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());
    opened.extruder->setCurrentIndex(row);

    QTest::mouseClick(opened.mainButton, Qt::LeftButton);

    const Json::Value configuration = world.service.lastRequest("print")["slicer_config"];
    QCOMPARE(int(wire::slicerConfigurationFromJson(configuration).extruder()), extruder);
}

void tst_MakeGCodeDialog::passesTheDefaultExtruderWithoutASelection()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kSingle});
    const Opened opened(world);
    opened.dialog->show();
    opened.addStartEnd->setChecked(true);

    QTest::mouseClick(opened.mainButton, Qt::LeftButton);

    const std::unique_ptr<SlicerConfiguration> standard(
        SlicerConfiguration::defaultConfiguration(SlicerConfiguration::Standard));
    QCOMPARE(world.service.lastRequest("print")["slicer_config"].toStyledString(),
             wire::toJson(*standard).toStyledString());
}

void tst_MakeGCodeDialog::passesTheStartEndFlagOn_data()
{
    QTest::addColumn<bool>("checked");

    QTest::newRow("add the code") << true;
    QTest::newRow("leave it out") << false;
}

void tst_MakeGCodeDialog::passesTheStartEndFlagOn()
{
    TestLog log;
    QFETCH(bool, checked);
    TrovekQt facade;
    MakeWorld world(facade, {kSingle});
    const Opened opened(world);
    opened.dialog->show();
    opened.addStartEnd->setChecked(checked);

    QTest::mouseClick(opened.mainButton, Qt::LeftButton);

    QCOMPARE(world.service.lastRequest("print")["skip_start_end"].asBool(), !checked);
}

void tst_MakeGCodeDialog::visitsItsWidgetsInOrder()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());
    opened.dialog->show();
    opened.dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(opened.dialog));
    QVERIFY(opened.mainButton->hasFocus());

    QList<QWidget*> visited;
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited.append(QApplication::focusWidget());
    }

    QCOMPARE(visited,
             (QList<QWidget*>{opened.find<QRadioButton>("makeRadio"), opened.machines->focusProxy(),
                              opened.addStartEnd, opened.material, opened.extruder,
                              opened.find<QPushButton>("cancelButton"), opened.mainButton}));
}

void tst_MakeGCodeDialog::isReachedByMnemonics()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const Opened opened(world);
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.material->isEnabled());
    opened.dialog->show();
    opened.dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(opened.dialog));

    QTest::keyClick(opened.dialog, Qt::Key_A, Qt::AltModifier);
    QVERIFY(opened.material->hasFocus());
    QTest::keyClick(opened.dialog, Qt::Key_E, Qt::AltModifier);
    QVERIFY(opened.machines->focusProxy()->hasFocus());
}

void tst_MakeGCodeDialog::ignoresTheWheelOverWhatIsNotFocused()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated, kDual});
    const Opened opened(world);
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());
    opened.extruder->setCurrentIndex(0);
    opened.dialog->show();
    opened.dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(opened.dialog));
    auto* const machineBox = qobject_cast<QComboBox*>(opened.machines->focusProxy());

    for (QComboBox* box : {machineBox, static_cast<QComboBox*>(opened.material), opened.extruder}) {
        QCOMPARE(box->currentIndex(), 0);
        wheelOver(box);
        QCOMPARE(box->currentIndex(), 0);
        box->setFocus();
        wheelOver(box);
        QCOMPARE(box->currentIndex(), 1);
    }
}

void tst_MakeGCodeDialog::showsANameThatReadsLikeMarkup()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kDualHeated});
    const QString file = QStringLiteral("/folder/<b>part</b>.gcode");
    const MakeGCodeDialog dialog(facade, file, &world.settings, nullptr, world.folder.path(), true);

    QCOMPARE(dialog.findChild<QWidget*>(QStringLiteral("file"))->toolTip(),
             QStringLiteral("<p>/folder/&lt;b&gt;part&lt;/b&gt;.gcode</p>"));
}

void tst_MakeGCodeDialog::keepsItsSizeWhateverIsChosen()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kSingle, kDualHeated, ScriptedService::archetype(Printer::Fabrino2)});
    const Opened opened(world);
    opened.dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(opened.dialog));
    const QSize before = opened.dialog->size();

    opened.machines->select(world.printer("dual heated"));
    opened.addStartEnd->setChecked(true);
    QTRY_VERIFY(opened.extruder->isEnabled());
    QCOMPARE(opened.dialog->size(), before);
}

QTEST_MAIN(tst_MakeGCodeDialog)
#include "tst_make_gcode_dialog.moc"
