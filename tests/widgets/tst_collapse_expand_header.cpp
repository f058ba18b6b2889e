#include <trovek-ui/collapse_expand_header.h>

#include <QSignalSpy>
#include <QTest>

using trovek::CollapseExpandHeader;

class tst_CollapseExpandHeader : public QObject
{
    Q_OBJECT

private slots:
    void isClosedAtFirst();
    void aClickOpensAndAnotherCloses();
};

void tst_CollapseExpandHeader::isClosedAtFirst()
{
    const CollapseExpandHeader header(QStringLiteral("Advanced"));
    QCOMPARE(header.text(), QStringLiteral("Advanced"));
    QVERIFY(header.isCheckable());
    QVERIFY(!header.isChecked());
    QVERIFY(header.autoRaise());
    QCOMPARE(header.toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
    QCOMPARE(header.arrowType(), Qt::RightArrow);
}

void tst_CollapseExpandHeader::aClickOpensAndAnotherCloses()
{
    CollapseExpandHeader header(QStringLiteral("Advanced"));
    header.show();
    QSignalSpy toggled(&header, &QToolButton::toggled);
    QTest::mouseClick(&header, Qt::LeftButton);
    QCOMPARE(header.arrowType(), Qt::DownArrow);
    QTest::keyClick(&header, Qt::Key_Space);
    QCOMPARE(header.arrowType(), Qt::RightArrow);
    QCOMPARE(toggled.count(), 2);
    QCOMPARE(toggled.at(0).at(0).toBool(), true);
    QCOMPARE(toggled.at(1).at(0).toBool(), false);
}

QTEST_MAIN(tst_CollapseExpandHeader)
#include "tst_collapse_expand_header.moc"
