#include <trovek-ui/push_button.h>

#include <QTest>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QIcon icon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::red);
    return QIcon(pixmap);
}

} // namespace

class tst_PushButton : public QObject
{
    Q_OBJECT

private slots:
    void isAnOrdinaryButtonAtFirst();
    void tightButtonIsAsWideAsItsText_data();
    void tightButtonIsAsWideAsItsText();
    void isOrdinaryAgainAfterwards();
};

void tst_PushButton::isAnOrdinaryButtonAtFirst()
{
    const PushButton withIcon(icon(), text("&Save"));
    const PushButton withText(text("&Save"));
    const PushButton empty;
    QCOMPARE(withIcon.text(), text("&Save"));
    QVERIFY(!withIcon.icon().isNull());
    QCOMPARE(withIcon.sizeHint(), QPushButton(icon(), text("&Save")).sizeHint());
    QCOMPARE(withText.sizeHint(), QPushButton(text("&Save")).sizeHint());
    QCOMPARE(empty.sizeHint(), QPushButton().sizeHint());
}

void tst_PushButton::tightButtonIsAsWideAsItsText_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("hasIcon");

    QTest::newRow("mnemonic") << text("&Save") << text("Save") << false;
    QTest::newRow("ampersand") << text("A && B") << text("A & B") << false;
    QTest::newRow("icon not counted") << text("&Save") << text("Save") << true;
    QTest::newRow("long") << text("Save with all its parts") << text("Save with all its parts")
                          << false;
    QTest::newRow("empty") << QString() << QString() << false;
}

void tst_PushButton::tightButtonIsAsWideAsItsText()
{
    QFETCH(QString, label);
    QFETCH(QString, shown);
    QFETCH(bool, hasIcon);
    PushButton button(hasIcon ? icon() : QIcon(), label);
    const int height = button.sizeHint().height();
    button.setTight(true);
    QCOMPARE(button.sizeHint(), QSize(button.fontMetrics().size(0, shown).width() + 24, height));
}

void tst_PushButton::isOrdinaryAgainAfterwards()
{
    PushButton button(text("OK"));
    const QSize ordinary = button.sizeHint();
    button.setTight(true);
    QVERIFY(button.sizeHint() != ordinary);
    button.setTight(false);
    QCOMPARE(button.sizeHint(), ordinary);
}

QTEST_MAIN(tst_PushButton)
#include "tst_push_button.moc"
