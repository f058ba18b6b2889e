#pragma once

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>

namespace trovek {

/** What a user reads in a message: heading and text. */
inline QStringList messageTexts(const QWidget* box)
{
    QStringList texts;
    for (const QLabel* label : box->findChildren<QLabel*>()) {
        if (!label->text().isEmpty())
            texts.append(label->text());
    }
    return texts;
}

/** Presses the button of a message or a file dialog as a user does. */
inline void pressButton(QWidget* box, const QString& text)
{
    for (QPushButton* button : box->findChildren<QPushButton*>()) {
        if (button->text() == text) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    QTest::qFail(qPrintable(QStringLiteral("There is no button ") + text), __FILE__, __LINE__);
}

/**
 * Does what a user does with the modal windows that open in a test, one step a window, in order.
 *
 *     ModalDriver driver;
 *     driver.expect([](QDialog* box) { QTest::keyClick(box, Qt::Key_Escape); });
 *     box.exec();
 *
 * A step is given the window and closes it, or destroys it. A window without a step and one that
 * stays open fail the test and are rejected, so that no test hangs; so does a step without a
 * window.
 */
class ModalDriver : public QObject
{
public:
    using Step = std::function<void(QDialog*)>;

    ModalDriver()
    {
        m_timer.setInterval(kIntervalMs);
        connect(&m_timer, &QTimer::timeout, this, &ModalDriver::look);
        m_timer.start();
    }

    ~ModalDriver() override
    {
        if (!isDone())
            QTest::qFail("An expected window did not open", __FILE__, __LINE__);
    }

    void expect(Step step) { m_steps.push_back(std::move(step)); }

    /** The window has to be of this class. */
    template <typename Dialog>
    void expect(std::function<void(Dialog*)> step)
    {
        expect([step](QDialog* window) {
            auto* const dialog = qobject_cast<Dialog*>(window);
            QVERIFY2(dialog != nullptr, window->metaObject()->className());
            step(dialog);
        });
    }

    /** A message with these texts and this button, which is pressed. */
    void expectMessage(const QStringList& texts, const QString& button = QStringLiteral("&OK"))
    {
        expect([texts, button](QDialog* box) {
            QCOMPARE(messageTexts(box), texts);
            pressButton(box, button);
        });
    }

    /** The save dialog, in which the file name is typed and the button pressed. */
    void expectSaveDialog(const QString& path, const QString& nameFilter = QString())
    {
        expect<QFileDialog>([path, nameFilter](QFileDialog* dialog) {
            if (!nameFilter.isEmpty())
                chooseFilter(dialog, nameFilter);
            auto* const edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            edit->setText(QString());
            QTest::keyClicks(edit, path);
            pressButton(dialog, QStringLiteral("&Save"));
        });
    }

    void expectSaveDialogToBeCanceled()
    {
        expect<QFileDialog>([](QFileDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    }

    /** Whether every expected window has come. */
    bool isDone() const { return m_steps.empty(); }

private:
    static constexpr int kIntervalMs = 2;
    /** In looks. A busy machine looks less often too. */
    static constexpr int kPatience = 5000;

    static void chooseFilter(QFileDialog* dialog, const QString& nameFilter)
    {
        auto* const box = dialog->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        const int row = box->findText(nameFilter);
        QVERIFY2(row >= 0, qPrintable(nameFilter));
        box->setCurrentIndex(row);
        emit box->activated(row);
    }

    static void rejectAndFail(QDialog* window, const QString& reason)
    {
        const QString texts = messageTexts(window).join(QStringLiteral(" / "));
        QTest::qFail(qPrintable(reason + texts), __FILE__, __LINE__);
        window->reject();
    }

    void look()
    {
        auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (window == nullptr || !window->isVisible())
            return;
        if (window == m_handled) {
            if (++m_looks == kPatience)
                rejectAndFail(window, QStringLiteral("A window stays open: "));
            return;
        }
        // A user acts on a window that has the focus, which it gets a moment after it is shown.
        if (!window->isActiveWindow() && ++m_looks < kPatience)
            return;
        m_looks = 0;
        if (isDone()) {
            rejectAndFail(window, QStringLiteral("Unexpected window: "));
            return;
        }
        m_handled = window;
        const Step step = std::move(m_steps.front());
        m_steps.pop_front();
        const QPointer<QDialog> guard(window);
        step(window);
        // A step that failed has left the window open.
        if (guard && guard->isVisible() && QTest::currentTestFailed())
            guard->reject();
        m_handled = guard && guard->isVisible() ? window : nullptr;
    }

    QTimer m_timer;
    std::deque<Step> m_steps;
    QPointer<QDialog> m_handled;
    int m_looks = 0;
};

} // namespace trovek
