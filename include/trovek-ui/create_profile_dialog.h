#pragma once

#include "trovek-ui/export.h"

#include <QDialog>
#include <QDir>

class QLabel;
class QLineEdit;
class QPushButton;

namespace trovek {

class ProfileComboBox;

/** Makes a new profile of the user's from one that is there. */
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
    void showError(const QString& text);

    ProfileComboBox* const m_template;
    QLabel* const m_slicer;
    QLineEdit* const m_name;
    /** Below the name, what went wrong. */
    QLabel* const m_error;
    QPushButton* const m_create;
};

} // namespace trovek
