#include "support/environment.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/double_spin_box.h>
#include <trovek-ui/util.h>

#include <QComboBox>
#include <QDir>
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
    void opensTheDesktopsTextEditor_data();
    void opensTheDesktopsTextEditor();
    void opensTheUsersEditorWhereTheDesktopNamesNone_data();
    void opensTheUsersEditorWhereTheDesktopNamesNone();
    void opensTheUsersEditorWhereTheDesktopsIsGone();
    void tellsThatThereIsNoTextEditor_data();
    void tellsThatThereIsNoTextEditor();
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

#ifndef Q_OS_WIN
namespace {

/** A desktop of its own: programs that write down how they were called, and no others. */
class FakeDesktop
{
public:
    explicit FakeDesktop(const QDir& folder)
        : m_folder(folder)
        , m_path("PATH", folder.path().toLocal8Bit())
        , m_dataHome("XDG_DATA_HOME", folder.path().toLocal8Bit())
        , m_dataDirs("XDG_DATA_DIRS", folder.path().toLocal8Bit())
        , m_visual("VISUAL", QByteArray())
        , m_editor("EDITOR", QByteArray())
    {
        m_folder.mkpath(text("applications"));
    }

    void addProgram(const char* name, const QByteArray& script)
    {
        write(QLatin1String(name), "#!/bin/sh\n" + script);
        QFile::setPermissions(m_folder.filePath(QLatin1String(name)),
                              QFile::ReadOwner | QFile::ExeOwner);
    }

    /** One that writes its arguments, one a line, below its own name. */
    void addRecorder(const char* name)
    {
        addProgram(name, QByteArray("printf '%s\\n' ") + name + " \"$@\" >'" +
                             m_folder.filePath(text("new")).toLocal8Bit() + "'; /bin/mv '" +
                             m_folder.filePath(text("new")).toLocal8Bit() + "' '" +
                             calledFile().toLocal8Bit() + "'\n");
    }

    void setDefaultEditor(const QByteArray& entry, const QByteArray& content)
    {
        addProgram("xdg-mime", "[ \"$*\" = 'query default text/plain' ] && echo " + entry + "\n");
        write(text("applications/") + QString::fromLatin1(entry), content);
    }

    bool wasCalled() const { return QFile::exists(calledFile()); }

    QStringList called() const
    {
        QFile file(calledFile());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private:
    QString calledFile() const { return m_folder.filePath(text("called")); }

    void write(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    QDir m_folder;
    const trovek::Environment m_path;
    const trovek::Environment m_dataHome;
    const trovek::Environment m_dataDirs;
    const trovek::Environment m_visual;
    const trovek::Environment m_editor;
};

} // namespace
#endif

void tst_Util::opensTheDesktopsTextEditor_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QStringList>("expected");
    const QString path = text("a profile #1.json");
    QTest::newRow("with a place for the file")
        << QByteArray("[Desktop Entry]\nName=x\nExec=recorder --new \"%F\" %i\n"
                      "[Desktop Action other]\nExec=recorder wrong\n")
        << QStringList{text("recorder"), text("--new"), path};
    QTest::newRow("with a place for an address")
        << QByteArray("[Desktop Entry]\nExec=recorder %U\nTerminal=false\n")
        << QStringList{text("recorder"), path};
    for (const char* const code : {"%f", "%F", "%u", "%U"}) {
        QTest::addRow("%s before the end", code)
            << QByteArray("[Desktop Entry]\nExec=recorder ") + code + " %c --last\n"
            << QStringList{text("recorder"), path, text("--last")};
    }
    QTest::newRow("without a place") << QByteArray("[Desktop Entry]\nExec=recorder 100%%\n")
                                     << QStringList{text("recorder"), text("100%"), path};
    QTest::newRow("in a terminal")
        << QByteArray("[Desktop Entry]\nExec=recorder %f\nTerminal=true\n")
        << QStringList{text("x-terminal-emulator"), text("-e"), text("recorder"), path};
}

void tst_Util::opensTheDesktopsTextEditor()
{
#ifndef Q_OS_WIN
    QFETCH(QByteArray, entry);
    QFETCH(QStringList, expected);
    FakeDesktop desktop(QDir(m_folder->path()));
    desktop.setDefaultEditor("editor.desktop", entry);
    desktop.addRecorder("recorder");
    desktop.addRecorder("x-terminal-emulator");
    trovek::openInNotepad(text("a profile #1.json"));
    QTRY_VERIFY(desktop.wasCalled());
    QCOMPARE(desktop.called(), expected);
#endif
}

void tst_Util::opensTheUsersEditorWhereTheDesktopNamesNone_data()
{
    QTest::addColumn<QByteArray>("visual");
    QTest::addColumn<QByteArray>("editor");
    QTest::addColumn<QStringList>("expected");
    const QStringList terminal{text("x-terminal-emulator"), text("-e")};
    QTest::newRow("VISUAL first") << QByteArray("recorder --visual") << QByteArray("recorder")
                                  << terminal + QStringList{text("recorder"), text("--visual"),
                                                            text("a.json")};
    QTest::newRow("EDITOR otherwise") << QByteArray() << QByteArray("recorder")
                                      << terminal + QStringList{text("recorder"), text("a.json")};
    QTest::newRow("EDITOR where VISUAL is not there")
        << QByteArray("gone") << QByteArray("recorder")
        << terminal + QStringList{text("recorder"), text("a.json")};
}

void tst_Util::opensTheUsersEditorWhereTheDesktopNamesNone()
{
#ifndef Q_OS_WIN
    QFETCH(QByteArray, visual);
    QFETCH(QByteArray, editor);
    QFETCH(QStringList, expected);
    FakeDesktop desktop(QDir(m_folder->path()));
    desktop.addRecorder("recorder");
    desktop.addRecorder("x-terminal-emulator");
    qputenv("VISUAL", visual);
    qputenv("EDITOR", editor);
    trovek::openInNotepad(text("a.json"));
    QTRY_VERIFY(desktop.wasCalled());
    QCOMPARE(desktop.called(), expected);
#endif
}

void tst_Util::opensTheUsersEditorWhereTheDesktopsIsGone()
{
#ifndef Q_OS_WIN
    FakeDesktop desktop(QDir(m_folder->path()));
    desktop.setDefaultEditor("editor.desktop", "[Desktop Entry]\nExec=gone %f\n");
    desktop.addRecorder("recorder");
    desktop.addRecorder("x-terminal-emulator");
    qputenv("EDITOR", "recorder");
    trovek::openInNotepad(text("a.json"));
    QTRY_VERIFY(desktop.wasCalled());
    QCOMPARE(desktop.called(), QStringList({text("x-terminal-emulator"), text("-e"),
                                            text("recorder"), text("a.json")}));
#endif
}

void tst_Util::tellsThatThereIsNoTextEditor_data()
{
    QTest::addColumn<bool>("hasEditor");
    QTest::newRow("none named") << false;
    QTest::newRow("no terminal for it") << true;
}

void tst_Util::tellsThatThereIsNoTextEditor()
{
#ifndef Q_OS_WIN
    QFETCH(bool, hasEditor);
    FakeDesktop desktop(QDir(m_folder->path()));
    desktop.addRecorder("recorder");
    if (hasEditor)
        qputenv("EDITOR", "recorder");
    m_log->expectError("There is no text editor to open a.json: ");
    trovek::openInNotepad(text("a.json"));
    QVERIFY(!desktop.wasCalled());
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
