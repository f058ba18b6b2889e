#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/profile.h"

#include <QDir>
#include <QSharedPointer>
#include <QStandardItemModel>

#include <memory>

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
 * A profile that cannot be read stays in the list, disabled, with the reason as its tooltip.
 */
class TROVEK_UI_EXPORT ProfileListModel : public QStandardItemModel
{
    Q_OBJECT

public:
    /** One profile; owns it. */
    class TROVEK_UI_EXPORT Item : public QStandardItem
    {
    public:
        explicit Item(std::unique_ptr<Profile> profile);
        ~Item() override;

        Profile& profile() const { return *m_profile; }

    private:
        const std::unique_ptr<Profile> m_profile;
    };

    ProfileListModel(bool withPresets, bool withBuiltIns, QObject* parent = nullptr);
    ~ProfileListModel() override;

    /** The row's, owned by the model; null outside the model. */
    Profile* profileAt(int row) const;

    /** Leaves out user profiles that are not for these machines; UnknownType, as at first, none. */
    void setMachineTypeFilter(Printer::Type type);

    /**
     * The machine that a profile must fit to be enabled; UnknownType asks for none. A user profile
     * that does not fit stays listed, disabled, with the reason as its tooltip.
     */
    void setSelectedMachineType(Printer::Type type);

    /**
     * Deletes the user profile in that folder.
     * @throws std::runtime_error "Profile already deleted", or why it could not be deleted
     */
    void removeProfile(const QDir& dir);

public slots:
    /** Looks at the profile directory again. */
    void update();

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
