#include "onboard_world.h"

#include "support/thrown_text.h"

#include <service/onboard/onboard_map.h>

#include <QTest>

using namespace trovek;
using namespace trovek::service;

namespace {

std::string refusalOf(const OnboardMap& map, const Json::Value& document)
{
    return thrownText([&] { map.write(document, map.factoryImage()); });
}

} // namespace

class tst_OnboardMap : public QObject
{
    Q_OBJECT

private slots:
    void aSourceIsChecked_data();
    void aSourceIsChecked();
    void theDocumentIsTheSourceWithValues();
    void theImageHoldsValuesInTheirPlaces();
    void bytesBetweenSettingsAreLeftAlone();
    void bytesWithoutAValueAreTheFactorys();
    void aDocumentIsChecked_data();
    void aDocumentIsChecked();
    void nothingIsTakenFromADocumentButValues();
    void documentsOfAnyShapeAreHarmless_data();
    void documentsOfAnyShapeAreHarmless();
    void manyProblemsAreCounted();
    void aDeepDocumentIsHarmless();
    void anImageIsConverted();
    void theHeaderTellsWhoseImageItIs();
    void everyDamageIsSeen();
};

void tst_OnboardMap::aSourceIsChecked_data()
{
    QTest::addColumn<QByteArray>("entries");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* entries, const char* expected) {
        QTest::newRow(expected) << QByteArray(entries)
                                << QLatin1String("Onboard map: ") + QLatin1String(expected);
    };
    const auto leaf = [](const char* members, const char* expected) {
        QTest::addRow("%s: %s", members, expected)
            << QByteArray(R"({"a": {)") + members + "}}"
            << QLatin1String("Onboard map: a: ") + QLatin1String(expected);
    };
    row("5", ": a group must be an object with entries");
    row("{}", ": a group must be an object with entries");
    row(R"({"a": 5})", "a: is not an object");
    row(R"({"a": {"sub_map": {}}})", "a: a group must be an object with entries");
    row(R"({"a": {"sub_map": {"b": 5}}})", "a.b: is not an object");
    row(R"({"a": {"sub_map": {"b": {}}, "type": "B"}})",
        "a: a group has nothing but its \"sub_map\"");
    row(R"({"a b": {}})", "a b: is no name for an entry");
    row(R"({"": {}})", ": is no name for an entry");
    row(R"({"offset": {}})", "offset: is no name for an entry");
    row(R"({"sub_map": {}})", "sub_map: is no name for an entry");
    row(R"({"a": {"offset": "0x10", "type": "HH", "factory": [1, 2]},
            "b": {"offset": "0x13", "type": "B", "factory": [1]}})",
        "b: lies over a");

    const char* const kind = "\"type\" must be one letter, once for each element";
    leaf(R"("offset": "0x10", "factory": [1])", kind);
    leaf(R"("offset": "0x10", "type": "", "factory": [])", kind);
    leaf(R"("offset": "0x10", "type": "BH", "factory": [1, 2])", kind);
    leaf(R"("offset": "0x10", "type": 5, "factory": [1])", "\"type\" is not a text");
    leaf(R"("offset": "0x10", "type": "x", "factory": [1])", "\"type\" has an unknown letter");
    const char* const place = "\"offset\" must be a place behind the header, as \"0x0010\"";
    leaf(R"("type": "B", "factory": [1])", place);
    leaf(R"("offset": "16", "type": "B", "factory": [1])", place);
    leaf(R"("offset": "0x0f", "type": "B", "factory": [1])", place);
    leaf(R"("offset": "0x-10", "type": "B", "factory": [1])", place);
    leaf(R"("offset": "0xzz", "type": "B", "factory": [1])", place);
    leaf(R"("offset": 16, "type": "B", "factory": [1])", "\"offset\" is not a text");
    const char* const end = "reaches beyond the end of the memory";
    leaf(R"("offset": "0x0fff", "type": "H", "factory": [1])", end);
    leaf(R"("offset": "0x7fffffff", "type": "H", "factory": [1])", end);
    leaf(R"("offset": "0x0ff1", "type": "s", "factory": [""])", end);
    const char* const factory = "\"factory\" must be a list with a value for each element";
    leaf(R"("offset": "0x10", "type": "B")", factory);
    leaf(R"("offset": "0x10", "type": "BB", "factory": [1])", factory);
    leaf(R"("offset": "0x10", "type": "B", "factory": 1)", factory);
    leaf(R"("offset": "0x10", "type": "B", "factory": [256])",
         "the factory value must be from 0 to 255");
    leaf(R"("offset": "0x10", "type": "B", "factory": [3], "constraints": "l,1,2")",
         "the factory value must be one of 1, 2");
    const char* const form = "\"constraints\" must be \"l,...\" or \"m,...\" of a number";
    for (const char* const odd : {"l", "x,1", "1,2", "list,1"}) {
        const QByteArray members =
            R"("offset": "0x10", "type": "B", "factory": [1], "constraints": ")" + QByteArray(odd) +
            "\"";
        leaf(members.constData(), form);
    }
    leaf(R"("offset": "0x10", "type": "s", "factory": [""], "constraints": "l,1")", form);
    leaf(R"("offset": "0x10", "type": "B", "factory": [1], "constraints": "l,1,b")",
         "\"constraints\" lists what is no whole number");
    leaf(R"("offset": "0x10", "type": "f", "factory": [1], "constraints": "l,1,2")",
         "a list of allowed values is for whole numbers");
    const char* const range = "\"constraints\" gives no range within the type's";
    for (const char* const odd :
         {"m,5", "m,5,5", "m,6,5", "m,1,256", "m,-1,5", "m,1,2,3", "m,a,b", "m,nan,5", "m,,"}) {
        const QByteArray members =
            R"("offset": "0x10", "type": "B", "factory": [5], "constraints": ")" + QByteArray(odd) +
            "\"";
        leaf(members.constData(), range);
    }
    const char* const coarse = "\"constraints\" has an end that the type cannot hold";
    leaf(R"("offset": "0x10", "type": "H", "factory": [0], "floating_point": "True",
            "constraints": "m,0,0.3")",
         coarse);
    leaf(R"("offset": "0x10", "type": "f", "factory": [0], "constraints": "m,0,0.123456789012")",
         coarse);
    leaf(R"("offset": "0x10", "type": "B", "factory": [1], "floating_point": "True")",
         "only an \"H\" can be a fixed-point number");
    leaf(R"("offset": "0x10", "type": "H", "factory": [1], "floating_point": "true")",
         "\"floating_point\" can only be \"True\"");
    leaf(R"("offset": "0x10", "type": "BB", "factory": [1, 2], "axis_expand": "True")",
         "only a single \"B\" can be a field of axis bits");
    leaf(R"("offset": "0x10", "type": "B", "factory": [1], "length": 5)",
         "\"length\" is for texts, of two bytes at least");
    leaf(R"("offset": "0x10", "type": "s", "factory": [""], "length": 1)",
         "\"length\" is for texts, of two bytes at least");
    leaf(R"("offset": "0x10", "type": "B", "factory": [1], "tooltip": 5)",
         "\"tooltip\" is not a text");
    leaf(R"("offset": "0x10", "type": "B", "factory": [1], "value": [1])",
         "has an unknown member \"value\"");
}

void tst_OnboardMap::aSourceIsChecked()
{
    QFETCH(QByteArray, entries);
    QFETCH(QString, expected);
    QCOMPARE(QString::fromStdString(thrownText([&] { OnboardMap(mapSource(entries)); })), expected);
}

void tst_OnboardMap::theDocumentIsTheSourceWithValues()
{
    const OnboardMap map(smallMapSource());

    const Json::Value document = map.read(map.factoryImage());

    QVERIFY(document == json(R"({"machine_type": "fabrino_2", "firmware_version": "7.5",
        "eeprom_map": {
            "name": {"offset": "0x0010", "type": "s", "value": ["Orvane"], "tooltip": "Whose"},
            "count": {"offset": "0x0020", "type": "B", "value": [2], "constraints": "l,1,2"},
            "motion": {"sub_map": {
                "rates": {"offset": "0x0030", "type": "hhh", "value": [10, 20, 30],
                          "unit": "mm/s"},
                "advance": {"sub_map": {
                    "factor": {"offset": "0x0040", "type": "f", "value": [0.1]}}}}}}})"));
    QCOMPARE(map.entries().size(), std::size_t(4));
    QCOMPARE(map.entries().front().name(), std::string("count"));
    QCOMPARE(map.entries()[1].name(), std::string("motion.advance.factor"));
}

void tst_OnboardMap::theImageHoldsValuesInTheirPlaces()
{
    const OnboardMap map(smallMapSource());
    Json::Value document = map.read(map.factoryImage());
    setValue(document, "name", R"(["Lab"])");
    setValue(document, "count", "[1]");
    setValue(document, "motion.rates", "[-1, 2, 3]");

    const QByteArray image = map.write(document, map.factoryImage());

    QCOMPARE(image.size(), kOnboardBytes);
    QCOMPARE(image.mid(0x10, 16), QByteArray("Lab\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    QCOMPARE(image.mid(0x20, 2), QByteArray("\1\xff"));
    QCOMPARE(image.mid(0x30, 7).toHex(), QByteArray("ffff02000300ff"));
    QVERIFY(map.read(image) == document);
}

void tst_OnboardMap::bytesBetweenSettingsAreLeftAlone()
{
    const OnboardMap map(smallMapSource());
    QByteArray image = map.factoryImage();
    image.replace(0x21, 4, "kept");
    image.replace(kOnboardBytes - 4, 4, "kept");

    const QByteArray written = map.write(map.read(image), image);

    QCOMPARE(written.mid(kOnboardHeaderBytes), image.mid(kOnboardHeaderBytes));
}

void tst_OnboardMap::bytesWithoutAValueAreTheFactorys()
{
    const OnboardMap map(smallMapSource());
    QByteArray image = map.factoryImage();
    image.replace(0x10, 16, QByteArray(16, 'x'));
    image.replace(0x40, 4, QByteArray(4, '\xff'));
    image[0x20] = 77;

    const Json::Value document = map.read(image);

    QCOMPARE(valueOf(document, "name")[0].asString(), std::string("Orvane"));
    QCOMPARE(valueOf(document, "motion.advance.factor")[0].asDouble(), 0.1);
    // A number is shown as it is, also when it could not be written like this.
    QCOMPARE(valueOf(document, "count")[0].asInt(), 77);
    QCOMPARE(refusalOf(map, document),
             std::string("These settings cannot be written: count must be one of 1, 2"));
}

void tst_OnboardMap::aDocumentIsChecked_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QByteArray>("replacement");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* entry, const char* replacement, const char* expected) {
        QTest::addRow("%s: %s", entry, replacement)
            << QByteArray(entry) << QByteArray(replacement) << QString::fromLatin1(expected);
    };
    row("count", R"({"offset": "0x0020", "type": "B", "value": [3]})", "count must be one of 1, 2");
    row("count", R"({"offset": "0x0020", "type": "B", "value": [1, 1]})",
        "count must have 1 value");
    row("count", R"({"offset": "0x0020", "type": "B", "value": []})", "count must have 1 value");
    row("count", R"({"offset": "0x0020", "type": "B", "value": {}})", "count must have 1 value");
    row("count", R"({"offset": "0x0020", "type": "B", "value": 1})", "count must have 1 value");
    row("count", R"({"offset": "0x0020", "type": "B"})", "count must have 1 value");
    row("count", R"({"offset": "0x0021", "type": "B", "value": [1]})", "count lies elsewhere here");
    row("count", R"({"offset": 32, "type": "B", "value": [1]})", "count lies elsewhere here");
    row("count", R"({"type": "B", "value": [1]})", "count lies elsewhere here");
    row("count", R"({"offset": "0x0020", "type": "H", "value": [1]})",
        "count has another type here");
    row("count", R"({"offset": "0x0020", "value": [1]})", "count has another type here");
    row("count", "5", "count is not an object");
    row("count", "null", "count is not an object");
    row("count", R"({"sub_map": {}})", "count has another type here");
    row("motion", "[]", "motion is not an object");
    row("motion", "{}", "motion is no group of settings");
    row("motion", R"({"sub_map": []})", "motion is no group of settings");
    row("motion", R"({"offset": "0x0030", "type": "B", "value": [1]})",
        "motion is no group of settings");
    row("motion", R"({"sub_map": {}})", "motion.advance is missing; motion.rates is missing");
    row("motion.rates", R"({"offset": "0x0030", "type": "hhh", "value": [1, 2]})",
        "motion.rates must have 3 values");
    row("motion.rates", R"({"offset": "0x0030", "type": "hhh", "value": [1, 40000, "x"]})",
        "motion.rates must be from -32768 to 32767");
    row("more", R"({"offset": "0x0050", "type": "B", "value": [1]})",
        "more is unknown to this firmware");
    row("motion.more", "{}", "motion.more is unknown to this firmware");
}

void tst_OnboardMap::aDocumentIsChecked()
{
    QFETCH(QByteArray, entry);
    QFETCH(QByteArray, replacement);
    QFETCH(QString, expected);
    const OnboardMap map(smallMapSource());
    Json::Value document = map.read(map.factoryImage());
    entryOf(document, entry.toStdString()) = json("[" + replacement + "]")[0];

    QCOMPARE(QString::fromStdString(refusalOf(map, document)),
             QStringLiteral("These settings cannot be written: ") + expected);
}

void tst_OnboardMap::nothingIsTakenFromADocumentButValues()
{
    const OnboardMap map(smallMapSource());
    Json::Value document = map.read(map.factoryImage());
    // Nobody makes an entry more liberal than it is.
    entryOf(document, "count")["constraints"] = "l,1,2,3";
    entryOf(document, "count")["value"][0] = 3;
    QCOMPARE(refusalOf(map, document),
             std::string("These settings cannot be written: count must be one of 1, 2"));
    entryOf(document, "count")["value"][0] = 1;
    entryOf(document, "count")["axis_expand"] = "True";
    entryOf(document, "motion")["comment"] = "mine";
    document["comment"] = 5;
    document.removeMember("machine_type");
    document.removeMember("firmware_version");
    const Json::Value read = map.read(map.write(document, map.factoryImage()));
    QCOMPARE(valueOf(read, "count")[0].asInt(), 1);
    QVERIFY(!read.isMember("comment"));
}

void tst_OnboardMap::documentsOfAnyShapeAreHarmless_data()
{
    QTest::addColumn<QByteArray>("document");
    for (const char* const text : {"null", "5", "[]", "\"x\"", "{}", R"({"eeprom_map": 5})",
                                   R"({"eeprom_map": []})", R"({"eeprom_map": null})"})
        QTest::newRow(text) << QByteArray(text);
}

void tst_OnboardMap::documentsOfAnyShapeAreHarmless()
{
    QFETCH(QByteArray, document);
    const OnboardMap map(smallMapSource());
    QCOMPARE(refusalOf(map, json("[" + document + "]")[0]),
             std::string("These settings cannot be written: this is no document of onboard "
                         "settings"));
}

void tst_OnboardMap::manyProblemsAreCounted()
{
    const OnboardMap map(smallMapSource());
    Json::Value document = map.read(map.factoryImage());
    for (int i = 100; i < 200; ++i)
        document["eeprom_map"]["x" + std::to_string(i)] = 1;

    try {
        map.write(document, map.factoryImage());
        QFAIL("it was written");
    } catch (const OnboardValueError& error) {
        QCOMPARE(error.problems().size(), std::size_t(100));
        const QString text = QString::fromUtf8(error.what());
        QVERIFY(text.contains(QLatin1String("x119 is unknown to this firmware; and 80 more")));
        QVERIFY(!text.contains(QLatin1String("x120")));
    }
}

void tst_OnboardMap::aDeepDocumentIsHarmless()
{
    const OnboardMap map(smallMapSource());
    Json::Value deep(1);
    for (int i = 0; i < 400; ++i) {
        Json::Value around(Json::objectValue);
        around["sub_map"]["motion"] = deep;
        deep = around;
    }
    Json::Value document = map.read(map.factoryImage());
    document["eeprom_map"]["motion"] = deep;
    QCOMPARE(refusalOf(map, document),
             std::string("These settings cannot be written: motion.advance is missing; "
                         "motion.rates is missing; motion.motion is unknown to this firmware"));
    document["eeprom_map"]["motion"] = json("[[[[[[1]]]]]]");
    document["eeprom_map"]["count"]["value"][0] = deep;
    QCOMPARE(refusalOf(map, document),
             std::string("These settings cannot be written: motion is not an object; count must be "
                         "a whole number"));
}

void tst_OnboardMap::anImageIsConverted()
{
    const OnboardMap older(smallMapSource());
    const OnboardMap newer(mapSource(R"({
        "name": {"offset": "0x0100", "type": "s", "factory": ["New"], "length": 4},
        "count": {"offset": "0x0020", "type": "H", "factory": [7]},
        "motion": {"sub_map": {
            "rates": {"offset": "0x0030", "type": "hh", "factory": [1, 2]},
            "advance": {"sub_map": {
                "factor": {"offset": "0x0050", "type": "d", "factory": [9.0]}}},
            "count": {"offset": "0x0061", "type": "B", "factory": [9]},
            "more": {"offset": "0x0060", "type": "B", "factory": [3]}}}})",
                                     "7.6"));
    Json::Value document = older.read(older.factoryImage());
    setValue(document, "count", "[1]");
    setValue(document, "motion.advance.factor", "[0.3]");
    const QByteArray image = older.write(document, older.factoryImage());

    const QByteArray converted = newer.convert(older, image);

    const Json::Value read = newer.read(converted);
    QVERIFY(layoutOfImage(converted) == newer.layout());
    QCOMPARE(valueOf(read, "count")[0].asInt(), 1);
    QCOMPARE(valueOf(read, "motion.advance.factor")[0].asDouble(), 0.3);
    // Too long, of another count, and new: the factory's.
    QCOMPARE(valueOf(read, "name")[0].asString(), std::string("New"));
    QVERIFY(valueOf(read, "motion.rates") == json("[1, 2]"));
    QCOMPARE(valueOf(read, "motion.more")[0].asInt(), 3);
    QCOMPARE(valueOf(read, "motion.count")[0].asInt(), 9);
}

void tst_OnboardMap::theHeaderTellsWhoseImageItIs()
{
    const OnboardLayout layout{Printer::CubioDual, 12, 345};
    const QByteArray image = sealedImage(QByteArray(kOnboardBytes, 'x'), layout);

    QVERIFY(layoutOfImage(image) == layout);
    QCOMPARE(image.mid(kOnboardHeaderBytes), QByteArray(kOnboardBytes - kOnboardHeaderBytes, 'x'));
    QCOMPARE(sealedImage(image, layout), image);
}

void tst_OnboardMap::everyDamageIsSeen()
{
    const OnboardMap map(smallMapSource());
    const QByteArray image = map.factoryImage();
    QVERIFY(layoutOfImage(image).has_value());
    for (int i = 0; i < image.size(); ++i) {
        QByteArray damaged = image;
        damaged[i] = static_cast<char>(damaged.at(i) ^ 1);
        QVERIFY2(!layoutOfImage(damaged).has_value(), qPrintable(QString::number(i)));
    }
    QVERIFY(!layoutOfImage(QByteArray()).has_value());
    QVERIFY(!layoutOfImage(image.left(kOnboardBytes - 1)).has_value());
    QVERIFY(!layoutOfImage(image + 'x').has_value());
    QVERIFY(!layoutOfImage(QByteArray(kOnboardBytes, kErasedByte)).has_value());
    QVERIFY(!layoutOfImage(QByteArray(kOnboardBytes, '\0')).has_value());
}

QTEST_GUILESS_MAIN(tst_OnboardMap)
#include "tst_onboard_map.moc"
