#pragma once

#include <json/value.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace trovek {

class EntryLabel;
class GramaItem;

/**
 * Which entries of a form differ from the values that were read from the machine, counted and
 * marked in their labels. An edit is followed without a look at other values.
 */
class ChangedRows
{
public:
    /** Entries of the form's own document count; those of others are only marked. */
    enum Owner { Own, Foreign };

    /**
     * Takes the present values as those read. The pointers have to stay valid.
     * @param leaf one that readEepromEntry() finds right
     */
    void add(Json::Value* leaf, EntryLabel* label, GramaItem* item, Owner owner);

    int changedCount() const { return m_changedCount; }

    /** Looks at this element, if it is one of an entry's values. */
    void follow(const Json::Value* element);
    void followAll();
    /** Takes the present values of our own entries as those read. */
    void takeReferences();

    /** Whether two documents differ in more than the entries that count as changed. */
    bool restDiffers(const Json::Value& map, const Json::Value& reference);

private:
    struct Row
    {
        Json::Value* leaf;
        Json::Value* values;
        Json::Value reference;
        EntryLabel* label;
        GramaItem* item;
        Owner owner;
        /** For each value whether it differs from the one read, and how many do. */
        std::vector<bool> differs;
        int differCount;
        bool changed;
    };
    struct Place
    {
        std::size_t row;
        Json::ArrayIndex index;
    };

    static void compare(Row& row, Json::ArrayIndex index);
    void showChange(Row& row);
    void swapChangedValues();

    std::vector<Row> m_rows;
    std::unordered_map<const Json::Value*, Place> m_places;
    int m_changedCount = 0;
};

} // namespace trovek
