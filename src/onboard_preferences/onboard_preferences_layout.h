#pragma once

#include <QPointer>

class QCheckBox;
class QDialog;
class QLabel;
class QPushButton;

namespace Json {
class Value;
}

namespace trovek {

class EepromGrama;
class PreferencesNotice;
class Printer;

/** The widgets of the onboard preferences with their texts and places. */
struct OnboardPreferencesLayout
{
    /** Makes them, as children of the dialog, and sets its layout. */
    void build(const Json::Value& map, const Printer& printer, QDialog* dialog);
    /** Its name and firmware. */
    void showPrinter(const Printer& machine);
    /** Enables or disables everything that needs the printer. */
    void setPrinterUsable(bool usable);

    QLabel* printer = nullptr;
    PreferencesNotice* notice = nullptr;
    QCheckBox* showChangedOnly = nullptr;
    QPointer<EepromGrama> grama;
    QPushButton* factoryReset = nullptr;
    QPushButton* backups = nullptr;
    QPushButton* loadFromFile = nullptr;
    QPushButton* saveToFile = nullptr;
    QLabel* changedCount = nullptr;
    QPushButton* cancel = nullptr;
    QPushButton* write = nullptr;

private:
    void buildButtons(QDialog* dialog);
};

} // namespace trovek
