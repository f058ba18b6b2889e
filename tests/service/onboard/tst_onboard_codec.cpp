#include "onboard_world.h"

#include <service/onboard/onboard_codec.h>

#include <QTest>

#include <cfloat>
#include <cmath>
#include <limits>

using namespace trovek;
using namespace trovek::service;

Q_DECLARE_METATYPE(std::string)

namespace {

/** The only entry of a map that is made of the rest of a leaf's members. */
OnboardEntry entry(const QByteArray& members)
{
    const Json::Value source = json(R"({"offset": "0x0010", )" + members + "}");
    return readOnboardEntry({"it"}, source);
}

OnboardEntry scalar(char type, const QByteArray& more = QByteArray())
{
    const QByteArray factory = type == 's' ? "\"\"" : type == 'f' || type == 'd' ? "0.0" : "0";
    return entry(R"("type": ")" + QByteArray(1, type) + R"(", "factory": [)" + factory + "]" +
                 more);
}

} // namespace

class tst_OnboardCodec : public QObject
{
    Q_OBJECT

private slots:
    void bytesAreLittleEndian_data();
    void bytesAreLittleEndian();
    void bytesThatAreNoValue_data();
    void bytesThatAreNoValue();
    void realsAreReadWithTheFewestDigits_data();
    void realsAreReadWithTheFewestDigits();
    void fixedPointTakesTheNearest_data();
    void fixedPointTakesTheNearest();
    void everyFixedPointNumberComesBack();
    void valuesAreChecked_data();
    void valuesAreChecked();
    void whatJsonCannotHoldIsRefused();
};

void tst_OnboardCodec::bytesAreLittleEndian_data()
{
    QTest::addColumn<char>("type");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("hex");

    const auto row = [](const char* name, char type, const char* value, const char* hex) {
        QTest::newRow(name) << type << QByteArray(value) << QByteArray(hex);
    };
    row("unsigned 8 bit", 'B', "200", "c8");
    row("signed 8 bit", 'b', "-2", "fe");
    row("unsigned 16 bit", 'H', "65534", "feff");
    row("signed 16 bit", 'h', "-2", "feff");
    row("signed 16 bit, least", 'h', "-32768", "0080");
    row("unsigned 32 bit", 'I', "4294967294", "feffffff");
    row("signed 32 bit", 'i', "-2147483648", "00000080");
    row("signed 64 bit", 'q', "-2", "feffffffffffffff");
    row("signed 64 bit, most", 'q', "9223372036854775807", "ffffffffffffff7f");
    row("single precision", 'f', "-1.5", "0000c0bf");
    row("double precision", 'd', "-1.5", "000000000000f8bf");
    row("text", 's', "\"Lab 7\"", "4c616220370000000000000000000000");
    row("empty text", 's', "\"\"", "00000000000000000000000000000000");
    row("longest text", 's', "\"123456789012345\"", "31323334353637383930313233343500");
}

void tst_OnboardCodec::bytesAreLittleEndian()
{
    QFETCH(char, type);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, hex);
    const OnboardEntry it = scalar(type);
    const Json::Value given = json("[" + value + "]")[0];

    QCOMPARE(QString::fromStdString(whatIsWrongWith(given, it)), QString());
    QCOMPARE(encodeElement(given, it).toHex(), hex);
    const auto read = decodeElement(QByteArray::fromHex(hex), it);
    QVERIFY(read.has_value());
    QVERIFY2(*read == given || (read->isNumeric() && read->asDouble() == given.asDouble()),
             read->toStyledString().c_str());
}

void tst_OnboardCodec::bytesThatAreNoValue_data()
{
    QTest::addColumn<char>("type");
    QTest::addColumn<QByteArray>("hex");

    const auto row = [](const char* name, char type, const char* hex) {
        QTest::newRow(name) << type << QByteArray(hex);
    };
    row("erased single", 'f', "ffffffff");
    row("infinite single", 'f', "0000807f");
    row("erased double", 'd', "ffffffffffffffff");
    row("infinite double", 'd', "000000000000f0ff");
    row("erased text", 's', "ffffffffffffffffffffffffffffffff");
    row("text without an end", 's', "31323334353637383930313233343536");
    row("text with a line break", 's', "310a0000000000000000000000000000");
    row("text that is not ASCII", 's', "c3a40000000000000000000000000000");
}

void tst_OnboardCodec::bytesThatAreNoValue()
{
    QFETCH(char, type);
    QFETCH(QByteArray, hex);
    QVERIFY(!decodeElement(QByteArray::fromHex(hex), scalar(type)).has_value());
}

void tst_OnboardCodec::realsAreReadWithTheFewestDigits_data()
{
    QTest::addColumn<char>("type");
    QTest::addColumn<double>("number");
    for (const double number : {0.1, -3.14159, 1e-7, 16777217.0, 0.0, 5.0, 3.4e38, 1.17549435e-38,
                                double(FLT_MAX), -double(FLT_MAX)})
        QTest::addRow("single %g", number) << 'f' << double(float(number));
    for (const double number : {0.1, -3.141592653589793, 1e300, 5e-324, DBL_MAX})
        QTest::addRow("double %g", number) << 'd' << number;
}

void tst_OnboardCodec::realsAreReadWithTheFewestDigits()
{
    QFETCH(char, type);
    QFETCH(double, number);
    const OnboardEntry it = scalar(type);

    const auto once = decodeElement(encodeElement(number, it), it);
    const auto twice = decodeElement(encodeElement(*once, it), it);

    QVERIFY(once.has_value() && once->type() == Json::realValue);
    QCOMPARE(encodeElement(*once, it), encodeElement(number, it));
    QVERIFY2(*once == *twice, "a value that was read is read again as it is");
    QCOMPARE(QString::fromStdString(whatIsWrongWith(*once, it)), QString());
    if (type == 'd')
        QCOMPARE(once->asDouble(), number);
    const auto tenth = decodeElement(encodeElement(double(0.1F), scalar('f')), scalar('f'));
    QVERIFY(tenth->asDouble() == 0.1);
}

void tst_OnboardCodec::fixedPointTakesTheNearest_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<double>("read");

    QTest::newRow("whole") << 7.0 << QByteArray("0007") << 7.0;
    QTest::newRow("a half") << 1.5 << QByteArray("8001") << 1.5;
    QTest::newRow("below zero") << -0.5 << QByteArray("80ff") << -0.5;
    QTest::newRow("least") << -128.0 << QByteArray("0080") << -128.0;
    QTest::newRow("most") << 127.99609375 << QByteArray("ff7f") << 127.99609375;
    QTest::newRow("between two") << 0.1 << QByteArray("1a00") << 0.1015625;
    QTest::newRow("next to nothing") << 0.001 << QByteArray("0000") << 0.0;
}

void tst_OnboardCodec::fixedPointTakesTheNearest()
{
    QFETCH(double, value);
    QFETCH(QByteArray, hex);
    QFETCH(double, read);
    const OnboardEntry it = entry(R"("type": "H", "floating_point": "True", "factory": [0])");

    QCOMPARE(QString::fromStdString(whatIsWrongWith(value, it)), QString());
    QCOMPARE(encodeElement(value, it).toHex(), hex);
    QVERIFY(*decodeElement(QByteArray::fromHex(hex), it) == Json::Value(read));
}

void tst_OnboardCodec::everyFixedPointNumberComesBack()
{
    const OnboardEntry it = entry(R"("type": "H", "floating_point": "True", "factory": [0])");
    for (int low = 0; low < 256; ++low) {
        for (int high = 0; high < 256; ++high) {
            const char bytes[] = {static_cast<char>(low), static_cast<char>(high)};
            const QByteArray given(bytes, 2);
            const auto value = decodeElement(given, it);
            QVERIFY(whatIsWrongWith(*value, it).empty());
            QCOMPARE(encodeElement(*value, it), given);
        }
    }
}

void tst_OnboardCodec::valuesAreChecked_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* members, const char* value, const char* expected) {
        QTest::addRow("%s of %s", value, members)
            << QByteArray(members) << QByteArray(value) << QString::fromUtf8(expected);
    };
    const char* const byte = R"("type": "B", "factory": [0])";
    row(byte, "0", "");
    row(byte, "255", "");
    row(byte, "256", "must be from 0 to 255");
    row(byte, "-1", "must be from 0 to 255");
    for (const char* const odd : {"1.0", "1.5", "\"1\"", "true", "null", "[1]", R"({"a": 1})"})
        row(byte, odd, "must be a whole number");
    const char* const small = R"("type": "h", "factory": [0])";
    row(small, "-32768", "");
    row(small, "32767", "");
    row(small, "32768", "must be from -32768 to 32767");
    row(small, "-32769", "must be from -32768 to 32767");
    const char* const wide = R"("type": "I", "factory": [0])";
    row(wide, "4294967295", "");
    row(wide, "4294967296", "must be from 0 to 4294967295");
    row(wide, "-1", "must be from 0 to 4294967295");
    const char* const widest = R"("type": "q", "factory": [0])";
    row(widest, "9223372036854775807", "");
    row(widest, "-9223372036854775808", "");
    row(widest, "9223372036854775808", "must be from -9223372036854775808 to 9223372036854775807");
    row(widest, "1e3", "must be a whole number");
    const char* const listed = R"("type": "B", "factory": [4], "constraints": "l,1,2,4")";
    row(listed, "4", "");
    row(listed, "3", "must be one of 1, 2, 4");
    row(listed, "300", "must be from 0 to 255");
    const char* const ranged = R"("type": "H", "factory": [0], "constraints": "m,0,300")";
    row(ranged, "300", "");
    row(ranged, "301", "must be from 0 to 300");
    const char* const single = R"("type": "f", "factory": [0.5], "constraints": "m,0.5,2")";
    row(single, "1", "");
    row(single, "2.0", "");
    row(single, "2.0001", "must be from 0.5 to 2");
    row(single, "\"1\"", "must be a number");
    row(single, "true", "must be a number");
    row(R"("type": "f", "factory": [0])", "1e39", "must be from -3.4028235e+38 to 3.4028235e+38");
    row(R"("type": "f", "factory": [0])", "-3.4028235e38", "");
    row(R"("type": "d", "factory": [0])", "1e308", "");
    const char* const fixed = R"("type": "H", "factory": [0], "floating_point": "True")";
    row(fixed, "-128", "");
    row(fixed, "127.99609375", "");
    row(fixed, "128", "must be from -128 to 127.99609375");
    row(fixed, "127.999", "must be from -128 to 127.99609375");
    const char* const text = R"("type": "s", "factory": [""])";
    row(text, "\"123456789012345\"", "");
    row(text, "\"1234567890123456\"", "must have at most 15 characters");
    row(text, "5", "must be a text");
    row(text, "\"\\u00e4\"", "must hold nothing but letters, digits and signs of ASCII");
    row(text, "\"a\\u0000b\"", "must hold nothing but letters, digits and signs of ASCII");
    row(text, "\"a\\nb\"", "must hold nothing but letters, digits and signs of ASCII");
    const char* const longer = R"("type": "s", "factory": [""], "length": 24)";
    row(longer, "\"12345678901234567890123\"", "");
    row(longer, "\"123456789012345678901234\"", "must have at most 23 characters");
}

void tst_OnboardCodec::valuesAreChecked()
{
    QFETCH(QByteArray, members);
    QFETCH(QByteArray, value);
    QFETCH(QString, expected);
    const OnboardEntry it = entry(members);
    const Json::Value given = json("[" + value + "]")[0];

    QCOMPARE(QString::fromStdString(whatIsWrongWith(given, it)), expected);
    if (expected.isEmpty()) {
        const QByteArray bytes = encodeElement(given, it);
        QCOMPARE(bytes.size(), it.elementBytes);
        QCOMPARE(encodeElement(*decodeElement(bytes, it), it), bytes);
    }
}

void tst_OnboardCodec::whatJsonCannotHoldIsRefused()
{
    const double odd[] = {std::numeric_limits<double>::quiet_NaN(),
                          std::numeric_limits<double>::infinity(),
                          -std::numeric_limits<double>::infinity()};
    for (const double number : odd) {
        QVERIFY(!whatIsWrongWith(number, scalar('d')).empty());
        QVERIFY(!whatIsWrongWith(number, scalar('f')).empty());
        QVERIFY(!whatIsWrongWith(number, scalar('B')).empty());
    }
}

QTEST_GUILESS_MAIN(tst_OnboardCodec)
#include "tst_onboard_codec.moc"
