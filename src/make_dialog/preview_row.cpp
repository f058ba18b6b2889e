#include "make_dialog/preview_row.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedLayout>

namespace trovek {

namespace {

enum Page : int { QuestionPage, ProgressPage };

} // namespace

PreviewRow::PreviewRow(QWidget* parent)
    : QWidget(parent)
    , m_pages(new QStackedLayout)
    , m_wanted(new QCheckBox(tr("Preview before printing"), this))
    , m_stage(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_cancel(new QPushButton(tr("C&ancel Preview"), this))
    , m_notice(new QLabel(this))
{
    m_wanted->setObjectName(QStringLiteral("previewWanted"));
    m_notice->setObjectName(QStringLiteral("previewNotice"));
    m_notice->setTextFormat(Qt::PlainText);
    m_notice->setWordWrap(true);
    m_notice->hide();

    m_pages->insertWidget(QuestionPage, m_wanted);
    m_pages->insertWidget(ProgressPage, createProgressPage());
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(m_pages);
    column->addWidget(m_notice);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    connect(m_cancel, &QPushButton::clicked, this, &PreviewRow::cancelClicked);
}

QWidget* PreviewRow::createProgressPage()
{
    auto* const page = new QWidget(this);
    m_stage->setObjectName(QStringLiteral("previewStage"));
    m_stage->setTextFormat(Qt::PlainText);
    // However long the stage is, the dialog keeps its width.
    m_stage->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_progress->setObjectName(QStringLiteral("previewProgress"));
    m_progress->setAccessibleName(tr("Progress of the preview"));
    m_progress->setRange(0, 100);
    m_cancel->setObjectName(QStringLiteral("cancelPreviewButton"));
    m_cancel->setAutoDefault(false);

    auto* const row = new QHBoxLayout(page);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_stage, 1);
    row->addWidget(m_progress, 1);
    row->addWidget(m_cancel);
    return page;
}

bool PreviewRow::isWanted() const
{
    return m_wanted->isChecked();
}

void PreviewRow::setWanted(bool wanted)
{
    m_wanted->setChecked(wanted);
}

void PreviewRow::showProgress(const QString& stage, int percent)
{
    m_stageText = stage.isEmpty() ? tr("Slicing") : stage.simplified();
    m_stage->setToolTip(Qt::convertFromPlainText(m_stageText));
    m_progress->setValue(qBound(0, percent, 100));
    clearNotice();
    if (m_pages->currentIndex() != ProgressPage) {
        m_pages->setCurrentIndex(ProgressPage);
        m_cancel->setFocus();
    }
    elideStage();
}

void PreviewRow::showQuestion(const QString& notice)
{
    m_notice->setText(notice);
    m_notice->setVisible(!notice.isEmpty());
    m_pages->setCurrentIndex(QuestionPage);
}

void PreviewRow::clearNotice()
{
    m_notice->hide();
}

void PreviewRow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    elideStage();
}

void PreviewRow::elideStage()
{
    m_pages->activate();
    m_stage->setText(m_stage->fontMetrics().elidedText(m_stageText, Qt::ElideRight,
                                                       m_stage->contentsRect().width()));
}

} // namespace trovek
