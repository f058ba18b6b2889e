#pragma once

#include <QSortFilterProxyModel>
#include <QString>
#include <QWidget>

class QComboBox;
class QLineEdit;
class QSettings;
class QTreeView;

namespace ostrand {

class LogModel;

/** Lets entries through up to a severity, whose line holds a text. */
class LogFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setMaximumSeverity(int severity);
    void setText(const QString& text);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    int m_maximumSeverity = 2;
    QString m_text;
};

/** The log as it is written. It follows the newest entry as long as that is in sight. */
class LogView : public QWidget
{
    Q_OBJECT

public:
    /**
     * @param model    not owned; must outlive the view
     * @param settings not owned; remembers the folder of the last saved log
     */
    LogView(LogModel& model, QSettings& settings, QWidget* parent = nullptr);

    /**
     * Writes what is shown, an entry a line, UTF-8; an existing file is replaced as a whole or not
     * at all.
     * @return empty on success, else why not, for the user
     */
    QString saveTo(const QString& path) const;

public slots:
    /** Asks where to. */
    void save();

private:
    void copySelected();

    LogModel& m_model;
    QSettings& m_settings;
    LogFilter* const m_filter;
    QTreeView* const m_list;
    QComboBox* const m_severity;
    QLineEdit* const m_search;
    bool m_following = true;
};

} // namespace ostrand
