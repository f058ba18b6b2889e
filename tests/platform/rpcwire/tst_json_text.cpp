#include <rpcwire/json_text.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <locale>

using rpcwire::parseJson;
using rpcwire::toJsonLine;

Q_DECLARE_METATYPE(Json::ValueType)

namespace {

/** A locale with decimal comma and thousands dots, as hosts in many countries set it. */
struct CommaNumbers : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class GlobalLocale
{
public:
    explicit GlobalLocale(const std::locale& locale)
        : m_previous(std::locale::global(locale))
    {}
    ~GlobalLocale() { std::locale::global(m_previous); }

private:
    const std::locale m_previous;
};

QByteArray nested(int levels, char open, char close)
{
    return QByteArray(levels, open) + QByteArray(levels, close);
}

std::string text(const QByteArray& bytes)
{
    return bytes.toStdString();
}

} // namespace

class tst_JsonText : public QObject
{
    Q_OBJECT

private slots:
    void readsValues_data();
    void readsValues();
    void refusesWhatIsNoJson_data();
    void refusesWhatIsNoJson();
    void replacesBytesThatAreNotUtf8WhenReading();
    void givesNumbersTheirType_data();
    void givesNumbersTheirType();
    void readsNestingUpToTheLimit();
    void everyBeginningOfATextIsRefused();
    void survivesEveryByteAtEveryPlace();
    void leavesTheValueAloneOnFailure();
    void takesNoErrorPointer();
    void writesOneLine_data();
    void writesOneLine();
    void writesNullForNumbersThatAreNotFinite();
    void replacesBytesThatAreNotUtf8WhenWriting();
    void leavesCommentsOut();
    void realsComeBackAsTheSameReals_data();
    void realsComeBackAsTheSameReals();
    void theGlobalLocaleDoesNotMatter();
};

void tst_JsonText::readsValues_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("rewritten");

    QTest::newRow("null") << QByteArray("null") << QByteArray("null");
    QTest::newRow("true") << QByteArray("true") << QByteArray("true");
    QTest::newRow("false") << QByteArray("false") << QByteArray("false");
    QTest::newRow("top-level string") << QByteArray("\"a\"") << QByteArray("\"a\"");
    QTest::newRow("empty string") << QByteArray("\"\"") << QByteArray("\"\"");
    QTest::newRow("empty containers") << QByteArray("[{},[]]") << QByteArray("[{},[]]");
    QTest::newRow("white space all over")
        << QByteArray(" \t\r\n[ 1 , { \"a\" : 2 , \"b\" : [ ] } ]\r\n ")
        << QByteArray("[1,{\"a\":2,\"b\":[]}]");
    QTest::newRow("empty member name") << QByteArray("{\"\":1}") << QByteArray("{\"\":1}");
    QTest::newRow("escapes") << QByteArray(R"("\"\\\/\b\f\n\r\t")")
                             << QByteArray(R"("\"\\/\b\f\n\r\t")");
    QTest::newRow("escaped code points")
        << QByteArray(R"("\u0041\u00e4\u20AC\ud83d\ude00")") << QByteArray("\"A\xC3\xA4€😀\"");
    QTest::newRow("escaped zero") << QByteArray(R"("a\u0000b")") << QByteArray(R"("a\u0000b")");
    QTest::newRow("member name with a zero")
        << QByteArray(R"({"a\u0000b":1,"a":2})") << QByteArray(R"({"a":2,"a\u0000b":1})");
    QTest::newRow("text in UTF-8") << QByteArray("\"Grüße €😀\"") << QByteArray("\"Grüße €😀\"");
    QTest::newRow("byte order mark in a string")
        << QByteArray("\"\xEF\xBB\xBF€\"") << QByteArray("\"\xEF\xBB\xBF€\"");
    QTest::newRow("byte order mark before bad bytes")
        << QByteArray("\"\xEF\xBB\xBF\xFF\"") << QByteArray("\"\xEF\xBB\xBF\xEF\xBF\xBD\"");
    QTest::newRow("Latin 1") << QByteArray("\"gr\xFC n\"") << QByteArray("\"gr\xEF\xBF\xBD n\"");
    QTest::newRow("stray continuation byte")
        << QByteArray("\"a\x80\"") << QByteArray("\"a\xEF\xBF\xBD\"");
    QTest::newRow("delete character") << QByteArray("\"\x7F\"") << QByteArray("\"\x7F\"");
}

void tst_JsonText::readsValues()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, rewritten);

    Json::Value value;
    std::string error;
    QVERIFY2(parseJson(text(input), &value, &error), error.c_str());
    QCOMPARE(QByteArray::fromStdString(toJsonLine(value)), rewritten);
    QVERIFY(error.empty());
}

void tst_JsonText::replacesBytesThatAreNotUtf8WhenReading()
{
    Json::Value value;
    QVERIFY(parseJson("{\"n\xFF\":\"\xC3(\"}", &value, nullptr));
    QCOMPARE(value["n\xEF\xBF\xBD"].asString(), std::string("\xEF\xBF\xBD("));
}

void tst_JsonText::refusesWhatIsNoJson_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("reason");

    const auto row = [](const char* name, const QByteArray& input, const char* reason) {
        QTest::newRow(name) << input << QByteArray(reason);
    };
    row("nothing", "", "syntax error");
    row("white space only", " \t ", "syntax error");
    row("garbage", "hello", "syntax error");
    row("cut word", "tru", "syntax error");
    row("wrong case", "True", "syntax error");
    row("word with a tail", "nullx", "syntax error");
    row("two values", "1 2", "syntax error");
    row("closed twice", "{}}", "syntax error");
    row("byte order mark", "\xEF\xBB\xBF{}", "zero byte or byte order mark");
    row("zero byte", QByteArray("\0", 1), "zero byte or byte order mark");
    row("zero byte behind", QByteArray("1\0", 2), "zero byte or byte order mark");
    row("form feed", "\f1", "syntax error");
    row("comment", "/*a*/1", "syntax error");
    row("comment behind", "1//a", "syntax error");
    row("not a number", "NaN", "syntax error");
    row("infinity", "-Infinity", "syntax error");
    row("minus alone", "-", "syntax error");
    row("plus", "+1", "syntax error");
    row("leading zero", "01", "syntax error");
    row("leading point", ".5", "syntax error");
    row("trailing point", "1.", "syntax error");
    row("exponent without digits", "1e+", "syntax error");
    row("hexadecimal", "0x10", "syntax error");
    row("too large", "1e999", "number out of range");
    row("too far below zero", "-1e999", "number out of range");
    row("open array", "[1", "syntax error");
    row("trailing comma", "[1,]", "syntax error");
    row("no comma", "[1 2]", "syntax error");
    row("empty element", "[1,,2]", "syntax error");
    row("wrong bracket", "[1}", "syntax error");
    row("open object", "{\"a\":1", "syntax error");
    row("comma before the end", "{\"a\":1,}", "syntax error");
    row("name without quotes", "{a:1}", "syntax error");
    row("name alone", "{\"a\"}", "syntax error");
    row("member twice", R"({"a":1,"a":2})", "member stands twice");
    row("single quotes", "'a'", "syntax error");
    row("open string", "\"abc", "syntax error");
    row("string that ends in a backslash", "\"a\\", "syntax error");
    row("line break in a string", "\"a\nb\"", "syntax error");
    row("zero byte in a string", QByteArray("\"a\0b\"", 5), "zero byte or byte order mark");
    row("unknown escape", "\"\\q\"", "syntax error");
    row("short code point", "\"\\u12\"", "syntax error");
    row("signed code point", "\"\\u-123\"", "syntax error");
    row("high half of a pair alone", R"("\ud83dx")", "syntax error");
    row("high half before another escape", R"("\ud83d\u0041")", "syntax error");
    row("two high halves and a low one", R"("\ud83d\ud83d\ude00")", "syntax error");
    row("low half alone", R"("\ude00")", "syntax error");
    row("bad second half", "\"\\ud83d\\uzzzz\"", "syntax error");
}

void tst_JsonText::refusesWhatIsNoJson()
{
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, reason);

    Json::Value value;
    std::string error;
    QVERIFY(!parseJson(text(input), &value, &error));
    QVERIFY2(QByteArray::fromStdString(error).startsWith(reason), error.c_str());
}

void tst_JsonText::givesNumbersTheirType_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<Json::ValueType>("type");
    QTest::addColumn<QByteArray>("rewritten");

    const auto row = [](const char* input, Json::ValueType type, const char* rewritten) {
        QTest::newRow(input) << QByteArray(input) << type << QByteArray(rewritten);
    };
    row("0", Json::intValue, "0");
    row("-0", Json::intValue, "0");
    row("-12", Json::intValue, "-12");
    row("9223372036854775807", Json::intValue, "9223372036854775807");
    row("-9223372036854775808", Json::intValue, "-9223372036854775808");
    row("9223372036854775808", Json::uintValue, "9223372036854775808");
    row("18446744073709551615", Json::uintValue, "18446744073709551615");
    row("18446744073709551616", Json::realValue, "1.8446744073709552e+19");
    row("-9223372036854775809", Json::realValue, "-9.2233720368547758e+18");
    row("5.0", Json::realValue, "5.0");
    row("-0.0", Json::realValue, "-0.0");
    row("1e2", Json::realValue, "100.0");
    row("1E+2", Json::realValue, "100.0");
    row("125e-3", Json::realValue, "0.125");
}

void tst_JsonText::givesNumbersTheirType()
{
    QFETCH(QByteArray, input);
    QFETCH(Json::ValueType, type);
    QFETCH(QByteArray, rewritten);

    Json::Value value;
    QVERIFY(parseJson(text(input), &value, nullptr));
    QCOMPARE(value.type(), type);
    QCOMPARE(QByteArray::fromStdString(toJsonLine(value)), rewritten);
}

void tst_JsonText::readsNestingUpToTheLimit()
{
    Json::Value value;
    std::string error;
    QVERIFY(parseJson(text(nested(rpcwire::kMaxJsonDepth, '[', ']')), &value, &error));
    QVERIFY(!parseJson(text(nested(rpcwire::kMaxJsonDepth + 1, '[', ']')), &value, &error));
    QCOMPARE(error, std::string("nested too deeply"));

    const QByteArray members = QByteArray("{\"a\":").repeated(rpcwire::kMaxJsonDepth);
    QVERIFY(!parseJson(text(members + "{"), &value, &error));
    QCOMPARE(error, std::string("nested too deeply"));
    QVERIFY(!parseJson(text(QByteArray(1000000, '[')), &value, &error));
    QCOMPARE(error, std::string("nested too deeply"));
}

void tst_JsonText::everyBeginningOfATextIsRefused()
{
    const std::string whole = R"({"a":[1,-2.5e3,"x\n\ud83d\ude00",true,false,null],"b":{"c":"d"}})";
    Json::Value value;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        std::string error;
        QVERIFY2(!parseJson(whole.substr(0, size), &value, &error), whole.c_str());
        QVERIFY(!error.empty());
    }
    QVERIFY(parseJson(whole, &value, nullptr));
}

void tst_JsonText::survivesEveryByteAtEveryPlace()
{
    const std::string whole = R"({"a":[1,-2.5e3,"\ud83d\ude00",true]})";
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string changed = whole;
            changed[place] = static_cast<char>(byte);
            Json::Value value;
            if (!parseJson(changed, &value, nullptr))
                continue;
            const std::string line = toJsonLine(value);
            Json::Value again;
            QVERIFY2(parseJson(line, &again, nullptr), changed.c_str());
            QCOMPARE(toJsonLine(again), line);
        }
    }
}

void tst_JsonText::leavesTheValueAloneOnFailure()
{
    Json::Value value = "before";
    QVERIFY(!parseJson("[1,2", &value, nullptr));
    QCOMPARE(value, Json::Value("before"));
}

void tst_JsonText::takesNoErrorPointer()
{
    Json::Value value;
    QVERIFY(!parseJson("", &value, nullptr));
}

void tst_JsonText::writesOneLine_data()
{
    QTest::addColumn<QByteArray>("string");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("line breaks") << QByteArray("a\nb\r\nc") << QByteArray(R"(["a\nb\r\nc"])");
    QTest::newRow("control characters")
        << QByteArray("\x01\x1F\t\b\f") << QByteArray(R"(["\u0001\u001f\t\b\f"])");
    QTest::newRow("quote and backslash") << QByteArray("\"\\/") << QByteArray(R"(["\"\\/"])");
    QTest::newRow("zero") << QByteArray("a\0b", 3) << QByteArray(R"(["a\u0000b"])");
    QTest::newRow("not ASCII") << QByteArray("Grüße 😀") << QByteArray("[\"Grüße 😀\"]");
    QTest::newRow("line separator")
        << QByteArray("\xE2\x80\xA8") << QByteArray("[\"\xE2\x80\xA8\"]");
}

void tst_JsonText::writesOneLine()
{
    QFETCH(QByteArray, string);
    QFETCH(QByteArray, line);

    Json::Value value(Json::arrayValue);
    value.append(string.toStdString());
    QCOMPARE(QByteArray::fromStdString(toJsonLine(value)), line);
    Json::Value again;
    QVERIFY(parseJson(toJsonLine(value), &again, nullptr));
    QCOMPARE(again, value);
}

void tst_JsonText::writesNullForNumbersThatAreNotFinite()
{
    Json::Value value(Json::objectValue);
    value["deep"]["list"].append(std::numeric_limits<double>::infinity());
    value["deep"]["list"].append(-std::numeric_limits<double>::infinity());
    value["deep"]["list"].append(1.5);
    value["nan"] = std::nan("");
    QCOMPARE(toJsonLine(value), std::string(R"({"deep":{"list":[null,null,1.5]},"nan":null})"));
    QCOMPARE(toJsonLine(std::numeric_limits<double>::infinity()), std::string("null"));
}

void tst_JsonText::replacesBytesThatAreNotUtf8WhenWriting()
{
    Json::Value value(Json::objectValue);
    value["na\xFFme"] = "\xC3(\xED\xA0\x80\xF0\x9F";
    const std::string line = toJsonLine(value);
    QCOMPARE(QString::fromStdString(line).toUtf8(), QByteArray::fromStdString(line));
    Json::Value again;
    QVERIFY(parseJson(line, &again, nullptr));
    QVERIFY(again.isMember("na\xEF\xBF\xBDme"));
    QCOMPARE(toJsonLine(again), line);
}

void tst_JsonText::leavesCommentsOut()
{
    Json::Value value(Json::arrayValue);
    value.append(1);
    value[0].setComment(std::string("// a comment"), Json::commentBefore);
    QCOMPARE(toJsonLine(value), std::string("[1]"));
}

void tst_JsonText::realsComeBackAsTheSameReals_data()
{
    QTest::addColumn<double>("real");

    for (double real :
         {0.0, 5.0, -5.0, 0.1, 1.0 / 3, 1e15, 1e16, 1e17, 123456789012345680.0, 1e300, -1e-300,
          std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min()})
        QTest::newRow(qPrintable(QString::number(real, 'g', 17))) << real;
}

void tst_JsonText::realsComeBackAsTheSameReals()
{
    QFETCH(double, real);

    Json::Value again;
    QVERIFY(parseJson(toJsonLine(real), &again, nullptr));
    QCOMPARE(again.type(), Json::realValue);
    QVERIFY(again.asDouble() == real);
}

void tst_JsonText::theGlobalLocaleDoesNotMatter()
{
    const GlobalLocale guard(std::locale(std::locale::classic(), new CommaNumbers));
    Json::Value value;
    QVERIFY(parseJson("[1.5,1234567,1234567.25]", &value, nullptr));
    QCOMPARE(toJsonLine(value), std::string("[1.5,1234567,1234567.25]"));
}

QTEST_APPLESS_MAIN(tst_JsonText)
#include "tst_json_text.moc"
