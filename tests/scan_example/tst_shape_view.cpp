#include <shape_view.h>

#include <QTest>

using scan_example::ShapeView;
using trovek::geometry::Mesh;
using trovek::geometry::PointCloud;

namespace {

/** A step with a long, a middle and a short side. */
Mesh block()
{
    Mesh mesh;
    for (const double z : {0.0, 10.0}) {
        for (const double y : {0.0, 20.0}) {
            for (const double x : {0.0, 40.0})
                mesh.vertices.push_back({x, y, z});
        }
    }
    mesh.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return mesh;
}

QImage pictureOf(ShapeView& view)
{
    return view.grab().toImage();
}

/** The rectangle of what is not the ground. */
QRect drawn(const QImage& image)
{
    QRect all;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != image.pixel(0, 0))
                all |= QRect(x, y, 1, 1);
        }
    }
    return all;
}

} // namespace

class tst_ShapeView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void saysThatThereIsNothing();
    void aMeshIsInTheMiddleAndShaded();
    void cloudsHaveTheirColors();
    void aDragTurnsIt();
    void keysTurnAndZoomIt();
    void theWheelZooms();
    void anEmptyShapeDrawsNothing();

private:
    std::unique_ptr<ShapeView> m_view;
};

void tst_ShapeView::init()
{
    m_view = std::make_unique<ShapeView>();
    m_view->resize(300, 300);
}

void tst_ShapeView::saysThatThereIsNothing()
{
    const QImage empty = pictureOf(*m_view);
    QVERIFY(!drawn(empty).isEmpty());
    m_view->showMesh(block());
    QVERIFY(pictureOf(*m_view) != empty);
    m_view->showNothing();
    QCOMPARE(pictureOf(*m_view), empty);
}

void tst_ShapeView::aMeshIsInTheMiddleAndShaded()
{
    m_view->showMesh(block());
    const QImage image = pictureOf(*m_view);
    const QRect where = drawn(image);
    QVERIFY((where.center() - QPoint(150, 150)).manhattanLength() < 6);
    QVERIFY(where.width() > 150);
    QVERIFY(where.width() > where.height());
    QSet<QRgb> shades;
    for (int x = where.left(); x <= where.right(); x += 3) {
        for (int y = where.top(); y <= where.bottom(); y += 3)
            shades.insert(image.pixel(x, y));
    }
    // The ground and the three sides that one can see.
    QCOMPARE(shades.size(), 4);
}

void tst_ShapeView::cloudsHaveTheirColors()
{
    PointCloud left;
    PointCloud right;
    for (int i = 0; i < 100; ++i) {
        left.positions.push_back({-20.0, i % 10 * 1.0, i / 10 * 1.0});
        right.positions.push_back({20.0, i % 10 * 1.0, i / 10 * 1.0});
    }
    m_view->showClouds({left, right});
    const QImage image = pictureOf(*m_view);
    int blue = 0;
    int orange = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (pixel == image.pixel(0, 0))
                continue;
            blue += qBlue(pixel) > qRed(pixel) && x < 150;
            orange += qRed(pixel) > qBlue(pixel) && x > 150;
        }
    }
    QVERIFY(blue > 100);
    QVERIFY(orange > 100);
}

void tst_ShapeView::aDragTurnsIt()
{
    m_view->showMesh(block());
    const QImage before = pictureOf(*m_view);
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, {100, 100});
    QMouseEvent move(QEvent::MouseMove, QPointF(160, 100), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(m_view.get(), &move);
    QVERIFY(pictureOf(*m_view) != before);
    QMouseEvent back(QEvent::MouseMove, QPointF(100, 100), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(m_view.get(), &back);
    QCOMPARE(pictureOf(*m_view), before);
}

void tst_ShapeView::keysTurnAndZoomIt()
{
    m_view->showMesh(block());
    const QImage home = pictureOf(*m_view);
    QTest::keyClick(m_view.get(), Qt::Key_Left);
    QVERIFY(pictureOf(*m_view) != home);
    QTest::keyClick(m_view.get(), Qt::Key_Right);
    QCOMPARE(pictureOf(*m_view), home);
    QTest::keyClick(m_view.get(), Qt::Key_Up);
    QVERIFY(pictureOf(*m_view) != home);
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    QCOMPARE(pictureOf(*m_view), home);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    QVERIFY(drawn(pictureOf(*m_view)).width() < drawn(home).width());
    QTest::keyClick(m_view.get(), Qt::Key_Plus);
    QCOMPARE(drawn(pictureOf(*m_view)).width(), drawn(home).width());
}

void tst_ShapeView::theWheelZooms()
{
    m_view->showMesh(block());
    const int before = drawn(pictureOf(*m_view)).width();
    QWheelEvent away({150, 150}, {150, 150}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_view.get(), &away);
    QVERIFY(drawn(pictureOf(*m_view)).width() < before);
}

void tst_ShapeView::anEmptyShapeDrawsNothing()
{
    m_view->showClouds({PointCloud()});
    pictureOf(*m_view);
    m_view->showMesh(Mesh());
    pictureOf(*m_view);
}

QTEST_MAIN(tst_ShapeView)
#include "tst_shape_view.moc"
