#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The control panel while something is wrong with the service or the machine. */
class tst_ControlPanelWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_ControlPanelWindowFaults()
        : FaultTable(controlPanelOperations())
    {}
};

QTEST_MAIN(tst_ControlPanelWindowFaults)
#include "tst_control_panel_window_faults.moc"
