#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/json_widgets.h>

#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <cmath>
#include <limits>
#include <memory>

using namespace trovek;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

/** Wide enough for every kind, with two decimals. */
JsonSpinBox makeSpinBox(Json::Value* value)
{
    return JsonSpinBox(value, {-1e18, 1e18}, 1, 2, QString());
}

template <typename Widget>
void giveFocus(Widget& widget)
{
    widget.show();
    QApplication::setActiveWindow(&widget);
    widget.setFocus();
    QTRY_VERIFY(widget.hasFocus());
}

/** Types over what is selected, also letters that no plain keyboard has. */
void typeOver(QWidget& widget, const char* keys)
{
    QTest::keyClick(&widget, Qt::Key_A, Qt::ControlModifier);
    for (const QChar key : text(keys))
        QTest::sendKeyEvent(QTest::Click, &widget, Qt::Key_unknown, QString(key), Qt::NoModifier);
}

/** The one error line, with its unit and the end of its function's name before the arguments. */
void verifyLine(const TestLog& log, const std::string& message, const std::string& function)
{
    const std::vector<LogEntry> entries = log.sink().entries();
    QCOMPARE(int(entries.size()), 1);
    QCOMPARE(entries[0].severity, 0);
    QCOMPARE(entries[0].file, std::string("src\\widgets\\json_widgets"));
    QCOMPARE(entries[0].message, message);
    QVERIFY2(entries[0].function.find(function + "(") != std::string::npos,
             entries[0].function.c_str());
}

} // namespace

Q_DECLARE_METATYPE(Json::Value)

class tst_JsonWidgets : public QObject
{
    Q_OBJECT

private slots:
    void refusesNull();
    void refusesOtherTypes_data();
    void refusesOtherTypes();

    void checkBoxShowsItsValue_data();
    void checkBoxShowsItsValue();
    void checkBoxWritesIntegers();
    void checkBoxWritesBooleans();
    void checkBoxResetKeepsTheValue_data();
    void checkBoxResetKeepsTheValue();
    void checkBoxResetTellsOnlyOfAChange();
    void checkBoxLogsAValueOfAnotherType();

    void lineEditShowsUtf8();
    void lineEditWritesWhatIsTyped();
    void lineEditIsNotWrittenBySetText();
    void lineEditEndsAtAZeroCharacter();
    void lineEditResetKeepsTheValue();
    void lineEditLogsAValueOfAnotherType();

    void spinBoxIsSetUp();
    void spinBoxLeavesTheWheelAlone();
    void spinBoxShowsItsValue_data();
    void spinBoxShowsItsValue();
    void spinBoxWritesInItsType_data();
    void spinBoxWritesInItsType();
    void spinBoxWritesWhatIsTyped();
    void spinBoxShowsTheNearestThatWasStored_data();
    void spinBoxShowsTheNearestThatWasStored();
    void spinBoxTakesAFractionWhileItIsTyped();
    void spinBoxKeepsAnIntegerThatIsNotANumber_data();
    void spinBoxKeepsAnIntegerThatIsNotANumber();
    void spinBoxResetTellsTwiceOfAChangeAndElseOnce();
    void anyEditReplacesWhatIsNotANumber();
    void spinBoxResetKeepsTheValue_data();
    void spinBoxResetKeepsTheValue();
    void spinBoxKeepsItsDigitsWhileTheUserOnlyLooks();
    void spinBoxLogsAValueOfAnotherType();
    void anEditDuringTheSignalIsWritten();
    void aBlockedResetDoesNotSwallowTheNextEdit();
};

void tst_JsonWidgets::refusesNull()
{
    TestLog log;
    QCOMPARE(thrownText([] { JsonCheckBox box(nullptr); }),
             std::string("JsonCheckBox given null JSON"));
    QCOMPARE(thrownText([] { JsonLineEdit edit(nullptr); }),
             std::string("JsonLineEdit given null JSON"));
    QCOMPARE(thrownText([] { makeSpinBox(nullptr); }), std::string("JsonSpinBox given null JSON"));
    QVERIFY(log.messages().empty());
}

void tst_JsonWidgets::refusesOtherTypes_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<bool>("forCheckBox");
    QTest::addColumn<bool>("forLineEdit");
    QTest::addColumn<bool>("forSpinBox");

    QTest::newRow("null") << Json::Value() << false << false << false;
    QTest::newRow("true") << Json::Value(true) << true << false << false;
    QTest::newRow("an integer") << Json::Value(1) << true << false << true;
    QTest::newRow("an integer of 64 bits")
        << Json::Value(Json::Int64(1) << 40) << true << false << true;
    QTest::newRow("an unsigned integer") << Json::Value(1U) << false << false << true;
    QTest::newRow("a real that is whole") << Json::Value(1.0) << false << false << true;
    QTest::newRow("a text") << Json::Value("1") << false << true << false;
    QTest::newRow("an array") << Json::Value(Json::arrayValue) << false << false << false;
    QTest::newRow("an object") << Json::Value(Json::objectValue) << false << false << false;
}

void tst_JsonWidgets::refusesOtherTypes()
{
    TestLog log;
    QFETCH(Json::Value, value);
    QFETCH(bool, forCheckBox);
    QFETCH(bool, forLineEdit);
    QFETCH(bool, forSpinBox);
    const std::string nothing = "nothing thrown";
    const Json::Value original = value;

    QCOMPARE(thrownText([&] { JsonCheckBox box(&value); }),
             forCheckBox ? nothing : "JsonCheckBox requires int or bool input");
    QCOMPARE(thrownText([&] { JsonLineEdit edit(&value); }),
             forLineEdit ? nothing : "JsonLineEdit requires string input");
    QCOMPARE(thrownText([&] { makeSpinBox(&value); }),
             forSpinBox ? nothing : "JsonSpinBox requires numeric input");

    QVERIFY(value == original);
    QVERIFY(log.messages().empty());
}

void tst_JsonWidgets::checkBoxShowsItsValue_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<bool>("checked");

    QTest::newRow("true") << Json::Value(true) << true;
    QTest::newRow("false") << Json::Value(false) << false;
    QTest::newRow("0") << Json::Value(0) << false;
    QTest::newRow("1") << Json::Value(1) << true;
    QTest::newRow("5") << Json::Value(5) << true;
    QTest::newRow("-1") << Json::Value(-1) << true;
    QTest::newRow("more than 32 bits, the lower of them 0")
        << Json::Value(Json::Int64(1) << 32) << true;
}

void tst_JsonWidgets::checkBoxShowsItsValue()
{
    QFETCH(Json::Value, value);
    QFETCH(bool, checked);
    const Json::Value original = value;

    const JsonCheckBox box(&value);

    QCOMPARE(box.text(), text("Enabled"));
    QCOMPARE(box.isChecked(), checked);
    QVERIFY(value == original);
}

void tst_JsonWidgets::checkBoxWritesIntegers()
{
    Json::Value value(5);
    JsonCheckBox box(&value);
    giveFocus(box);
    QSignalSpy updated(&box, &JsonCheckBox::updated);
    std::vector<Json::Value> during;
    connect(&box, &JsonCheckBox::updated, this, [&] { during.push_back(value); });

    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box.height() / 2));
    QVERIFY(value == Json::Value(0));
    QTest::keyClick(&box, Qt::Key_Space);
    QVERIFY(value == Json::Value(1));
    QCOMPARE(value.type(), Json::intValue);
    QCOMPARE(updated.count(), 2);
    QVERIFY(during == (std::vector<Json::Value>{0, 1}));
}

void tst_JsonWidgets::checkBoxWritesBooleans()
{
    Json::Value value(false);
    JsonCheckBox box(&value);
    giveFocus(box);
    QSignalSpy updated(&box, &JsonCheckBox::updated);

    QTest::keyClick(&box, Qt::Key_Space);
    QVERIFY(value == Json::Value(true));
    QTest::keyClick(&box, Qt::Key_Space);
    QVERIFY(value == Json::Value(false));
    QCOMPARE(updated.count(), 2);
}

void tst_JsonWidgets::checkBoxResetKeepsTheValue_data()
{
    QTest::addColumn<Json::Value>("first");
    QTest::addColumn<Json::Value>("second");
    QTest::addColumn<bool>("checked");

    QTest::newRow("0, then 5") << Json::Value(0) << Json::Value(5) << true;
    QTest::newRow("5, then 0") << Json::Value(5) << Json::Value(0) << false;
    QTest::newRow("5, then -7") << Json::Value(5) << Json::Value(-7) << true;
    QTest::newRow("false, then true") << Json::Value(false) << Json::Value(true) << true;
    QTest::newRow("false, then 5") << Json::Value(false) << Json::Value(5) << true;
    QTest::newRow("0, then true") << Json::Value(0) << Json::Value(true) << true;
}

void tst_JsonWidgets::checkBoxResetKeepsTheValue()
{
    QFETCH(Json::Value, first);
    QFETCH(Json::Value, second);
    QFETCH(bool, checked);
    Json::Value value = first;
    JsonCheckBox box(&value);

    value = second;
    box.reset();

    QCOMPARE(box.isChecked(), checked);
    QVERIFY(value == second);
}

void tst_JsonWidgets::checkBoxResetTellsOnlyOfAChange()
{
    Json::Value value(1);
    JsonCheckBox box(&value);
    QSignalSpy updated(&box, &JsonCheckBox::updated);

    box.reset();
    value = 5;
    box.reset();
    QCOMPARE(updated.count(), 0);
    value = 0;
    box.reset();
    QCOMPARE(updated.count(), 1);
}

void tst_JsonWidgets::checkBoxLogsAValueOfAnotherType()
{
    TestLog log;
    Json::Value value(1);
    JsonCheckBox box(&value);
    QSignalSpy updated(&box, &JsonCheckBox::updated);
    const std::string message = "JsonCheckBox requires int or bool input";

    value = 0.0;
    box.reset();
    verifyLine(log, message, "JsonCheckBox::reset");
    QVERIFY(box.isChecked());
    log.expectError(message);
    log.verify();

    box.click();
    verifyLine(log, message, "JsonCheckBox::slotToggled");
    QVERIFY(value == Json::Value(0.0));
    QCOMPARE(updated.count(), 0);
    log.expectError(message);
}

void tst_JsonWidgets::lineEditShowsUtf8()
{
    Json::Value value("Прü\xc3 3");
    const JsonLineEdit edit(&value);
    QCOMPARE(edit.text(), text("Прü\xc3 3"));
}

void tst_JsonWidgets::lineEditWritesWhatIsTyped()
{
    Json::Value value("old");
    JsonLineEdit edit(&value);
    giveFocus(edit);
    QSignalSpy updated(&edit, &JsonLineEdit::updated);

    typeOver(edit, "né");
    QVERIFY(value == Json::Value("né"));
    QCOMPARE(updated.count(), 2);
    QTest::keyClick(&edit, Qt::Key_Return);
    QCOMPARE(updated.count(), 2);
}

void tst_JsonWidgets::lineEditIsNotWrittenBySetText()
{
    Json::Value value("old");
    JsonLineEdit edit(&value);
    QSignalSpy updated(&edit, &JsonLineEdit::updated);

    edit.setText(text("new"));

    QVERIFY(value == Json::Value("old"));
    QCOMPARE(updated.count(), 0);
}

void tst_JsonWidgets::lineEditEndsAtAZeroCharacter()
{
    Json::Value value("old");
    JsonLineEdit edit(&value);
    QSignalSpy updated(&edit, &JsonLineEdit::updated);

    edit.slotTextEdited(text("before") + QChar(0) + text("after"));
    QVERIFY(value == Json::Value("before"));
    edit.slotTextEdited(QString(QChar(0)));
    QVERIFY(value == Json::Value(""));
    QCOMPARE(updated.count(), 2);
}

void tst_JsonWidgets::lineEditResetKeepsTheValue()
{
    Json::Value value("first");
    JsonLineEdit edit(&value);
    edit.setMaxLength(6);
    QSignalSpy updated(&edit, &JsonLineEdit::updated);

    const Json::Value longText("longer than there is room for\xff");
    value = longText;
    edit.reset();

    QCOMPARE(edit.text(), text("longer"));
    QVERIFY(value == longText);
    QCOMPARE(updated.count(), 0);
}

void tst_JsonWidgets::lineEditLogsAValueOfAnotherType()
{
    TestLog log;
    Json::Value value("text");
    JsonLineEdit edit(&value);
    giveFocus(edit);
    QSignalSpy updated(&edit, &JsonLineEdit::updated);
    const std::string message = "JsonLineEdit requires string input";

    value = 7;
    edit.reset();
    verifyLine(log, message, "JsonLineEdit::reset");
    QCOMPARE(edit.text(), text("text"));
    log.expectError(message);
    log.verify();

    QTest::keyClicks(&edit, text("x"));
    verifyLine(log, message, "JsonLineEdit::slotTextEdited");
    QVERIFY(value == Json::Value(7));
    QCOMPARE(updated.count(), 0);
    log.expectError(message);
}

void tst_JsonWidgets::spinBoxIsSetUp()
{
    Json::Value value(7);
    const JsonSpinBox box(&value, {-3, 20.5}, 0.25, 3, text(" mm"));

    QCOMPARE(box.minimum(), -3.0);
    QCOMPARE(box.maximum(), 20.5);
    QCOMPARE(box.singleStep(), 0.25);
    QCOMPARE(box.decimals(), 3);
    QCOMPARE(box.text(), text("7.000 mm"));
    QCOMPARE(box.focusPolicy(), Qt::StrongFocus);
}

void tst_JsonWidgets::spinBoxLeavesTheWheelAlone()
{
    Json::Value value(7);
    JsonSpinBox box = makeSpinBox(&value);
    giveFocus(box);
    QWheelEvent event(QPointF(3, 3), box.mapToGlobal(QPoint(3, 3)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&box, &event);
    QVERIFY(!event.isAccepted());
    QVERIFY(value == Json::Value(7));
}

void tst_JsonWidgets::spinBoxShowsItsValue_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<double>("shown");

    QTest::newRow("an integer") << Json::Value(-7) << -7.0;
    QTest::newRow("a large unsigned integer") << Json::Value(3000000000U) << 3e9;
    QTest::newRow("a real") << Json::Value(2.25) << 2.25;
    QTest::newRow("a real with more digits") << Json::Value(0.126) << 0.13;
    QTest::newRow("64 bits above the range")
        << Json::Value(std::numeric_limits<Json::UInt64>::max()) << 1e18;
    QTest::newRow("64 bits below the range")
        << Json::Value(std::numeric_limits<Json::Int64>::min()) << -1e18;
    QTest::newRow("the largest real") << Json::Value(std::numeric_limits<double>::max()) << 1e18;
    QTest::newRow("the smallest real") << Json::Value(5e-324) << 0.0;
    QTest::newRow("infinity") << Json::Value(kInfinity) << 1e18;
    QTest::newRow("minus infinity") << Json::Value(-kInfinity) << -1e18;
    QTest::newRow("not a number") << Json::Value(kNan) << 0.0;
}

void tst_JsonWidgets::spinBoxShowsItsValue()
{
    QFETCH(Json::Value, value);
    QFETCH(double, shown);
    const JsonSpinBox box = makeSpinBox(&value);
    QCOMPARE(box.value(), shown);
}

void tst_JsonWidgets::spinBoxWritesInItsType_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<double>("number");
    QTest::addColumn<Json::Value>("stored");

    const Json::Value integer(7);
    QTest::newRow("integer: 12") << integer << 12.0 << Json::Value(12);
    QTest::newRow("integer: 12.99") << integer << 12.99 << Json::Value(12);
    QTest::newRow("integer: -12.99") << integer << -12.99 << Json::Value(-12);
    QTest::newRow("integer: -0.5") << integer << -0.5 << Json::Value(0);
    QTest::newRow("integer: the largest of 32 bits")
        << integer << 2147483647.0 << Json::Value(2147483647);
    QTest::newRow("integer: the largest and a fraction")
        << integer << 2147483647.75 << Json::Value(2147483647);
    QTest::newRow("integer: one above") << integer << 2147483648.0 << Json::Value(2147483647);
    QTest::newRow("integer: far above") << integer << 1e18 << Json::Value(2147483647);
    QTest::newRow("integer: infinity") << integer << kInfinity << Json::Value(2147483647);
    QTest::newRow("integer: the smallest of 32 bits")
        << integer << -2147483648.0 << Json::Value(Json::Int(-2147483647 - 1));
    QTest::newRow("integer: the smallest and a fraction")
        << integer << -2147483648.75 << Json::Value(Json::Int(-2147483647 - 1));
    QTest::newRow("integer: one below")
        << integer << -2147483649.0 << Json::Value(Json::Int(-2147483647 - 1));
    QTest::newRow("integer: minus infinity")
        << integer << -kInfinity << Json::Value(Json::Int(-2147483647 - 1));
    QTest::newRow("integer of 64 bits: 5000000000")
        << Json::Value(Json::Int64(1) << 40) << 5000000000.0 << Json::Value(2147483647);

    const Json::Value natural(7U);
    QTest::newRow("unsigned: 12.99") << natural << 12.99 << Json::Value(12U);
    QTest::newRow("unsigned: 0") << natural << 0.0 << Json::Value(0U);
    QTest::newRow("unsigned: -0.5") << natural << -0.5 << Json::Value(0U);
    QTest::newRow("unsigned: -1") << natural << -1.0 << Json::Value(0U);
    QTest::newRow("unsigned: minus infinity") << natural << -kInfinity << Json::Value(0U);
    QTest::newRow("unsigned: 2 to the 32nd")
        << natural << 4294967296.0 << Json::Value(Json::UInt64(4294967296));
    QTest::newRow("unsigned: 2 to the 63rd")
        << natural << 9223372036854775808.0 << Json::Value(Json::UInt64(1) << 63);
    QTest::newRow("unsigned: 2 to the 64th")
        << natural << 18446744073709551616.0
        << Json::Value(std::numeric_limits<Json::UInt64>::max());
    QTest::newRow("unsigned: infinity")
        << natural << kInfinity << Json::Value(std::numeric_limits<Json::UInt64>::max());

    const Json::Value real(7.0);
    QTest::newRow("real: 12.99") << real << 12.99 << Json::Value(12.99);
    QTest::newRow("real: 12") << real << 12.0 << Json::Value(12.0);
    QTest::newRow("real: 1e300") << real << 1e300 << Json::Value(1e300);
}

void tst_JsonWidgets::spinBoxWritesInItsType()
{
    QFETCH(Json::Value, value);
    QFETCH(double, number);
    QFETCH(Json::Value, stored);
    const Json::ValueType type = value.type();
    JsonSpinBox box(&value, {-1e300, 1e300}, 1, 2, QString());
    QSignalSpy updated(&box, &JsonSpinBox::updated);

    box.slotValueChanged(number);

    QVERIFY2(value == stored, value.toStyledString().c_str());
    QCOMPARE(value.type(), type);
    QVERIFY(updated.count() >= 1);
}

void tst_JsonWidgets::spinBoxWritesWhatIsTyped()
{
    Json::Value whole(7);
    JsonSpinBox box(&whole, {0, 255}, 1, 0, QString());
    giveFocus(box);
    QSignalSpy updated(&box, &JsonSpinBox::updated);
    typeOver(box, "25");
    QVERIFY(whole == Json::Value(25));
    QCOMPARE(updated.count(), 2);
    QTest::keyClick(&box, Qt::Key_Up);
    QVERIFY(whole == Json::Value(26));
    QCOMPARE(updated.count(), 3);
    typeOver(box, "256");
    QVERIFY(whole == Json::Value(25));

    Json::Value real(0.5);
    JsonSpinBox realBox(&real, {-1e9, 1e9}, 1, 5, text(" mm"));
    giveFocus(realBox);
    typeOver(realBox, "-3.140625");
    QVERIFY(real == Json::Value(-3.14062));
    QCOMPARE(realBox.text(), text("-3.14062 mm"));
}

void tst_JsonWidgets::spinBoxShowsTheNearestThatWasStored_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");

    QTest::newRow("one above 32 bits")
        << Json::Value(7) << text("2147483648") << text("2147483647");
    QTest::newRow("far above") << Json::Value(7) << text("5000000000") << text("2147483647");
    QTest::newRow("far below") << Json::Value(7) << text("-5000000000") << text("-2147483648");
    QTest::newRow("below an unsigned integer") << Json::Value(7U) << text("-5") << text("0");
}

void tst_JsonWidgets::spinBoxShowsTheNearestThatWasStored()
{
    QFETCH(Json::Value, value);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    JsonSpinBox box(&value, {-9223372036854775808.0, 9223372036854775808.0}, 1, 0, QString());
    giveFocus(box);
    box.setKeyboardTracking(false);
    QSignalSpy updated(&box, &JsonSpinBox::updated);

    typeOver(box, qPrintable(typed));
    QTest::keyClick(&box, Qt::Key_Return);

    QCOMPARE(box.text(), shown);
    QCOMPARE(value.asDouble(), shown.toDouble());
    QCOMPARE(updated.count(), 2);
}

void tst_JsonWidgets::spinBoxTakesAFractionWhileItIsTyped()
{
    Json::Value value(7);
    JsonSpinBox box = makeSpinBox(&value);
    giveFocus(box);
    QSignalSpy updated(&box, &JsonSpinBox::updated);

    typeOver(box, "3.75");

    QCOMPARE(box.text(), text("3.75"));
    QVERIFY(value == Json::Value(3));
    QCOMPARE(updated.count(), 3);
}

void tst_JsonWidgets::spinBoxKeepsAnIntegerThatIsNotANumber_data()
{
    QTest::addColumn<Json::Value>("value");

    QTest::newRow("integer") << Json::Value(7);
    QTest::newRow("unsigned") << Json::Value(7U);
}

void tst_JsonWidgets::spinBoxKeepsAnIntegerThatIsNotANumber()
{
    QFETCH(Json::Value, value);
    const Json::Value original = value;
    JsonSpinBox box = makeSpinBox(&value);

    box.slotValueChanged(kNan);

    QVERIFY(value == original);
    QCOMPARE(box.value(), 7.0);
}

void tst_JsonWidgets::spinBoxResetTellsTwiceOfAChangeAndElseOnce()
{
    Json::Value value(7.001);
    JsonSpinBox box = makeSpinBox(&value);
    QSignalSpy updated(&box, &JsonSpinBox::updated);

    box.reset();
    QCOMPARE(updated.count(), 1);
    value = 7.002;
    box.reset();
    QCOMPARE(updated.count(), 2);
    value = 8;
    box.reset();
    QCOMPARE(updated.count(), 4);
    value = kNan;
    box.reset();
    QCOMPARE(updated.count(), 5);
    QCOMPARE(box.value(), 8.0);
}

void tst_JsonWidgets::anyEditReplacesWhatIsNotANumber()
{
    Json::Value value(kNan);
    JsonSpinBox box(&value, {-5, 5}, 1, 0, QString());
    QCOMPARE(box.value(), 0.0);
    box.setValue(-5);
    QVERIFY(value == Json::Value(-5.0));

    value = kNan;
    box.setValue(5);
    QVERIFY(value == Json::Value(5.0));
}

void tst_JsonWidgets::spinBoxResetKeepsTheValue_data()
{
    QTest::addColumn<Json::Value>("second");

    QTest::newRow("more digits than are shown") << Json::Value(0.123456789);
    QTest::newRow("above the range") << Json::Value(1e30);
    QTest::newRow("below the range") << Json::Value(-1e30);
    QTest::newRow("an integer of 64 bits") << Json::Value(Json::Int64(5000000001));
    QTest::newRow("an integer that no real holds") << Json::Value((Json::Int64(1) << 53) + 1);
    QTest::newRow("an unsigned integer of 64 bits")
        << Json::Value(std::numeric_limits<Json::UInt64>::max());
    QTest::newRow("infinity") << Json::Value(kInfinity);
}

void tst_JsonWidgets::spinBoxResetKeepsTheValue()
{
    QFETCH(Json::Value, second);
    Json::Value value = second;
    JsonSpinBox box = makeSpinBox(&value);
    QVERIFY(value == second);

    value = 4;
    box.reset();
    QCOMPARE(box.value(), 4.0);
    value = second;
    box.reset();

    QVERIFY2(value == second, value.toStyledString().c_str());
    QCOMPARE(value.type(), second.type());
}

void tst_JsonWidgets::spinBoxKeepsItsDigitsWhileTheUserOnlyLooks()
{
    Json::Value value(0.123456789);
    JsonSpinBox box = makeSpinBox(&value);
    giveFocus(box);
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_End);
    box.clearFocus();
    QTRY_VERIFY(!box.hasFocus());
    QVERIFY(value == Json::Value(0.123456789));

    giveFocus(box);
    typeOver(box, "0.5");
    typeOver(box, "0.12");
    QVERIFY(value == Json::Value(0.12));
}

void tst_JsonWidgets::spinBoxLogsAValueOfAnotherType()
{
    TestLog log;
    Json::Value value(7);
    JsonSpinBox box = makeSpinBox(&value);
    QSignalSpy updated(&box, &JsonSpinBox::updated);
    const std::string message = "JsonSpinBox requires numeric input";

    value = "8";
    box.reset();
    verifyLine(log, message, "JsonSpinBox::reset");
    QCOMPARE(box.value(), 7.0);
    log.expectError(message);
    log.verify();

    box.stepUp();
    verifyLine(log, message, "JsonSpinBox::slotValueChanged");
    QVERIFY(value == Json::Value("8"));
    QCOMPARE(updated.count(), 0);
    log.expectError(message);
}

void tst_JsonWidgets::anEditDuringTheSignalIsWritten()
{
    Json::Value number(1);
    JsonSpinBox box = makeSpinBox(&number);
    QMetaObject::Connection once;
    once = connect(&box, &JsonSpinBox::updated, this, [&] {
        disconnect(once);
        box.setValue(9);
    });
    number = 2;
    box.reset();
    QVERIFY(number == Json::Value(9));

    Json::Value flag(0);
    JsonCheckBox check(&flag);
    once = connect(&check, &JsonCheckBox::updated, this, [&] {
        disconnect(once);
        check.setChecked(false);
    });
    flag = 5;
    check.reset();
    QVERIFY(flag == Json::Value(0));
}

void tst_JsonWidgets::aBlockedResetDoesNotSwallowTheNextEdit()
{
    Json::Value number(1);
    JsonSpinBox box = makeSpinBox(&number);
    Json::Value flag(0);
    JsonCheckBox check(&flag);
    {
        const QSignalBlocker boxBlocker(&box);
        const QSignalBlocker checkBlocker(&check);
        number = 2;
        box.reset();
        flag = 5;
        check.reset();
    }
    box.stepUp();
    check.click();
    QVERIFY(number == Json::Value(3));
    QVERIFY(flag == Json::Value(0));
}

QTEST_MAIN(tst_JsonWidgets)
#include "tst_json_widgets.moc"
