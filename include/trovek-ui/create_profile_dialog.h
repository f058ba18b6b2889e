#pragma once

#include "trovek-ui/export.h"

#include <QDialog>
#include <QDir>

class QLabel;
class QLineEdit;
class QPushButton;

namespace trovek {

class ProfileComboBox;

/**
 * Makes a new profile of the user's from one that is there, for the machines that that one is for.
 *
 * The new folder stands in the profile directory, which is made when it is missing. A name that
 * does not do is refused with a message; why a copy failed is shown below the name.
 */
class TROVEK_UI_EXPORT CreateProfileDialog : public QDialog
{
    Q_OBJECT

public:
    explicit CreateProfileDialog(QWidget* parent = nullptr);
    ~CreateProfileDialog() override;

signals:
    /** After the dialog has accepted. */
    void profileCreated(QDir dir);

private slots:
    void updateEnabledness();
    void updateSlicer();
    void createProfile();

private:
    void layOut();
    /** @throws std::runtime_error as Profile::copyToDisk() */
    QDir copyTemplate(const QDir& directory, const QString& name) const;
    /** Empty: none any more. */
    void showError(const QString& text);

    ProfileComboBox* const m_template;
    QLabel* const m_slicer;
    QLineEdit* const m_name;
    /** Below the name, what went wrong. */
    QLabel* const m_error;
    QPushButton* const m_create;
};

} // namespace trovek
