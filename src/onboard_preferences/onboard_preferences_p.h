#pragma once

#include "onboard_preferences/onboard_preferences_layout.h"
#include "trovek-ui/onboard_preferences.h"

#include <rpcwire/json_rpc_exception.h>
#include <trovek/printer.h>

#include <json/value.h>

#include <QCoreApplication>
#include <QPointer>
#include <QSettings>
#include <QString>

#include <optional>
#include <string>

namespace trovek {

class TrovekQt;

namespace ui {

class OnboardPreferences::Private
{
    Q_DECLARE_TR_FUNCTIONS(trovek::ui::OnboardPreferences)

public:
    Private(OnboardPreferences* dialog, TrovekQt& serviceFacade, Printer* editedPrinter);

    // ---- Windows over the dialog: they run the event loop, in which the dialog may be deleted

    /** @return false when the dialog is gone afterwards */
    template <typename Show>
    bool showOver(Show show);
    /** Shows one of the catalogue's notices. */
    template <typename Notice>
    bool tell();
    /** Asks one of the catalogue's questions. @return 0 when the dialog is gone afterwards, too */
    template <typename Question>
    typename Question::ResultCode ask();
    /** Tells of what the catalogue has no message for. */
    void tellFailure(const QString& heading, const QString& text);

    // ---- The printer goes and comes

    /** Reads as soon as the printer lets itself be read and no window is open over the dialog. */
    void readWhenReady();
    /** Takes the printer's values, and enables the form; says why when that fails. */
    void readAgain();
    /** Changes of before the printer came back are of no use any more. */
    void forgetUnwritten();

    // ---- The line above the form

    void showGone();
    /** Another printer has come; tells when it is where this one was. */
    void showInPlace(const Printer& other);
    /** Why the service did not do it, which the catalogue's messages leave out. */
    void showAnswer(const JsonRpcException& error);
    /** The printer's values may have changed without having been read. */
    void showStale();
    /** At once, without the event loop. */
    void showNow(const QString& text);

    // ---- Values from elsewhere, which become changes

    void chooseBackup();
    void saveToFile();
    void loadFromFile();

    OnboardPreferences* const q;
    TrovekQt& facade;
    /** The client's; the same object when the printer comes back. */
    Printer* const printer;
    const Printer::Type type;
    /** Where the printer was last. */
    std::string portName;
    OnboardPreferencesLayout ui;
    QPointer<QSettings> settings;

private:
    /** Counts a window over the dialog while it lives. */
    class OpenWindow
    {
    public:
        explicit OpenWindow(Private* owner)
            : m_owner(owner)
            , m_dialog(owner->q)
        {
            ++m_owner->m_openWindows;
        }
        ~OpenWindow()
        {
            if (hasDialog())
                m_owner->windowClosed();
        }
        OpenWindow(const OpenWindow&) = delete;
        OpenWindow& operator=(const OpenWindow&) = delete;

        bool hasDialog() const { return !m_dialog.isNull(); }

    private:
        Private* const m_owner;
        const QPointer<OnboardPreferences> m_dialog;
    };

    void refuseRead(bool isOfAnotherKind, const Json::Value& before);
    void showReadAnew();
    void restoreChanges();
    /** @param source what begins a sentence about the document */
    void loadChanges(const Json::Value& map, const QString& source);
    void windowClosed();
    QString lastDir() const;
    void rememberDirOf(const QString& path);

    /** What was read and what it had been changed to when the printer came back. */
    struct Unwritten
    {
        Json::Value read;
        Json::Value edited;
    };
    std::optional<Unwritten> m_unwritten;
    /** The printer is back and its values are still to be read. */
    bool m_readPending = false;
    int m_openWindows = 0;

    friend class OnboardPreferences;
};

template <typename Show>
bool OnboardPreferences::Private::showOver(Show show)
{
    const OpenWindow window(this);
    show();
    return window.hasDialog();
}

template <typename Notice>
bool OnboardPreferences::Private::tell()
{
    return showOver([this] {
        Notice notice(q);
        notice.exec();
        delete notice.box();
    });
}

template <typename Question>
typename Question::ResultCode OnboardPreferences::Private::ask()
{
    auto answer = static_cast<typename Question::ResultCode>(0);
    const bool isThere = showOver([this, &answer] {
        Question question(q);
        answer = question.exec();
        delete question.box();
    });
    return isThere ? answer : static_cast<typename Question::ResultCode>(0);
}

} // namespace ui
} // namespace trovek
