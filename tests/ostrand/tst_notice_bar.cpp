#include "apps/ostrand/notice_bar.h"

#include <QLabel>
#include <QTest>

using namespace ostrand;

class tst_NoticeBar : public QObject
{
    Q_OBJECT

private slots:
    void isHiddenAtFirst();
    void showsHeadingAndText();
    void replacesWhatItShows();
    void hidesAnEmptyText();
    void showsPlainText();
};

void tst_NoticeBar::isHiddenAtFirst()
{
    QWidget window;
    NoticeBar bar(&window);
    window.show();
    QVERIFY(!bar.isVisible());
}

void tst_NoticeBar::showsHeadingAndText()
{
    QWidget window;
    NoticeBar bar(&window);
    window.show();
    bar.showNotice(QStyle::SP_MessageBoxWarning, QStringLiteral("Gone"), QStringLiteral("a\nb"));
    QVERIFY(bar.isVisible());
    QCOMPARE(bar.heading(), QStringLiteral("Gone"));
    QCOMPARE(bar.text(), QStringLiteral("a\nb"));
    QCOMPARE(bar.accessibleName(), QStringLiteral("Gone"));
}

void tst_NoticeBar::replacesWhatItShows()
{
    QWidget window;
    NoticeBar bar(&window);
    window.show();
    bar.showNotice(QStyle::SP_MessageBoxWarning, QStringLiteral("Gone"), QStringLiteral("a"));
    bar.showNotice(QStyle::SP_MessageBoxInformation, QStringLiteral("Back"), QStringLiteral("b"));
    QCOMPARE(bar.heading(), QStringLiteral("Back"));
    QCOMPARE(bar.text(), QStringLiteral("b"));
}

void tst_NoticeBar::hidesAnEmptyText()
{
    QWidget window;
    NoticeBar bar(&window);
    window.show();
    bar.showNotice(QStyle::SP_MessageBoxWarning, QStringLiteral("Gone"), QString());
    QVERIFY(!bar.findChild<QLabel*>(QStringLiteral("noticeText"))->isVisible());
}

void tst_NoticeBar::showsPlainText()
{
    NoticeBar bar;
    bar.showNotice(QStyle::SP_MessageBoxWarning, QStringLiteral("<b>x</b>"),
                   QStringLiteral("<i>y</i>"));
    for (const char* name : {"noticeHeading", "noticeText"})
        QCOMPARE(bar.findChild<QLabel*>(QLatin1String(name))->textFormat(), Qt::PlainText);
}

QTEST_MAIN(tst_NoticeBar)
#include "tst_notice_bar.moc"
