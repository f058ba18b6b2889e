#pragma once

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
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
 * A step is given the window and closes it, or destroys it. A window without a step fails the test
 * and is rejected, so that no test hangs; so does a step without a window, see verify().
 */
class ModalDriver : public QObject
{
public:
    using Step = std::function<void(QDialog*)>;

    ModalDriver()
    {
        m_timer.setInterval(2);
        connect(&m_timer, &QTimer::timeout, this, &ModalDriver::look);
        m_timer.start();
    }

    ~ModalDriver() override { verify(); }

    void expect(Step step) { m_steps.push_back(std::move(step)); }

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
        expect([path, nameFilter](QDialog* window) {
            auto* const dialog = qobject_cast<QFileDialog*>(window);
            QVERIFY(dialog != nullptr);
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
        expect([](QDialog* window) {
            QVERIFY(qobject_cast<QFileDialog*>(window) != nullptr);
            QTest::keyClick(window, Qt::Key_Escape);
        });
    }

    /** Every expected window has come. */
    void verify()
    {
        if (!m_steps.empty())
            QTest::qFail("An expected window did not open", __FILE__, __LINE__);
        m_steps.clear();
    }

private:
    static void chooseFilter(QFileDialog* dialog, const QString& nameFilter)
    {
        auto* const box = dialog->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        const int row = box->findText(nameFilter);
        QVERIFY2(row >= 0, qPrintable(nameFilter));
        box->setCurrentIndex(row);
        emit box->activated(row);
    }

    void look()
    {
        auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (window == nullptr || !window->isVisible() || window == m_handled)
            return;
        m_handled = window;
        if (m_steps.empty()) {
            QTest::qFail(qPrintable(QStringLiteral("Unexpected window: ") +
                                    messageTexts(window).join(QStringLiteral(" / "))),
                         __FILE__, __LINE__);
            window->reject();
            return;
        }
        const Step step = std::move(m_steps.front());
        m_steps.pop_front();
        const QPointer<QDialog> guard(window);
        step(window);
        // A step that failed has left the window open.
        if (!guard.isNull() && guard->isVisible() && QTest::currentTestFailed())
            guard->reject();
        m_handled = guard.isNull() || !guard->isVisible() ? nullptr : window;
    }

    QTimer m_timer;
    std::deque<Step> m_steps;
    QPointer<QDialog> m_handled;
};

} // namespace trovek
