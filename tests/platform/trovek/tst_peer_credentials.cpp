#include "support/thrown_text.h"

#include <trovek/peer_credentials.h>
#include <trovek/text.h>

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include <memory>

class tst_PeerCredentials : public QObject
{
    Q_OBJECT

private slots:
    void bothEndsOfAnOwnSocketAreTheSameUser();
    void whatIsNoSocketIsNobody();
    void onlyAFolderThatOthersCannotWriteIsTaken_data();
    void onlyAFolderThatOthersCannotWriteIsTaken();
    void aMissingFolderIsRefused();
    void theAdministratorsFoldersAreTrusted();
};

void tst_PeerCredentials::bothEndsOfAnOwnSocketAreTheSameUser()
{
    const QTemporaryDir folder;
    QLocalServer server;
    QVERIFY(server.listen(folder.filePath(QStringLiteral("s"))));
    QLocalSocket client;
    client.connectToServer(server.fullServerName());
    QVERIFY(client.waitForConnected());
    QVERIFY(server.waitForNewConnection(5000));
    const std::unique_ptr<QLocalSocket> accepted(server.nextPendingConnection());
    QVERIFY(trovek::peerIsSameUser(client.socketDescriptor()));
    QVERIFY(trovek::peerIsSameUser(accepted->socketDescriptor()));
}

void tst_PeerCredentials::whatIsNoSocketIsNobody()
{
    QVERIFY(!trovek::peerIsSameUser(-1));
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("f")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(!trovek::peerIsSameUser(file.handle()));
}

void tst_PeerCredentials::onlyAFolderThatOthersCannotWriteIsTaken_data()
{
    QTest::addColumn<uint>("mode");
    QTest::addColumn<bool>("taken");
    QTest::newRow("private") << 0700U << true;
    QTest::newRow("readable by all") << 0755U << true;
    QTest::newRow("writable by the group") << 0770U << false;
    QTest::newRow("writable by others") << 0702U << false;
    QTest::newRow("writable by all, sticky") << 01777U << false;
}

void tst_PeerCredentials::onlyAFolderThatOthersCannotWriteIsTaken()
{
    QFETCH(uint, mode);
    QFETCH(bool, taken);
    const QTemporaryDir folder;
    const std::string path = trovek::toStdString(folder.path());
    QCOMPARE(chmod(path.c_str(), mode), 0);
    QCOMPARE(thrownText([&] { trovek::checkSocketFolder(path + "/socket"); }),
             taken ? std::string("nothing thrown")
                   : "Others can write the folder of the service's socket: " + path);
}

void tst_PeerCredentials::aMissingFolderIsRefused()
{
    QCOMPARE(thrownText([] { trovek::checkSocketFolder("/no/such/folder/socket"); }),
             std::string("No folder for the service's socket: /no/such/folder"));
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("f")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const std::string path = trovek::toStdString(file.fileName());
    QCOMPARE(thrownText([&] { trovek::checkSocketFolder(path + "/socket"); }),
             "No folder for the service's socket: " + path);
}

void tst_PeerCredentials::theAdministratorsFoldersAreTrusted()
{
    QCOMPARE(thrownText([] { trovek::checkSocketFolder("/socket"); }),
             std::string("nothing thrown"));
}

QTEST_GUILESS_MAIN(tst_PeerCredentials)
#include "tst_peer_credentials.moc"
