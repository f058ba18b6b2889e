#include "onboard/onboard_map.h"

#include "gcode/machine_definition.h"
#include "onboard/onboard_codec.h"
#include "onboard/onboard_document.h"

#include <trovek/firmware_version.h>

#include <algorithm>

namespace trovek::service {

namespace {

constexpr std::size_t kNamedProblems = 20;
constexpr char kNameCharacters[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
/** Members of a group that are no entries; a form leaves them out. */
constexpr const char* kReservedNames[] = {"offset", "sub_map", "eeprom_map"};

std::string describe(const std::vector<OnboardProblem>& problems)
{
    std::string text = "These settings cannot be written: ";
    for (std::size_t i = 0; i < std::min(problems.size(), kNamedProblems); ++i) {
        const OnboardProblem& problem = problems[i];
        text += i == 0 ? "" : "; ";
        text += problem.entry.empty() ? problem.reason : problem.entry + " " + problem.reason;
    }
    if (problems.size() > kNamedProblems)
        text += "; and " + std::to_string(problems.size() - kNamedProblems) + " more";
    return text;
}

[[noreturn]] void fail(const std::string& where, const std::string& what)
{
    throw std::runtime_error("Onboard map: " + where + ": " + what);
}

bool isName(const std::string& name)
{
    return !name.empty() && name.find_first_not_of(kNameCharacters) == std::string::npos &&
           std::find(std::begin(kReservedNames), std::end(kReservedNames), name) ==
               std::end(kReservedNames);
}

OnboardLayout readLayout(const Json::Value& source)
{
    const Json::Value& type = source["machine_type"];
    const Json::Value& version = source["firmware_version"];
    OnboardLayout layout;
    if (type.isString())
        layout.type = machineTypeFromName(type.asString());
    if (layout.type == Printer::UnknownType)
        fail("machine_type", "is none of the six machine types");
    const FirmwareVersion firmware(version.isString() ? version.asString() : std::string());
    if (!firmware.valid())
        fail("firmware_version", "must be \"MAJOR.MINOR\"");
    layout.major = firmware.major();
    layout.minor = firmware.minor();
    return layout;
}

/** The document's entry of that path, without values. */
Json::Value& entryIn(Json::Value& document, const OnboardEntry& entry)
{
    Json::Value* level = &document["eeprom_map"];
    for (std::size_t i = 0; i + 1 < entry.path.size(); ++i)
        level = &(*level)[entry.path[i]]["sub_map"];
    return (*level)[entry.path.back()];
}

} // namespace

OnboardValueError::OnboardValueError(std::vector<OnboardProblem> problems)
    : std::runtime_error(describe(problems))
    , m_problems(std::move(problems))
{}

OnboardMap::OnboardMap(Json::Value source)
    : m_document(std::move(source))
{
    if (!m_document.isObject())
        fail("document", "is not an object");
    m_layout = readLayout(m_document);
    std::vector<std::string> path;
    addGroup(m_document["eeprom_map"], path);
    checkPlaces();
    for (const OnboardEntry& entry : m_entries)
        entryIn(m_document, entry).removeMember("factory");
}

void OnboardMap::addGroup(const Json::Value& group, std::vector<std::string>& path)
{
    const auto where = [&path] {
        return entryName(path);
    };
    if (!group.isObject() || group.empty())
        fail(where(), "a group must be an object with entries");
    for (const std::string& name : group.getMemberNames()) {
        path.push_back(name);
        const Json::Value& member = group[name];
        if (!isName(name))
            fail(where(), "is no name for an entry");
        if (!member.isObject())
            fail(where(), "is not an object");
        if (member.isMember("sub_map")) {
            if (member.size() != 1)
                fail(where(), "a group has nothing but its \"sub_map\"");
            addGroup(member["sub_map"], path);
        } else {
            try {
                m_entries.push_back(readOnboardEntry(path, member));
            } catch (const std::runtime_error& error) {
                fail(where(), error.what());
            }
        }
        path.pop_back();
    }
}

void OnboardMap::checkPlaces() const
{
    std::vector<const OnboardEntry*> inOrder;
    for (const OnboardEntry& entry : m_entries)
        inOrder.push_back(&entry);
    std::sort(inOrder.begin(), inOrder.end(),
              [](const auto* left, const auto* right) { return left->offset < right->offset; });
    for (std::size_t i = 1; i < inOrder.size(); ++i) {
        const OnboardEntry& before = *inOrder[i - 1];
        if (before.offset + before.bytes() > inOrder[i]->offset)
            fail(inOrder[i]->name(), "lies over " + before.name());
    }
}

QByteArray OnboardMap::factoryImage() const
{
    QByteArray image(kOnboardBytes, kErasedByte);
    for (const OnboardEntry& entry : m_entries) {
        int offset = entry.offset;
        for (const Json::Value& value : entry.factory) {
            image.replace(offset, entry.elementBytes, encodeElement(value, entry));
            offset += entry.elementBytes;
        }
    }
    return sealedImage(image, m_layout);
}

std::vector<Json::Value> OnboardMap::values(const OnboardEntry& entry,
                                            const QByteArray& image) const
{
    std::vector<Json::Value> values;
    int offset = entry.offset;
    for (const Json::Value& factory : entry.factory) {
        const QByteArray bytes = image.mid(offset, entry.elementBytes);
        values.push_back(decodeElement(bytes, entry).value_or(factory));
        offset += entry.elementBytes;
    }
    return values;
}

Json::Value OnboardMap::read(const QByteArray& image) const
{
    Json::Value document = m_document;
    for (const OnboardEntry& entry : m_entries) {
        Json::Value& elements = entryIn(document, entry)["value"];
        elements = Json::Value(Json::arrayValue);
        for (const Json::Value& value : values(entry, image))
            elements.append(value);
    }
    return document;
}

QByteArray OnboardMap::write(const Json::Value& document, const QByteArray& image) const
{
    std::vector<OnboardProblem> problems = compareShapes(m_document, document);
    QByteArray written = image;
    for (const OnboardEntry& entry : m_entries) {
        const Json::Value* elements = findElements(document, entry);
        if (elements == nullptr)
            continue; // said by compareShapes() already
        int offset = entry.offset;
        for (const Json::Value& value : *elements) {
            const std::string wrong = whatIsWrongWith(value, entry);
            if (!wrong.empty()) {
                problems.push_back({entry.name(), wrong});
                break;
            }
            written.replace(offset, entry.elementBytes, encodeElement(value, entry));
            offset += entry.elementBytes;
        }
    }
    if (!problems.empty())
        throw OnboardValueError(std::move(problems));
    return sealedImage(written, m_layout);
}

QByteArray OnboardMap::convert(const OnboardMap& other, const QByteArray& image) const
{
    QByteArray converted = factoryImage();
    for (const OnboardEntry& entry : m_entries) {
        const auto same =
            std::find_if(other.m_entries.begin(), other.m_entries.end(),
                         [&entry](const OnboardEntry& o) { return o.path == entry.path; });
        if (same == other.m_entries.end() || same->factory.size() != entry.factory.size())
            continue;
        int offset = entry.offset;
        for (const Json::Value& value : other.values(*same, image)) {
            if (whatIsWrongWith(value, entry).empty())
                converted.replace(offset, entry.elementBytes, encodeElement(value, entry));
            offset += entry.elementBytes;
        }
    }
    return sealedImage(converted, m_layout);
}

} // namespace trovek::service
