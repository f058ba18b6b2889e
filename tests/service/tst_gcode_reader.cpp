#include <gcode/gcode_reader.h>
#include <gcode/number_text.h>

#include <QtTest>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

using namespace trovek::service;

namespace {

QString lineText(const GCodeLine& line)
{
    if (line.kind() == GCodeLine::Empty)
        return QStringLiteral("empty");
    if (line.kind() == GCodeLine::Unreadable)
        return QStringLiteral("unreadable");
    std::string text = line.name();
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (line.has(letter))
            text += std::string(" ") + letter +
                    (line.hasValue(letter) ? numberText(line.value(letter)) : "");
    }
    return QString::fromStdString(text);
}

QString linesText(GCodeReader& reader)
{
    QStringList texts;
    GCodeLine line;
    while (reader.next(line))
        texts += lineText(line);
    return texts.join(QLatin1String(" | "));
}

/** Hands out pieces of one size, to put every line across the border of a buffer once. */
ByteSource inPieces(std::string text, std::size_t piece)
{
    return [source = byteSourceOf(std::move(text)), piece](char* buffer, std::size_t size) mutable {
        return source(buffer, std::min(size, piece));
    };
}

} // namespace

class tst_GCodeReader : public QObject
{
    Q_OBJECT

private slots:
    void readsLines_data();
    void readsLines();
    void readsTheSameInPiecesOfAnySize_data() { readsLines_data(); }
    void readsTheSameInPiecesOfAnySize();
    void numbersLinesFromOne();
    void keepsTheTextOfAMessage_data();
    void keepsTheTextOfAMessage();
    void survivesLinesOfMegabytes();
    void countsBytes();
    void passesOnAnErrorOfItsSource();
    void survivesRandomBytes();
    void leavesTheLineAloneAtTheEnd();
};

void tst_GCodeReader::readsLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("lines");

    const auto row = [](const char* name, const QByteArray& bytes, const char* lines) {
        QTest::newRow(name) << bytes << QString::fromLatin1(lines);
    };
    row("nothing at all", "", "");
    row("one line feed", "\n", "empty");
    row("blanks and tabs", " \t \n", "empty");
    row("a command", "G1 X1 Y-2.5\n", "G1 X1 Y-2.5");
    row("no line end at the end", "G28\nM84", "G28 | M84");
    row("carriage return and line feed", "G28\r\nM84\r\n", "G28 | M84");
    row("carriage returns alone", "G28\rM84\r", "G28 | M84");
    row("line feed and carriage return", "G28\n\rM84", "G28 | empty | M84");
    row("two carriage returns before the line feed", "G28\r\r\nM84", "G28 | empty | M84");
    row("empty lines count", "\n\nG28\n\n", "empty | empty | G28 | empty");
    row("lower case", "g1 x1 e.5\n", "G1 E0.5 X1");
    row("no blanks", "G1X1Y2E.1F1200\n", "G1 E0.1 F1200 X1 Y2");
    row("blanks between letter and number", "G 1 X 1 Y\t2\n", "G1 X1 Y2");
    row("leading zeros", "G01 X001.500\nM0104 S0200\n", "G1 X1.5 | M104 S200");
    row("plus sign", "G1 X+1.5\n", "G1 X1.5");
    row("nothing before the dot", "G1 X.3 Y-.3\n", "G1 X0.3 Y-0.3");
    row("nothing behind the dot", "G1 X3.\n", "G1 X3");
    row("subcode", "G92.1\nG29.2 P1\n", "G92.1 | G29.2 P1");
    row("tool", "T1\n", "T1");
    row("letters without a number", "G28 X Y\n", "G28 X Y");
    row("comment", "; hello\nG1 X1 ; move\n;G1 X2\n", "empty | G1 X1 | empty");
    row("comment right behind a word", "G1 X1;move\n", "G1 X1");
    row("comment in parentheses", "(hello) G1 (to) X1 (here)\n", "G1 X1");
    row("parenthesis that is not closed", "G1 X1 (and Y2\n", "G1 X1");
    row("semicolon in parentheses", "(a;b) G1 X1\n", "G1 X1");
    row("parenthesis in a comment", "G1 X1 ; (Y2\n", "G1 X1");
    row("line number", "N10 G1 X1\n", "G1 X1");
    row("line number and checksum", "N3 T0*57\n", "T0");
    row("line number, checksum and comment", "N3 T0*57 ; tool\n", "T0");
    row("wrong checksum", "N3 T0*58\n", "unreadable");
    row("checksum without digits", "N3 T0*\n", "unreadable");
    row("checksum without line number", "T0*57\n", "unreadable");
    row("line number alone", "N10\n", "unreadable");
    row("byte order mark", "\xEF\xBB\xBFG28\n", "G28");
    row("byte order mark later", "G28\n\xEF\xBB\xBFG28\n", "G28 | unreadable");
    row("nan", "G1 Xnan\n", "unreadable");
    row("minus nan", "G1 X-nan\n", "unreadable");
    row("infinity without its letters' meaning", "G1 Xinf\n", "G1 F I N X");
    row("minus infinity", "G1 X-inf\n", "unreadable");
    row("exponent is another word", "G1 X1e5\n", "G1 E5 X1");
    row("hexadecimal is another word", "G1 X0x10\n", "unreadable");
    row("largest number", "G1 X1000000000\n", "G1 X1000000000");
    row("over the largest number", "G1 X1000000001\n", "unreadable");
    row("a number that no double holds", "G1 X" + QByteArray(400, '9') + "\n", "unreadable");
    row("many decimals", "G1 X1." + QByteArray(400, '0') + "1\n", "G1 X1");
    row("two dots", "G1 X1.2.3\n", "unreadable");
    row("two signs", "G1 X--1\n", "unreadable");
    row("plus and minus", "G1 X+-1\n", "unreadable");
    row("sign alone", "G1 X-\n", "unreadable");
    row("decimal comma", "G1 X1,5\n", "unreadable");
    row("letter twice", "G1 X1 X2\n", "unreadable");
    row("two commands in a line", "G90 G21\n", "unreadable");
    row("two commands in a line without a blank", "G90M82\n", "unreadable");
    row("no command letter", "X10 Y10\n", "unreadable");
    row("command without number", "G X1\n", "unreadable");
    row("negative command", "G-1\n", "unreadable");
    row("command number too large", "G100000\nM99999999999\n", "unreadable | unreadable");
    row("words", "hello world\n", "unreadable");
    row("zero bytes", QByteArray("G1 X1\0Y2\nG28\n", 13), "unreadable | G28");
    row("bytes over 127", "G1 X1\xff\nG28\n", "unreadable | G28");
    row("assignment", "G1 X=1\n", "unreadable");
}

void tst_GCodeReader::readsLines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, lines);

    GCodeReader reader(byteSourceOf(bytes.toStdString()));

    QCOMPARE(linesText(reader), lines);
}

void tst_GCodeReader::readsTheSameInPiecesOfAnySize()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, lines);

    for (std::size_t piece : {1u, 2u, 3u, 7u}) {
        GCodeReader reader(inPieces(bytes.toStdString(), piece));
        QCOMPARE(linesText(reader), lines);
    }
}

void tst_GCodeReader::numbersLinesFromOne()
{
    GCodeReader reader(byteSourceOf("\r\n; two\rG28\n"));
    GCodeLine line;

    QVERIFY(reader.next(line));
    QCOMPARE(line.number(), std::uint64_t(1));
    QVERIFY(reader.next(line));
    QCOMPARE(line.number(), std::uint64_t(2));
    QVERIFY(reader.next(line));
    QCOMPARE(line.number(), std::uint64_t(3));
    QCOMPARE(lineText(line), QStringLiteral("G28"));
    QVERIFY(!reader.next(line));
}

void tst_GCodeReader::keepsTheTextOfAMessage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("words") << QByteArray("M117 Layer 1 of 10\n") << QByteArray("Layer 1 of 10");
    QTest::newRow("nothing") << QByteArray("M117\n") << QByteArray("");
    QTest::newRow("blanks around") << QByteArray("M117 \t hi \t\n") << QByteArray("hi");
    QTest::newRow("comment behind") << QByteArray("M117 hi ; there\n") << QByteArray("hi");
    QTest::newRow("parentheses belong to it") << QByteArray("M117 (hi)\n") << QByteArray("(hi)");
    QTest::newRow("letters twice") << QByteArray("M117 aaa X1 X2\n") << QByteArray("aaa X1 X2");
    QTest::newRow("not ASCII") << QByteArray("M117 \xc3\xa9\n") << QByteArray("\xc3\xa9");
}

void tst_GCodeReader::keepsTheTextOfAMessage()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    GCodeReader reader(byteSourceOf(bytes.toStdString()));
    GCodeLine line;

    QVERIFY(reader.next(line));

    QCOMPARE(line.kind(), GCodeLine::Command);
    QCOMPARE(line.name(), std::string("M117"));
    QCOMPARE(std::string(line.text()), text.toStdString());
}

void tst_GCodeReader::survivesLinesOfMegabytes()
{
    const std::string words(3 << 20, 'X');
    const std::string blanks(3 << 20, ' ');
    const std::string text = "G1 X1 ;" + words + "\n;" + words + "\nG1 " + words + "\n" + blanks +
                             "G1 X2\n(" + words + ") G1 X3\nM117 " + words + "\nG28\n";
    GCodeReader reader(byteSourceOf(text));

    QCOMPARE(
        linesText(reader),
        QStringLiteral("G1 X1 | empty | unreadable | unreadable | unreadable | unreadable | G28"));
}

void tst_GCodeReader::countsBytes()
{
    const std::string text = "G28\n; and\nM84";
    GCodeReader reader(inPieces(text, 5));
    GCodeLine line;
    QCOMPARE(reader.bytesRead(), std::uint64_t(0));

    while (reader.next(line)) {
    }

    QCOMPARE(reader.bytesRead(), std::uint64_t(text.size()));
}

void tst_GCodeReader::passesOnAnErrorOfItsSource()
{
    int calls = 0;
    GCodeReader reader([&](char* buffer, std::size_t) -> std::size_t {
        if (++calls > 1)
            throw std::runtime_error("Input/output error");
        std::memcpy(buffer, "G28\nM84", 7);
        return 7;
    });
    GCodeLine line;
    QVERIFY(reader.next(line));

    QVERIFY_EXCEPTION_THROWN(reader.next(line), std::runtime_error);
}

void tst_GCodeReader::survivesRandomBytes()
{
    std::mt19937 random(20260);
    const std::string alphabet = "GMTNXYZEFIJRSP0123456789.-+*;() \t\n\r";
    for (int round = 0; round < 300; ++round) {
        std::string text(random() % 2000, '\0');
        for (char& c : text)
            c = round % 3 == 0 ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        GCodeReader whole(byteSourceOf(text));
        GCodeReader pieces(inPieces(text, 1 + random() % 50));

        const QString lines = linesText(whole);

        QCOMPARE(linesText(pieces), lines);
        QVERIFY(!lines.contains(QLatin1String("nan")));
    }
}

void tst_GCodeReader::leavesTheLineAloneAtTheEnd()
{
    GCodeReader reader(byteSourceOf("G28 X"));
    GCodeLine line;
    QVERIFY(reader.next(line));

    QVERIFY(!reader.next(line));
    QVERIFY(!reader.next(line));

    QCOMPARE(lineText(line), QStringLiteral("G28 X"));
}

QTEST_GUILESS_MAIN(tst_GCodeReader)
#include "tst_gcode_reader.moc"
