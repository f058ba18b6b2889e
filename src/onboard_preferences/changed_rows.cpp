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
    for (Json::ArrayIndex i = 0; i < values.size(); ++i)
        m_places.emplace(&values[i], Place{m_rows.size(), i});
    m_rows.push_back(
        {leaf, &values, values, label, item, owner, std::vector<bool>(values.size()), 0, false});
}

void ChangedRows::follow(const Json::Value* element)
{
    const auto found = m_places.find(element);
    if (found == m_places.end())
        return;
    Row& row = m_rows[found->second.row];
    compare(row, found->second.index);
    showChange(row);
}

void ChangedRows::followAll()
{
    for (Row& row : m_rows) {
        for (Json::ArrayIndex i = 0; i < row.differs.size(); ++i)
            compare(row, i);
        showChange(row);
    }
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

void ChangedRows::compare(Row& row, Json::ArrayIndex index)
{
    const bool differs = !isSameDocument((*row.values)[index], row.reference[index]);
    if (differs == row.differs[index])
        return;
    row.differs[index] = differs;
    row.differCount += differs ? 1 : -1;
}

void ChangedRows::showChange(Row& row)
{
    const bool changed = row.differCount > 0;
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
