#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QStackedLayout;

namespace trovek {

/**
 * Asks whether the toolpaths are looked at first; while they are made, the progress stands in the
 * same place.
 */
class PreviewRow : public QWidget
{
    Q_OBJECT

public:
    explicit PreviewRow(QWidget* parent = nullptr);

    bool isWanted() const;
    void setWanted(bool wanted);

    /** Gives the cancel button the focus when the progress comes. */
    void showProgress(const QString& stage, int percent);
    /** @param notice what went wrong the last time; empty for nothing */
    void showQuestion(const QString& notice = QString());
    void clearNotice();

signals:
    void cancelClicked();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* createProgressPage();
    void elideStage();

    QStackedLayout* const m_pages;
    QCheckBox* const m_wanted;
    QLabel* const m_stage;
    QProgressBar* const m_progress;
    QPushButton* const m_cancel;
    QLabel* const m_notice;
    QString m_stageText;
};

} // namespace trovek
