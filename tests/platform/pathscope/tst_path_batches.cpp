#include "pathscope/path_batches.h"
#include "toolpaths_maker.h"

#include <QTest>

using namespace pathscope;

namespace {

/** Lines along x, a millimetre apart, one a segment pair: 100 mm wide, as deep as there are. */
std::shared_ptr<const Toolpaths> lines(int count)
{
    ToolpathsMaker maker;
    maker.style({Feature::OuterWall, 0, 0.4F, 0.2F, 50});
    maker.layer(0.2F);
    for (int i = 0; i < count; ++i) {
        maker.travelTo(0, float(i));
        maker.extrudeTo(100, float(i));
    }
    return maker.made();
}

/** Looks straight down at a square of this half width around a point, without perspective. */
Frustum lookAt(float x, float y, float half)
{
    QMatrix4x4 matrix;
    matrix.ortho(x - half, x + half, y - half, y + half, -100, 100);
    return Frustum(matrix);
}

struct Seen
{
    std::uint64_t segments = 0;
    int runs = 0;
    std::uint64_t lowest = ~std::uint64_t(0);
};

Seen look(const PathBatches& batches, SegmentRange range, const Frustum& frustum)
{
    Seen seen;
    batches.visit(range, frustum, 1e9F, [&seen](const PathBatches::Run& run) {
        seen.segments += run.count;
        ++seen.runs;
        seen.lowest = std::min(seen.lowest, run.chunk * kSegmentsAChunk + run.first);
    });
    return seen;
}

} // namespace

class tst_PathBatches : public QObject
{
    Q_OBJECT

private slots:
    void hasNothingToShowAtFirst();
    void showsAllInOneRunAChunk();
    void showsARangeAndNoMore();
    void leavesOutWhatIsNotSeen();
    void neverLeavesOutWhatIsSeen();
    void growsWithTheFile();
    void tellsThinFromThick();
    void theBoxOfARangeHoldsIt();
};

void tst_PathBatches::hasNothingToShowAtFirst()
{
    PathBatches batches;

    QCOMPARE(batches.end(), std::uint64_t(0));
    QCOMPARE(look(batches, {0, 1000}, lookAt(0, 0, 1e6F)).runs, 0);
}

void tst_PathBatches::showsAllInOneRunAChunk()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);

    const Seen seen = look(batches, {0, paths->segmentCount}, lookAt(0, 0, 1e6F));

    QCOMPARE(seen.segments, paths->segmentCount);
    QCOMPARE(seen.runs, 3);
}

void tst_PathBatches::showsARangeAndNoMore()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);

    for (const SegmentRange range :
         {SegmentRange{0, 1}, SegmentRange{5, 5}, SegmentRange{7, 3}, SegmentRange{2047, 2049},
          SegmentRange{kSegmentsAChunk - 1, kSegmentsAChunk + 1}, SegmentRange{100, 90'000}}) {
        const Seen seen = look(batches, range, lookAt(0, 0, 1e6F));
        QCOMPARE(seen.segments, range.count());
        QVERIFY(range.isEmpty() || seen.lowest == range.first);
    }
    QCOMPARE(look(batches, {0, ~std::uint64_t(0)}, lookAt(0, 0, 1e6F)).segments,
             paths->segmentCount);
}

void tst_PathBatches::leavesOutWhatIsNotSeen()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);

    QCOMPARE(look(batches, {0, paths->segmentCount}, lookAt(-500, 0, 100)).runs, 0);
    const Seen seen = look(batches, {0, paths->segmentCount}, lookAt(50, 35'000, 10));
    QVERIFY(seen.segments > 0);
    QVERIFY(seen.segments <= 2 * PathBatches::kSegments);
}

void tst_PathBatches::neverLeavesOutWhatIsSeen()
{
    const auto paths = lines(20'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);

    for (int line = 0; line < 20'000; line += 97) {
        const std::uint64_t segment = 2 * std::uint64_t(line) + 1;
        bool shown = false;
        batches.visit({0, paths->segmentCount}, lookAt(50, float(line), 0.1F), 1e9F,
                      [&](const PathBatches::Run& run) {
                          const std::uint64_t first = run.chunk * kSegmentsAChunk + run.first;
                          shown = shown || (first <= segment && segment < first + run.count);
                      });
        QVERIFY2(shown, qPrintable(QString::number(line)));
    }
}

void tst_PathBatches::growsWithTheFile()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    for (std::uint64_t end = 0; end < paths->segmentCount; end += 12'345)
        batches.append(*paths, end);
    batches.append(*paths, paths->segmentCount);
    PathBatches atOnce;
    atOnce.append(*paths, paths->segmentCount);

    for (const float y : {0.0F, 4000.0F, 69'999.0F}) {
        const Frustum frustum = lookAt(50, y, 30);
        QCOMPARE(look(batches, {0, paths->segmentCount}, frustum).segments,
                 look(atOnce, {0, paths->segmentCount}, frustum).segments);
    }
    batches.clear();
    QCOMPARE(batches.end(), std::uint64_t(0));
}

void tst_PathBatches::tellsThinFromThick()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);
    // From y = -10 along +y: the depth of a line is its y + 10.
    QMatrix4x4 matrix;
    matrix.perspective(90, 1, 1, 1e6F);
    matrix.lookAt({50, -10, 0}, {50, 0, 0}, {0, 0, 1});

    std::uint64_t thin = 0;
    std::uint64_t thick = 0;
    batches.visit({0, paths->segmentCount}, Frustum(matrix), 35'000,
                  [&](const PathBatches::Run& run) { (run.thin ? thin : thick) += run.count; });

    QCOMPARE(thin + thick, paths->segmentCount);
    QVERIFY(std::abs(double(thick) - 70'000) < 2 * PathBatches::kSegments);
}

void tst_PathBatches::theBoxOfARangeHoldsIt()
{
    const auto paths = lines(70'000);
    PathBatches batches;
    batches.append(*paths, paths->segmentCount);

    for (const SegmentRange range :
         {SegmentRange{0, 1}, SegmentRange{4000, 4200}, SegmentRange{131'000, 131'200}}) {
        const PathBatches::Box box = batches.boxAround(range);
        for (std::uint64_t segment = range.first; segment < range.end; ++segment) {
            const PathPoint& end = paths->endOf(segment);
            QVERIFY(box.min.x() <= end.x && end.x <= box.max.x());
            QVERIFY(box.min.y() <= end.y && end.y <= box.max.y());
        }
        QVERIFY(box.max.y() - box.min.y() < 3 * PathBatches::kSegments);
    }
    QVERIFY(batches.boxAround({5, 5}).min.x() > batches.boxAround({5, 5}).max.x());
}

QTEST_APPLESS_MAIN(tst_PathBatches)
#include "tst_path_batches.moc"
