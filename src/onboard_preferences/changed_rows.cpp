#include "onboard_preferences/changed_rows.h"

#include "onboard_preferences/eeprom_entry.h"
#include "onboard_preferences/eeprom_merge.h"
#include "onboard_preferences/entry_label.h"
#include "trovek-ui/eeprom_grama.h"

namespace trovek {

namespace {

QString toolTipFor(const Json::Value& leaf, const Json::Value& reference)
{
    return EepromGrama::tr("Read from the machine: %1")
        .arg(shownText(readableValues(readEepromEntry(&leaf), reference)));
}

} // namespace

void ChangedRows::add(Json::Value* leaf, EntryLabel* label, GramaItem* item, Owner owner)
{
    Json::Value& values = (*leaf)["value"];
    for (const Json::Value& element : values)
        m_rowOfElement.emplace(&element, m_rows.size());
    m_rows.push_back({leaf, &values, values, label, item, owner, false});
}

void ChangedRows::follow(const Json::Value* element)
{
    const auto found = m_rowOfElement.find(element);
    if (found != m_rowOfElement.end())
        followRow(m_rows[found->second]);
}

void ChangedRows::followAll()
{
    for (Row& row : m_rows)
        followRow(row);
}

void ChangedRows::takeReferences()
{
    for (Row& row : m_rows) {
        if (row.owner == Own)
            row.reference = *row.values;
    }
    followAll();
}

bool ChangedRows::restDiffers(const Json::Value& map, const Json::Value& reference)
{
    // The elements keep their places in memory: only what holds them changes hands.
    swapChangedValues();
    const bool differs = !isSameDocument(map, reference);
    swapChangedValues();
    return differs;
}

void ChangedRows::followRow(Row& row)
{
    const bool changed = !isSameDocument(*row.values, row.reference);
    if (changed == row.changed)
        return;
    row.changed = changed;
    row.item->setMarked(changed);
    if (row.owner == Own)
        m_changedCount += changed ? 1 : -1;
    if (changed)
        row.label->mark(toolTipFor(*row.leaf, row.reference));
    else
        row.label->unmark();
}

void ChangedRows::swapChangedValues()
{
    for (Row& row : m_rows) {
        if (row.changed && row.owner == Own)
            row.values->swap(row.reference);
    }
}

} // namespace trovek
