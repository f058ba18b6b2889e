#include <trovek/slicer_configuration.h>

#include <QTest>

#include <memory>

using trovek::SlicerConfiguration;

class tst_SlicerConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void presetsDiffer_data();
    void presetsDiffer();
    void settersAreRead();
};

void tst_SlicerConfiguration::presetsDiffer_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<double>("layerHeight");
    QTest::addColumn<double>("infill");
    QTest::addColumn<uint>("shells");
    QTest::addColumn<uint>("printSpeed");
    QTest::newRow("low") << 0 << 0.3 << 0.05 << 2U << 90U;
    QTest::newRow("standard") << 1 << 0.2 << 0.1 << 2U << 80U;
    QTest::newRow("high") << 2 << 0.1 << 0.15 << 3U << 60U;
    QTest::newRow("custom starts as standard") << 3 << 0.2 << 0.1 << 2U << 80U;
    QTest::newRow("unknown is standard") << 9 << 0.2 << 0.1 << 2U << 80U;
}

void tst_SlicerConfiguration::presetsDiffer()
{
    QFETCH(int, preset);
    const std::unique_ptr<SlicerConfiguration> configuration(
        SlicerConfiguration::defaultConfiguration(
            static_cast<SlicerConfiguration::Preset>(preset)));
    QTEST(configuration->layerHeight(), "layerHeight");
    QTEST(configuration->infill(), "infill");
    QTEST(uint(configuration->shells()), "shells");
    QTEST(uint(configuration->printSpeed()), "printSpeed");
    QCOMPARE(configuration->slicer(), SlicerConfiguration::Strandel);
    QVERIFY(configuration->heatPlatform());
}

void tst_SlicerConfiguration::settersAreRead()
{
    SlicerConfiguration configuration;
    configuration.setExtruder(SlicerConfiguration::Both);
    configuration.setProfilePath("/p");
    configuration.setTravelSpeed(200);
    configuration.setLeftExtruderTemperature(215);
    configuration.setDefaultSupportExtruder(1);
    configuration.setDoAutoRaft(true);
    const SlicerConfiguration copy = configuration;
    QCOMPARE(copy.extruder(), SlicerConfiguration::Both);
    QCOMPARE(copy.profilePath().c_str(), "/p");
    QCOMPARE(copy.travelSpeed(), 200U);
    QCOMPARE(copy.leftExtruderTemperature(), 215U);
    QCOMPARE(copy.defaultSupportExtruder(), 1U);
    QCOMPARE(copy.defaultRaftExtruder(), 0U);
    QVERIFY(copy.doAutoRaft());
    QVERIFY(!copy.doAutoSupport());
}

QTEST_GUILESS_MAIN(tst_SlicerConfiguration)
#include "tst_slicer_configuration.moc"
