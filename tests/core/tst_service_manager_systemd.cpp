#include "core/service_manager_systemd.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

#include <unistd.h>

using namespace trovek::service;

namespace {

/** A folder with a systemctl that writes down how it was called, and answers by its script. */
class FakeSystem
{
public:
    explicit FakeSystem(const QByteArray& script)
    {
        QFile file(program());
        const bool isOpen = file.open(QIODevice::WriteOnly);
        Q_ASSERT(isOpen);
        file.write("#!/bin/sh\necho \"$*\" >>'" + calls().toUtf8() + "'\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    SystemdServiceManager manager(int answerWaitMs = 60000, int commandWaitMs = 60000) const
    {
        return SystemdServiceManager(program(), m_folder.path(), answerWaitMs, commandWaitMs);
    }

    QStringList called() const
    {
        QFile file(calls());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    QString program() const { return path("systemctl"); }

private:
    QString calls() const { return path("calls"); }

    QTemporaryDir m_folder;
};

const QByteArray kLoaded = "case $2 in --property=LoadState) echo loaded;; *) echo active;; esac\n";

QString unit()
{
    return QStringLiteral("trovekd@%1.service").arg(getuid());
}

} // namespace

class tst_ServiceManagerSystemd : public QObject
{
    Q_OBJECT

private slots:
    void namesTheUsersUnit();
    void refusesWithoutSystemd();
    void refusesWithoutItsCommand();
    void asksThenRuns_data();
    void asksThenRuns();
    void tellsThatThereIsNoUnit_data();
    void tellsThatThereIsNoUnit();
    void tellsWhatTheCommandComplainsOf();
    void tellsThatTheCommandCannotRun();
    void tellsThatTheCommandWasKilled();
    void givesUpOnACommandThatHangs();
    void leavesAnActionThatTakesLongToItself();
};

void tst_ServiceManagerSystemd::namesTheUsersUnit()
{
    QCOMPARE(systemdUnit(), unit());
}

void tst_ServiceManagerSystemd::refusesWithoutSystemd()
{
    const FakeSystem system(kLoaded);
    SystemdServiceManager manager(system.program(), system.path("missing"));
    const auto error = manager.connect();
    QVERIFY(error);
    QCOMPARE(error->code, static_cast<unsigned long>(EHOSTDOWN));
    QVERIFY(!error->text.empty());
    QVERIFY(system.called().isEmpty());
}

void tst_ServiceManagerSystemd::refusesWithoutItsCommand()
{
    const FakeSystem system(kLoaded);
    SystemdServiceManager manager(system.path("missing"), QDir::tempPath());
    const auto error = manager.connect();
    QVERIFY(error);
    QCOMPARE(error->code, static_cast<unsigned long>(ENOENT));
    QVERIFY(!error->text.empty());
}

void tst_ServiceManagerSystemd::asksThenRuns_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<QString>("verb");
    QTest::newRow("start") << 0 << QStringLiteral("start ");
    QTest::newRow("stop") << 1 << QStringLiteral("stop ");
    QTest::newRow("restart") << 2 << QStringLiteral("restart ");
}

void tst_ServiceManagerSystemd::asksThenRuns()
{
    QFETCH(int, action);
    QFETCH(QString, verb);
    const FakeSystem system(kLoaded);
    SystemdServiceManager manager = system.manager();
    QCOMPARE(runAction(manager, static_cast<Action>(action)), std::string());
    QCOMPARE(system.called(),
             QStringList({QStringLiteral("show --property=LoadState --value ") + unit(),
                          QStringLiteral("show --property=ActiveState --value ") + unit(),
                          verb + unit()}));
}

void tst_ServiceManagerSystemd::tellsThatThereIsNoUnit_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("not installed") << QByteArray("not-found");
    QTest::newRow("masked") << QByteArray("masked");
    QTest::newRow("nothing said") << QByteArray();
}

void tst_ServiceManagerSystemd::tellsThatThereIsNoUnit()
{
    QFETCH(QByteArray, state);
    const FakeSystem system("echo " + state + "\n");
    SystemdServiceManager manager = system.manager();
    QCOMPARE(QString::fromStdString(runAction(manager, Action::Start)),
             QStringLiteral("Error connecting to background service. Code: %1 Message: Unit %2: %3")
                 .arg(ENOENT)
                 .arg(unit(), QString::fromUtf8(state)));
    QCOMPARE(system.called().size(), 1);
}

void tst_ServiceManagerSystemd::tellsWhatTheCommandComplainsOf()
{
    const FakeSystem system(kLoaded + "[ $2 != --property=ActiveState ] || "
                                      "{ echo 'Connection timed out' >&2; exit 4; }\n");
    SystemdServiceManager manager = system.manager();
    QCOMPARE(runAction(manager, Action::Start),
             std::string("Error querying service status: Connection timed out"));
    QCOMPARE(system.called().size(), 2);
}

void tst_ServiceManagerSystemd::tellsThatTheCommandCannotRun()
{
    const FakeSystem system(kLoaded);
    QVERIFY(QFile::remove(system.program()));
    SystemdServiceManager manager = system.manager();
    const auto error = manager.openService();
    QVERIFY(error);
    QCOMPARE(error->code, static_cast<unsigned long>(ENOEXEC));
    QVERIFY(!error->text.empty());
}

void tst_ServiceManagerSystemd::tellsThatTheCommandWasKilled()
{
    const FakeSystem system("echo loaded\nkill -9 $$\n");
    SystemdServiceManager manager = system.manager();
    const auto error = manager.openService();
    QVERIFY(error);
    QCOMPARE(error->code, static_cast<unsigned long>(EINTR));
}

void tst_ServiceManagerSystemd::givesUpOnACommandThatHangs()
{
    const FakeSystem system("exec sleep 1000\n");
    SystemdServiceManager manager = system.manager(50);
    const auto error = manager.openService();
    QVERIFY(error);
    QCOMPARE(error->code, static_cast<unsigned long>(ETIMEDOUT));
}

void tst_ServiceManagerSystemd::leavesAnActionThatTakesLongToItself()
{
    // It ends when the test lets it, long after the action has returned.
    const FakeSystem system(kLoaded + "[ $1 = show ] || { while [ ! -e \"${0%/*}/go\" ]; do "
                                      "sleep 0.01; done; : >\"${0%/*}/done\"; }\n");
    SystemdServiceManager manager = system.manager(60000, 50);
    QCOMPARE(runAction(manager, Action::Start), std::string());
    QVERIFY(!QFile::exists(system.path("done")));
    QFile go(system.path("go"));
    QVERIFY(go.open(QIODevice::WriteOnly));
    QTRY_VERIFY(QFile::exists(system.path("done")));
}

QTEST_GUILESS_MAIN(tst_ServiceManagerSystemd)
#include "tst_service_manager_systemd.moc"
