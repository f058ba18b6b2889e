#pragma once

#include <QString>

class QComboBox;
class QDialog;
class QLabel;
class QPushButton;
class QStackedWidget;
class QWidget;

namespace trovek {

/** The widgets of the firmware upload dialog, on their three pages. */
struct FirmwareUploadPages
{
    enum Page { Choice = 0, Ready = 1, Result = 2 };

    /** Fills the dialog, to which everything belongs. */
    explicit FirmwareUploadPages(QDialog* dialog);

    void show(Page page);
    /** Below the choice; there is none when the text is empty. */
    void showError(const QString& text);
    /** Paints what the user reads while nothing reacts; runs no event loop. */
    void paintNow();

    QStackedWidget* stack;

    QLabel* bot;
    QLabel* currentVersion;
    QComboBox* versions;
    QLabel* description;
    QLabel* error;
    QWidget* errorArea;
    QPushButton* choiceCancel;
    QPushButton* next;

    QLabel* readyStatus;
    QPushButton* readyCancel;
    QPushButton* upload;

    QLabel* resultStatus;
    QPushButton* resultCancel;
    /** "&OK" or "&Retry". */
    QPushButton* main;

private:
    void buildChoice(QWidget* page);
    void buildReady(QWidget* page);
    void buildResult(QWidget* page);
};

} // namespace trovek
