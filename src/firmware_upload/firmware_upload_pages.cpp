#include "firmware_upload/firmware_upload_pages.h"

#include "trovek-ui/firmware_upload_dialog.h"

#include <QComboBox>
#include <QDialog>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace trovek {

using ui::FirmwareUploadDialog;

namespace {

/** So that no line of the texts with line ends of their own is broken once more. */
constexpr int kStatusCharacters = 78;
constexpr int kDescriptionLines = 5;
constexpr int kErrorLines = 3;

/**
 * The second click of a double click, and a key that is held, would press the button of the next
 * page: both lie in one place.
 */
class OncePerPress : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonDblClick)
            return true;
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->isAutoRepeat())
            return true;
        return QObject::eventFilter(watched, event);
    }
};

QLabel* addLabel(const char* name, QWidget* page)
{
    auto* const label = new QLabel(page);
    label->setObjectName(QLatin1String(name));
    // Names and texts of machines and of the service, which may look like markup.
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QLabel* addStatus(const char* name, QWidget* page)
{
    QLabel* const label = addLabel(name, page);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

/**
 * However long the service's texts are, the buttons stay on the screen; short ones do not let the
 * window jump.
 */
QWidget* scrollAreaOf(QLabel* label, int lines, QWidget* page)
{
    auto* const area = new QScrollArea(page);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setWidget(label);
    area->setMinimumHeight(lines * label->fontMetrics().lineSpacing() + 4);
    // The background of the window.
    area->viewport()->setAutoFillBackground(false);
    label->setAutoFillBackground(false);
    return area;
}

/** At the top of its field, however high that is. */
QLabel* topLabel(const QString& text, QWidget* page)
{
    auto* const label = new QLabel(text, page);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    return label;
}

QPushButton* addButton(const QString& text, const char* name, QWidget* page)
{
    auto* const button = new QPushButton(text, page);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    button->installEventFilter(new OncePerPress(button));
    return button;
}

QLayout* rowOf(QPushButton* left, QPushButton* right)
{
    auto* const row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(left);
    row->addWidget(right);
    return row;
}

QVBoxLayout* layoutOf(QWidget* page)
{
    auto* const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}

} // namespace

FirmwareUploadPages::FirmwareUploadPages(QDialog* dialog)
    : stack(new QStackedWidget(dialog))
{
    stack->setObjectName(QStringLiteral("pages"));
    for (int i = Choice; i <= Result; ++i)
        stack->addWidget(new QWidget(stack));
    buildChoice(stack->widget(Choice));
    buildReady(stack->widget(Ready));
    buildResult(stack->widget(Result));
    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(stack);
    next->setDefault(true);
}

void FirmwareUploadPages::buildChoice(QWidget* page)
{
    bot = addLabel("bot", page);
    currentVersion = addLabel("currentVersion", page);
    versions = new QComboBox(page);
    versions->setObjectName(QStringLiteral("versions"));
    description = addStatus("description", page);
    error = addStatus("error", page);
    errorArea = scrollAreaOf(error, kErrorLines, page);
    errorArea->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    showError(QString());
    choiceCancel = addButton(FirmwareUploadDialog::tr("&Cancel"), "choiceCancel", page);
    next = addButton(FirmwareUploadDialog::tr("&Next"), "next", page);

    auto* const form = new QFormLayout;
    form->setObjectName(QStringLiteral("form"));
    form->addRow(FirmwareUploadDialog::tr("Bot:"), bot);
    form->addRow(FirmwareUploadDialog::tr("Current Version:"), currentVersion);
    form->addRow(FirmwareUploadDialog::tr("&Available Versions:"), versions);
    form->addRow(topLabel(FirmwareUploadDialog::tr("Description:"), page),
                 scrollAreaOf(description, kDescriptionLines, page));
    QVBoxLayout* const layout = layoutOf(page);
    layout->addLayout(form, 1);
    layout->addWidget(errorArea);
    layout->addLayout(rowOf(choiceCancel, next));
}

void FirmwareUploadPages::buildReady(QWidget* page)
{
    readyStatus = addStatus("readyStatus", page);
    readyCancel = addButton(FirmwareUploadDialog::tr("&Cancel"), "readyCancel", page);
    upload = addButton(FirmwareUploadDialog::tr("&Upload"), "upload", page);
    upload->setAutoDefault(true);
    QWidget* const area = scrollAreaOf(readyStatus, kDescriptionLines, page);
    area->setMinimumWidth(kStatusCharacters * readyStatus->fontMetrics().averageCharWidth());
    QVBoxLayout* const layout = layoutOf(page);
    layout->addWidget(area, 1);
    layout->addLayout(rowOf(readyCancel, upload));
}

void FirmwareUploadPages::buildResult(QWidget* page)
{
    resultStatus = addStatus("resultStatus", page);
    resultCancel = addButton(FirmwareUploadDialog::tr("&Cancel"), "resultCancel", page);
    main = addButton(FirmwareUploadDialog::tr("&OK"), "main", page);
    main->setAutoDefault(true);
    QVBoxLayout* const layout = layoutOf(page);
    layout->addWidget(resultStatus, 1);
    layout->addLayout(rowOf(resultCancel, main));
}

void FirmwareUploadPages::show(Page page)
{
    stack->setCurrentIndex(page);
}

void FirmwareUploadPages::showError(const QString& text)
{
    error->setText(text);
    error->setVisible(!text.isEmpty());
    errorArea->setVisible(!text.isEmpty());
}

void FirmwareUploadPages::paintNow()
{
    stack->currentWidget()->layout()->activate();
    stack->window()->repaint();
}

} // namespace trovek
