#include <trovek-ui/spin_box.h>

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

bool wheelUp(QWidget* widget)
{
    const QPointF middle = widget->rect().center();
    QWheelEvent event(middle, widget->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &event);
    return event.isAccepted();
}

} // namespace

class tst_SpinBox : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void arrowsTriggerTheStepTaken_data();
    void arrowsTriggerTheStepTaken();
    void stepIsTakenBeforeItIsTriggered();
    void stepAtALimitIsTriggeredAllTheSame();
    void enterTriggersTheTypedValue_data();
    void enterTriggersTheTypedValue();
    void enterTriggersBeforeTheValueChanges();
    void typingAndSetValueTriggerNothing();
    void mayBeDeletedByItsReceiver();
    void backspaceLeavesTheSuffix();
    void backspaceDeletesADigitElsewhere();
    void wheelStepsAtFirst();
    void wheelIsIgnoredWithoutFocusOnScroll();
    void focusPolicyFollowsFocusOnScroll();
    void takesNoSeparatorsInAnyLocale_data();
    void takesNoSeparatorsInAnyLocale();
    void prefixSuffixAndSpecialTextMayHaveSeparators();

private:
    std::unique_ptr<SpinBox> m_box;
};

void tst_SpinBox::init()
{
    m_box = std::make_unique<SpinBox>();
    m_box->setRange(-1000, 100000);
    m_box->show();
    QApplication::setActiveWindow(m_box.get());
    m_box->setFocus();
    QTRY_VERIFY(m_box->hasFocus());
}

void tst_SpinBox::cleanup()
{
    m_box.reset();
}

void tst_SpinBox::arrowsTriggerTheStepTaken_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("expected");

    QTest::newRow("up") << int(Qt::Key_Up) << 5;
    QTest::newRow("down") << int(Qt::Key_Down) << -5;
    QTest::newRow("page up") << int(Qt::Key_PageUp) << 50;
    QTest::newRow("page down") << int(Qt::Key_PageDown) << -50;
}

void tst_SpinBox::arrowsTriggerTheStepTaken()
{
    QFETCH(int, key);
    QFETCH(int, expected);
    m_box->setSingleStep(5);
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    QTest::keyClick(m_box.get(), static_cast<Qt::Key>(key));
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(triggered.at(0).at(0).toInt(), expected);
    QCOMPARE(m_box->value(), expected);
}

void tst_SpinBox::stepIsTakenBeforeItIsTriggered()
{
    int valueDuring = -1;
    connect(m_box.get(), &SpinBox::triggered, this, [&] { valueDuring = m_box->value(); });
    m_box->stepBy(3);
    QCOMPARE(valueDuring, 3);
}

void tst_SpinBox::stepAtALimitIsTriggeredAllTheSame()
{
    m_box->setMaximum(0);
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    m_box->stepBy(2);
    QCOMPARE(m_box->value(), 0);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(triggered.at(0).at(0).toInt(), 2);
}

void tst_SpinBox::enterTriggersTheTypedValue_data()
{
    QTest::addColumn<int>("key");

    QTest::newRow("return") << int(Qt::Key_Return);
    QTest::newRow("enter") << int(Qt::Key_Enter);
}

void tst_SpinBox::enterTriggersTheTypedValue()
{
    QFETCH(int, key);
    m_box->setSuffix(text(" mm"));
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("12"));
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    QTest::keyClick(m_box.get(), static_cast<Qt::Key>(key));
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(triggered.at(0).at(0).toInt(), 12);
    QCOMPARE(m_box->value(), 12);
}

void tst_SpinBox::enterTriggersBeforeTheValueChanges()
{
    m_box->setKeyboardTracking(false);
    QStringList order;
    connect(m_box.get(), &SpinBox::triggered, this,
            [&](int value) { order += text("triggered ") + QString::number(value); });
    connect(m_box.get(), qOverload<int>(&QSpinBox::valueChanged), this,
            [&] { order += text("changed"); });
    connect(m_box.get(), &QSpinBox::editingFinished, this, [&] { order += text("finished"); });
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("12"));
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    const QStringList expected{text("triggered 12"), text("changed"), text("finished")};
    QCOMPARE(order, expected);
}

void tst_SpinBox::typingAndSetValueTriggerNothing()
{
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("12"));
    m_box->setValue(7);
    QCOMPARE(triggered.count(), 0);
}

void tst_SpinBox::mayBeDeletedByItsReceiver()
{
    connect(m_box.get(), &SpinBox::triggered, this, [this] { m_box.reset(); });
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(m_box.get(), &enter);
    QVERIFY(!m_box);
}

void tst_SpinBox::backspaceLeavesTheSuffix()
{
    m_box->setSuffix(text(" mm"));
    m_box->setValue(42);
    edit(m_box.get())->setCursorPosition(4);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QCOMPARE(m_box->text(), text("42 mm"));
    QCOMPARE(edit(m_box.get())->cursorPosition(), 2);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QCOMPARE(m_box->text(), text("4 mm"));
    QCOMPARE(edit(m_box.get())->cursorPosition(), 1);
}

void tst_SpinBox::backspaceDeletesADigitElsewhere()
{
    m_box->setValue(42);
    edit(m_box.get())->setCursorPosition(2);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QCOMPARE(m_box->text(), text("4"));
    QCOMPARE(edit(m_box.get())->cursorPosition(), 1);
}

void tst_SpinBox::wheelStepsAtFirst()
{
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    QVERIFY(wheelUp(m_box.get()));
    QCOMPARE(m_box->value(), 1);
    QCOMPARE(triggered.count(), 1);
}

void tst_SpinBox::wheelIsIgnoredWithoutFocusOnScroll()
{
    m_box->setFocusOnScroll(false);
    QSignalSpy triggered(m_box.get(), &SpinBox::triggered);
    QVERIFY(!wheelUp(m_box.get()));
    QCOMPARE(m_box->value(), 0);
    QCOMPARE(triggered.count(), 0);

    m_box->setFocusOnScroll(true);
    QVERIFY(wheelUp(m_box.get()));
    QCOMPARE(m_box->value(), 1);
}

void tst_SpinBox::focusPolicyFollowsFocusOnScroll()
{
    QCOMPARE(m_box->focusPolicy(), Qt::WheelFocus);
    m_box->setFocusOnScroll(false);
    QCOMPARE(m_box->focusPolicy(), Qt::StrongFocus);
    m_box->setFocusOnScroll(true);
    QCOMPARE(m_box->focusPolicy(), Qt::WheelFocus);
}

void tst_SpinBox::takesNoSeparatorsInAnyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");

    for (const char* locale : {"C", "en_US", "de_DE", "fr_FR", "de_CH", "ar_EG"}) {
        QTest::newRow(qPrintable(text(locale) + text(", point")))
            << text(locale) << text("1.000") << text("1000");
        QTest::newRow(qPrintable(text(locale) + text(", comma")))
            << text(locale) << text("1,5") << text("15");
    }
    QTest::newRow("de_DE, blank") << text("de_DE") << text("1 5") << text("15");
    QTest::newRow("de_CH, apostrophe") << text("de_CH") << text("1’500") << text("1500");
    QTest::newRow("fr_FR, blank") << text("fr_FR") << text("1 500") << text("1500");
    QTest::newRow("fr_FR, narrow blank")
        << text("fr_FR") << QString(text("1") + QChar(0x202f) + text("500")) << text("1500");
}

void tst_SpinBox::takesNoSeparatorsInAnyLocale()
{
    QFETCH(QString, locale);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    m_box->setLocale(QLocale(locale));
    m_box->setRange(0, 99999);

    // Whole texts are refused: a thousand, or a half, is never read into them.
    int position = typed.size();
    QString whole = typed;
    QCOMPARE(m_box->validate(whole, position), QValidator::Invalid);

    // The single sign is refused when it is typed.
    m_box->selectAll();
    for (const QChar character : qAsConst(typed))
        edit(m_box.get())->insert(character);
    QCOMPARE(m_box->text(), shown);
}

void tst_SpinBox::prefixSuffixAndSpecialTextMayHaveSeparators()
{
    m_box->setPrefix(text("approx. "));
    m_box->setSuffix(text(" mm."));
    m_box->setRange(0, 100);
    m_box->setValue(5);
    m_box->selectAll();
    QTest::keyClicks(m_box.get(), text("12"));
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QCOMPARE(m_box->value(), 12);

    m_box->setSpecialValueText(text("n. a., none"));
    m_box->setValue(0);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QCOMPARE(m_box->value(), 0);
    QCOMPARE(m_box->text(), text("n. a., none"));
}

QTEST_MAIN(tst_SpinBox)
#include "tst_spin_box.moc"
