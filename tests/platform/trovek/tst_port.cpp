#include "support/thrown_text.h"

#include <trovek/port.h>

#include <QTest>

#include <set>

using trovek::Port;

class tst_Port : public QObject
{
    Q_OBJECT

private slots:
    void aSetKeepsEveryNameWithEveryIdentity();
    void whatElseThePortSaysMakesNoOtherPort();
    void theNameIsShownWhereNothingBetterIsKnown();
    void theWhitelistIsThePortsOwnWord();
    void theLogTextTellsEverything_data();
    void theLogTextTellsEverything();
};

void tst_Port::aSetKeepsEveryNameWithEveryIdentity()
{
    const std::set<Port> ports = {Port({"b", "1", "", "", false}), Port({"a", "2", "", "", false}),
                                  Port({"a", "1", "", "", false}), Port({"a", "1", "", "", false})};
    std::string order;
    for (const Port& port : ports)
        order += port.name() + port.identity() + ' ';
    QCOMPARE(order, std::string("a1 a2 b1 "));
}

void tst_Port::whatElseThePortSaysMakesNoOtherPort()
{
    const Port one({"a", "1", "shown", "left", true});
    const Port other({"a", "1", "", "", false});
    QVERIFY(one == other);
    QVERIFY(!(one < other) && !(other < one));
    QVERIFY(!(one == Port({"a", "2", "shown", "left", true})));
    QVERIFY(!(one == Port({"b", "1", "shown", "left", true})));
}

void tst_Port::theNameIsShownWhereNothingBetterIsKnown()
{
    QCOMPARE(Port({"a", "1", "", "", false}).displayName(), std::string("a"));
    QCOMPARE(Port({"a", "1", "Fine port", "", false}).displayName(), std::string("Fine port"));
}

void tst_Port::theWhitelistIsThePortsOwnWord()
{
    QVERIFY(trovek::portInConnectionWhitelist(Port({"a", "1", "", "", true})));
    QVERIFY(!trovek::portInConnectionWhitelist(Port({"a", "1", "", "", false})));
}

void tst_Port::theLogTextTellsEverything_data()
{
    QTest::addColumn<QByteArray>("machine");
    QTest::addColumn<bool>("whitelisted");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("closed") << QByteArray() << false
                            << QByteArray("Port a: Fine port, identity 1, closed");
    QTest::newRow("open") << QByteArray("left") << false
                          << QByteArray("Port a: Fine port, identity 1, machine left");
    QTest::newRow("whitelisted") << QByteArray() << true
                                 << QByteArray(
                                        "Port a: Fine port, identity 1, closed, opened by itself");
}

void tst_Port::theLogTextTellsEverything()
{
    QFETCH(QByteArray, machine);
    QFETCH(bool, whitelisted);
    QFETCH(QByteArray, text);
    const Port port({"a", "1", "Fine port", machine.toStdString(), whitelisted});
    QCOMPARE(to_string(port), text.toStdString());
}

QTEST_GUILESS_MAIN(tst_Port)
#include "tst_port.moc"
