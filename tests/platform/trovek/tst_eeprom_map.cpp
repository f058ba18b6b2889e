#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/eeprom_map.h>

#include <QTest>

#include <cfloat>
#include <cmath>
#include <limits>

using trovek::EepromMap;

namespace {

Json::Value json(const QByteArray& text)
{
    Json::Value value;
    if (!rpcwire::parseJson(std::string_view(text.constData(), std::size_t(text.size())), &value,
                            nullptr))
        qFatal("Test data is not JSON");
    return value;
}

Json::Value document()
{
    return json(R"({
        "version": 3,
        "eeprom_map": {
            "toolhead_count": {"offset": "0", "type": "B", "value": [2]},
            "name": {"offset": "1", "type": "s", "value": ["left"]},
            "steps": {"offset": "2", "type": "ff", "value": [1.5, 2]},
            "wide": {"offset": "3", "type": "I", "value": [4294967295]},
            "acceleration": {"offset": "4", "sub_map": {
                "rate": {"offset": "0", "type": "hh", "value": [-5, 7]},
                "inner": {"sub_map": {
                    "on": {"offset": "0", "type": "B", "value": [1]}}}}},
            "fixed": {"offset": "5", "type": "H", "floating_point": "True", "value": [0.25]},
            "mixed": {"offset": "6", "type": "BB", "value": [1, "x"]},
            "untyped": {"offset": "7", "value": [1]},
            "scalar": {"offset": "8", "type": "B", "value": 1},
            "text": "no entry"
        }
    })");
}

} // namespace

class tst_EepromMap : public QObject
{
    Q_OBJECT

private slots:
    void theDocumentIsKept();
    void readsByKind();
    void whatIsNotThereIsNull_data();
    void whatIsNotThereIsNull();
    void documentsOfAnyShapeAreHarmless_data();
    void documentsOfAnyShapeAreHarmless();
    void pointersOfOtherPathsStay();
    void writesIntoTheDocument();
    void onlyEntriesAreWritten();
    void theServicesValuesGetTheirKind_data();
    void theServicesValuesGetTheirKind();
    void nestedValuesGetTheirKind();
    void everyElementGetsItsKind();
    void aSubMapThatIsNoObjectIsLeftAlone();
    void realsKeepTheirPointAndTheirDigits_data();
    void realsKeepTheirPointAndTheirDigits();
    void hugeAndOddNumbersAreLeftAlone();
    void aDeepDocumentIsHarmless();
};

void tst_EepromMap::theDocumentIsKept()
{
    QVERIFY(EepromMap(document()).getEepromMap() == document());
}

void tst_EepromMap::readsByKind()
{
    const EepromMap map(document());
    QCOMPARE(*map.getInt("toolhead_count"), std::vector<int>{2});
    QCOMPARE(*map.getString("name"), std::vector<std::string>{"left"});
    QCOMPARE(*map.getFloat("steps"), (std::vector<float>{1.5F, 2.0F}));
    QCOMPARE(*map.getInt("acceleration.rate"), (std::vector<int>{-5, 7}));
    QCOMPARE(*map.getInt("acceleration.inner.on"), std::vector<int>{1});
    QCOMPARE(*map.getFloat("fixed"), std::vector<float>{0.25F});
}

void tst_EepromMap::whatIsNotThereIsNull_data()
{
    QTest::addColumn<QByteArray>("path");
    for (const char* const path :
         {"missing", "", ".", "acceleration", "acceleration.", "acceleration.missing",
          "toolhead_count.x", "text", "text.x", "mixed", "untyped", "scalar", "rate",
          "eeprom_map.toolhead_count", "version", "wide"})
        QTest::newRow(*path ? path : "empty") << QByteArray(path);
}

void tst_EepromMap::whatIsNotThereIsNull()
{
    QFETCH(QByteArray, path);
    const EepromMap map(document());
    QVERIFY(!map.getInt(path.toStdString()));
    QVERIFY(!map.getFloat(path.toStdString()));
    QVERIFY(!map.getString(path.toStdString()));
    QVERIFY(!map.getFloat("toolhead_count"));
    QVERIFY(!map.getString("toolhead_count"));
    QVERIFY(!map.getInt("steps"));
    QVERIFY(!map.getInt("fixed"));
    QVERIFY(!map.getInt("name"));
}

void tst_EepromMap::documentsOfAnyShapeAreHarmless_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char* const text :
         {"null", "5", "[]", "\"x\"", "{}", R"({"eeprom_map": 5})", R"({"eeprom_map": []})",
          R"({"eeprom_map": {"a": null}})", R"({"eeprom_map": {"a": {"type": 5, "value": [1]}}})",
          R"({"eeprom_map": {"a": {"type": "", "value": []}}})",
          R"({"eeprom_map": {"a": {"type": "x", "value": [1]}}})",
          R"({"eeprom_map": {"a": {"sub_map": []}}})", R"({"eeprom_map": {"a": [[]]}})",
          R"({"eeprom_map": {"a": {"sub_map": 5, "type": "B", "value": {}}}})",
          R"({"eeprom_map": {"a": {"sub_map": {"b": 5, "c": [], "d": null}}}})",
          R"({"eeprom_map": {"a": {"type": [], "value": [[[]], {}, null, true]}}})",
          R"({"eeprom_map": {"a": {"type": "H", "floating_point": {}, "value": "True"}}})",
          R"({"eeprom_map": {"a": {"type": "I", "constraints": [], "value": null}}})"})
        QTest::newRow(text) << QByteArray(text);
}

void tst_EepromMap::documentsOfAnyShapeAreHarmless()
{
    QFETCH(QByteArray, text);
    EepromMap map = EepromMap::fromService(json(text));
    QVERIFY(map.getEepromMap() == json(text));
    QVERIFY(!map.getInt("a"));
    QVERIFY(!map.getInt("a.b"));
    QCOMPARE(thrownText([&] { map.setInt("a", {1}); }), std::string("No such EEPROM entry: a"));
    QVERIFY(map.getEepromMap() == json(text));
}

void tst_EepromMap::pointersOfOtherPathsStay()
{
    const EepromMap map(document());
    const std::vector<int>* const count = map.getInt("toolhead_count");
    const std::vector<int>* const rate = map.getInt("acceleration.rate");
    QVERIFY(count != rate);
    QCOMPARE(*count, std::vector<int>{2});
    QCOMPARE(map.getInt("toolhead_count"), count);
}

void tst_EepromMap::writesIntoTheDocument()
{
    EepromMap map(document());
    map.setInt("acceleration.rate", {1, 2});
    map.setFloat("steps", {0.5F, 3.0F});
    map.setString("name", {"right"});
    map.setInt("wide", {7});

    Json::Value expected = document();
    expected["eeprom_map"]["acceleration"]["sub_map"]["rate"]["value"] = json("[1, 2]");
    expected["eeprom_map"]["steps"]["value"] = json("[0.5, 3.0]");
    expected["eeprom_map"]["name"]["value"] = json(R"(["right"])");
    expected["eeprom_map"]["wide"]["value"][0] = Json::UInt64(7);
    QVERIFY(map.getEepromMap() == expected);
    QCOMPARE(*map.getInt("acceleration.rate"), (std::vector<int>{1, 2}));
}

void tst_EepromMap::onlyEntriesAreWritten()
{
    EepromMap map(document());
    for (const char* const path : {"missing", "acceleration", "text", "untyped", ""}) {
        const std::string expected = std::string("No such EEPROM entry: ") + path;
        QCOMPARE(thrownText([&] { map.setInt(path, {1}); }), expected);
        QCOMPARE(thrownText([&] { map.setFloat(path, {1}); }), expected);
        QCOMPARE(thrownText([&] { map.setString(path, {"a"}); }), expected);
    }
    QVERIFY(map.getEepromMap() == document());
}

void tst_EepromMap::theServicesValuesGetTheirKind_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<int>("kind");

    const auto row = [](const char* name, const char* entry, const char* element,
                        Json::ValueType kind) {
        QTest::newRow(name) << QByteArray(entry) << QByteArray(element) << int(kind);
    };
    row("whole float", R"("type": "f")", "2", Json::realValue);
    row("whole double", R"("type": "d")", "2", Json::realValue);
    row("fixed point", R"("type": "H", "floating_point": "True")", "2", Json::realValue);
    row("fixed point off by a truth value", R"("type": "H", "floating_point": true)", "2",
        Json::intValue);
    row("unsigned 16 bit", R"("type": "H")", "65535", Json::intValue);
    row("unsigned 32 bit", R"("type": "I")", "5", Json::uintValue);
    row("unsigned 32 bit, written as a real", R"("type": "I")", "5.0", Json::uintValue);
    row("unsigned 32 bit, negative all the same", R"("type": "I")", "-5", Json::intValue);
    row("unsigned 32 bit with a list", R"("type": "I", "constraints": "l,0,5")", "5",
        Json::intValue);
    row("unsigned 32 bit with a range", R"("type": "I", "constraints": "m,0,5")", "5",
        Json::uintValue);
    row("unsigned 32 bit with an odd constraint", R"("type": "I", "constraints": 5)", "5",
        Json::uintValue);
    row("unsigned 8 bit", R"("type": "B")", "255", Json::intValue);
    row("signed, written as a real", R"("type": "b")", "-3.0", Json::intValue);
    row("signed with a fraction stays", R"("type": "b")", "3.5", Json::realValue);
    row("signed 64 bit", R"("type": "q")", "9223372036854775807", Json::intValue);
    row("signed 64 bit too large stays", R"("type": "q")", "9223372036854775808", Json::uintValue);
    row("text", R"("type": "s")", "\"5\"", Json::stringValue);
    row("text where a number belongs", R"("type": "B")", "\"5\"", Json::stringValue);
    row("truth value where a number belongs", R"("type": "B")", "true", Json::booleanValue);
    row("nothing where a number belongs", R"("type": "f")", "null", Json::nullValue);
    row("unknown type", R"("type": "x")", "2.0", Json::realValue);
}

void tst_EepromMap::theServicesValuesGetTheirKind()
{
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, element);
    QFETCH(int, kind);
    const Json::Value given = json(R"({"eeprom_map": {"a": {"offset": "0", )" + entry +
                                   R"(, "value": [)" + element + "]}}}");
    const Json::Value taken = EepromMap::fromService(given).getEepromMap();
    const Json::Value& value = taken["eeprom_map"]["a"]["value"][0];
    QCOMPARE(int(value.type()), kind);
    if (value.isNumeric())
        QCOMPARE(value.asDouble(), json(element).asDouble());
    // The same values written otherwise make the same document.
    QVERIFY(EepromMap::fromService(taken).getEepromMap() == taken);
}

void tst_EepromMap::nestedValuesGetTheirKind()
{
    const EepromMap map = EepromMap::fromService(json(R"({"eeprom_map": {"a": {"sub_map": {
        "b": {"sub_map": {"c": {"offset": "0", "type": "ff", "value": [1, 2]}}}}}}})"));
    const Json::Value& values =
        map.getEepromMap()["eeprom_map"]["a"]["sub_map"]["b"]["sub_map"]["c"]["value"];
    QCOMPARE(int(values[0].type()), int(Json::realValue));
    QCOMPARE(int(values[1].type()), int(Json::realValue));
}

void tst_EepromMap::everyElementGetsItsKind()
{
    const EepromMap map = EepromMap::fromService(json(R"({"eeprom_map": {
        "a": {"offset": "0", "type": "ddd", "value": [1, 2.5, "x", 3]},
        "b": {"offset": "0", "type": "II", "value": [1.0, 2]}}})"));
    const Json::Value& entries = map.getEepromMap()["eeprom_map"];
    QCOMPARE(int(entries["a"]["value"][0].type()), int(Json::realValue));
    QCOMPARE(int(entries["a"]["value"][2].type()), int(Json::stringValue));
    // One more than the type tells: the entry's kind all the same.
    QCOMPARE(int(entries["a"]["value"][3].type()), int(Json::realValue));
    QCOMPARE(int(entries["b"]["value"][0].type()), int(Json::uintValue));
    QCOMPARE(int(entries["b"]["value"][1].type()), int(Json::uintValue));
}

void tst_EepromMap::aSubMapThatIsNoObjectIsLeftAlone()
{
    // An entry with values and a group of its own is both.
    const EepromMap map = EepromMap::fromService(json(R"({"eeprom_map": {
        "a": {"sub_map": [{"offset": "0", "type": "f", "value": [1]}]},
        "b": {"offset": "0", "type": "f", "value": [1],
              "sub_map": {"c": {"offset": "0", "type": "f", "value": [1]}}}}})"));
    const Json::Value& entries = map.getEepromMap()["eeprom_map"];
    QCOMPARE(int(entries["a"]["sub_map"][0]["value"][0].type()), int(Json::intValue));
    QCOMPARE(int(entries["b"]["value"][0].type()), int(Json::realValue));
    QCOMPARE(int(entries["b"]["sub_map"]["c"]["value"][0].type()), int(Json::realValue));
}

void tst_EepromMap::realsKeepTheirPointAndTheirDigits_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("written");

    const auto row = [](const char* type, const char* given, const char* written) {
        QTest::addRow("%s %s", type, given)
            << QByteArray(type) << QByteArray(given) << QByteArray(written);
    };
    for (const char* const type : {R"("f")", R"("d")", R"("H", "floating_point": "True")"}) {
        row(type, "5", "5.0");
        row(type, "5.0", "5.0");
        row(type, "-0.0", "-0.0");
        row(type, "0", "0.0");
        row(type, "0.1", "0.10000000000000001");
        row(type, "1e2", "100.0");
        row(type, "3.141592653589793", "3.1415926535897931");
        row(type, "9007199254740993", "9007199254740992.0");
    }
    row(R"("d")", "1e300", "1.0000000000000001e+300");
    row(R"("d")", "5e-324", "4.9406564584124654e-324");
    row(R"("I")", "5.0", "5");
    row(R"("B")", "5.0", "5");
}

void tst_EepromMap::realsKeepTheirPointAndTheirDigits()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, given);
    QFETCH(QByteArray, written);
    const auto line = [](const EepromMap& map) {
        return rpcwire::toJsonLine(map.getEepromMap()["eeprom_map"]["a"]["value"]);
    };
    const EepromMap map =
        EepromMap::fromService(json(R"({"eeprom_map": {"a": {"offset": "0", "type": )" + type +
                                    R"(, "value": [)" + given + "]}}}"));

    QCOMPARE(QByteArray::fromStdString(line(map)), "[" + written + "]");

    // To the service and back: the same document, kinds and all.
    const Json::Value back =
        json(QByteArray::fromStdString(rpcwire::toJsonLine(map.getEepromMap())));
    const EepromMap again = EepromMap::fromService(back);
    QVERIFY(again.getEepromMap() == map.getEepromMap());
    QCOMPARE(line(again), line(map));
}

void tst_EepromMap::hugeAndOddNumbersAreLeftAlone()
{
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double number :
         {1e300, -1e300, 1e20, infinite, -infinite, std::numeric_limits<double>::quiet_NaN()}) {
        for (const char* const type : {"B", "I", "q", "f", "d"}) {
            Json::Value document = json(R"({"eeprom_map": {"a": {"offset": "0"}}})");
            Json::Value& entry = document["eeprom_map"]["a"];
            entry["type"] = type;
            entry["value"][0] = number;

            const EepromMap map = EepromMap::fromService(document);

            const Json::Value& value = map.getEepromMap()["eeprom_map"]["a"]["value"][0];
            QCOMPARE(int(value.type()), int(Json::realValue));
            QVERIFY(value.asDouble() == number || std::isnan(number));
            QVERIFY(!map.getInt("a"));
            const std::vector<float>* const floats = map.getFloat("a");
            QVERIFY(!floats || std::isnan(number) || std::abs(number) <= double(FLT_MAX));
        }
    }
}

void tst_EepromMap::aDeepDocumentIsHarmless()
{
    Json::Value deep = json(R"({"offset": "0", "type": "f", "value": [1]})");
    std::string path = "a";
    for (int i = 0; i < 450; ++i) {
        Json::Value group(Json::objectValue);
        group["sub_map"]["a"] = deep;
        deep = group;
        path += ".a";
    }
    Json::Value document(Json::objectValue);
    document["eeprom_map"]["a"] = deep;

    EepromMap map = EepromMap::fromService(document);

    const std::vector<float>* const values = map.getFloat(path);
    QVERIFY(values && *values == std::vector<float>{1.0F});
    map.setFloat(path, {2.0F});
    QCOMPARE(*map.getFloat(path), std::vector<float>{2.0F});
    QVERIFY(!map.getFloat(path + ".a"));
}

QTEST_GUILESS_MAIN(tst_EepromMap)
#include "tst_eeprom_map.moc"
