#pragma once

#include "make_dialog/text_literal.h"

#include <trovek-ui/extruder_settings_widget.h>
#include <trovek-ui/material_combo_box.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QTest>

namespace trovek {

/** The widget with its inner widgets at hand, and what it said. */
struct ExtruderSettings
{
    ExtruderSettings()
    {
        using W = ExtruderSettingsWidget;
        const auto record = [this](const char* name) {
            return [this, name](int value) {
                said.append(QStringLiteral("%1 %2").arg(QLatin1String(name)).arg(value));
            };
        };
        QObject::connect(&widget, &W::leftExtruderMaterialChanged, record("left"));
        QObject::connect(&widget, &W::rightExtruderMaterialChanged, record("right"));
        QObject::connect(&widget, &W::singleExtruderMaterialChanged, record("single"));
        QObject::connect(&widget, &W::lowQualityToggled, record("low"));
        QObject::connect(&widget, &W::mediumQualityToggled, record("medium"));
        QObject::connect(&widget, &W::highQualityToggled, record("high"));
        QObject::connect(&widget, &W::raftChanged, record("raft"));
        QObject::connect(&widget, &W::supportsChanged, record("supports"));
        QObject::connect(&widget, &W::resetIsSliced,
                         [this] { said.append(QStringLiteral("reset")); });
    }

    template <typename T>
    T* child(const char* name) const
    {
        auto* const found = widget.findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    QComboBox* comboBox(const char* name) const { return child<QComboBox>(name); }
    QCheckBox* checkBox(const char* name) const { return child<QCheckBox>(name); }
    QRadioButton* radio(const char* name) const { return child<QRadioButton>(name); }

    QStringList radioTexts() const
    {
        return {radio("low")->text(), radio("standard")->text(), radio("high")->text()};
    }

    /** Those that not every machine has. */
    QStringList shownFields() const
    {
        QStringList names;
        for (const char* name :
             {"leftLabel", "leftMaterial", "rightLabel", "rightMaterial", "singleMaterial", "raft",
              "raftCheckBox", "supports", "supportsCheckBox", "help"}) {
            if (child<QWidget>(name)->isVisibleTo(&widget))
                names.append(QString::fromLatin1(name));
        }
        return names;
    }

    /** The signals since the last call, each as "name value" or "reset". */
    QStringList takeSignals() { return std::exchange(said, {}); }

    ExtruderSettingsWidget widget;
    QStringList said;
};

} // namespace trovek
