#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/profile.h"

#include <QComboBox>
#include <QDir>

#include <memory>

namespace trovek {

class ProfileListModel;

/**
 * Chooses a profile.
 *
 * It starts on the second row, which is "Standard" when the presets are listed, and goes there
 * again when the selected profile is deleted. It looks at the profile directory again when it is
 * opened and when its window becomes the active one.
 */
class TROVEK_UI_EXPORT ProfileComboBox : public QComboBox
{
    Q_OBJECT

public:
    /** The flags are the model's. */
    ProfileComboBox(bool withPresets, bool withBuiltIns, QWidget* parent = nullptr);
    ~ProfileComboBox() override;

    /**
     * Never null: without a current row it is a profile that stands for nothing. Owned by the box
     * or its model, valid until the list changes.
     */
    Profile* currentProfile() const;
    /** False without a current row too. */
    bool isCurrentEnabled() const;
    ProfileListModel& profileModel() const;

    void showPopup() override;

public slots:
    /**
     * Selects the first user profile of the folder's name, after looking at the profile directory
     * again. Nothing happens when there is none.
     */
    void selectProfile(const QDir& dir);
    /** The same with the first profile of that name, of whatever kind. */
    void selectProfile(const QString& name);
    void indexChanged(int index);

signals:
    /** Another row is the current one, or the current profile has got another row. Never null. */
    void currentProfileChanged(Profile* profile);
    /** The current profile can be read now or not any more, or fits the machine or does not. */
    void currentEnabledChanged(bool enabled);

protected:
    bool event(QEvent* event) override;

private:
    void leaveRows(int first, int last);
    void checkEnabled();

    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
