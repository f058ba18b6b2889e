#include "fault_table.h"

#include <QTest>

using namespace trovek;

namespace {

std::vector<WindowOperation> operations()
{
    std::vector<WindowOperation> all = makeOperations();
    for (const WindowOperation& operation : previewOperations())
        all.push_back(operation);
    return all;
}

} // namespace

/** The make dialogs while something is wrong with the service or the machine. */
class tst_MakeWindowFaults : public QObject
{
    Q_OBJECT

private slots:
    void staysUsable_data() { m_table.addRows(); }
    void staysUsable() { m_table.runRow(); }

private:
    FaultTable m_table{operations()};
};

QTEST_MAIN(tst_MakeWindowFaults)
#include "tst_make_window_faults.moc"
