#include "view_in_a_window.h"

#include "support/test_log.h"

using namespace pathscope;

/** The view where a logical pixel is two device pixels wide and high. */
class tst_ToolpathHighDpi : public QObject
{
    Q_OBJECT

private slots:
    void drawsADevicePixelEach();
    void theWheelZoomsWhereTheCursorIs();
};

void tst_ToolpathHighDpi::drawsADevicePixelEach()
{
    trovek::TestLog log;
    ViewInAWindow shown(QSize(560, 360));
    QVERIFY(shown.open(towerText(50)));
    QCOMPARE(shown.view->devicePixelRatioF(), 2.0);

    const QImage picture = shown.picture();

    QCOMPARE(picture.height(), 720);
    for (const float z : {1.0F, 5.0F, 9.0F})
        QVERIFY(isRed(picture.pixel(shown.place(50, 40, z))));
    QVERIFY(!isRed(picture.pixel(shown.place(50, 60, 13))));
    // Were it stretched, each pixel would have a twin.
    int twins = 0;
    int pairs = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x + 1 < picture.width(); x += 2) {
            if (!isRed(picture.pixel(x, y)))
                continue;
            ++pairs;
            twins += picture.pixel(x, y) == picture.pixel(x + 1, y) && y + 1 < picture.height() &&
                             picture.pixel(x, y) == picture.pixel(x, y + 1 - 2 * (y % 2))
                         ? 1
                         : 0;
        }
    }
    QVERIFY(pairs > 500);
    QVERIFY2(twins < 0.9 * pairs, qPrintable(QStringLiteral("%1 of %2").arg(twins).arg(pairs)));
}

void tst_ToolpathHighDpi::theWheelZoomsWhereTheCursorIs()
{
    trovek::TestLog log;
    ViewInAWindow shown(QSize(560, 360));
    QVERIFY(shown.open(towerText(20)));
    const QPoint under = shown.place(40, 40, 0);
    const QPointF cursor = QPointF(under) / 2;
    QWheelEvent wheel(cursor, shown.view->mapToGlobal(cursor.toPoint()), QPoint(), QPoint(0, 240),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);

    QCoreApplication::sendEvent(shown.view, &wheel);

    QVERIFY((shown.place(40, 40, 0) - under).manhattanLength() <= 20);
}

int main(int argc, char** argv)
{
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication application(argc, argv);
    tst_ToolpathHighDpi test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_toolpath_high_dpi.moc"
