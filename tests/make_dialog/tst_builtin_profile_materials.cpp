#include "make_dialog/profile_numbers.h"
#include "support/test_log.h"

#include <functional>

using namespace trovek;

namespace {

constexpr auto kOtherMaterial = static_cast<Orvane::Material>(7);

} // namespace

class tst_BuiltInProfileMaterials : public QObject
{
    Q_OBJECT

private slots:
    void fillsInWhatTheMaterialAsksFor_data();
    void fillsInWhatTheMaterialAsksFor();
    void fillsInTheLeftTemperature_data();
    void fillsInTheLeftTemperature();
    void keepsItsValuesForAnUnknownMaterial();
    void leavesThePlatformTemperatureToPla();
    void limitsTheTemperatureByMaterial_data();
    void limitsTheTemperatureByMaterial();
    void cutsATemperatureThatAMaterialDoesNotTake();
    void heatsThePlatformWhenEitherMaterialNeedsIt_data();
    void heatsThePlatformWhenEitherMaterialNeedsIt();
    void neverHeatsAPlatformThatIsNotThere();
    void keepsTheUsersClickOnHeat();
    void appliesTheHeatRuleAfterEveryFill();
};

void tst_BuiltInProfileMaterials::fillsInWhatTheMaterialAsksFor_data()
{
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<Orvane::Material>("material");
    QTest::addColumn<QStringList>("shown");

    const QString t100 = "100 \u00b0C"_s;
    const QString t110 = "110 \u00b0C"_s;
    const QString t230 = "230 \u00b0C"_s;
    const QString t250 = "250 \u00b0C"_s;
    QTest::newRow("low, ABS") << SlicerConfiguration::Low << Orvane::ABS
                              << QStringList({"5%"_s, "0.30 mm"_s, "2"_s, t230, t230, "heat"_s,
                                              t110, "90 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("high, ABS") << SlicerConfiguration::High << Orvane::ABS
                               << QStringList({"15%"_s, "0.10 mm"_s, "3"_s, t230, t230, "heat"_s,
                                               t110, "60 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("low, dissolvable") << SlicerConfiguration::Low << Orvane::Dissolvable
                                      << QStringList({"5%"_s, "0.30 mm"_s, "2"_s, t250, t250,
                                                      "heat"_s, t110, "90 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("high, dissolvable") << SlicerConfiguration::High << Orvane::Dissolvable
                                       << QStringList({"15%"_s, "0.10 mm"_s, "3"_s, t250, t250,
                                                       "heat"_s, t110, "60 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("low, flexible") << SlicerConfiguration::Low << Orvane::Flexible
                                   << QStringList({"10%"_s, "0.30 mm"_s, "3"_s, t100, t100,
                                                   "cold"_s, t110, "45 mm/s"_s, "150 mm/s"_s});
    QTest::newRow("high, flexible") << SlicerConfiguration::High << Orvane::Flexible
                                    << QStringList({"10%"_s, "0.10 mm"_s, "3"_s, t100, t100,
                                                    "cold"_s, t110, "45 mm/s"_s, "150 mm/s"_s});
}

void tst_BuiltInProfileMaterials::fillsInWhatTheMaterialAsksFor()
{
    QFETCH(Preset, preset);
    QFETCH(Orvane::Material, material);
    TestLog log;
    ProfileNumbers form;
    form.widget.setSlicerConfig(preset);
    form.spin("platformTemperature")->setValue(60);
    form.spin("travelingSpeed")->setValue(20);

    form.widget.setMaterials(material, material);

    QTEST(form.shown(), "shown");
    QCOMPARE(form.marked(), QStringList());
}

void tst_BuiltInProfileMaterials::fillsInTheLeftTemperature_data()
{
    QTest::addColumn<Orvane::Material>("left");
    QTest::addColumn<int>("celsius");
    QTest::addColumn<bool>("logs");

    QTest::newRow("ABS") << Orvane::ABS << 230 << false;
    QTest::newRow("PLA") << Orvane::PLA << 230 << false;
    QTest::newRow("dissolvable") << Orvane::Dissolvable << 250 << false;
    QTest::newRow("flexible") << Orvane::Flexible << 100 << false;
    QTest::newRow("unknown") << Orvane::UnknownMaterial << 123 << true;
    QTest::newRow("another") << kOtherMaterial << 123 << false;
}

void tst_BuiltInProfileMaterials::fillsInTheLeftTemperature()
{
    QFETCH(Orvane::Material, left);
    QFETCH(bool, logs);
    TestLog log;
    ProfileNumbers form;
    form.spin("leftTemperature")->setValue(123);
    if (logs)
        log.expectError("Unknown material");

    form.widget.setMaterials(Orvane::PLA, left);

    QTEST(form.spin("leftTemperature")->value(), "celsius");
    QCOMPARE(form.spin("rightTemperature")->value(), 230);
    QCOMPARE(log.messages().size(), std::size_t(logs));
}

void tst_BuiltInProfileMaterials::keepsItsValuesForAnUnknownMaterial()
{
    TestLog log;
    log.allowErrors("Unknown material");
    ProfileNumbers form;
    form.spin("infill")->setValue(77);
    form.spin("extrudingSpeed")->setValue(33);
    form.spin("travelingSpeed")->setValue(22);
    form.spin("rightTemperature")->setValue(211);
    QStringList before = form.shown();
    form.takeSignals();

    form.widget.setMaterials(kOtherMaterial, Orvane::Dissolvable);
    before[4] = "250 \u00b0C"_s;
    before[5] = "heat"_s;
    QCOMPARE(form.shown(), before);
    QVERIFY(log.messages().empty());

    form.widget.setMaterials(Orvane::UnknownMaterial, Orvane::Dissolvable);
    QCOMPARE(form.shown(), before);
    QVERIFY(log.contains("Unknown material", Log::Error));
    // There is nothing to compare with.
    QCOMPARE(form.takeSignals(), QStringList({"1:no"_s, "1:no"_s}));
    QCOMPARE(form.marked(), QStringList());
    QCOMPARE(form.spin("rightTemperature")->maximum(), 280);
}

void tst_BuiltInProfileMaterials::leavesThePlatformTemperatureToPla()
{
    TestLog log;
    ProfileNumbers form;
    form.spin("platformTemperature")->setValue(60);

    form.widget.setMaterials(Orvane::PLA, Orvane::PLA);
    form.widget.setSlicerConfig(SlicerConfiguration::Low);

    QCOMPARE(form.spin("platformTemperature")->value(), 60);
    QCOMPARE(form.marked(), QStringList("platformTemperature"_s));
}

void tst_BuiltInProfileMaterials::limitsTheTemperatureByMaterial_data()
{
    QTest::addColumn<Orvane::Material>("right");
    QTest::addColumn<Orvane::Material>("left");
    QTest::addColumn<int>("rightMaximum");
    QTest::addColumn<int>("leftMaximum");

    QTest::newRow("ABS") << Orvane::ABS << Orvane::ABS << 280 << 280;
    QTest::newRow("PLA") << Orvane::PLA << Orvane::PLA << 280 << 280;
    QTest::newRow("dissolvable") << Orvane::Dissolvable << Orvane::Dissolvable << 280 << 280;
    QTest::newRow("flexible right") << Orvane::Flexible << Orvane::PLA << 250 << 280;
    QTest::newRow("flexible left") << Orvane::PLA << Orvane::Flexible << 280 << 250;
    QTest::newRow("unknown") << Orvane::UnknownMaterial << Orvane::UnknownMaterial << 280 << 280;
}

void tst_BuiltInProfileMaterials::limitsTheTemperatureByMaterial()
{
    QFETCH(Orvane::Material, right);
    QFETCH(Orvane::Material, left);
    TestLog log;
    log.allowErrors("Unknown material");
    ProfileNumbers form;
    const auto other = right == Orvane::Flexible ? Orvane::PLA : Orvane::Flexible;
    form.widget.setMaterials(other, left == Orvane::Flexible ? Orvane::PLA : Orvane::Flexible);

    form.widget.setMaterials(right, left);

    QCOMPARE(form.spin("rightTemperature")->minimum(), 0);
    QCOMPARE(form.spin("leftTemperature")->minimum(), 0);
    QTEST(form.spin("rightTemperature")->maximum(), "rightMaximum");
    QTEST(form.spin("leftTemperature")->maximum(), "leftMaximum");
}

void tst_BuiltInProfileMaterials::cutsATemperatureThatAMaterialDoesNotTake()
{
    TestLog log;
    ProfileNumbers form;
    form.spin("rightTemperature")->setValue(280);
    form.takeSignals();

    form.widget.setMaterials(Orvane::Flexible, Orvane::PLA);

    QCOMPARE(form.spin("rightTemperature")->value(), 100);
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    form.spin("rightTemperature")->setValue(280);
    QCOMPARE(form.spin("rightTemperature")->value(), 250);
}

void tst_BuiltInProfileMaterials::heatsThePlatformWhenEitherMaterialNeedsIt_data()
{
    QTest::addColumn<Orvane::Material>("right");
    QTest::addColumn<Orvane::Material>("left");
    QTest::addColumn<bool>("heats");

    QTest::newRow("PLA, PLA") << Orvane::PLA << Orvane::PLA << false;
    QTest::newRow("ABS, PLA") << Orvane::ABS << Orvane::PLA << true;
    QTest::newRow("PLA, ABS") << Orvane::PLA << Orvane::ABS << true;
    QTest::newRow("PLA, dissolvable") << Orvane::PLA << Orvane::Dissolvable << true;
    QTest::newRow("dissolvable, PLA") << Orvane::Dissolvable << Orvane::PLA << true;
    QTest::newRow("flexible, ABS") << Orvane::Flexible << Orvane::ABS << true;
    QTest::newRow("flexible, flexible") << Orvane::Flexible << Orvane::Flexible << false;
}

void tst_BuiltInProfileMaterials::heatsThePlatformWhenEitherMaterialNeedsIt()
{
    QFETCH(Orvane::Material, right);
    QFETCH(Orvane::Material, left);
    QFETCH(bool, heats);
    TestLog log;
    ProfileNumbers form;

    form.widget.setMaterials(right, left);
    QCOMPARE(form.heat()->isChecked(), heats);
    form.widget.setHasHeatedPlatform(false);
    QVERIFY(!form.heat()->isChecked());
    form.widget.setHasHeatedPlatform(true);
    QCOMPARE(form.heat()->isChecked(), heats);
    QVERIFY(form.heat()->isEnabled());
    QVERIFY(form.spin("platformTemperature")->isEnabled());
    QVERIFY(form.label("platformTemperature")->isEnabled());
    QCOMPARE(form.widget.configuration().heatPlatform(), heats);
}

void tst_BuiltInProfileMaterials::neverHeatsAPlatformThatIsNotThere()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setMaterials(Orvane::ABS, Orvane::Dissolvable);

    form.widget.setHasHeatedPlatform(false);

    const auto isCold = [&form] {
        return !form.heat()->isChecked() && !form.heat()->isEnabled() &&
               !form.spin("platformTemperature")->isEnabled() &&
               !form.label("platformTemperature")->isEnabled() &&
               !form.widget.configuration().heatPlatform();
    };
    QVERIFY(isCold());
    form.widget.setMaterials(Orvane::Dissolvable, Orvane::ABS);
    QVERIFY(isCold());
    form.widget.setSlicerConfig(SlicerConfiguration::High);
    QVERIFY(isCold());
    form.widget.resetToDefaults();
    QVERIFY(isCold());
    form.widget.heatPlatformToggled(true);
    QVERIFY(isCold());
    SlicerConfiguration hot;
    hot.setHeatPlatform(true);
    form.widget.setConfiguration(hot);
    QVERIFY(isCold());
}

void tst_BuiltInProfileMaterials::keepsTheUsersClickOnHeat()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setMaterials(Orvane::ABS, Orvane::ABS);
    form.widget.setHasHeatedPlatform(true);
    form.takeSignals();

    form.heat()->click();
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    form.widget.setHasHeatedPlatform(true);
    form.widget.setDualExtrusion(true);
    form.spin("infill")->setValue(12);
    form.widget.emitOverridednessChanged();

    QVERIFY(!form.heat()->isChecked());
    QVERIFY(!form.widget.configuration().heatPlatform());
    // Who cools it now may want to heat it later.
    QVERIFY(form.spin("platformTemperature")->isEnabled());
}

void tst_BuiltInProfileMaterials::appliesTheHeatRuleAfterEveryFill()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setMaterials(Orvane::PLA, Orvane::ABS);
    const std::function<void()> fills[] = {
        [&] { form.widget.setMaterials(Orvane::PLA, Orvane::ABS); },
        [&] { form.widget.setSlicerConfig(SlicerConfiguration::Low); },
        [&] { QTest::mouseClick(form.child<QPushButton>("defaultsButton"), Qt::LeftButton); },
    };

    for (const auto& fill : fills) {
        form.heat()->setChecked(false);
        fill();
        QVERIFY(form.heat()->isChecked());
    }
}

QTEST_MAIN(tst_BuiltInProfileMaterials)
#include "tst_builtin_profile_materials.moc"
