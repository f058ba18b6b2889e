#include "make_dialog/plain_dialog.h"
#include "support/thrown_text.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>

using namespace trovek;

/** How the dialog looks and how it keeps itself consistent. */
class tst_MakeDialog : public QObject
{
    Q_OBJECT

private slots:
    void hasItsTexts();
    void isLaidOutAsAForm();
    void isReadyForTheKeyboard();
    void logsItsConstruction();
    void refusesNullSettings();
    void asksTheServiceNothingWhileItOpens();
    void deletesItselfWhenItIsClosed_data();
    void deletesItselfWhenItIsClosed();
    void selectsTheGivenPrinter_data();
    void selectsTheGivenPrinter();
    void selectsTheMachineUsedLast_data();
    void selectsTheMachineUsedLast();
    void hidesTheOldModelsArchetype();
    void tellsPhysicalMachinesFromArchetypes();
    void exportsOnlyWithoutAPhysicalMachine();
    void offersMakingWhenAMachineComes();
    void keepsTheTypeWhenTheModeChanges();
    void sanitizesOnceFromTheEventLoop();
    void sanitizesAfterWhateverItDependsOn_data();
    void sanitizesAfterWhateverItDependsOn();
    void survivesASanitizeThatThrows();
    void needsAMode();
    void fitsLongerTexts();
};

void tst_MakeDialog::hasItsTexts()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kArchetype});
    const PlainDialog dialog(world);

    QCOMPARE(dialog.windowTitle(), QStringLiteral(" "));
    QCOMPARE(dialog.radio("makeRadio")->text(), QStringLiteral("Ma&ke It Now"));
    QCOMPARE(dialog.radio("exportRadio")->text(), QStringLiteral("E&xport to a File"));
    QCOMPARE(dialog.label("machineLabel")->text(), QStringLiteral("Mak&e With:"));
    QCOMPARE(dialog.button("cancelButton")->text(), QStringLiteral("Cancel"));
    QCOMPARE(dialog.button("mainButton")->text(), QStringLiteral("Make It!"));
    QCOMPARE(dialog.radio("makeRadio")->toolTip(),
             QStringLiteral("Begin making when the \"Make It!\" button is pressed"));
    QCOMPARE(dialog.radio("exportRadio")->toolTip(),
             QStringLiteral("Export to a file to make via SD card"));
    QCOMPARE(dialog.machines()->toolTip(), QStringLiteral("The machine to build with"));
    const auto labels = dialog.findChildren<QLabel*>();
    QVERIFY(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->text() == QLatin1String("I want to:");
    }));
}

void tst_MakeDialog::isLaidOutAsAForm()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    const PlainDialog dialog(world);
    auto* const make = dialog.radio("makeRadio");
    auto* const exporting = dialog.radio("exportRadio");

    auto* const frame = dialog.findChild<QFrame*>(QStringLiteral("frame"));
    QCOMPARE(frame->frameStyle(), int(QFrame::StyledPanel) | int(QFrame::Sunken));
    auto* const form = qobject_cast<QFormLayout*>(frame->layout());
    QCOMPARE(form->rowCount(), 2);
    QCOMPARE(form->labelForField(dialog.machines()), dialog.label("machineLabel"));
    auto* const modes =
        qobject_cast<QHBoxLayout*>(form->itemAt(0, QFormLayout::FieldRole)->layout());
    QCOMPARE(modes->itemAt(0)->widget(), make);
    QCOMPARE(modes->itemAt(1)->spacerItem()->sizeHint().width(), 12);
    QCOMPARE(modes->itemAt(2)->widget(), exporting);
    QVERIFY(make->group() != nullptr);
    QCOMPARE(make->group(), exporting->group());

    QCOMPARE(dialog.layout()->sizeConstraint(), QLayout::SetFixedSize);
    QCOMPARE(dialog.sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));
    auto* const buttons = qobject_cast<QHBoxLayout*>(dialog.layout()->itemAt(1)->layout());
    QCOMPARE(buttons->itemAt(0)->widget(), dialog.button("cancelButton"));
    QCOMPARE(buttons->itemAt(1)->widget(), dialog.button("mainButton"));
    QCOMPARE(buttons->stretch(0), 1);
    QCOMPARE(buttons->stretch(1), 2);
}

void tst_MakeDialog::isReadyForTheKeyboard()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kArchetype});
    auto* const dialog = new PlainDialog(world);
    dialog->show();
    dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(dialog));
    QPushButton* const mainButton = dialog->button("mainButton");

    QVERIFY(mainButton->hasFocus());
    QVERIFY(mainButton->isDefault());
    QVERIFY(mainButton->autoDefault());
    QTest::keyClick(dialog, Qt::Key_X, Qt::AltModifier);
    QTRY_COMPARE(mainButton->text(), QStringLiteral("Export!"));
    QTest::keyClick(dialog, Qt::Key_E, Qt::AltModifier);
    QVERIFY(dialog->machines()->focusProxy()->hasFocus());
    QTest::keyClick(dialog, Qt::Key_K, Qt::AltModifier);
    QTRY_COMPARE(mainButton->text(), QStringLiteral("Make It!"));

    // Enter makes, wherever the focus is.
    QSignalSpy accepted(dialog, &QDialog::accepted);
    QTest::keyClick(dialog->radio("makeRadio"), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(world.service.requests("print").size(), std::size_t(1));
}

void tst_MakeDialog::logsItsConstruction()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {});
    const PlainDialog dialog(world);

    QCOMPARE(MakeWorld::logOf(log, kUnit),
             words({"Starting MakeDialog construction", "MakeDialog construction finished"}));
}

void tst_MakeDialog::refusesNullSettings()
{
    TestLog log;
    TrovekQt facade;
    struct NoSettings : MakeDialog
    {
        explicit NoSettings(TrovekQt& connected)
            : MakeDialog(connected, QString(), nullptr, nullptr, QString(), true)
        {}
        Orvane::Material singleMaterial() override { return Orvane::ABS; }
        Orvane::Material leftMaterial() override { return Orvane::ABS; }
        Orvane::Material rightMaterial() override { return Orvane::ABS; }
        SlicerConfiguration slicerConfiguration() override { return {}; }
        bool skipStartEndCode() override { return false; }
    };

    QCOMPARE(thrownText([&] { NoSettings dialog(facade); }), std::string("null settings"));
}

void tst_MakeDialog::asksTheServiceNothingWhileItOpens()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kArchetype});
    const quint64 before = facade.callCount();
    PlainDialog dialog(world);

    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.radio("exportRadio")->click();
    QTRY_COMPARE(dialog.button("mainButton")->text(), QStringLiteral("Export!"));

    QCOMPARE(facade.callCount(), before);
}

void tst_MakeDialog::deletesItselfWhenItIsClosed_data()
{
    QTest::addColumn<QString>("how");

    QTest::newRow("cancel button") << QStringLiteral("cancel");
    QTest::newRow("escape") << QStringLiteral("escape");
    QTest::newRow("window closed") << QStringLiteral("close");
    QTest::newRow("made") << QStringLiteral("make");
}

void tst_MakeDialog::deletesItselfWhenItIsClosed()
{
    TestLog log;
    QFETCH(QString, how);
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    QPointer<PlainDialog> dialog = new PlainDialog(world);
    QSignalSpy finished(dialog.data(), &QDialog::finished);
    dialog->show();

    if (how == QLatin1String("cancel"))
        QTest::mouseClick(dialog->button("cancelButton"), Qt::LeftButton);
    else if (how == QLatin1String("escape"))
        QTest::keyClick(dialog.data(), Qt::Key_Escape);
    else if (how == QLatin1String("close"))
        dialog->close();
    else
        dialog->clickMain();

    QTRY_VERIFY(dialog.isNull());
    const bool made = how == QLatin1String("make");
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(made ? QDialog::Accepted : QDialog::Rejected));
    QCOMPARE(world.service.requests("print").size(), std::size_t(made ? 1 : 0));
    QCOMPARE(world.settings.allKeys().isEmpty(), !made);
}

void tst_MakeDialog::selectsTheGivenPrinter_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<bool>("make");

    QTest::newRow("none") << QByteArray() << QStringLiteral("left") << true;
    QTest::newRow("a machine") << QByteArray("dual") << QStringLiteral("dual") << true;
    QTest::newRow("an archetype") << QByteArray("archetype 4") << QStringLiteral("archetype 4")
                                  << false;
}

void tst_MakeDialog::selectsTheGivenPrinter()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(bool, make);
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kArchetype, kDual, kDualArchetype});
    // Not read when a printer is given.
    if (!key.isEmpty())
        world.settings.setValue(QStringLiteral("make_dialog/printer"), QStringLiteral("left"));
    const PlainDialog dialog(world, key.isEmpty() ? nullptr : world.printer(key));

    QTEST(dialog.selected(), "selected");
    QCOMPARE(dialog.radio("makeRadio")->isChecked(), make);
    QCOMPARE(dialog.radio("exportRadio")->isChecked(), !make);
    QCOMPARE(dialog.machines()->archetypesEnabled(), !make);
    QCOMPARE(dialog.button("mainButton")->text(),
             make ? QStringLiteral("Make It!") : QStringLiteral("Export!"));
}

void tst_MakeDialog::selectsTheMachineUsedLast_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("physical");
    QTest::addColumn<QString>("selected");

    QTest::newRow("nothing stored") << QString() << true << QStringLiteral("left");
    QTest::newRow("a machine") << QStringLiteral("dual") << true << QStringLiteral("dual");
    QTest::newRow("a machine that is gone")
        << QStringLiteral("sold") << true << QStringLiteral("left");
    QTest::newRow("an archetype beside machines")
        << QStringLiteral("archetype 4") << true << QStringLiteral("left");
    QTest::newRow("an archetype alone")
        << QStringLiteral("archetype 4") << false << QStringLiteral("archetype 4");
}

void tst_MakeDialog::selectsTheMachineUsedLast()
{
    TestLog log;
    QFETCH(QString, stored);
    QFETCH(bool, physical);
    TrovekQt facade;
    MakeWorld world(facade, {});
    QSignalSpy added(&facade, &TrovekQt::printerAdded);
    if (physical) {
        world.service.addPrinter(kMachine);
        world.service.addPrinter(kDual);
    }
    world.service.addPrinter(kArchetype);
    world.service.addPrinter(kDualArchetype);
    QTRY_COMPARE(added.count(), physical ? 4 : 2);
    if (!stored.isEmpty())
        world.settings.setValue(QStringLiteral("make_dialog/printer"), stored);
    const PlainDialog dialog(world);

    QTEST(dialog.selected(), "selected");
    QCOMPARE(dialog.radio("makeRadio")->isChecked(), physical);
}

void tst_MakeDialog::hidesTheOldModelsArchetype()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kArchetype, ScriptedService::archetype(Printer::CubioSingle),
                             ScriptedService::archetype(Printer::CubioDual)});
    const PlainDialog showing(world, nullptr, true);
    const PlainDialog hiding(world, nullptr, false);

    QCOMPARE(showing.machines()->machines().size(), 3);
    QCOMPARE(hiding.machines()->machines(),
             (QList<Printer*>{world.printer("archetype 3"), world.printer("archetype 6")}));
}

void tst_MakeDialog::tellsPhysicalMachinesFromArchetypes()
{
    TestLog log;
    TrovekQt unconnected;
    QVERIFY(!testForPhysicalMachines(unconnected));

    TrovekQt facade;
    MakeWorld world(facade, {kArchetype});
    QVERIFY(!testForPhysicalMachines(facade));
    QSignalSpy added(&facade, &TrovekQt::printerAdded);
    world.service.addPrinter(kMachine);
    QTRY_COMPARE(added.count(), 1);
    QVERIFY(testForPhysicalMachines(facade));
}

void tst_MakeDialog::exportsOnlyWithoutAPhysicalMachine()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kArchetype});
    const PlainDialog dialog(world);

    QVERIFY(!dialog.radio("makeRadio")->isEnabled());
    QVERIFY(dialog.radio("exportRadio")->isChecked());
    QCOMPARE(dialog.button("mainButton")->text(), QStringLiteral("Export!"));
    QCOMPARE(dialog.label("machineLabel")->text(), QStringLiteral("&Export For:"));
    QCOMPARE(dialog.selected(), QStringLiteral("archetype 3"));
}

void tst_MakeDialog::offersMakingWhenAMachineComes()
{
    TestLog log;
    log.allowErrors("");
    TrovekQt facade;
    MakeWorld world(facade, {kArchetype});
    const PlainDialog dialog(world);

    world.service.addPrinter(kMachine);
    QTRY_VERIFY(dialog.radio("makeRadio")->isEnabled());
    // The choice stays the user's.
    QVERIFY(dialog.radio("exportRadio")->isChecked());

    dialog.radio("makeRadio")->click();
    QTRY_COMPARE(dialog.selected(), QStringLiteral("left"));
    world.service.removePrinter("left");
    QTRY_VERIFY(!dialog.radio("makeRadio")->isEnabled());
    QCOMPARE(dialog.selected(), QStringLiteral("archetype 3"));

    world.loseConnection();
    QTRY_VERIFY(!dialog.machines()->isEnabled());
    QCOMPARE(dialog.selected(), QStringLiteral("none"));
}

void tst_MakeDialog::keepsTheTypeWhenTheModeChanges()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kDual, kArchetype, kDualArchetype});
    const PlainDialog dialog(world, world.printer("dual"));

    dialog.radio("exportRadio")->click();
    QTRY_COMPARE(dialog.selected(), QStringLiteral("archetype 4"));
    QCOMPARE(dialog.label("machineLabel")->text(), QStringLiteral("&Export For:"));
    QCOMPARE(dialog.button("mainButton")->text(), QStringLiteral("Export!"));

    dialog.radio("makeRadio")->click();
    QTRY_COMPARE(dialog.selected(), QStringLiteral("dual"));
    QCOMPARE(dialog.label("machineLabel")->text(), QStringLiteral("Mak&e With:"));
    QCOMPARE(dialog.button("mainButton")->text(), QStringLiteral("Make It!"));
}

void tst_MakeDialog::sanitizesOnceFromTheEventLoop()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    PlainDialog dialog(world);
    PlainDialog other(world);
    QCoreApplication::processEvents();
    const int before = dialog.sanitized;
    const int beforeOfOther = other.sanitized;

    for (int i = 0; i < 5; ++i)
        dialog.requestSanitize();
    QCOMPARE(dialog.sanitized, before);
    QCoreApplication::processEvents();
    QCOMPARE(dialog.sanitized, before + 1);
    QCOMPARE(other.sanitized, beforeOfOther);

    // It may also be asked for by name.
    QVERIFY(QMetaObject::invokeMethod(&dialog, "requestSanitize"));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.sanitized, before + 2);
}

void tst_MakeDialog::sanitizesAfterWhateverItDependsOn_data()
{
    QTest::addColumn<QString>("cause");

    for (const char* cause :
         {"mode", "machine", "printer added", "printer removed", "disconnected", "connected"})
        QTest::newRow(cause) << QString::fromLatin1(cause);
}

void tst_MakeDialog::sanitizesAfterWhateverItDependsOn()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QString, cause);
    TrovekQt facade;
    MakeWorld world(facade, {kMachine, kDual, kArchetype});
    if (cause == QLatin1String("connected"))
        world.loseConnection();
    PlainDialog dialog(world);
    QCoreApplication::processEvents();
    const int before = dialog.sanitized;

    if (cause == QLatin1String("mode"))
        dialog.radio("exportRadio")->click();
    else if (cause == QLatin1String("machine"))
        dialog.machines()->select(world.printer("dual"));
    else if (cause == QLatin1String("printer added"))
        world.service.addPrinter(ScriptedService::archetype(Printer::CubioDual));
    else if (cause == QLatin1String("printer removed"))
        world.service.removePrinter("archetype 3");
    else if (cause == QLatin1String("disconnected"))
        world.service.dropConnections();
    else {
        world.service.start();
        facade.connectToDaemon(world.service.address());
    }

    // Never inside the cause.
    QCOMPARE(dialog.sanitized, before);
    QTRY_VERIFY(dialog.sanitized > before);
}

void tst_MakeDialog::survivesASanitizeThatThrows()
{
    TestLog log;
    log.expectError("no sense in this");
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    PlainDialog dialog(world);
    dialog.whenSanitized = [] {
        throw std::runtime_error("no sense in this");
    };

    dialog.requestSanitize();
    QCoreApplication::processEvents();

    QVERIFY(log.contains("no sense in this", Log::Error));
}

void tst_MakeDialog::needsAMode()
{
    TestLog log;
    log.expectError("Dialog must be in either make or export mode");
    log.expectError("Dialog must be in either make or export mode");
    log.expectError("Dialog must be in either make or export mode");
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);
    driver.expectMessage(kFailedToStartPrint);
    PlainDialog dialog(world);
    dialog.radio("makeRadio")->group()->setExclusive(false);
    dialog.radio("makeRadio")->setChecked(false);

    QCoreApplication::processEvents();
    QVERIFY(log.contains("Dialog must be in either make or export mode", Log::Error));
    dialog.clickMain();
    QCOMPARE(dialog.startPrintPreviewSlice(world.path("preview.gcode")), Job::kInvalidID);

    QCOMPARE(world.service.requests("print").size(), std::size_t(0));
    QVERIFY(dialog.isVisible());
}

void tst_MakeDialog::fitsLongerTexts()
{
    TestLog log;
    TrovekQt facade;
    MakeWorld world(facade, {kMachine});
    PlainDialog dialog(world);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const int before = dialog.width();

    // As a translation may have it.
    dialog.radio("exportRadio")->setText(QString(120, QLatin1Char('m')));
    QTRY_VERIFY(dialog.width() > before);

    for (const QWidget* child : dialog.findChildren<QRadioButton*>())
        QVERIFY(child->width() >= child->sizeHint().width());
}

QTEST_MAIN(tst_MakeDialog)
#include "tst_make_dialog.moc"
