#include "trovek-ui/messages/message.h"

#include <QObject>
#include <QTextDocumentFragment>

namespace message {

namespace {

/** Narrower lines make a column of a long text that stands under a short heading. */
constexpr int kLineCharacters = 68;

QString wrapGuide(const QString& body)
{
    const QString plain =
        Qt::mightBeRichText(body) ? QTextDocumentFragment::fromHtml(body).toPlainText() : body;
    // A line that is exactly as wide as its text still wraps where widths are rounded.
    return plain.left(kLineCharacters) + QLatin1Char('m');
}

} // namespace

Message::Message(QMessageBox::Icon icon, const QString& heading, const QString& body,
                 const Buttons& buttons, QWidget* parent, QSettings* settings,
                 const QString& settingsKey)
    : m_box(new trovek::MessageBox(buttons, heading, body, icon, settings, settingsKey, parent))
{
    m_box->setWrapGuideText(wrapGuide(body));
}

trovek::MessageBox* Message::box() const
{
    return m_box;
}

void Message::showAsPlainText()
{
    m_box->setTextFormat(Qt::PlainText);
}

int Message::run()
{
    if (m_box)
        m_box->maybeShowModal();
    return m_box ? m_box->finishCode() : 0;
}

Notice::Notice(QMessageBox::Icon icon, const QString& heading, const QString& body, QWidget* parent,
               QSettings* settings, const QString& settingsKey)
    : Message(icon, heading, body, {{QObject::tr("&OK"), 0, Default}}, parent, settings,
              settingsKey)
{}

void Notice::exec()
{
    run();
}

} // namespace message
