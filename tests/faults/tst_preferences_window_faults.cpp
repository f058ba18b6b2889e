#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The onboard preferences while something is wrong with the service or the machine. */
class tst_PreferencesWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_PreferencesWindowFaults()
        : FaultTable(onboardOperations())
    {}
};

QTEST_MAIN(tst_PreferencesWindowFaults)
#include "tst_preferences_window_faults.moc"
