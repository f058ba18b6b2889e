#pragma once

#include "trovek-ui/export.h"

#include <trovek/port.h>

#include <QListView>
#include <QStandardItemModel>

#include <string>

namespace trovek {

class Printer;
class TrovekQt;

/** The ports that the service sees, each with the machine on it as far as that is known. */
class TROVEK_UI_EXPORT PortListModel : public QStandardItemModel
{
    Q_OBJECT

public:
    /** A port by its name, or by the kind of machine that is open on it. */
    class TROVEK_UI_EXPORT PortItem : public QStandardItem
    {
    public:
        explicit PortItem(const Port& port);

        const Port& port() const { return m_port; }
        /** @throws std::logic_error "PortItem: null printer" */
        void setPrinter(const Printer* printer);
        /** The port goes by its name again. */
        void clearPrinter();

    private:
        const Port m_port;
    };

    /** @param facade not owned; must outlive the model */
    explicit PortListModel(TrovekQt& facade, QObject* parent = nullptr);

    /** @throws std::logic_error "Invalid PortListModel index" */
    Port port(const QModelIndex& index) const;

private slots:
    /** Has come or gone. */
    void updatePort(const std::string& name);
    void showPrinter(trovek::Printer* printer);
    void hidePrinter(trovek::Printer* printer);

private:
    PortItem* itemOf(const std::string& portName) const;

    TrovekQt& m_facade;
};

/**
 * Chooses one port.
 *
 * The first port that comes while none is chosen is chosen. When the chosen one goes none is: its
 * neighbour must not get what was meant for it.
 */
class TROVEK_UI_EXPORT PortListView : public QListView
{
    Q_OBJECT

public:
    explicit PortListView(QWidget* parent = nullptr);

signals:
    void portSelectionChanged(const std::string& portName);

protected:
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
};

} // namespace trovek
