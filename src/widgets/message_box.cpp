#include "trovek-ui/message_box.h"

#include "widgets/copyable_label.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalMapper>
#include <QStyle>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>

#include <stdexcept>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src/widgets/message_box";

constexpr int kIconSide = 48;
constexpr int kColumnSpacing = 8;
constexpr double kHeadingScale = 1.25;
/** Wider headings wrap. In average characters; a line of this length fits on every screen. */
constexpr int kHeadingCharacters = 70;
constexpr int kLongWord = 30;

void validate(const std::vector<MessageBox::Button>& buttons)
{
    bool hasDefault = false;
    for (auto button = buttons.begin(); button != buttons.end(); ++button) {
        for (auto later = button + 1; later != buttons.end(); ++later) {
            if (button->text == later->text)
                throw std::runtime_error("Duplicate text in MessageBox buttons");
            if (button->code == later->code)
                throw std::runtime_error("Duplicate code in MessageBox buttons");
        }
        if (button->flags & MessageBox::Button::Default) {
            if (hasDefault)
                throw std::runtime_error("More than one default MessageBox button");
            hasDefault = true;
        }
    }
    if (!hasDefault)
        throw std::runtime_error("A default MessageBox button is required");
}

QStyle::StandardPixmap standardPixmap(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Information:
        return QStyle::SP_MessageBoxInformation;
    case QMessageBox::Warning:
        return QStyle::SP_MessageBoxWarning;
    case QMessageBox::Critical:
        return QStyle::SP_MessageBoxCritical;
    case QMessageBox::Question:
        return QStyle::SP_MessageBoxQuestion;
    case QMessageBox::NoIcon:
        break;
    }
    throw std::runtime_error("Invalid MessageBox icon");
}

/** An icon gives no picture larger than its largest, so a small one is scaled up here. */
QPixmap iconPixmap(QMessageBox::Icon icon, const QWidget* widget)
{
    const qreal ratio = widget->devicePixelRatioF();
    const int side = qRound(kIconSide * ratio);
    const QIcon standardIcon = widget->style()->standardIcon(standardPixmap(icon), nullptr, widget);
    QPixmap pixmap = standardIcon.pixmap(side, side);
    pixmap.setDevicePixelRatio(1);
    if (pixmap.size() != QSize(side, side))
        pixmap = pixmap.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

QFont headingFont(QFont font)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kHeadingScale);
    else
        font.setPixelSize(qRound(font.pixelSize() * kHeadingScale));
    font.setWeight(QFont::Bold);
    return font;
}

/** The word with places to wrap at between its letters. */
QString breakable(const QString& word)
{
    QString result;
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, word);
    int begin = 0;
    while (letters.toNextBoundary() > 0) {
        result += word.midRef(begin, letters.position() - begin);
        result += QChar(0x200b);
        begin = letters.position();
    }
    return result;
}

/** A heading with a file's name in it may be wider than the screen, with no blank to wrap at. */
void wrapLongHeading(QLabel* heading)
{
    const int limit = heading->fontMetrics().averageCharWidth() * kHeadingCharacters;
    if (heading->sizeHint().width() <= limit)
        return;
    QStringList words = heading->text().split(QLatin1Char(' '));
    for (QString& word : words) {
        if (word.size() > kLongWord)
            word = breakable(word);
    }
    heading->setText(words.join(QLatin1Char(' ')));
    heading->setWordWrap(true);
    heading->setMinimumWidth(limit);
}

} // namespace

MessageBox::Button::Button(const QString& label, std::int32_t resultCode, std::uint32_t buttonFlags)
    : text(label)
    , code(resultCode)
    , flags(buttonFlags)
{
    if (flags > Default)
        throw std::runtime_error("Invalid flags in MessageBox::Button");
}

MessageBox::MessageBox(const std::vector<Button>& buttons, const QString& title,
                       const QString& text, QMessageBox::Icon icon, QWidget* parent)
    : MessageBox(buttons, title, text, icon, nullptr, QString(), parent)
{}

MessageBox::MessageBox(const std::vector<Button>& buttons, const QString& title,
                       const QString& text, QMessageBox::Icon icon, QSettings* settings,
                       const QString& settingsKey, QWidget* parent)
    : QDialog(parent)
    , m_settings(settings)
    , m_settingsKey(settingsKey)
{
    if (settings) {
        if (settingsKey.isEmpty())
            throw std::runtime_error("settingsKey is invalid");
        m_dontShowAgain = new QCheckBox(tr("Don't show this message again"), this);
        m_dontShowAgain->setObjectName(QStringLiteral("dontShowAgain"));
    }
    init(buttons, title, text, icon);
}

void MessageBox::init(const std::vector<Button>& buttons, const QString& title, const QString& text,
                      QMessageBox::Icon icon)
{
    TROVEK_LOG(1) << toStdString(title) << ", " << toStdString(text) << std::endl;
    validate(buttons);

    // The heading stands inside the box; screen readers know it by the accessible name.
    setWindowTitle(QStringLiteral(" "));
    setAccessibleName(title);
    setAccessibleDescription(text);

    auto* iconLabel = new QLabel(this);
    iconLabel->setObjectName(QStringLiteral("icon"));
    iconLabel->setPixmap(iconPixmap(icon, this));
    iconLabel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto* heading = new QLabel(this);
    heading->setObjectName(QStringLiteral("heading"));
    heading->setTextFormat(Qt::PlainText);
    heading->setText(title);
    heading->setFont(headingFont(font()));
    wrapLongHeading(heading);

    m_textLabel = new CopyableLabel(text, this);
    m_textLabel->setObjectName(QStringLiteral("text"));
    m_textLabel->setWordWrap(true);
    m_textLabel->setHidden(text.isEmpty());

    auto* column = new QVBoxLayout;
    column->setSpacing(kColumnSpacing);
    column->addWidget(heading);
    column->addWidget(m_textLabel);
    if (m_dontShowAgain)
        column->addWidget(m_dontShowAgain);
    column->addLayout(createButtonsAndLayout(buttons));

    auto* outer = new QHBoxLayout(this);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(iconLabel, 0, Qt::AlignLeft | Qt::AlignTop);
    outer->addLayout(column, 1);

    m_defaultButton->setFocus(Qt::OtherFocusReason);
    connect(this, &QDialog::rejected, this, &MessageBox::mapReject);
}

QLayout* MessageBox::createButtonsAndLayout(const std::vector<Button>& buttons)
{
    auto* row = new QHBoxLayout;
    row->addStretch();
    auto* mapper = new QSignalMapper(this);
    for (const Button& button : buttons) {
        auto* widget = new QPushButton(button.text, this);
        widget->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Minimum);
        row->addWidget(widget, 0, Qt::AlignRight);
        if (button.flags & Button::Default) {
            m_defaultButton = widget;
            widget->setDefault(true);
        }
        if (button.code == 0) {
            connect(widget, &QPushButton::clicked, this, &MessageBox::reject);
            continue;
        }
        connect(widget, &QPushButton::clicked, this, &MessageBox::accept);
        connect(widget, &QPushButton::clicked, mapper, qOverload<>(&QSignalMapper::map));
        mapper->setMapping(widget, button.code);
    }
    connect(mapper, SIGNAL(mapped(int)), this, SLOT(mapClick(int)));
    return row;
}

bool MessageBox::maybeShowModal()
{
    m_finishCode = 0;
    if (skip())
        return false;
    exec();
    return true;
}

bool MessageBox::maybeShowNonModal()
{
    m_finishCode = 0;
    if (skip())
        return false;
    show();
    raise();
    activateWindow();
    return true;
}

bool MessageBox::skip() const
{
    if (!m_settings)
        return false;
    TROVEK_LOG(1) << "Skipping message box" << std::endl;
    return m_settings->value(storedKey()).toBool();
}

int MessageBox::finishCode() const
{
    return m_finishCode;
}

void MessageBox::setWrapGuideText(const QString& guide)
{
    m_textLabel->ensurePolished();
    m_textLabel->setMinimumWidth(m_textLabel->fontMetrics().boundingRect(guide).width());
}

void MessageBox::setTextFormat(Qt::TextFormat format)
{
    m_textLabel->setTextFormat(format);
}

void MessageBox::showEvent(QShowEvent* event)
{
    if (!event->spontaneous())
        m_finishCode = 0;
    QDialog::showEvent(event);
}

void MessageBox::mapClick(int code)
{
    if (code != 0)
        storeChoice();
    TROVEK_LOG(1) << "Message box result code=" << code << std::endl;
    m_finishCode = code;
    emit finished(code);
}

void MessageBox::mapReject()
{
    TROVEK_LOG(1) << "Message box rejected" << std::endl;
    storeChoice();
    m_finishCode = 0;
    emit finished(0);
}

QString MessageBox::storedKey() const
{
    return QStringLiteral("MessageBox/") + m_settingsKey;
}

void MessageBox::storeChoice()
{
    if (m_settings)
        m_settings->setValue(storedKey(), m_dontShowAgain->isChecked());
}

void displayCriticalError(const QString& title, const QString& text, QWidget* parent)
{
    displayOKBox(title, text, QMessageBox::Critical, parent);
}

void displayOKBox(const QString& title, const QString& text, QMessageBox::Icon icon,
                  QWidget* parent)
{
    try {
        const std::vector<MessageBox::Button> buttons{
            {QObject::tr("&OK"), 1, MessageBox::Button::Default}};
        auto* box = new MessageBox(buttons, title, text, icon, parent);
        box->exec();
    } catch (const std::runtime_error& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        QMessageBox::critical(parent, QStringLiteral(" "), QString::fromUtf8(error.what()),
                              QMessageBox::Ok);
    }
}

} // namespace trovek
