#include "support/test_log.h"

#include <trovek-ui/color_label.h>

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QTest>

using namespace trovek;

namespace {

QString rgb(const QColor& color)
{
    return QStringLiteral("rgb(%1,%2,%3)").arg(color.red()).arg(color.green()).arg(color.blue());
}

QString expectedStyle(const QString& background)
{
    const QColor disabled = QPalette().color(QPalette::Disabled, QPalette::Button);
    return QStringLiteral("QLabel {border: 1px solid rgb(92,92,92); border-radius: 4px; "
                          "background-color: ") +
           background + QStringLiteral(";} QLabel:disabled {background-color: ") + rgb(disabled) +
           QStringLiteral(";}");
}

QColor middleOf(QWidget& widget)
{
    return widget.grab().toImage().pixelColor(widget.width() / 2, widget.height() / 2);
}

} // namespace

class tst_ColorLabel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void isBlackAtFirst();
    void showsItsColor();
    void isGreyWhileDisabled();
    void hasRoundCornersInABorder();
};

void tst_ColorLabel::initTestCase()
{
    // Most styles have the same button colour for both states.
    QPalette palette;
    palette.setColor(QPalette::Active, QPalette::Button, QColor(220, 220, 220));
    palette.setColor(QPalette::Disabled, QPalette::Button, QColor(100, 110, 120));
    QApplication::setPalette(palette);
}

void tst_ColorLabel::isBlackAtFirst()
{
    TestLog log;
    const ColorLabel label;

    QCOMPARE(label.color(), QColor(Qt::black));
    QCOMPARE(label.styleSheet(), expectedStyle(QStringLiteral("rgb(0,0,0)")));
}

void tst_ColorLabel::showsItsColor()
{
    TestLog log;
    ColorLabel label;
    label.resize(24, 24);

    label.setColor(QColor(0, 113, 209));

    QCOMPARE(label.color(), QColor(0, 113, 209));
    QCOMPARE(label.styleSheet(), expectedStyle(QStringLiteral("rgb(0,113,209)")));
    QCOMPARE(middleOf(label), QColor(0, 113, 209));
}

void tst_ColorLabel::isGreyWhileDisabled()
{
    TestLog log;
    ColorLabel label;
    label.resize(24, 24);
    label.setColor(QColor(0, 113, 209));

    label.setEnabled(false);
    QCOMPARE(middleOf(label), QPalette().color(QPalette::Disabled, QPalette::Button));
    QCOMPARE(label.color(), QColor(0, 113, 209));

    label.setEnabled(true);
    QCOMPARE(middleOf(label), QColor(0, 113, 209));
}

void tst_ColorLabel::hasRoundCornersInABorder()
{
    TestLog log;
    QWidget window;
    window.resize(24, 24);
    ColorLabel label(&window);
    label.resize(24, 24);
    label.setColor(QColor(0, 113, 209));

    const QImage image = window.grab().toImage();
    QCOMPARE(image.pixelColor(12, 0), QColor(92, 92, 92));
    QVERIFY(image.pixelColor(0, 0) != QColor(92, 92, 92));
    QVERIFY(image.pixelColor(0, 0) != QColor(0, 113, 209));
}

QTEST_MAIN(tst_ColorLabel)
#include "tst_color_label.moc"
