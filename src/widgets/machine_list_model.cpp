#include "trovek-ui/machine_list_model.h"

#include "trovek-ui/machine_types.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QHash>
#include <QScopedValueRollback>
#include <QTextDocument>

#include <list>
#include <stdexcept>
#include <string_view>
#include <unordered_set>

static constexpr char kLogUnit[] = "src/widgets/machine_list_model";

namespace trovek {

namespace {

/** A device says itself what its key is, which may read like markup. */
QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

} // namespace

MachineListModel::Item::Item(const Printer& printer, bool showIcon)
    : QStandardItem(printerTypeToHumanString(printer.type(), PrinterStringInSentence))
    , m_key(printer.key())
    , m_portName(printer.portName())
{
    setEditable(false);
    if (!showIcon)
        return;
    try {
        setIcon(printerTypeToIcon(printer.type()));
    } catch (const std::runtime_error& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

QString MachineListModel::Item::place() const
{
    const QString key = toQString(m_key.name());
    return m_portName.empty()
               ? key
               : MachineListModel::tr("%1 on port %2").arg(key, toQString(m_portName));
}

MachineListModel::MachineListModel(TrovekQt& trovekQt, bool showIcons, QObject* parent)
    : QStandardItemModel(parent)
    , m_trovekQt(trovekQt)
    , m_showIcons(showIcons)
{
    connect(&m_trovekQt, &TrovekQt::printerAdded, this, &MachineListModel::update);
    connect(&m_trovekQt, &TrovekQt::printerRemoved, this, &MachineListModel::update);
    connect(&m_trovekQt, &TrovekQt::connected, this, &MachineListModel::update);
    connect(&m_trovekQt, &TrovekQt::disconnected, this, &MachineListModel::update);
    update();
}

MachineListModel::~MachineListModel() = default;

bool MachineListModel::contains(const Printer* printer) const
{
    return indexOf(printer).isValid();
}

QModelIndex MachineListModel::indexOf(const Printer* printer) const
{
    if (printer == nullptr)
        return {};
    for (int row = 0; row < rowCount(); ++row) {
        const auto* machine = dynamic_cast<const Item*>(item(row));
        if (machine != nullptr && machine->key() == printer->key())
            return index(row, 0);
    }
    return {};
}

Printer* MachineListModel::machineAt(const QModelIndex& index) const
{
    const auto* machine = dynamic_cast<const Item*>(itemFromIndex(index));
    return machine == nullptr ? nullptr : m_trovekQt.printerFromKey(machine->key());
}

void MachineListModel::update()
{
    // Removing a row tells views, whose owners may change a flag here in return.
    m_updateAgain = true;
    if (m_updating)
        return;
    const QScopedValueRollback<bool> guard(m_updating, true);
    while (m_updateAgain) {
        m_updateAgain = false;
        updateOnce();
    }
}

void MachineListModel::toggleArchetypes(bool archetypes)
{
    m_archetypes = archetypes;
    update();
}

void MachineListModel::toggleSingleToolMachines(bool enableSingles)
{
    m_enableSingles = enableSingles;
    update();
}

void MachineListModel::setShowCboArchetypes(bool showCboArchetypes)
{
    m_showCboArchetypes = showCboArchetypes;
    update();
}

bool MachineListModel::isWanted(const Printer& printer) const
{
    if (printer.canPrint() == m_archetypes)
        return false;
    if (!m_enableSingles && printer.numberOfExtruders() < 2)
        return false;
    return m_showCboArchetypes || printer.type() != Printer::CubioSingle || printer.canPrint();
}

void MachineListModel::updateOnce()
{
    if (!m_trovekQt.isConnected()) {
        removeAllRows();
        return;
    }

    // Printers live as long as the client, so views of their keys are safe here.
    const std::list<Printer*> printers = m_trovekQt.printers();
    std::unordered_set<std::string_view> unlisted;
    unlisted.reserve(printers.size());
    for (const Printer* printer : printers) {
        if (isWanted(*printer))
            unlisted.insert(printer->key().name());
    }

    bool removed = false;
    for (int row = 0; row < rowCount();) {
        const auto* machine = dynamic_cast<const Item*>(item(row));
        if (machine != nullptr && unlisted.erase(machine->key().name()) != 0) {
            ++row;
        } else {
            removeRow(row);
            removed = true;
        }
    }

    QList<QStandardItem*> added;
    for (const Printer* printer : printers) {
        if (unlisted.count(printer->key().name()) != 0)
            added.append(new Item(*printer, m_showIcons));
    }
    if (!added.isEmpty())
        invisibleRootItem()->appendRows(added);
    if (removed || !added.isEmpty())
        describeTwins();
}

void MachineListModel::removeAllRows()
{
    // clear() would reset the model, and a combo box does not announce the loss of its selection
    // then.
    if (rowCount() > 0)
        removeRows(0, rowCount());
}

void MachineListModel::describeTwins()
{
    QHash<QString, int> rowsOfName;
    for (int row = 0; row < rowCount(); ++row)
        ++rowsOfName[item(row)->text()];

    for (int row = 0; row < rowCount(); ++row) {
        auto* const machine = dynamic_cast<Item*>(item(row));
        if (machine == nullptr)
            continue;
        const bool hasTwin = rowsOfName.value(machine->text()) > 1;
        const QString toolTip = hasTwin ? plainToolTip(machine->place()) : QString();
        // Setting an equal text would still be announced the first time.
        if (machine->toolTip() != toolTip)
            machine->setToolTip(toolTip);
    }
}

} // namespace trovek
