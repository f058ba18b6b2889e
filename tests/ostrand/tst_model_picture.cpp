#include "apps/ostrand/model_picture.h"

#include <geometry/mesh.h>

#include <QTest>

using namespace ostrand;
using trovek::geometry::Mesh;

namespace {

/** From the origin, counter-clockwise as seen from outside. */
Mesh box(double x, double y, double z)
{
    Mesh mesh;
    for (int corner = 0; corner < 8; ++corner)
        mesh.vertices.push_back({corner & 1 ? x : 0, corner & 2 ? y : 0, corner & 4 ? z : 0});
    mesh.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                      {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    return mesh;
}

const std::atomic<bool> kNever{false};

/** What is not transparent. */
QRect covered(const QImage& image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

} // namespace

class tst_ModelPicture : public QObject
{
    Q_OBJECT

private slots:
    void fillsThePicture_data();
    void fillsThePicture();
    void shadesTheSides();
    void drawsWhatIsNearerOverWhatIsBehind();
    void drawsSurfacesFromBehindToo();
    void drawsNothingOfNothing();
    void drawsADegenerateModel();
    void stopsWhenItIsCanceled();
};

void tst_ModelPicture::fillsThePicture_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("height");
    QTest::newRow("square") << QSize(200, 200) << 10.0;
    QTest::newRow("wide") << QSize(300, 100) << 10.0;
    QTest::newRow("tall") << QSize(100, 300) << 10.0;
    QTest::newRow("flat model") << QSize(200, 200) << 0.1;
    QTest::newRow("icon") << QSize(24, 24) << 10.0;
}

void tst_ModelPicture::fillsThePicture()
{
    QFETCH(QSize, size);
    QFETCH(double, height);
    const QImage image = renderModel(box(10, 10, height), size, kNever);
    QCOMPARE(image.size(), size);
    const QRect area = covered(image);
    // One direction decides, and the model is in the middle of the other.
    const double fill =
        qMax(double(area.width()) / size.width(), double(area.height()) / size.height());
    QVERIFY2(fill > 0.88 && fill < 0.97, qPrintable(QString::number(fill)));
    QVERIFY(qAbs(area.center().x() - size.width() / 2) <= 1);
    QVERIFY(qAbs(area.center().y() - size.height() / 2) <= 1);
}

void tst_ModelPicture::shadesTheSides()
{
    const QImage image = renderModel(box(10, 10, 10), QSize(200, 200), kNever);
    const int middle = 100;
    const int top = qGreen(image.pixel(middle, 60));
    const int left = qGreen(image.pixel(60, 130));
    const int right = qGreen(image.pixel(150, 120));
    QVERIFY2(top > left && left > right,
             qPrintable(QStringLiteral("%1 %2 %3").arg(top).arg(left).arg(right)));
    QVERIFY(right > 20);
}

void tst_ModelPicture::drawsWhatIsNearerOverWhatIsBehind()
{
    // The order of the triangles does not count.
    Mesh mesh = box(10, 10, 10);
    const QImage image = renderModel(mesh, QSize(80, 80), kNever);
    std::reverse(mesh.triangles.begin(), mesh.triangles.end());
    QCOMPARE(renderModel(mesh, QSize(80, 80), kNever), image);
}

void tst_ModelPicture::drawsSurfacesFromBehindToo()
{
    Mesh insideOut = box(10, 10, 10);
    for (auto& triangle : insideOut.triangles)
        std::swap(triangle[1], triangle[2]);
    QCOMPARE(renderModel(insideOut, QSize(80, 80), kNever),
             renderModel(box(10, 10, 10), QSize(80, 80), kNever));
}

void tst_ModelPicture::drawsNothingOfNothing()
{
    QVERIFY(renderModel(Mesh(), QSize(80, 80), kNever).isNull());
    QVERIFY(renderModel(box(1, 1, 1), QSize(), kNever).isNull());
    QVERIFY(renderModel(box(1, 1, 1), QSize(0, 80), kNever).isNull());
}

void tst_ModelPicture::drawsADegenerateModel()
{
    Mesh point;
    point.vertices = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
    point.triangles = {{0, 1, 2}};
    QVERIFY(covered(renderModel(point, QSize(80, 80), kNever)).isEmpty());
}

void tst_ModelPicture::stopsWhenItIsCanceled()
{
    Mesh mesh = box(10, 10, 10);
    while (mesh.triangles.size() < 10000)
        mesh.triangles.push_back({0, 1, 4});
    const std::atomic<bool> canceled{true};
    QVERIFY(renderModel(mesh, QSize(80, 80), canceled).isNull());
}

QTEST_GUILESS_MAIN(tst_ModelPicture)
#include "tst_model_picture.moc"
