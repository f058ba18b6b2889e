#include "log_view.h"

#include "icons.h"
#include "log_model.h"

#include <trovek-ui/file_chooser.h>
#include <trovek-ui/message_box.h>

#include <trovek/log.h>

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSaveFile>
#include <QScrollBar>
#include <QSettings>
#include <QStandardPaths>
#include <QTreeView>
#include <QVBoxLayout>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\log_view";
constexpr char kLastDirKey[] = "ostrand/lastLogDir";

} // namespace

void LogFilter::setMaximumSeverity(int severity)
{
    m_maximumSeverity = severity;
    invalidateFilter();
}

void LogFilter::setText(const QString& text)
{
    m_text = text;
    invalidateFilter();
}

bool LogFilter::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const QModelIndex index = sourceModel()->index(row, 0, parent);
    if (index.data(LogModel::SeverityRole).toInt() > m_maximumSeverity)
        return false;
    return m_text.isEmpty() ||
           index.data(LogModel::LineRole).toString().contains(m_text, Qt::CaseInsensitive);
}

LogView::LogView(LogModel& model, QSettings& settings, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_settings(settings)
    , m_filter(new LogFilter(this))
    , m_list(new QTreeView(this))
    , m_severity(new QComboBox(this))
    , m_search(new QLineEdit(this))
{
    m_filter->setSourceModel(&m_model);
    m_list->setObjectName(QStringLiteral("log"));
    m_list->setAccessibleName(tr("Log"));
    m_list->setModel(m_filter);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->header()->resizeSection(LogModel::TimeColumn, 95);
    m_list->header()->resizeSection(LogModel::SeverityColumn, 90);
    m_list->header()->resizeSection(LogModel::UnitColumn, 230);

    m_severity->setObjectName(QStringLiteral("logSeverity"));
    m_severity->addItem(tr("Errors"), 0);
    m_severity->addItem(tr("Errors and progress"), 1);
    m_severity->addItem(tr("Everything"), 2);
    m_severity->setCurrentIndex(1);
    m_filter->setMaximumSeverity(1);
    m_search->setObjectName(QStringLiteral("logSearch"));
    m_search->setPlaceholderText(tr("Find in the log"));
    m_search->setAccessibleName(tr("Find in the log"));
    m_search->setClearButtonEnabled(true);
    auto* saveButton = new QPushButton(icon("save"), tr("Sa&ve Log..."), this);
    saveButton->setObjectName(QStringLiteral("saveLog"));

    auto* show = new QLabel(tr("S&how:"), this);
    show->setBuddy(m_severity);
    auto* controls = new QHBoxLayout;
    controls->addWidget(show);
    controls->addWidget(m_severity);
    controls->addWidget(m_search, 1);
    controls->addWidget(saveButton);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(controls);
    layout->addWidget(m_list);

    auto* copy = new QAction(tr("&Copy"), m_list);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    m_list->addAction(copy);
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(copy, &QAction::triggered, this, &LogView::copySelected);

    connect(saveButton, &QPushButton::clicked, this, &LogView::save);
    connect(m_search, &QLineEdit::textChanged, m_filter, &LogFilter::setText);
    connect(m_severity, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { m_filter->setMaximumSeverity(m_severity->currentData().toInt()); });
    const QScrollBar* bar = m_list->verticalScrollBar();
    connect(m_filter, &QAbstractItemModel::rowsAboutToBeInserted, this,
            [this, bar] { m_following = bar->value() == bar->maximum(); });
    connect(m_filter, &QAbstractItemModel::rowsInserted, m_list, [this] {
        if (m_following)
            m_list->scrollToBottom();
    });
}

void LogView::save()
{
    try {
        const QString dir =
            m_settings
                .value(QLatin1String(kLastDirKey),
                       QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
                .toString();
        const QPointer<LogView> self(this);
        const trovek::FileChooserResult chosen = trovek::chooseSavePath(
            this, tr("Save Log"), QDir(dir).filePath(QStringLiteral("ostrand.log")),
            trovek::FileFilterList({trovek::FileFilter(tr("Log files"), QStringLiteral("log")),
                                    trovek::FileFilter(tr("Text files"), QStringLiteral("txt"))}),
            nullptr);
        if (!self || chosen.cancelled)
            return;
        const QString path = chosen.paths.first();
        m_settings.setValue(QLatin1String(kLastDirKey), QFileInfo(path).absolutePath());
        const QString failure = saveTo(path);
        if (!failure.isEmpty())
            trovek::displayCriticalError(tr("The log could not be saved"), failure, this);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

QString LogView::saveTo(const QString& path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    for (int row = 0; row < m_filter->rowCount(); ++row) {
        file.write(m_filter->index(row, 0).data(LogModel::LineRole).toString().toUtf8());
        file.write("\n");
    }
    return file.flush() && file.commit() ? QString() : file.errorString();
}

void LogView::copySelected()
{
    QStringList lines;
    for (int row = 0; row < m_filter->rowCount(); ++row) {
        const QModelIndex index = m_filter->index(row, 0);
        if (m_list->selectionModel()->isSelected(index))
            lines.append(index.data(LogModel::LineRole).toString());
    }
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

} // namespace ostrand
