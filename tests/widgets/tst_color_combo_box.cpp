#include "support/test_log.h"

#include <trovek-ui/color_combo_box.h>

#include <QSignalSpy>
#include <QTest>

using namespace trovek;

class tst_ColorComboBox : public QObject
{
    Q_OBJECT

private slots:
    void listsTheBrandsColors_data();
    void listsTheBrandsColors();
    void listsNothingElse();
    void namesOtherValuesUnknown_data();
    void namesOtherValuesUnknown();
    void findsOnlyEqualColors_data();
    void findsOnlyEqualColors();
    void tellsTheColorThatAUserChooses();
    void selectsListedColorsOnly();
    void answersBlackWithoutASelection();
};

void tst_ColorComboBox::listsTheBrandsColors_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("rgb");

    const auto row = [](int value, const char* text, const QColor& rgb) {
        QTest::newRow(text) << value << QString::fromLatin1(text) << rgb;
    };
    row(0, "Orvane True Red", QColor(192, 30, 52));
    row(1, "Orvane True Orange", QColor(255, 88, 0));
    row(2, "Orvane True Yellow", QColor(249, 223, 121));
    row(3, "Orvane True Green", QColor(0, 149, 48));
    row(4, "Orvane True Blue", QColor(0, 113, 209));
    row(5, "Orvane True Purple", QColor(89, 5, 141));
    row(6, "Orvane True Gray", QColor(140, 140, 140));
    row(7, "Orvane True White", QColor(235, 235, 235));
    row(8, "Orvane True Black", QColor(60, 60, 60));
}

void tst_ColorComboBox::listsTheBrandsColors()
{
    TestLog log;
    QFETCH(int, value);
    QFETCH(QString, text);
    QFETCH(QColor, rgb);
    const auto color = static_cast<ColorComboBox::Color>(value);
    ColorComboBox box;

    QCOMPARE(box.itemText(value), text);
    QCOMPARE(box.itemData(value, Qt::DecorationRole).value<QColor>(), rgb);
    QCOMPARE(ColorComboBox::colorToString(color), text);
    QCOMPARE(ColorComboBox::colorToQColor(color), rgb);
    QCOMPARE(ColorComboBox::colorToQColor(color).alpha(), 255);
    QCOMPARE(int(ColorComboBox::qcolorToColor(rgb)), value);

    box.selectColor(color);
    QCOMPARE(int(box.color()), value);
    QCOMPARE(box.qcolor(), rgb);
    box.setCurrentIndex(-1);
    box.selectColor(rgb);
    QCOMPARE(int(box.color()), value);
}

void tst_ColorComboBox::listsNothingElse()
{
    TestLog log;
    const ColorComboBox box;

    QCOMPARE(box.count(), 9);
    QCOMPARE(int(box.color()), int(ColorComboBox::TrueRed));
}

void tst_ColorComboBox::namesOtherValuesUnknown_data()
{
    QTest::addColumn<int>("value");

    QTest::newRow("one past the last") << 9;
    QTest::newRow("none selected") << -1;
    QTest::newRow("far out") << 1000;
}

void tst_ColorComboBox::namesOtherValuesUnknown()
{
    TestLog log;
    QFETCH(int, value);
    const auto color = static_cast<ColorComboBox::Color>(value);

    QCOMPARE(ColorComboBox::colorToString(color), QStringLiteral("Unknown Color"));
    QCOMPARE(ColorComboBox::colorToQColor(color), QColor(0, 0, 0));
}

void tst_ColorComboBox::findsOnlyEqualColors_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("found");

    QTest::newRow("listed") << QColor(192, 30, 52) << 0;
    QTest::newRow("one off") << QColor(192, 30, 53) << 9;
    QTest::newRow("listed, but translucent") << QColor(192, 30, 52, 254) << 9;
    QTest::newRow("listed, but in another model") << QColor(192, 30, 52).toHsv() << 9;
    QTest::newRow("invalid") << QColor() << 9;
    QTest::newRow("black") << QColor(Qt::black) << 9;
}

void tst_ColorComboBox::findsOnlyEqualColors()
{
    TestLog log;
    QFETCH(QColor, color);

    QTEST(int(ColorComboBox::qcolorToColor(color)), "found");
}

void tst_ColorComboBox::tellsTheColorThatAUserChooses()
{
    TestLog log;
    ColorComboBox box;
    QStringList order;
    connect(&box, QOverload<ColorComboBox::Color>::of(&ColorComboBox::colorChanged), &box,
            [&order](ColorComboBox::Color color) { order.append(QString::number(color)); });
    connect(&box, QOverload<QColor>::of(&ColorComboBox::colorChanged), &box,
            [&order](const QColor& color) { order.append(color.name()); });
    QSignalSpy spy(&box, QOverload<ColorComboBox::Color>::of(&ColorComboBox::colorChanged));

    box.show();
    QTest::keyClick(&box, Qt::Key_Down);

    QCOMPARE(order, (QStringList{QStringLiteral("1"), QStringLiteral("#ff5800")}));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(int(spy.first().first().value<ColorComboBox::Color>()), 1);
}

void tst_ColorComboBox::selectsListedColorsOnly()
{
    TestLog log;
    ColorComboBox box;
    box.selectColor(ColorComboBox::TrueBlue);
    QSignalSpy spy(&box, QOverload<QColor>::of(&ColorComboBox::colorChanged));

    box.selectColor(QColor(1, 2, 3));
    box.selectColor(ColorComboBox::UnknownColor);
    box.selectColor(ColorComboBox::TrueBlue);

    QCOMPARE(int(box.color()), int(ColorComboBox::TrueBlue));
    QCOMPARE(spy.count(), 0);
}

void tst_ColorComboBox::answersBlackWithoutASelection()
{
    TestLog log;
    ColorComboBox box;

    box.setCurrentIndex(-1);

    QCOMPARE(int(box.color()), -1);
    QCOMPARE(box.qcolor(), QColor(0, 0, 0));
}

QTEST_MAIN(tst_ColorComboBox)
#include "tst_color_combo_box.moc"
