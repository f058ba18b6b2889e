#pragma once

#include <QWidget>

#include <memory>

class QPushButton;
class QTreeView;

namespace ostrand {

class JobListModel;

/** The list of jobs with what can be done to them. */
class JobsView : public QWidget
{
    Q_OBJECT

public:
    /** @param model not owned; must outlive the view */
    explicit JobsView(JobListModel& model, QWidget* parent = nullptr);

public slots:
    /** Cancels the selected job; a print only after a question, since it cannot be taken up again.
     */
    void cancelSelected();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showMenu(const QPoint& position);
    void updateActions();
    bool confirmCancel(int row);
    int selectedRow() const;

    JobListModel& m_model;
    QTreeView* const m_list;
    QAction* const m_cancel;
    QAction* const m_clear;
};

} // namespace ostrand
