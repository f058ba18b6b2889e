#include "support/test_log.h"

#include "apps/ostrand/export_watch.h"
#include "apps/ostrand/host.h"
#include "apps/ostrand/job_list_model.h"
#include "apps/ostrand/main_window.h"
#include "apps/ostrand/notice_bar.h"
#include "apps/ostrand/options.h"
#include "apps/ostrand/robot.h"
#include "apps/ostrand/service_link.h"

#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekqt.h>

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace ostrand;
using namespace trovek;

namespace {

constexpr int kSlow = 30000;

/** The real service in a process of its own. */
class Daemon
{
public:
    Daemon(const QTemporaryDir& folder, double timeScale)
        : m_arguments({QStringLiteral("--socket"), socketIn(folder), QStringLiteral("--state"),
                       folder.filePath(QStringLiteral("state")), QStringLiteral("--time-scale"),
                       QString::number(timeScale)})
    {
        QDir(folder.path()).mkpath(QStringLiteral("state"));
        start();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_arguments.at(1)), kSlow);
    }

    ~Daemon() { kill(); }

    static QString socketIn(const QTemporaryDir& folder)
    {
        return folder.filePath(QStringLiteral("service"));
    }

    void start()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(TROVEKD_PROGRAM), m_arguments);
        QVERIFY(m_process.waitForStarted());
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    const QStringList m_arguments;
    QProcess m_process;
};

/** A long straight-forward print; at normal speed it takes hours. */
QByteArray longGCode(int layers)
{
    QByteArray code = "G21\nG90\nM82\nM104 S210 T0\nM109 S210 T0\nG92 E0\n";
    double extruded = 0;
    for (int layer = 0; layer < layers; ++layer) {
        code += "G1 Z" + QByteArray::number(0.1 + 100.0 * layer / layers, 'f', 3) + " F600\n";
        for (const char* corner : {"X60 Y40", "X100 Y40", "X100 Y80", "X60 Y80"}) {
            extruded += 0.01;
            code += QByteArray("G1 ") + corner + " E" + QByteArray::number(extruded, 'f', 3) +
                    " F1200\n";
        }
    }
    return code;
}

/** Types a path into the save dialog that comes, and accepts; a message fails the test. */
struct SaveAs
{
    QTimer timer;

    explicit SaveAs(const QString& path = QString())
    {
        QObject::connect(&timer, &QTimer::timeout, [path] {
            if (auto* box = qobject_cast<MessageBox*>(QApplication::activeModalWidget())) {
                for (const QLabel* label : box->findChildren<QLabel*>())
                    qWarning() << label->text();
                box->reject();
                QFAIL("A message came");
            }
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog || path.isEmpty())
                return;
            auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Enter);
        });
        timer.start(20);
    }
};

} // namespace

/** The service killed under a host that is in the middle of a print and of exports. */
class tst_ServiceRestart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void theHostRecoversAndNamesTheLostExport();
};

void tst_ServiceRestart::theHostRecoversAndNamesTheLostExport()
{
    TestLog log;
    // What is under way when the service dies may fail in any call.
    log.allowErrors("");
    QTemporaryDir folder;
    QFile input(folder.filePath(QStringLiteral("part.gcode")));
    QVERIFY(input.open(QIODevice::WriteOnly));
    input.write(longGCode(100000));
    input.close();
    Daemon daemon(folder, 1);

    Options options;
    options.serviceAddress = QStringLiteral("local:") + Daemon::socketIn(folder);
    options.settingsFile = folder.filePath(QStringLiteral("host.ini"));
    Host host(options);
    MainWindow& window = host.window();
    window.show();
    host.link().connectNow();
    QTRY_VERIFY_WITH_TIMEOUT(machinesAreReady(host.facade()), kSlow);
    window.openFile(input.fileName());

    const SaveAs noMessages;
    window.make();
    QTest::mouseClick(window.makeDialog()->findChild<QPushButton*>(QStringLiteral("mainButton")),
                      Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(window.jobs().rowCount(), 1, kSlow);
    const int print = window.jobs().index(0, 0).data(JobListModel::IDRole).toInt();

    // The export of this much text takes seconds; the service dies in the middle of it.
    const QString destination = folder.filePath(QStringLiteral("part.x3g"));
    QTRY_VERIFY(!window.makeDialog());
    window.make();
    QTest::mouseClick(
        window.makeDialog()->findChild<QAbstractButton*>(QStringLiteral("exportRadio")),
        Qt::LeftButton);
    auto* exportButton = window.makeDialog()->findChild<QPushButton*>(QStringLiteral("mainButton"));
    QTRY_COMPARE(exportButton->text(), QStringLiteral("Export!"));
    {
        const SaveAs save(destination);
        QTest::mouseClick(exportButton, Qt::LeftButton);
    }
    QCOMPARE(ExportJobMover::instance(host.facade()).unfinishedExports(), QStringList(destination));

    daemon.kill();
    QTRY_COMPARE_WITH_TIMEOUT(host.link().state(), ServiceLink::Waiting, kSlow);
    QTRY_COMPARE(window.notice().heading(),
                 QStringLiteral("The connection to the background service is lost"));
    QVERIFY2(window.notice().text().contains(destination), qPrintable(window.notice().text()));
    QCOMPARE(window.jobs().conclusion(0), JobNotConcluded);

    daemon.start();
    QTRY_COMPARE_WITH_TIMEOUT(host.link().state(), ServiceLink::Connected, kSlow);
    QTRY_COMPARE_WITH_TIMEOUT(window.notice().heading(), QStringLiteral("Exports were lost"),
                              kSlow);
    QVERIFY(window.notice().isVisible());
    QVERIFY2(window.notice().text().endsWith(destination), qPrintable(window.notice().text()));
    QTRY_COMPARE(window.jobs().conclusion(0), JobFailed);

    // The window works as before: it prints again, with an ID that nothing had before.
    QTRY_VERIFY_WITH_TIMEOUT(machinesAreReady(host.facade()), kSlow);
    window.make();
    QTest::mouseClick(window.makeDialog()->findChild<QPushButton*>(QStringLiteral("mainButton")),
                      Qt::LeftButton);
    const auto isRunningAgain = [&] {
        const int last = window.jobs().rowCount() - 1;
        return window.jobs().conclusion(last) == JobNotConcluded &&
               window.jobs().index(last, 0).data(JobListModel::IDRole).toInt() > print;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isRunningAgain(), kSlow);
}

QTEST_MAIN(tst_ServiceRestart)
#include "tst_service_restart.moc"
