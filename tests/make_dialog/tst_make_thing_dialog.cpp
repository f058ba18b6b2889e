#include "make_dialog/thing_world.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QKeySequence>
#include <QWheelEvent>

using namespace trovek;

/** What the make-thing dialog shows, and how it is used without a mouse. */
class tst_MakeThingDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void hasItsTexts();
    void hasItsSlotsInOrder();
    void startsWithThePlainChoices();
    void asksTheServiceNothingWhileItOpens();
    void opensWithoutALink();
    void showsWhatIsAdvanced();
    void keepsItsWidthWhenItOpens();
    void leavesNoGaps();
    void isReadyForTheKeyboard();
    void visitsItsWidgetsFromTopToBottom();
    void hasNoMnemonicTwice_data();
    void hasNoMnemonicTwice();
    void ignoresTheWheelOverWhatIsNotFocused();
    void marksAPresetThatWasChanged();
    void linksTheQualitiesAndTheProfiles();
    void logsWhatKeepsItFromBeingSane();

private:
    TrovekQt m_facade;
};

void tst_MakeThingDialog::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingDialog::hasItsTexts()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world);

    struct Text
    {
        const char* name;
        const char* text;
        const char* toolTip;
    };
    for (const Text& expected : {
             Text{"createButton", "&Create Profile...", "Create a new custom slicer profile"},
             Text{"deleteButton", "&Delete Profile...", "Delete this custom slicer profile"},
             Text{"editButton", "Ed&it Profile",
                  "Edit this custom slicer profile in an external editor"},
             Text{"advancedHeader", "Ad&vanced Options",
                  "Show additional settings for the toolpath generator and the bot"},
             Text{"previewWanted", "Preview before printing", ""},
         }) {
        const auto& widget = opened.find<QAbstractButton>(expected.name);
        QCOMPARE(widget.text(), QString::fromLatin1(expected.text));
        QCOMPARE(widget.toolTip(), QString::fromLatin1(expected.toolTip));
    }
    const auto& profileLabel = opened.find<QLabel>("profileLabel");
    QCOMPARE(profileLabel.text(), QStringLiteral("Pr&ofile:"));
    QCOMPARE(profileLabel.buddy(), &opened.profiles());
    QCOMPARE(opened.profiles().toolTip(), QStringLiteral("The base profile to use for slicing"));
    QCOMPARE(opened.find<QLabel>("slicerLabel").text(), QStringLiteral("Slicer:"));
    QCOMPARE(opened.find<QLabel>("slicer").text(), QStringLiteral("Orvane Slicer"));
    QCOMPARE(opened.find<QLabel>("slicer").toolTip(),
             QStringLiteral("The slicer this profile uses"));
}

void tst_MakeThingDialog::hasItsSlotsInOrder()
{
    QStringList slotNames;
    const QMetaObject& meta = MakeThingDialog::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        slotNames.append(QString::fromLatin1(meta.method(i).name()));
    QCOMPARE(slotNames, words({"machineSelected", "materialChanged", "leftMaterialChanged",
                               "lowQualityRadioButtonToggled", "mediumQualityRadioButtonToggled",
                               "highQualityRadioButtonToggled", "profileSelected", "createProfile",
                               "deleteProfile", "editProfile", "showPrintPreview"}));
}

void tst_MakeThingDialog::startsWithThePlainChoices()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");

    QCOMPARE(rowsOf(*opened.profiles().model()), words({"Low", "Standard", "High"}));
    QCOMPARE(opened.profiles().currentIndex(), 1);
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Standard);
    QCOMPARE(opened.numbers().preset(), SlicerConfiguration::Standard);
    QCOMPARE(opened.extruders().raft(), 0);
    QCOMPARE(opened.extruders().supports(), 0);
    QVERIFY(!opened.find<CollapseExpandHeader>("advancedHeader").isChecked());
    QVERIFY(!opened.previewWanted().isChecked());
    QCOMPARE(opened.mainButton().text(), QStringLiteral("Make It!"));
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_MakeThingDialog::asksTheServiceNothingWhileItOpens()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const quint64 before = m_facade.callCount();
    const OpenedThing opened(world, "dual", SlicerConfiguration::Both);

    opened.openAdvanced();
    opened.select("mine");
    opened.select(world.printer("single"));

    QCOMPARE(m_facade.callCount(), before);
}

void tst_MakeThingDialog::opensWithoutALink()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    world.loseConnection();
    ModalDriver driver;
    const OpenedThing opened(world);

    QVERIFY(!opened.machines().isEnabled());
    QVERIFY(opened.find<QLabel>("value").isVisible());
    QCOMPARE(opened.find<QLabel>("value").text(), QStringLiteral("Invalid machine"));
    driver.expectMessage(kTrovekNotConnected);
    opened.clickMain();
    QVERIFY(opened.dialog->isVisible());

    world.service.start();
    world.connectFacade();
    QTRY_VERIFY(opened.machines().isEnabled());
    QTRY_VERIFY(!opened.find<QLabel>("value").isVisible());
}

void tst_MakeThingDialog::showsWhatIsAdvanced()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, "single");
    const auto shown = [&opened] {
        QStringList names;
        for (const char* name :
             {"profiles", "slicer", "profileHelp", "profileButtons", "builtInProfile"}) {
            if (opened.find<QWidget>(name).isVisible())
                names.append(QString::fromLatin1(name));
        }
        return names;
    };
    QCOMPARE(shown(), QStringList());

    opened.openAdvanced();
    QCOMPARE(shown(), words({"profiles", "slicer", "builtInProfile"}));

    opened.select("mine");
    QCOMPARE(shown(), words({"profiles", "slicer", "profileHelp", "profileButtons"}));

    // Which profile is used stays in sight.
    QTest::mouseClick(&opened.find<QWidget>("advancedHeader"), Qt::LeftButton);
    QTRY_COMPARE(shown(), words({"profiles"}));

    opened.select("Low");
    QCOMPARE(shown(), QStringList());
}

void tst_MakeThingDialog::keepsItsWidthWhenItOpens()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    for (const char* key : {"single", "dual"}) {
        const OpenedThing opened(world, key);
        const int width = opened.dialog->width();
        opened.openAdvanced();
        QCOMPARE(opened.dialog->width(), width);
        opened.select("mine");
        QCOMPARE(opened.dialog->width(), width);
    }
}

void tst_MakeThingDialog::leavesNoGaps()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    const auto bottomOf = [](const QWidget& widget) {
        return widget.mapToGlobal(QPoint(0, widget.height())).y();
    };
    const auto topOf = [](const QWidget& widget) {
        return widget.mapToGlobal(QPoint(0, 0)).y();
    };
    const auto& frame = opened.find<QWidget>("frame");
    const auto& header = opened.find<QWidget>("advancedHeader");
    const QMargins margins = frame.layout()->contentsMargins();

    // Nothing is between the machine and the materials, nor below the header.
    const int spacing = qobject_cast<QFormLayout*>(frame.layout())->verticalSpacing();
    QVERIFY(topOf(opened.extruders()) - bottomOf(opened.machines()) <= spacing + 1);
    QVERIFY(bottomOf(frame) - bottomOf(header) <= margins.bottom() + 2);
}

void tst_MakeThingDialog::isReadyForTheKeyboard()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    QVERIFY(opened.mainButton().hasFocus());
    QVERIFY(opened.mainButton().isDefault());

    QTest::keyClick(opened.dialog, Qt::Key_V, Qt::AltModifier);
    QTRY_VERIFY(opened.numbers().isVisible());
    QTest::keyClick(opened.dialog, Qt::Key_O, Qt::AltModifier);
    QVERIFY(opened.profiles().hasFocus());
    QTest::keyClick(opened.dialog, Qt::Key_H, Qt::AltModifier);
    QTRY_COMPARE(opened.profiles().currentIndex(), 2);

    // Enter makes, wherever the focus is.
    QSignalSpy accepted(opened.dialog, &QDialog::accepted);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(world.service.requests("print").size(), std::size_t(1));
}

void tst_MakeThingDialog::visitsItsWidgetsFromTopToBottom()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.openAdvanced();
    opened.mainButton().setFocus();

    QList<const QWidget*> visited;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited.append(QApplication::focusWidget());
        QVERIFY(visited.size() < 50);
    } while (visited.last() != &opened.mainButton());

    QStringList names;
    for (const QWidget* widget : visited)
        names.append(widget->objectName());
    // In a label the links are visited too.
    QCOMPARE(names, words({"makeRadio",
                           "machines",
                           "leftMaterial",
                           "rightMaterial",
                           "low",
                           "raft",
                           "supports",
                           "help",
                           "help",
                           "advancedHeader",
                           "profiles",
                           "infill",
                           "shells",
                           "layerHeight",
                           "rightTemperature",
                           "leftTemperature",
                           "heatPlatform",
                           "platformTemperature",
                           "extrudingSpeed",
                           "travelingSpeed",
                           "defaultsButton",
                           "createProfileButton",
                           "previewWanted",
                           "cancelButton",
                           "mainButton"}));
}

void tst_MakeThingDialog::hasNoMnemonicTwice_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("profile");

    QTest::newRow("single, preset") << QByteArray("single") << QByteArray("Standard");
    QTest::newRow("dual, preset") << QByteArray("dual") << QByteArray("Standard");
    QTest::newRow("custom profile") << QByteArray("single") << QByteArray("mine");
}

void tst_MakeThingDialog::hasNoMnemonicTwice()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, profile);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, key);
    opened.openAdvanced();
    opened.select(profile);

    QStringList used;
    const auto note = [&used](const QWidget* widget, const QString& text) {
        const QKeySequence mnemonic = QKeySequence::mnemonic(text);
        if (widget->isVisible() && !mnemonic.isEmpty())
            used.append(mnemonic.toString());
    };
    for (const auto* widget : opened.dialog->findChildren<QAbstractButton*>())
        note(widget, widget->text());
    for (const auto* widget : opened.dialog->findChildren<QGroupBox*>())
        note(widget, widget->title());
    for (const auto* widget : opened.dialog->findChildren<QLabel*>()) {
        if (widget->buddy() != nullptr)
            note(widget, widget->text());
    }
    used.sort();
    // "u" stands in three labels of the numbers, among which it goes round.
    used.removeAll(QStringLiteral("Alt+U"));
    QStringList once = used;
    once.removeDuplicates();
    QCOMPARE(used, once);
    QVERIFY(used.size() >= 9);
}

void tst_MakeThingDialog::ignoresTheWheelOverWhatIsNotFocused()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.openAdvanced();

    for (const char* name : {"profiles", "leftMaterial", "rightMaterial", "raft", "infill"}) {
        auto& box = opened.find<QWidget>(name);
        const auto value = [&box] {
            auto* const comboBox = qobject_cast<QComboBox*>(&box);
            return comboBox != nullptr ? comboBox->currentText()
                                       : qobject_cast<QAbstractSpinBox*>(&box)->text();
        };
        const QString before = value();
        QWheelEvent event(QPointF(5, 5), box.mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&box, &event);
        QCOMPARE(value(), before);
    }
}

void tst_MakeThingDialog::marksAPresetThatWasChanged()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    const auto& standard = opened.find<QRadioButton>("standard");
    const auto& low = opened.find<QRadioButton>("low");
    QCOMPARE(standard.text(), QStringLiteral("&Standard"));

    opened.find<QSpinBox>("shells").setValue(7);
    QCOMPARE(standard.text(), QStringLiteral("&Standard *"));

    // The numbers of the other preset are its own.
    opened.select("Low");
    QCOMPARE(standard.text(), QStringLiteral("&Standard"));
    QCOMPARE(low.text(), QStringLiteral("&Low (Faster)"));
    QCOMPARE(opened.find<QSpinBox>("shells").value(), 2);
}

void tst_MakeThingDialog::linksTheQualitiesAndTheProfiles()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    const char* const names[] = {"low", "standard", "high"};
    for (const int preset : {0, 2, 1}) {
        auto& radio = opened.find<QRadioButton>(names[preset]);
        QTest::mouseClick(&radio, Qt::LeftButton, {}, QPoint(8, radio.height() / 2));
        QCOMPARE(opened.profiles().currentIndex(), preset);
        QCOMPARE(int(opened.numbers().preset()), preset);
    }
    for (const int preset : {2, 0, 1}) {
        opened.profiles().setCurrentIndex(preset);
        QCOMPARE(int(opened.extruders().quality()), preset);
        QCOMPARE(int(opened.numbers().preset()), preset);
    }

    opened.select("mine");
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Custom);
    QTest::mouseClick(&opened.find<QRadioButton>("standard"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(opened.profiles().currentIndex(), 1);
}

void tst_MakeThingDialog::logsWhatKeepsItFromBeingSane()
{
    TestLog log;
    log.expectError("Dialog must be in either make or export mode");
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    auto& make = opened.find<QRadioButton>("makeRadio");
    make.setAutoExclusive(false);
    make.group()->setExclusive(false);
    make.setChecked(false);

    QCoreApplication::processEvents();

    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.severity == Log::Error) {
            QCOMPARE(entry.file, std::string(kThingUnit));
            QVERIFY(entry.function.find("sanitize") != std::string::npos);
        }
    }
    make.setChecked(true);
    QCoreApplication::processEvents();
}

QTEST_MAIN(tst_MakeThingDialog)
#include "tst_make_thing_dialog.moc"
