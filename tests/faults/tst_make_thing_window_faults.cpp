#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The make dialog for models while something is wrong with the service or the machine. */
class tst_MakeThingWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_MakeThingWindowFaults()
        : FaultTable(makeThingOperations())
    {}
};

QTEST_MAIN(tst_MakeThingWindowFaults)
#include "tst_make_thing_window_faults.moc"
