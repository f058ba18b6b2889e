#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The make dialog with a profile of the user's own while something is wrong with the service or
 * the machine. */
class tst_ProfileCheckWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_ProfileCheckWindowFaults()
        : FaultTable(profileCheckOperations())
    {}
};

QTEST_MAIN(tst_ProfileCheckWindowFaults)
#include "tst_profile_check_window_faults.moc"
