#pragma once

class DoubleSpinBox;
class QCheckBox;
class QGroupBox;
class QPushButton;
class QWidget;
class SpinBox;

namespace trovek {

class FieldLabel;

/** The fields of the built-in profile widget. All belong to it. */
struct BuiltInProfileForm
{
    explicit BuiltInProfileForm(QWidget* owner);

    FieldLabel* infillLabel;
    SpinBox* infill;
    FieldLabel* shellsLabel;
    SpinBox* shells;
    FieldLabel* layerHeightLabel;
    DoubleSpinBox* layerHeight;

    FieldLabel* rightTemperatureLabel;
    SpinBox* rightTemperature;
    FieldLabel* leftTemperatureLabel;
    SpinBox* leftTemperature;
    QCheckBox* heatPlatform;
    FieldLabel* platformTemperatureLabel;
    SpinBox* platformTemperature;

    FieldLabel* extrudingSpeedLabel;
    SpinBox* extrudingSpeed;
    FieldLabel* travelingSpeedLabel;
    SpinBox* travelingSpeed;

    QPushButton* defaultsButton;
    QPushButton* createProfileButton;

private:
    QGroupBox* qualityGroup(QWidget* owner);
    QGroupBox* temperatureGroup(QWidget* owner);
    QGroupBox* speedGroup(QWidget* owner);
};

} // namespace trovek
