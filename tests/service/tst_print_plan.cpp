#include <service/gcode/machine_definition.h>
#include <service/print_plan.h>

#include <QTest>

#include <cmath>

using namespace trovek;
using namespace trovek::service;

class tst_PrintPlan : public QObject
{
    Q_OBJECT

private slots:
    void turnsCommandsIntoSteps();
    void gathersShortMoves();
    void keepsExtrudingApartFromTravel();
    void followsShiftedCounters();
    void refuses_data();
    void refuses();
    void stopsWhenAsked();
    void addsUpTheTime();
};

namespace {

MachineDefinition definition()
{
    return defaultMachineDefinitions().archetypes.at(Printer::Fabrino2X - 1);
}

PrintPlan planOf(const std::string& text)
{
    return planPrint(definition(), {{std::string(), byteSourceOf(text)}},
                     [](std::uint64_t) { return true; });
}

std::vector<int> kinds(const PrintPlan& plan)
{
    std::vector<int> list;
    for (const PlanStep& step : plan.motion.steps)
        list.push_back(step.kind);
    return list;
}

} // namespace

void tst_PrintPlan::turnsCommandsIntoSteps()
{
    const PrintPlan plan = planOf("G28\nM140 S60\nM190 S60\nM104 T1 S200\nM109 T0 S210\nG4 P1500\n"
                                  "G90\nG1 X10 Y10 Z5 F6000\n");

    QCOMPARE(kinds(plan),
             (std::vector<int>{PlanStep::Home, PlanStep::SetPlatformTarget,
                               PlanStep::SetPlatformTarget, PlanStep::WaitForPlatform,
                               PlanStep::SetToolTarget, PlanStep::SetToolTarget,
                               PlanStep::WaitForTool, PlanStep::Dwell, PlanStep::Move}));
    const std::vector<PlanStep>& steps = plan.motion.steps;
    QCOMPARE(int(steps[0].axes), 7);
    QCOMPARE(steps[1].celsius, 60.0F);
    QCOMPARE(int(steps[4].tool), 1);
    QCOMPARE(steps[4].celsius, 200.0F);
    QCOMPARE(int(steps[6].tool), 0);
    QCOMPARE(steps[7].seconds, 1.5F);
    QCOMPARE(steps[8].position[2], 5.0F);
    QVERIFY(!steps[8].extrudes);
}

void tst_PrintPlan::gathersShortMoves()
{
    std::string text = "M104 S210\nG28\nG90\nG92 E0\nG1 X100 Y100 F6000\n";
    for (int i = 1; i <= 1000; ++i) {
        text +=
            "G1 X" + std::to_string(100 + 0.05 * i) + " E" + std::to_string(0.01 * i) + " F1200\n";
    }

    const PrintPlan plan = planOf(text);

    // A thousand moves of 0.05 mm at 20 mm a second are 2.5 seconds.
    QVERIFY2(plan.motion.steps.size() < 20, qPrintable(QString::number(plan.motion.steps.size())));
    QVERIFY(plan.motion.steps.back().extrudes);
    QVERIFY(std::abs(plan.motion.steps.back().position[0] - 150.0F) < 0.01F);
}

void tst_PrintPlan::keepsExtrudingApartFromTravel()
{
    const PrintPlan plan = planOf("M104 S210\nG90\nG92 X100 Y100 Z0 E0\nG1 X101 F6000\n"
                                  "G1 X102 E1 F6000\nG1 X103 F6000\n");

    QCOMPARE(kinds(plan), (std::vector<int>{PlanStep::SetToolTarget, PlanStep::Move, PlanStep::Move,
                                            PlanStep::Move}));
    QVERIFY(!plan.motion.steps[1].extrudes);
    QVERIFY(plan.motion.steps[2].extrudes);
    QVERIFY(!plan.motion.steps[3].extrudes);
}

void tst_PrintPlan::followsShiftedCounters()
{
    // Home is at the maximum of X and Y; a file that counts from there still ends where it should.
    const PrintPlan plan = planOf("G28\nG92 X0 Y0\nG90\nG1 X-45 Y-50 Z10 F6000\n");

    const PlanStep& last = plan.motion.steps.back();
    QCOMPARE(last.position[0], 200.0F);
    QCOMPARE(last.position[1], 100.0F);
    QCOMPARE(last.position[2], 10.0F);
}

void tst_PrintPlan::refuses_data()
{
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("comments only") << QByteArray("; nothing\n\n; here\n");
    QTest::newRow("another kind of file") << QByteArray("solid model\nfacet normal\n");
    QTest::newRow("a cold push") << QByteArray("G92 E0\nG1 X1 E5 F600\n");
    QTest::newRow("too hot") << QByteArray("M104 S500\n");
    QTest::newRow("too far") << QByteArray("G28\nG1 X1000 F600\n");
}

void tst_PrintPlan::refuses()
{
    QFETCH(QByteArray, text);

    QVERIFY_EXCEPTION_THROWN(planOf(text.toStdString()), std::runtime_error);
}

void tst_PrintPlan::stopsWhenAsked()
{
    std::string text = "G90\n";
    for (int i = 0; i < 20000; ++i)
        text += i % 2 == 0 ? "G1 X1 F6000\n" : "G1 X2 F6000\n";
    int asked = 0;

    QVERIFY_EXCEPTION_THROWN(planPrint(definition(), {{std::string(), byteSourceOf(text)}},
                                       [&](std::uint64_t) { return ++asked < 2; }),
                             GCodeCanceled);

    QCOMPARE(asked, 2);
}

void tst_PrintPlan::addsUpTheTime()
{
    const PrintPlan plan = planOf("G90\nG92 X0 Y0 Z0\nG1 X100 F6000\nG4 S2\nG1 X0 F3000\n");

    QVERIFY2(std::abs(plan.motion.seconds - 5.0) < 0.01,
             qPrintable(QString::number(plan.motion.seconds)));
}

QTEST_GUILESS_MAIN(tst_PrintPlan)
#include "tst_print_plan.moc"
