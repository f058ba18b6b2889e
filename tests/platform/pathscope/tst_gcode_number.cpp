#include <pathscope/gcode_number.h>

#include <QtTest>

#include <cmath>
#include <cstdlib>
#include <string>

using namespace pathscope;

namespace {

/** A text with what has to stand behind it. */
std::string padded(const std::string& text)
{
    return text + "\n" + std::string(kNumberPadding, '\0');
}

} // namespace

class tst_GcodeNumber : public QObject
{
    Q_OBJECT

private slots:
    void readsTheForms_data();
    void readsTheForms();
    void seesWhereThereIsNoNumber_data();
    void seesWhereThereIsNoNumber();
    void roundsLikeTheLibrary();
};

void tst_GcodeNumber::readsTheForms_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("length");

    QTest::newRow("whole") << QByteArray("12 Y") << 12.0 << 2;
    QTest::newRow("fraction") << QByteArray("179.217 Y") << 179.217 << 7;
    QTest::newRow("without a whole part") << QByteArray(".5") << 0.5 << 2;
    QTest::newRow("without a fraction") << QByteArray("5.") << 5.0 << 2;
    QTest::newRow("without a fraction, long") << QByteArray("1234567.") << 1234567.0 << 8;
    QTest::newRow("negative") << QByteArray("-1.25") << -1.25 << 5;
    QTest::newRow("plus sign") << QByteArray("+3") << 3.0 << 2;
    QTest::newRow("negative without a whole part") << QByteArray("-.08") << -0.08 << 4;
    QTest::newRow("leading zeros") << QByteArray("0007") << 7.0 << 4;
    QTest::newRow("seven characters and a letter") << QByteArray("1.23456E") << 1.23456 << 7;
    QTest::newRow("eight characters") << QByteArray("11.24944") << 11.24944 << 8;
    QTest::newRow("eight digits") << QByteArray("12345678") << 12345678.0 << 8;
    QTest::newRow("eight digits of a fraction") << QByteArray(".12345678") << 0.12345678 << 9;
    QTest::newRow("seven before, seven behind")
        << QByteArray("1234567.1234567") << 1234567.1234567 << 15;
    QTest::newRow("nineteen digits")
        << QByteArray("1234567890.123456789") << 1234567890.123456789 << 20;
    QTest::newRow("thirty digits") << QByteArray("0.100000000000000000000000000001") << 0.1 << 32;
    QTest::newRow("many zeros") << QByteArray("000000000000000000000000000001.5") << 1.5 << 32;
    QTest::newRow("an exponent is none") << QByteArray("1E5") << 1.0 << 1;
    QTest::newRow("an exponent behind a fraction is none") << QByteArray("1.5e5") << 1.5 << 3;
    QTest::newRow("two dots") << QByteArray("1.2.3") << 1.2 << 3;
    QTest::newRow("two dots together") << QByteArray("1..3") << 1.0 << 2;
    QTest::newRow("a minus behind") << QByteArray("1-2") << 1.0 << 1;
    QTest::newRow("a byte above 127 behind") << QByteArray("1.5\xff") << 1.5 << 3;
    QTest::newRow("a line end amid the padding") << QByteArray("7\n9.9") << 7.0 << 1;
}

void tst_GcodeNumber::readsTheForms()
{
    QFETCH(QByteArray, text);
    QFETCH(double, value);
    QFETCH(int, length);
    const std::string bytes = padded(text.toStdString());
    double read = 0;

    const char* const end = readNumber(bytes.data(), &read);

    QVERIFY(end != nullptr);
    QCOMPARE(int(end - bytes.data()), length);
    QVERIFY2(read == value, qPrintable(QString::number(read, 'g', 17)));
}

void tst_GcodeNumber::seesWhereThereIsNoNumber_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("a letter") << QByteArray("Y1");
    QTest::newRow("a dot") << QByteArray(".");
    QTest::newRow("a dot and a letter") << QByteArray(".E5");
    QTest::newRow("a sign") << QByteArray("-");
    QTest::newRow("a sign and a dot") << QByteArray("-. 5");
    QTest::newRow("two signs") << QByteArray("--5");
    QTest::newRow("nan") << QByteArray("nan");
    QTest::newRow("inf") << QByteArray("inf");
    QTest::newRow("a dot and seven letters") << QByteArray(".abcdefg");
    QTest::newRow("hexadecimal letters") << QByteArray("xff");
}

void tst_GcodeNumber::seesWhereThereIsNoNumber()
{
    QFETCH(QByteArray, text);
    const std::string bytes = padded(text.toStdString());
    double read = 0;

    QVERIFY(readNumber(bytes.data(), &read) == nullptr);
}

void tst_GcodeNumber::roundsLikeTheLibrary()
{
    // Every number of digits before and behind the dot, with different digits.
    std::uint64_t state = 1;
    for (int whole = 0; whole <= 24; ++whole) {
        for (int fraction = whole == 0 ? 1 : 0; fraction <= 24; ++fraction) {
            for (int repeat = 0; repeat < 20; ++repeat) {
                std::string text = repeat % 2 == 0 ? "-" : "";
                for (int i = 0; i < whole + fraction; ++i) {
                    if (i == whole)
                        text += '.';
                    state = state * 6364136223846793005U + 1442695040888963407U;
                    text += static_cast<char>('0' + (state >> 60) % 10);
                }
                const std::string bytes = padded(text);
                double read = 0;
                const char* const end = readNumber(bytes.data(), &read);
                QVERIFY2(end == bytes.data() + text.size(), text.c_str());
                QVERIFY2(read == std::strtod(text.c_str(), nullptr), text.c_str());
            }
        }
    }
    const std::string huge = padded(std::string(500, '9'));
    double read = 0;
    QVERIFY(readNumber(huge.data(), &read) == huge.data() + 500);
    QVERIFY(std::isinf(read));
}

QTEST_APPLESS_MAIN(tst_GcodeNumber)
#include "tst_gcode_number.moc"
