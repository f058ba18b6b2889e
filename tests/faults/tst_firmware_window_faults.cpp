#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The window for firmware while something is wrong with the service or the machine. */
class tst_FirmwareWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_FirmwareWindowFaults()
        : FaultTable(firmwareOperations())
    {}
};

QTEST_MAIN(tst_FirmwareWindowFaults)
#include "tst_firmware_window_faults.moc"
