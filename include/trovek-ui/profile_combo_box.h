#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/profile.h"

#include <QComboBox>
#include <QDir>

#include <memory>

namespace trovek {

class ProfileListModel;

/** Chooses a profile; starts on the second row, which is "Standard" when presets are listed. */
class TROVEK_UI_EXPORT ProfileComboBox : public QComboBox
{
    Q_OBJECT

public:
    ProfileComboBox(bool withPresets, bool withBuiltIns, QWidget* parent = nullptr);
    ~ProfileComboBox() override;

    /** Owned by the box or its model, valid until the list changes; never null. */
    Profile* currentProfile() const;
    bool isCurrentEnabled() const;
    ProfileListModel& profileModel() const;

    /** Selects the first profile of that name, after looking at the folder again. */
    void selectProfile(const QString& name);

public slots:
    /** Selects the user profile in that folder, after looking at the folder again. */
    void selectProfile(const QDir& dir);
    void indexChanged(int index);

signals:
    void currentProfileChanged(Profile* profile);

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
