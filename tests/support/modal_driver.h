#pragma once

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>

namespace trovek {

/**
 * Answers the modal windows that the code under test opens and waits for, in their order.
 *
 *     ModalDriver driver;
 *     driver.next([](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); });
 *     box.exec();
 *
 * A window that nobody expects, one that its action leaves open and one that does not come fail the
 * test. An action must not run an event loop of its own.
 */
class ModalDriver
{
public:
    using Action = std::function<void(QWidget*)>;

    ModalDriver()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.start(kIntervalMs);
    }

    ~ModalDriver()
    {
        if (!m_actions.empty())
            QTest::qFail("A window did not open", __FILE__, __LINE__);
    }

    ModalDriver(const ModalDriver&) = delete;
    ModalDriver& operator=(const ModalDriver&) = delete;

    void next(Action action) { m_actions.push_back(std::move(action)); }

    /** The next window has to be of this class. */
    template <typename Widget>
    void next(std::function<void(Widget*)> action)
    {
        next([action](QWidget* window) {
            if (auto* expected = qobject_cast<Widget*>(window)) {
                action(expected);
            } else {
                QTest::qFail("A window of another class opened", __FILE__, __LINE__);
                window->close();
            }
        });
    }

    bool isDone() const { return m_actions.empty(); }

private:
    static constexpr int kIntervalMs = 5;
    static constexpr int kPatience = 400;

    void look()
    {
        QWidget* const window = QApplication::activeModalWidget();
        if (window && window == m_last && ++m_looks < kPatience)
            return;
        if (window && window == m_last) {
            QTest::qFail("A window stayed open", __FILE__, __LINE__);
            window->close();
            return;
        }
        m_last = window;
        m_looks = 0;
        if (!window)
            return;
        if (m_actions.empty()) {
            QTest::qFail(qPrintable(QStringLiteral("An unexpected window opened: ") +
                                    QLatin1String(window->metaObject()->className())),
                         __FILE__, __LINE__);
            window->close();
            return;
        }
        // The same window may open a second time before the timer sees that it was closed.
        if (auto* dialog = qobject_cast<QDialog*>(window))
            QObject::connect(dialog, &QDialog::finished, &m_timer, [this] { m_last = nullptr; });
        const Action action = std::move(m_actions.front());
        m_actions.pop_front();
        action(window);
    }

    QTimer m_timer;
    QPointer<QWidget> m_last;
    int m_looks = 0;
    std::deque<Action> m_actions;
};

} // namespace trovek
