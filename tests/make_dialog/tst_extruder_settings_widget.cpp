#include "make_dialog/extruder_settings.h"
#include "src/make_dialog/preset_long_name.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <QAccessible>
#include <QButtonGroup>
#include <QDesktopServices>
#include <QGridLayout>
#include <QWheelEvent>

using namespace trovek;

class tst_ExtruderSettingsWidget : public QObject
{
    Q_OBJECT

private slots:
    void labelsItsFields();
    void explainsItsFields_data();
    void explainsItsFields();
    void listsTheMaterialsInOrder();
    void standsInAGrid();
    void offersFourChoicesEach_data();
    void offersFourChoicesEach();
    void pointsToHelpWithTwoExtruders();
    void startsForOneExtruder();
    void showsWhatTheMachineNeeds();
    void namesThePresets_data();
    void namesThePresets();
    void namesNoOtherPreset();
    void marksAPresetThatWasChanged();
    void logsAMarkForNoPreset();
    void tabsInTheOrderOfTheForm();
    void namesItsFieldsForScreenReaders();
    void leavesTheWheelToThePage();
};

void tst_ExtruderSettingsWidget::labelsItsFields()
{
    TestLog log;
    const ExtruderSettings form;
    QStringList texts;
    for (const char* name : {"materialLabel", "leftLabel", "rightLabel", "resolutionLabel",
                             "raftLabel", "supportsLabel"})
        texts.append(form.child<QLabel>(name)->text());

    QCOMPARE(texts, QStringList({"Material:"_s, "Left:"_s, "Right:"_s, "Resolution:"_s, "Raft:"_s,
                                 "Supports:"_s}));
}

void tst_ExtruderSettingsWidget::explainsItsFields_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("toolTip");

    QTest::newRow("left") << QByteArray("leftMaterial")
                          << "Select the material used by the left extruder"_s;
    QTest::newRow("right") << QByteArray("rightMaterial")
                           << "Select the material used by the right extruder"_s;
    QTest::newRow("single") << QByteArray("singleMaterial")
                            << "Select the material you are printing with"_s;
    QTest::newRow("low") << QByteArray("low") << "Build quickly but with a rougher result"_s;
    QTest::newRow("standard") << QByteArray("standard")
                              << "Sweet spot between speed and surface quality"_s;
    QTest::newRow("high") << QByteArray("high")
                          << "Build a very smooth surface with a longer build time"_s;
    const QString raft = "Build a thin layer of plastic beneath the model"_s;
    QTest::newRow("raft") << QByteArray("raft") << raft;
    QTest::newRow("raft check box") << QByteArray("raftCheckBox") << raft;
    const QString supports = "Build plastic supports to hold up some parts of the model"_s;
    QTest::newRow("supports") << QByteArray("supports") << supports;
    QTest::newRow("supports check box") << QByteArray("supportsCheckBox") << supports;
}

void tst_ExtruderSettingsWidget::explainsItsFields()
{
    QFETCH(QByteArray, name);
    TestLog log;
    const ExtruderSettings form;

    QTEST(form.child<QWidget>(name)->toolTip(), "toolTip");
}

void tst_ExtruderSettingsWidget::listsTheMaterialsInOrder()
{
    TestLog log;
    const ExtruderSettings form;
    QStringList names;
    for (const MaterialComboBox* box : form.widget.findChildren<MaterialComboBox*>())
        names.append(box->objectName());

    QCOMPARE(names, QStringList({"leftMaterial"_s, "rightMaterial"_s, "singleMaterial"_s}));
}

void tst_ExtruderSettingsWidget::standsInAGrid()
{
    TestLog log;
    const ExtruderSettings form;
    auto* const grid = qobject_cast<QGridLayout*>(form.widget.layout());
    QVERIFY(grid);

    QCOMPARE(grid->itemAtPosition(1, 1)->widget(), form.radio("low"));
    QCOMPARE(grid->itemAtPosition(2, 1)->widget(), form.radio("standard"));
    QCOMPARE(grid->itemAtPosition(3, 1)->widget(), form.radio("high"));
    QVERIFY(form.radio("low")->group());
    QCOMPARE(form.radio("low")->group()->buttons().size(), 3);
}

void tst_ExtruderSettingsWidget::offersFourChoicesEach_data()
{
    QTest::addColumn<QByteArray>("name");

    QTest::newRow("raft") << QByteArray("raft");
    QTest::newRow("supports") << QByteArray("supports");
}

void tst_ExtruderSettingsWidget::offersFourChoicesEach()
{
    QFETCH(QByteArray, name);
    TestLog log;
    const ExtruderSettings form;
    const QComboBox* const box = form.comboBox(name);
    QStringList texts;
    QList<QByteArray> pictures;
    for (int i = 0; i < box->count(); ++i) {
        texts.append(box->itemText(i));
        QCOMPARE(box->itemData(i).toInt(), i);
        const QImage picture = box->itemIcon(i).pixmap(24).toImage();
        QCOMPARE(picture.size(), QSize(24, 24));
        pictures.append(QByteArray(reinterpret_cast<const char*>(picture.constBits()),
                                   int(picture.sizeInBytes())));
    }

    QCOMPARE(texts,
             QStringList({"Off"_s, "Color-Matched"_s, "Left Extruder"_s, "Right Extruder"_s}));
    QCOMPARE(QSet<QByteArray>(pictures.begin(), pictures.end()).size(), 4);
    QCOMPARE(box->currentIndex(), 0);
}

void tst_ExtruderSettingsWidget::pointsToHelpWithTwoExtruders()
{
    TestLog log;
    const ExtruderSettings form;
    const QLabel* const help = form.child<QLabel>("help");

    QCOMPARE(help->text(),
             "For help with our Advanced Dual Extrusion settings, click <a href=\""_s +
                 QStringLiteral(TROVEK_DUAL_EXTRUSION_URL) + "\">here</a>"_s);
    QVERIFY(help->openExternalLinks());
    QVERIFY(help->textInteractionFlags().testFlag(Qt::LinksAccessibleByKeyboard));
}

void tst_ExtruderSettingsWidget::startsForOneExtruder()
{
    TestLog log;
    ExtruderSettings form;

    QCOMPARE(form.shownFields(),
             QStringList({"singleMaterial"_s, "raftCheckBox"_s, "supportsCheckBox"_s}));
    QCOMPARE(int(form.widget.quality()), int(SlicerConfiguration::Custom));
    QCOMPARE(form.widget.raft(), 0);
    QCOMPARE(form.widget.supports(), 0);
}

void tst_ExtruderSettingsWidget::showsWhatTheMachineNeeds()
{
    TestLog log;
    ExtruderSettings form;

    form.widget.setDualExtrusion(true);
    QCOMPARE(form.shownFields(),
             QStringList({"leftLabel"_s, "leftMaterial"_s, "rightLabel"_s, "rightMaterial"_s,
                          "raft"_s, "supports"_s, "help"_s}));
    form.widget.setDualExtrusion(false);
    QCOMPARE(form.shownFields(),
             QStringList({"singleMaterial"_s, "raftCheckBox"_s, "supportsCheckBox"_s}));
    QCOMPARE(form.takeSignals(), QStringList());
}

void tst_ExtruderSettingsWidget::namesThePresets_data()
{
    QTest::addColumn<SlicerConfiguration::Preset>("preset");
    QTest::addColumn<bool>("overridden");
    QTest::addColumn<QString>("name");

    QTest::newRow("low") << SlicerConfiguration::Low << false << "&Low (Faster)"_s;
    QTest::newRow("low, changed") << SlicerConfiguration::Low << true << "&Low (Faster) *"_s;
    QTest::newRow("standard") << SlicerConfiguration::Standard << false << "&Standard"_s;
    QTest::newRow("standard, changed") << SlicerConfiguration::Standard << true << "&Standard *"_s;
    QTest::newRow("high") << SlicerConfiguration::High << false << "&High (Slower)"_s;
    QTest::newRow("high, changed") << SlicerConfiguration::High << true << "&High (Slower) *"_s;
}

void tst_ExtruderSettingsWidget::namesThePresets()
{
    QFETCH(SlicerConfiguration::Preset, preset);
    QFETCH(bool, overridden);
    TestLog log;

    QTEST(presetLongName(preset, overridden), "name");
}

void tst_ExtruderSettingsWidget::namesNoOtherPreset()
{
    TestLog log;
    for (const int preset : {3, 4, -1}) {
        const std::string text = thrownText(
            [preset] { presetLongName(static_cast<SlicerConfiguration::Preset>(preset), false); });
        QCOMPARE(text, std::string("presetLongName: invalid type"));
    }
}

void tst_ExtruderSettingsWidget::marksAPresetThatWasChanged()
{
    TestLog log;
    ExtruderSettings form;
    const QStringList plain = {"&Low (Faster)"_s, "&Standard"_s, "&High (Slower)"_s};
    QCOMPARE(form.radioTexts(), plain);

    form.widget.overridednessChanged(SlicerConfiguration::Standard, true);
    QCOMPARE(form.radioTexts(),
             QStringList({"&Low (Faster)"_s, "&Standard *"_s, "&High (Slower)"_s}));
    form.widget.overridednessChanged(SlicerConfiguration::High, true);
    form.widget.overridednessChanged(SlicerConfiguration::Standard, false);
    QCOMPARE(form.radioTexts(),
             QStringList({"&Low (Faster)"_s, "&Standard"_s, "&High (Slower) *"_s}));
    form.widget.overridednessChanged(SlicerConfiguration::High, false);
    QCOMPARE(form.radioTexts(), plain);
    QCOMPARE(form.takeSignals(), QStringList());
}

void tst_ExtruderSettingsWidget::logsAMarkForNoPreset()
{
    TestLog log;
    log.expectError("presetLongName: invalid type");
    ExtruderSettings form;

    form.widget.overridednessChanged(SlicerConfiguration::Custom, true);

    QCOMPARE(log.sink().entries().at(0).file,
             std::string("src\\make_dialog\\extruder_settings_widget"));
    QCOMPARE(form.radioTexts(),
             QStringList({"&Low (Faster)"_s, "&Standard"_s, "&High (Slower)"_s}));
}

void tst_ExtruderSettingsWidget::tabsInTheOrderOfTheForm()
{
    TestLog log;
    const ExtruderSettings form;
    QStringList order;
    QWidget* const first = form.child<QWidget>("leftMaterial");
    QWidget* widget = first;
    do {
        if (widget->focusPolicy() & Qt::TabFocus)
            order.append(widget->objectName());
        widget = widget->nextInFocusChain();
    } while (widget != first);

    QCOMPARE(order, QStringList({"leftMaterial"_s, "rightMaterial"_s, "singleMaterial"_s, "low"_s,
                                 "standard"_s, "high"_s, "raft"_s, "raftCheckBox"_s, "supports"_s,
                                 "supportsCheckBox"_s, "help"_s}));
}

void tst_ExtruderSettingsWidget::namesItsFieldsForScreenReaders()
{
    TestLog log;
    ExtruderSettings form;
    const auto name = [&form](const char* field) {
        return QAccessible::queryAccessibleInterface(form.child<QWidget>(field))
            ->text(QAccessible::Name);
    };
    // A combo box is named by the label whose buddy it is.
    const auto labeled = [&form](const char* label) {
        return form.child<QLabel>(label)->buddy()->objectName();
    };

    QCOMPARE(labeled("materialLabel"), "singleMaterial"_s);
    QCOMPARE(name("raftCheckBox"), "Raft:"_s);
    QCOMPARE(name("supportsCheckBox"), "Supports:"_s);
    form.widget.setDualExtrusion(true);
    QCOMPARE(form.child<QLabel>("materialLabel")->buddy(), nullptr);
    QCOMPARE(labeled("leftLabel"), "leftMaterial"_s);
    QCOMPARE(labeled("rightLabel"), "rightMaterial"_s);
    QCOMPARE(labeled("raftLabel"), "raft"_s);
    QCOMPARE(labeled("supportsLabel"), "supports"_s);
}

void tst_ExtruderSettingsWidget::leavesTheWheelToThePage()
{
    TestLog log;
    ExtruderSettings form;
    form.widget.setDualExtrusion(true);
    form.widget.setRaft(ExtruderSettingsWidget::LeftExtruder);
    form.widget.setSupports(ExtruderSettingsWidget::LeftExtruder);
    form.widget.setLeftMaterial(Orvane::PLA);
    form.widget.setRightMaterial(Orvane::PLA);
    form.widget.show();
    form.radio("low")->setFocus();
    form.takeSignals();

    for (QComboBox* box : form.widget.findChildren<QComboBox*>()) {
        QWheelEvent event(QPointF(5, 5), box->mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, 120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(box, &event);
    }
    QCOMPARE(form.takeSignals(), QStringList());
}

QTEST_MAIN(tst_ExtruderSettingsWidget)
#include "tst_extruder_settings_widget.moc"
