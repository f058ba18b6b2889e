#include "platform/pathscope/overlay_world.h"

#include <pathscope/legend_list.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QScopeGuard>
#include <QScrollBar>
#include <QTranslator>
#include <QWheelEvent>

using namespace pathscope;

namespace {

/** A language with longer words. */
class LongWords : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                      int /*n*/) const override
    {
        const QString source = QString::fromUtf8(text);
        return source + QString(source.size() * 4 / 10, QLatin1Char('e'));
    }
};

/** The names and texts of those that are too narrow for what they show. */
QStringList cutTexts(const QWidget& panel)
{
    QStringList cut;
    for (const QWidget* widget : panel.findChildren<QWidget*>()) {
        const auto* label = qobject_cast<const QLabel*>(widget);
        const bool isOneLine = label != nullptr && !label->wordWrap();
        const bool isWhole = isOneLine || qobject_cast<const QCheckBox*>(widget) ||
                             qobject_cast<const QComboBox*>(widget) ||
                             qobject_cast<const QAbstractSpinBox*>(widget);
        if (isWhole && widget->isVisible() && widget->width() < widget->minimumSizeHint().width())
            cut.append(widget->objectName() + QLatin1Char(' ') +
                       (label != nullptr ? label->text() : QString()));
        const int left = widget->mapTo(&panel, QPoint()).x();
        if (isWhole && widget->isVisible() && (left < 0 || left + widget->width() > panel.width()))
            cut.append(widget->objectName() + QStringLiteral(" beyond the edge"));
        // Wrapped ones break between words.
        if (label != nullptr && label->wordWrap() && label->isVisible() &&
            label->height() < label->heightForWidth(label->width()))
            cut.append(label->text());
    }
    return cut;
}

} // namespace

class tst_OverlayForm : public QObject
{
    Q_OBJECT

private slots:
    void choosesColors_data();
    void choosesColors();
    void namesTheColors();
    void keepsTheColorWhenTheWheelPasses();
    void tellsWhatTheColorsMean();
    void tellsTotals();
    void tellsTheMaterialWithItsWeight();
    void tellsWhatWasNotUnderstood();
    void showsTheErrorInPlaceOfTotals();
    void showsProgressWhileItReads();
    void listsTravelsOnlyWhileTheyAreShown();
    void visitsItsWidgetsInOrder();
    void isReachedByMnemonics();
    void namesEverythingForAssistiveTechnology();
    void fitsLowWindows();
    void showsItsTextsWhole_data();
    void showsItsTextsWhole();
    void growsWithItsFont();
    void keepsTheLegendWhereItIsScrolled();
};

void tst_OverlayForm::choosesColors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<ToolpathViewModel::ColourMode>("mode");

    QTest::newRow("feature") << QStringLiteral("Feature") << ToolpathViewModel::ByFeature;
    QTest::newRow("extruder") << QStringLiteral("Extruder") << ToolpathViewModel::ByExtruder;
    QTest::newRow("height") << QStringLiteral("Layer height") << ToolpathViewModel::ByHeight;
    QTest::newRow("width") << QStringLiteral("Width") << ToolpathViewModel::ByWidth;
    QTest::newRow("speed") << QStringLiteral("Speed") << ToolpathViewModel::BySpeed;
    QTest::newRow("temperature") << QStringLiteral("Temperature")
                                 << ToolpathViewModel::ByTemperature;
    QTest::newRow("layer time") << QStringLiteral("Layer time") << ToolpathViewModel::ByLayerTime;
}

void tst_OverlayForm::choosesColors()
{
    QFETCH(QString, text);
    QFETCH(ToolpathViewModel::ColourMode, mode);
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    const int row = box.findText(text);
    QVERIFY(row >= 0);
    QTest::keyClick(&box, Qt::Key_Home);
    for (int i = 0; i < row; ++i)
        QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(opened.model.colourMode(), mode);
    opened.model.setColourMode(ToolpathViewModel::ByLayerTime);
    opened.model.setColourMode(mode);
    QCOMPARE(box.currentText(), text);
}

void tst_OverlayForm::namesTheColors()
{
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    QStringList texts;
    for (int i = 0; i < box.count(); ++i)
        texts.append(box.itemText(i));
    QCOMPARE(texts.join(QLatin1Char('|')),
             QStringLiteral("Feature|Extruder|Layer height|Width|Speed|Temperature|Layer time"));
    QCOMPARE(box.count(), ToolpathViewModel::kColourModeCount);
}

void tst_OverlayForm::keepsTheColorWhenTheWheelPasses()
{
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    const auto turn = [&box] {
        QWheelEvent event(box.rect().center(), box.mapToGlobal(box.rect().center()), {}, {0, -120},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&box, &event);
    };
    opened.box("layerBox").setFocus();
    turn();
    QCOMPARE(box.currentIndex(), 0);
    box.setFocus();
    turn();
    QCOMPARE(box.currentIndex(), 1);
}

void tst_OverlayForm::tellsWhatTheColorsMean()
{
    const Opened opened;
    auto& legend = opened.find<LegendList>("legend");
    QCOMPARE(legend.count(), 2);
    QCOMPARE(legend.item(0)->text(), QStringLiteral("Outer wall"));
    QCOMPARE(legend.item(0)->data(Qt::AccessibleTextRole).toString(),
             QStringLiteral("Outer wall, 2 min 30 s, 0.75 m, 75 % of the time"));
    QCOMPARE(legend.item(0)->toolTip(),
             QStringLiteral("<p>Outer wall, 2 min 30 s, 0.75 m, 75 % of the time</p>"));
    QCOMPARE(legend.item(1)->data(Qt::AccessibleTextRole).toString(),
             QStringLiteral("Sparse infill, 50 s, 0.25 m, 25 % of the time"));
    QVERIFY(legend.item(0)->data(Qt::DecorationRole).value<QColor>().isValid());
    QVERIFY(legend.item(0)->data(Qt::DecorationRole) != legend.item(1)->data(Qt::DecorationRole));
}

void tst_OverlayForm::tellsTotals()
{
    const Opened opened;
    const QStringList lines = opened.text("totals").split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QStringLiteral("Layers: 50"));
    QVERIFY2(lines[1].startsWith(QLatin1String("Size: 20.")), qPrintable(lines[1]));
    QCOMPARE(lines[2], QStringLiteral("Time: 3 min 20 s"));
    QCOMPARE(lines[3], QStringLiteral("Extruder 1, 1.00\u00a0m"));
}

void tst_OverlayForm::tellsTheMaterialWithItsWeight()
{
    const Opened opened(50, {Orvane::PLA});
    QCOMPARE(opened.text("totals").split(QLatin1Char('\n')).last(),
             QStringLiteral("Extruder 1: Orvane PLA, 1.00\u00a0m, 3.0\u00a0g"));
}

void tst_OverlayForm::tellsWhatWasNotUnderstood()
{
    Opened opened;
    auto paths = tower(3);
    paths->skipped.lines = 1;
    opened.scene.setToolpaths(paths);
    QCOMPARE(opened.text("skipped"), QStringLiteral("1 line of the file was not understood."));
    QVERIFY(opened.find<QLabel>("skipped").isVisible());

    paths = tower(3);
    paths->skipped.lines = 1000;
    paths->skipped.badNumbers = 200;
    paths->skipped.badArcs = 34;
    paths->skipped.examples = {{7, "G1 <b>X"}, {9, "nonsense"}};
    opened.scene.setToolpaths(paths);
    QCOMPARE(opened.text("skipped"),
             QStringLiteral("1,234 lines of the file were not understood."));
    QCOMPARE(opened.find<QLabel>("skipped").toolTip(),
             QStringLiteral("<p>Line 7: G1 &lt;b&gt;X<br>\nLine 9: nonsense</p>"));
    opened.scene.setToolpaths(tower(3));
    QVERIFY(opened.find<QLabel>("skipped").isHidden());
}

void tst_OverlayForm::showsTheErrorInPlaceOfTotals()
{
    Opened opened;
    opened.overlay->setError(QStringLiteral("The file <b>is</b> gone."));
    QCOMPARE(opened.text("totals"), QStringLiteral("The file <b>is</b> gone."));
    QCOMPARE(opened.find<QLabel>("totals").textFormat(), Qt::PlainText);
    opened.scene.setToolpaths(tower(3));
    QCOMPARE(opened.text("totals"), QStringLiteral("The file <b>is</b> gone."));
    opened.overlay->setError(QString());
    QVERIFY(opened.text("totals").startsWith(QLatin1String("Layers: 3\n")));
}

void tst_OverlayForm::showsProgressWhileItReads()
{
    const Opened opened;
    auto& bar = opened.find<QProgressBar>("progress");
    opened.overlay->setProgress(0.25);
    QVERIFY(bar.isVisible());
    QCOMPARE(bar.text(), QStringLiteral("Reading: 25 %"));
    opened.overlay->setProgress(-3);
    QCOMPARE(bar.text(), QStringLiteral("Reading: 0 %"));
    opened.overlay->setProgress(1);
    QVERIFY(bar.isHidden());
}

void tst_OverlayForm::listsTravelsOnlyWhileTheyAreShown()
{
    Opened opened;
    auto paths = tower(3);
    paths->travelCount = 1;
    opened.scene.setToolpaths(paths);
    auto& legend = opened.find<LegendList>("legend");
    QCOMPARE(legend.count(), 2);
    opened.find<QCheckBox>("travels").click();
    QCOMPARE(legend.count(), 3);
    QCOMPARE(legend.item(2)->text(), QStringLiteral("Travels"));
}

void tst_OverlayForm::visitsItsWidgetsInOrder()
{
    const Opened opened;
    opened.slider().setFocus();
    QStringList names;
    for (int i = 0; i < 15; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(QApplication::focusWidget()->objectName());
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("layerBox heightBox fromBox moveBox moveSlider colorMode travels "
                            "singleLayer retractions orthographic viewTop viewFront viewSide "
                            "viewIsometric viewFit"));
}

void tst_OverlayForm::isReachedByMnemonics()
{
    Opened opened;
    const struct
    {
        Qt::Key key;
        const char* name;
    } fields[] = {{Qt::Key_L, "layerBox"},
                  {Qt::Key_G, "heightBox"},
                  {Qt::Key_O, "fromBox"},
                  {Qt::Key_E, "moveBox"},
                  {Qt::Key_C, "colorMode"}};
    for (const auto& field : fields) {
        QTest::keyClick(&opened.window, field.key, Qt::AltModifier);
        QCOMPARE(QApplication::focusWidget()->objectName(), QString::fromLatin1(field.name));
    }
    const struct
    {
        Qt::Key key;
        const char* name;
    } boxes[] = {{Qt::Key_Y, "singleLayer"},
                 {Qt::Key_T, "travels"},
                 {Qt::Key_N, "retractions"},
                 {Qt::Key_P, "orthographic"}};
    for (const auto& box : boxes) {
        QTest::keyClick(&opened.window, box.key, Qt::AltModifier);
        QTRY_VERIFY2(opened.find<QCheckBox>(box.name).isChecked(), box.name);
    }
}

void tst_OverlayForm::namesEverythingForAssistiveTechnology()
{
    const Opened opened;
    for (const QWidget* widget : opened.overlay->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus ||
            widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        const QString name = button && widget->accessibleName().isEmpty()
                                 ? button->text()
                                 : widget->accessibleName();
        QVERIFY2(!name.isEmpty(), qPrintable(widget->objectName()));
        QVERIFY2(!widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    }
}

void tst_OverlayForm::fitsLowWindows()
{
    Opened opened;
    QVERIFY(opened.overlay->minimumSizeHint().height() <= 240);
    // About a quarter of a small screen with a common font.
    QVERIFY2(opened.overlay->sizeHint().width() <= 17 * opened.overlay->fontMetrics().height(),
             qPrintable(QString::number(opened.overlay->sizeHint().width())));
    QVERIFY(opened.overlay->minimumSizeHint().width() <= opened.overlay->sizeHint().width());
}

void tst_OverlayForm::showsItsTextsWhole_data()
{
    QTest::addColumn<int>("layers");
    QTest::addColumn<bool>("longer");
    QTest::addColumn<Qt::LayoutDirection>("direction");

    QTest::newRow("a small file") << 1 << false << Qt::LeftToRight;
    QTest::newRow("a million layers") << 1000000 << false << Qt::LeftToRight;
    QTest::newRow("long words") << 500 << true << Qt::LeftToRight;
    QTest::newRow("from right to left") << 500 << true << Qt::RightToLeft;
}

void tst_OverlayForm::showsItsTextsWhole()
{
    QFETCH(int, layers);
    QFETCH(bool, longer);
    QFETCH(Qt::LayoutDirection, direction);
    LongWords words;
    if (longer)
        QCoreApplication::installTranslator(&words);
    QApplication::setLayoutDirection(direction);
    const auto restore = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });

    Opened opened(0);
    opened.showUnevenLayers(layers);
    opened.window.layout()->setContentsMargins(0, 0, 0, 0);
    for (const int height : {900, 400}) {
        opened.window.resize(opened.overlay->minimumSizeHint().width(), height);
        QTRY_COMPARE(cutTexts(*opened.overlay).join(QLatin1Char('|')), QString());
        for (const char* name : {"layerBox", "heightBox", "fromBox", "moveBox"}) {
            const auto* field = opened.find<QAbstractSpinBox>(name).findChild<QLineEdit*>();
            QVERIFY2(field->fontMetrics().horizontalAdvance(field->text()) < field->width(), name);
        }
        // The slider stands at the side where lines begin.
        QCOMPARE(opened.slider().x() < opened.box("layerBox").mapTo(opened.overlay, QPoint()).x(),
                 direction == Qt::LeftToRight);
    }
}

void tst_OverlayForm::growsWithItsFont()
{
    const Opened opened;
    const int narrow = opened.find<QLabel>("layerInfo").width();
    QFont font = opened.overlay->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    opened.overlay->setFont(font);
    for (const char* name : {"layerCount", "layerInfo", "moveCount"}) {
        const auto& label = opened.find<QLabel>(name);
        QTRY_VERIFY2(label.size() == label.sizeHint(), name);
    }
    QVERIFY(opened.find<QLabel>("layerInfo").width() > narrow);
}

void tst_OverlayForm::keepsTheLegendWhereItIsScrolled()
{
    std::vector<LegendEntry> entries(30);
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i].name = QString::number(i);
    LegendList legend;
    legend.setEntries(entries);
    legend.resize(200, 150);
    legend.show();
    legend.verticalScrollBar()->setValue(100);
    const QPersistentModelIndex first(legend.model()->index(0, 0));
    entries.push_back({Qt::red, QStringLiteral("Travels"), {}, 0});
    legend.setEntries(entries);
    QCoreApplication::processEvents();
    QCOMPARE(legend.verticalScrollBar()->value(), 100);
    QVERIFY(first.isValid());
    QCOMPARE(legend.item(30)->text(), QStringLiteral("Travels"));
    entries.erase(entries.begin());
    entries.resize(5);
    legend.setEntries(entries);
    QCOMPARE(legend.count(), 5);
    QCOMPARE(legend.item(0)->text(), QStringLiteral("1"));
}

QTEST_MAIN(tst_OverlayForm)
#include "tst_overlay_form.moc"
