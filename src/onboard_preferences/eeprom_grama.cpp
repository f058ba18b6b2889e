#include "trovek-ui/eeprom_grama.h"

#include "onboard_preferences/changed_rows.h"
#include "onboard_preferences/eeprom_entry.h"
#include "onboard_preferences/eeprom_merge.h"
#include "onboard_preferences/entry_label.h"
#include "trovek-ui/eeprom_widgets.h"
#include "trovek-ui/json_widgets.h"

#include <trovek/eeprom_map.h>
#include <trovek/log.h>
#include <trovek/text.h>

#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include <exception>
#include <utility>
#include <vector>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src\\onboard_preferences\\eeprom_grama";

constexpr int kRealDecimals = 5;
constexpr int kFixedPointDecimals = 2;

struct ChildEntry
{
    QString name;
    /** Null for a row with a label only. */
    Json::Value* json;
    std::shared_ptr<GramaItem> parent;
};

/** What is to be added below an entry, last first, as from a stack. */
void appendChildren(std::vector<ChildEntry>& pending, Json::Value* entry,
                    const std::shared_ptr<GramaItem>& item)
{
    if (entry == nullptr || !entry->isObject() || isEepromLeaf(*entry) ||
        !entry->isMember("sub_map") || !(*entry)["sub_map"].isObject())
        return;
    Json::Value& children = (*entry)["sub_map"];
    const std::vector<std::string> names = children.getMemberNames();
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (*name == "offset" || *name == "eeprom_map")
            continue;
        Json::Value* child = &children[*name];
        // A map may wrap its children twice.
        if (*name == "sub_map")
            child =
                child->isObject() && child->isMember("sub_map") ? &(*child)["sub_map"] : nullptr;
        pending.push_back({toQString(*name), child, item});
    }
}

QLabel* makeTextLabel(const QString& text, bool wordWrap)
{
    auto* const label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(shownText(text));
    label->setWordWrap(wordWrap);
    return label;
}

/** Tells a screen reader what an editor is for; a label in its place speaks for itself. */
void nameEditor(QWidget* editor, const QString& name)
{
    if (qobject_cast<QLabel*>(editor) == nullptr)
        editor->setAccessibleName(name);
}

void nameEditors(QWidget* editor, QLabel* label)
{
    const QString name = label->text();
    nameEditor(editor, name);
    const auto* const form = qobject_cast<QFormLayout*>(editor->layout());
    if (form == nullptr) {
        // In a label with a buddy "&" would mark a key instead of being shown.
        if (!name.contains(QLatin1Char('&')))
            label->setBuddy(editor);
        return;
    }
    for (int row = 0; row < form->rowCount(); ++row) {
        const auto* const index =
            qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget());
        nameEditor(form->itemAt(row, QFormLayout::FieldRole)->widget(),
                   name + QLatin1Char(' ') + index->text().chopped(1));
    }
}

QString labelOfElement(Json::ArrayIndex index, Json::ArrayIndex count)
{
    if (count != 5)
        return EepromGrama::tr("[%1]:").arg(index);
    const QString axes[] = {EepromGrama::tr("X:"), EepromGrama::tr("Y:"), EepromGrama::tr("Z:"),
                            EepromGrama::tr("A:"), EepromGrama::tr("B:")};
    return axes[index];
}

} // namespace

class EepromGrama::Private
{
public:
    Private(EepromGrama* form, const Json::Value& document)
        : q(form)
        , map(document)
        , reference(document)
    {}

    std::shared_ptr<GramaItem> addRow(const QString& name, Json::Value* json,
                                      const std::shared_ptr<GramaItem>& parent);
    bool addEditors(QLayout* layout, Json::Value* leaf, QLabel* label);
    QWidget* makeEditor(Json::Value* element, char type, bool isFloatingPoint, bool isAxisBitfield,
                        const std::string& constraints, const QString& unit);
    template <typename Editor>
    Editor* connected(Editor* editor, Json::Value* element);
    void announceReset();

    EepromGrama* const q;
    Json::Value map;
    Json::Value reference;
    ChangedRows rows;
    /** Whether the two maps differ in what has no row. */
    bool restDiffers = false;
    bool changedOnly = false;
    /** Rows that others add later edit documents of their own. */
    bool isBuilt = false;
};

std::shared_ptr<GramaItem> EepromGrama::Private::addRow(const QString& name, Json::Value* json,
                                                        const std::shared_ptr<GramaItem>& parent)
{
    QStringList searchStrings(name);
    auto label = std::make_unique<EntryLabel>(shownText(labelFromKey(name)));
    auto field = std::make_unique<QWidget>();
    bool hasEditors = false;
    if (json != nullptr && isEepromLeaf(*json)) {
        auto* const layout = new QVBoxLayout(field.get());
        layout->setContentsMargins(0, 0, 0, 0);
        hasEditors = addEditors(layout, json, label.get());
        const Json::Value& tip = std::as_const(*json)["tooltip"];
        if (tip.isString()) {
            searchStrings.append(toQString(tip.asString()));
            layout->addWidget(makeTextLabel(searchStrings.last(), true));
        }
    }
    const std::shared_ptr<GramaItem> item = q->Grama::addRow(label.get(), field.get(), parent);
    if (!item)
        return nullptr;
    field.release();
    item->setSearchStrings(searchStrings);
    EntryLabel* const taken = label.release();
    if (hasEditors)
        rows.add(json, taken, item.get(), isBuilt ? ChangedRows::Foreign : ChangedRows::Own);
    return item;
}

/** False when there is none, but a label that says why. */
bool EepromGrama::Private::addEditors(QLayout* layout, Json::Value* leaf, QLabel* label)
{
    try {
        QWidget* const editor = q->createWidgetFromJson(leaf);
        layout->addWidget(editor);
        nameEditors(editor, label);
        return true;
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        layout->addWidget(makeTextLabel(toQString(e.what()), false));
        return false;
    }
}

QWidget* EepromGrama::Private::makeEditor(Json::Value* element, char type, bool isFloatingPoint,
                                          bool isAxisBitfield, const std::string& constraints,
                                          const QString& unit)
{
    if (type == 's')
        return connected(makeEepromTextLine(element), element);
    if (isListOfValues(constraints)) {
        const QStringList allowed = allowedValues(constraints);
        if (isOnOrOff(allowed))
            return connected(new JsonCheckBox(element), element);
        return connected(new EepromComboBox(allowed, element), element);
    }
    if (isFloatingPoint)
        return connected(
            new JsonSpinBox(element, fixedPointRange(), 1.0, kFixedPointDecimals, unit), element);
    if (isAxisBitfield)
        return connected(new EepromAxisBitfield(element), element);
    return connected(new JsonSpinBox(element, rangeOfType(type), 1.0,
                                     isRealType(type) ? kRealDecimals : 0, unit),
                     element);
}

/** What the form counts and marks follows before updated() tells of the change. */
template <typename Editor>
Editor* EepromGrama::Private::connected(Editor* editor, Json::Value* element)
{
    connect(editor, &Editor::updated, q, [this, element] { rows.follow(element); });
    connect(editor, &Editor::updated, q, &EepromGrama::updated);
    connect(q, &EepromGrama::mapReset, editor, &Editor::reset);
    return editor;
}

void EepromGrama::Private::announceReset()
{
    restDiffers = rows.restDiffers(map, reference);
    const QPointer<EepromGrama> self(q);
    emit q->mapReset();
    if (self && changedOnly)
        q->setShowMarkedOnly(true);
}

EepromGrama::EepromGrama(const Json::Value& map, QWidget* parent)
    : Grama(parent)
    , d(new Private(this, map))
{
    if (d->map.isObject() && d->map.isMember("eeprom_map") && d->map["eeprom_map"].isObject()) {
        Json::Value& entries = d->map["eeprom_map"];
        for (const std::string& name : entries.getMemberNames())
            addRowFromJson(toQString(name), &entries[name], nullptr);
    }
    d->isBuilt = true;
}

EepromGrama::~EepromGrama()
{
    // The editors point into the working map.
    delete widget();
}

bool EepromGrama::isModified() const
{
    return d->restDiffers || d->rows.changedCount() > 0;
}

int EepromGrama::changedCount() const
{
    return d->rows.changedCount();
}

Json::Value EepromGrama::map() const
{
    return d->map;
}

Json::Value EepromGrama::reference() const
{
    return d->reference;
}

void EepromGrama::resetToMap(const Json::Value& map)
{
    try {
        mergeValues(d->map, map);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        d->rows.followAll();
        d->announceReset();
        throw;
    }
    d->reference = map;
    d->rows.takeReferences();
    d->announceReset();
}

void EepromGrama::loadEdits(const Json::Value& map)
{
    Json::Value loaded = d->map;
    mergeValues(loaded, map);
    // By the types of the machine's own entries, whatever the file says.
    loaded = EepromMap::fromService(std::move(loaded)).getEepromMap();
    checkLoadedValues(d->map, loaded);
    mergeValues(d->map, loaded);
    d->rows.followAll();
    d->announceReset();
}

std::shared_ptr<GramaItem> EepromGrama::addRowFromJson(const QString& name, Json::Value* const json,
                                                       std::shared_ptr<GramaItem> parent)
{
    const std::shared_ptr<GramaItem> first = d->addRow(name, json, parent);
    if (!first)
        return nullptr;
    // A stack of our own: entries may be nested more deeply than the thread's has room for.
    std::vector<ChildEntry> pending;
    appendChildren(pending, json, first);
    while (!pending.empty()) {
        const ChildEntry entry = std::move(pending.back());
        pending.pop_back();
        appendChildren(pending, entry.json, d->addRow(entry.name, entry.json, entry.parent));
    }
    return first;
}

QWidget* EepromGrama::createWidgetFromJson(Json::Value* entry)
{
    const EepromEntry read = readEepromEntry(entry);
    Json::Value& values = (*entry)["value"];
    const auto create = [&](Json::ArrayIndex index) {
        return createScalarWidgetFromJson(&values[index], read.type, read.isFloatingPoint,
                                          read.isAxisBitfield, read.constraints, read.unit);
    };
    if (values.size() == 1)
        return create(0);
    auto* const container = new QWidget;
    auto* const layout = new QFormLayout(container);
    layout->setContentsMargins(0, 0, 0, 0);
    for (Json::ArrayIndex i = 0; i < values.size(); ++i)
        layout->addRow(labelOfElement(i, values.size()), create(i));
    return container;
}

QWidget* EepromGrama::createScalarWidgetFromJson(Json::Value* element, char type,
                                                 bool isFloatingPoint, bool isAxisBitfield,
                                                 std::string constraints, const QString& unit)
{
    try {
        return d->makeEditor(element, type, isFloatingPoint, isAxisBitfield, constraints, unit);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        const std::string json = element != nullptr ? element->toStyledString() : "<null>";
        return makeTextLabel(tr("%1: %2").arg(toQString(e.what()), toQString(json)), true);
    }
}

void EepromGrama::setShowChangedOnly(bool changedOnly)
{
    d->changedOnly = changedOnly;
    setShowMarkedOnly(changedOnly);
}

} // namespace trovek
