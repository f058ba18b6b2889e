#include "trovek-ui/messages/message.h"

#include <QObject>

namespace message {

Message::Message(QMessageBox::Icon icon, const QString& heading, const QString& body,
                 const Buttons& buttons, QWidget* parent, QSettings* settings,
                 const QString& settingsKey)
    : m_box(new trovek::MessageBox(buttons, heading, body, icon, settings, settingsKey, parent))
{}

trovek::MessageBox* Message::box() const
{
    return m_box;
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
