#include <qtshared/bounding_box.h>
#include <qtshared/material.h>

#include <QTest>

using namespace Orvane;

class tst_Material : public QObject
{
    Q_OBJECT

private slots:
    void everyMaterialHasItsNumberAndTexts_data();
    void everyMaterialHasItsNumberAndTexts();
    void theValidValuesAreCounted();
    void aBoxKnowsItsSizes();
    void aBoxWithoutVolumeIsEmpty_data();
    void aBoxWithoutVolumeIsEmpty();
};

void tst_Material::everyMaterialHasItsNumberAndTexts_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("identifier");

    QTest::newRow("ABS") << 0 << QStringLiteral("Orvane ABS") << QStringLiteral("abs");
    QTest::newRow("PLA") << 1 << QStringLiteral("Orvane PLA") << QStringLiteral("pla");
    QTest::newRow("dissolvable") << 2 << QStringLiteral("Orvane Dissolvable Filament")
                                 << QStringLiteral("dissolvable");
    QTest::newRow("flexible") << 3 << QStringLiteral("Orvane Flexible Filament")
                              << QStringLiteral("flexible");
    QTest::newRow("unknown") << 4 << QStringLiteral("Unknown Material")
                             << QStringLiteral("unknown");
    QTest::newRow("past the last")
        << 5 << QStringLiteral("Unknown Material") << QStringLiteral("unknown");
    QTest::newRow("negative") << -1 << QStringLiteral("Unknown Material")
                              << QStringLiteral("unknown");
}

void tst_Material::everyMaterialHasItsNumberAndTexts()
{
    QFETCH(int, number);
    const auto material = static_cast<Material>(number);
    QTEST(materialToHumanString(material), "name");
    QTEST(materialToIdentifier(material), "identifier");
}

void tst_Material::theValidValuesAreCounted()
{
    QCOMPARE(int(ABS), 0);
    QCOMPARE(int(PLA), 1);
    QCOMPARE(int(Dissolvable), 2);
    QCOMPARE(int(Flexible), 3);
    QCOMPARE(int(UnknownMaterial), kMaterialCount);
}

void tst_Material::aBoxKnowsItsSizes()
{
    const BoundingBox box{-1, -2, 0, 3, 4, 5};
    QCOMPARE(box.width(), 4.0F);
    QCOMPARE(box.depth(), 6.0F);
    QCOMPARE(box.height(), 5.0F);
    QVERIFY(!box.isEmpty());
}

void tst_Material::aBoxWithoutVolumeIsEmpty_data()
{
    QTest::addColumn<float>("xMax");
    QTest::addColumn<float>("zMax");
    QTest::newRow("flat") << 1.0F << 0.0F;
    QTest::newRow("inside out") << -1.0F << 1.0F;
    QTest::newRow("twice inside out") << -1.0F << -1.0F;
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << 1.0F;
}

void tst_Material::aBoxWithoutVolumeIsEmpty()
{
    QFETCH(float, xMax);
    QFETCH(float, zMax);
    QVERIFY(BoundingBox().isEmpty());
    QVERIFY((BoundingBox{0, 0, 0, xMax, 1, zMax}).isEmpty());
}

QTEST_GUILESS_MAIN(tst_Material)
#include "tst_material.moc"
