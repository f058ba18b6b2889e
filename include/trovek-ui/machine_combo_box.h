#pragma once

#include "trovek-ui/export.h"

#include <trovek/printer.h>

#include <QList>
#include <QString>
#include <QWidget>

class QComboBox;

namespace trovek {

class MachineListModel;
class TrovekQt;

/**
 * A combo box of the service's machines, see MachineListModel. Disabled while there are none.
 *
 * When the selected machine goes away nothing is selected until the user chooses another, unless it
 * was the last: then the first that comes is selected.
 *
 * A label's buddy and a tab order may name this widget: the inner combo box takes its focus.
 */
class TROVEK_UI_EXPORT MachineComboBox : public QWidget
{
    Q_OBJECT

public:
    /** @param trovekQt not owned; must outlive the widget */
    explicit MachineComboBox(TrovekQt& trovekQt, QWidget* parent = nullptr);
    ~MachineComboBox() override;

    /** The current row's machine; null when there is none or the service no longer knows it. */
    Printer* machine() const;
    /** Those of all rows, in their order. */
    QList<Printer*> machines() const;
    bool archetypesEnabled() const;

public slots:
    /** Nothing happens when the machine is not listed. */
    void select(Printer* machine);
    /** Selects by the name of the machine's key; nothing happens without a connection. */
    void select(QString printerUniqueName);
    /** The last machine of the type becomes current. */
    void select(Printer::Type machineType);
    /** Switches between archetypes and real machines and keeps the type selected where it can. */
    void toggleArchetypes(bool archetypes);
    void toggleSingleToolMachines(bool enableSingles);
    void setShowCboArchetypes(bool showCboArchetypes);

signals:
    /** The selected row is another one now; null when none is selected any more. */
    void machineSelected(Printer* machine);

protected slots:
    void handleSelection(int index);

private:
    void deselectIfGone();
    void updateEnabled();

    MachineListModel* const m_model;
    TrovekQt& m_trovekQt;
    QComboBox* const m_comboBox;
};

} // namespace trovek
