#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/double_spin_box.h>
#include <trovek-ui/util.h>

#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <memory>

using trovek::TestLog;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

class FileReceiver : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened += url; }
};

void wheelDown(QWidget* widget)
{
    const QPointF middle = widget->rect().center();
    QWheelEvent event(middle, widget->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    // As from the system: other events neither give the focus nor go on to the parent.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event);
}

/** A page that is too long for its window, with boxes on it. */
struct Page
{
    Page()
    {
        auto* content = new QWidget;
        auto* layout = new QVBoxLayout(content);
        spinBox = new QSpinBox;
        spinBox->setValue(50);
        spinBox->setObjectName(text("spinBox"));
        ownBox = new DoubleSpinBox;
        ownBox->setValue(50);
        comboBox = new QComboBox;
        comboBox->addItems({text("a"), text("b"), text("c")});
        comboBox->setCurrentIndex(1);
        layout->addWidget(spinBox);
        layout->addWidget(ownBox);
        layout->addWidget(comboBox);
        auto* filler = new QLabel;
        filler->setFixedHeight(2000);
        layout->addWidget(filler);
        area.setWidget(content);
        area.resize(300, 200);
        area.show();
        area.setFocus();
    }

    QScrollArea area;
    QSpinBox* spinBox;
    DoubleSpinBox* ownBox;
    QComboBox* comboBox;
};

} // namespace

class tst_Util : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void loadsAPixmap();
    void missingPixmapIsLoggedAndThrown();
    void takesTheDoublePictureOnDenseScreens();
    void buttonIconHasThreeStates();
    void buttonIconNeedsAllThreePictures_data();
    void buttonIconNeedsAllThreePictures();
    void opensTheTextEditor();
    void firmwareVersionsAreTheirText_data();
    void firmwareVersionsAreTheirText();
    void wheelOverAnUnfocusedBoxScrollsThePage_data();
    void wheelOverAnUnfocusedBoxScrollsThePage();
    void wheelOverAFocusedBoxChangesIt();
    void wheelGuardMayBeAppliedTwiceAndToOneBox();

private:
    QString path(const char* name) const { return m_folder->filePath(text(name)); }
    void draw(const char* name, int side, const QColor& colour) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TestLog> m_log;
};

void tst_Util::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_log = std::make_unique<TestLog>();
}

void tst_Util::cleanup()
{
    m_log.reset();
}

void tst_Util::draw(const char* name, int side, const QColor& colour) const
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(colour);
    QVERIFY(image.save(path(name)));
}

void tst_Util::loadsAPixmap()
{
    draw("a.png", 10, Qt::red);
    const QPixmap pixmap = trovek::loadPixmap(path("a.png"));
    QCOMPARE(pixmap.size() / pixmap.devicePixelRatio(), QSize(10, 10));
    QCOMPARE(pixmap.toImage().pixelColor(5, 5), QColor(Qt::red));
}

void tst_Util::missingPixmapIsLoggedAndThrown()
{
    m_log->expectError(text("Missing ") + path("no.png"));
    QCOMPARE(thrownText([this] { trovek::loadPixmap(path("no.png")); }),
             std::string("Pixmap file not found"));
    const std::vector<std::string> expected{"Missing " + path("no.png").toStdString()};
    QCOMPARE(m_log->messages(0), expected);
    QCOMPARE(m_log->sink().entries().front().file, std::string("src/util/util"));
}

void tst_Util::takesTheDoublePictureOnDenseScreens()
{
    draw("v1.2.png", 10, Qt::red);
    draw("v1.2@2x.png", 20, Qt::green);
    const bool dense = qApp->devicePixelRatio() > 1;
    const QPixmap pixmap = trovek::loadPixmap(path("v1.2.png"));
    QCOMPARE(pixmap.size(), dense ? QSize(20, 20) : QSize(10, 10));
    QCOMPARE(pixmap.size() / pixmap.devicePixelRatio(), QSize(10, 10));
    QCOMPARE(pixmap.toImage().pixelColor(5, 5), QColor(dense ? Qt::green : Qt::red));

    draw("single.png", 10, Qt::blue);
    QCOMPARE(trovek::loadPixmap(path("single.png")).toImage().pixelColor(5, 5), QColor(Qt::blue));
}

void tst_Util::buttonIconHasThreeStates()
{
    draw("b_up.png", 10, Qt::red);
    draw("b_over.png", 10, Qt::green);
    draw("b_down.png", 10, Qt::blue);
    const QIcon icon = trovek::loadButtonIcon(path("b"));
    const auto colour = [&icon](QIcon::Mode mode) {
        return icon.pixmap(QSize(10, 10), mode, QIcon::Off).toImage().pixelColor(5, 5);
    };
    QCOMPARE(colour(QIcon::Normal), QColor(Qt::red));
    QCOMPARE(colour(QIcon::Active), QColor(Qt::green));
    QCOMPARE(colour(QIcon::Selected), QColor(Qt::blue));
}

void tst_Util::buttonIconNeedsAllThreePictures_data()
{
    QTest::addColumn<QString>("missing");

    QTest::newRow("up") << text("b_up.png");
    QTest::newRow("down") << text("b_down.png");
    QTest::newRow("over") << text("b_over.png");
}

void tst_Util::buttonIconNeedsAllThreePictures()
{
    QFETCH(QString, missing);
    for (const char* name : {"b_up.png", "b_over.png", "b_down.png"}) {
        if (text(name) != missing)
            draw(name, 10, Qt::red);
    }
    m_log->expectError(text("Missing ") + m_folder->filePath(missing));
    QCOMPARE(thrownText([this] { trovek::loadButtonIcon(path("b")); }),
             std::string("Pixmap file not found"));
}

void tst_Util::opensTheTextEditor()
{
#ifndef Q_OS_WIN
    FileReceiver editor;
    QDesktopServices::setUrlHandler(text("file"), &editor, "open");
    trovek::openInNotepad(path("a profile #1.json"));
    QDesktopServices::unsetUrlHandler(text("file"));
    QCOMPARE(editor.opened, QList<QUrl>{QUrl::fromLocalFile(path("a profile #1.json"))});
#endif
}

void tst_Util::firmwareVersionsAreTheirText_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QString>("expected");

    QTest::newRow("valid") << QByteArray("7.2") << text("7.2");
    QTest::newRow("garbage") << QByteArray("seven") << text("Invalid version number");
    QTest::newRow("empty") << QByteArray() << text("Invalid version number");
}

void tst_Util::firmwareVersionsAreTheirText()
{
    QFETCH(QByteArray, version);
    QFETCH(QString, expected);
    QCOMPARE(trovek::firmwareVersionToString(trovek::FirmwareVersion(version.toStdString())),
             expected);
}

void tst_Util::wheelOverAnUnfocusedBoxScrollsThePage_data()
{
    QTest::addColumn<QString>("kind");

    QTest::newRow("spin box") << text("QSpinBox");
    QTest::newRow("number box of the library") << text("DoubleSpinBox");
    QTest::newRow("combo box") << text("QComboBox");
}

void tst_Util::wheelOverAnUnfocusedBoxScrollsThePage()
{
    QFETCH(QString, kind);
    Page page;
    trovek::ignoreWheelUnlessFocused(&page.area);
    QVERIFY(QTest::qWaitForWindowActive(&page.area));
    QWidget* box = kind == text("QSpinBox")        ? static_cast<QWidget*>(page.spinBox)
                   : kind == text("DoubleSpinBox") ? static_cast<QWidget*>(page.ownBox)
                                                   : page.comboBox;
    QVERIFY(!box->hasFocus());
    wheelDown(box);
    QCOMPARE(page.spinBox->value(), 50);
    QCOMPARE(page.ownBox->value(), 50.0);
    QCOMPARE(page.comboBox->currentIndex(), 1);
    QVERIFY(!box->hasFocus());
    QVERIFY(page.area.verticalScrollBar()->value() > 0);
}

void tst_Util::wheelOverAFocusedBoxChangesIt()
{
    Page page;
    trovek::ignoreWheelUnlessFocused(&page.area);
    QVERIFY(QTest::qWaitForWindowActive(&page.area));
    QTest::mouseClick(page.spinBox->findChild<QWidget*>(text("qt_spinbox_lineedit")),
                      Qt::LeftButton);
    QVERIFY(page.spinBox->hasFocus());
    wheelDown(page.spinBox);
    QCOMPARE(page.spinBox->value(), 49);
    page.comboBox->setFocus();
    wheelDown(page.comboBox);
    QCOMPARE(page.comboBox->currentIndex(), 2);
    QCOMPARE(page.area.verticalScrollBar()->value(), 0);
}

void tst_Util::wheelGuardMayBeAppliedTwiceAndToOneBox()
{
    Page page;
    trovek::ignoreWheelUnlessFocused(page.spinBox);
    trovek::ignoreWheelUnlessFocused(page.spinBox);
    QCOMPARE(page.spinBox->findChildren<QObject*>(text("wheelGuard")).size(), 1);
    QCOMPARE(page.spinBox->focusPolicy(), Qt::StrongFocus);
    wheelDown(page.spinBox);
    QCOMPARE(page.spinBox->value(), 50);
    wheelDown(page.comboBox);
    QCOMPARE(page.comboBox->currentIndex(), 2);
}

QTEST_MAIN(tst_Util)
#include "tst_util.moc"
