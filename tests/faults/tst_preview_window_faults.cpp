#include "fault_table.h"

#include <QTest>

using namespace trovek;

/** The preview of the make dialog while something is wrong with the service or the machine. */
class tst_PreviewWindowFaults : public FaultTable
{
    Q_OBJECT

public:
    tst_PreviewWindowFaults()
        : FaultTable(previewOperations())
    {}
};

QTEST_MAIN(tst_PreviewWindowFaults)
#include "tst_preview_window_faults.moc"
