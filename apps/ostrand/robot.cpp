#include "robot.h"

#include <trovek-ui/message_box.h>
#include <trovek-ui/trovekqt.h>

#include <trovek/text.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <exception>
#include <stdexcept>

namespace ostrand {
namespace {

constexpr int kLookEveryMs = 10;

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(trovek::toStdString(text));
}

void press(QWidget& widget, int key, const QString& text = QString())
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(&widget, &up);
}

template <typename T>
T& child(QWidget& parent, const char* name)
{
    if (T* found = parent.findChild<T*>(QLatin1String(name)))
        return *found;
    fail(QStringLiteral("There is no %1 in the dialog").arg(QLatin1String(name)));
}

QString textOf(const QDialog& dialog)
{
    QStringList texts;
    for (const QLabel* label : dialog.findChildren<QLabel*>()) {
        if (!label->text().isEmpty())
            texts.append(label->text());
    }
    return texts.join(QStringLiteral(": "));
}

void chooseFilter(QComboBox& filters, const QString& start)
{
    int wanted = -1;
    for (int i = filters.count() - 1; i >= 0; --i) {
        if (filters.itemText(i).startsWith(start))
            wanted = i;
    }
    if (wanted < 0)
        fail(QStringLiteral("There is no filter \"%1\"").arg(start));
    while (filters.currentIndex() != wanted) {
        const int before = filters.currentIndex();
        press(filters, before < wanted ? Qt::Key_Down : Qt::Key_Up);
        if (filters.currentIndex() == before)
            fail(QStringLiteral("The filter \"%1\" cannot be chosen").arg(start));
    }
}

} // namespace

bool machinesAreReady(const trovek::TrovekQt& facade)
{
    bool any = false;
    for (const trovek::Printer* printer : facade.printers()) {
        if (!printer->canPrint())
            continue;
        if (printer->state() != trovek::Printer::Idle)
            return false;
        any = true;
    }
    // A port without a machine is being opened, or about to be.
    for (const trovek::Port& port : facade.ports()) {
        if (trovek::portInConnectionWhitelist(port) && port.machineName().empty())
            return false;
    }
    return any;
}

Robot::Robot(int deadlineMs)
    : m_deadline(deadlineMs)
{}

void Robot::waitFor(const std::function<bool()>& condition, const QString& what)
{
    QEventLoop loop;
    QTimer look;
    look.setInterval(kLookEveryMs);
    std::exception_ptr failure;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        try {
            refuseMessages();
            if (condition())
                loop.quit();
            else if (m_deadline.hasExpired())
                fail(QStringLiteral("Gave up waiting for %1").arg(what));
        } catch (...) {
            failure = std::current_exception();
            loop.quit();
        }
    });
    look.start();
    loop.exec();
    if (failure)
        std::rethrow_exception(failure);
}

void Robot::clickAndAnswer(const std::function<void()>& click,
                           const std::function<bool(QDialog& dialog)>& answer)
{
    clickAndHandle(click, answer, false);
}

void Robot::clickAndConfirm(const std::function<void()>& click, const QString& heading)
{
    const auto confirm = [&heading](QDialog& dialog) {
        const QString text = textOf(dialog);
        if (text != heading && !text.startsWith(heading + QStringLiteral(": ")))
            fail(text);
        dialog.reject();
        return true;
    };
    clickAndHandle(click, confirm, true);
}

void Robot::clickAndPress(const std::function<void()>& click, const QString& buttonText,
                          const std::function<void(QDialog& message)>& beforePressing)
{
    const auto press = [&](QDialog& message) {
        for (QAbstractButton* button : message.findChildren<QAbstractButton*>()) {
            if (button->text() != buttonText)
                continue;
            if (beforePressing)
                beforePressing(message);
            button->click();
            return true;
        }
        fail(textOf(message));
    };
    clickAndHandle(click, press, true);
}

void Robot::clickAndHandle(const std::function<void()>& click,
                           const std::function<bool(QDialog& dialog)>& answer, bool takesMessages)
{
    QPointer<QWidget> before = QApplication::activeModalWidget();
    bool answered = false;
    std::exception_ptr failure;
    QTimer look;
    look.setInterval(kLookEveryMs);
    QObject::connect(&look, &QTimer::timeout, qApp, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || dialog == before) {
            if (m_deadline.hasExpired() && dialog)
                dialog->reject();
            return;
        }
        try {
            const bool isMessage = qobject_cast<trovek::MessageBox*>(dialog) != nullptr;
            if (answered || failure || !answer || (isMessage && !takesMessages))
                fail(textOf(*dialog));
            if (m_deadline.hasExpired())
                fail(QStringLiteral("The dialog does not react: ") + textOf(*dialog));
            answered = answer(*dialog);
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
            dialog->reject();
        }
    });
    look.start();
    // From a loop of its own: what the click deletes later is then gone when that loop ends.
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        try {
            click();
        } catch (...) {
            failure = std::current_exception();
        }
        loop.quit();
    });
    loop.exec();
    look.stop();
    if (failure)
        std::rethrow_exception(failure);
    if (answer && !answered)
        fail(QStringLiteral("No dialog came"));
}

void Robot::click(const std::function<void()>& click)
{
    clickAndAnswer(click, nullptr);
}

bool Robot::fillFileDialog(QDialog& dialog, const QString& path, const QString& filterStart,
                           const std::function<void()>& beforeAccepting)
{
    auto& name = child<QLineEdit>(dialog, "fileNameEdit");
    // Without the focus the dialog replaces what is typed by what it has found.
    if (!name.hasFocus()) {
        dialog.activateWindow();
        name.setFocus();
        return false;
    }
    if (!filterStart.isEmpty())
        chooseFilter(child<QComboBox>(dialog, "fileTypeCombo"), filterStart);
    name.selectAll();
    for (const QChar& character : path)
        press(name, Qt::Key_unknown, character);
    if (name.completer())
        name.completer()->popup()->hide();
    if (beforeAccepting)
        beforeAccepting();
    auto& buttons = child<QDialogButtonBox>(dialog, "buttonBox");
    for (const auto which : {QDialogButtonBox::Save, QDialogButtonBox::Open}) {
        if (QPushButton* button = buttons.button(which)) {
            button->click();
            return true;
        }
    }
    fail(QStringLiteral("The file dialog has no button to accept with"));
}

void Robot::refuseMessages()
{
    auto* dialog = qobject_cast<trovek::MessageBox*>(QApplication::activeModalWidget());
    if (!dialog)
        return;
    const QString text = textOf(*dialog);
    dialog->reject();
    fail(text);
}

} // namespace ostrand
