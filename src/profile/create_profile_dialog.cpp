#include "trovek-ui/create_profile_dialog.h"

#include "trovek-ui/machine_types.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/profile_combo_box.h"
#include "trovek-ui/profile_list_model.h"
#include "util/plain_name.h"
#include "util/wait_cursor.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStorageInfo>
#include <QVBoxLayout>

#include <exception>
#include <optional>

static constexpr char kLogUnit[] = "src\\profile\\create_profile_dialog";

namespace trovek {

namespace {

/** What nearly every file system allows. */
constexpr int kMostNameBytes = 255;
constexpr qint64 kFullDiskBytes = 1024 * 1024;

bool hasEntry(const QDir& dir, const QString& name)
{
    const QFileInfo entry(dir, name);
    return entry.exists() || entry.isSymLink();
}

/** Why a folder of that name would be no help to a user; empty when it would. */
QString flawOf(const QString& name)
{
    if (name.trimmed().isEmpty())
        return CreateProfileDialog::tr("A name of nothing but blanks cannot be read.");
    if (name.startsWith(QLatin1Char('.')))
        return CreateProfileDialog::tr("A folder whose name begins with a dot is hidden.");
    return QString();
}

/** In words of a user; empty when nothing that is known explains it. */
QString reasonOfFailure(const QDir& directory, const QString& name)
{
    const QString path = QDir::toNativeSeparators(directory.absolutePath());
    const QFileInfo folder(directory.absolutePath());
    if (!folder.isDir())
        return CreateProfileDialog::tr("There is no folder %1, and it cannot be made.").arg(path);
    if (QFile::encodeName(name).size() > kMostNameBytes)
        return CreateProfileDialog::tr("The name is too long.");
    if (!folder.isWritable())
        return CreateProfileDialog::tr("You are not allowed to write to %1.").arg(path);
    const qint64 freeBytes = QStorageInfo(directory).bytesAvailable();
    if (freeBytes >= 0 && freeBytes < kFullDiskBytes)
        return CreateProfileDialog::tr("The disk is full.");
    return QString();
}

int firstUsableRow(const ProfileListModel& model)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        if (model.item(row)->isEnabled())
            return row;
    }
    return -1;
}

/** Wraps in a narrow label. */
QString breakablePath(QString path)
{
    return path.replace(QLatin1Char('/'), QString(QLatin1Char('/')) + QChar(0x200b));
}

} // namespace

CreateProfileDialog::CreateProfileDialog(QWidget* parent)
    : QDialog(parent)
    , m_template(new ProfileComboBox(false, true, this))
    , m_slicer(new QLabel(this))
    , m_name(new QLineEdit(this))
    , m_error(new QLabel(this))
    , m_create(new QPushButton(tr("C&reate"), this))
{
    setObjectName(QStringLiteral("createProfileDialog"));
    setWindowTitle(tr("Create Profile"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    layOut();

    const int row = firstUsableRow(m_template->profileModel());
    if (row >= 0)
        m_template->setCurrentIndex(row);
    connect(m_template, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &CreateProfileDialog::updateEnabledness);
    connect(m_template, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &CreateProfileDialog::updateSlicer);
    connect(m_name, &QLineEdit::textChanged, this, &CreateProfileDialog::updateEnabledness);
    connect(m_create, &QPushButton::clicked, this, &CreateProfileDialog::createProfile);
    // By the user alone: a list that changes by itself must not take away an unread error.
    const auto forgetError = [this] {
        showError(QString());
    };
    connect(m_template, QOverload<int>::of(&QComboBox::activated), this, forgetError);
    connect(m_name, &QLineEdit::textChanged, this, forgetError);
    updateEnabledness();
    updateSlicer();
}

CreateProfileDialog::~CreateProfileDialog() = default;

void CreateProfileDialog::layOut()
{
    m_template->setObjectName(QStringLiteral("template"));
    m_slicer->setObjectName(QStringLiteral("slicer"));
    m_name->setObjectName(QStringLiteral("name"));
    m_create->setObjectName(QStringLiteral("create"));
    m_create->setAutoDefault(true);
    m_create->setDefault(true);
    auto* const close = new QPushButton(tr("&Close"), this);
    close->setObjectName(QStringLiteral("close"));
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    m_error->setObjectName(QStringLiteral("error"));
    m_error->setTextFormat(Qt::PlainText);
    m_error->setWordWrap(true);
    m_error->setFrameShape(QFrame::StyledPanel);
    m_error->setAutoFillBackground(true);
    m_error->setBackgroundRole(QPalette::ToolTipBase);
    m_error->setForegroundRole(QPalette::ToolTipText);
    m_error->hide();

    auto* const form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("&Template:"), m_template);
    form->addRow(tr("&Slicer:"), m_slicer);
    form->addRow(tr("&Name:"), m_name);
    form->addRow(QString(), m_error);

    auto* const buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->addStretch();
    buttons->addWidget(close);
    buttons->addWidget(m_create);

    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addStretch(1);
    layout->addLayout(buttons);
    m_name->setFocus();
}

void CreateProfileDialog::updateEnabledness()
{
    m_create->setEnabled(!m_name->text().isEmpty());
}

void CreateProfileDialog::updateSlicer()
{
    try {
        m_slicer->setText(slicerToHumanString(m_template->currentProfile()->slicer()));
    } catch (const std::exception& error) {
        TROVEK_LOG(1) << error.what() << std::endl;
    }
}

void CreateProfileDialog::createProfile()
{
    const QPointer<CreateProfileDialog> self(this);
    std::optional<QDir> directory;
    showError(QString());
    // For what follows a refusal; a press of the button has taken the focus away.
    m_name->setFocus();
    m_name->selectAll();
    try {
        directory = getGlobalProfileDirectory();
        const QString name = m_name->text();
        if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\'))) {
            message::SlashesInCustomProfileName(this).exec();
            return;
        }
        if (!isPlainName(name) || hasEntry(*directory, name)) {
            message::CustomProfileAlreadyExists(name, this).exec();
            return;
        }
        const QString flaw = flawOf(name);
        if (!flaw.isEmpty()) {
            showError(flaw);
            return;
        }
        const QDir folder = copyTemplate(*directory, name);
        accept();
        if (self)
            emit profileCreated(folder);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        if (!self || !isVisible())
            return;
        QString reason = directory ? reasonOfFailure(*directory, m_name->text()) : QString();
        if (reason.isEmpty())
            reason = toQString(error.what());
        showError(tr("The profile could not be created: %1").arg(reason));
    }
}

QDir CreateProfileDialog::copyTemplate(const QDir& directory, const QString& name) const
{
    const WaitCursor cursor;
    // The user may have removed it, or never have had a profile. The copy tells when this fails.
    directory.mkpath(QStringLiteral("."));
    const Profile& profile = *m_template->currentProfile();
    return profile.copyToDisk(directory, name, profile.machineTypes());
}

void CreateProfileDialog::showError(const QString& text)
{
    m_error->setText(breakablePath(text));
    m_error->setVisible(!text.isEmpty());
    m_name->setAccessibleDescription(text);
    // A text of several lines gets no more than one of a dialog that is open already.
    layout()->activate();
    const int wanted = layout()->totalHeightForWidth(width());
    if (isVisible() && wanted > height())
        resize(width(), wanted);
}

} // namespace trovek
