#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>

#include <trovek/eeprom_map.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <json/reader.h>

#include <cfloat>
#include <climits>
#include <memory>

using namespace trovek;

namespace {

constexpr char kAxisRequires[] = "EepromAxisBitfield requires a JSON int";
constexpr char kComboRequires[] = "EepromComboBox requires a JSON int";
constexpr char kNonIntItem[] = "EepromComboBox given non-int item";
constexpr char kNonIntChosen[] = "EepromComboBox changed to a non-int value";

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList list(const char* items)
{
    return text(items).split(QLatin1Char(','));
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

/** The letters of the axes that are checked. */
QString checkedAxes(const EepromAxisBitfield& bitfield)
{
    QString axes;
    for (const QCheckBox* box : bitfield.findChildren<QCheckBox*>()) {
        if (box->isChecked())
            axes += box->text();
    }
    return axes;
}

QCheckBox* axis(const EepromAxisBitfield& bitfield, const char* letter)
{
    for (QCheckBox* box : bitfield.findChildren<QCheckBox*>()) {
        if (box->text() == text(letter))
            return box;
    }
    return nullptr;
}

void clickMark(QCheckBox* box)
{
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box->height() / 2));
}

void wheelDown(QWidget* widget)
{
    const QPoint middle = widget->rect().center();
    QWheelEvent event(middle, widget->mapToGlobal(middle), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    // Only what comes from the mouse itself goes on to the parent.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event);
}

/** One error line, with its unit and its function. */
void verifyLine(const TestLog& log, const std::string& message, const std::string& function)
{
    const std::vector<LogEntry> entries = log.sink().entries();
    QCOMPARE(int(entries.size()), 1);
    QCOMPARE(entries[0].severity, 0);
    QCOMPARE(entries[0].file, std::string("src\\onboard_preferences\\eeprom_widgets"));
    QCOMPARE(entries[0].message, message);
    QVERIFY2(entries[0].function.find(function) != std::string::npos, entries[0].function.c_str());
}

Json::Value parsed(const char* json)
{
    Json::Value value;
    if (!Json::Reader().parse(json, value))
        QTest::qFail("The test's own JSON is wrong", __FILE__, __LINE__);
    return value;
}

EepromMap onboardMap()
{
    return EepromMap::fromService(parsed(R"({"eeprom_map": {
        "steps": {"offset": 0, "type": "iii", "value": [10, 20, 30]},
        "big": {"offset": 0, "type": "I", "value": [3000000000]},
        "gains": {"offset": 12, "type": "ff", "value": [0.5, 1.25]},
        "names": {"offset": 20, "type": "ss", "value": ["left", "right"]},
        "tools": {"sub_map": {"count": {"offset": 60, "type": "B", "value": [2]}}}}})"));
}

} // namespace

Q_DECLARE_METATYPE(Json::Value)

class tst_EepromWidgets : public QObject
{
    Q_OBJECT

private slots:
    void axesAreShownInTheirOrder();
    void axesShowBits_data();
    void axesShowBits();
    void axesAreWrittenByAClick();
    void axesDropHigherBits();
    void axesResetInSilence();
    void axesKeepWhatTheyShowOfAnotherType();

    void integersAreRequired_data();
    void integersAreRequired();
    void itemsAreTestedBeforeTheValue_data();
    void itemsAreTestedBeforeTheValue();

    void comboBoxSelectsItsValue_data();
    void comboBoxSelectsItsValue();
    void comboBoxWithoutItemsIsDisabled();
    void comboBoxWritesWhatIsChosen();
    void comboBoxResets_data();
    void comboBoxResets();
    void comboBoxThrowsWhatIsNoInteger();
    void comboBoxLogsWhatIsChosenAndNoInteger();
    void comboBoxLetsTheWheelScroll();

    void textLineTakesLettersDigitsAndBlanks();
    void textLineTakesSixteenCharacters();
    void textLineShowsWhatItWouldNotTake();
    void textLineRequiresAText();

    void mapEditorsAreEmptyWithoutAMap();
    void mapEditorsShowTheirElement();
    void mapEditorsKeepWhatTheyShowWithoutAnElement_data();
    void mapEditorsKeepWhatTheyShowWithoutAnElement();
    void mapEditorsWriteTheirElementOnly();
    void mapEditorsWriteNothingByBeingBound();
    void mapEditorsRefuseAMissingElement_data();
    void mapEditorsRefuseAMissingElement();
    void numbersAboveSinglePrecisionBecomeTheLargest();
};

void tst_EepromWidgets::axesAreShownInTheirOrder()
{
    Json::Value value(0);
    const EepromAxisBitfield bitfield(&value);
    QStringList letters;
    for (int row = 0; row < bitfield.layout()->count(); ++row)
        letters << qobject_cast<QCheckBox*>(bitfield.layout()->itemAt(row)->widget())->text();
    QCOMPARE(letters, list("X,Y,Z,A,B"));
    QVERIFY(qobject_cast<QVBoxLayout*>(bitfield.layout()) != nullptr);
    QCOMPARE(bitfield.layout()->contentsMargins(), QMargins(0, 0, 0, 0));
}

void tst_EepromWidgets::axesShowBits_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<QString>("axes");

    QTest::newRow("0") << Json::Value(0) << QString();
    QTest::newRow("1") << Json::Value(1) << text("X");
    QTest::newRow("2") << Json::Value(2) << text("Y");
    QTest::newRow("4") << Json::Value(4) << text("Z");
    QTest::newRow("8") << Json::Value(8) << text("A");
    QTest::newRow("16") << Json::Value(16) << text("B");
    QTest::newRow("31") << Json::Value(31) << text("XYZAB");
    QTest::newRow("37") << Json::Value(37) << text("XZ");
    QTest::newRow("-1") << Json::Value(-1) << text("XYZAB");
    QTest::newRow("64 bits") << Json::Value((Json::Int64(1) << 40) + 6) << text("YZ");
}

void tst_EepromWidgets::axesShowBits()
{
    TestLog log;
    QFETCH(Json::Value, value);
    QFETCH(QString, axes);
    const Json::Value original = value;
    const EepromAxisBitfield bitfield(&value);
    QCOMPARE(checkedAxes(bitfield), axes);
    QVERIFY(value == original);
}

void tst_EepromWidgets::axesAreWrittenByAClick()
{
    Json::Value value(0);
    EepromAxisBitfield bitfield(&value);
    bitfield.show();
    QSignalSpy updated(&bitfield, &EepromAxisBitfield::updated);

    int expected = 0;
    int bit = 1;
    for (const char* letter : {"X", "Y", "Z", "A", "B"}) {
        expected += bit;
        bit *= 2;
        clickMark(axis(bitfield, letter));
        QVERIFY2(value == Json::Value(expected), letter);
    }
    QCOMPARE(updated.count(), 5);
    QTest::keyClick(axis(bitfield, "Z"), Qt::Key_Space);
    QVERIFY(value == Json::Value(27));
    QCOMPARE(value.type(), Json::intValue);
    QCOMPARE(updated.count(), 6);
}

void tst_EepromWidgets::axesDropHigherBits()
{
    Json::Value value(37);
    EepromAxisBitfield bitfield(&value);
    bitfield.show();
    clickMark(axis(bitfield, "Y"));
    QVERIFY(value == Json::Value(7));
}

void tst_EepromWidgets::axesResetInSilence()
{
    Json::Value value(16);
    EepromAxisBitfield bitfield(&value);
    QSignalSpy updated(&bitfield, &EepromAxisBitfield::updated);

    value = 37;
    bitfield.reset();

    QCOMPARE(checkedAxes(bitfield), text("XZ"));
    QVERIFY(value == Json::Value(37));
    QCOMPARE(updated.count(), 0);
    // Only the reset was silent.
    axis(bitfield, "B")->click();
    QVERIFY(value == Json::Value(21));
    QCOMPARE(updated.count(), 1);
}

void tst_EepromWidgets::axesKeepWhatTheyShowOfAnotherType()
{
    TestLog log;
    Json::Value value(37);
    EepromAxisBitfield bitfield(&value);
    for (const Json::Value& other :
         {Json::Value(2.0), Json::Value(2U), Json::Value("2"), Json::Value(true), Json::Value()}) {
        value = other;
        bitfield.reset();
        QCOMPARE(checkedAxes(bitfield), text("XZ"));
        QVERIFY(value == other);
    }
    QVERIFY(log.messages().empty());
}

void tst_EepromWidgets::integersAreRequired_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<QString>("printed");

    QTest::newRow("null") << Json::Value() << text("null\n");
    QTest::newRow("true") << Json::Value(true) << text("true\n");
    QTest::newRow("an unsigned integer") << Json::Value(3000000000U) << text("3000000000\n");
    QTest::newRow("a real that is whole") << Json::Value(1.0) << text("1.0\n");
    QTest::newRow("a text") << Json::Value("1") << text("\"1\"\n");
    QTest::newRow("an object") << Json::Value(Json::objectValue) << text("{}\n");
    QTest::newRow("an array") << parsed("[1]") << text("[\n\t1\n]\n");
}

void tst_EepromWidgets::integersAreRequired()
{
    TestLog log;
    QFETCH(Json::Value, value);
    QFETCH(QString, printed);
    const std::string line = "Invalid JSON: " + printed.toStdString();

    QCOMPARE(thrownText([&] { EepromAxisBitfield bitfield(&value); }), std::string(kAxisRequires));
    verifyLine(log, line, "EepromAxisBitfield::EepromAxisBitfield(");
    log.expectError(line);
    log.verify();

    QCOMPARE(thrownText([&] { EepromComboBox box(list("1,2"), &value); }),
             std::string(kComboRequires));
    verifyLine(log, line, "EepromComboBox::EepromComboBox(");
    log.expectError(line);
    log.verify();

    QCOMPARE(thrownText([&] { EepromAxisBitfield bitfield(nullptr); }), std::string(kAxisRequires));
    QCOMPARE(thrownText([&] { EepromComboBox box(list("1,2"), nullptr); }),
             std::string(kComboRequires));
    QVERIFY(log.messages() == (std::vector<std::string>(2, "Invalid JSON: (null)")));
    log.expectError("Invalid JSON: (null)");
    log.expectError("Invalid JSON: (null)");
}

void tst_EepromWidgets::itemsAreTestedBeforeTheValue_data()
{
    QTest::addColumn<QStringList>("items");

    QTest::newRow("a word") << list("0,one,2");
    QTest::newRow("nothing") << list(",");
    QTest::newRow("a real") << list("0,1.0");
    QTest::newRow("hexadecimal") << list("0x10");
    QTest::newRow("more than 64 bits") << list("99999999999999999999");
}

void tst_EepromWidgets::itemsAreTestedBeforeTheValue()
{
    TestLog log;
    QFETCH(QStringList, items);
    Json::Value valid(0);
    Json::Value invalid(true);
    QCOMPARE(thrownText([&] { EepromComboBox box(items, &valid); }), std::string(kNonIntItem));
    QCOMPARE(thrownText([&] { EepromComboBox box(items, &invalid); }), std::string(kNonIntItem));
    QCOMPARE(thrownText([&] { EepromComboBox box(items, nullptr); }), std::string(kNonIntItem));
    QVERIFY(log.messages().empty());
}

void tst_EepromWidgets::comboBoxSelectsItsValue_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<int>("row");

    QTest::newRow("the first") << list("0,1,2") << Json::Value(0) << 0;
    QTest::newRow("the last") << list("0,1,2") << Json::Value(2) << 2;
    QTest::newRow("none") << list("0,1,2") << Json::Value(5) << 0;
    QTest::newRow("the first of two") << list("0,7,07") << Json::Value(7) << 1;
    QTest::newRow("negative") << list("5,-5") << Json::Value(-5) << 1;
    QTest::newRow("an order of its own") << list("9,3,6") << Json::Value(6) << 2;
    QTest::newRow("more than 32 bits")
        << list("1,3000000000") << Json::Value(Json::Int64(3000000000)) << 1;
}

void tst_EepromWidgets::comboBoxSelectsItsValue()
{
    TestLog log;
    QFETCH(QStringList, items);
    QFETCH(Json::Value, value);
    QFETCH(int, row);
    const Json::Value original = value;

    const EepromComboBox box(items, &value);

    QCOMPARE(box.currentIndex(), row);
    QVERIFY(value == original);
    QVERIFY(box.isEnabled());
    QCOMPARE(box.focusPolicy(), Qt::StrongFocus);
    QStringList shown;
    for (int i = 0; i < box.count(); ++i)
        shown << box.itemText(i);
    QCOMPARE(shown, items);
}

void tst_EepromWidgets::comboBoxWithoutItemsIsDisabled()
{
    TestLog log;
    Json::Value value(3);
    EepromComboBox box(QStringList(), &value);
    QVERIFY(!box.isEnabled());
    box.reset();
    QCOMPARE(box.currentIndex(), -1);
    QVERIFY(value == Json::Value(3));
}

void tst_EepromWidgets::comboBoxWritesWhatIsChosen()
{
    Json::Value value(2);
    EepromComboBox box(list("0,2,4"), &value);
    giveFocus(box);
    QSignalSpy updated(&box, &EepromComboBox::updated);

    QTest::keyClick(&box, Qt::Key_Down);
    QVERIFY(value == Json::Value(4));
    QCOMPARE(value.type(), Json::intValue);
    QCOMPARE(updated.count(), 1);
    // At the end already.
    QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(updated.count(), 1);

    box.showPopup();
    QTRY_VERIFY(box.view()->isVisible());
    QTest::keyClick(box.view(), Qt::Key_Home);
    QTest::keyClick(box.view(), Qt::Key_Return);
    QTRY_COMPARE(updated.count(), 2);
    QVERIFY(value == Json::Value(0));
}

void tst_EepromWidgets::comboBoxResets_data()
{
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("signalCount");

    QTest::newRow("the item shown") << Json::Value(2) << 1 << 0;
    QTest::newRow("another item") << Json::Value(4) << 2 << 1;
    QTest::newRow("no item") << Json::Value(5) << 1 << 0;
    QTest::newRow("a real") << Json::Value(4.0) << 1 << 0;
    QTest::newRow("an unsigned integer") << Json::Value(4U) << 1 << 0;
    QTest::newRow("a text") << Json::Value("4") << 1 << 0;
    QTest::newRow("null") << Json::Value() << 1 << 0;
}

void tst_EepromWidgets::comboBoxResets()
{
    TestLog log;
    QFETCH(Json::Value, value);
    QFETCH(int, row);
    QFETCH(int, signalCount);
    Json::Value bound(2);
    EepromComboBox box(list("0,2,4"), &bound);
    QSignalSpy updated(&box, &EepromComboBox::updated);

    bound = value;
    box.reset();

    QCOMPARE(box.currentIndex(), row);
    QVERIFY(bound == value);
    QCOMPARE(bound.type(), value.type());
    QCOMPARE(updated.count(), signalCount);
}

void tst_EepromWidgets::comboBoxThrowsWhatIsNoInteger()
{
    TestLog log;
    Json::Value value(2);
    EepromComboBox box(list("0,2,4"), &value);
    QSignalSpy updated(&box, &EepromComboBox::updated);

    for (const char* other : {"", "two", "2.0", "99999999999999999999"})
        QCOMPARE(thrownText([&] { box.slotIndexChanged(text(other)); }),
                 std::string(kNonIntChosen));

    QVERIFY(value == Json::Value(2));
    QCOMPARE(updated.count(), 0);
    box.slotIndexChanged(text("17"));
    QVERIFY(value == Json::Value(17));
    QCOMPARE(updated.count(), 1);
}

void tst_EepromWidgets::comboBoxLogsWhatIsChosenAndNoInteger()
{
    TestLog log;
    Json::Value value(4);
    EepromComboBox box(list("1,2,4"), &value);
    giveFocus(box);
    QSignalSpy updated(&box, &EepromComboBox::updated);
    box.addItem(text("many"));

    QTest::keyClick(&box, Qt::Key_Down);

    QCOMPARE(box.currentText(), text("many"));
    verifyLine(log, kNonIntChosen, "EepromComboBox::takeChosen(");
    log.expectError(kNonIntChosen);
    QVERIFY(value == Json::Value(4));
    QCOMPARE(updated.count(), 0);

    // A reset passes over an item that is no integer, also for a 0.
    value = 2;
    box.reset();
    value = 0;
    box.reset();
    QCOMPARE(box.currentText(), text("2"));
    QVERIFY(value == Json::Value(0));
}

void tst_EepromWidgets::comboBoxLetsTheWheelScroll()
{
    QScrollArea area;
    auto* const page = new QWidget;
    auto* const layout = new QVBoxLayout(page);
    Json::Value value(2);
    auto* const box = new EepromComboBox(list("0,2,4"), &value);
    auto* const plain = new QWidget;
    layout->addWidget(box);
    layout->addWidget(plain);
    page->setFixedSize(200, 5000);
    area.setWidget(page);
    area.resize(300, 200);
    area.show();
    box->setFocus();

    wheelDown(plain);
    const int scrolled = area.verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    wheelDown(box);
    QCOMPARE(area.verticalScrollBar()->value(), 2 * scrolled);
    QCOMPARE(box->currentIndex(), 1);
    QVERIFY(value == Json::Value(2));
}

void tst_EepromWidgets::textLineTakesLettersDigitsAndBlanks()
{
    Json::Value value("old");
    const std::unique_ptr<JsonLineEdit> line(makeEepromTextLine(&value));
    giveFocus(*line);

    typeOver(*line, "aZ_ 0-9éü.\"'%");

    QCOMPARE(line->text(), text("aZ 09"));
    QVERIFY(value == Json::Value("aZ 09"));
    line->selectAll();
    QTest::keyClick(line.get(), Qt::Key_Delete);
    QVERIFY(value == Json::Value(""));
}

void tst_EepromWidgets::textLineTakesSixteenCharacters()
{
    Json::Value value("");
    const std::unique_ptr<JsonLineEdit> line(makeEepromTextLine(&value));
    giveFocus(*line);
    QSignalSpy updated(line.get(), &JsonLineEdit::updated);

    QTest::keyClicks(line.get(), text("abcdefghijklmnop"));
    QCOMPARE(updated.count(), 16);
    QTest::keyClicks(line.get(), text("q"));

    QVERIFY(value == Json::Value("abcdefghijklmnop"));
    QCOMPARE(updated.count(), 16);
}

void tst_EepromWidgets::textLineShowsWhatItWouldNotTake()
{
    const Json::Value odd("longer than sixteen - and odd");
    Json::Value value = odd;
    const std::unique_ptr<JsonLineEdit> line(makeEepromTextLine(&value));
    QCOMPARE(line->text(), text("longer than sixt"));
    QVERIFY(value == odd);
    line->reset();
    QVERIFY(value == odd);
}

void tst_EepromWidgets::textLineRequiresAText()
{
    TestLog log;
    Json::Value value(5);
    QCOMPARE(thrownText([&] { makeEepromTextLine(&value); }),
             std::string("JsonLineEdit requires string input"));
    QCOMPARE(thrownText([&] { makeEepromTextLine(nullptr); }),
             std::string("JsonLineEdit given null JSON"));
}

void tst_EepromWidgets::mapEditorsAreEmptyWithoutAMap()
{
    TestLog log;
    EepromMap map = onboardMap();
    EepromSpinBox number(text("steps"), 1);
    EepromFloatSpinBox real(text("gains"), 1);
    EepromLineEdit line(text("names"), 1);
    const auto verifyEmpty = [&] {
        for (const QWidget* widget : std::initializer_list<QWidget*>{&number, &real, &line})
            QVERIFY(!widget->isEnabled());
        QCOMPARE(number.text(), QString());
        QCOMPARE(real.text(), QString());
        QCOMPARE(line.text(), QString());
    };
    verifyEmpty();
    number.setMap(&map);
    real.setMap(&map);
    line.setMap(&map);
    number.setMap(nullptr);
    real.setMap(nullptr);
    line.setMap(nullptr);
    verifyEmpty();
}

void tst_EepromWidgets::mapEditorsShowTheirElement()
{
    TestLog log;
    EepromMap map = onboardMap();
    EepromSpinBox number(text("steps"), 2);
    EepromSpinBox nested(text("tools.count"), 0);
    EepromFloatSpinBox real(text("gains"), 1);
    EepromLineEdit line(text("names"), 1);
    // Twice, as an emptied box still has its number.
    for (int i = 0; i < 2; ++i) {
        number.setMap(&map);
        nested.setMap(&map);
        real.setMap(&map);
        line.setMap(&map);
        QVERIFY(number.isEnabled() && nested.isEnabled() && real.isEnabled() && line.isEnabled());
        QCOMPARE(number.text(), text("30"));
        QCOMPARE(nested.text(), text("2"));
        QCOMPARE(real.text(), text("1.25000"));
        QCOMPARE(line.text(), text("right"));
        number.setMap(nullptr);
        nested.setMap(nullptr);
        real.setMap(nullptr);
        line.setMap(nullptr);
    }
}

void tst_EepromWidgets::mapEditorsKeepWhatTheyShowWithoutAnElement_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("index");

    QTest::newRow("past the end") << text("steps") << 3;
    QTest::newRow("a negative index") << text("steps") << -1;
    QTest::newRow("no such path") << text("stops") << 0;
    QTest::newRow("another kind") << text("names") << 0;
    QTest::newRow("does not fit") << text("big") << 0;
}

void tst_EepromWidgets::mapEditorsKeepWhatTheyShowWithoutAnElement()
{
    TestLog log;
    QFETCH(QString, path);
    QFETCH(int, index);
    EepromMap map = onboardMap();
    EepromSpinBox number(path, index);
    number.setMap(&map);
    QVERIFY(number.isEnabled());
    QCOMPARE(number.text(), QString());
}

void tst_EepromWidgets::mapEditorsWriteTheirElementOnly()
{
    TestLog log;
    EepromMap map = onboardMap();
    EepromSpinBox number(text("steps"), 1);
    number.setMap(&map);
    giveFocus(number);
    QSignalSpy numberUpdated(&number, &EepromSpinBox::updated);
    typeOver(number, "-25");
    QVERIFY(*map.getInt("steps") == (std::vector<int>{10, -25, 30}));
    QCOMPARE(numberUpdated.count(), 2);

    EepromFloatSpinBox real(text("gains"), 0);
    real.setMap(&map);
    giveFocus(real);
    QSignalSpy realUpdated(&real, &EepromFloatSpinBox::updated);
    typeOver(real, "2.5");
    QVERIFY(*map.getFloat("gains") == (std::vector<float>{2.5F, 1.25F}));
    QCOMPARE(realUpdated.count(), 2);

    EepromLineEdit line(text("names"), 1);
    line.setMap(&map);
    giveFocus(line);
    QSignalSpy lineUpdated(&line, &EepromLineEdit::updated);
    typeOver(line, "né");
    QVERIFY(*map.getString("names") == (std::vector<std::string>{"left", "né"}));
    QCOMPARE(lineUpdated.count(), 2);
}

void tst_EepromWidgets::mapEditorsWriteNothingByBeingBound()
{
    TestLog log;
    EepromMap map = onboardMap();
    map.setFloat("gains", {0.1234567F, 1});
    const Json::Value original = map.getEepromMap();
    EepromSpinBox number(text("steps"), 1);
    number.setRange(0, 15);
    EepromFloatSpinBox real(text("gains"), 0);
    EepromLineEdit line(text("names"), 1);
    line.setMaxLength(2);
    QSignalSpy updated(&number, &EepromSpinBox::updated);

    number.setMap(&map);
    real.setMap(&map);
    line.setMap(&map);

    QCOMPARE(number.text(), text("15"));
    QVERIFY(map.getEepromMap() == original);
    QCOMPARE(updated.count(), 0);
}

void tst_EepromWidgets::mapEditorsRefuseAMissingElement_data()
{
    QTest::addColumn<bool>("hasMap");
    QTest::addColumn<int>("index");

    QTest::newRow("past the end") << true << 3;
    QTest::newRow("a negative index") << true << -1;
    QTest::newRow("no map") << false << 0;
}

void tst_EepromWidgets::mapEditorsRefuseAMissingElement()
{
    TestLog log;
    QFETCH(bool, hasMap);
    QFETCH(int, index);
    EepromMap map = onboardMap();
    const Json::Value original = map.getEepromMap();
    EepromSpinBox number(text("steps"), index);
    EepromFloatSpinBox real(text("gains"), index);
    EepromLineEdit line(text("names"), index);
    if (hasMap) {
        number.setMap(&map);
        real.setMap(&map);
        line.setMap(&map);
    }
    QSignalSpy updated(&number, &EepromSpinBox::updated);

    QCOMPARE(thrownText([&] { number.slotValueChanged(1); }),
             std::string("Invalid EepromSpinBox index"));
    QCOMPARE(thrownText([&] { real.slotValueChanged(1); }),
             std::string("Invalid EepromFloatSpinBox index"));
    QCOMPARE(thrownText([&] { line.slotTextEdited(text("x")); }),
             std::string("Invalid EepromLineEdit index"));
    QVERIFY(log.messages().empty());

    // What a user does is only logged.
    number.setValue(1);
    verifyLine(log, "Invalid EepromSpinBox index", "guarded");
    log.expectError("Invalid EepromSpinBox index");
    log.verify();
    real.setValue(1);
    verifyLine(log, "Invalid EepromFloatSpinBox index", "guarded");
    log.expectError("Invalid EepromFloatSpinBox index");
    log.verify();
    emit line.textEdited(text("x"));
    verifyLine(log, "Invalid EepromLineEdit index", "guarded");
    log.expectError("Invalid EepromLineEdit index");
    QVERIFY(map.getEepromMap() == original);
    QCOMPARE(updated.count(), 0);
}

void tst_EepromWidgets::numbersAboveSinglePrecisionBecomeTheLargest()
{
    TestLog log;
    EepromMap map = onboardMap();
    EepromFloatSpinBox real(text("gains"), 0);
    real.setMap(&map);
    real.slotValueChanged(1e300);
    QCOMPARE(map.getFloat("gains")->at(0), FLT_MAX);
    real.slotValueChanged(-1e300);
    QCOMPARE(map.getFloat("gains")->at(0), -FLT_MAX);

    EepromSpinBox number(text("steps"), 0);
    number.setMap(&map);
    number.setValue(INT_MIN);
    QCOMPARE(map.getInt("steps")->at(0), INT_MIN);
}

QTEST_MAIN(tst_EepromWidgets)
#include "tst_eeprom_widgets.moc"
