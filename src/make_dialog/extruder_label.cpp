#include "trovek-ui/extruder_label.h"

#include <trovek/log.h>
#include <trovek/printer.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QStyle>

namespace trovek {

namespace {

static constexpr char kLogUnit[] = "src\\make_dialog\\extruder_label";

enum Page : int { EmptyPage, ValuePage };

} // namespace

struct ExtruderLabel::Display
{
    QString text;
    QString toolTip;
    bool isError = false;
};

ExtruderLabel::ExtruderLabel(SlicerConfiguration::Extruder extruder, QWidget* parent)
    : QWidget(parent)
    , m_extruder(extruder)
    , m_pages(new QStackedWidget(this))
{
    auto* const emptyPage = new QWidget(m_pages);
    auto* const valuePage = new QWidget(m_pages);
    m_pages->setObjectName(QStringLiteral("pages"));
    m_pages->insertWidget(EmptyPage, emptyPage);
    m_pages->insertWidget(ValuePage, valuePage);

    auto* const name = new QLabel(tr("Extruder: "), valuePage);
    name->setObjectName(QStringLiteral("name"));
    m_warning = new QLabel(valuePage);
    m_warning->setObjectName(QStringLiteral("warning"));
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_warning->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(side));
    m_value = new QLabel(valuePage);
    m_value->setObjectName(QStringLiteral("value"));
    auto* const row = new QHBoxLayout(valuePage);
    row->setContentsMargins(0, 0, 0, 0);
    // The name ends with a blank.
    row->setSpacing(0);
    m_warning->setContentsMargins(0, 0, 4, 0);
    row->addWidget(name);
    row->addWidget(m_warning);
    row->addWidget(m_value);
    row->addStretch();

    auto* const outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(m_pages);
    m_pages->setMaximumHeight(0);
}

ExtruderLabel::~ExtruderLabel() = default;

void ExtruderLabel::update(const Printer* printer)
{
    const Display display = displayFor(printer);
    const bool changed = display.text != m_value->text() || display.toolTip != toolTip();
    m_isError = display.isError;
    m_value->setText(display.text);
    m_warning->setVisible(display.isError);
    setToolTip(display.toolTip);
    const bool empty = display.text.isEmpty();
    m_pages->setCurrentIndex(empty ? EmptyPage : ValuePage);
    // The form around closes the gap.
    m_pages->setMaximumHeight(empty ? 0 : QWIDGETSIZE_MAX);

    if (display.isError && changed)
        TROVEK_LOG(1) << display.toolTip.toStdString() << std::endl;
}

ExtruderLabel::Display ExtruderLabel::displayFor(const Printer* printer) const
{
    if (!printer)
        return {tr("Invalid machine"), tr("Unexpected error"), true};

    const bool dual = printer->numberOfExtruders() >= 2;
    switch (m_extruder) {
    case SlicerConfiguration::Left:
        return dual ? Display{tr("Left"), tr("The file will be printed with the left extruder")}
                    : Display{tr("Left"), tr("Single-extruder bots have only a right extruder"),
                              true};
    case SlicerConfiguration::Right:
        return dual ? Display{tr("Right"), tr("The file will be printed with the right extruder")}
                    : Display{};
    case SlicerConfiguration::Both:
        return dual ? Display{tr("Dual"), tr("The file will be printed with both extruders")}
                    : Display{tr("Dual"),
                              tr("A dual-extruder file is selected for a single-extruder bot"),
                              true};
    }
    return {tr("Invalid extruder"), tr("Unexpected error"), true};
}

} // namespace trovek
