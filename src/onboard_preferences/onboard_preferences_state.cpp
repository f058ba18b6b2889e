// What the dialog shows of its printer, which may go away, come back and be another one.

#include "onboard_preferences/eeprom_merge.h"
#include "onboard_preferences/onboard_preferences_p.h"
#include "onboard_preferences/preferences_notice.h"
#include "util/wait_cursor.h"

#include "trovek-ui/eeprom_grama.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/trovekqt.h"
#include "trovek-ui/util.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QLayout>

#include <stdexcept>

static constexpr char kLogUnit[] = "src\\onboard_preferences\\onboard_preferences";

namespace trovek {
namespace ui {

OnboardPreferences::Private::Private(OnboardPreferences* dialog, TrovekQt& serviceFacade,
                                     Printer* editedPrinter)
    : q(dialog)
    , facade(serviceFacade)
    , printer(editedPrinter)
    , type(editedPrinter->type())
    , portName(editedPrinter->portName())
{}

// A printer that was just plugged in refuses to be read until it is ready; and nothing changes
// under a question that the user is being asked.
void OnboardPreferences::Private::readWhenReady()
{
    m_readPending = printer->state() == Printer::Connecting || m_openWindows > 0;
    if (!m_readPending)
        readAgain();
    else if (m_openWindows == 0)
        ui.notice->showNotice(tr("The printer is getting ready."));
}

void OnboardPreferences::Private::windowClosed()
{
    --m_openWindows;
    const auto read = [this] {
        if (m_readPending && q->isVisible())
            readWhenReady();
    };
    // After whatever the window was shown for.
    if (m_readPending)
        QMetaObject::invokeMethod(q, read, Qt::QueuedConnection);
}

void OnboardPreferences::Private::readAgain()
{
    if (!ui.grama)
        return;
    const bool wasModified = ui.grama->isModified();
    const Json::Value read = ui.grama->reference();
    const Json::Value before = ui.grama->map();
    bool isOfAnotherKind = printer->type() != type;
    try {
        if (isOfAnotherKind)
            throw std::runtime_error("The printer is of another type than before");
        const WaitCursor cursor;
        const Json::Value map = facade.readEeprom(printer).getEepromMap();
        isOfAnotherKind = true;
        ui.grama->resetToMap(map);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        refuseRead(isOfAnotherKind, before);
        return;
    }
    if (wasModified)
        m_unwritten = Unwritten{read, before};
    portName = printer->portName();
    ui.showPrinter(*printer);
    ui.setPrinterUsable(true);
    showReadAnew();
}

void OnboardPreferences::Private::refuseRead(bool isOfAnotherKind, const Json::Value& before)
{
    if (isOfAnotherKind) {
        try {
            // What was taken of the other document is neither the user's nor this printer's.
            ui.grama->loadEdits(before);
        } catch (const std::exception& error) {
            TROVEK_LOG(0) << error.what() << std::endl;
        }
        ui.notice->showNotice(
            tr("The printer has come back with other preferences (firmware %1). This window cannot "
               "edit them: close it and open it again.")
                .arg(firmwareVersionToString(printer->firmwareVersion())));
    } else {
        ui.notice->showNotice(tr("The printer's preferences could not be read."), tr("Read Again"),
                              [this] { readWhenReady(); });
    }
    ui.setPrinterUsable(false);
    tell<message::OnboardPreferencesPrinterAddedError>();
}

void OnboardPreferences::Private::restoreChanges()
{
    const Unwritten unwritten = m_unwritten.value_or(Unwritten());
    forgetUnwritten();
    try {
        // Of the rest the printer may have other values by now, which are not to be lost.
        Json::Value map = ui.grama->map();
        takeEdits(map, unwritten.read, unwritten.edited);
        ui.grama->loadEdits(map);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tellFailure(tr("Your changes cannot be restored"),
                    tr("The printer does not take them any more."));
    }
}

void OnboardPreferences::Private::forgetUnwritten()
{
    m_unwritten.reset();
    ui.notice->clear();
}

void OnboardPreferences::Private::showReadAnew()
{
    if (!m_unwritten) {
        ui.notice->clear();
        return;
    }
    ui.notice->showNotice(tr("The printer is back, and its preferences were read anew. Your "
                             "changes have not been written."),
                          tr("Restore Changes"), [this] { restoreChanges(); });
}

void OnboardPreferences::Private::showGone()
{
    ui.notice->showNotice(tr("The printer is not connected. Connect it again to go on."));
}

void OnboardPreferences::Private::showInPlace(const Printer& other)
{
    if (portName.empty() || other.portName() != portName)
        return;
    ui.notice->showNotice(tr("Another printer, %1, is connected in place of this one. Connect this "
                             "one again to go on.")
                              .arg(toQString(other.displayName())));
}

void OnboardPreferences::Private::showAnswer(const JsonRpcException& error)
{
    if (!printer->isConnected())
        showGone();
    else
        ui.notice->showNotice(tr("The printer answered: %1").arg(toQString(error.message())));
}

void OnboardPreferences::Private::showStale()
{
    if (!printer->isConnected())
        showGone();
    else
        ui.notice->showNotice(tr("The printer's preferences may not be those shown here."),
                              tr("Read Again"), [this] { readWhenReady(); });
}

void OnboardPreferences::Private::showNow(const QString& text)
{
    ui.notice->showNotice(text);
    // The printer is waited for without an event loop, which would paint this.
    q->layout()->activate();
    q->repaint();
}

} // namespace ui
} // namespace trovek
