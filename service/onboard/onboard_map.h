#pragma once

#include "onboard/onboard_entry.h"
#include "onboard/onboard_image.h"

#include <json/value.h>

#include <QByteArray>

#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace trovek::service {

/** What is wrong with one entry of a written document. */
struct OnboardProblem
{
    /** The entry's name with those of the groups around it; empty for the document itself. */
    std::string entry;
    /** For a user; the second half of a sentence that begins with the entry. */
    std::string reason;
};

/** A document that cannot be written; what() names entries and reasons, a few when there are many.
 */
class OnboardValueError : public std::runtime_error
{
public:
    explicit OnboardValueError(std::vector<OnboardProblem> problems);

    /** All of them, in the map's order; at least one. */
    const std::vector<OnboardProblem>& problems() const { return m_problems; }

private:
    std::vector<OnboardProblem> m_problems;
};

/**
 * Where one firmware keeps which setting: turns an image of the onboard memory into the document
 * that clients edit, and a document into an image.
 */
class OnboardMap
{
public:
    /**
     * @param source as docs/formats/onboard_map.md describes it; everything in it is checked
     * @throws std::runtime_error "Onboard map: " with the entry and what is wrong with it
     */
    explicit OnboardMap(Json::Value source);

    const OnboardLayout& layout() const { return m_layout; }
    /** In the order of their names, groups inside one another. */
    const std::vector<OnboardEntry>& entries() const { return m_entries; }

    QByteArray factoryImage() const;

    /** @param image of kOnboardBytes; where its bytes stand for no value the factory's is told */
    Json::Value read(const QByteArray& image) const;

    /**
     * The image with all values of a document. Only "value" is taken from it: what a setting is and
     * where it lies is known here, and a document that says otherwise is refused.
     * @throws OnboardValueError naming every entry that is wrong, missing or unknown
     */
    QByteArray write(const Json::Value& document, const QByteArray& image) const;

    /** The image of another map with every value that fits here under the same name, and the
     * factory's for the rest. */
    QByteArray convert(const OnboardMap& other, const QByteArray& image) const;

private:
    void addGroup(const Json::Value& group, std::vector<std::string>& path);
    void checkPlaces() const;
    std::vector<Json::Value> values(const OnboardEntry& entry, const QByteArray& image) const;

    OnboardLayout m_layout;
    std::vector<OnboardEntry> m_entries;
    /** The document without values. */
    Json::Value m_document;
};

/** The compiled-in maps. */
class OnboardMaps
{
public:
    /** Null when there is none for that firmware. It lives as long as this object. */
    const OnboardMap* find(const OnboardLayout& layout) const;

    /** What there is, in no particular order. */
    static std::vector<OnboardLayout> layouts();

    /** The firmwares of a machine type that have a map. */
    static std::set<FirmwareVersion> firmwareVersions(Printer::Type type);

private:
    mutable std::map<OnboardLayout, std::unique_ptr<const OnboardMap>> m_maps;
};

} // namespace trovek::service
