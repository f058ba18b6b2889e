#include "trovek-ui/machine_combo_box.h"

#include "trovek-ui/machine_list_model.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/text.h>

#include <QComboBox>
#include <QHBoxLayout>

namespace trovek {

MachineComboBox::MachineComboBox(TrovekQt& trovekQt, QWidget* parent)
    : QWidget(parent)
    , m_model(new MachineListModel(trovekQt, false, this))
    , m_trovekQt(trovekQt)
    , m_comboBox(new QComboBox(this))
{
    m_comboBox->setObjectName(QStringLiteral("machines"));
    // Before the combo box, which would select a neighbour when it hears the same.
    connect(m_model, &MachineListModel::rowsAboutToBeRemoved, this,
            &MachineComboBox::deselectIfGone);
    m_comboBox->setModel(m_model);
    // Machines come while the dialog is open, and their names are not all as long.
    m_comboBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_comboBox);

    // A buddy needs a focus policy of this widget itself.
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_comboBox);

    connect(m_comboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &MachineComboBox::handleSelection);
    // Rows may also come and go while nothing is selected, which the combo box does not tell.
    connect(m_model, &MachineListModel::rowsInserted, this, &MachineComboBox::updateEnabled);
    connect(m_model, &MachineListModel::rowsRemoved, this, &MachineComboBox::updateEnabled);
    updateEnabled();
}

MachineComboBox::~MachineComboBox() = default;

Printer* MachineComboBox::machine() const
{
    return m_model->machineAt(m_model->index(m_comboBox->currentIndex(), 0));
}

QList<Printer*> MachineComboBox::machines() const
{
    QList<Printer*> printers;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (Printer* const printer = m_model->machineAt(m_model->index(row, 0)))
            printers.append(printer);
    }
    return printers;
}

bool MachineComboBox::archetypesEnabled() const
{
    return m_model->archetypesEnabled();
}

void MachineComboBox::select(Printer* machine)
{
    const QModelIndex index = m_model->indexOf(machine);
    if (index.isValid() && index.row() < m_comboBox->count())
        m_comboBox->setCurrentIndex(index.row());
}

void MachineComboBox::select(QString printerUniqueName)
{
    if (!m_trovekQt.isConnected())
        return;
    const std::string name = toStdString(printerUniqueName);
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const Printer* const printer = m_model->machineAt(m_model->index(row, 0));
        if (printer != nullptr && printer->key().name() == name)
            m_comboBox->setCurrentIndex(row);
    }
}

void MachineComboBox::select(Printer::Type machineType)
{
    const int count = m_model->rowCount();
    for (int row = 0; row < count; ++row) {
        const Printer* const printer = m_model->machineAt(m_model->index(row, 0));
        if (printer != nullptr && printer->type() == machineType)
            m_comboBox->setCurrentIndex(row);
    }
}

void MachineComboBox::toggleArchetypes(bool archetypes)
{
    const Printer* const current = machine();
    m_model->toggleArchetypes(archetypes);
    if (current != nullptr)
        select(current->type());
}

void MachineComboBox::toggleSingleToolMachines(bool enableSingles)
{
    m_model->toggleSingleToolMachines(enableSingles);
}

void MachineComboBox::setShowCboArchetypes(bool showCboArchetypes)
{
    m_model->setShowCboArchetypes(showCboArchetypes);
}

void MachineComboBox::handleSelection(int index)
{
    updateEnabled();
    emit machineSelected(m_model->machineAt(m_model->index(index, 0)));
}

// Whoever prints without looking again would otherwise do so on another machine.
void MachineComboBox::deselectIfGone()
{
    if (machine() == nullptr)
        m_comboBox->setCurrentIndex(-1);
}

void MachineComboBox::updateEnabled()
{
    setEnabled(m_model->rowCount() > 0);
}

} // namespace trovek
