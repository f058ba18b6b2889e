#include "service/service_world.h"
#include "support/modal_driver.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <scan_window.h>

#include <rpcwire/json_text.h>
#include <service/geometry/mesh_file.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/trovekqt.h>
#include <trovek/text.h>

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <cmath>

using namespace trovek;
using scan_example::ScanChain;
using scan_example::ScanWindow;

namespace {

/** The window before a service whose scanner has a small camera. */
struct Fixture
{
    Fixture()
        : settings(toQString(world.path(QStringLiteral("settings.ini"))), QSettings::IniFormat)
        , window(facade, settings)
    {
        Json::Value scanner(Json::objectValue);
        scanner["camera"]["width"] = 640;
        scanner["camera"]["height"] = 480;
        world.options.scannerFile =
            world.writeFile(QStringLiteral("scanner.json"),
                            QByteArray::fromStdString(rpcwire::toJsonLine(scanner)));
        world.start();
        window.setPicturesPerTurn(40);
        window.show();
    }

    void connectToService() { facade.connectToDaemon(world.address()); }

    /** Clicks a step's button, and waits for its end. */
    bool doStep(ScanChain::Step step)
    {
        QTest::mouseClick(&window.button(step), Qt::LeftButton);
        return QTest::qWaitFor([&] { return !window.chain().isRunning(); }, 60000) &&
               window.chain().stepsDone() == step + 1;
    }

    QString status() const { return window.findChild<QLabel*>(QStringLiteral("status"))->text(); }

    /** Which buttons can be pressed: "12" are the first two, "8" is the one that makes. */
    QString enabled() const
    {
        QString numbers;
        for (int i = 0; i < ScanChain::kSteps; ++i) {
            if (window.button(static_cast<ScanChain::Step>(i)).isEnabled())
                numbers += QString::number(i + 1);
        }
        return numbers + (window.makeButton().isEnabled() ? QStringLiteral("8") : QString());
    }

    TestLog log;
    ServiceWorld world;
    TrovekQt facade;
    QSettings settings;
    ScanWindow window;
};

} // namespace

class tst_ScanWindow : public QObject
{
    Q_OBJECT

private slots:
    void needsAService();
    void goesFromStepToStep();
    void aStepMayBeDoneAgain();
    void asksWhereToSave();
    void aScanCanBeCanceled();
    void tellsWhyAStepFailed();
    void aLostServiceForgetsEverything();
    void remembersThePictures();
    void diesInTheMiddle();
};

void tst_ScanWindow::needsAService()
{
    Fixture f;
    QCOMPARE(f.enabled(), QString());
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    f.facade.disconnectFromDaemon();
    QTRY_COMPARE(f.enabled(), QString());
}

void tst_ScanWindow::goesFromStepToStep()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    QVERIFY(f.doStep(ScanChain::Scan));
    QCOMPARE(f.enabled(), QStringLiteral("12"));
    QVERIFY(f.status().endsWith(QLatin1String(" points.")));
    const std::size_t scanned = f.window.chain().clouds().at(0).positions.size();
    QVERIFY(f.doStep(ScanChain::Clean));
    QVERIFY(f.window.chain().clouds().at(0).positions.size() < scanned);
    QVERIFY(f.doStep(ScanChain::ScanAgain));
    QCOMPARE(f.window.chain().clouds().size(), std::size_t(2));
    QVERIFY(f.doStep(ScanChain::Align));
    QVERIFY(f.doStep(ScanChain::Reconstruct));
    QCOMPARE(f.enabled(), QStringLiteral("123456"));
    QVERIFY(isClosed(f.window.chain().mesh()));
    QVERIFY(f.status().endsWith(QLatin1String(" triangles.")));
    QVERIFY(f.doStep(ScanChain::Place));
    QVERIFY(std::abs(boundingBox(f.window.chain().mesh()).minimum.z) < 1e-6);

    const std::string path = f.world.path(QStringLiteral("model.obj"));
    f.window.chain().setFile(toQString(path));
    f.window.chain().start(ScanChain::Save);
    QTRY_COMPARE(f.window.chain().stepsDone(), int(ScanChain::kSteps));
    QCOMPARE(f.enabled(), QStringLiteral("12345678"));
    QCOMPARE(f.status(), QStringLiteral("Saved as %1.").arg(toQString(path)));
    QCOMPARE(geometry::loadMesh(path).triangles.size(), f.window.chain().mesh().triangles.size());

    f.log.allowErrors("Profile directory not set");
    QTest::mouseClick(&f.window.makeButton(), Qt::LeftButton);
    auto* const dialog = f.window.findChild<MakeThingDialog*>();
    QVERIFY(dialog != nullptr);
    QVERIFY(dialog->isVisible());
    dialog->close();
}

void tst_ScanWindow::aStepMayBeDoneAgain()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    for (const ScanChain::Step step : {ScanChain::Scan, ScanChain::Clean, ScanChain::ScanAgain,
                                       ScanChain::Align, ScanChain::Align})
        QVERIFY(f.doStep(step));
    // Both lie on each other, also after the second time.
    const auto& clouds = f.window.chain().clouds();
    const geometry::Box first = boundingBox(clouds[0]);
    const geometry::Box second = boundingBox(clouds[1]);
    const auto text = [](const geometry::Box& box) {
        QString numbers;
        for (const double number : {box.minimum.x, box.minimum.y, box.minimum.z, box.maximum.x,
                                    box.maximum.y, box.maximum.z})
            numbers += QString::number(number) + QLatin1Char(' ');
        return numbers;
    };
    // Nose and ears, which both scans saw.
    QVERIFY2(std::abs(first.minimum.y - second.minimum.y) < 1,
             qPrintable(text(first) + text(second)));
    QVERIFY2(std::abs(first.maximum.z - second.maximum.z) < 1,
             qPrintable(text(first) + text(second)));
    QVERIFY(f.doStep(ScanChain::ScanAgain));
    QCOMPARE(f.window.chain().clouds().size(), std::size_t(2));
    QVERIFY(f.doStep(ScanChain::Scan));
    QCOMPARE(f.window.chain().clouds().size(), std::size_t(1));
    QCOMPARE(f.enabled(), QStringLiteral("12"));
}

void tst_ScanWindow::asksWhereToSave()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    for (const ScanChain::Step step : {ScanChain::Scan, ScanChain::Clean, ScanChain::ScanAgain,
                                       ScanChain::Align, ScanChain::Reconstruct, ScanChain::Place})
        QVERIFY(f.doStep(step));
    const QString path = toQString(f.world.path(QStringLiteral("saved")));
    QTimer::singleShot(0, [&] {
        auto* const dialog = f.window.findChild<QFileDialog*>();
        dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTest::mouseClick(&f.window.button(ScanChain::Save), Qt::LeftButton);
    QTRY_COMPARE(f.window.chain().stepsDone(), int(ScanChain::kSteps));
    QVERIFY(isClosed(geometry::loadMesh(toStdString(path) + ".stl")));
    // What is there stays when saving fails.
    const QString other = toQString(f.world.writeFile(QStringLiteral("model.3mf"), "earlier"));
    QSignalSpy failures(&f.window.chain(), &ScanChain::stepFailed);
    f.window.chain().setFile(other);
    f.window.chain().start(ScanChain::Save);
    QTRY_COMPARE(failures.count(), 1);
    QFile earlier(other);
    QVERIFY(earlier.open(QIODevice::ReadOnly));
    QCOMPARE(earlier.readAll(), QByteArray("earlier"));
    f.window.chain().setFile(QStringLiteral("/nowhere/model.stl"));
    f.log.expectError("Cannot write to /nowhere/model.stl: No such file or directory");
    f.window.chain().start(ScanChain::Save);
    QTRY_COMPARE(f.status(), QStringLiteral("7 Save…: Cannot write to /nowhere/model.stl: "
                                            "No such file or directory"));
    f.window.chain().setFile(path + QStringLiteral(".stl"));
    f.window.chain().start(ScanChain::Save);
    QTRY_COMPARE(f.window.chain().stepsDone(), int(ScanChain::kSteps));
    // Who changes their mind saves nothing.
    QTimer::singleShot(0, [&] { f.window.findChild<QFileDialog*>()->reject(); });
    QTest::mouseClick(&f.window.button(ScanChain::Save), Qt::LeftButton);
    QVERIFY(!f.window.chain().isRunning());
    QCOMPARE(f.window.chain().stepsDone(), int(ScanChain::kSteps));
}

void tst_ScanWindow::aScanCanBeCanceled()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    f.window.setPicturesPerTurn(2000);
    auto* const cancel = f.window.findChild<QPushButton*>(QStringLiteral("cancel"));
    QVERIFY(!cancel->isVisible());
    QSignalSpy failures(&f.window.chain(), &ScanChain::stepFailed);
    QTest::mouseClick(&f.window.button(ScanChain::Scan), Qt::LeftButton);
    QVERIFY(cancel->isVisible());
    QCOMPARE(f.enabled(), QString());
    QTRY_VERIFY(f.window.findChild<QProgressBar*>()->value() > 0);
    QTest::mouseClick(cancel, Qt::LeftButton);
    QTRY_COMPARE(failures.count(), 1);
    QCOMPARE(f.status(), QStringLiteral("1 Scan: The scan was canceled."));
    QVERIFY(!cancel->isVisible());
    QCOMPARE(f.enabled(), QStringLiteral("1"));
    f.window.setPicturesPerTurn(40);
    QVERIFY(f.doStep(ScanChain::Scan));
}

void tst_ScanWindow::tellsWhyAStepFailed()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    f.log.expectError("No scanner is connected");
    f.facade.simulateScannerUnplug();
    QVERIFY(!f.doStep(ScanChain::Scan));
    QVERIFY2(f.status().startsWith(QLatin1String("1 Scan: ")), qPrintable(f.status()));
    QCOMPARE(f.enabled(), QStringLiteral("1"));
    f.facade.simulateScannerPlugIn();
    QVERIFY(f.doStep(ScanChain::Scan));

    // While it scans.
    f.window.setPicturesPerTurn(2000);
    QTest::mouseClick(&f.window.button(ScanChain::Scan), Qt::LeftButton);
    QTRY_VERIFY(f.window.findChild<QProgressBar*>()->value() > 0);
    f.facade.simulateScannerUnplug();
    QTRY_COMPARE(f.status(), QStringLiteral("1 Scan: The scanner was unplugged"));
}

void tst_ScanWindow::aLostServiceForgetsEverything()
{
    Fixture f;
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    QVERIFY(f.doStep(ScanChain::Scan));
    f.window.setPicturesPerTurn(2000);
    QTest::mouseClick(&f.window.button(ScanChain::Scan), Qt::LeftButton);
    QTRY_VERIFY(f.window.findChild<QProgressBar*>()->value() > 0);
    f.world.stop();
    QTRY_COMPARE(f.status(), QStringLiteral("1 Scan: The service has gone."));
    QCOMPARE(f.enabled(), QString());
    f.world.start();
    f.connectToService();
    QTRY_COMPARE(f.enabled(), QStringLiteral("1"));
    f.window.setPicturesPerTurn(40);
    QVERIFY(f.doStep(ScanChain::Scan));
}

void tst_ScanWindow::remembersThePictures()
{
    Fixture f;
    QCOMPARE(f.window.findChild<QSpinBox*>()->value(), 40);
    const ScanWindow again(f.facade, f.settings);
    QCOMPARE(again.findChild<QSpinBox*>()->value(), 40);
}

void tst_ScanWindow::diesInTheMiddle()
{
    for (int turns = 0; turns < 3; ++turns) {
        TestLog log;
        // One each: a scan goes on without its window, and another would find the scanner busy.
        ServiceWorld world;
        world.start();
        TrovekQt facade;
        facade.connectToDaemon(world.address());
        QSettings settings(toQString(world.path(QStringLiteral("settings.ini"))),
                           QSettings::IniFormat);
        ScanWindow window(facade, settings);
        window.chain().start(ScanChain::Scan);
        QVERIFY(window.chain().isRunning());
        for (int turn = 0; turn < turns; ++turn)
            QCoreApplication::processEvents();
    }
}

QTEST_MAIN(tst_ScanWindow)
#include "tst_scan_window.moc"
