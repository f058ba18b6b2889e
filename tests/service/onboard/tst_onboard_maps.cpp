#include "onboard_world.h"

#include <service/gcode/machine_definition.h>
#include <service/onboard/onboard_codec.h>

#include <trovek/eeprom_map.h>
#include <trovek/firmware_version.h>

#include <QTest>

#include <algorithm>
#include <map>
#include <set>

using namespace trovek;
using namespace trovek::service;

namespace {

/** A map that is compiled in. */
struct Shipped
{
    OnboardMaps maps;
    const OnboardMap* map = nullptr;
    Json::Value document;
};

int depthOf(const OnboardMap& map)
{
    std::size_t depth = 0;
    for (const OnboardEntry& entry : map.entries())
        depth = std::max(depth, entry.path.size());
    return static_cast<int>(depth);
}

} // namespace

/** What is compiled in, each map by itself and all together. */
class tst_OnboardMaps : public QObject
{
    Q_OBJECT

private slots:
    void everyMachineHasAMap();
    void everyTypeHasOneMapForEachFirmware();
    void aFirmwareWithoutAMapHasNone();
    void theLargestHasAllThatAMapMayHave();
    void everyMapIsSound_data();
    void everyMapIsSound();
    void factoryValuesAreWrittenAndReadUnchanged_data();
    void factoryValuesAreWrittenAndReadUnchanged();
    void anErasedImageGivesAFormAllTheSame_data();
    void anErasedImageGivesAFormAllTheSame();

private:
    static void addEveryMap();
    static void load(Shipped& shipped);
};

void tst_OnboardMaps::addEveryMap()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    for (const OnboardLayout& layout : OnboardMaps::layouts()) {
        QTest::addRow("%s %d.%d", machineTypeName(layout.type).c_str(), layout.major, layout.minor)
            << int(layout.type) << layout.major << layout.minor;
    }
}

void tst_OnboardMaps::load(Shipped& shipped)
{
    QFETCH(int, type);
    QFETCH(int, major);
    QFETCH(int, minor);
    shipped.map = shipped.maps.find({static_cast<Printer::Type>(type), major, minor});
    QVERIFY(shipped.map != nullptr);
    shipped.document = shipped.map->read(shipped.map->factoryImage());
}

void tst_OnboardMaps::everyMachineHasAMap()
{
    const OnboardMaps maps;
    const MachineDefinitions definitions = defaultMachineDefinitions();
    QCOMPARE(definitions.archetypes.size(), std::size_t(6));
    for (const auto* list : {&definitions.machines, &definitions.archetypes}) {
        for (const MachineDefinition& machine : *list) {
            const FirmwareVersion version(machine.firmwareVersion);
            const OnboardLayout layout{machine.type, version.major(), version.minor()};
            QVERIFY2(maps.find(layout) != nullptr, machine.key.c_str());
            QVERIFY(maps.find(layout)->layout() == layout);
        }
    }
}

void tst_OnboardMaps::everyTypeHasOneMapForEachFirmware()
{
    const OnboardMaps maps;
    const OnboardMap* const older = maps.find({Printer::Fabrino2X, 7, 5});
    const OnboardMap* const newer = maps.find({Printer::Fabrino2X, 7, 6});
    QVERIFY(older != nullptr && newer != nullptr);
    QVERIFY(older->entries().size() < newer->entries().size());
    // What both have does not lie at one place in both.
    const auto offsetIn = [](const OnboardMap& map, const std::string& name) {
        const auto found =
            std::find_if(map.entries().begin(), map.entries().end(),
                         [&name](const OnboardEntry& entry) { return entry.name() == name; });
        return found == map.entries().end() ? -1 : found->offset;
    };
    QVERIFY(offsetIn(*older, "build_stats.motor_steps") > 0);
    QVERIFY(offsetIn(*older, "build_stats.motor_steps") !=
            offsetIn(*newer, "build_stats.motor_steps"));
}

void tst_OnboardMaps::aFirmwareWithoutAMapHasNone()
{
    const OnboardMaps maps;
    QVERIFY(maps.find({Printer::Fabrino2X, 7, 4}) == nullptr);
    QVERIFY(maps.find({Printer::UnknownType, 7, 5}) == nullptr);
    QVERIFY(maps.find({static_cast<Printer::Type>(7), 7, 5}) == nullptr);
}

void tst_OnboardMaps::theLargestHasAllThatAMapMayHave()
{
    const OnboardMaps maps;
    const OnboardMap* const map = maps.find({Printer::Fabrino2X, 7, 5});
    QVERIFY(map != nullptr);
    std::set<char> types;
    std::map<std::string, int> seen;
    const Json::Value document = map->read(map->factoryImage());
    for (const OnboardEntry& entry : map->entries()) {
        types.insert(entry.type);
        Json::Value copy = document;
        const Json::Value& leaf = entryOf(copy, entry.name());
        for (const char* const member : {"floating_point", "axis_expand", "unit"})
            seen[member] += leaf.isMember(member) ? 1 : 0;
        const std::string constraints = leaf["constraints"].asString();
        seen["switch"] += constraints == "l,0,1" ? 1 : 0;
        seen["list"] += constraints.rfind("l,", 0) == 0 && constraints != "l,0,1" ? 1 : 0;
        seen["range"] += constraints.rfind("m,", 0) == 0 ? 1 : 0;
        const std::string code = leaf["type"].asString();
        if (code.size() > 1)
            seen[code] += 1;
    }

    QVERIFY(map->entries().size() >= 120);
    QCOMPARE(std::string(types.begin(), types.end()), std::string("BHIbdfhiqs"));
    QVERIFY(depthOf(*map) >= 5);
    for (const char* const kind : {"floating_point", "axis_expand", "unit", "switch", "list",
                                   "range", "BBBBB", "iiiii", "fff", "HHHHHHHH"})
        QVERIFY2(seen[kind] > 0, kind);
}

void tst_OnboardMaps::everyMapIsSound_data()
{
    addEveryMap();
}

void tst_OnboardMaps::everyMapIsSound()
{
    Shipped shipped;
    load(shipped);
    std::set<std::string> names;
    std::set<int> taken;
    for (const OnboardEntry& entry : shipped.map->entries()) {
        const std::string name = entry.name();
        QVERIFY2(names.insert(name).second, name.c_str());
        for (int byte = entry.offset; byte < entry.offset + entry.bytes(); ++byte)
            QVERIFY2(taken.insert(byte).second, name.c_str());
        const Json::Value& leaf = entryOf(shipped.document, name);
        QVERIFY2(leaf["tooltip"].isString() && leaf["tooltip"].asString().size() > 8, name.c_str());
        QVERIFY2(!leaf.isMember("factory"), name.c_str());
        for (const Json::Value& value : entry.factory)
            QVERIFY2(whatIsWrongWith(value, entry).empty(), name.c_str());
        // A form takes texts of these characters only.
        if (entry.isText()) {
            for (const char character : entry.factory.front().asString())
                QVERIFY(QChar::fromLatin1(character).isLetterOrNumber() || character == ' ');
        }
    }
    QVERIFY(*taken.begin() >= kOnboardHeaderBytes);
    QVERIFY(*taken.rbegin() < kOnboardBytes);
    QVERIFY(depthOf(*shipped.map) >= 4);
}

void tst_OnboardMaps::factoryValuesAreWrittenAndReadUnchanged_data()
{
    addEveryMap();
}

void tst_OnboardMaps::factoryValuesAreWrittenAndReadUnchanged()
{
    Shipped shipped;
    load(shipped);
    const OnboardMap& map = *shipped.map;
    const QByteArray factory = map.factoryImage();

    QCOMPARE(map.write(shipped.document, factory), factory);
    QVERIFY(layoutOfImage(factory) == map.layout());
    // As a client gives it out, and back.
    const Json::Value normalized = EepromMap::fromService(shipped.document).getEepromMap();
    QVERIFY(normalized == shipped.document);
    QCOMPARE(map.write(normalized, factory), factory);
}

void tst_OnboardMaps::anErasedImageGivesAFormAllTheSame_data()
{
    addEveryMap();
}

void tst_OnboardMaps::anErasedImageGivesAFormAllTheSame()
{
    Shipped shipped;
    load(shipped);
    const Json::Value read = shipped.map->read(QByteArray(kOnboardBytes, kErasedByte));
    for (const OnboardEntry& entry : shipped.map->entries()) {
        const Json::Value values = valueOf(read, entry.name());
        QCOMPARE(std::size_t(values.size()), entry.factory.size());
        for (const Json::Value& value : values)
            QVERIFY(entry.isText() ? value.isString() : value.isNumeric());
    }
}

QTEST_GUILESS_MAIN(tst_OnboardMaps)
#include "tst_onboard_maps.moc"
