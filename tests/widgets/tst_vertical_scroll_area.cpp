#include <trovek-ui/vertical_scroll_area.h>

#include <QLabel>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

using trovek::VerticalScrollArea;

class tst_VerticalScrollArea : public QObject
{
    Q_OBJECT

private slots:
    void scrollsOnlyUpAndDown();
    void isAsWideAsItsContentAndTheScrollBar();
    void followsTheLayoutOfItsContent();
    void takesTheSizeHintOfABarThatWasNeverShown();
};

void tst_VerticalScrollArea::scrollsOnlyUpAndDown()
{
    VerticalScrollArea area;
    QCOMPARE(area.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QVERIFY(area.widgetResizable());
    area.resize(100, 100);
    area.show();
    QCOMPARE(area.minimumWidth(), 0);
}

void tst_VerticalScrollArea::isAsWideAsItsContentAndTheScrollBar()
{
    VerticalScrollArea area;
    auto* content = new QWidget;
    content->setMinimumSize(250, 1000);
    area.setWidget(content);
    area.resize(100, 100);
    area.show();
    QCOMPARE(area.minimumWidth(), 250 + area.verticalScrollBar()->width());
    QVERIFY(area.width() >= area.minimumWidth());

    content->setMinimumWidth(300);
    area.resize(area.width() + 10, 120);
    QCOMPARE(area.minimumWidth(), 300 + area.verticalScrollBar()->width());
}

void tst_VerticalScrollArea::followsTheLayoutOfItsContent()
{
    VerticalScrollArea area;
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    auto* wide = new QWidget;
    wide->setMinimumWidth(400);
    layout->addWidget(wide);
    area.setWidget(content);
    area.resize(100, 100);
    area.show();
    QCOMPARE(area.minimumWidth(),
             content->minimumSizeHint().width() + area.verticalScrollBar()->sizeHint().width());
    QVERIFY(area.minimumWidth() > 400);
}

void tst_VerticalScrollArea::takesTheSizeHintOfABarThatWasNeverShown()
{
    VerticalScrollArea area;
    auto* content = new QWidget;
    content->setMinimumSize(250, 10);
    area.setWidget(content);
    area.resize(400, 100);
    area.show();

    QVERIFY(!area.verticalScrollBar()->isVisible());
    QCOMPARE(area.minimumWidth(), 250 + area.verticalScrollBar()->sizeHint().width());

    // Shown, it takes the same place.
    content->setMinimumHeight(1000);
    QTRY_VERIFY(area.verticalScrollBar()->isVisible());
    area.resize(410, 100);
    QCOMPARE(area.minimumWidth(), 250 + area.verticalScrollBar()->width());
    QCOMPARE(area.verticalScrollBar()->width(), area.verticalScrollBar()->sizeHint().width());
}

QTEST_MAIN(tst_VerticalScrollArea)
#include "tst_vertical_scroll_area.moc"
