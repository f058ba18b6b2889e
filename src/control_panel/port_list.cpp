#include "trovek-ui/port_list.h"

#include "trovek-ui/machine_types.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <exception>
#include <stdexcept>

namespace trovek {

static constexpr char kLogUnit[] = "src\\control_panel\\port_list";

PortListModel::PortItem::PortItem(const Port& port)
    : m_port(port)
{
    setEditable(false);
    setToolTip(toQString(port.displayName()).toHtmlEscaped());
    clearPrinter();
}

void PortListModel::PortItem::setPrinter(const Printer* printer)
{
    if (!printer)
        throw std::logic_error("PortItem: null printer");
    setText(printerTypeToHumanString(printer->type(), PrinterStringInSentence));
}

void PortListModel::PortItem::clearPrinter()
{
    setText(toQString(m_port.name()));
}

PortListModel::PortListModel(TrovekQt& facade, QObject* parent)
    : QStandardItemModel(parent)
    , m_facade(facade)
{
    connect(&m_facade, &TrovekQt::portAttached, this, &PortListModel::updatePort);
    connect(&m_facade, &TrovekQt::portDetached, this, &PortListModel::updatePort);
    connect(&m_facade, &TrovekQt::printerAdded, this, &PortListModel::showPrinter);
    connect(&m_facade, &TrovekQt::printerRemoved, this, &PortListModel::hidePrinter);
    for (const Port& port : m_facade.ports())
        appendRow(new PortItem(port));
    for (Printer* printer : m_facade.printers())
        showPrinter(printer);
}

Port PortListModel::port(const QModelIndex& index) const
{
    const auto* item = dynamic_cast<const PortItem*>(itemFromIndex(index));
    if (!item)
        throw std::logic_error("Invalid PortListModel index");
    return item->port();
}

PortListModel::PortItem* PortListModel::itemOf(const std::string& portName) const
{
    for (int row = 0; row < rowCount(); ++row) {
        auto* candidate = dynamic_cast<PortItem*>(item(row));
        if (candidate && candidate->port().name() == portName)
            return candidate;
    }
    return nullptr;
}

void PortListModel::updatePort(const std::string& name)
{
    // One device may come before another of the same name has gone, and a port be told of that has
    // gone again.
    std::set<Port> missing = m_facade.ports();
    for (int row = rowCount() - 1; row >= 0; --row) {
        const auto* known = dynamic_cast<PortItem*>(item(row));
        if (known && missing.erase(known->port()) == 0 && known->port().name() == name)
            removeRow(row);
    }
    for (const Port& port : missing) {
        if (port.name() == name)
            appendRow(new PortItem(port));
    }
    if (Printer* printer = m_facade.printerFromKey(m_facade.printerFromPortName(name)))
        showPrinter(printer);
}

void PortListModel::showPrinter(Printer* printer)
{
    if (PortItem* known = itemOf(printer->portName()))
        known->setPrinter(printer);
}

void PortListModel::hidePrinter(Printer* printer)
{
    if (PortItem* known = itemOf(printer->portName()))
        known->clearPrinter();
}

PortListView::PortListView(QWidget* parent)
    : QListView(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformItemSizes(true);
}

void PortListView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QListView::rowsInserted(parent, start, end);
    if (!currentIndex().isValid())
        setCurrentIndex(model()->index(start, modelColumn(), parent));
}

void PortListView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end)
{
    // Before Qt passes the choice on to a neighbour.
    const int current = currentIndex().row();
    if (current >= start && current <= end)
        selectionModel()->clear();
    QListView::rowsAboutToBeRemoved(parent, start, end);
}

void PortListView::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected)
{
    QListView::selectionChanged(selected, deselected);
    try {
        if (!selectionModel()->isSelected(currentIndex()))
            return;
        if (const auto* ports = qobject_cast<const PortListModel*>(model()))
            emit portSelectionChanged(ports->port(currentIndex()).name());
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

QItemSelectionModel::SelectionFlags PortListView::selectionCommand(const QModelIndex& index,
                                                                   const QEvent* event) const
{
    // What is current stays selected: the user sees which port the buttons are for.
    const QItemSelectionModel::SelectionFlags command = QListView::selectionCommand(index, event);
    return command & (QItemSelectionModel::Deselect | QItemSelectionModel::Toggle)
               ? QItemSelectionModel::NoUpdate
               : command;
}

} // namespace trovek
