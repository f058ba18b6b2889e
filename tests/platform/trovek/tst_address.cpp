#include "support/thrown_text.h"

#include <trovek/address.h>

#include <QTest>

using trovek::Address;

class tst_Address : public QObject
{
    Q_OBJECT

private slots:
    void textsComeBackAsTheyWere_data();
    void textsComeBackAsTheyWere();
    void oddTextsAreRefused_data();
    void oddTextsAreRefused();
    void theTokenIsNotInTheText();
    void addressesCompareByEverything();
    void aPlainNameStandsInTheRuntimeFolder();
    void anAbsoluteNameIsThePath();
    void withoutARuntimeFolderTheStateFolderCounts_data();
    void withoutARuntimeFolderTheStateFolderCounts();
    void theStateFolderIsTheUsers();
};

void tst_Address::textsComeBackAsTheyWere_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("nameOrHost");
    QTest::addColumn<int>("port");

    QTest::newRow("local name") << QByteArray("local:daemon") << int(Address::Local)
                                << QByteArray("daemon") << 0;
    QTest::newRow("local path with colons")
        << QByteArray("local:/a/b:c") << int(Address::Local) << QByteArray("/a/b:c") << 0;
    QTest::newRow("host and port")
        << QByteArray("tcp:localhost:4711") << int(Address::Tcp) << QByteArray("localhost") << 4711;
    QTest::newRow("IPv6 host") << QByteArray("tcp:[::1]:1") << int(Address::Tcp)
                               << QByteArray("::1") << 1;
    QTest::newRow("highest port") << QByteArray("tcp:h:65535") << int(Address::Tcp)
                                  << QByteArray("h") << 65535;
}

void tst_Address::textsComeBackAsTheyWere()
{
    QFETCH(QByteArray, text);
    QFETCH(int, kind);
    QFETCH(QByteArray, nameOrHost);
    QFETCH(int, port);
    const Address address = Address::fromText(text.toStdString());
    QCOMPARE(int(address.kind()), kind);
    QCOMPARE(kind == Address::Local ? address.name() : address.host(), nameOrHost.toStdString());
    QCOMPARE(int(address.port()), port);
    QCOMPARE(address.toText(), text.toStdString());
}

void tst_Address::oddTextsAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char* const text : {"",
                                   "daemon",
                                   "local:",
                                   "local",
                                   "LOCAL:a",
                                   "tcp:",
                                   "tcp:host",
                                   "tcp:host:",
                                   "tcp::80",
                                   "tcp:host:0",
                                   "tcp:host:65536",
                                   "tcp:host:-1",
                                   "tcp:host:+1",
                                   "tcp:host:8x",
                                   "tcp:host: 8",
                                   "tcp:host:99999999999",
                                   "tcp:::1:80",
                                   "tcp:[]:80",
                                   "tcp:[::1:80",
                                   "udp:host:80"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
}

void tst_Address::oddTextsAreRefused()
{
    QFETCH(QByteArray, text);
    QCOMPARE(thrownText([&] { Address::fromText(text.toStdString()); }),
             "Invalid service address: " + text.toStdString());
}

void tst_Address::theTokenIsNotInTheText()
{
    const Address address = Address::tcp("::1", 80, "secret");
    QCOMPARE(address.token(), std::string("secret"));
    QCOMPARE(address.toText(), std::string("tcp:[::1]:80"));
}

void tst_Address::addressesCompareByEverything()
{
    QVERIFY(Address::local("a") == Address::local("a"));
    QVERIFY(!(Address::local("a") == Address::local("b")));
    QVERIFY(!(Address::local("a") == Address::tcp("a", 1, "")));
    QVERIFY(Address::tcp("a", 1, "t") == Address::tcp("a", 1, "t"));
    QVERIFY(!(Address::tcp("a", 1, "t") == Address::tcp("a", 2, "t")));
    QVERIFY(!(Address::tcp("a", 1, "t") == Address::tcp("b", 1, "t")));
    QVERIFY(!(Address::tcp("a", 1, "t") == Address::tcp("a", 1, "u")));
}

void tst_Address::aPlainNameStandsInTheRuntimeFolder()
{
    qputenv("XDG_RUNTIME_DIR", "/run/user/7");
    QCOMPARE(trovek::localSocketPath("daemon", "/state"), std::string("/run/user/7/trovek/daemon"));
}

void tst_Address::anAbsoluteNameIsThePath()
{
    qputenv("XDG_RUNTIME_DIR", "/run/user/7");
    QCOMPARE(trovek::localSocketPath("/a/b", "/state"), std::string("/a/b"));
}

void tst_Address::withoutARuntimeFolderTheStateFolderCounts_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::newRow("not set") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("relative, which its rules forbid") << QByteArray("run");
}

void tst_Address::withoutARuntimeFolderTheStateFolderCounts()
{
    QFETCH(QByteArray, variable);
    if (variable.isNull())
        qunsetenv("XDG_RUNTIME_DIR");
    else
        qputenv("XDG_RUNTIME_DIR", variable);
    QCOMPARE(trovek::localSocketPath("daemon", "/state"), std::string("/state/daemon"));
}

void tst_Address::theStateFolderIsTheUsers()
{
    qputenv("XDG_DATA_HOME", "/home/x/data");
    QCOMPARE(trovek::defaultStateDir(), std::string("/home/x/data/trovek"));
}

QTEST_GUILESS_MAIN(tst_Address)
#include "tst_address.moc"
