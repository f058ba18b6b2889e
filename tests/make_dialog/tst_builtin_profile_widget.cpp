#include "make_dialog/profile_numbers.h"
#include "support/test_log.h"

#include <QAccessible>
#include <QGroupBox>
#include <QWheelEvent>

using namespace trovek;

class tst_BuiltInProfileWidget : public QObject
{
    Q_OBJECT

private slots:
    void asksForNumbers_data();
    void asksForNumbers();
    void asksForHeat();
    void offersDefaultsAndProfiles();
    void groupsItsFields();
    void fillsInAPreset_data();
    void fillsInAPreset();
    void refusesWhatIsNoPreset_data();
    void refusesWhatIsNoPreset();
    void asksForOneTemperatureOrTwo();
    void buildsTheConfiguration();
    void restoresAConfiguration();
    void cutsARestoredConfigurationToItsRanges();
    void takesAnOddInfillForZero_data();
    void takesAnOddInfillForZero();
    void tabsInTheOrderOfTheForm();
    void leavesTheWheelToThePage();
    void namesItsFieldsForScreenReaders();
};

void tst_BuiltInProfileWidget::asksForNumbers_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("label");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("step");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("toolTip");

    QTest::newRow("infill")
        << QByteArray("infill") << "I&nfill:"_s << 0. << 100. << 1. << "%"_s
        << "Fill interior regions of the model with this percentage of plastic"_s;
    QTest::newRow("shells") << QByteArray("shells") << "N&umber of Shells:"_s << 1. << 100. << 1.
                            << ""_s
                            << "Thickness of model walls (higher numbers take longer to build but "
                               "produce sturdier result)"_s;
    QTest::newRow("layer height")
        << QByteArray("layerHeight") << "La&yer Height:"_s << 0.01 << 0.4 << 0.05 << " mm"_s
        << "The height of each layer of plastic (lower values take longer to build but will "
           "produce smoother result)"_s;
    QTest::newRow("right temperature") << QByteArray("rightTemperature") << "Right Extr&uder:"_s
                                       << 0. << 280. << 1. << " \u00b0C"_s
                                       << "Temperature of the right extruder in degrees celcius"_s;
    QTest::newRow("left temperature")
        << QByteArray("leftTemperature") << "Left Extruder:"_s << 0. << 280. << 1. << " \u00b0C"_s
        << "Temperature of the left extruder in degrees celcius"_s;
    QTest::newRow("platform temperature")
        << QByteArray("platformTemperature") << "Build Plate:"_s << 0. << 200. << 1. << " \u00b0C"_s
        << "Temperature of the heated build plate (if present) in degrees celcius"_s;
    QTest::newRow("extruding speed") << QByteArray("extrudingSpeed") << "Speed while Extr&uding:"_s
                                     << 10. << 200. << 1. << " mm/s"_s
                                     << "Top speed for toolhead movement while extruding"_s;
    QTest::newRow("traveling speed") << QByteArray("travelingSpeed") << "Speed while Travelin&g:"_s
                                     << 10. << 200. << 1. << " mm/s"_s
                                     << "Top speed for toolhead movement while not extruding"_s;
}

void tst_BuiltInProfileWidget::asksForNumbers()
{
    QFETCH(QByteArray, name);
    TestLog log;
    const ProfileNumbers form;
    auto* const box = form.child<QAbstractSpinBox>(name);

    QTEST(box->property("minimum").toDouble(), "minimum");
    QTEST(box->property("maximum").toDouble(), "maximum");
    QTEST(box->property("singleStep").toDouble(), "step");
    QTEST(box->property("suffix").toString(), "suffix");
    QTEST(box->toolTip(), "toolTip");
    QTEST(form.label(name)->text(), "label");
    QCOMPARE(form.label(name)->buddy(), box);
    QCOMPARE(name == "layerHeight", qobject_cast<QDoubleSpinBox*>(box) != nullptr);
}

void tst_BuiltInProfileWidget::asksForHeat()
{
    TestLog log;
    const ProfileNumbers form;

    QCOMPARE(form.heat()->text(), "Heat the Build Plate"_s);
    QCOMPARE(form.heat()->toolTip(),
             "Set whether to heat the build plate to the temperature below"_s);
}

void tst_BuiltInProfileWidget::offersDefaultsAndProfiles()
{
    TestLog log;
    ProfileNumbers form;
    QSignalSpy created(&form.widget, &BuiltInProfileWidget::createProfileClicked);
    auto* const defaults = form.child<QPushButton>("defaultsButton");
    auto* const create = form.child<QPushButton>("createProfileButton");

    QCOMPARE(defaults->text(), "Use &Defaults"_s);
    QCOMPARE(defaults->toolTip(), "Revert to the defaults for this profile"_s);
    QCOMPARE(create->text(), "&Create Profile..."_s);
    QCOMPARE(create->toolTip(), "Create a new custom slicer profile"_s);
    // Return in a field means the main button of the dialog.
    QVERIFY(!defaults->autoDefault());
    QVERIFY(!create->autoDefault());

    QTest::mouseClick(create, Qt::LeftButton);
    QCOMPARE(created.count(), 1);
    QCOMPARE(form.changed.count(), 0);
}

void tst_BuiltInProfileWidget::groupsItsFields()
{
    TestLog log;
    const ProfileNumbers form;
    QStringList groups;
    for (const char* field : ProfileNumbers::kFields) {
        auto* const group = qobject_cast<QGroupBox*>(form.child<QWidget>(field)->parentWidget());
        QVERIFY(group);
        groups.append(group->title());
    }

    QCOMPARE(groups, QStringList({"&Quality"_s, "&Quality"_s, "&Quality"_s, "&Temperature"_s,
                                  "&Temperature"_s, "&Temperature"_s, "S&peed"_s, "S&peed"_s}));
    QCOMPARE(static_cast<QGroupBox*>(form.heat()->parentWidget())->title(), "&Temperature"_s);
}

void tst_BuiltInProfileWidget::fillsInAPreset_data()
{
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<QStringList>("shown");

    const QString warm = "230 \u00b0C"_s;
    const QString platform = "110 \u00b0C"_s;
    QTest::newRow("low") << SlicerConfiguration::Low
                         << QStringList({"5%"_s, "0.30 mm"_s, "2"_s, warm, warm, "cold"_s, platform,
                                         "90 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("standard") << SlicerConfiguration::Standard
                              << QStringList({"10%"_s, "0.20 mm"_s, "2"_s, warm, warm, "cold"_s,
                                              platform, "80 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("high") << SlicerConfiguration::High
                          << QStringList({"15%"_s, "0.10 mm"_s, "3"_s, warm, warm, "cold"_s,
                                          platform, "60 mm/s"_s, "150 mm/s"_s});
}

void tst_BuiltInProfileWidget::fillsInAPreset()
{
    QFETCH(Preset, preset);
    TestLog log;
    ProfileNumbers form;
    form.spin("infill")->setValue(77);
    form.spin("travelingSpeed")->setValue(20);
    form.takeSignals();

    form.widget.setSlicerConfig(preset);

    QCOMPARE(int(form.widget.preset()), int(preset));
    QTEST(form.shown(), "shown");
    QCOMPARE(form.takeSignals(), QStringList("%1:no"_s.arg(preset)));
    QCOMPARE(form.marked(), QStringList());
}

void tst_BuiltInProfileWidget::refusesWhatIsNoPreset_data()
{
    QTest::addColumn<int>("preset");

    QTest::newRow("custom") << int(SlicerConfiguration::Custom);
    QTest::newRow("beyond") << 4;
    QTest::newRow("negative") << -1;
}

void tst_BuiltInProfileWidget::refusesWhatIsNoPreset()
{
    QFETCH(int, preset);
    TestLog log;
    ProfileNumbers form;
    form.widget.setSlicerConfig(SlicerConfiguration::High);
    form.spin("infill")->setValue(40);
    const QStringList before = form.shown();
    form.takeSignals();
    log.expectError("Invalid slicer configuration type");

    form.widget.setSlicerConfig(static_cast<Preset>(preset));

    QCOMPARE(log.sink().entries().size(), std::size_t(1));
    QCOMPARE(log.sink().entries().at(0).message, std::string("Invalid slicer configuration type"));
    QCOMPARE(log.sink().entries().at(0).file,
             std::string("src\\make_dialog\\builtin_profile_widget"));
    QCOMPARE(form.shown(), before);
    QCOMPARE(int(form.widget.preset()), int(SlicerConfiguration::High));
    QCOMPARE(form.takeSignals(), QStringList());
    QCOMPARE(form.marked(), QStringList("infill"_s));
}

void tst_BuiltInProfileWidget::asksForOneTemperatureOrTwo()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.show();

    form.widget.setDualExtrusion(false);
    QCOMPARE(form.label("rightTemperature")->text(), "Extruder:"_s);
    QVERIFY(!form.spin("leftTemperature")->isVisible());
    QVERIFY(!form.label("leftTemperature")->isVisible());
    QVERIFY(form.spin("rightTemperature")->isVisible());

    form.spin("rightTemperature")->setValue(200);
    QCOMPARE(form.label("rightTemperature")->text(), "Extruder: *"_s);

    form.widget.setDualExtrusion(true);
    QCOMPARE(form.label("rightTemperature")->text(), "Right Extruder: *"_s);
    QVERIFY(form.spin("leftTemperature")->isVisible());
    QVERIFY(form.label("leftTemperature")->isVisible());
}

void tst_BuiltInProfileWidget::buildsTheConfiguration()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setSlicerConfig(SlicerConfiguration::High);
    form.spin("infill")->setValue(29);
    form.layerHeight()->setValue(0.15);
    form.spin("shells")->setValue(7);
    form.spin("rightTemperature")->setValue(211);
    form.spin("leftTemperature")->setValue(212);
    form.heat()->setChecked(true);
    form.spin("platformTemperature")->setValue(65);
    form.spin("extrudingSpeed")->setValue(51);
    form.spin("travelingSpeed")->setValue(152);

    const SlicerConfiguration configuration = form.widget.configuration();

    QCOMPARE(configuration.infill(), 29 * 0.01);
    QCOMPARE(configuration.layerHeight(), 0.15);
    QCOMPARE(configuration.shells(), 7u);
    QCOMPARE(configuration.extruderTemperature(), 211u);
    QCOMPARE(configuration.leftExtruderTemperature(), 212u);
    QVERIFY(configuration.heatPlatform());
    QCOMPARE(configuration.platformTemperature(), 65u);
    QCOMPARE(configuration.printSpeed(), 51u);
    QCOMPARE(configuration.travelSpeed(), 152u);
    // The rest is the preset's.
    const SlicerConfiguration preset = defaultsOf(SlicerConfiguration::High);
    QCOMPARE(int(configuration.slicer()), int(preset.slicer()));
    QCOMPARE(int(configuration.extruder()), int(preset.extruder()));
    QCOMPARE(configuration.profilePath(), preset.profilePath());
    QCOMPARE(configuration.raft(), preset.raft());
    QCOMPARE(configuration.supports(), preset.supports());
}

void tst_BuiltInProfileWidget::restoresAConfiguration()
{
    TestLog log;
    ProfileNumbers form;
    form.spin("infill")->setValue(29);
    form.layerHeight()->setValue(0.15);
    form.spin("leftTemperature")->setValue(212);
    form.heat()->setChecked(true);
    form.spin("platformTemperature")->setValue(65);
    const SlicerConfiguration saved = form.widget.configuration();
    const QStringList shown = form.shown();

    ProfileNumbers restored;
    restored.widget.setConfiguration(saved);

    QCOMPARE(restored.shown(), shown);
    QCOMPARE(restored.takeSignals(), QStringList("1:yes"_s));
    QCOMPARE(restored.marked(),
             QStringList({"infill"_s, "layerHeight"_s, "platformTemperature"_s}));
}

void tst_BuiltInProfileWidget::cutsARestoredConfigurationToItsRanges()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setMaterials(Orvane::Flexible, Orvane::PLA);
    SlicerConfiguration configuration;
    configuration.setInfill(3);
    configuration.setLayerHeight(0);
    configuration.setShells(0);
    configuration.setExtruderTemperature(1000);
    configuration.setLeftExtruderTemperature(1000);
    configuration.setPlatformTemperature(1000);
    configuration.setPrintSpeed(0);
    configuration.setTravelSpeed(0xffffffffu);

    form.widget.setConfiguration(configuration);

    QCOMPARE(form.shown(),
             QStringList({"100%"_s, "0.01 mm"_s, "1"_s, "250 \u00b0C"_s, "280 \u00b0C"_s, "heat"_s,
                          "200 \u00b0C"_s, "10 mm/s"_s, "200 mm/s"_s}));
}

void tst_BuiltInProfileWidget::takesAnOddInfillForZero_data()
{
    QTest::addColumn<double>("number");

    QTest::newRow("not a number") << qQNaN();
    QTest::newRow("negative") << -1e300;
    QTest::newRow("infinite") << -qInf();
}

void tst_BuiltInProfileWidget::takesAnOddInfillForZero()
{
    QFETCH(double, number);
    TestLog log;
    ProfileNumbers form;
    SlicerConfiguration configuration;
    configuration.setInfill(number);

    form.widget.setConfiguration(configuration);

    QCOMPARE(form.shown("infill"), "0%"_s);
}

void tst_BuiltInProfileWidget::tabsInTheOrderOfTheForm()
{
    TestLog log;
    ProfileNumbers form;
    QStringList order;
    QWidget* const first = form.child<QWidget>("infill");
    QWidget* widget = first;
    do {
        if (widget->focusPolicy() & Qt::TabFocus && widget->parentWidget() &&
            !qobject_cast<QAbstractSpinBox*>(widget->parentWidget()))
            order.append(widget->objectName());
        widget = widget->nextInFocusChain();
    } while (widget != first);

    QCOMPARE(order, QStringList({"infill"_s, "shells"_s, "layerHeight"_s, "rightTemperature"_s,
                                 "leftTemperature"_s, "heatPlatform"_s, "platformTemperature"_s,
                                 "extrudingSpeed"_s, "travelingSpeed"_s, "defaultsButton"_s,
                                 "createProfileButton"_s}));
}

void tst_BuiltInProfileWidget::leavesTheWheelToThePage()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.show();
    form.child<QPushButton>("defaultsButton")->setFocus();

    for (const char* field : ProfileNumbers::kFields) {
        auto* const box = form.child<QAbstractSpinBox>(field);
        const QString before = box->text();
        QWheelEvent event(QPointF(5, 5), box->mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(box, &event);
        QCOMPARE(box->text(), before);
    }
}

void tst_BuiltInProfileWidget::namesItsFieldsForScreenReaders()
{
    TestLog log;
    const ProfileNumbers form;
    QStringList names;
    for (const char* field : ProfileNumbers::kFields) {
        QAccessibleInterface* const interface =
            QAccessible::queryAccessibleInterface(form.child<QWidget>(field));
        names.append(interface->text(QAccessible::Name));
    }

    QCOMPARE(names, QStringList({"Infill:"_s, "Number of Shells:"_s, "Layer Height:"_s,
                                 "Right Extruder:"_s, "Left Extruder:"_s, "Build Plate:"_s,
                                 "Speed while Extruding:"_s, "Speed while Traveling:"_s}));
}

QTEST_MAIN(tst_BuiltInProfileWidget)
#include "tst_builtin_profile_widget.moc"
