#include "catalogue_folder.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <service/firmware/firmware_catalogue.h>
#include <service/firmware/firmware_image.h>
#include <service/firmware/firmware_source.h>
#include <service/gcode/machine_definition.h>
#include <service/onboard/onboard_map.h>
#include <trovek/text.h>

#include <QTest>

#include <algorithm>
#include <map>
#include <set>

using namespace trovek;
using namespace trovek::service;

/** The index of a catalogue, and the one that is compiled in. */
class tst_FirmwareCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void offersWhatItsEntriesSay();
    void oneNameMayStandForSeveralTypes();
    void unknownTypesAreLeftOut();
    void unknownMembersAreNotLookedAt();
    void refusesABrokenIndex_data();
    void refusesABrokenIndex();
    void refusesAWrongEntry_data();
    void refusesAWrongEntry();
    void theCompiledInOneHasAllTypes();
    void theCompiledInOneMatchesItsFiles();
    void everyCompiledInFirmwareHasAMap();
    void everyMachineFindsItsFirmware();
};

namespace {

QByteArray bytesOf(const Json::Value& index)
{
    return QByteArray::fromStdString(rpcwire::toJsonLine(index));
}

FirmwareCatalogue catalogueOf(const CatalogueFolder& folder)
{
    return FirmwareCatalogue(bytesOf(folder.index));
}

QByteArray compiledIn(const QString& name)
{
    return FirmwareSource(QString()).read(name, 100'000, 0, [] { return false; });
}

FirmwareCatalogue compiledInCatalogue()
{
    return FirmwareCatalogue(compiledIn(QStringLiteral("catalogue.json")));
}

} // namespace

void tst_FirmwareCatalogue::offersWhatItsEntriesSay()
{
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino_2", Printer::Fabrino2, "7.6", "Warm.  Quiet.");
    folder.add("cubio", Printer::CubioSingle, "4.1");
    folder.add("fabrino_2", Printer::Fabrino2, "7.10");
    Json::Value& hash = folder.index["firmware"][0]["sha256"];
    hash = toStdString(toQString(hash.asString()).toUpper());

    const FirmwareCatalogue catalogue = catalogueOf(folder);

    QCOMPARE(catalogue.machines(), (std::vector<std::string>{"fabrino_2", "cubio"}));
    QVERIFY(catalogue.offersAnythingFor("cubio"));
    QVERIFY(!catalogue.offersAnythingFor("Cubio"));
    const FirmwareEntry* const entry = catalogue.find("fabrino_2", Printer::Fabrino2, "7.6");
    QVERIFY(entry != nullptr);
    QCOMPARE(entry->version.description(), std::string("Warm.  Quiet."));
    QCOMPARE(entry->file, QStringLiteral("fabrino_2-7.6.fw"));
    QCOMPARE(entry->bytes, 1016);
    QCOMPARE(entry->hash, firmwareHash(folder.readFile(entry->file)));
    QVERIFY(catalogue.find("fabrino_2", Printer::Fabrino2X, "7.6") == nullptr);
    QVERIFY(catalogue.find("fabrino_2", Printer::Fabrino2, "7.1") == nullptr);
    QVERIFY(catalogue.find("cubio", Printer::Fabrino2, "7.6") == nullptr);
}

void tst_FirmwareCatalogue::oneNameMayStandForSeveralTypes()
{
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino", Printer::FabrinoSingle, "6.2");
    folder.add("fabrino", Printer::FabrinoDual, "6.2");

    const FirmwareCatalogue catalogue = catalogueOf(folder);

    QCOMPARE(catalogue.machines(), (std::vector<std::string>{"fabrino"}));
    QCOMPARE(catalogue.find("fabrino", Printer::FabrinoDual, "6.2")->file,
             QStringLiteral("fabrino_dual-6.2.fw"));
}

void tst_FirmwareCatalogue::unknownTypesAreLeftOut()
{
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino_2", Printer::Fabrino2, "7.6");
    Json::Value later = folder.index["firmware"][0];
    later["machine"] = "fabrino_9";
    later["type"] = "fabrino_9";
    folder.index["firmware"].append(later);

    QCOMPARE(catalogueOf(folder).machines(), (std::vector<std::string>{"fabrino_2"}));
    QVERIFY(log.contains("firmware[1]: left out"));
}

void tst_FirmwareCatalogue::unknownMembersAreNotLookedAt()
{
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino_2", Printer::Fabrino2, "7.6");
    folder.index["firmware"][0]["released"] = "later";
    folder.index["made_by"] = 5;
    QCOMPARE(catalogueOf(folder).entries().size(), std::size_t(1));
}

void tst_FirmwareCatalogue::refusesABrokenIndex_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray noList("Firmware catalogue: there is no list \"firmware\"");
    QTest::newRow("empty") << QByteArray() << QByteArray("Firmware catalogue: ");
    QTest::newRow("cut") << QByteArray("{\"firmware\": [") << QByteArray("Firmware catalogue: ");
    QTest::newRow("text behind it")
        << QByteArray("{\"firmware\": []} x") << QByteArray("Firmware catalogue: ");
    QTest::newRow("a page of a site")
        << QByteArray("<html></html>") << QByteArray("Firmware catalogue: ");
    QTest::newRow("a list") << QByteArray("[]") << noList;
    QTest::newRow("no list") << QByteArray("{}") << noList;
    QTest::newRow("an object for the list") << QByteArray("{\"firmware\": {}}") << noList;
    QTest::newRow("null") << QByteArray("null") << noList;
    QTest::newRow("an entry that is none")
        << QByteArray("{\"firmware\": [5]}")
        << QByteArray("Firmware catalogue: firmware[0]: No JSON object around member \"machine\"");
}

void tst_FirmwareCatalogue::refusesABrokenIndex()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, expected);
    TestLog log;
    const std::string refusal = thrownText([&] { FirmwareCatalogue{json}; });
    QVERIFY2(refusal.rfind(expected.toStdString(), 0) == 0, refusal.c_str());
}

void tst_FirmwareCatalogue::refusesAWrongEntry_data()
{
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("expected");

    const auto row = [](const char* member, const char* value, const char* expected) {
        QTest::addRow("%s %s", member, value)
            << QByteArray(member) << QByteArray(value)
            << "Firmware catalogue: firmware[1]: " + QByteArray(expected);
    };
    for (const char* const member : {"machine", "type", "version", "description", "file", "sha256"})
        row(member, "5", "Member \"MEMBER\" is not a string");
    row("machine", "\"\"", "Member \"machine\" is empty");
    for (const char* const version :
         {"\"\"", "\"7\"", "\"7.6.1\"", "\"new\"", "\"7.-1\"", "\"70000.1\"", "\"7.65536\""})
        row("version", version, "Member \"version\" is not \"MAJOR.MINOR\"");
    for (const char* const file :
         {"\"\"", "\"../x.fw\"", "\"/etc/passwd\"", "\"a/b.fw\"", "\"..\"", "\".hidden\"",
          "\"a\\\\b\"", "\"a b\"", "\"http://x\"", "\"-x\"", "\"a\\n\""})
        row("file", file, "Member \"file\" is not a plain file name");
    row("size", "\"5\"", "Member \"size\" is not an integer of 32 bits");
    row("size", "1.5", "Member \"size\" is not an integer of 32 bits");
    for (const char* const size : {"0", "-1", "16777217"})
        row("size", size, "Member \"size\" must be from 1 to 16777216");
    row("sha256", "\"abc\"", "Member \"sha256\" is not 64 hexadecimal digits");
    row("version", "\"7.5\"", "It is there twice");
}

void tst_FirmwareCatalogue::refusesAWrongEntry()
{
    QFETCH(QByteArray, member);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, expected);
    TestLog log;
    CatalogueFolder folder;
    folder.add("fabrino_2", Printer::Fabrino2, "7.5");
    folder.add("fabrino_2", Printer::Fabrino2, "7.6");
    Json::Value wrong;
    QVERIFY(rpcwire::parseJson(value.toStdString(), &wrong, nullptr));
    Json::Value& entry = folder.index["firmware"][1];

    entry[member.toStdString()] = wrong;
    QCOMPARE(thrownText([&] { catalogueOf(folder); }),
             expected.replace("MEMBER", member).toStdString());
    entry.removeMember(member.toStdString());
    QCOMPARE(thrownText([&] { catalogueOf(folder); }),
             "Firmware catalogue: firmware[1]: Missing member \"" + member.toStdString() + "\"");
}

void tst_FirmwareCatalogue::theCompiledInOneHasAllTypes()
{
    TestLog log;
    const FirmwareCatalogue catalogue = compiledInCatalogue();
    std::map<Printer::Type, std::set<FirmwareVersion>> versions;
    for (const FirmwareEntry& entry : catalogue.entries()) {
        versions[entry.type].insert(entry.version);
        // In whole sentences, of which a reader gets one a line.
        const std::string& description = entry.version.description();
        QVERIFY2(description.find(". ") != std::string::npos && description.back() == '.',
                 description.c_str());
    }
    QCOMPARE(versions.size(), std::size_t(6));
    for (const MachineDefinition& archetype : defaultMachineDefinitions().archetypes) {
        const std::set<FirmwareVersion>& offered = versions[archetype.type];
        const FirmwareVersion usual(archetype.firmwareVersion);
        QVERIFY2(offered.count(usual) == 1, archetype.key.c_str());
        QVERIFY2(*offered.begin() < usual, archetype.key.c_str());
        QVERIFY2(usual < *offered.rbegin(), archetype.key.c_str());
    }
}

void tst_FirmwareCatalogue::theCompiledInOneMatchesItsFiles()
{
    TestLog log;
    const FirmwareCatalogue catalogue = compiledInCatalogue();
    for (const FirmwareEntry& entry : catalogue.entries()) {
        const QByteArray image = compiledIn(entry.file);
        QCOMPARE(image.size(), entry.bytes);
        QCOMPARE(firmwareHash(image), entry.hash);
        QCOMPARE(readFirmwareHeader(image).type, entry.type);
        QCOMPARE(readFirmwareHeader(image).version.str(), entry.version.str());
    }
}

void tst_FirmwareCatalogue::everyCompiledInFirmwareHasAMap()
{
    TestLog log;
    const OnboardMaps maps;
    const FirmwareCatalogue catalogue = compiledInCatalogue();
    for (const FirmwareEntry& entry : catalogue.entries()) {
        const OnboardLayout layout{entry.type, entry.version.major(), entry.version.minor()};
        QVERIFY2(maps.find(layout) != nullptr, qPrintable(entry.file));
    }
}

void tst_FirmwareCatalogue::everyMachineFindsItsFirmware()
{
    TestLog log;
    const FirmwareCatalogue catalogue = compiledInCatalogue();
    const std::vector<std::string> offered = catalogue.machines();
    const MachineDefinitions definitions = defaultMachineDefinitions();
    for (const MachineDefinition& machine : definitions.machines) {
        // The first name that is also the machine's counts.
        const auto name = std::find_if(offered.begin(), offered.end(), [&](const auto& candidate) {
            const auto& own = machine.machineNames;
            return std::find(own.begin(), own.end(), candidate) != own.end();
        });
        QVERIFY2(name != offered.end(), machine.key.c_str());
        QVERIFY2(catalogue.find(*name, machine.type, machine.firmwareVersion) != nullptr,
                 machine.key.c_str());
    }
}

QTEST_GUILESS_MAIN(tst_FirmwareCatalogue)
#include "tst_firmware_catalogue.moc"
