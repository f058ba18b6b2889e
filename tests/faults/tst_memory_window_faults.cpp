#include "fault_table.h"

#include <QTest>

using namespace trovek;

namespace {

std::vector<WindowOperation> operations()
{
    std::vector<WindowOperation> all = onboardOperations();
    for (const WindowOperation& operation : firmwareOperations())
        all.push_back(operation);
    return all;
}

} // namespace

/** The windows for what a machine keeps, preferences and firmware, while something is wrong with
 * the service or the machine. */
class tst_MemoryWindowFaults : public QObject
{
    Q_OBJECT

private slots:
    void staysUsable_data() { m_table.addRows(); }
    void staysUsable() { m_table.runRow(); }

private:
    FaultTable m_table{operations()};
};

QTEST_MAIN(tst_MemoryWindowFaults)
#include "tst_memory_window_faults.moc"
