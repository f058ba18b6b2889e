#include "core/service_control.h"
#include "core/service_manager.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/service.h>

#include <QTest>

using namespace trovek;
using service::Action;
using service::SystemError;

namespace {

enum Step { Nothing, Connecting, Opening, Querying, Running };

/** Records what is asked of it, and refuses one step. */
class RecordedManager : public service::ServiceManager
{
public:
    explicit RecordedManager(Step refused, SystemError error = {})
        : m_refused(refused)
        , m_error(std::move(error))
    {}

    std::optional<SystemError> connect() override { return step(Connecting, "connect"); }
    std::optional<SystemError> openService() override { return step(Opening, "open"); }
    std::optional<SystemError> queryStatus() override { return step(Querying, "query"); }
    void run(Action action) override
    {
        steps.append(QStringLiteral("run %1").arg(static_cast<int>(action)));
        if (m_refused == Running)
            throw std::runtime_error("no memory for a process");
    }

    QStringList steps;

private:
    std::optional<SystemError> step(Step which, const char* name)
    {
        steps.append(QLatin1String(name));
        if (which == m_refused)
            return m_error;
        return std::nullopt;
    }

    const Step m_refused;
    const SystemError m_error;
};

const QStringList kMessage{
    QStringLiteral("Windows service error"),
    QStringLiteral("An error occurred while starting or stopping the background service.")};

} // namespace

class tst_Service : public QObject
{
    Q_OBJECT

private slots:
    void numbersItsActions();
    void runsTheCommandAfterTheChecks_data();
    void runsTheCommandAfterTheChecks();
    void logsAndShowsWhatIsRefused_data();
    void logsAndShowsWhatIsRefused();
    void survivesACommandThatCannotRun();
    void isSupported();
    void hasAnIconWithThreePictures();
};

void tst_Service::numbersItsActions()
{
    QCOMPARE(static_cast<int>(Action::Start), 0);
    QCOMPARE(static_cast<int>(Action::Stop), 1);
    QCOMPARE(static_cast<int>(Action::Restart), 2);
    QCOMPARE(service::kCommandWaitMs, 10000);
}

void tst_Service::runsTheCommandAfterTheChecks_data()
{
    QTest::addColumn<int>("action");
    QTest::newRow("start") << 0;
    QTest::newRow("stop") << 1;
    QTest::newRow("restart") << 2;
}

void tst_Service::runsTheCommandAfterTheChecks()
{
    QFETCH(int, action);
    TestLog log;
    ModalDriver driver;
    RecordedManager manager(Nothing);
    service::control(manager, static_cast<Action>(action));
    QCOMPARE(manager.steps,
             QStringList({QStringLiteral("connect"), QStringLiteral("open"),
                          QStringLiteral("query"), QStringLiteral("run %1").arg(action)}));
    QVERIFY(log.messages().empty());
}

void tst_Service::logsAndShowsWhatIsRefused_data()
{
    QTest::addColumn<int>("refused");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("steps");
    const QString connect = QStringLiteral("connect");
    const QString open = QStringLiteral("open");
    const QString query = QStringLiteral("query");
    QTest::newRow("no manager")
        << int(Connecting)
        << QStringLiteral("Error connecting to Service Control Manager. Code: 1060 Message: Gone")
        << QStringList{connect};
    QTest::newRow("no service")
        << int(Opening)
        << QStringLiteral("Error connecting to background service. Code: 1060 Message: Gone")
        << QStringList{connect, open};
    QTest::newRow("no status") << int(Querying)
                               << QStringLiteral("Error querying service status: Gone")
                               << QStringList{connect, open, query};
}

void tst_Service::logsAndShowsWhatIsRefused()
{
    QFETCH(int, refused);
    QFETCH(QString, line);
    QFETCH(QStringList, steps);
    for (const Action action : {Action::Start, Action::Stop, Action::Restart}) {
        TestLog log;
        log.expectError(line);
        ModalDriver driver;
        driver.expectMessage(kMessage);
        RecordedManager manager(static_cast<Step>(refused), {1060, "Gone"});
        service::control(manager, action);
        QCOMPARE(manager.steps, steps);
        QCOMPARE(log.messages(0), std::vector<std::string>{line.toStdString()});
        QCOMPARE(log.sink().entries().front().file, std::string("src\\core\\service"));
    }
}

void tst_Service::survivesACommandThatCannotRun()
{
    TestLog log;
    log.expectError("no memory for a process");
    RecordedManager manager(Running);
    service::control(manager, Action::Start);
    QCOMPARE(manager.steps.last(), QStringLiteral("run 0"));
}

void tst_Service::isSupported()
{
    QVERIFY(service::actions_supported());
}

void tst_Service::hasAnIconWithThreePictures()
{
    const QIcon icon = service::errorIcon();
    const auto picture = [&icon](QIcon::Mode mode) {
        return icon.pixmap(64, 64, mode).toImage();
    };
    QVERIFY(!picture(QIcon::Normal).isNull());
    QVERIFY(picture(QIcon::Normal) != picture(QIcon::Active));
    QVERIFY(picture(QIcon::Normal) != picture(QIcon::Selected));
}

QTEST_MAIN(tst_Service)
#include "tst_service.moc"
