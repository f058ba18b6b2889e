#include "make_dialog/extruder_settings.h"
#include "support/test_log.h"

using namespace trovek;

class tst_ExtruderSettingsSignals : public QObject
{
    Q_OBJECT

private slots:
    void forwardsMaterials_data();
    void forwardsMaterials();
    void answersTheMaterials();
    void takesOnlyMaterialsThatTheMachineCanUse();
    void offersTheMachinesMaterials();
    void forwardsEachRadioButton();
    void selectsAQuality();
    void clearsTheQuality();
    void isInTheNewQualityDuringItsSignals();
    void forwardsTheChoicesOfTwoExtruders_data();
    void forwardsTheChoicesOfTwoExtruders();
    void forwardsTheCheckBoxesOfOneExtruder_data();
    void forwardsTheCheckBoxesOfOneExtruder();
    void setsAChoice_data();
    void setsAChoice();
    void keepsOnWhatIsOnForAnotherMachine();
    void keepsTheChoiceOfADualMachine();
};

void tst_ExtruderSettingsSignals::forwardsMaterials_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QString>("signal");

    QTest::newRow("left") << QByteArray("leftMaterial") << "left"_s;
    QTest::newRow("right") << QByteArray("rightMaterial") << "right"_s;
    QTest::newRow("single") << QByteArray("singleMaterial") << "single"_s;
}

void tst_ExtruderSettingsSignals::forwardsMaterials()
{
    QFETCH(QByteArray, box);
    QFETCH(QString, signal);
    TestLog log;
    ExtruderSettings form;
    form.widget.setDualExtrusion(signal != "single"_s);
    form.widget.show();

    QTest::keyClick(form.comboBox(box), Qt::Key_Down);
    QCOMPARE(form.takeSignals(), QStringList({signal + " 1"_s, "reset"_s}));
    form.comboBox(box)->setCurrentIndex(-1);
    QCOMPARE(form.takeSignals(), QStringList({signal + " -1"_s, "reset"_s}));
}

void tst_ExtruderSettingsSignals::answersTheMaterials()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.setLeftMaterial(Orvane::PLA);
    form.widget.setRightMaterial(Orvane::Dissolvable);
    form.widget.setSingleMaterial(Orvane::Flexible);

    QCOMPARE(int(form.widget.leftMaterial()), int(Orvane::PLA));
    QCOMPARE(int(form.widget.rightMaterial()), int(Orvane::Dissolvable));
    QCOMPARE(int(form.widget.singleMaterial()), int(Orvane::Flexible));
    QCOMPARE(form.takeSignals(),
             QStringList({"left 1"_s, "reset"_s, "right 2"_s, "reset"_s, "single 3"_s, "reset"_s}));
    form.comboBox("leftMaterial")->setCurrentIndex(-1);
    QCOMPARE(int(form.widget.leftMaterial()), int(Orvane::UnknownMaterial));
}

void tst_ExtruderSettingsSignals::takesOnlyMaterialsThatTheMachineCanUse()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.sanitizeMaterialsForBot(Printer::Fabrino2);
    form.takeSignals();

    for (const int odd : {0, 2, 4, -1, 1000})
        form.widget.setSingleMaterial(static_cast<Orvane::Material>(odd));
    QCOMPARE(int(form.widget.singleMaterial()), int(Orvane::PLA));
    QCOMPARE(form.takeSignals(), QStringList());

    form.widget.setSingleMaterial(Orvane::Flexible);
    QCOMPARE(int(form.widget.singleMaterial()), int(Orvane::Flexible));
}

void tst_ExtruderSettingsSignals::offersTheMachinesMaterials()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.setLeftMaterial(Orvane::Flexible);

    form.widget.sanitizeMaterialsForBot(Printer::Fabrino2);

    QCOMPARE(int(form.widget.leftMaterial()), int(Orvane::PLA));
    QCOMPARE(int(form.widget.rightMaterial()), int(Orvane::PLA));
    QCOMPARE(int(form.widget.singleMaterial()), int(Orvane::PLA));
    // The owner hears of the last state of each box.
    const QStringList said = form.takeSignals();
    for (const QString& last : {"left 1"_s, "right 1"_s, "single 1"_s})
        QVERIFY2(said.contains(last), qPrintable(said.join(QLatin1Char(','))));
    QCOMPARE(said.last(), "reset"_s);
    QCOMPARE(said.count("reset"_s) * 2, said.size());
}

void tst_ExtruderSettingsSignals::forwardsEachRadioButton()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.show();

    QTest::mouseClick(form.radio("low"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(form.takeSignals(), QStringList({"low 1"_s, "reset"_s}));
    QTest::mouseClick(form.radio("standard"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(form.takeSignals(), QStringList({"low 0"_s, "reset"_s, "medium 1"_s, "reset"_s}));
    QTest::mouseClick(form.radio("high"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(form.takeSignals(), QStringList({"medium 0"_s, "reset"_s, "high 1"_s, "reset"_s}));
    QTest::mouseClick(form.radio("high"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(form.takeSignals(), QStringList());
}

void tst_ExtruderSettingsSignals::selectsAQuality()
{
    TestLog log;
    ExtruderSettings form;

    form.widget.selectLowQuality();
    QCOMPARE(int(form.widget.quality()), int(SlicerConfiguration::Low));
    form.widget.selectMediumQuality();
    QCOMPARE(int(form.widget.quality()), int(SlicerConfiguration::Standard));
    form.widget.selectHighQuality();
    QCOMPARE(int(form.widget.quality()), int(SlicerConfiguration::High));
    QVERIFY(form.radio("high")->isChecked());
    form.takeSignals();
    form.widget.selectHighQuality();
    QCOMPARE(form.takeSignals(), QStringList());
}

void tst_ExtruderSettingsSignals::clearsTheQuality()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.clearQuality();
    QCOMPARE(form.takeSignals(), QStringList());
    form.widget.selectMediumQuality();
    form.takeSignals();

    form.widget.clearQuality();

    QCOMPARE(form.takeSignals(), QStringList({"medium 0"_s, "reset"_s}));
    QCOMPARE(int(form.widget.quality()), int(SlicerConfiguration::Custom));
    for (const char* name : {"low", "standard", "high"})
        QVERIFY(!form.radio(name)->isChecked());
    // Afterwards they exclude each other as before.
    form.widget.selectLowQuality();
    form.widget.selectHighQuality();
    QVERIFY(!form.radio("low")->isChecked());
}

void tst_ExtruderSettingsSignals::isInTheNewQualityDuringItsSignals()
{
    TestLog log;
    ExtruderSettings form;
    QList<int> qualities;
    connect(&form.widget, &ExtruderSettingsWidget::lowQualityToggled, this, [&](bool checked) {
        if (checked)
            qualities.append(form.widget.quality());
    });
    form.widget.selectHighQuality();

    form.widget.selectLowQuality();

    QCOMPARE(qualities, QList<int>{SlicerConfiguration::Low});
}

void tst_ExtruderSettingsSignals::forwardsTheChoicesOfTwoExtruders_data()
{
    QTest::addColumn<QByteArray>("box");

    QTest::newRow("raft") << QByteArray("raft");
    QTest::newRow("supports") << QByteArray("supports");
}

void tst_ExtruderSettingsSignals::forwardsTheChoicesOfTwoExtruders()
{
    QFETCH(QByteArray, box);
    TestLog log;
    ExtruderSettings form;
    form.widget.setDualExtrusion(true);
    form.widget.show();
    const auto chosen = [&] {
        return box == "raft" ? form.widget.raft() : form.widget.supports();
    };

    for (int choice = 1; choice <= 3; ++choice) {
        QTest::keyClick(form.comboBox(box), Qt::Key_Down);
        QCOMPARE(
            form.takeSignals(),
            QStringList({QStringLiteral("%1 %2").arg(QLatin1String(box)).arg(choice), "reset"_s}));
        QCOMPARE(chosen(), choice);
    }
}

void tst_ExtruderSettingsSignals::forwardsTheCheckBoxesOfOneExtruder_data()
{
    forwardsTheChoicesOfTwoExtruders_data();
}

void tst_ExtruderSettingsSignals::forwardsTheCheckBoxesOfOneExtruder()
{
    QFETCH(QByteArray, box);
    TestLog log;
    ExtruderSettings form;
    form.widget.show();
    QCheckBox* const checkBox = form.checkBox(box + "CheckBox");
    const auto chosen = [&] {
        return box == "raft" ? form.widget.raft() : form.widget.supports();
    };

    for (const int on : {1, 0}) {
        checkBox->click();
        QCOMPARE(form.takeSignals(),
                 QStringList({QStringLiteral("%1 %2").arg(QLatin1String(box)).arg(on), "reset"_s}));
        QCOMPARE(chosen(), on);
    }
    if (box == "raft")
        form.widget.raftCheckBoxSlot(true);
    else
        form.widget.supportsCheckBoxSlot(true);
    QCOMPARE(form.takeSignals(), QStringList({QString::fromLatin1(box) + " 1"_s, "reset"_s}));
}

void tst_ExtruderSettingsSignals::setsAChoice_data()
{
    QTest::addColumn<int>("choice");
    QTest::addColumn<int>("onDual");
    QTest::addColumn<int>("onSingle");

    QTest::newRow("off") << 0 << 0 << 0;
    QTest::newRow("color-matched") << 1 << 1 << 1;
    QTest::newRow("left") << 2 << 2 << 1;
    QTest::newRow("right") << 3 << 3 << 1;
    QTest::newRow("beyond") << 4 << 0 << 0;
    QTest::newRow("negative") << -1 << 0 << 0;
}

void tst_ExtruderSettingsSignals::setsAChoice()
{
    QFETCH(int, choice);
    QFETCH(int, onDual);
    QFETCH(int, onSingle);
    TestLog log;
    ExtruderSettings form;
    form.widget.setDualExtrusion(true);

    form.widget.setRaft(choice);
    QCOMPARE(form.takeSignals(),
             onDual ? QStringList({QStringLiteral("raft %1").arg(onDual), "reset"_s})
                    : QStringList());
    form.widget.setSupports(choice);
    QCOMPARE(form.widget.raft(), onDual);
    QCOMPARE(form.widget.supports(), onDual);

    ExtruderSettings single;
    single.widget.setRaft(choice);
    single.widget.setSupports(choice);
    QCOMPARE(single.widget.raft(), onSingle);
    QCOMPARE(single.widget.supports(), onSingle);
    QCOMPARE(single.takeSignals(),
             onSingle ? QStringList({"raft 1"_s, "reset"_s, "supports 1"_s, "reset"_s})
                      : QStringList());
    // Whatever the machine was when the choice was made.
    single.widget.setDualExtrusion(true);
    QCOMPARE(single.widget.raft(), onDual);
}

void tst_ExtruderSettingsSignals::keepsOnWhatIsOnForAnotherMachine()
{
    TestLog log;
    ExtruderSettings form;
    form.checkBox("raftCheckBox")->click();
    form.takeSignals();

    form.widget.setDualExtrusion(true);
    QCOMPARE(form.widget.raft(), int(ExtruderSettingsWidget::ColorMatched));
    QCOMPARE(form.widget.supports(), 0);
    QCOMPARE(form.takeSignals(), QStringList({"raft 1"_s, "reset"_s}));

    form.comboBox("raft")->setCurrentIndex(ExtruderSettingsWidget::Off);
    form.takeSignals();
    form.widget.setDualExtrusion(false);
    QCOMPARE(form.widget.raft(), 0);
    QVERIFY(!form.checkBox("raftCheckBox")->isChecked());
    QCOMPARE(form.takeSignals(), QStringList({"raft 0"_s, "reset"_s}));
}

void tst_ExtruderSettingsSignals::keepsTheChoiceOfADualMachine()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.setDualExtrusion(true);
    form.comboBox("raft")->setCurrentIndex(ExtruderSettingsWidget::RightExtruder);

    form.widget.setDualExtrusion(false);
    QCOMPARE(form.widget.raft(), 1);
    form.widget.setDualExtrusion(true);
    QCOMPARE(form.widget.raft(), int(ExtruderSettingsWidget::RightExtruder));
}

QTEST_MAIN(tst_ExtruderSettingsSignals)
#include "tst_extruder_settings_signals.moc"
