#include "form_rows.h"
#include "support/test_log.h"

#include <trovek-ui/grama.h>

#include <QHBoxLayout>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QTest>

using namespace trovek;

namespace {

using Item = std::shared_ptr<GramaItem>;

Item add(Grama& form, const QString& name, const QStringList& strings, const Item& parent = nullptr)
{
    const Item item = form.addRow(new QLabel(name), new QLineEdit, parent);
    item->setSearchStrings(strings);
    return item;
}

Item add(Grama& form, const char* name, const char* strings, const Item& parent = nullptr)
{
    const QString joined = QString::fromUtf8(strings);
    return add(form, QString::fromUtf8(name),
               joined.isEmpty() ? QStringList() : joined.split(QLatin1Char('|')), parent);
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/** Counts the widgets of a form that are shown or hidden. */
class ChangeCounter : public QObject
{
public:
    explicit ChangeCounter(const Grama& form)
    {
        for (QWidget* widget : form.widget()->findChildren<QWidget*>())
            widget->installEventFilter(this);
        form.widget()->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        if (type == QEvent::ShowToParent || type == QEvent::HideToParent || type == QEvent::Show ||
            type == QEvent::Hide)
            ++count;
        return false;
    }
};

/** The rule in plain words, for comparison: recursive, with lists of strings. */
bool plainFilter(const GramaItem& item, const QStringList& searched, QStringList inherited,
                 bool markedOnly, QSet<const GramaItem*>* shown)
{
    inherited = item.searchStrings() + inherited;
    bool matches = true;
    for (const QString& word : searched) {
        bool found = false;
        for (const QString& text : qAsConst(inherited))
            found = found || text.toLower().contains(word.toLower());
        matches = matches && found;
    }
    bool result = matches && (!markedOnly || item.isMarked());
    for (const Item& child : item.children()) {
        const bool childShown =
            plainFilter(*child, matches ? QStringList() : searched, inherited, markedOnly, shown);
        result = result || childShown;
    }
    if (result)
        shown->insert(&item);
    return result;
}

} // namespace

class tst_GramaFilter : public QObject
{
    Q_OBJECT

private slots:
    void showsWhatMatches_data();
    void showsWhatMatches();
    void ignoresWhatIsCollapsed();
    void showsNothingWithoutSearchStrings();
    void touchesOnlyRowsThatChange();
    void leavesOnlyMarkedRows();
    void combinesMarksWithTheText();
    void keepsARowWhoseMarkChanges();
    void filtersAsOneTypes();
    void outlivedByItsFilterBar();
    void isTheSameAsThePlainRule();
};

void tst_GramaFilter::showsWhatMatches_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shown");

    const QStringList all = words("Heat Extruder Left -- Right -- Platform -- Axes X --");
    const auto row = [](const char* name, const char* text, const QStringList& shown) {
        QTest::newRow(name) << QString::fromUtf8(text) << shown;
    };
    row("nothing typed", "", all);
    row("blanks only", " \t ", all);
    row("a top row's name, with all below it", "heat",
        words("Heat Extruder Left -- Right -- Platform --"));
    row("whatever the case", "HEAT", words("Heat Extruder Left -- Right -- Platform --"));
    row("a group, with its ancestors and descendants", "extruder",
        words("Heat Extruder Left -- Right --"));
    row("a leaf, with its ancestors", "left", words("Heat Extruder Left --"));
    row("a tool tip", "celsius", words("Heat -- Platform --"));
    row("two words, name and tool tip", "temp platform", words("Heat -- Platform --"));
    row("two words, own and inherited", "right heat", words("Heat Extruder -- Right --"));
    row("words in any order, many blanks", "  heat \t right ", words("Heat Extruder -- Right --"));
    row("a word that is missing among some that are not", "heat wrong", QStringList());
    row("no row", "zzz", QStringList());
    row("not across two strings", "heatextruder", QStringList());
    row("the second top row", "axes", words("Axes X --"));
    row("a pattern is plain text", ".*", QStringList());
}

void tst_GramaFilter::showsWhatMatches()
{
    TestLog log;
    QFETCH(QString, text);
    QFETCH(QStringList, shown);
    for (const bool isShown : {false, true}) {
        Grama form;
        if (isShown)
            form.show();
        const Item heat = add(form, "Heat", "heat");
        add(form, "Platform", "platform|The temperature in degrees Celsius", heat);
        const Item extruder = add(form, "Extruder", "extruder", heat);
        add(form, "Right", "right", extruder);
        add(form, "Left", "left", extruder);
        const Item axes = add(form, "Axes", "axes");
        add(form, "X", "x_axis", axes);

        form.filterByText(QStringLiteral("left"));
        form.filterByText(text);

        QCOMPARE(FormRows(form).shown(), shown);
        QVERIFY(FormRows(form).fieldsFollowLabels());
        QVERIFY(FormRows(form).linesAreRight());
    }
}

void tst_GramaFilter::ignoresWhatIsCollapsed()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P", "p");
    add(form, "A", "a", parent);
    parent->leftContainer()->button()->click();
    QCOMPARE(FormRows(form).shown(), words("P --"));

    form.filterByText(QStringLiteral("a"));

    QCOMPARE(FormRows(form).shown(), words("P A --"));
    QVERIFY(!parent->leftContainer()->button()->isChecked());
}

void tst_GramaFilter::showsNothingWithoutSearchStrings()
{
    TestLog log;
    Grama form;
    add(form, "Bare", "");
    const Item group = add(form, "Group", "");
    add(form, "Bare child", "", group);
    const Item named = add(form, "Named", "named");
    add(form, "Inherits", "", named);

    form.filterByText(QString());

    QCOMPARE(FormRows(form).shown(), words("Named Inherits --"));
}

void tst_GramaFilter::touchesOnlyRowsThatChange()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P", "p");
    add(form, "Apple", "apple", parent);
    add(form, "Apricot", "apricot", parent);
    add(form, "Banana", "banana", parent);
    form.show();
    QCoreApplication::processEvents();
    ChangeCounter changes(form);

    form.filterByText(QStringLiteral("ap"));
    QVERIFY(changes.count > 0);

    changes.count = 0;
    form.filterByText(QStringLiteral("ap"));
    form.filterByText(QStringLiteral(" AP "));
    form.updateSeparatorVisibility();
    QCOMPARE(changes.count, 0);

    form.filterByText(QStringLiteral("app"));
    // Container, arrow, label, field and line of the one row that goes.
    QVERIFY2(changes.count <= 2 * 5, qPrintable(QString::number(changes.count)));
}

void tst_GramaFilter::leavesOnlyMarkedRows()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P", "p");
    const Item first = add(form, "A", "a", parent);
    add(form, "B", "b", parent);
    add(form, "Q", "q");
    first->setMarked(true);

    form.setShowMarkedOnly(true);
    QCOMPARE(FormRows(form).shown(), words("P -- A --"));

    form.setShowMarkedOnly(false);
    QCOMPARE(FormRows(form).shown(), words("P B -- A -- Q --"));
}

void tst_GramaFilter::combinesMarksWithTheText()
{
    TestLog log;
    Grama form;
    const Item parent = add(form, "P", "p");
    const Item first = add(form, "A", "a", parent);
    const Item second = add(form, "B", "b", parent);
    first->setMarked(true);
    second->setMarked(true);
    add(form, "A2", "a", parent);

    form.setShowMarkedOnly(true);
    form.filterByText(QStringLiteral("a"));
    QCOMPARE(FormRows(form).shown(), words("P -- A --"));

    form.filterByText(QStringLiteral("p"));
    QCOMPARE(FormRows(form).shown(), words("P -- B -- A --"));

    form.setShowMarkedOnly(false);
    QCOMPARE(FormRows(form).shown(), words("P A2 -- B -- A --"));
}

void tst_GramaFilter::keepsARowWhoseMarkChanges()
{
    TestLog log;
    Grama form;
    const Item item = add(form, "A", "a");
    item->setMarked(true);
    form.setShowMarkedOnly(true);

    item->setMarked(false);
    QCOMPARE(FormRows(form).shown(), words("A --"));

    form.setShowMarkedOnly(true);
    QCOMPARE(FormRows(form).shown(), QStringList());
}

void tst_GramaFilter::filtersAsOneTypes()
{
    TestLog log;
    Grama form;
    add(form, "Apple", "apple");
    add(form, "Banana", "banana");
    QWidget window;
    window.setLayout(form.createFilterBar());

    auto* const bar = qobject_cast<QHBoxLayout*>(window.layout());
    QCOMPARE(bar->count(), 3);
    QVERIFY(bar->itemAt(0)->spacerItem());
    QCOMPARE(bar->stretch(0), 1);
    auto* const label = qobject_cast<QLabel*>(bar->itemAt(1)->widget());
    auto* const edit = qobject_cast<QLineEdit*>(bar->itemAt(2)->widget());
    QCOMPARE(label->text(), QStringLiteral("&Filter:"));
    QCOMPARE(label->buddy(), edit);
    QCOMPARE(bar->itemAt(1)->alignment(), Qt::AlignRight);
    QCOMPARE(bar->itemAt(2)->alignment(), Qt::AlignRight);

    QTest::keyClicks(edit, QStringLiteral("app"));
    QCOMPARE(FormRows(form).shown(), words("Apple --"));
    // Only what a user types filters.
    edit->setText(QStringLiteral("banana"));
    QCOMPARE(FormRows(form).shown(), words("Apple --"));
    edit->clear();
    QTest::keyClicks(edit, QStringLiteral("n"));
    QCOMPARE(FormRows(form).shown(), words("Banana --"));
}

void tst_GramaFilter::outlivedByItsFilterBar()
{
    TestLog log;
    auto form = std::make_unique<Grama>();
    QWidget window;
    window.setLayout(form->createFilterBar());
    auto* const edit = window.findChild<QLineEdit*>(QStringLiteral("filterEdit"));

    form.reset();
    QTest::keyClicks(edit, QStringLiteral("a"));

    QCOMPARE(edit->text(), QStringLiteral("a"));
}

void tst_GramaFilter::isTheSameAsThePlainRule()
{
    TestLog log;
    const QStringList vocabulary = words("axis home Offset extruder TEMP fan speed X y z");
    for (quint32 seed = 1; seed <= 40; ++seed) {
        QRandomGenerator random(seed);
        const auto someWords = [&](int most) {
            QStringList some;
            for (int i = random.bounded(most + 1); i > 0; --i)
                some.append(vocabulary[random.bounded(vocabulary.size())]);
            return some;
        };
        Grama form;
        std::vector<Item> items;
        for (int i = 0; i < 40; ++i) {
            const int parent = random.bounded(-3, qMax(1, i));
            items.push_back(add(form, QString::number(i), someWords(2),
                                parent < 0 || i == 0 ? nullptr : items[std::size_t(parent)]));
            items.back()->setMarked(random.bounded(3) == 0);
        }
        const bool markedOnly = random.bounded(2) == 0;
        const QString text = someWords(3).join(QLatin1Char(' '));

        form.setShowMarkedOnly(markedOnly);
        form.filterByText(text);

        QSet<const GramaItem*> expected;
        plainFilter(*items[0]->parentItem(), text.split(QLatin1Char(' ')), {}, markedOnly,
                    &expected);
        for (const Item& item : items)
            QCOMPARE(!item->leftContainer()->isHidden(), expected.contains(item.get()));
        QVERIFY(FormRows(form).fieldsFollowLabels());
        QVERIFY(FormRows(form).linesAreRight());
    }
}

QTEST_MAIN(tst_GramaFilter)
#include "tst_grama_filter.moc"
