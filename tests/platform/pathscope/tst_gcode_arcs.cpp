#include "moves_in_words.h"

#include <QtTest>

#include <cmath>
#include <cstdio>

using namespace pathscope;

Q_DECLARE_METATYPE(std::string)

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTolerance = 0.01;

struct Point
{
    double x;
    double y;
};

std::string text(const char* format, double a, double b, double c, double d)
{
    char buffer[200];
    std::snprintf(buffer, sizeof buffer, format, a, b, c, d);
    return buffer;
}

/** The largest distance of any point of the chords from a circle. */
double deviation(const Toolpaths& paths, std::uint64_t first, Point centre, double radius)
{
    double worst = 0;
    for (std::uint64_t i = first; i < paths.segmentCount; ++i) {
        const PathPoint& a = paths.startOf(i);
        const PathPoint& b = paths.endOf(i);
        for (int part = 0; part <= 8; ++part) {
            const double x = double(a.x) + (double(b.x) - double(a.x)) * part / 8;
            const double y = double(a.y) + (double(b.y) - double(a.y)) * part / 8;
            worst = std::max(worst, std::abs(std::hypot(x - centre.x, y - centre.y) - radius));
        }
    }
    return worst;
}

double length(const Toolpaths& paths, std::uint64_t first)
{
    double sum = 0;
    for (std::uint64_t i = first; i < paths.segmentCount; ++i) {
        const PathPoint& a = paths.startOf(i);
        const PathPoint& b = paths.endOf(i);
        sum += std::hypot(double(b.x) - double(a.x), double(b.y) - double(a.y));
    }
    return sum;
}

} // namespace

class tst_GcodeArcs : public QObject
{
    Q_OBJECT

private slots:
    void staysWithinAHundredth_data();
    void staysWithinAHundredth();
    void goesTheRightWayRound_data();
    void goesTheRightWayRound();
    void risesEvenlyAlongAHelix();
    void spreadsFilamentEvenly();
    void takesPlanes_data();
    void takesPlanes();
    void endsExactlyWhereItSays();
    void drawsWhatIsNoArcStraight_data();
    void drawsWhatIsNoArcStraight();
    void doesNotTakeMemoryWithoutEnd();
};

void tst_GcodeArcs::staysWithinAHundredth_data()
{
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("degrees");
    QTest::addColumn<bool>("byRadius");

    for (const double radius : {0.05, 0.2, 1.0, 7.5, 40.0, 123.456, 500.0}) {
        for (const double degrees : {1.0, 45.0, 180.0, 270.0, 359.0}) {
            for (const bool byRadius : {false, true}) {
                if (byRadius && (degrees > 179 && degrees < 181))
                    continue;
                QTest::newRow(
                    qPrintable(QStringLiteral("%1 mm, %2 degrees, %3")
                                   .arg(radius)
                                   .arg(degrees)
                                   .arg(byRadius ? QStringLiteral("R") : QStringLiteral("I J"))))
                    << radius << degrees << byRadius;
            }
        }
    }
}

void tst_GcodeArcs::staysWithinAHundredth()
{
    QFETCH(double, radius);
    QFETCH(double, degrees);
    QFETCH(bool, byRadius);
    const double turn = degrees * kPi / 180;
    const Point end = {100 + radius * std::cos(turn), 100 + radius * std::sin(turn)};
    std::string program = text("G1 X%.9f Y100\n", 100 + radius, 0, 0, 0);
    program +=
        byRadius ? text("G3 X%.9f Y%.9f R%.9f\n", end.x, end.y, degrees > 180 ? -radius : radius, 0)
                 : text("G3 X%.9f Y%.9f I%.9f J0\n", end.x, end.y, -radius, 0);

    const auto paths = parseGCode(program);

    const double worst = deviation(*paths, 1, {100, 100}, radius);
    QVERIFY2(worst <= kTolerance, qPrintable(QString::number(worst)));
    const double missing = radius * turn - length(*paths, 1);
    QVERIFY2(std::abs(missing) <= 0.1 * radius * turn, qPrintable(QString::number(missing)));
    // No more chords than are needed.
    const double needed = turn / (2 * std::acos(1 - std::min(1.0, kTolerance / radius)));
    QVERIFY(double(paths->segmentCount - 1) <= std::max(4.0, needed * 1.2 + 1));
    QCOMPARE(paths->skipped.badArcs, std::uint64_t(0));
}

void tst_GcodeArcs::goesTheRightWayRound_data()
{
    QTest::addColumn<std::string>("line");
    QTest::addColumn<double>("quarters");
    /** The side of the middle of the way from the start at 10, 0 around 0, 0. */
    QTest::addColumn<double>("middleX");
    QTest::addColumn<double>("middleY");

    const double diagonal = 10 / std::sqrt(2.0);
    const auto row = [](const char* name, const char* line, double quarters, double x, double y) {
        QTest::newRow(name) << std::string(line) << quarters << x << y;
    };
    row("counter-clockwise", "G3 X0 Y10 I-10 J0", 1, diagonal, diagonal);
    row("clockwise", "G2 X0 Y-10 I-10 J0", 1, diagonal, -diagonal);
    row("clockwise the long way", "G2 X0 Y10 I-10 J0", 3, -diagonal, -diagonal);
    row("without J", "G3 X0 Y10 I-10", 1, diagonal, diagonal);
    row("full circle", "G3 I-10", 4, -10, 0);
    row("full circle clockwise", "G2 X10 Y0 I-10", 4, -10, 0);
    row("R", "G3 X0 Y10 R10", 1, diagonal, diagonal);
    row("R clockwise", "G2 X0 Y-10 R10", 1, diagonal, -diagonal);
    row("negative R is the long way", "G3 X0 Y-10 R-10", 3, -diagonal, diagonal);
    row("negative R clockwise", "G2 X0 Y10 R-10", 3, -diagonal, -diagonal);
    row("half a circle by R", "G3 X-10 Y0 R10", 2, 0, 10);
    row("half a circle by a rounded R", "G2 X-10 Y0 R9.9999", 2, 0, -10);
    row("relative", "G91\nG3 X-10 Y10 I-10", 1, diagonal, diagonal);
    row("lower case without blanks", "g3x0y10i-10j0", 1, diagonal, diagonal);
    row("inches", "G20\nG3 X0 Y0.393700787 I-0.393700787", 1, diagonal, diagonal);
    row("rounded by the slicer", "G3 X0 Y10.01 I-10", 1, diagonal, diagonal);
}

void tst_GcodeArcs::goesTheRightWayRound()
{
    QFETCH(std::string, line);
    QFETCH(double, quarters);
    QFETCH(double, middleX);
    QFETCH(double, middleY);

    const auto paths = parseGCode("G1 X10 Y0\n" + line);

    QCOMPARE(paths->skipped.lines + paths->skipped.badArcs, std::uint64_t(0));
    QVERIFY(std::abs(length(*paths, 1) - quarters * 5 * kPi) < 0.05);
    double nearest = 100;
    for (std::uint64_t i = 1; i < paths->segmentCount; ++i)
        nearest = std::min(nearest, std::hypot(double(paths->endOf(i).x) - middleX,
                                               double(paths->endOf(i).y) - middleY));
    QVERIFY(nearest < 1);
}

void tst_GcodeArcs::risesEvenlyAlongAHelix()
{
    const auto paths = parseGCode("G1 X10 Y0\nG3 X0 Y10 Z5 I-10 J0\n");

    const auto count = paths->segmentCount - 1;
    QVERIFY(count > 5);
    for (std::uint64_t i = 0; i < count; ++i)
        QVERIFY(std::abs(double(paths->endOf(1 + i).z) - 5.0 * double(i + 1) / double(count)) <
                1e-5);
}

void tst_GcodeArcs::spreadsFilamentEvenly()
{
    const auto paths = parseGCode("G1 X10 Y0 E1\nG3 X-10 Y0 I-10 E3 F600\n");

    QVERIFY(std::abs(paths->total.filament - 3) < 1e-9);
    QCOMPARE(paths->extrudingCount, paths->segmentCount);
    QVERIFY(std::abs(paths->total.millimetres - (10 + 10 * kPi)) < 0.05);
    const auto relative = parseGCode("M83\nG1 X10 Y0 E1\nG3 X-10 Y0 I-10 E2 F600\n");
    QVERIFY(std::abs(relative->total.filament - 3) < 1e-9);
}

void tst_GcodeArcs::takesPlanes_data()
{
    QTest::addColumn<std::string>("program");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");

    const double diagonal = 10 / std::sqrt(2.0);
    QTest::newRow("XY") << std::string("G17\nG1 X10\nG3 X0 Y10 I-10\n") << diagonal << diagonal
                        << 0.0;
    QTest::newRow("ZX") << std::string("G18\nG1 Z10\nG3 X10 Z0 K-10\n") << diagonal << 0.0
                        << diagonal;
    QTest::newRow("YZ") << std::string("G19\nG1 Y10\nG3 Y0 Z10 J-10\n") << 0.0 << diagonal
                        << diagonal;
    QTest::newRow("XY again") << std::string("G18\nG17\nG1 X10\nG3 X0 Y10 I-10\n") << diagonal
                              << diagonal << 0.0;
}

void tst_GcodeArcs::takesPlanes()
{
    QFETCH(std::string, program);
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, z);

    const auto paths = parseGCode(program);

    double nearest = 100;
    for (std::uint64_t i = 1; i < paths->segmentCount; ++i) {
        const PathPoint& p = paths->endOf(i);
        nearest = std::min(nearest, std::abs(double(p.x) - x) + std::abs(double(p.y) - y) +
                                        std::abs(double(p.z) - z));
    }
    QVERIFY(nearest < 1.5);
    QVERIFY(paths->segmentCount > 5);
    QCOMPARE(paths->skipped.badArcs, std::uint64_t(0));
}

void tst_GcodeArcs::endsExactlyWhereItSays()
{
    const auto paths = parseGCode("G1 X10.123\nG3 X0.001 Y10.124 I-10.122 J0.001\nG1 X5 Y5\n");

    const PathPoint& end = paths->endOf(paths->segmentCount - 2);
    QCOMPARE(end.x, 0.001F);
    QCOMPARE(end.y, 10.124F);
}

void tst_GcodeArcs::drawsWhatIsNoArcStraight_data()
{
    QTest::addColumn<std::string>("line");

    for (const char* const line :
         {"G2 X5 Y5", "G2 X5 Y5 I0 J0", "G2 X5 Y5 R1", "G2 X5 Y5 R0", "G3 X5 Y5 I100 J3",
          "G3 X5 Y5 I999999 J999999", "G3 X5 Y5 R99999999999", "G3 X5 Y5 K2"})
        QTest::newRow(line) << std::string(line);
}

void tst_GcodeArcs::drawsWhatIsNoArcStraight()
{
    QFETCH(std::string, line);

    const auto paths = parseGCode(line + " E1");

    QCOMPARE(movesInWords(*paths), QStringLiteral("extrude 5 5 0"));
    QCOMPARE(paths->skipped.badArcs, std::uint64_t(1));
    QCOMPARE(paths->skipped.lines, std::uint64_t(0));
    QCOMPARE(paths->total.filament, 1.0);
    QCOMPARE(movesInWords("G2 X0 Y0 R5"), QString());
}

void tst_GcodeArcs::doesNotTakeMemoryWithoutEnd()
{
    std::string program;
    for (int i = 0; i < 20000; ++i)
        program += "G2I4e5\nG2I400000\n";

    const auto paths = parseGCode(program);

    QVERIFY(paths->segmentCount < 2000000);
    QVERIFY(paths->segmentCount > 1000000);
}

QTEST_APPLESS_MAIN(tst_GcodeArcs)
#include "tst_gcode_arcs.moc"
