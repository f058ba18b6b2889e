#pragma once

#include "scan_chain.h"

#include <QString>
#include <QWidget>

#include <array>

class QLabel;
class QProgressBar;
class QPushButton;
class QSettings;
class QSpinBox;

namespace trovek {
class TrovekQt;
}

namespace scan_example {

class ShapeView;

/** A button for each step of the chain, and beside them what came out so far. */
class ScanWindow : public QWidget
{
    Q_OBJECT

public:
    /** @param facade, settings not owned; must outlive the window */
    ScanWindow(trovek::TrovekQt& facade, QSettings& settings, QWidget* parent = nullptr);
    ~ScanWindow() override;

    ScanChain& chain() { return m_chain; }
    /** What a user presses for a step. */
    QPushButton& button(ScanChain::Step step) const { return *m_buttons[step]; }
    QPushButton& makeButton() const { return *m_makeButton; }
    void setPicturesPerTurn(int pictures);

private:
    QWidget* makeButtons();
    void press(ScanChain::Step step);
    void update();
    void focusNext();
    void showShapes();
    void showDone(ScanChain::Step step);
    void showFailure(ScanChain::Step step, const QString& reason);
    /** Asks where to save. @return false when the user changed their mind */
    bool chooseFile();
    void make();

    trovek::TrovekQt& m_facade;
    QSettings& m_settings;
    ScanChain m_chain;
    ShapeView* const m_view;
    QSpinBox* const m_pictures;
    QLabel* const m_status;
    QProgressBar* const m_progress;
    QPushButton* const m_cancel;
    QPushButton* const m_makeButton;
    std::array<QPushButton*, ScanChain::kSteps> m_buttons{};
    bool m_wasRunning = false;
};

} // namespace scan_example
