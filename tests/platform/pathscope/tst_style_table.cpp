#include <pathscope/style_table.h>

#include <QtTest>

using namespace pathscope;

namespace {

MoveStyle styleOfWidth(float width)
{
    MoveStyle style;
    style.width = width;
    return style;
}

} // namespace

class tst_StyleTable : public QObject
{
    Q_OBJECT

private slots:
    void givesEqualStylesOneIndex();
    void tellsApartByEveryMember_data();
    void tellsApartByEveryMember();
    void neverHoldsMoreThanATexture();
};

void tst_StyleTable::givesEqualStylesOneIndex()
{
    StyleTable table;
    QCOMPARE(table.indexOf(styleOfWidth(0.4F)), 0U);
    QCOMPARE(table.indexOf(styleOfWidth(0.5F)), 1U);
    QCOMPARE(table.indexOf(styleOfWidth(0.4F)), 0U);
    QCOMPARE(table.styles().size(), std::size_t(2));
    QCOMPARE(table.styles()[1].width, 0.5F);
}

void tst_StyleTable::tellsApartByEveryMember_data()
{
    QTest::addColumn<int>("member");

    int member = 0;
    for (const char* const name :
         {"feature", "tool", "width", "height", "speed", "temperature", "fan"})
        QTest::newRow(name) << member++;
}

void tst_StyleTable::tellsApartByEveryMember()
{
    QFETCH(int, member);
    MoveStyle style;
    StyleTable table;
    table.indexOf(style);
    switch (member) {
    case 0:
        style.feature = Feature::Bridge;
        break;
    case 1:
        style.tool = 1;
        break;
    case 2:
        style.width = 1;
        break;
    case 3:
        style.height = 1;
        break;
    case 4:
        style.speed = 1;
        break;
    case 5:
        style.celsius = 1;
        break;
    case 6:
        style.fan = 1;
        break;
    }
    QCOMPARE(table.indexOf(style), 1U);
}

void tst_StyleTable::neverHoldsMoreThanATexture()
{
    StyleTable table;
    for (int i = 0; i < 1000000; ++i) {
        MoveStyle style = styleOfWidth(float(i % 5000 + 1) / 1000);
        style.speed = float(i / 100);
        style.tool = static_cast<std::uint8_t>(i % kToolCount);
        style.feature = static_cast<Feature>(i % kFeatureCount);
        const std::uint32_t index = table.indexOf(style);
        QVERIFY(index < table.styles().size());
        const MoveStyle& kept = table.styles()[index];
        QVERIFY(kept.tool == style.tool && kept.feature == style.feature && kept.width > 0);
    }
    QVERIFY(table.styles().size() <= StyleTable::kCapacity);
    QVERIFY(table.styles().size() > StyleTable::kCapacity / 2);
    MoveStyle travel;
    travel.speed = 12345;
    QCOMPARE(table.styles()[table.indexOf(travel)].width, 0.0F);
}

QTEST_APPLESS_MAIN(tst_StyleTable)
#include "tst_style_table.moc"
