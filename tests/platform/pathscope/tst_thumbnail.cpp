#include "toolpaths_maker.h"

#include <pathscope/thumbnail.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <thread>

using namespace pathscope;

namespace {

constexpr QSize kSize(96, 96);
const std::vector<QColor> kColours = {QColor(230, 20, 20), QColor(20, 40, 230)};

MoveStyle styleOf(Feature feature, std::uint8_t tool = 0)
{
    return {feature, tool, 0.5F, 0.5F, 40, 200, 0};
}

/** Fills a rectangle of the present layer with lines, inside of a wall. */
void addSlab(ToolpathsMaker& maker, float x, float y, float side, std::uint8_t tool = 0)
{
    maker.style(styleOf(Feature::OuterWall, tool));
    maker.square(x, y, side - 0.5F);
    maker.style(styleOf(Feature::SolidInfill, tool));
    const float half = side / 2 - 0.75F;
    bool forth = true;
    maker.travelTo(x - half, y - half);
    for (float line = -half; line <= half; line += 0.5F, forth = !forth) {
        maker.extrudeTo(x + (forth ? -half : half), y + line);
        maker.extrudeTo(x + (forth ? half : -half), y + line);
    }
}

/** A cube of solid slabs; the tool of each layer is told by its number. */
ToolpathsMaker cube(const std::function<std::uint8_t(int)>& toolOf, int layers = 20)
{
    ToolpathsMaker maker;
    for (int i = 0; i < layers; ++i) {
        maker.layer(0.5F * float(i + 1));
        addSlab(maker, 50, 50, 10, toolOf(i));
    }
    return maker;
}

std::uint8_t firstTool(int)
{
    return 0;
}

QImage pictureOf(ToolpathsMaker& maker, QSize size = kSize)
{
    return renderThumbnail(*maker.made(), size, kColours);
}

bool isRed(QRgb pixel)
{
    return qAlpha(pixel) > 200 && qRed(pixel) > 3 * qBlue(pixel);
}

bool isBlue(QRgb pixel)
{
    return qAlpha(pixel) > 200 && qBlue(pixel) > 3 * qRed(pixel);
}

/** The rectangle around all that is not quite transparent. */
QRect opaqueRect(const QImage& picture)
{
    QRect rect;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) > 40)
                rect |= QRect(x, y, 1, 1);
        }
    }
    return rect;
}

int count(const QImage& picture, bool (*is)(QRgb))
{
    int pixels = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            pixels += is(picture.pixel(x, y)) ? 1 : 0;
    }
    return pixels;
}

int lightnessAt(const QImage& picture, QPoint point)
{
    return qGray(picture.pixel(point));
}

/**
 * Compares with the picture that is kept under this name. Rounding differs between machines, so
 * single pixels may, a little; a face that is missing or has another colour may not.
 *
 * With TROVEK_KEEP_PICTURES set the picture is kept instead, to be looked at before a commit.
 */
void compareWithKept(const QImage& picture, const char* name)
{
    const QString folder = QFINDTESTDATA("pictures");
    const QString path = folder + QStringLiteral("/%1.png").arg(QLatin1String(name));
    if (qEnvironmentVariableIsSet("TROVEK_KEEP_PICTURES")) {
        QVERIFY(picture.save(path));
        return;
    }
    const QImage kept = QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QVERIFY2(!kept.isNull(), qPrintable(path));
    QCOMPARE(picture.size(), kept.size());

    double sum = 0;
    int different = 0;
    for (int y = 0; y < kept.height(); ++y) {
        for (int x = 0; x < kept.width(); ++x) {
            const QRgb a = picture.pixel(x, y);
            const QRgb b = kept.pixel(x, y);
            const int difference =
                std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                          std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
            sum += difference;
            different += difference > 40 ? 1 : 0;
        }
    }
    const int pixels = kept.width() * kept.height();
    const QString seen = QDir::temp().filePath(QStringLiteral("%1.png").arg(QLatin1String(name)));
    if (sum / pixels > 2 || different > pixels / 100) {
        picture.save(seen);
        QFAIL(qPrintable(QStringLiteral("mean %1, different %2; see %3")
                             .arg(sum / pixels)
                             .arg(different)
                             .arg(seen)));
    }
}

} // namespace

class tst_Thumbnail : public QObject
{
    Q_OBJECT

private slots:
    void looksAsKept();
    void aRedFirstLayerIsRedWhereItShouldBe();
    void whatIsInFrontHidesWhatIsBehind_data();
    void whatIsInFrontHidesWhatIsBehind();
    void facesAreLitByTheirDirection();
    void fillsTheFrameInTheMiddle_data();
    void fillsTheFrameInTheMiddle();
    void whatIsNoPartOfThePrintIsLeftOut_data();
    void whatIsNoPartOfThePrintIsLeftOut();
    void supportsAreShown();
    void aPrintOfNothingElseIsShown();
    void missingColoursAreOwn();
    void curvesOfTinyMovesAreClosed();
    void linesReachAsFarAtBothEnds();
    void whatIsApartStaysApart();
    void nothingGivesNoPicture();
    void sizesThatAreNoneGiveNoPicture_data();
    void sizesThatAreNoneGiveNoPicture();
    void readsAFile();
    void aFileThatCannotBeReadGivesNoPicture();
    void anyThreadMayDraw();
    void oddMovesAreSurvived();
};

void tst_Thumbnail::looksAsKept()
{
    // A block in two colours, a tower before it, and a round of short moves.
    ToolpathsMaker maker;
    for (int i = 0; i < 24; ++i) {
        maker.layer(0.5F * float(i + 1));
        if (i < 10)
            addSlab(maker, 50, 50, 16, i < 5 ? 0 : 1);
        addSlab(maker, 62, 44, 4, 0);
        maker.style(styleOf(Feature::OuterWall, 1));
        const float radius = 7 - 0.2F * float(i);
        maker.travelTo(68 + radius, 60);
        for (int step = 1; step <= 90; ++step) {
            const float angle = float(step) * 6.2831853F / 90;
            maker.extrudeTo(68 + radius * std::cos(angle), 60 + radius * std::sin(angle));
        }
    }

    compareWithKept(pictureOf(maker, QSize(160, 120)), "thumbnail");
}

void tst_Thumbnail::aRedFirstLayerIsRedWhereItShouldBe()
{
    ToolpathsMaker maker = cube([](int layer) { return std::uint8_t(layer == 0 ? 0 : 1); });
    const QImage picture = pictureOf(maker);

    const QRect rect = opaqueRect(picture);
    const int middle = rect.center().x();
    // Seen on a corner, the lowest points are those of the front right edge.
    QVERIFY(isRed(picture.pixel(middle, rect.bottom() - 1)));
    for (int y = rect.top() + 4; y < rect.bottom() - 8; ++y)
        QVERIFY2(isBlue(picture.pixel(middle, y)), qPrintable(QString::number(y)));
    // One of twenty layers: a narrow band along the lower edges.
    const int red = count(picture, isRed);
    const int blue = count(picture, isBlue);
    QVERIFY2(red > blue / 60 && red < blue / 12,
             qPrintable(QStringLiteral("%1 of %2").arg(red).arg(blue)));
}

void tst_Thumbnail::whatIsInFrontHidesWhatIsBehind_data()
{
    QTest::addColumn<bool>("frontIsPrintedFirst");

    QTest::newRow("the front one printed first") << true;
    QTest::newRow("the back one printed first") << false;
}

void tst_Thumbnail::whatIsInFrontHidesWhatIsBehind()
{
    QFETCH(bool, frontIsPrintedFirst);
    // The viewer stands at the front right: a low block behind a high one is out of sight.
    ToolpathsMaker maker;
    for (int i = 0; i < 30; ++i) {
        maker.layer(0.5F * float(i + 1));
        for (const bool front : {frontIsPrintedFirst, !frontIsPrintedFirst}) {
            if (front)
                addSlab(maker, 60, 40, 10, 0);
            else if (i < 4)
                addSlab(maker, 52, 48, 4, 1);
        }
    }

    const QImage picture = pictureOf(maker);

    QCOMPARE(count(picture, isBlue), 0);
    QVERIFY(count(picture, isRed) > 1000);
}

void tst_Thumbnail::facesAreLitByTheirDirection()
{
    ToolpathsMaker maker = cube(firstTool);
    const QImage picture = pictureOf(maker);
    const QRect rect = opaqueRect(picture);
    const int quarter = rect.width() / 4;

    const int top = lightnessAt(picture, {rect.center().x(), rect.top() + rect.height() / 4});
    const int front = lightnessAt(picture, rect.center() + QPoint(-quarter, rect.height() / 8));
    const int side = lightnessAt(picture, rect.center() + QPoint(quarter, rect.height() / 8));

    QVERIFY2(top > front + 5 && front > side + 5,
             qPrintable(QStringLiteral("%1 %2 %3").arg(top).arg(front).arg(side)));
}

void tst_Thumbnail::fillsTheFrameInTheMiddle_data()
{
    QTest::addColumn<QSize>("size");

    QTest::newRow("square") << QSize(100, 100);
    QTest::newRow("wide") << QSize(200, 60);
    QTest::newRow("high") << QSize(60, 200);
    QTest::newRow("small") << QSize(24, 24);
}

void tst_Thumbnail::fillsTheFrameInTheMiddle()
{
    QFETCH(QSize, size);
    ToolpathsMaker maker = cube(firstTool);
    const QImage picture = pictureOf(maker, size);

    QCOMPARE(picture.size(), size);
    const QRect rect = opaqueRect(picture);
    const double used =
        std::max(double(rect.width()) / size.width(), double(rect.height()) / size.height());
    QVERIFY2(used > 0.84 && used < 0.96, qPrintable(QString::number(used)));
    QVERIFY(std::abs(rect.left() - (size.width() - 1 - rect.right())) <= 2);
    QVERIFY(std::abs(rect.top() - (size.height() - 1 - rect.bottom())) <= 2);
    for (const QPoint corner : {QPoint(0, 0), QPoint(size.width() - 1, size.height() - 1)})
        QCOMPARE(qAlpha(picture.pixel(corner)), 0);
}

void tst_Thumbnail::whatIsNoPartOfThePrintIsLeftOut_data()
{
    QTest::addColumn<int>("feature");

    QTest::newRow("skirt") << int(Feature::Skirt);
    QTest::newRow("brim") << int(Feature::Brim);
    QTest::newRow("prime tower") << int(Feature::PrimeTower);
    QTest::newRow("lines before the print") << int(Feature::Custom);
}

void tst_Thumbnail::whatIsNoPartOfThePrintIsLeftOut()
{
    QFETCH(int, feature);
    ToolpathsMaker bare = cube(firstTool);
    ToolpathsMaker more = cube(firstTool);
    more.travelTo(300, 300);
    more.style(styleOf(static_cast<Feature>(feature)));
    more.square(50, 50, 60);

    QCOMPARE(pictureOf(more), pictureOf(bare));
}

void tst_Thumbnail::supportsAreShown()
{
    ToolpathsMaker maker = cube(firstTool);
    const QRect alone = opaqueRect(pictureOf(maker));
    maker.style(styleOf(Feature::Support, 1));
    maker.square(50, 50, 40);

    const QImage picture = pictureOf(maker);

    QVERIFY(count(picture, isBlue) > 20);
    QVERIFY(alone.isValid());
}

void tst_Thumbnail::aPrintOfNothingElseIsShown()
{
    ToolpathsMaker maker;
    maker.layer(0.5F);
    maker.style(styleOf(Feature::Brim));
    maker.square(50, 50, 20);

    QVERIFY(count(pictureOf(maker), isRed) > 50);
}

void tst_Thumbnail::missingColoursAreOwn()
{
    ToolpathsMaker maker = cube([](int layer) { return std::uint8_t(layer < 10 ? 0 : 1); });

    const QImage picture = renderThumbnail(*maker.made(), kSize, {QColor(), QColor(0, 0, 0, 0)});

    const QRect rect = opaqueRect(picture);
    const QColor lower(picture.pixel(rect.center().x() - rect.width() / 4, rect.bottom() - 12));
    const QColor upper(picture.pixel(rect.center().x(), rect.top() + rect.height() / 4));
    QVERIFY(lower.saturation() > 100 && upper.saturation() > 100);
    QVERIFY(std::abs(lower.hue() - upper.hue()) > 60);
}

void tst_Thumbnail::curvesOfTinyMovesAreClosed()
{
    // A cylinder's wall of moves far below a pixel, all of which count together.
    ToolpathsMaker maker;
    for (int i = 0; i < 20; ++i) {
        maker.layer(0.5F * float(i + 1));
        maker.style(styleOf(Feature::OuterWall));
        maker.travelTo(60, 50);
        for (int step = 1; step <= 2000; ++step) {
            const float angle = float(step) * 6.2831853F / 2000;
            maker.extrudeTo(50 + 10 * std::cos(angle), 50 + 10 * std::sin(angle));
        }
    }
    const QImage picture = pictureOf(maker);

    // Below the opening, through which the ground is seen.
    const QRect rect = opaqueRect(picture);
    const int row = rect.center().y() + rect.height() / 6;
    for (int x = rect.left() + 3; x <= rect.right() - 3; ++x)
        QVERIFY2(isRed(picture.pixel(x, row)), qPrintable(QString::number(x)));
}

void tst_Thumbnail::linesReachAsFarAtBothEnds()
{
    ToolpathsMaker maker;
    maker.layer(0.5F);
    maker.style({Feature::OuterWall, 0, 3, 0.01F, 40, 200, 0});
    maker.travelTo(45, 45);
    maker.extrudeTo(55, 55);
    const QImage picture = pictureOf(maker);

    // Along the diagonal, so it lies level in the picture.
    const QRect rect = opaqueRect(picture);
    QVERIFY(rect.width() > rect.height());
    QVERIFY2(std::abs(rect.left() - (kSize.width() - 1 - rect.right())) <= 1,
             qPrintable(QString::number(rect.left())));
}

void tst_Thumbnail::whatIsApartStaysApart()
{
    // Marks of less than a pixel, far from each other.
    ToolpathsMaker maker;
    maker.layer(0.5F);
    maker.style(styleOf(Feature::OuterWall));
    for (const float x : {0.0F, 40.0F}) {
        maker.travelTo(x, x);
        maker.extrudeTo(x + 0.02F, x);
        maker.extrudeTo(x + 0.02F, x + 0.02F);
    }
    const QImage picture = pictureOf(maker);

    QVERIFY(count(picture, [](QRgb pixel) { return qAlpha(pixel) > 0; }) > 0);
    for (int x = kSize.width() / 4; x < kSize.width() * 3 / 4; ++x) {
        for (int y = 0; y < kSize.height(); ++y)
            QCOMPARE(qAlpha(picture.pixel(x, y)), 0);
    }
}

void tst_Thumbnail::nothingGivesNoPicture()
{
    QVERIFY(renderThumbnail(Toolpaths(), kSize).isNull());

    ToolpathsMaker travels;
    travels.layer(0.5F);
    travels.style(styleOf(Feature::OuterWall));
    travels.travelTo(50, 50);
    QVERIFY(pictureOf(travels).isNull());
}

void tst_Thumbnail::sizesThatAreNoneGiveNoPicture_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("isNull");

    QTest::newRow("not valid") << QSize() << true;
    QTest::newRow("no width") << QSize(0, 10) << true;
    QTest::newRow("no height") << QSize(10, 0) << true;
    QTest::newRow("below 0") << QSize(-5, 10) << true;
    QTest::newRow("too wide") << QSize(8193, 1) << true;
    QTest::newRow("far too large") << QSize(2000000000, 2000000000) << true;
    QTest::newRow("as wide as can be") << QSize(8192, 1) << false;
    QTest::newRow("a pixel") << QSize(1, 1) << false;
}

void tst_Thumbnail::sizesThatAreNoneGiveNoPicture()
{
    QFETCH(QSize, size);
    QFETCH(bool, isNull);
    ToolpathsMaker maker = cube(firstTool, 2);

    QCOMPARE(pictureOf(maker, size).isNull(), isNull);
}

void tst_Thumbnail::readsAFile()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("W\u00fcrfel.gcode"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("G90\nM83\n");
    for (int i = 1; i <= 10; ++i) {
        file.write("T" + QByteArray::number(i <= 5 ? 0 : 1) + "\n");
        file.write(";LAYER_CHANGE\n;Z:" + QByteArray::number(i * 0.5) + "\n;HEIGHT:0.5\n");
        file.write(";TYPE:External perimeter\n;WIDTH:0.5\nG1 Z" + QByteArray::number(i * 0.5) +
                   " F3000\n");
        file.write("G1 X0 Y0\nG1 X10 Y0 E1\nG1 X10 Y10 E1\nG1 X0 Y10 E1\nG1 X0 Y0 E1\n");
    }
    file.close();

    const QImage picture = renderThumbnail(path, kSize, kColours);

    QCOMPARE(picture.size(), kSize);
    QVERIFY(count(picture, isRed) > 300);
    QVERIFY(count(picture, isBlue) > 300);
}

void tst_Thumbnail::aFileThatCannotBeReadGivesNoPicture()
{
    QTemporaryDir folder;
    QVERIFY(renderThumbnail(folder.filePath(QStringLiteral("none.gcode")), kSize).isNull());
    QVERIFY(renderThumbnail(folder.path(), kSize).isNull());
    QVERIFY(renderThumbnail(QString(), kSize).isNull());

    const QString path = folder.filePath(QStringLiteral("noise.gcode"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(5000, '\0') + "\xff\xfe GX1 \r\r\n G1 Xnan E");
    file.close();
    QVERIFY(renderThumbnail(path, kSize).isNull());
}

void tst_Thumbnail::anyThreadMayDraw()
{
    ToolpathsMaker maker = cube(firstTool);
    const QImage here = pictureOf(maker);
    const auto paths = maker.made();
    QImage there;

    std::thread([&] { there = renderThumbnail(*paths, kSize, kColours); }).join();

    QCOMPARE(there, here);
}

void tst_Thumbnail::oddMovesAreSurvived()
{
    ToolpathsMaker maker;
    maker.layer(0.5F);
    maker.style({Feature::OuterWall, 15, 0, 0, 40, 200, 0});
    maker.extrudeTo(10, 10);
    maker.extrudeTo(10, 10);
    maker.style({Feature::OuterWall, 15, 1e6F, 1e6F, 40, 200, 0});
    maker.extrudeTo(1e6F, -1e6F);
    maker.extrudeTo(1e6F, -1e6F);

    QCOMPARE(renderThumbnail(*maker.made(), kSize).size(), kSize);
}

QTEST_GUILESS_MAIN(tst_Thumbnail)
#include "tst_thumbnail.moc"
