#pragma once

#include "make_dialog/make_world.h"
#include "profile/profile_world.h"

#include <trovek-ui/builtin_profile_widget.h>
#include <trovek-ui/collapse_expand_header.h>
#include <trovek-ui/export_job_mover.h>
#include <trovek-ui/extruder_settings_widget.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/material_combo_box.h>
#include <trovek-ui/profile_combo_box.h>

#include <trovek/wire.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace trovek {

inline constexpr char kThingUnit[] = "src\\make_dialog\\make_thing_dialog";

inline const auto kSingle = ScriptedService::machine("single", Printer::Fabrino2);
inline const auto kHeated = ScriptedService::machine("heated", Printer::FabrinoSingle);
inline const auto kDual = ScriptedService::machine("dual", Printer::Fabrino2X);
inline const auto kSingleArchetype = ScriptedService::archetype(Printer::Fabrino2);
inline const auto kDualArchetype = ScriptedService::archetype(Printer::Fabrino2X);

inline const QStringList kTrovekNotConnected =
    words({"Service Error", "No connection to background service"});

/** The user's profiles, machines of all kinds, and a model to be made. */
struct ThingWorld : ProfileWorld, MakeWorld
{
    explicit ThingWorld(TrovekQt& connectedFacade)
        : MakeWorld(connectedFacade, {kSingle, kHeated, kDual, kSingleArchetype, kDualArchetype})
    {}
    using MakeWorld::path;

    QString profilePath(const char* name) const { return ProfileWorld::path(name); }
    /** The process's export mover would else take a later job for this one. */
    void endExport()
    {
        service.concludeJob(service.lastJobID(), JobCanceled);
        QTRY_COMPARE(ExportJobMover::instance(facade).unfinishedExports(), QStringList());
    }

    SlicerConfiguration printed() const { return configurationOf("print"); }
    SlicerConfiguration configurationOf(const char* method) const
    {
        return wire::slicerConfigurationFromJson(service.lastRequest(method)["slicer_config"]);
    }
};

/** The dialog and what a user does with the widgets in it. */
struct OpenedThing
{
    explicit OpenedThing(ThingWorld& world, const char* key = nullptr,
                         SlicerConfiguration::Extruder extruder = SlicerConfiguration::Right)
        : dialog(new MakeThingDialog(world.facade, world.inputFile, extruder, &world.settings,
                                     key == nullptr ? nullptr : world.printer(key),
                                     world.folder.path(), true))
    {
        dialog->show();
        dialog->activateWindow();
        if (!QTest::qWaitForWindowActive(dialog))
            qFatal("the dialog does not get the focus");
        QCoreApplication::processEvents();
    }
    ~OpenedThing() { delete dialog.data(); }
    OpenedThing(const OpenedThing&) = delete;
    OpenedThing& operator=(const OpenedThing&) = delete;

    template <typename Widget>
    Widget& find(const char* name) const
    {
        auto* const widget = dialog->findChild<Widget*>(QString::fromLatin1(name));
        if (widget == nullptr)
            qFatal("there is no %s", name);
        return *widget;
    }

    MachineComboBox& machines() const { return find<MachineComboBox>("machineCombo"); }
    ExtruderSettingsWidget& extruders() const
    {
        return find<ExtruderSettingsWidget>("extruderSettings");
    }
    BuiltInProfileWidget& numbers() const { return find<BuiltInProfileWidget>("builtInProfile"); }
    ProfileComboBox& profiles() const { return find<ProfileComboBox>("profiles"); }
    QPushButton& button(const char* name) const { return find<QPushButton>(name); }
    QPushButton& mainButton() const { return button("mainButton"); }
    QCheckBox& previewWanted() const { return find<QCheckBox>("previewWanted"); }
    QLabel& help() const { return find<QLabel>("profileHelp"); }
    MaterialComboBox& material(const char* name) const { return find<MaterialComboBox>(name); }

    void clickMain() const { QTest::mouseClick(&mainButton(), Qt::LeftButton); }
    void openAdvanced() const
    {
        auto& header = find<CollapseExpandHeader>("advancedHeader");
        if (!header.isChecked())
            QTest::mouseClick(&header, Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    void select(const char* profile) const
    {
        profiles().selectProfile(QString::fromUtf8(profile));
        QCoreApplication::processEvents();
    }
    void select(const Printer* machine) const
    {
        machines().select(const_cast<Printer*>(machine));
        QCoreApplication::processEvents();
    }

    QPointer<MakeThingDialog> dialog;
};

} // namespace trovek
