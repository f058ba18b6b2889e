#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The backups of onboard preferences while something is wrong with the service or the machine. */
class tst_BackupsWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_BackupsWindowFaults()
        : FaultTable(backupOperations())
    {}
};

QTEST_MAIN(tst_BackupsWindowFaults)
#include "tst_backups_window_faults.moc"
