#include "make_dialog/profile_numbers.h"
#include "support/test_log.h"

using namespace trovek;

class tst_BuiltInProfileOverrides : public QObject
{
    Q_OBJECT

private slots:
    void startsWithoutAMark();
    void marksTheFieldThatDiffers_data();
    void marksTheFieldThatDiffers();
    void hasNoMarkAfterAFill_data();
    void hasNoMarkAfterAFill();
    void comparesAsShown_data();
    void comparesAsShown();
    void comparesThePlatformAlsoWhereThereIsNone();
    void tellsOnceOfEachSetter();
    void tellsOfEveryChangeByTheUser();
    void revertsToTheDefaults();
    void isConsistentDuringItsSignal();
    void survivesItsDeletionInASignal();
    void staysAsWideWithAMark();
};

void tst_BuiltInProfileOverrides::startsWithoutAMark()
{
    TestLog log;
    ProfileNumbers form;

    QCOMPARE(int(form.widget.preset()), int(SlicerConfiguration::Standard));
    QCOMPARE(form.marked(), QStringList());
    for (const char* field : ProfileNumbers::kFields)
        QVERIFY(form.label(field)->toolTip().isEmpty());
    form.widget.emitOverridednessChanged();
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
}

void tst_BuiltInProfileOverrides::marksTheFieldThatDiffers_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("toolTip");

    QTest::newRow("infill") << QByteArray("infill") << "11"_s
                            << "Default: 10%"_s;
    QTest::newRow("shells") << QByteArray("shells") << "3"_s
                            << "Default: 2"_s;
    QTest::newRow("layer height") << QByteArray("layerHeight") << "0.21"_s
                                  << "Default: 0.20 mm"_s;
    QTest::newRow("right temperature") << QByteArray("rightTemperature") << "229"_s
                                       << "Default: 230 \u00b0C"_s;
    QTest::newRow("platform temperature") << QByteArray("platformTemperature") << "111"_s
                                          << "Default: 110 \u00b0C"_s;
    QTest::newRow("extruding speed") << QByteArray("extrudingSpeed") << "81"_s
                                     << "Default: 80 mm/s"_s;
    QTest::newRow("traveling speed") << QByteArray("travelingSpeed") << "149"_s
                                     << "Default: 150 mm/s"_s;
    // A preset has one temperature; that of the left extruder is not compared.
    QTest::newRow("left temperature") << QByteArray("leftTemperature") << "229"_s << QString();
}

void tst_BuiltInProfileOverrides::marksTheFieldThatDiffers()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, typed);
    QFETCH(QString, toolTip);
    TestLog log;
    ProfileNumbers form;
    auto* const box = form.child<QAbstractSpinBox>(field);
    const QString before = form.shown(field);
    const QString label = form.label(field)->text();
    const bool marks = !toolTip.isEmpty();
    box->setKeyboardTracking(false);

    box->selectAll();
    QTest::keyClicks(box, typed);
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(form.takeSignals(), QStringList(marks ? "1:yes"_s : "1:no"_s));
    QCOMPARE(form.label(field)->text(), marks ? label + " *"_s : label);
    QCOMPARE(form.label(field)->toolTip(), toolTip);
    QCOMPARE(form.marked(), marks ? QStringList(QString::fromLatin1(field)) : QStringList());

    box->selectAll();
    QTest::keyClicks(box, before.section(QLatin1Char(' '), 0, 0).remove(QLatin1Char('%')));
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    QCOMPARE(form.label(field)->text(), label);
    QVERIFY(form.label(field)->toolTip().isEmpty());
}

void tst_BuiltInProfileOverrides::hasNoMarkAfterAFill_data()
{
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<Orvane::Material>("material");

    for (const Preset preset :
         {SlicerConfiguration::Low, SlicerConfiguration::Standard, SlicerConfiguration::High}) {
        for (int material = 0; material < Orvane::kMaterialCount; ++material) {
            QTest::addRow("preset %d, material %d", preset, material)
                << preset << static_cast<Orvane::Material>(material);
        }
    }
}

void tst_BuiltInProfileOverrides::hasNoMarkAfterAFill()
{
    QFETCH(Preset, preset);
    QFETCH(Orvane::Material, material);
    TestLog log;
    ProfileNumbers form;

    form.widget.setMaterials(material, Orvane::PLA);
    form.widget.setSlicerConfig(preset);

    QCOMPARE(form.marked(), QStringList());
    QCOMPARE(form.takeSignals(), QStringList({"1:no"_s, "%1:no"_s.arg(preset)}));
    // The material's own values are the defaults then.
    form.spin("extrudingSpeed")->setValue(46);
    QCOMPARE(form.label("extrudingSpeed")->toolTip(),
             "Default: %1 mm/s"_s.arg(
                 material == Orvane::Flexible ? 45 : int(defaultsOf(preset).printSpeed())));
}

void tst_BuiltInProfileOverrides::comparesAsShown_data()
{
    QTest::addColumn<double>("infill");
    QTest::addColumn<double>("layerHeight");
    QTest::addColumn<QStringList>("marked");

    QTest::newRow("the same") << 0.1 << 0.2 << QStringList();
    QTest::newRow("nearly the same") << 0.1049 << 0.2049 << QStringList();
    QTest::newRow("one step of each")
        << 0.1051 << 0.2051 << QStringList({"infill"_s, "layerHeight"_s});
    QTest::newRow("what binary fractions make of it") << 0.3 - 0.2 << 0.3 - 0.1 << QStringList();
}

void tst_BuiltInProfileOverrides::comparesAsShown()
{
    QFETCH(double, infill);
    QFETCH(double, layerHeight);
    TestLog log;
    ProfileNumbers form;
    SlicerConfiguration configuration = form.widget.configuration();
    configuration.setInfill(infill);
    configuration.setLayerHeight(layerHeight);

    form.widget.setConfiguration(configuration);

    QTEST(form.marked(), "marked");
}

void tst_BuiltInProfileOverrides::comparesThePlatformAlsoWhereThereIsNone()
{
    TestLog log;
    ProfileNumbers form;
    form.spin("platformTemperature")->setValue(60);
    QCOMPARE(form.takeSignals(), QStringList("1:yes"_s));

    form.widget.setHasHeatedPlatform(false);
    QCOMPARE(form.takeSignals(), QStringList("1:yes"_s));
    QCOMPARE(form.marked(), QStringList("platformTemperature"_s));

    form.spin("platformTemperature")->setValue(110);
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    QCOMPARE(form.marked(), QStringList());
}

void tst_BuiltInProfileOverrides::tellsOnceOfEachSetter()
{
    TestLog log;
    ProfileNumbers form;

    form.widget.setSlicerConfig(SlicerConfiguration::High);
    QCOMPARE(form.takeSignals(), QStringList("2:no"_s));
    form.widget.setMaterials(Orvane::ABS, Orvane::Flexible);
    QCOMPARE(form.takeSignals(), QStringList("2:no"_s));
    form.widget.setHasHeatedPlatform(true);
    QCOMPARE(form.takeSignals(), QStringList());
    form.widget.setHasHeatedPlatform(false);
    QCOMPARE(form.takeSignals(), QStringList("2:no"_s));
    form.widget.setDualExtrusion(false);
    QCOMPARE(form.takeSignals(), QStringList());
    form.widget.setConfiguration(defaultsOf(SlicerConfiguration::Low));
    QCOMPARE(form.takeSignals(), QStringList("2:yes"_s));
    form.widget.resetToDefaults();
    QCOMPARE(form.takeSignals(), QStringList("2:no"_s));
    form.widget.heatPlatformToggled(false);
    QCOMPARE(form.takeSignals(), QStringList("2:no"_s));
}

void tst_BuiltInProfileOverrides::tellsOfEveryChangeByTheUser()
{
    TestLog log;
    ProfileNumbers form;

    form.spin("infill")->stepUp();
    QCOMPARE(form.takeSignals(), QStringList("1:yes"_s));
    form.layerHeight()->stepUp();
    QCOMPARE(form.layerHeight()->value(), 0.25);
    QCOMPARE(form.takeSignals(), QStringList("1:yes"_s));
    form.spin("infill")->stepDown();
    QCOMPARE(form.takeSignals(), QStringList("1:yes"_s));
    form.layerHeight()->stepDown();
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    form.heat()->click();
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
    form.widget.heatPlatformToggled(false);
    QVERIFY(!form.heat()->isChecked());
    QCOMPARE(form.takeSignals(), QStringList("1:no"_s));
}

void tst_BuiltInProfileOverrides::revertsToTheDefaults()
{
    TestLog log;
    ProfileNumbers form;
    form.widget.setSlicerConfig(SlicerConfiguration::Low);
    form.widget.setMaterials(Orvane::ABS, Orvane::ABS);
    const QStringList defaults = form.shown();
    form.spin("infill")->setValue(99);
    form.spin("platformTemperature")->setValue(99);
    form.spin("leftTemperature")->setValue(99);
    form.heat()->setChecked(false);
    form.takeSignals();

    QTest::mouseClick(form.child<QPushButton>("defaultsButton"), Qt::LeftButton);

    QCOMPARE(form.shown(), defaults);
    QCOMPARE(form.takeSignals(), QStringList("0:no"_s));
    QCOMPARE(form.marked(), QStringList());
}

void tst_BuiltInProfileOverrides::isConsistentDuringItsSignal()
{
    TestLog log;
    ProfileNumbers form;
    QList<double> infills;
    QStringList marked;
    connect(&form.widget, &BuiltInProfileWidget::overridednessChanged, this, [&] {
        infills.append(form.widget.configuration().infill());
        marked = form.marked();
    });

    form.spin("infill")->setValue(50);
    QCOMPARE(marked, QStringList("infill"_s));
    form.widget.setSlicerConfig(SlicerConfiguration::High);
    QCOMPARE(marked, QStringList());
    QCOMPARE(infills, QList<double>({0.5, 0.15}));
}

void tst_BuiltInProfileOverrides::survivesItsDeletionInASignal()
{
    TestLog log;
    auto* const widget = new BuiltInProfileWidget;
    auto* const button = widget->findChild<QPushButton*>("defaultsButton"_s);
    connect(widget, &BuiltInProfileWidget::overridednessChanged, widget, &QObject::deleteLater);

    button->click();
    QSignalSpy destroyed(widget, &QObject::destroyed);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QCOMPARE(destroyed.count(), 1);
}

void tst_BuiltInProfileOverrides::staysAsWideWithAMark()
{
    TestLog log;
    ProfileNumbers form;
    const int before = form.widget.sizeHint().width();

    for (const char* field : ProfileNumbers::kFields) {
        const int width = form.label(field)->sizeHint().width();
        if (auto* const box = form.widget.findChild<QSpinBox*>(QString::fromLatin1(field)))
            box->stepUp();
        QCOMPARE(form.label(field)->sizeHint().width(), width);
    }
    QVERIFY(!form.marked().isEmpty());
    QCOMPARE(form.widget.sizeHint().width(), before);
}

QTEST_MAIN(tst_BuiltInProfileOverrides)
#include "tst_builtin_profile_overrides.moc"
