#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The make dialog for G-code while something is wrong with the service or the machine. */
class tst_MakeGCodeWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_MakeGCodeWindowFaults()
        : FaultTable(makeGCodeOperations())
    {}
};

QTEST_MAIN(tst_MakeGCodeWindowFaults)
#include "tst_make_gcode_window_faults.moc"
