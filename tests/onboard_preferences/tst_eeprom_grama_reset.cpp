#include "eeprom_form.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>

#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

namespace {

constexpr char kEntries[] = R"(
    "a": {"offset": 0, "type": "B", "value": [1], "unit": "mm"},
    "b": {"sub_map": {"c": {"offset": 1, "type": "ff", "value": [1.5, 2.5]},
                      "d": {"offset": 9, "type": "s", "value": ["left"]}}},
    "e": {"offset": 25, "type": "B", "value": [0], "constraints": "l,0,1"},
    "f": {"offset": 26, "type": "B", "value": [5], "axis_expand": "True"},
    "g": {"offset": 27, "type": "I", "value": [3000000000]},
    "h": {"offset": 31, "type": "H", "value": [1.25], "floating_point": "True"},
    "k": {"offset": 33, "type": "B", "value": [2], "constraints": "l,1,2,3"}
)";

Json::Value& valuesOf(Json::Value& document, const char* entry)
{
    return document["eeprom_map"][entry]["value"];
}

JsonSpinBox* boxOf(const EepromGrama& form, const char* label)
{
    return qobject_cast<JsonSpinBox*>(editorOf(form, label));
}

/** The document with a different value in every entry. */
Json::Value changedDocument()
{
    Json::Value document = documentOf(kEntries);
    valuesOf(document, "a")[0] = 7;
    Json::Value& group = document["eeprom_map"]["b"]["sub_map"];
    group["c"]["value"][1] = 9.5;
    group["d"]["value"][0] = "right";
    valuesOf(document, "e")[0] = 1;
    valuesOf(document, "f")[0] = 2;
    valuesOf(document, "g")[0] = 4000000000U;
    valuesOf(document, "h")[0] = -1.75;
    valuesOf(document, "k")[0] = 3;
    return document;
}

bool isMarked(const EepromGrama& form, const char* label)
{
    return labelOf(form, label)->font().bold();
}

} // namespace

class tst_EepromGramaReset : public QObject
{
    Q_OBJECT

private slots:
    void showsTheNewValues();
    void takesOnlyValues();
    void refusesAnotherStructure_data();
    void refusesAnotherStructure();
    void keepsWhatWasTakenBeforeTheFailure_data();
    void keepsWhatWasTakenBeforeTheFailure();
    void isUnmodifiedAfterAResetToOddNumbers_data();
    void isUnmodifiedAfterAResetToOddNumbers();
    void takesAMapThatLooksLikeAnEntry();
    void takesChildrenThatLookLikeAnEntry();
    void isUnmodifiedAgainAfterAFailure();
    void resetsAlsoWhatHasNoRow();
    void survivesItsDestructionInTheReset();
    void marksWhatIsChanged();
    void marksAnEntryUntilAllItsValuesAreBack();
    void tellsTheValueRead_data();
    void tellsTheValueRead();
    void keepsItsPlaceWhenMarked();
    void showsOnlyWhatIsChanged();
    void loadsEdits();
    void loadsNumbersOfAnotherKind();
    void loadsChoicesHoweverTheyAreWritten();
    void refusesToLoad_data();
    void refusesToLoad();
    void loadsWhatTheMachineHasWhateverItIs();
    void refusesChangesOfEntriesThatCannotBeEdited();
    void isUnmodifiedWhileItsEditorsAreReset();
    void isModifiedExactlyWhenTheMapsDiffer();
    void takesDeepDocuments();
    void takesManyEntries();
    void takesLargeDocuments();
    void takesHostileDocuments();
};

void tst_EepromGramaReset::showsTheNewValues()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));
    QSignalSpy resets(&form, &EepromGrama::mapReset);
    boxOf(form, "A")->setValue(100);
    const Json::Value document = changedDocument();

    form.resetToMap(document);

    QCOMPARE(resets.count(), 1);
    QVERIFY(form.map() == document);
    QVERIFY(!form.isModified());
    QCOMPARE(boxOf(form, "A")->value(), 7.0);
    QCOMPARE(editorOf(form, "C")->findChildren<JsonSpinBox*>()[1]->value(), 9.5);
    QCOMPARE(qobject_cast<JsonLineEdit*>(editorOf(form, "D"))->text(), QStringLiteral("right"));
    QVERIFY(qobject_cast<JsonCheckBox*>(editorOf(form, "E"))->isChecked());
    const auto axes = editorOf(form, "F")->findChildren<QCheckBox*>();
    QVERIFY(!axes[0]->isChecked());
    QVERIFY(axes[1]->isChecked());
    QCOMPARE(boxOf(form, "G")->value(), 4000000000.0);
    QCOMPARE(boxOf(form, "H")->value(), -1.75);
    QCOMPARE(qobject_cast<EepromComboBox*>(editorOf(form, "K"))->currentText(),
             QStringLiteral("3"));
}

void tst_EepromGramaReset::takesOnlyValues()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));
    Json::Value document = changedDocument();
    document["eeprom_map"]["a"]["unit"] = "in";
    document["eeprom_map"]["a"]["type"] = "H";
    document["version"] = 4;

    form.resetToMap(document);

    QCOMPARE(form.map()["version"].asInt(), 3);
    QCOMPARE(form.map()["eeprom_map"]["a"]["unit"].asString(), std::string("mm"));
    QCOMPARE(form.map()["eeprom_map"]["a"]["type"].asString(), std::string("B"));
    QCOMPARE(form.map()["eeprom_map"]["a"]["value"][0].asInt(), 7);
    QCOMPARE(form.changedCount(), 0);
    // What was not taken is not as it was read.
    QVERIFY(form.isModified());
}

void tst_EepromGramaReset::refusesAnotherStructure_data()
{
    QTest::addColumn<QByteArray>("present");
    QTest::addColumn<QByteArray>("other");
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const char* name, const char* present, const char* other,
                        const char* text) {
        QTest::newRow(name) << QByteArray(present) << QByteArray(other) << QByteArray(text);
    };
    const char leaf[] = R"("x": {"offset": 0, "type": "B", "value": [1]})";
    row("a leaf for a group", R"("x": {})", leaf, "Leafiness mismatch");
    row("a group for a leaf", leaf, R"("x": {"type": "B", "value": [1]})", "Leafiness mismatch");
    row("null for a leaf", leaf, R"("x": null)", "Leafiness mismatch");
    row("more values", leaf, R"("x": {"offset": 0, "type": "BB", "value": [1, 2]})",
        "Value size mismatch");
    row("no value", leaf, R"("x": {"offset": 0, "type": "B", "value": []})", "Value size mismatch");
    row("a number for an array", leaf, R"("x": {"offset": 0, "type": "B", "value": 1})",
        "Value size mismatch");
    row("an empty array for a number", R"("x": {"offset": 0, "type": "B", "value": 1})",
        R"("x": {"offset": 0, "type": "B", "value": []})", "Value size mismatch");
    row("an object for an array", leaf, R"("x": {"offset": 0, "type": "B", "value": {"a": 1}})",
        "Value size mismatch");
    row("an object for an object", R"("x": {"offset": 0, "type": "B", "value": {"a": 1}})",
        R"("x": {"offset": 0, "type": "B", "value": {"a": 1}})", "Value size mismatch");
    row("a number for an object", R"("x": {})", R"("x": 5)", "Objectiness mismatch");
    row("an object for a number", R"("x": 5)", R"("x": {})", "Objectiness mismatch");
    row("an entry more", R"("x": {})", R"("x": {}, "y": {})", "Member size mismatch");
    row("an entry less", R"("x": {}, "y": {})", R"("x": {})", "Member size mismatch");
    row("an entry of another name", R"("x": {})", R"("y": {})", "Member name mismatch");
    row("a scalar for another", R"("x": 5)", R"("x": "text")", "nothing thrown");
    row("an array for a scalar", R"("x": 5)", R"("x": [5, 6])", "nothing thrown");
    row("a number for a number as values", R"("x": {"offset": 0, "type": "B", "value": 1})",
        R"("x": {"offset": 0, "type": "B", "value": "a"})", "nothing thrown");
}

void tst_EepromGramaReset::refusesAnotherStructure()
{
    TestLog log;
    log.allowErrors("Invalid type of value");
    QFETCH(QByteArray, present);
    QFETCH(QByteArray, other);
    QFETCH(QByteArray, text);
    const Json::Value document = documentOf(present);
    EepromGrama form(document);
    QSignalSpy resets(&form, &EepromGrama::mapReset);

    if (text != "nothing thrown")
        log.expectError(text.constData());
    QCOMPARE(thrownText([&] { form.resetToMap(documentOf(other)); }), text.toStdString());
    QCOMPARE(resets.count(), 1);
    QVERIFY(form.map() == document);
    QCOMPARE(form.isModified(), text == "nothing thrown");

    resets.clear();
    QCOMPARE(thrownText([&] { form.loadEdits(documentOf(other)); }), text.toStdString());
    QCOMPARE(resets.count(), text == "nothing thrown" ? 1 : 0);
    QVERIFY(form.map() == document);
}

void tst_EepromGramaReset::keepsWhatWasTakenBeforeTheFailure_data()
{
    QTest::addColumn<QByteArray>("other");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("a group of another name")
        << QByteArray(R"("bb": {"sub_map": {}})") << QByteArray("Member name mismatch");
    QTest::newRow("an entry more in a group")
        << QByteArray(R"("b": {"sub_map": {"d": {"offset": 0, "type": "B", "value": [1]}}})")
        << QByteArray("Member size mismatch");
}

void tst_EepromGramaReset::keepsWhatWasTakenBeforeTheFailure()
{
    TestLog log;
    QFETCH(QByteArray, other);
    QFETCH(QByteArray, text);
    EepromGrama form(
        documentOf(R"("a": {"offset": 0, "type": "B", "value": [1]}, "b": {"sub_map": {}},
                      "c": {"offset": 0, "type": "B", "value": [1]})"));
    const Json::Value document =
        documentOf(R"("a": {"offset": 0, "type": "B", "value": [2]},)" + other +
                   R"(, "c": {"offset": 0, "type": "B", "value": [2]})");
    QList<bool> modified;
    connect(&form, &EepromGrama::mapReset, this, [&] { modified.append(form.isModified()); });

    log.expectError(text.constData());
    QCOMPARE(thrownText([&] { form.resetToMap(document); }), text.toStdString());

    QCOMPARE(boxOf(form, "A")->value(), 2.0);
    QCOMPARE(boxOf(form, "C")->value(), 1.0);
    QVERIFY(form.isModified());
    QCOMPARE(modified, QList<bool>{true});
    QCOMPARE(form.changedCount(), 1);
    QVERIFY(isMarked(form, "A"));
    QVERIFY(!isMarked(form, "C"));
    QCOMPARE(log.sink().entries().back().file,
             std::string("src\\onboard_preferences\\eeprom_grama"));
}

void tst_EepromGramaReset::isUnmodifiedAfterAResetToOddNumbers_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("type");

    using Limits = std::numeric_limits<double>;
    QTest::newRow("not a number") << Limits::quiet_NaN() << QByteArray("d");
    QTest::newRow("not a number, without an editor") << Limits::quiet_NaN() << QByteArray("x");
    QTest::newRow("infinity") << Limits::infinity() << QByteArray("f");
    QTest::newRow("minus infinity") << -Limits::infinity() << QByteArray("d");
    QTest::newRow("the smallest number") << Limits::denorm_min() << QByteArray("d");
}

void tst_EepromGramaReset::isUnmodifiedAfterAResetToOddNumbers()
{
    TestLog log;
    log.allowErrors("Invalid type: x");
    QFETCH(double, number);
    QFETCH(QByteArray, type);
    const Json::Value plain =
        documentOf("\"e\": {\"offset\": 0, \"type\": \"" + type + "\", \"value\": [1.5]}");
    Json::Value odd = plain;
    valuesOf(odd, "e")[0] = number;
    EepromGrama form(plain);

    form.resetToMap(odd);
    QVERIFY(!form.isModified());
    QCOMPARE(form.changedCount(), 0);
    form.loadEdits(odd);
    QVERIFY(!form.isModified());
    form.resetToMap(plain);
    QVERIFY(!form.isModified());
    QVERIFY(form.map() == plain);
}

void tst_EepromGramaReset::takesAMapThatLooksLikeAnEntry()
{
    TestLog log;
    const QByteArray entry = R"({"offset": 0, "type": "B", "value": [1]})";
    const Json::Value document = parse("{\"eeprom_map\": {\"offset\": " + entry +
                                       ", \"type\": " + entry + ", \"value\": " + entry + "}}");
    EepromGrama form(document);
    QCOMPARE(FormRows(form).all(), words("Offset|--|Type|--|Value|--"));
    boxOf(form, "Type")->setValue(7);
    QCOMPARE(form.changedCount(), 1);

    // Its "value" is no array, and the map counts as one entry.
    log.expectError("Value size mismatch");
    QCOMPARE(thrownText([&] { form.resetToMap(document); }), std::string("Value size mismatch"));
    QCOMPARE(thrownText([&] { form.loadEdits(document); }), std::string("Value size mismatch"));
    QVERIFY(form.isModified());
    QCOMPARE(boxOf(form, "Type")->value(), 7.0);
}

void tst_EepromGramaReset::takesChildrenThatLookLikeAnEntry()
{
    TestLog log;
    const auto document = [](const char* own, const char* child) {
        return documentOf(QByteArray(R"("g": {"sub_map": {"offset": 0, "type": "B", "value": [)") +
                          own + R"(], "z": {"offset": 0, "type": "B", "value": [)" + child +
                          "]}}}");
    };
    EepromGrama form(document("1", "1"));
    QCOMPARE(FormRows(form).all(), words("G|Z|--|Value|--|Type|--|--"));
    form.resetToMap(document("1", "1"));
    QVERIFY(!form.isModified());

    // Only what such an entry holds is taken; its children keep their values, as edits.
    form.resetToMap(document("2", "2"));
    QVERIFY(form.map() == document("2", "1"));
    QCOMPARE(boxOf(form, "Z")->value(), 1.0);
    QVERIFY(form.isModified());

    boxOf(form, "Z")->setValue(2);
    QVERIFY(form.map() == document("2", "2"));
    form.resetToMap(document("2", "2"));
    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::isUnmodifiedAgainAfterAFailure()
{
    TestLog log;
    const Json::Value document = documentOf(R"("a": {"offset": 0, "type": "B", "value": [1]})");
    EepromGrama form(document);

    log.expectError("Member size mismatch");
    QCOMPARE(thrownText([&] {
                 form.resetToMap(documentOf(R"("a": {"offset": 0, "type": "B", "value": [2]},
                                               "b": {})"));
             }),
             std::string("Member size mismatch"));
    QVERIFY(!form.isModified());

    form.resetToMap(document);
    QVERIFY(!form.isModified());
    QCOMPARE(boxOf(form, "A")->value(), 1.0);
}

void tst_EepromGramaReset::resetsAlsoWhatHasNoRow()
{
    TestLog log;
    const auto document = [](int hidden, bool extra) {
        const QByteArray value = QByteArray::number(hidden);
        return documentOf(R"("g": {"sub_map": {"offset": {"offset": 0, "type": "B", "value": [)" +
                          value + "]}}}" + (extra ? R"(, "z": {})" : ""));
    };
    EepromGrama form(document(1, false));
    QCOMPARE(FormRows(form).all(), words("G|--"));

    form.resetToMap(document(2, false));
    QVERIFY(!form.isModified());

    form.loadEdits(document(3, false));
    QVERIFY(form.isModified());
    QCOMPARE(form.changedCount(), 0);
    QVERIFY(form.map() == document(3, false));

    form.resetToMap(document(3, false));
    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::survivesItsDestructionInTheReset()
{
    TestLog log;
    QPointer<EepromGrama> form(new EepromGrama(documentOf(kEntries)));
    form->setShowChangedOnly(true);
    connect(form, &EepromGrama::mapReset, this, [form] { delete form.data(); });

    form->resetToMap(changedDocument());

    QVERIFY(!form);
}

void tst_EepromGramaReset::marksWhatIsChanged()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));
    QVERIFY(!isMarked(form, "A"));
    QCOMPARE(labelOf(form, "A")->toolTip(), QString());
    const QImage plain = labelOf(form, "A")->grab().toImage();

    boxOf(form, "A")->setValue(8);

    QVERIFY(isMarked(form, "A"));
    QVERIFY(!isMarked(form, "G"));
    QCOMPARE(labelOf(form, "A")->text(), QStringLiteral("A"));
    QCOMPARE(labelOf(form, "A")->toolTip(), QStringLiteral("Read from the machine: 1 mm"));
    QVERIFY(labelOf(form, "A")->grab().toImage() != plain);

    boxOf(form, "A")->setValue(1);
    QVERIFY(!isMarked(form, "A"));
    QCOMPARE(labelOf(form, "A")->toolTip(), QString());

    boxOf(form, "A")->setValue(7);
    form.resetToMap(changedDocument());
    QVERIFY(!isMarked(form, "A"));
}

void tst_EepromGramaReset::marksAnEntryUntilAllItsValuesAreBack()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));
    const auto boxes = editorOf(form, "C")->findChildren<JsonSpinBox*>();

    boxes[0]->setValue(8);
    boxes[1]->setValue(9);
    QCOMPARE(form.changedCount(), 1);
    boxes[0]->setValue(1.5);
    QVERIFY(isMarked(form, "C"));
    boxes[1]->setValue(2.5);
    QVERIFY(!isMarked(form, "C"));
    QCOMPARE(form.changedCount(), 0);

    // One value goes back while the other one changes.
    boxes[0]->setValue(8);
    Json::Value document = documentOf(kEntries);
    document["eeprom_map"]["b"]["sub_map"]["c"]["value"][1] = 9.5;
    form.loadEdits(document);
    QVERIFY(isMarked(form, "C"));
    QCOMPARE(form.changedCount(), 1);
    form.resetToMap(document);
    QVERIFY(!isMarked(form, "C"));
    boxes[1]->setValue(2.5);
    QCOMPARE(labelOf(form, "C")->toolTip(), QStringLiteral("Read from the machine: 1.5, 9.5"));
}

void tst_EepromGramaReset::tellsTheValueRead_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* entry, const char* change, const char* text) {
        QTest::newRow(name) << QByteArray(entry) << QByteArray(change) << QString::fromUtf8(text);
    };
    row("number with a unit", R"("type": "i", "value": [-5], "unit": "°C")", "[1]", "-5 °C");
    row("unsigned", R"("type": "I", "value": [3000000000])", "[1]", "3,000,000,000");
    row("real", R"("type": "f", "value": [0.1])", "[1]", "0.1");
    row("more digits than are shown", R"("type": "d", "value": [0.12345678])", "[1]", "0.12345678");
    row("on", R"("type": "B", "value": [1], "constraints": "l,0,1")", "[0]", "Enabled");
    row("off", R"("type": "B", "value": [0], "constraints": "l,1,0")", "[1]", "Disabled");
    row("axes", R"("type": "B", "value": [5], "axis_expand": "True")", "[0]", "X, Z");
    row("no axis", R"("type": "B", "value": [32], "axis_expand": "True")", "[0]", "none");
    row("text", R"("type": "s", "value": ["old one"])", R"(["new"])", "old one");
    row("several", R"("type": "BBB", "value": [1, 2, 3], "unit": "mm")", "[1, 2, 4]", "1, 2, 3 mm");
}

void tst_EepromGramaReset::tellsTheValueRead()
{
    TestLog log;
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, change);
    QFETCH(QString, text);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    Json::Value document = documentOf("\"e\": {\"offset\": 0, " + entry + "}");
    EepromGrama form(document);
    valuesOf(document, "e") = parse(change);

    form.loadEdits(document);

    QCOMPARE(labelOf(form, "E")->toolTip(), QStringLiteral("Read from the machine: ") + text);
    QLocale::setDefault(QLocale::c());
}

void tst_EepromGramaReset::keepsItsPlaceWhenMarked()
{
    TestLog log;
    EepromGrama form(documentOf(kEntries));
    const QSize before = labelOf(form, "A")->sizeHint();
    const QSize smallest = labelOf(form, "A")->minimumSizeHint();

    boxOf(form, "A")->setValue(8);

    QCOMPARE(labelOf(form, "A")->sizeHint(), before);
    QCOMPARE(labelOf(form, "A")->minimumSizeHint(), smallest);
}

void tst_EepromGramaReset::showsOnlyWhatIsChanged()
{
    TestLog log;
    const Json::Value document = documentOf(kEntries);
    EepromGrama form(document);
    boxOf(form, "A")->setValue(8);
    editorOf(form, "C")->findChildren<JsonSpinBox*>()[0]->setValue(8);

    form.setShowChangedOnly(true);
    QCOMPARE(FormRows(form).shown(), words("A|--|B|--|C|--"));

    form.filterByText(QStringLiteral("c"));
    QCOMPARE(FormRows(form).shown(), words("B|--|C|--"));
    form.filterByText(QString());

    // Nothing goes while one edits.
    boxOf(form, "A")->setValue(1);
    QCOMPARE(FormRows(form).shown(), words("A|--|B|--|C|--"));

    form.loadEdits(changedDocument());
    QCOMPARE(FormRows(form).shown(), words("A|--|B|D|--|C|--|E|--|F|--|G|--|H|--|K|--"));

    form.resetToMap(document);
    QCOMPARE(FormRows(form).shown(), QStringList());

    form.setShowChangedOnly(false);
    QCOMPARE(FormRows(form).shown(), words("A|--|B|D|--|C|--|E|--|F|--|G|--|H|--|K|--"));
}

void tst_EepromGramaReset::loadsEdits()
{
    TestLog log;
    const Json::Value document = documentOf(kEntries);
    EepromGrama form(document);
    QSignalSpy resets(&form, &EepromGrama::mapReset);

    form.loadEdits(changedDocument());

    QCOMPARE(resets.count(), 1);
    QVERIFY(form.map() == changedDocument());
    QVERIFY(form.isModified());
    QCOMPARE(form.changedCount(), 8);
    QCOMPARE(boxOf(form, "A")->value(), 7.0);
    QVERIFY(isMarked(form, "A"));

    form.loadEdits(document);
    QVERIFY(!form.isModified());
    QCOMPARE(form.changedCount(), 0);
}

void tst_EepromGramaReset::loadsNumbersOfAnotherKind()
{
    TestLog log;
    const Json::Value document = documentOf(kEntries);
    EepromGrama form(document);
    Json::Value file = document;
    // As a file may have them that was written by hand.
    valuesOf(file, "h")[0] = 1;
    valuesOf(file, "g")[0] = 5;
    valuesOf(file, "a")[0] = 1U;
    file["eeprom_map"]["h"]["type"] = "s";

    form.loadEdits(file);

    const Json::Value map = form.map();
    QCOMPARE(map["eeprom_map"]["h"]["value"][0].type(), Json::realValue);
    QCOMPARE(map["eeprom_map"]["g"]["value"][0].type(), Json::uintValue);
    QCOMPARE(form.changedCount(), 2);
    QCOMPARE(map["eeprom_map"]["h"]["type"].asString(), std::string("H"));
}

void tst_EepromGramaReset::loadsChoicesHoweverTheyAreWritten()
{
    TestLog log;
    Json::Value document =
        documentOf(R"("e": {"offset": 0, "type": "B", "value": [1], "constraints": "l, 1, 2,03"})");
    EepromGrama form(document);

    for (const int choice : {2, 3}) {
        valuesOf(document, "e")[0] = choice;
        form.loadEdits(document);
        QVERIFY(form.map() == document);
        QCOMPARE(qobject_cast<EepromComboBox*>(editorOf(form, "E"))->currentIndex(), choice - 1);
    }
}

void tst_EepromGramaReset::refusesToLoad_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const char* name, const char* entry, const char* value, const char* text) {
        QTest::newRow(name) << QByteArray(entry) << QByteArray(value) << QByteArray(text);
    };
    row("text for a number", "a", R"("1")", "Wrong type of value: A");
    row("a fraction for an integer", "a", "1.5", "Wrong type of value: A");
    row("a boolean for a number", "a", "true", "Wrong type of value: A");
    row("null", "a", "null", "Wrong type of value: A");
    row("an array", "a", "[1]", "Wrong type of value: A");
    row("an object", "a", R"({"x": 1})", "Wrong type of value: A");
    row("more than a byte", "a", "256", "Value out of range: A");
    row("less than a byte", "a", "-1", "Value out of range: A");
    row("a negative number for an unsigned one", "g", "-1", "Wrong type of value: G");
    row("more than 32 bits", "g", "4294967297", "Value out of range: G");
    row("a fixed-point number that is too large", "h", "128", "Value out of range: H");
    row("none of the choices", "k", "4", "Value out of range: K");
    row("neither on nor off", "e", "2", "Value out of range: E");
    row("text for a choice", "k", R"("1")", "Wrong type of value: K");
    row("text for axes", "f", R"("X")", "Wrong type of value: F");
}

void tst_EepromGramaReset::refusesToLoad()
{
    TestLog log;
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, text);
    EepromGrama form(documentOf(kEntries));
    boxOf(form, "A")->setValue(9);
    const Json::Value before = form.map();
    QSignalSpy resets(&form, &EepromGrama::mapReset);
    QSignalSpy updated(&form, &EepromGrama::updated);
    Json::Value file = changedDocument();
    valuesOf(file, entry.constData())[0] = parse("[" + value + "]")[0];

    QCOMPARE(thrownText([&] { form.loadEdits(file); }), text.toStdString());

    QVERIFY(form.map() == before);
    QCOMPARE(form.changedCount(), 1);
    QCOMPARE(resets.count(), 0);
    QCOMPARE(updated.count(), 0);
    QCOMPARE(boxOf(form, "A")->value(), 9.0);
}

void tst_EepromGramaReset::loadsWhatTheMachineHasWhateverItIs()
{
    TestLog log;
    log.allowErrors("JsonSpinBox requires numeric input");
    const Json::Value document = documentOf(R"("a": {"offset": 0, "type": "B", "value": [4000]},
                      "b": {"offset": 0, "type": "B", "value": ["odd"]},
                      "c": {"offset": 0, "type": "B", "value": [9], "constraints": "l,0,1"})");
    EepromGrama form(document);

    form.loadEdits(document);

    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::refusesChangesOfEntriesThatCannotBeEdited()
{
    TestLog log;
    log.allowErrors("Invalid type: x");
    Json::Value document = documentOf(R"("odd_one": {"offset": 0, "type": "x", "value": [1]})");
    EepromGrama form(document);
    form.loadEdits(document);
    valuesOf(document, "odd_one")[0] = 2;

    QCOMPARE(thrownText([&] { form.loadEdits(document); }),
             std::string("Invalid type: x: Odd One"));

    form.resetToMap(document);
    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::isUnmodifiedWhileItsEditorsAreReset()
{
    TestLog log;
    QByteArray entries;
    for (int i = 0; i < 1000; ++i)
        entries +=
            "\"e" + QByteArray::number(i) + R"(": {"offset": 0, "type": "B", "value": [1]},)";
    entries.chop(1);
    const Json::Value document = documentOf(entries);
    EepromGrama form(document);
    // As a dialog does it: every editor tells of its reset.
    int modified = 0;
    connect(&form, &EepromGrama::updated, this, [&] { modified += form.isModified() ? 1 : 0; });
    QSignalSpy updated(&form, &EepromGrama::updated);

    form.resetToMap(document);

    QCOMPARE(updated.count(), 1000);
    QCOMPARE(modified, 0);
}

void tst_EepromGramaReset::isModifiedExactlyWhenTheMapsDiffer()
{
    TestLog log;
    log.allowErrors("mismatch");
    const Json::Value first = documentOf(kEntries);
    const Json::Value second = changedDocument();
    for (quint32 seed = 1; seed <= 20; ++seed) {
        QRandomGenerator random(seed);
        Json::Value reference = first;
        EepromGrama form(first);
        for (int step = 0; step < 30; ++step) {
            Json::Value document = random.bounded(2) ? first : second;
            switch (random.bounded(5)) {
            case 0:
                form.resetToMap(document);
                reference = document;
                break;
            case 1:
                document["zzz"] = 1;
                thrownText([&] { form.resetToMap(document); });
                break;
            case 2:
                document["eeprom_map"]["z"] = 1;
                document["eeprom_map"].removeMember("k");
                thrownText([&] { form.resetToMap(document); });
                break;
            case 3:
                form.loadEdits(document);
                break;
            default:
                boxOf(form, "A")->setValue(random.bounded(3) * 3 + 1);
                boxOf(form, "H")->setValue(random.bounded(2) ? 1.25 : 5.5);
            }
            QCOMPARE(form.isModified(), form.map() != reference);
        }
    }
}

void tst_EepromGramaReset::takesDeepDocuments()
{
    TestLog log;
    constexpr int kGroups = 200;
    Json::Value document(Json::objectValue);
    Json::Value* group = &document["eeprom_map"]["top"];
    for (int level = 0; level < kGroups; ++level)
        group = &(*group)["sub_map"]["g"];
    (*group)["offset"] = 0;
    (*group)["type"] = "B";
    (*group)["value"][0] = 1;

    EepromGrama form(document);
    QCOMPARE(FormRows(form).layout()->rowCount(), 2 * (kGroups + 1));
    form.filterByText(QStringLiteral("top"));
    (*group)["value"][0] = 2;
    form.loadEdits(document);
    QVERIFY(form.isModified());
    form.resetToMap(document);
    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::takesManyEntries()
{
    TestLog log;
    constexpr int kEntryCount = 5000;
    Json::Value document(Json::objectValue);
    for (int i = 0; i < kEntryCount; ++i) {
        Json::Value& entry = document["eeprom_map"]["e" + std::to_string(i)];
        entry["offset"] = i;
        entry["type"] = "B";
        entry["value"][0] = i % 200;
    }

    EepromGrama form(document);
    QCOMPARE(FormRows(form).layout()->rowCount(), 2 * kEntryCount);
    valuesOf(document, "e4999")[0] = 7;
    form.loadEdits(document);
    QCOMPARE(form.changedCount(), 1);
    form.setShowChangedOnly(true);
    QCOMPARE(FormRows(form).shown(), words("E4999|--"));
    form.resetToMap(document);
    QVERIFY(!form.isModified());
}

void tst_EepromGramaReset::takesLargeDocuments()
{
    TestLog log;
    log.expectError("Too many values");
    log.expectError("Too many allowed values");
    Json::Value document = documentOf(kEntries);
    Json::Value& many = document["eeprom_map"]["many"];
    many["offset"] = 0;
    many["type"] = std::string(1001, 'B');
    for (Json::ArrayIndex i = 0; i < 1001; ++i)
        many["value"][i] = 1;
    Json::Value& choices = document["eeprom_map"]["choices"];
    choices["offset"] = 0;
    choices["type"] = "B";
    choices["value"][0] = 1;
    std::string list = "l";
    for (int i = 0; i < 1001; ++i)
        list += ",1";
    choices["constraints"] = list;
    choices["tooltip"] = std::string(1 << 20, 'x');

    EepromGrama form(document);

    QCOMPARE(qobject_cast<QLabel*>(editorOf(form, "Many"))->text(),
             QStringLiteral("Too many values"));
    const QLayout* field = fieldOf(form, "Choices")->layout();
    QCOMPARE(qobject_cast<QLabel*>(field->itemAt(1)->widget())->text().size(), 4001);
    QVERIFY(form.map() == document);
}

void tst_EepromGramaReset::takesHostileDocuments()
{
    TestLog log;
    log.allowErrors("");
    const QList<QByteArray> values = {
        "null",  "true", "0",   "-1", "1.5",     "1e300",  "\"\"",           "\"l\"",
        "\"B\"", "[]",   "[1]", "{}", "[[[1]]]", "[null]", R"(["\u0000ä"])", R"({"sub_map": []})"};
    const QList<QByteArray> members = {"offset",         "type",    "value",
                                       "floating_point", "unit",    "axis_expand",
                                       "constraints",    "tooltip", "sub_map"};
    for (quint32 seed = 1; seed <= 300; ++seed) {
        QRandomGenerator random(seed);
        QByteArrayList entries;
        for (int i = 0; i < 6; ++i) {
            QByteArrayList entry;
            for (const QByteArray& member : members) {
                if (random.bounded(4) == 0)
                    continue;
                const bool fits = random.bounded(3) > 0;
                const QByteArray value = fits && member == "type" ? QByteArray("\"B\"")
                                         : fits && member == "value"
                                             ? QByteArray("[1]")
                                             : values[random.bounded(values.size())];
                entry.append('"' + member + "\": " + value);
            }
            entries.append('"' + QByteArray::number(i) + "\": {" + entry.join(',') + '}');
        }
        const Json::Value document = documentOf(entries.join(','));
        EepromGrama form(document);
        QVERIFY(form.map() == document);
        QVERIFY(!form.isModified());
        thrownText([&] { form.resetToMap(document); });
        thrownText([&] { form.loadEdits(document); });
        form.filterByText(QStringLiteral("a"));
        QVERIFY(form.map() == document);
    }
}

QTEST_MAIN(tst_EepromGramaReset)
#include "tst_eeprom_grama_reset.moc"
