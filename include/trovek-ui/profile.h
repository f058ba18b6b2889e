#pragma once

#include "trovek-ui/export.h"

#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <json/value.h>

#include <QDir>
#include <QMetaType>
#include <QString>

#include <vector>

namespace trovek {

/**
 * A named set of slicer settings that a print or an export uses.
 *
 * On disk and in the resources it is a folder that is named as the profile and holds
 * "profile.json", "strandel.json", "start.gcode" and "end.gcode". Whatever fails throws
 * std::runtime_error.
 */
class TROVEK_UI_EXPORT Profile
{
public:
    virtual ~Profile();

    /** Of the same kind at the same place. */
    virtual bool isSameAs(const Profile& other) const = 0;
    /**
     * Makes a new profile on disk from this one; what was half-copied is removed after an error.
     * @param target  the folder that the new profile's folder is made in
     * @param newName a plain name
     * @param types   the machines that the new profile is for, in the order to be written
     * @return the new profile's folder
     */
    virtual QDir copyToDisk(const QDir& target, const QString& newName,
                            const std::vector<Printer::Type>& types) const = 0;
    /** The path of a "strandel.json" that the slicer may use: a copy, never the user's own. */
    virtual QString slicerConfigPath() const = 0;
    virtual void remove() = 0;
    /** Opens the slicer's settings in an editor and does not wait. */
    virtual void edit() = 0;
    virtual bool isOnDisk() const = 0;
    /** As a user reads it. */
    virtual QString name() const = 0;
    /** The folder's absolute path; empty unless the profile is on disk. */
    virtual QString path() const;
    /** SlicerConfiguration::Custom for one with settings of its own. */
    virtual SlicerConfiguration::Preset preset() const = 0;
    /** The parsed "profile.json". */
    virtual Json::Value json() const = 0;

    /** The machines that it is for. */
    std::vector<Printer::Type> machineTypes() const;
    SlicerConfiguration::Slicer slicer() const;

protected:
    Profile() = default;
    Profile(const Profile&) = default;
    Profile& operator=(const Profile&) = default;
};

/** A profile that the user keeps in a folder. */
class TROVEK_UI_EXPORT DirectoryProfile : public Profile
{
public:
    explicit DirectoryProfile(const QDir& dir);

    bool isSameAs(const Profile& other) const override;
    QDir copyToDisk(const QDir& target, const QString& newName,
                    const std::vector<Printer::Type>& types) const override;
    QString slicerConfigPath() const override;
    void remove() override;
    void edit() override;
    bool isOnDisk() const override;
    QString name() const override;
    QString path() const override;
    SlicerConfiguration::Preset preset() const override;
    Json::Value json() const override;

private:
    QDir m_dir;
};

/** A profile that is compiled in. */
class TROVEK_UI_EXPORT ResourceProfile : public Profile
{
public:
    /** @param path for example ":/profiles/Orvane PLA High" */
    explicit ResourceProfile(const QString& path);

    bool isSameAs(const Profile& other) const override;
    QDir copyToDisk(const QDir& target, const QString& newName,
                    const std::vector<Printer::Type>& types) const override;
    QString slicerConfigPath() const override;
    void remove() override;
    void edit() override;
    bool isOnDisk() const override;
    QString name() const override;
    SlicerConfiguration::Preset preset() const override;
    Json::Value json() const override;

private:
    QString m_path;
};

/** Stands for one of the client's presets and has no files. */
class TROVEK_UI_EXPORT FakeProfile : public Profile
{
public:
    explicit FakeProfile(SlicerConfiguration::Preset preset);

    bool isSameAs(const Profile& other) const override;
    QDir copyToDisk(const QDir& target, const QString& newName,
                    const std::vector<Printer::Type>& types) const override;
    QString slicerConfigPath() const override;
    void remove() override;
    void edit() override;
    bool isOnDisk() const override;
    QString name() const override;
    SlicerConfiguration::Preset preset() const override;
    Json::Value json() const override;

private:
    SlicerConfiguration::Preset m_preset;
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::Profile*)
