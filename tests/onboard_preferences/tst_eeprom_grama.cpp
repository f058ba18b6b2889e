#include "eeprom_form.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>
#include <trovek/text.h>

#include <QCheckBox>
#include <QRegExpValidator>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace trovek;

namespace {

constexpr char kEntries[] = R"(
    "baud": {"offset": 0, "type": "I", "value": [115200], "unit": "Bd"},
    "axes": {"sub_map": {
        "home_offset": {"offset": 4, "type": "iiiii", "value": [1, 2, 3, 4, 5]},
        "inverted": {"offset": 24, "type": "B", "value": [37], "axis_expand": "True"}}},
    "machine_name": {"offset": 32, "type": "s", "value": ["left"], "tooltip": "Shown on the display"}
)";

} // namespace

class tst_EepromGrama : public QObject
{
    Q_OBJECT

private slots:
    void addsARowForEachEntry();
    void makesAnEmptyFormOfOtherDocuments_data();
    void makesAnEmptyFormOfOtherDocuments();
    void labelsByTheKey_data();
    void labelsByTheKey();
    void takesChildrenOfGroups_data();
    void takesChildrenOfGroups();
    void choosesTheEditor_data();
    void choosesTheEditor();
    void limitsNumbersByTheirType_data();
    void limitsNumbersByTheirType();
    void acceptsOneMoreAndRefusesOneLessOfAShort();
    void saysWhatIsWrongWithAnEntry_data();
    void saysWhatIsWrongWithAnEntry();
    void saysWhatIsWrongWithAValue_data();
    void saysWhatIsWrongWithAValue();
    void refusesACodeWithoutARange();
    void namesTheValuesOfAnArray_data();
    void namesTheValuesOfAnArray();
    void showsTheUnitBehindTheNumber();
    void showsTheTooltipBelowTheEditor();
    void findsEntriesByNameAndTooltip();
    void showsTextAsItStands();
    void tellsAScreenReaderWhatAnEditorIsFor();
    void writesEditsIntoTheMap();
    void isUnmodifiedAfterConstruction_data();
    void isUnmodifiedAfterConstruction();
    void tellsOfEveryEdit();
    void refusesAParentThatHasNoRow();
    void addsEntriesOfOtherDocuments();
    void keepsFractionsOfWrappedEntries();
    void showsEveryLanguage_data();
    void showsEveryLanguage();
    void showsNothingForAnEntryThatIsMissing();
};

void tst_EepromGrama::addsARowForEachEntry()
{
    TestLog log;
    const EepromGrama form(documentOf(kEntries));

    QCOMPARE(FormRows(form).all(),
             words("Axes|Inverted|--|Home Offset|--|--|Baud|--|Machine Name|--"));
    QVERIFY(fieldOf(form, "Axes")->children().isEmpty());
    QVERIFY(qobject_cast<JsonSpinBox*>(editorOf(form, "Baud")));
    QVERIFY(qobject_cast<JsonLineEdit*>(editorOf(form, "Machine Name")));
    QVERIFY(qobject_cast<EepromAxisBitfield*>(editorOf(form, "Inverted")));
    const QMetaObject* meta = form.metaObject();
    QVERIFY(meta->indexOfSignal("updated()") < meta->indexOfSignal("mapReset()"));
}

void tst_EepromGrama::makesAnEmptyFormOfOtherDocuments_data()
{
    QTest::addColumn<QByteArray>("document");

    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("array") << QByteArray("[1, 2]");
    QTest::newRow("text") << QByteArray("\"eeprom_map\"");
    QTest::newRow("no map") << QByteArray("{\"other\": {}}");
    QTest::newRow("a map that is an array") << QByteArray("{\"eeprom_map\": [{}]}");
    QTest::newRow("a map that is null") << QByteArray("{\"eeprom_map\": null}");
    QTest::newRow("an empty map") << QByteArray("{\"eeprom_map\": {}}");
}

void tst_EepromGrama::makesAnEmptyFormOfOtherDocuments()
{
    TestLog log;
    QFETCH(QByteArray, document);
    const Json::Value json = parse("[" + document + "]")[0];

    const EepromGrama form(json);

    QCOMPARE(FormRows(form).layout()->rowCount(), 0);
    QVERIFY(!form.isModified());
    QVERIFY(form.map() == json);
}

void tst_EepromGrama::labelsByTheKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("label");

    const auto row = [](const char* name, const char* key, const char* label) {
        QTest::newRow(name) << QString::fromUtf8(key) << QString::fromUtf8(label);
    };
    row("words", "x_axis_home_offset", "X Axis Home Offset");
    row("capitals", "JKN_advance", "Jkn Advance");
    row("one letter", "x", "X");
    row("digits", "tool_0_temp", "Tool 0 Temp");
    row("underscores in a row", "a__b", "A  B");
    row("underscores around", "_a_", " A ");
    row("blanks and signs stay", "a b&c", "A b&c");
    row("empty", "", "");
    row("another script", "температура_стола", "Температура Стола");
    row("letters beyond the first plane", "\xf0\x90\x90\xa8_\xf0\x90\x90\xa9",
        "\xf0\x90\x90\x80 \xf0\x90\x90\x81");
    row("no case at all", "温度_设置", "温度 设置");
}

void tst_EepromGrama::labelsByTheKey()
{
    TestLog log;
    QFETCH(QString, key);
    EepromGrama form{Json::Value()};

    const auto item = form.addRowFromJson(key, nullptr, nullptr);

    QTEST(qobject_cast<QLabel*>(item->label())->text(), "label");
    QCOMPARE(item->searchStrings(), QStringList(key));
}

void tst_EepromGrama::takesChildrenOfGroups_data()
{
    QTest::addColumn<QByteArray>("entries");
    QTest::addColumn<QStringList>("rows");

    const auto row = [](const char* name, const char* entries, const char* rows) {
        QTest::newRow(name) << QByteArray(entries) << words(rows);
    };
    row("in reverse", R"("g": {"sub_map": {"a": {}, "b": {}, "c": {}}})", "G|C|--|B|--|A|--|--");
    row("nested", R"("g": {"sub_map": {"a": {"sub_map": {"x": {}}}}})", "G|A|X|--|--|--");
    row("none of a leaf", R"("g": {"offset": 1, "type": "B", "value": [1], "sub_map": {"a": {}}})",
        "G|--");
    row("of what lacks an offset", R"("g": {"type": "B", "value": [1], "sub_map": {"a": {}}})",
        "G|A|--|--");
    row("not those named offset and eeprom_map",
        R"("g": {"sub_map": {"offset": {}, "eeprom_map": {}, "a": {}}})", "G|A|--|--");
    row("one named sub_map is its own sub_map",
        R"("g": {"sub_map": {"sub_map": {"sub_map": {"sub_map": {"a": {}}}}}})",
        "G|Sub Map|A|--|--|--");
    row("one named sub_map without one", R"("g": {"sub_map": {"sub_map": {"a": {}}}})",
        "G|Sub Map|--|--");
    row("one named sub_map that is no object", R"("g": {"sub_map": {"sub_map": 5}})",
        "G|Sub Map|--|--");
    row("a sub_map that is an array", R"("g": {"sub_map": [{"a": {}}]})", "G|--");
    row("a sub_map that is null", R"("g": {"sub_map": null})", "G|--");
    row("a sub_map that is text", R"("g": {"sub_map": "a"})", "G|--");
    row("children that are no objects", R"("g": {"sub_map": {"a": 1, "b": null, "c": [2]}})",
        "G|C|--|B|--|A|--|--");
    row("entries that are no objects", R"("a": 1, "b": "x", "c": null, "d": [])",
        "A|--|B|--|C|--|D|--");
    row("top rows by name", R"("b": {}, "a": {}, "B": {})", "B|--|A|--|B|--");
}

void tst_EepromGrama::takesChildrenOfGroups()
{
    TestLog log;
    QFETCH(QByteArray, entries);
    const Json::Value document = documentOf(entries);

    const EepromGrama form(document);

    QTEST(FormRows(form).all(), "rows");
    QVERIFY(form.map() == document);
}

void tst_EepromGrama::choosesTheEditor_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QByteArray>("className");

    const auto row = [](const char* name, const char* members, const char* className) {
        QTest::newRow(name) << QByteArray(members) << QByteArray(className);
    };
    row("number", R"("type": "B", "value": [1])", "trovek::JsonSpinBox");
    row("text", R"("type": "s", "value": ["a"])", "trovek::JsonLineEdit");
    row("text whatever the constraints", R"("type": "s", "value": ["a"], "constraints": "l,0,1")",
        "trovek::JsonLineEdit");
    row("0 and 1", R"("type": "B", "value": [1], "constraints": "l,0,1")", "trovek::JsonCheckBox");
    row("1 and 0", R"("type": "B", "value": [1], "constraints": "l,1,0")", "trovek::JsonCheckBox");
    row("0, 1 and 2", R"("type": "B", "value": [1], "constraints": "l,0,1,2")",
        "trovek::EepromComboBox");
    row("0 and 2", R"("type": "B", "value": [2], "constraints": "l,0,2")",
        "trovek::EepromComboBox");
    row("twice 0", R"("type": "B", "value": [0], "constraints": "l,0,0")",
        "trovek::EepromComboBox");
    row("two empty pieces", R"("type": "B", "value": [0], "constraints": "l,,")", "QLabel");
    row("a list of nothing", R"("type": "B", "value": [0], "constraints": "l")",
        "trovek::EepromComboBox");
    row("other constraints", R"("type": "B", "value": [0], "constraints": "m,0,1")",
        "trovek::JsonSpinBox");
    row("constraints that are no text", R"("type": "B", "value": [0], "constraints": ["l"])",
        "trovek::JsonSpinBox");
    row("fixed point", R"("type": "H", "value": [1.5], "floating_point": "True")",
        "trovek::JsonSpinBox");
    row("axes", R"("type": "B", "value": [3], "axis_expand": "True")",
        "trovek::EepromAxisBitfield");
    row("axes in lower case", R"("type": "B", "value": [3], "axis_expand": "true")",
        "trovek::JsonSpinBox");
    row("axes by a boolean", R"("type": "B", "value": [3], "axis_expand": true)",
        "trovek::JsonSpinBox");
    row("a list before axes",
        R"("type": "B", "value": [0], "axis_expand": "True", "constraints": "l,0,1")",
        "trovek::JsonCheckBox");
    row("several", R"("type": "BB", "value": [3, 4])", "QWidget");
}

void tst_EepromGrama::choosesTheEditor()
{
    TestLog log;
    log.allowErrors("EepromComboBox given non-int item");
    QFETCH(QByteArray, members);
    const EepromGrama form(documentOf(QByteArray("\"e\": {\"offset\": 0, ") + members + "}"));

    QTEST(QByteArray(editorOf(form, "E")->metaObject()->className()), "className");
    QVERIFY(!form.isModified());
}

void tst_EepromGrama::limitsNumbersByTheirType_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<int>("decimals");

    const auto row = [](const char* type, double minimum, double maximum, int decimals) {
        QTest::newRow(type) << QByteArray("\"type\": \"") + type + "\", \"value\": [1]" << minimum
                            << maximum << decimals;
    };
    row("B", 0, 255, 0);
    row("b", -128, 127, 0);
    row("H", 0, 65535, 0);
    row("h", -32767, 32768, 0);
    row("I", 0, 4294967296.0, 0);
    row("i", -2147483648.0, 2147483648.0, 0);
    row("q", -9223372036854775808.0, 9223372036854775808.0, 0);
    row("f", -3.4028234663852886e38, 3.4028234663852886e38, 5);
    row("d", -1.7976931348623157e308, 1.7976931348623157e308, 5);
    QTest::newRow("fixed point") << QByteArray(
                                        R"("type": "H", "value": [1], "floating_point": "True")")
                                 << -128.0 << 127.0 << 2;
    QTest::newRow("fixed point by a boolean")
        << QByteArray(R"("type": "H", "value": [1], "floating_point": true)") << 0.0 << 65535.0
        << 0;
    QTest::newRow("fixed point by another text")
        << QByteArray(R"("type": "H", "value": [1], "floating_point": "true")") << 0.0 << 65535.0
        << 0;
}

void tst_EepromGrama::limitsNumbersByTheirType()
{
    TestLog log;
    QFETCH(QByteArray, members);
    const EepromGrama form(documentOf("\"e\": {\"offset\": 0, " + members + "}"));

    const auto* box = qobject_cast<JsonSpinBox*>(editorOf(form, "E"));

    QVERIFY(box);
    QTEST(box->minimum(), "minimum");
    QTEST(box->maximum(), "maximum");
    QTEST(box->decimals(), "decimals");
    QCOMPARE(box->singleStep(), 1.0);
    QCOMPARE(box->value(), 1.0);
    QVERIFY(box->suffix().isEmpty());
}

void tst_EepromGrama::acceptsOneMoreAndRefusesOneLessOfAShort()
{
    TestLog log;
    const EepromGrama form(documentOf(R"("e": {"offset": 0, "type": "h", "value": [0]})"));
    auto* box = qobject_cast<JsonSpinBox*>(editorOf(form, "E"));

    box->selectAll();
    QTest::keyClicks(box, QStringLiteral("32768"));
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(form.map()["eeprom_map"]["e"]["value"][0].asInt(), 32768);

    box->setValue(-32768);
    QCOMPARE(form.map()["eeprom_map"]["e"]["value"][0].asInt(), -32767);
}

void tst_EepromGrama::saysWhatIsWrongWithAnEntry_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* entry, const char* text) {
        QTest::newRow(name) << QByteArray(entry) << QString::fromUtf8(text);
    };
    row("a number for a type", R"("type": 5, "value": [1])", "Invalid type of type");
    row("null for a type", R"("type": null, "value": [1])", "Invalid type of type");
    row("a number for values", R"("type": "B", "value": 1)", "Invalid type of value");
    row("an object for values", R"("type": "B", "value": {"0": 1})", "Invalid type of value");
    row("null for values", R"("type": "B", "value": null)", "Invalid type of value");
    row("more values than codes", R"("type": "B", "value": [1, 2])", "Size mismatch");
    row("more codes than values", R"("type": "BB", "value": [1])", "Size mismatch");
    row("no code for a value", R"("type": "", "value": [1])", "Size mismatch");
    row("nothing at all", R"("type": "", "value": [])", "Empty array");
    row("two codes", R"("type": "Bb", "value": [1, 2])", "Heterogeneous types");
    row("an unknown code", R"("type": "x", "value": [1])", "Invalid type: x");
    row("an unknown code, twice", R"("type": "xx", "value": [1, 2])", "Invalid type: x");
    row("a zero for a code", R"("type": "\u0000", "value": [1])", "Invalid type: ");
    row("fixed point of bytes", R"("type": "B", "value": [1], "floating_point": "True")",
        "Bad floating-point type");
    row("fixed point of an unknown code", R"("type": "x", "value": [1], "floating_point": "True")",
        "Invalid type: x");
    row("axes of a short", R"("type": "h", "value": [1], "axis_expand": "True")",
        "Bad axis bitfield type");
    row("axes of two bytes", R"("type": "BB", "value": [1, 2], "axis_expand": "True")",
        "Bad axis bitfield type");
    row("fixed point before axes",
        R"("type": "B", "value": [1, 2], "floating_point": "True", "axis_expand": "True")",
        "Size mismatch");
}

void tst_EepromGrama::saysWhatIsWrongWithAnEntry()
{
    TestLog log;
    QFETCH(QByteArray, entry);
    QFETCH(QString, text);
    log.expectError(toStdString(text));
    const EepromGrama form(
        documentOf(R"("a": {"offset": 0, "type": "B", "value": [1]}, "bad": {"offset": 0, )" +
                   entry + R"(}, "c": {"offset": 0, "type": "B", "value": [1]})"));

    const auto* label = qobject_cast<QLabel*>(editorOf(form, "Bad"));
    QVERIFY(label);
    QCOMPARE(label->text(), text);
    QCOMPARE(log.sink().entries().back().file,
             std::string("src\\onboard_preferences\\eeprom_grama"));
    // The other rows work.
    qobject_cast<JsonSpinBox*>(editorOf(form, "A"))->setValue(7);
    qobject_cast<JsonSpinBox*>(editorOf(form, "C"))->setValue(8);
    QCOMPARE(form.map()["eeprom_map"]["a"]["value"][0].asInt(), 7);
    QCOMPARE(form.map()["eeprom_map"]["c"]["value"][0].asInt(), 8);
    QCOMPARE(form.changedCount(), 2);
}

void tst_EepromGrama::saysWhatIsWrongWithAValue_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* entry, const char* text) {
        QTest::newRow(name) << QByteArray(entry) << QString::fromUtf8(text);
    };
    row("text for a number", R"("type": "B", "value": ["a"])",
        "JsonSpinBox requires numeric input: \"a\"\n");
    row("null for a number", R"("type": "f", "value": [null])",
        "JsonSpinBox requires numeric input: null\n");
    row("a number for text", R"("type": "s", "value": [5])",
        "JsonLineEdit requires string input: 5\n");
    row("a fraction for a choice", R"("type": "B", "value": [1.5], "constraints": "l,0,1,2")",
        "EepromComboBox requires a JSON int: 1.5\n");
    row("text for a check box", R"("type": "B", "value": ["on"], "constraints": "l,0,1")",
        "JsonCheckBox requires int or bool input: \"on\"\n");
    row("text for axes", R"("type": "B", "value": ["X"], "axis_expand": "True")",
        "EepromAxisBitfield requires a JSON int: \"X\"\n");
    row("empty choices", R"("type": "B", "value": [0], "constraints": "l,,")",
        "EepromComboBox given non-int item: 0\n");
    row("an array with places", R"("type": "B", "value": [["%1", "%2"]])",
        "JsonSpinBox requires numeric input: [\n\t\"%1\",\n\t\"%2\"\n]\n");
}

void tst_EepromGrama::saysWhatIsWrongWithAValue()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QByteArray, entry);
    const Json::Value document = documentOf("\"bad\": {\"offset\": 0, " + entry + "}");

    const EepromGrama form(document);

    const auto* label = qobject_cast<QLabel*>(editorOf(form, "Bad"));
    QVERIFY(label);
    QTEST(label->text(), "text");
    QVERIFY(label->wordWrap());
    QVERIFY(form.map() == document);
}

void tst_EepromGrama::refusesACodeWithoutARange()
{
    TestLog log;
    log.expectError("Invalid EEPROM type, must be one of [BbHhIifdq]");
    log.expectError("JsonSpinBox given null JSON");
    EepromGrama form{Json::Value()};
    Json::Value value(5);

    const std::unique_ptr<QWidget> unknown(
        form.createScalarWidgetFromJson(&value, 'x', false, false, "", QString()));
    const std::unique_ptr<QWidget> missing(
        form.createScalarWidgetFromJson(nullptr, 'B', false, false, "", QString()));

    QCOMPARE(qobject_cast<QLabel*>(unknown.get())->text(),
             QStringLiteral("Invalid EEPROM type, must be one of [BbHhIifdq]: 5\n"));
    QCOMPARE(qobject_cast<QLabel*>(missing.get())->text(),
             QStringLiteral("JsonSpinBox given null JSON: <null>"));
    QCOMPARE(thrownText([&] { form.createWidgetFromJson(nullptr); }),
             std::string("JSON is not object"));
    Json::Value entry(Json::objectValue);
    QCOMPARE(thrownText([&] { form.createWidgetFromJson(&entry); }), std::string("Missing type"));
    entry["type"] = "B";
    QCOMPARE(thrownText([&] { form.createWidgetFromJson(&entry); }), std::string("Missing value"));
    QCOMPARE(thrownText([&] { form.createWidgetFromJson(&entry["type"]); }),
             std::string("JSON is not object"));
    QCOMPARE(entry.size(), 1U);
}

void tst_EepromGrama::namesTheValuesOfAnArray_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QStringList>("labels");

    QTest::newRow("five") << QByteArray(R"("type": "BBBBB", "value": [1, 2, 3, 4, 5])")
                          << words("X:|Y:|Z:|A:|B:");
    QTest::newRow("three") << QByteArray(R"("type": "BBB", "value": [1, 2, 3])")
                           << words("[0]:|[1]:|[2]:");
    QTest::newRow("six") << QByteArray(R"("type": "ffffff", "value": [1, 2, 3, 4, 5, 6])")
                         << words("[0]:|[1]:|[2]:|[3]:|[4]:|[5]:");
}

void tst_EepromGrama::namesTheValuesOfAnArray()
{
    TestLog log;
    QFETCH(QByteArray, entry);
    QFETCH(QStringList, labels);
    const EepromGrama form(documentOf("\"e\": {\"offset\": 0, " + entry + "}"));

    const auto* layout = qobject_cast<QFormLayout*>(editorOf(form, "E")->layout());

    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->rowCount(), labels.size());
    for (int row = 0; row < labels.size(); ++row) {
        QLayoutItem* const label = layout->itemAt(row, QFormLayout::LabelRole);
        QLayoutItem* const field = layout->itemAt(row, QFormLayout::FieldRole);
        QCOMPARE(qobject_cast<QLabel*>(label->widget())->text(), labels[row]);
        QCOMPARE(qobject_cast<JsonSpinBox*>(field->widget())->value(), double(row + 1));
    }
}

void tst_EepromGrama::showsTheUnitBehindTheNumber()
{
    TestLog log;
    const EepromGrama form(
        documentOf(R"("a": {"offset": 0, "type": "B", "value": [12], "unit": "mm"},
                      "b": {"offset": 0, "type": "B", "value": [12], "unit": 5},
                      "c": {"offset": 0, "type": "B", "value": [12], "unit": ""},
                      "d": {"offset": 0, "type": "BB", "value": [1, 2], "unit": "°C %1"})"));

    QCOMPARE(qobject_cast<JsonSpinBox*>(editorOf(form, "A"))->text(), QStringLiteral("12 mm"));
    QCOMPARE(qobject_cast<JsonSpinBox*>(editorOf(form, "B"))->suffix(), QString());
    QCOMPARE(qobject_cast<JsonSpinBox*>(editorOf(form, "C"))->suffix(), QStringLiteral(" "));
    for (const auto* box : editorOf(form, "D")->findChildren<JsonSpinBox*>())
        QCOMPARE(box->suffix(), QString::fromUtf8(" °C %1"));
}

void tst_EepromGrama::showsTheTooltipBelowTheEditor()
{
    TestLog log;
    log.expectError("Empty array");
    const EepromGrama form(
        documentOf(R"("a": {"offset": 0, "type": "B", "value": [1], "tooltip": "Some help"},
                      "b": {"offset": 0, "type": "B", "value": [1], "tooltip": 5},
                      "c": {"offset": 0, "type": "", "value": [], "tooltip": "More help"},
                      "g": {"tooltip": "Of a group", "sub_map": {}})"));

    const QLayout* layout = fieldOf(form, "A")->layout();
    QVERIFY(qobject_cast<const QVBoxLayout*>(layout));
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->count(), 2);
    const auto* tip = qobject_cast<QLabel*>(layout->itemAt(1)->widget());
    QCOMPARE(tip->text(), QStringLiteral("Some help"));
    QVERIFY(tip->wordWrap());
    QCOMPARE(fieldOf(form, "B")->layout()->count(), 1);
    QCOMPARE(fieldOf(form, "C")->layout()->count(), 2);
    QVERIFY(!fieldOf(form, "G")->layout());
}

void tst_EepromGrama::findsEntriesByNameAndTooltip()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));

    form.filterByText(QStringLiteral("machine DISPLAY"));
    QCOMPARE(FormRows(form).shown(), words("Machine Name|--"));
    // The name as it is in the document, not as it is shown.
    form.filterByText(QStringLiteral("home_offset"));
    QCOMPARE(FormRows(form).shown(), words("Axes|--|Home Offset|--"));
}

void tst_EepromGrama::showsTextAsItStands()
{
    TestLog log;
    log.expectError("Invalid type: <");
    const EepromGrama form(documentOf(R"("<b>bold</b>": {"offset": 0, "type": "B", "value": [1],
                                      "tooltip": "<img src='x'> & more"},
                      "e": {"offset": 0, "type": "<", "value": [1]})"));

    QCOMPARE(FormRows(form).label(2), QStringLiteral("E"));
    QCOMPARE(FormRows(form).label(0), QStringLiteral("<b>bold</b>"));
    for (const auto* label : form.widget()->findChildren<QLabel*>())
        QCOMPARE(label->textFormat(), Qt::PlainText);
}

void tst_EepromGrama::tellsAScreenReaderWhatAnEditorIsFor()
{
    TestLog log;
    log.expectError("JsonSpinBox requires numeric input");
    const EepromGrama form(documentOf(R"("a": {"offset": 0, "type": "B", "value": [1]},
                      "b&c": {"offset": 0, "type": "B", "value": [1]},
                      "d": {"offset": 0, "type": "BB", "value": [1, "bad"]})"));

    QCOMPARE(editorOf(form, "A")->accessibleName(), QStringLiteral("A"));
    QCOMPARE(labelOf(form, "A")->buddy(), editorOf(form, "A"));
    QCOMPARE(editorOf(form, "B&c")->accessibleName(), QStringLiteral("B&c"));
    QVERIFY(!labelOf(form, "B&c")->buddy());
    const auto* layout = qobject_cast<QFormLayout*>(editorOf(form, "D")->layout());
    QCOMPARE(layout->itemAt(0, QFormLayout::FieldRole)->widget()->accessibleName(),
             QStringLiteral("D [0]"));
    QCOMPARE(layout->itemAt(1, QFormLayout::FieldRole)->widget()->accessibleName(), QString());
}

void tst_EepromGrama::writesEditsIntoTheMap()
{
    TestLog log;
    const Json::Value document = documentOf(kEntries);
    const EepromGrama form(document);

    qobject_cast<JsonSpinBox*>(editorOf(form, "Baud"))->setValue(9600);
    const auto boxes = editorOf(form, "Home Offset")->findChildren<JsonSpinBox*>();
    boxes[2]->setValue(-30);
    QTest::mouseClick(editorOf(form, "Inverted")->findChildren<QCheckBox*>()[1], Qt::LeftButton,
                      Qt::NoModifier, QPoint(5, 8));
    auto* line = qobject_cast<JsonLineEdit*>(editorOf(form, "Machine Name"));
    QVERIFY(line->validator());
    line->selectAll();
    QTest::keyClicks(line, QStringLiteral("right!"));

    Json::Value expected = document;
    expected["eeprom_map"]["baud"]["value"][0] = 9600U;
    expected["eeprom_map"]["axes"]["sub_map"]["home_offset"]["value"][2] = -30;
    expected["eeprom_map"]["axes"]["sub_map"]["inverted"]["value"][0] = 7;
    expected["eeprom_map"]["machine_name"]["value"][0] = "right";
    QVERIFY2(form.map() == expected, form.map().toStyledString().c_str());
    QCOMPARE(form.changedCount(), 4);
}

void tst_EepromGrama::isUnmodifiedAfterConstruction_data()
{
    QTest::addColumn<QByteArray>("entry");

    QTest::newRow("more decimals than are shown")
        << QByteArray(R"("type": "d", "value": [0.123456789012])");
    QTest::newRow("out of range") << QByteArray(R"("type": "B", "value": [4000])");
    QTest::newRow("below the range") << QByteArray(R"("type": "h", "value": [-32768])");
    QTest::newRow("bits above the axes")
        << QByteArray(R"("type": "B", "value": [37], "axis_expand": "True")");
    QTest::newRow("not among the choices")
        << QByteArray(R"("type": "B", "value": [5], "constraints": "l,0,1,2")");
    QTest::newRow("5 for on") << QByteArray(R"("type": "B", "value": [5], "constraints": "l,0,1")");
    QTest::newRow("more than 32 bits") << QByteArray(R"("type": "q", "value": [9007199254740993])");
    QTest::newRow("large unsigned") << QByteArray(R"("type": "I", "value": [3000000000])");
    QTest::newRow("text that cannot be typed") << QByteArray(R"("type": "s", "value": ["ä!"])");
    QTest::newRow("long text") << QByteArray(
        R"("type": "s", "value": ["a text of more than sixteen letters"])");
}

void tst_EepromGrama::isUnmodifiedAfterConstruction()
{
    TestLog log;
    QFETCH(QByteArray, entry);
    const Json::Value document = documentOf("\"e\": {\"offset\": 0, " + entry + "}");

    EepromGrama form(document);
    QVERIFY(form.map() == document);
    QVERIFY(!form.isModified());

    form.resetToMap(document);
    QVERIFY(form.map() == document);
    QVERIFY(!form.isModified());
}

void tst_EepromGrama::tellsOfEveryEdit()
{
    TestLog log;
    const EepromGrama form(documentOf(kEntries));
    QList<bool> modified;
    QList<int> counts;
    connect(&form, &EepromGrama::updated, this, [&] {
        modified.append(form.isModified());
        counts.append(form.changedCount());
    });
    auto* box = qobject_cast<JsonSpinBox*>(editorOf(form, "Baud"));

    box->setValue(9600);
    editorOf(form, "Home Offset")->findChildren<JsonSpinBox*>()[0]->setValue(9);
    editorOf(form, "Home Offset")->findChildren<JsonSpinBox*>()[0]->setValue(1);
    box->setValue(115200);

    QCOMPARE(modified, (QList<bool>{true, true, true, false}));
    QCOMPARE(counts, (QList<int>{1, 2, 1, 0}));
}

void tst_EepromGrama::refusesAParentThatHasNoRow()
{
    TestLog log;
    EepromGrama other(documentOf(kEntries));
    EepromGrama form(documentOf(kEntries));
    Json::Value group = parse(R"({"sub_map": {"a": {}}})");
    Json::Value leaf = parse(R"({"offset": 0, "type": "B", "value": [1]})");
    const auto foreign = other.addRowFromJson(QStringLiteral("x"), &group, nullptr);
    const int rows = FormRows(form).layout()->rowCount();

    log.expectError("Invalid parent");
    QVERIFY(!form.addRowFromJson(QStringLiteral("y"), &group, foreign));
    log.expectError("Invalid parent");
    QVERIFY(!form.addRowFromJson(QStringLiteral("y"), &leaf, foreign));

    QCOMPARE(FormRows(form).layout()->rowCount(), rows);
}

void tst_EepromGrama::addsEntriesOfOtherDocuments()
{
    TestLog log;
    Json::Value own = parse(R"({"sub_map": {"a": {"offset": 0, "type": "B", "value": [1]}}})");
    EepromGrama form(documentOf(kEntries));
    QSignalSpy updated(&form, &EepromGrama::updated);

    const auto item = form.addRowFromJson(QStringLiteral("mine"), &own, nullptr);
    qobject_cast<JsonSpinBox*>(editorOf(form, "A"))->setValue(5);

    QCOMPARE(item->children().size(), std::size_t(1));
    QCOMPARE(own["sub_map"]["a"]["value"][0].asInt(), 5);
    QCOMPARE(updated.count(), 1);
    // Its document is none of the form's two.
    QVERIFY(!form.isModified());
    QCOMPARE(form.changedCount(), 0);
}

void tst_EepromGrama::keepsFractionsOfWrappedEntries()
{
    TestLog log;
    // A whole number is written without a point, and yet is a real.
    const EepromGrama form(documentOf(R"("g": {"sub_map": {"sub_map": {"sub_map":
        {"sub_map": {"a": {"offset": 0, "type": "f", "value": [1]}}}}}})"));
    auto* box = qobject_cast<JsonSpinBox*>(editorOf(form, "A"));

    box->setValue(1.5);

    QCOMPARE(box->value(), 1.5);
    const Json::Value map = form.map();
    const Json::Value& inner = map["eeprom_map"]["g"]["sub_map"]["sub_map"]["sub_map"]["sub_map"];
    QVERIFY(inner["a"]["value"][0] == Json::Value(1.5));
}

void tst_EepromGrama::showsEveryLanguage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");

    const auto row = [](const char* language, const char* name, const char* label) {
        QTest::newRow(language) << QString::fromUtf8(name) << QString::fromUtf8(label);
    };
    row("Russian", "смещение_дома", "Смещение Дома");
    row("Greek", "άξονας", "Άξονας");
    row("Arabic", "درجة_الحرارة", "درجة الحرارة");
    row("Hebrew with vowels", "שָׁלוֹם", "שָׁלוֹם");
    row("Thai", "อุณหภูมิ", "อุณหภูมิ");
    row("Japanese", "原点_オフセット", "原点 オフセット");
    row("a picture of several code points", "👩‍🔧_a", "👩‍🔧 A");
}

void tst_EepromGrama::showsEveryLanguage()
{
    TestLog log;
    QFETCH(QString, name);
    QFETCH(QString, label);
    const QByteArray utf8 = name.toUtf8();
    const Json::Value document =
        documentOf('"' + utf8 + R"(": {"offset": 0, "type": "B", "value": [1], "unit": ")" + utf8 +
                   R"(", "tooltip": ")" + utf8 + "\"}");
    EepromGrama form(document);
    form.show();

    QCOMPARE(FormRows(form).shown(), QStringList({label, QStringLiteral("--")}));
    const QLayout* layout = FormRows(form).field(0)->layout();
    QCOMPARE(qobject_cast<JsonSpinBox*>(layout->itemAt(0)->widget())->suffix(),
             QLatin1Char(' ') + name);
    QCOMPARE(qobject_cast<QLabel*>(layout->itemAt(1)->widget())->text(), name);
    form.filterByText(name);
    QCOMPARE(FormRows(form).shown(), QStringList({label, QStringLiteral("--")}));
    form.resetToMap(document);
    QVERIFY(form.map() == document);
}

void tst_EepromGrama::showsNothingForAnEntryThatIsMissing()
{
    TestLog log;
    EepromGrama form{Json::Value()};

    const auto item = form.addRowFromJson(QStringLiteral("none"), nullptr, nullptr);

    QVERIFY(item);
    QVERIFY(item->children().empty());
    QVERIFY(!item->field()->layout());
}

QTEST_MAIN(tst_EepromGrama)
#include "tst_eeprom_grama.moc"
