#include <trovek-ui/double_spin_box.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <memory>

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QLineEdit* edit(QWidget* box)
{
    return box->findChild<QLineEdit*>();
}

} // namespace

class tst_DoubleSpinBox : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void arrowsTriggerTheStepTaken();
    void enterTriggersTheTypedValue();
    void backspaceLeavesTheSuffix();
    void wheelIsIgnoredWithoutFocusOnScroll();
    void pointAndCommaAreDecimalSignsInEveryLocale_data();
    void pointAndCommaAreDecimalSignsInEveryLocale();
    void takesNoGroupSeparators_data();
    void takesNoGroupSeparators();
    void showsNoGroupSeparators();
    void takesOnlyOneDecimalSign();
    void prefixSuffixAndSpecialTextStayAsTheyAre();
    void readsATextThatWasNotTyped();

private:
    std::unique_ptr<DoubleSpinBox> m_box;
};

void tst_DoubleSpinBox::init()
{
    m_box = std::make_unique<DoubleSpinBox>();
    m_box->setRange(-1000, 100000);
    m_box->show();
    QApplication::setActiveWindow(m_box.get());
    m_box->setFocus();
    QTRY_VERIFY(m_box->hasFocus());
}

void tst_DoubleSpinBox::cleanup()
{
    m_box.reset();
}

void tst_DoubleSpinBox::arrowsTriggerTheStepTaken()
{
    m_box->setSingleStep(0.5);
    QSignalSpy triggered(m_box.get(), &DoubleSpinBox::triggered);
    QTest::keyClick(m_box.get(), Qt::Key_Up);
    QTest::keyClick(m_box.get(), Qt::Key_PageDown);
    QCOMPARE(triggered.count(), 2);
    QCOMPARE(triggered.at(0).at(0).toDouble(), 0.5);
    QCOMPARE(triggered.at(1).at(0).toDouble(), -5.0);
    QCOMPARE(m_box->value(), -4.5);
}

void tst_DoubleSpinBox::enterTriggersTheTypedValue()
{
    m_box->setSuffix(text(" mm"));
    // The value is still 0 when the key comes.
    m_box->setKeyboardTracking(false);
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("12.25"));
    QSignalSpy triggered(m_box.get(), &DoubleSpinBox::triggered);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QTest::keyClick(m_box.get(), Qt::Key_Enter);
    QCOMPARE(triggered.count(), 2);
    QCOMPARE(triggered.at(0).at(0).toDouble(), 12.25);
    QCOMPARE(triggered.at(1).at(0).toDouble(), 12.25);
    QCOMPARE(m_box->value(), 12.25);
}

void tst_DoubleSpinBox::backspaceLeavesTheSuffix()
{
    m_box->setSuffix(text(" mm"));
    m_box->setValue(42);
    const int end = m_box->text().size();
    edit(m_box.get())->setCursorPosition(end - 1);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QCOMPARE(m_box->text(), text("42.00 mm"));
    QCOMPARE(edit(m_box.get())->cursorPosition(), end - 3);
}

void tst_DoubleSpinBox::wheelIsIgnoredWithoutFocusOnScroll()
{
    const auto wheel = [this] {
        QWheelEvent event(QPointF(3, 3), m_box->mapToGlobal(QPoint(3, 3)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_box.get(), &event);
        return event.isAccepted();
    };
    QCOMPARE(m_box->focusPolicy(), Qt::WheelFocus);
    m_box->setFocusOnScroll(false);
    QCOMPARE(m_box->focusPolicy(), Qt::StrongFocus);
    QVERIFY(!wheel());
    QCOMPARE(m_box->value(), 0.0);
    m_box->setFocusOnScroll(true);
    QCOMPARE(m_box->focusPolicy(), Qt::WheelFocus);
    QVERIFY(wheel());
    QCOMPARE(m_box->value(), 1.0);
}

void tst_DoubleSpinBox::pointAndCommaAreDecimalSignsInEveryLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("expected");

    for (const char* locale : {"C", "en_US", "de_DE", "fr_FR", "de_CH", "sv_SE", "ar_EG"}) {
        for (const char* typed : {"0.16", "0,16"})
            QTest::newRow(qPrintable(text(locale) + text(" ") + text(typed)))
                << text(locale) << text(typed) << 0.16;
        for (const char* typed : {"1.000", "1,000"})
            QTest::newRow(qPrintable(text(locale) + text(" ") + text(typed)))
                << text(locale) << text(typed) << 1.0;
        QTest::newRow(qPrintable(text(locale) + text(" negative")))
            << text(locale) << text("-2,5") << -2.5;
    }
}

void tst_DoubleSpinBox::pointAndCommaAreDecimalSignsInEveryLocale()
{
    QFETCH(QString, locale);
    QFETCH(QString, typed);
    QFETCH(double, expected);
    m_box->setDecimals(3);
    m_box->setLocale(QLocale(locale));
    m_box->setValue(7);
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), typed);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QCOMPARE(m_box->value(), expected);
    QCOMPARE(m_box->text(), QLocale(locale).toString(expected, 'f', 3));
}

void tst_DoubleSpinBox::takesNoGroupSeparators_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("typed");

    QTest::newRow("English") << text("en_US") << text("1,000.5");
    QTest::newRow("German") << text("de_DE") << text("1.000,5");
    QTest::newRow("Swiss") << text("de_CH") << text("1’000.5");
    QTest::newRow("French") << text("fr_FR") << QString(text("1") + QChar(0x202f) + text("000,5"));
    QTest::newRow("French, by a blank") << text("fr_FR") << text("1 000,5");
    QTest::newRow("a blank") << text("C") << text("1 000");
    QTest::newRow("two groups") << text("de_DE") << text("1.000.000");
}

void tst_DoubleSpinBox::takesNoGroupSeparators()
{
    QFETCH(QString, locale);
    QFETCH(QString, typed);
    m_box->setLocale(QLocale(locale));
    int position = typed.size();
    QString whole = typed;
    QCOMPARE(m_box->validate(whole, position), QValidator::Invalid);
    QCOMPARE(position, typed.size());
}

void tst_DoubleSpinBox::showsNoGroupSeparators()
{
    m_box->setLocale(QLocale(text("de_DE")));
    m_box->setValue(12345.5);
    QCOMPARE(m_box->text(), text("12345,50"));
}

void tst_DoubleSpinBox::takesOnlyOneDecimalSign()
{
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("1.2,3"));
    QCOMPARE(m_box->text(), text("1.23"));
}

void tst_DoubleSpinBox::prefixSuffixAndSpecialTextStayAsTheyAre()
{
    m_box->setLocale(QLocale(text("de_DE")));
    m_box->setPrefix(text("approx. "));
    m_box->setSuffix(text(" mm."));
    m_box->setRange(0, 100);
    m_box->setSpecialValueText(text("n. a."));
    QCOMPARE(m_box->text(), text("n. a."));
    QString special = text("n. a.");
    int position = 0;
    m_box->validate(special, position);
    QVERIFY2(special.contains(text("n. a.")), qPrintable(special));

    m_box->setValue(5);
    QCOMPARE(m_box->text(), text("approx. 5,00 mm."));
    QString typed = text("approx. 0.25 mm.");
    position = 12;
    QCOMPARE(m_box->validate(typed, position), QValidator::Acceptable);
    QCOMPARE(typed, text("approx. 0,25 mm."));
}

void tst_DoubleSpinBox::readsATextThatWasNotTyped()
{
    m_box->setLocale(QLocale(text("de_DE")));
    QCOMPARE(m_box->valueFromText(text("0.16")), 0.16);
    QCOMPARE(m_box->valueFromText(text("0,16")), 0.16);
}

QTEST_MAIN(tst_DoubleSpinBox)
#include "tst_double_spin_box.moc"
