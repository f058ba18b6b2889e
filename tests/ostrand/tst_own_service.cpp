#include "support/test_log.h"

#include "apps/ostrand/own_service.h"
#include "apps/ostrand/robot.h"
#include "apps/ostrand/service_link.h"

#include <trovek-ui/trovekhandle.h>

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace ostrand;
using namespace trovek;

namespace {

std::unique_ptr<OwnService> serviceIn(const QTemporaryDir& folder)
{
    OwnService::Settings settings;
    settings.stateDir = folder.filePath(QStringLiteral("state"));
    return std::make_unique<OwnService>(settings);
}

} // namespace

class tst_OwnService : public QObject
{
    Q_OBJECT

private slots:
    void startsWhenItIsFirstNeeded();
    void restartsUnderTheSameAddress();
    void aSecondProgramUsesTheFirstOnesService();
    void saysWhyItCannotStart();
};

void tst_OwnService::startsWhenItIsFirstNeeded()
{
    TestLog log;
    QTemporaryDir folder;
    const auto service = serviceIn(folder);
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("state"))));
    TrovekQt facade;
    facade.connectToDaemon(service->address());
    QVERIFY(facade.isConnected());
    QVERIFY(service->canRestart());
    QCOMPARE(service->description(), QStringLiteral("the background service"));
    QVERIFY(service->address() == service->address());
}

void tst_OwnService::restartsUnderTheSameAddress()
{
    TestLog log;
    QTemporaryDir folder;
    // The handle opens the machines, before and after.
    QSettings settings(folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    trovek::ui::TrovekHandle handle(&settings);
    TrovekQt& facade = *handle;
    ServiceLink link(facade, serviceIn(folder), {10});
    link.connectNow();
    QTRY_VERIFY(machinesAreReady(facade));
    QSignalSpy connected(&facade, &TrovekQt::connected);
    link.restartService();
    QTRY_VERIFY(connected.count() > 0);
    QTRY_COMPARE(link.state(), ServiceLink::Connected);
    QTRY_VERIFY(machinesAreReady(facade));
}

void tst_OwnService::aSecondProgramUsesTheFirstOnesService()
{
    TestLog log;
    QTemporaryDir folder;
    TrovekQt facade;
    auto first = serviceIn(folder);
    const Address address = first->address();
    ServiceLink link(facade, serviceIn(folder), {10});
    link.connectNow();
    QCOMPARE(link.state(), ServiceLink::Connected);
    QVERIFY(!link.canRestartService());
    QCOMPARE(link.description(), QStringLiteral("the background service of another Ostrand"));

    // When the first one goes, the second starts its own.
    QSignalSpy connected(&facade, &TrovekQt::connected);
    first.reset();
    QTRY_COMPARE(connected.count(), 1);
    QVERIFY(link.canRestartService());
    QCOMPARE(link.description(), QStringLiteral("the background service"));
}

void tst_OwnService::saysWhyItCannotStart()
{
    TestLog log;
    QTemporaryDir folder;
    OwnService::Settings settings;
    settings.stateDir = folder.filePath(QStringLiteral("state"));
    settings.machinesFile = folder.filePath(QStringLiteral("none.json"));
    OwnService service(settings);
    TrovekQt facade;
    ServiceLink link(facade, std::make_unique<OwnService>(settings), {60000});
    link.connectNow();
    QCOMPARE(link.state(), ServiceLink::Waiting);
    QVERIFY2(link.failure().contains(QStringLiteral("none.json")), qPrintable(link.failure()));
}

QTEST_MAIN(tst_OwnService)
#include "tst_own_service.moc"
