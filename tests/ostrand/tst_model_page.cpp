#include "apps/ostrand/file_view.h"
#include "apps/ostrand/model_page.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;

namespace {

/** A tetrahedron of 20 x 10 x 5 mm as text. */
QByteArray smallModel()
{
    const QByteArray a("vertex 0 0 0\n");
    const QByteArray b("vertex 20 0 0\n");
    const QByteArray c("vertex 0 10 0\n");
    const QByteArray d("vertex 0 0 5\n");
    QByteArray text("solid part\n");
    for (const QByteArray& corners : {a + c + b, a + b + d, b + c + d, c + a + d})
        text += "facet normal 0 0 0\nouter loop\n" + corners + "endloop\nendfacet\n";
    return text + "endsolid part\n";
}

/** Many triangles, which take a while. */
QByteArray largeModel()
{
    const QByteArray body = smallModel();
    const QByteArray facets = body.mid(body.indexOf("facet"), body.indexOf("endsolid") - 11);
    return "solid part\n" + facets.repeated(20000) + "endsolid part\n";
}

struct World
{
    QTemporaryDir folder;
    FileView view;

    World()
    {
        view.resize(600, 400);
        view.show();
    }

    QString write(const char* name, const QByteArray& content) const
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    ModelPage& page() const { return *view.findChild<ModelPage*>(); }
    QLabel& label(const char* name) const { return *view.findChild<QLabel*>(QLatin1String(name)); }
    QPixmap picture() const { return label("modelPicture").pixmap(Qt::ReturnByValue); }

    void open(const char* name, const QByteArray& content)
    {
        view.setFile(write(name, content));
        QTRY_VERIFY_WITH_TIMEOUT(!page().isReading(), 60000);
    }
};

} // namespace

class tst_ModelPage : public QObject
{
    Q_OBJECT

private slots:
    void showsAPictureAndTheSizeOfAModel();
    void drawsThePictureAnewInAnotherSize();
    void readsAFileAgainWhenItHasChanged();
    void readsAFileOnce();
    void saysWhyAModelCannotBeShown_data();
    void saysWhyAModelCannotBeShown();
    void showsTheFileThatWasOpenedLast();
    void survivesItsEndWhileItReads();
};

void tst_ModelPage::showsAPictureAndTheSizeOfAModel()
{
    World world;
    world.open("part.stl", smallModel());
    QCOMPARE(world.label("modelExtent").text(), QStringLiteral("20.0 x 10.0 x 5.0 mm"));
    QVERIFY(!world.picture().isNull());
    QCOMPARE(world.picture().size(), world.label("modelPicture").size());
    QCOMPARE(world.label("fileName").text(), QStringLiteral("part.stl"));
    QVERIFY(world.view.findChild<QPushButton*>(QStringLiteral("makeButton"))->isEnabled());
}

void tst_ModelPage::drawsThePictureAnewInAnotherSize()
{
    World world;
    world.open("part.stl", smallModel());
    world.view.resize(900, 500);
    QTRY_COMPARE(world.picture().size(), world.label("modelPicture").size());
    QVERIFY(world.picture().width() > 600);
}

void tst_ModelPage::readsAFileAgainWhenItHasChanged()
{
    World world;
    world.open("part.stl", smallModel());
    world.open("part.stl", smallModel().replace("20 0 0", "30.5 0 0"));
    QCOMPARE(world.label("modelExtent").text(), QStringLiteral("30.5 x 10.0 x 5.0 mm"));
}

void tst_ModelPage::readsAFileOnce()
{
    World world;
    world.open("part.stl", smallModel());
    QSignalSpy changed(&world.page(), &ModelPage::pictureChanged);
    const QImage small = world.label("filePicture").pixmap(Qt::ReturnByValue).toImage();
    world.view.setFile(world.view.file());
    QCOMPARE(world.label("filePicture").pixmap(Qt::ReturnByValue).toImage(), small);
    QVERIFY(!world.page().isReading());
    QVERIFY(changed.isEmpty());
}

void tst_ModelPage::saysWhyAModelCannotBeShown_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("start");
    QTest::newRow("broken") << QByteArray("part.stl") << QByteArray("nothing of a model")
                            << QStringLiteral("The model cannot be shown: ");
    QTest::newRow("empty") << QByteArray("part.stl") << QByteArray()
                           << QStringLiteral("The model cannot be shown: ");
    QTest::newRow("another kind")
        << QByteArray("part.3mf") << QByteArray("PK")
        << QStringLiteral("There is no picture of this kind of model. It can be made all the "
                          "same.");
}

void tst_ModelPage::saysWhyAModelCannotBeShown()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, start);
    World world;
    world.open("good.stl", smallModel());
    world.open(name.constData(), content);
    QVERIFY2(world.label("modelPicture").text().startsWith(start),
             qPrintable(world.label("modelPicture").text()));
    QVERIFY(world.picture().isNull());
    QCOMPARE(world.label("modelExtent").text(), QString());
    // The slicer may still read it.
    QVERIFY(world.view.findChild<QPushButton*>(QStringLiteral("makeButton"))->isEnabled());
}

void tst_ModelPage::showsTheFileThatWasOpenedLast()
{
    World world;
    world.view.setFile(world.write("large.stl", largeModel()));
    world.open("part.stl", smallModel());
    QCOMPARE(world.label("modelExtent").text(), QStringLiteral("20.0 x 10.0 x 5.0 mm"));
}

void tst_ModelPage::survivesItsEndWhileItReads()
{
    for (int i = 0; i < 3; ++i) {
        World world;
        world.view.setFile(world.write("large.stl", largeModel()));
        QVERIFY(world.page().isReading());
    }
}

QTEST_MAIN(tst_ModelPage)
#include "tst_model_page.moc"
