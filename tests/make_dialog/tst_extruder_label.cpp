#include "support/test_log.h"

#include <trovek-ui/extruder_label.h>
#include <trovek/printer.h>

#include <QLabel>
#include <QStackedWidget>
#include <QTest>
#include <QVBoxLayout>

using namespace trovek;

namespace {

using Extruder = SlicerConfiguration::Extruder;

/** How many extruders the machine has; there is no machine. */
constexpr int kNoMachine = -1;

struct Shown
{
    explicit Shown(Extruder extruder)
        : label(extruder)
    {}

    void updateFor(int extruders)
    {
        if (extruders == kNoMachine)
            return label.update(nullptr);
        Printer::Data data;
        data.numberOfExtruders = extruders;
        const Printer printer(data);
        label.update(&printer);
    }

    int page() const { return label.findChild<QStackedWidget*>()->currentIndex(); }
    QString text(const char* name) const
    {
        return label.findChild<QLabel*>(QString::fromLatin1(name))->text();
    }
    bool warns() const
    {
        return label.findChild<QLabel*>(QStringLiteral("warning"))->isVisibleTo(&label);
    }

    ExtruderLabel label;
};

} // namespace

class tst_ExtruderLabel : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyAtFirst();
    void tellsTheExtruder_data();
    void tellsTheExtruder();
    void followsTheMachine();
    void logsAnErrorOnce();
    void takesNoRoomWhenEmpty();
};

void tst_ExtruderLabel::isEmptyAtFirst()
{
    TestLog log;
    const Shown shown(SlicerConfiguration::Left);

    QCOMPARE(shown.page(), 0);
    QVERIFY(!shown.label.isError());
    QVERIFY(shown.label.toolTip().isEmpty());
}

void tst_ExtruderLabel::tellsTheExtruder_data()
{
    QTest::addColumn<int>("extruders");
    QTest::addColumn<int>("file");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<bool>("error");

    const QString invalid = QStringLiteral("Invalid machine");
    const QString unexpected = QStringLiteral("Unexpected error");
    QTest::newRow("no machine, left") << kNoMachine << 0 << invalid << unexpected << true;
    QTest::newRow("no machine, right") << kNoMachine << 1 << invalid << unexpected << true;
    QTest::newRow("no machine, both") << kNoMachine << 2 << invalid << unexpected << true;
    QTest::newRow("single, left") << 1 << 0 << QStringLiteral("Left")
                                  << QStringLiteral(
                                         "Single-extruder bots have only a right extruder")
                                  << true;
    QTest::newRow("single, right") << 1 << 1 << QString() << QString() << false;
    QTest::newRow("single, both")
        << 1 << 2 << QStringLiteral("Dual")
        << QStringLiteral("A dual-extruder file is selected for a single-extruder bot") << true;
    QTest::newRow("dual, left") << 2 << 0 << QStringLiteral("Left")
                                << QStringLiteral("The file will be printed with the left extruder")
                                << false;
    QTest::newRow("dual, right") << 2 << 1 << QStringLiteral("Right")
                                 << QStringLiteral(
                                        "The file will be printed with the right extruder")
                                 << false;
    QTest::newRow("dual, both") << 2 << 2 << QStringLiteral("Dual")
                                << QStringLiteral("The file will be printed with both extruders")
                                << false;
    QTest::newRow("single, no such extruder")
        << 1 << 3 << QStringLiteral("Invalid extruder") << unexpected << true;
}

void tst_ExtruderLabel::tellsTheExtruder()
{
    QFETCH(int, extruders);
    QFETCH(int, file);
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    QFETCH(bool, error);
    TestLog log;
    Shown shown(static_cast<Extruder>(file));

    shown.updateFor(extruders);

    QCOMPARE(shown.page(), text.isEmpty() ? 0 : 1);
    QCOMPARE(shown.text("name"), QStringLiteral("Extruder: "));
    QCOMPARE(shown.text("value"), text);
    QCOMPARE(shown.label.toolTip(), toolTip);
    QCOMPARE(shown.label.isError(), error);
    QCOMPARE(shown.warns(), error);
    QCOMPARE(log.sink().entries().size(), std::size_t(error));
    if (error) {
        QCOMPARE(log.sink().entries().at(0).file, std::string("src\\make_dialog\\extruder_label"));
        QVERIFY(log.contains(toolTip.toStdString()));
    }
}

void tst_ExtruderLabel::followsTheMachine()
{
    TestLog log;
    Shown shown(SlicerConfiguration::Left);

    shown.updateFor(1);
    QVERIFY(shown.label.isError());
    shown.updateFor(2);
    QVERIFY(!shown.label.isError());
    QVERIFY(!shown.warns());
    QCOMPARE(shown.label.toolTip(),
             QStringLiteral("The file will be printed with the left extruder"));

    Shown right(SlicerConfiguration::Right);
    right.updateFor(2);
    QCOMPARE(right.page(), 1);
    right.updateFor(1);
    QCOMPARE(right.page(), 0);
    QVERIFY(right.label.toolTip().isEmpty());
}

void tst_ExtruderLabel::logsAnErrorOnce()
{
    TestLog log;
    Shown shown(SlicerConfiguration::Both);

    shown.updateFor(1);
    shown.updateFor(1);
    QCOMPARE(log.messages().size(), std::size_t(1));
    shown.updateFor(kNoMachine);
    QCOMPARE(log.messages().size(), std::size_t(2));
    shown.updateFor(2);
    shown.updateFor(1);
    QCOMPARE(log.messages().size(), std::size_t(3));
}

void tst_ExtruderLabel::takesNoRoomWhenEmpty()
{
    TestLog log;
    Shown shown(SlicerConfiguration::Right);

    shown.updateFor(1);
    QCOMPARE(shown.label.sizeHint().height(), 0);
    shown.updateFor(2);
    QVERIFY(shown.label.sizeHint().height() >= shown.label.fontMetrics().height());
}

QTEST_MAIN(tst_ExtruderLabel)
#include "tst_extruder_label.moc"
