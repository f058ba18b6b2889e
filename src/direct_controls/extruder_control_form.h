#pragma once

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QString;
class QWidget;
class SpinBox;

namespace trovek {

class Printer;

/** What the extruder panel consists of. All belong to it. */
struct ExtruderControlForm
{
    explicit ExtruderControlForm(QWidget* owner);

    /** Whether there are two extruders to choose from; the box is hidden and empty otherwise. */
    void offerTwoExtruders(bool two);
    void showHeating(bool heating);
    /** Of all extruders and the platform. @param printer null for none */
    void showTemperatures(const Printer* printer);

    static QString celsiusText(int celsius);

    QPushButton* load;
    QPushButton* unload;
    QPushButton* stop;
    QLabel* useLabel;
    QComboBox* use;
    QLabel* currentTemperature;
    SpinBox* targetTemperature;
    QPushButton* heat;
    /** What went wrong last. */
    QLabel* notice;

    QGroupBox* temperatures;
    QLabel* leftLabel;
    QLabel* leftTemperature;
    QLabel* rightLabel;
    QLabel* rightTemperature;
    QLabel* platformLabel;
    QLabel* platformTemperature;

private:
    QGroupBox* controls(QWidget* owner);
    QGroupBox* readings(QWidget* owner);
};

} // namespace trovek
