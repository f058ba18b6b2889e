#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The direct controls while something is wrong with the service or the machine. */
class tst_DirectControlsWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_DirectControlsWindowFaults()
        : FaultTable(directControlOperations())
    {}
};

QTEST_MAIN(tst_DirectControlsWindowFaults)
#include "tst_direct_controls_window_faults.moc"
