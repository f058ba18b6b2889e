#include "fault_table.h"

#include <QTest>

using namespace trovek;

namespace {

std::vector<WindowOperation> operations()
{
    std::vector<WindowOperation> all = controlPanelOperations();
    for (const WindowOperation& operation : directControlOperations())
        all.push_back(operation);
    return all;
}

} // namespace

/** The windows for a machine while something is wrong with the service or the machine. */
class tst_MachineWindowFaults : public QObject
{
    Q_OBJECT

private slots:
    void staysUsable_data() { m_table.addRows(); }
    void staysUsable() { m_table.runRow(); }

private:
    FaultTable m_table{operations()};
};

QTEST_MAIN(tst_MachineWindowFaults)
#include "tst_machine_window_faults.moc"
