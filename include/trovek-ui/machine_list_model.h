#pragma once

#include "trovek-ui/export.h"

#include <trovek/machine_name.h>

#include <QList>
#include <QModelIndex>
#include <QStandardItemModel>
#include <QString>

#include <string>

namespace trovek {

class Printer;
class TrovekQt;

/**
 * The machines that the service knows, one a row, kept current as they come and go.
 *
 * It lists either real machines or archetypes (machine types that can be exported for but not
 * printed on), never both; without a connection it is empty. Rows that stay keep their order, new
 * ones go to the end, and nothing is emitted when nothing has changed. Rows with equal names carry
 * the machine's key and port as tool tip. GUI thread only.
 */
class TROVEK_UI_EXPORT MachineListModel : public QStandardItemModel
{
    Q_OBJECT

public:
    /** One row. It keeps the machine's key, never its object. */
    class TROVEK_UI_EXPORT Item : public QStandardItem
    {
    public:
        /** An icon that cannot be loaded is logged and left out. */
        Item(const Printer& printer, bool showIcon);

        const MachineName& key() const { return m_key; }
        /** Tells the machine from others of its name: its key, and its port if it is on one. */
        QString place() const;

    private:
        const MachineName m_key;
        const std::string m_portName;
    };

    /**
     * Lists the real machines at once.
     * @param trovekQt  not owned; must outlive the model
     * @param showIcons rows carry the machine type's icon
     */
    MachineListModel(TrovekQt& trovekQt, bool showIcons, QObject* parent = nullptr);
    ~MachineListModel() override;

    bool archetypesEnabled() const { return m_archetypes; }
    bool contains(const Printer* printer) const;
    /** Invalid when there is no such row. */
    QModelIndex indexOf(const Printer* printer) const;
    /** Null for an index without a row, and for a machine that the service no longer knows. */
    Printer* machineAt(const QModelIndex& index) const;

public slots:
    /** Asks the service again; the service's signals do this by themselves. */
    void update();
    /** Archetypes instead of real machines; off at construction. */
    void toggleArchetypes(bool archetypes);
    /** Whether machines with one extruder are listed; on at construction. */
    void toggleSingleToolMachines(bool enableSingles);
    /** Whether the archetype of the single Cubio is listed; the dual one always is. On at first. */
    void setShowCboArchetypes(bool showCboArchetypes);

private:
    bool isWanted(const Printer& printer) const;
    void updateOnce();
    void removeAllRows();
    void describeTwins();

    TrovekQt& m_trovekQt;
    bool m_archetypes = false;
    bool m_enableSingles = true;
    bool m_showCboArchetypes = true;
    const bool m_showIcons;
    bool m_updating = false;
    bool m_updateAgain = false;
};

} // namespace trovek
