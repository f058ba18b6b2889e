#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/profile.h"

#include <QDir>
#include <QSharedPointer>
#include <QStandardItemModel>

#include <memory>
#include <vector>

namespace trovek {

/**
 * The folder with the user's profiles, for the whole process. The host sets it once, before any
 * list of profiles is made.
 * @throws std::runtime_error "Profile directory already set"
 */
TROVEK_UI_EXPORT void setGlobalProfileDirectory(const QDir& dir);
/** @throws std::runtime_error "Profile directory not set" */
TROVEK_UI_EXPORT QDir getGlobalProfileDirectory();
/** A copy; null, and a line in the log, when it is not set. */
TROVEK_UI_EXPORT QSharedPointer<QDir> safeGetGlobalProfileDirectory();

/**
 * The profiles that a user can choose from: the presets, those compiled in, and those in the
 * profile directory, which is watched.
 *
 * Rows that stay keep their order, new ones go to the end. A profile that cannot be read, or that
 * is not for the selected machine, stays listed: disabled, with the reason as tooltip and as
 * accessible description, until the reason goes. GUI thread only.
 */
class TROVEK_UI_EXPORT ProfileListModel : public QStandardItemModel
{
    Q_OBJECT

public:
    /** One profile. */
    class TROVEK_UI_EXPORT Item : public QStandardItem
    {
    public:
        explicit Item(std::unique_ptr<Profile> profile);
        ~Item() override;

        /** Owned by the item. */
        Profile& profile() const { return *m_profile; }
        /** For UnknownType always true, as it is for a preset. Of no use while there is an error.
         */
        bool isFor(Printer::Type machine) const;
        /** Why the profile cannot be read; empty when it can. */
        QString error() const { return m_error; }

        /** Reads "profile.json" again; what is wrong with it becomes the error. */
        void read();
        /** Enables or disables the item by what was read. */
        void judge(Printer::Type selectedMachine);

    private:
        QString reasonAgainst(Printer::Type selectedMachine) const;

        const std::unique_ptr<Profile> m_profile;
        std::vector<Printer::Type> m_machineTypes;
        QString m_error;
    };

    /** Without a profile directory, or before it is set, no user profiles are listed, ever. */
    ProfileListModel(bool withPresets, bool withBuiltIns, QObject* parent = nullptr);
    ~ProfileListModel() override;

    /** Owned by the model, valid until its row goes; null outside the model. */
    Profile* profileAt(int row) const;

    /** Leaves out user profiles that are not for these machines; UnknownType, as at first, none. */
    void setMachineTypeFilter(Printer::Type type);

    /** The machine that a profile must be for to be enabled; UnknownType, as at first: any. */
    void setSelectedMachineType(Printer::Type type);

    /**
     * Deletes the user profile in that folder.
     * @throws std::runtime_error "Profile already deleted", "Not in the profile directory", or why
     *         it could not be deleted
     */
    void removeProfile(const QDir& dir);

public slots:
    /** Looks at the profile directory again; its changes do this by themselves. */
    void update();

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
