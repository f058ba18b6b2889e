#include "form_rows.h"
#include "support/test_log.h"

#include <trovek-ui/grama.h>

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace trovek;

namespace {

using Item = std::shared_ptr<GramaItem>;

Item add(Grama& form, const QString& name, const Item& parent = nullptr)
{
    const Item item = form.addRow(new QLabel(name), new QLineEdit, parent);
    if (item)
        item->setSearchStrings({name});
    return item;
}

Item add(Grama& form, const char* name, const Item& parent = nullptr)
{
    return add(form, QString::fromLatin1(name), parent);
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

GramaCollapseExpandButton* buttonOf(const Item& item)
{
    return item->leftContainer()->button();
}

bool paintsSomething(QWidget* widget)
{
    QImage picture(widget->size(), QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    widget->render(&picture, QPoint(), QRegion(), QWidget::RenderFlags());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) != 0)
                return true;
        }
    }
    return false;
}

/** Counts the events of one type that a widget gets. */
class EventCounter : public QObject
{
public:
    EventCounter(QWidget* widget, QEvent::Type type)
        : m_type(type)
    {
        widget->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == m_type ? 1 : 0;
        return false;
    }

private:
    const QEvent::Type m_type;
};

/** "T(B, A(X)), U" as it is shown: children in reverse, the line of each below its children. */
void appendExpected(const Item& item, QStringList* rows)
{
    rows->append(qobject_cast<QLabel*>(item->label())->text());
    const auto& children = item->children();
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        appendExpected(*child, rows);
    rows->append(QStringLiteral("--"));
}

} // namespace

class tst_Grama : public QObject
{
    Q_OBJECT

private slots:
    void laysOutTwoColumns();
    void addsTopRowsAtTheEnd();
    void addsChildrenBelowTheirParentInReverse();
    void indentsByTheLevel();
    void standsALineAfterEveryRow();
    void hidesTheLineOfARowWithChildren();
    void tellsWhatAnItemHas();
    void refusesAParentThatHasNoRow_data();
    void refusesAParentThatHasNoRow();
    void takesRowsWithoutALabelOrAField();
    void hidesChildrenWhenCollapsed();
    void expandsAlsoBelowACollapsedChild();
    void togglesByADoubleClick_data();
    void togglesByADoubleClick();
    void togglesByKeys();
    void showsAnArrowOnlyWithChildren();
    void announcesACollapse();
    void showsARowThatIsAddedWhileShown();
    void laysOutAShownFormOnceForManyRows();
    void showsANewChildOfACollapsedRow();
    void keepsAFieldThatItsOwnerHid();
    void laysOutAShownFormAfterACollapse();
    void goesThroughTheRowsFromTopToBottomByTab();
    void keepsTheFocusWhenOtherRowsGo();
    void outlivedByAnItem();
    void keepsARowThatNobodyElseHolds();
    void takesRowsNestedDeeply();
    void isTheSameAsAWalkThroughTheForm();
};

void tst_Grama::laysOutTwoColumns()
{
    TestLog log;
    const Grama form;
    const QFormLayout* layout = FormRows(form).layout();

    QCOMPARE(layout->contentsMargins(), QMargins(0, 0, 9, 0));
    QCOMPARE(layout->verticalSpacing(), 0);
    QCOMPARE(layout->horizontalSpacing(), 24);
    QCOMPARE(layout->sizeConstraint(), QLayout::SetMinimumSize);
    QCOMPARE(layout->fieldGrowthPolicy(), QFormLayout::AllNonFixedFieldsGrow);
    QCOMPARE(layout->rowCount(), 0);
    QCOMPARE(form.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
}

void tst_Grama::addsTopRowsAtTheEnd()
{
    TestLog log;
    Grama form;

    add(form, "A");
    add(form, "B");
    add(form, "C");

    QCOMPARE(FormRows(form).all(), words("A -- B -- C --"));
    QCOMPARE(FormRows(form).shown(), words("A -- B -- C --"));
}

void tst_Grama::addsChildrenBelowTheirParentInReverse()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    add(form, "Q");

    add(form, "A", parent);
    const Item middle = add(form, "B", parent);
    add(form, "C", parent);
    add(form, "B1", middle);
    add(form, "B2", middle);

    QCOMPARE(FormRows(form).all(), words("P C -- B B2 -- B1 -- -- A -- -- Q --"));
    QCOMPARE(parent->children().size(), std::size_t(3));
    QCOMPARE(parent->children()[1], middle);
}

void tst_Grama::indentsByTheLevel()
{
    TestLog log;
    Grama form;
    const Item top = add(form, "Top");
    const Item child = add(form, "Child", top);
    const Item grandchild = add(form, "Grandchild", child);
    form.show();
    form.widget()->layout()->activate();

    int level = 0;
    for (const Item& item : {top, child, grandchild}) {
        item->leftContainer()->layout()->activate();
        QCOMPARE(buttonOf(item)->x(), 12 * level);
        QCOMPARE(buttonOf(item)->size(), QSize(24, 24));
        QCOMPARE(item->label()->x(), 12 * level + 24);
        QCOMPARE(item->label()->parentWidget(), item->leftContainer());
        ++level;
    }
}

void tst_Grama::standsALineAfterEveryRow()
{
    TestLog log;
    Grama form;
    add(form, "A");

    const QFrame* line = FormRows(form).line(1);

    QCOMPARE(line->frameStyle(), 52);
    QCOMPARE(line->minimumHeight(), 20);
}

void tst_Grama::hidesTheLineOfARowWithChildren()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");

    add(form, "A", parent);
    add(form, "B", parent);

    QCOMPARE(FormRows(form).shown(), words("P B -- A --"));
    QVERIFY(FormRows(form).line(5)->isHidden());
}

void tst_Grama::tellsWhatAnItemHas()
{
    TestLog log;
    Grama form;
    auto* label = new QLabel(QStringLiteral("A"));
    auto* field = new QLineEdit;

    const Item item = form.addRow(label, field, nullptr);
    const Item child = add(form, "B", item);

    QCOMPARE(item->form(), &form);
    QCOMPARE(item->label(), label);
    QCOMPARE(item->field(), field);
    QCOMPARE(child->parentItem(), item.get());
    const GramaItem* root = item->parentItem();
    QVERIFY(root);
    QVERIFY(!root->parentItem());
    QVERIFY(!root->leftContainer());
    QVERIFY(!root->label());
    QVERIFY(!root->field());
    QVERIFY(item->searchStrings().isEmpty());
    QVERIFY(!item->isMarked());
    QCOMPARE(buttonOf(item)->accessibleName(), QStringLiteral("A"));
}

void tst_Grama::refusesAParentThatHasNoRow_data()
{
    QTest::addColumn<QString>("which");

    QTest::newRow("of another form") << QStringLiteral("other");
    QTest::newRow("of a form that is gone") << QStringLiteral("gone");
    QTest::newRow("without a label") << QStringLiteral("bare");
    QTest::newRow("whose label's container was deleted") << QStringLiteral("deleted");
}

void tst_Grama::refusesAParentThatHasNoRow()
{
    TestLog log;
    QFETCH(QString, which);
    Grama form;
    Grama other;
    auto gone = std::make_unique<Grama>();
    const Item bare = form.addRow(nullptr, new QLineEdit, nullptr);
    const Item deleted = add(form, "Deleted");
    Item parent = which == QLatin1String("other")  ? add(other, "Other")
                  : which == QLatin1String("gone") ? add(*gone, "Gone")
                  : which == QLatin1String("bare") ? bare
                                                   : deleted;
    gone.reset();
    if (parent == deleted)
        delete deleted->leftContainer();
    const int rows = FormRows(form).layout()->rowCount();
    QLabel label;
    QLineEdit field;

    log.expectError("Invalid parent");
    QVERIFY(!form.addRow(&label, &field, parent));

    QCOMPARE(FormRows(form).layout()->rowCount(), rows);
    QVERIFY(parent->children().empty());
    QVERIFY(!label.parent());
    QVERIFY(!field.parent());
    QCOMPARE(log.sink().entries().back().file, std::string("src\\widgets\\grama"));
}

void tst_Grama::takesRowsWithoutALabelOrAField()
{
    TestLog log;
    Grama form;

    const Item unlabelled = form.addRow(nullptr, new QLineEdit, nullptr);
    const Item bare = form.addRow(new QLabel(QStringLiteral("A")), nullptr, nullptr);
    form.addRow(nullptr, nullptr, nullptr);

    const QFormLayout* layout = FormRows(form).layout();
    QCOMPARE(layout->rowCount(), 6);
    QVERIFY(!unlabelled->leftContainer());
    QVERIFY(!bare->field());
    // Only a row with a label counts for the line below it.
    QVERIFY(layout->itemAt(1, QFormLayout::SpanningRole)->widget()->isHidden());
    QVERIFY(!layout->itemAt(3, QFormLayout::SpanningRole)->widget()->isHidden());
    form.filterByText(QStringLiteral("nothing"));
    QVERIFY(unlabelled->field()->isHidden());
}

void tst_Grama::hidesChildrenWhenCollapsed()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    add(form, "A", parent);
    const Item child = add(form, "B", parent);
    add(form, "B1", child);
    add(form, "Q");
    form.show();

    QTest::mouseClick(buttonOf(parent), Qt::LeftButton);

    QCOMPARE(FormRows(form).shown(), words("P -- Q --"));
    QVERIFY(FormRows(form).fieldsFollowLabels());
    QVERIFY(FormRows(form).linesAreRight());

    QTest::mouseClick(buttonOf(parent), Qt::LeftButton);

    QCOMPARE(FormRows(form).shown(), words("P B B1 -- A -- Q --"));
    QVERIFY(FormRows(form).fieldsFollowLabels());
}

void tst_Grama::expandsAlsoBelowACollapsedChild()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    const Item child = add(form, "B", parent);
    add(form, "B1", child);
    form.show();

    buttonOf(child)->click();
    QCOMPARE(FormRows(form).shown(), words("P B --"));
    buttonOf(parent)->click();
    buttonOf(parent)->click();

    QCOMPARE(FormRows(form).shown(), words("P B B1 --"));
    QVERIFY(!buttonOf(child)->isChecked());
}

void tst_Grama::togglesByADoubleClick_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("onLabel");
    QTest::addColumn<bool>("expanded");

    QTest::newRow("left, on the label") << int(Qt::LeftButton) << true << false;
    QTest::newRow("left, beside it") << int(Qt::LeftButton) << false << false;
    QTest::newRow("right, on the label") << int(Qt::RightButton) << true << true;
    QTest::newRow("middle, beside it") << int(Qt::MiddleButton) << false << true;
}

void tst_Grama::togglesByADoubleClick()
{
    TestLog log;
    QFETCH(int, button);
    QFETCH(bool, onLabel);
    Grama form;
    const Item parent = add(form, "P");
    const Item child = add(form, "A", parent);
    form.show();
    QWidget* const target = onLabel ? parent->label() : parent->leftContainer();

    QTest::mouseDClick(target, static_cast<Qt::MouseButton>(button), Qt::NoModifier,
                       QPoint(target->width() - 1, target->height() / 2));

    QTEST(buttonOf(parent)->isChecked(), "expanded");
    QTEST(!child->leftContainer()->isHidden(), "expanded");
}

void tst_Grama::togglesByKeys()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    add(form, "A", parent);
    form.show();
    QSignalSpy toggled(parent->leftContainer(), &GramaLeftContainerWidget::collapsedOrExpanded);

    QTest::keyClick(buttonOf(parent), Qt::Key_Space);
    QVERIFY(!buttonOf(parent)->isChecked());
    QTest::keyClick(buttonOf(parent), Qt::Key_Right);
    QVERIFY(buttonOf(parent)->isChecked());
    QTest::keyClick(buttonOf(parent), Qt::Key_Right);
    QCOMPARE(toggled.count(), 2);
    QTest::keyClick(buttonOf(parent), Qt::Key_Left);
    QVERIFY(!buttonOf(parent)->isChecked());
    QCOMPARE(FormRows(form).shown(), words("P --"));
}

void tst_Grama::showsAnArrowOnlyWithChildren()
{
    TestLog log;
    Grama form;
    const Item item = add(form, "P");
    form.show();

    QVERIFY(!buttonOf(item)->isCollapsible());
    QVERIFY(buttonOf(item)->isChecked());
    QCOMPARE(buttonOf(item)->focusPolicy(), Qt::NoFocus);
    QVERIFY(!paintsSomething(buttonOf(item)));

    add(form, "A", item);

    QVERIFY(buttonOf(item)->isCollapsible());
    QCOMPARE(buttonOf(item)->focusPolicy(), Qt::TabFocus);
    QVERIFY(paintsSomething(buttonOf(item)));
    const QImage down = buttonOf(item)->grab().toImage();
    buttonOf(item)->click();
    QVERIFY(buttonOf(item)->grab().toImage() != down);
}

void tst_Grama::announcesACollapse()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    const Item child = add(form, "A", parent);
    QSignalSpy requests(parent.get(), &GramaItem::requestVisibilityUpdate);
    bool hiddenBefore = false;
    connect(parent.get(), &GramaItem::requestVisibilityUpdate, this,
            [&] { hiddenBefore = child->leftContainer()->isHidden(); });

    buttonOf(parent)->click();

    QCOMPARE(requests.count(), 1);
    QVERIFY(hiddenBefore);
}

void tst_Grama::showsARowThatIsAddedWhileShown()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    form.show();

    const Item child = add(form, "A", parent);

    QVERIFY(child->leftContainer()->isVisible());
    QVERIFY(child->label()->isVisible());
    QVERIFY(child->field()->isVisible());
    QCOMPARE(FormRows(form).shown(), words("P A --"));
    QTRY_VERIFY(child->leftContainer()->y() >= parent->leftContainer()->geometry().bottom());
}

void tst_Grama::laysOutAShownFormOnceForManyRows()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    EventCounter resizes(form.widget(), QEvent::Resize);

    for (int i = 0; i < 50; ++i)
        add(form, QString::number(i), i % 2 ? parent : nullptr);
    const Item last = add(form, "Q");
    QCOMPARE(resizes.count, 0);

    QTRY_VERIFY(last->leftContainer()->y() > 50 * parent->leftContainer()->height());
    QCOMPARE(last->field()->x(), parent->field()->x());
    QVERIFY2(resizes.count <= 3, qPrintable(QString::number(resizes.count)));
}

void tst_Grama::showsANewChildOfACollapsedRow()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    add(form, "A", parent);
    form.show();
    buttonOf(parent)->click();

    add(form, "B", parent);

    QCOMPARE(FormRows(form).shown(), words("P B --"));
    QVERIFY(FormRows(form).linesAreRight());
}

void tst_Grama::keepsAFieldThatItsOwnerHid()
{
    TestLog log;
    Grama form;
    form.show();
    auto* field = new QLineEdit;
    field->hide();

    form.addRow(new QLabel(QStringLiteral("A")), field, nullptr);

    QVERIFY(field->isHidden());
}

void tst_Grama::laysOutAShownFormAfterACollapse()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    for (int i = 0; i < 20; ++i)
        add(form, QString::number(i), parent);
    const Item last = add(form, "Q");
    form.resize(300, 200);
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    const int expanded = last->leftContainer()->y();

    buttonOf(parent)->click();
    QTRY_VERIFY(last->leftContainer()->y() < expanded);
    QTRY_VERIFY(!form.verticalScrollBar()->isVisible());
    buttonOf(parent)->click();
    QTRY_COMPARE(last->leftContainer()->y(), expanded);
    QTRY_VERIFY(form.verticalScrollBar()->isVisible());
}

void tst_Grama::goesThroughTheRowsFromTopToBottomByTab()
{
    TestLog log;
    QDialog dialog;
    auto* const layout = new QVBoxLayout(&dialog);
    auto* const form = new Grama(&dialog);
    layout->addWidget(form);
    auto* const close = new QPushButton(QStringLiteral("Close"));
    layout->addWidget(close);
    const Item top = add(*form, "T");
    const Item parent = add(*form, "P");
    const Item first = add(*form, "A", parent);
    const Item second = add(*form, "B", parent);
    add(*form, "B1", second);
    const Item last = add(*form, "Q");
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    form->setFocus();

    const QList<QWidget*> expected = {
        top->field(),     buttonOf(parent), parent->field(),
        buttonOf(second), second->field(),  second->children()[0]->field(),
        first->field(),   last->field(),    close};
    for (QWidget* widget : expected) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), widget);
    }

    const Item added = add(*form, "A1", first);
    form->setFocus();
    for (int i = 0; i < 8; ++i)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), first->field());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), added->field());
}

void tst_Grama::keepsTheFocusWhenOtherRowsGo()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P");
    add(form, "A", parent);
    form.show();
    form.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&form));
    parent->field()->setFocus();

    buttonOf(parent)->click();
    form.filterByText(QStringLiteral("p"));

    QCOMPARE(QApplication::focusWidget(), parent->field());
}

void tst_Grama::outlivedByAnItem()
{
    TestLog log;
    auto form = std::make_unique<Grama>();
    const Item parent = add(*form, "P");
    const Item child = add(*form, "A", parent);
    Item grandchild = add(*form, "A1", child);

    form.reset();

    QVERIFY(!parent->form());
    QVERIFY(!parent->leftContainer());
    QVERIFY(!parent->label());
    QVERIFY(!parent->field());
    QVERIFY(!parent->parentItem());
    QCOMPARE(child->parentItem(), parent.get());
    QCOMPARE(parent->children().size(), std::size_t(1));
    grandchild.reset();
    emit child->requestVisibilityUpdate();
}

void tst_Grama::keepsARowThatNobodyElseHolds()
{
    TestLog log;
    Grama form;
    add(form, "P");

    QCOMPARE(FormRows(form).all(), words("P --"));
}

void tst_Grama::takesRowsNestedDeeply()
{
    TestLog log;
    constexpr int kLevels = 3000;
    auto form = std::make_unique<Grama>();
    Item item = add(*form, "0");
    const Item top = item;
    for (int level = 1; level < kLevels; ++level)
        item = add(*form, QString::number(level), item);

    form->filterByText(QString::number(kLevels - 1));
    QCOMPARE(FormRows(*form).shown().size(), kLevels + 1);
    buttonOf(top)->click();
    QCOMPARE(FormRows(*form).shown().size(), 2);
    form.reset();
}

void tst_Grama::isTheSameAsAWalkThroughTheForm()
{
    TestLog log;
    for (quint32 seed = 1; seed <= 25; ++seed) {
        QRandomGenerator random(seed);
        Grama form;
        if (random.bounded(2))
            form.show();
        std::vector<Item> items;
        std::vector<Item> tops;
        const FormRows rows(form);
        for (int step = 0; step < 80; ++step) {
            const int what = random.bounded(10);
            if (what < 7 || items.empty()) {
                const bool isTop = items.empty() || random.bounded(4) == 0;
                const int size = int(items.size());
                const Item parent =
                    isTop ? nullptr : items[std::size_t(random.bounded(qMax(0, size - 9), size))];
                items.push_back(add(form, QString::number(step), parent));
                if (isTop)
                    tops.push_back(items.back());
            } else if (what < 9) {
                buttonOf(items[std::size_t(random.bounded(int(items.size())))])->click();
            } else {
                form.filterByText(random.bounded(2) ? QString::number(random.bounded(80))
                                                    : QString());
            }
            QVERIFY2(rows.linesAreRight(), qPrintable(QString::number(seed)));
        }
        QStringList expected;
        for (const Item& top : tops)
            appendExpected(top, &expected);
        QCOMPARE(rows.all(), expected);
        QVERIFY(rows.fieldsFollowLabels());
    }
}

QTEST_MAIN(tst_Grama)
#include "tst_grama.moc"
