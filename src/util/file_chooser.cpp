#include "trovek-ui/file_chooser.h"

#include "trovek-ui/messages.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src/util/file_chooser";

/**
 * What QFileDialog's static functions do. They keep the dialog on the stack, where a parent that is
 * destroyed while it is open would delete it a second time.
 *
 * @param selectedFilter the filter string to preselect, and afterwards the selected one
 * @return empty when cancelled, also by the death of the parent
 */
QStringList runFileDialog(QWidget* parent, const QString& caption, const QString& path,
                          const FileFilterList& filters, QFileDialog::AcceptMode acceptMode,
                          QFileDialog::FileMode fileMode, QFileDialog::Options options,
                          QString& selectedFilter)
{
    const QPointer<QFileDialog> dialog =
        new QFileDialog(parent, caption, path, filters.joinedFilterString());
    dialog->setOptions(options);
    dialog->setFileMode(fileMode);
    // No addresses of servers, which the dialogs of some desktops offer.
    dialog->setSupportedSchemes({QStringLiteral("file")});
    // Before it is a save dialog: there a filter replaces what follows the last dot of the proposed
    // name, also in "cube 0.2mm".
    dialog->selectNameFilter(selectedFilter);
    dialog->setAcceptMode(acceptMode);

    const bool accepted = dialog->exec() == QDialog::Accepted;
    QStringList chosen;
    if (dialog && accepted) {
        selectedFilter = dialog->selectedNameFilter();
        chosen = dialog->selectedFiles();
    }
    delete dialog;
    return chosen;
}

FileChooserResult chooseExisting(QWidget* parent, const QString& caption, const QString& dir,
                                 const FileFilterList& filters, QFileDialog::FileMode fileMode)
{
    QString selected = filters.defaultFilter().filterString();
    const QStringList paths = runFileDialog(parent, caption, dir, filters, QFileDialog::AcceptOpen,
                                            fileMode, {}, selected);
    if (paths.isEmpty())
        return FileChooserResult();
    return FileChooserResult(paths, filters.findFilter(selected));
}

} // namespace

FileChooserResult::FileChooserResult()
    : paths(QString())
    , filter(QStringLiteral("invalid"), QStringLiteral("invalid"))
    , cancelled(true)
{}

FileChooserResult::FileChooserResult(const QString& chosenPath, const FileFilter& selectedFilter)
    : FileChooserResult(QStringList(chosenPath), selectedFilter)
{}

FileChooserResult::FileChooserResult(const QStringList& chosenPaths,
                                     const FileFilter& selectedFilter)
    : paths(chosenPaths)
    , filter(selectedFilter)
    , cancelled(false)
{}

FileChooserValidator::~FileChooserValidator() = default;

FileChooserResult chooseOpenPath(QWidget* parent, const QString& caption, const QString& dir,
                                 const FileFilterList& filters)
{
    return chooseExisting(parent, caption, dir, filters, QFileDialog::ExistingFile);
}

FileChooserResult chooseOpenPaths(QWidget* parent, const QString& caption, const QString& dir,
                                  const FileFilterList& filters)
{
    return chooseExisting(parent, caption, dir, filters, QFileDialog::ExistingFiles);
}

FileChooserResult chooseSavePath(QWidget* parent, const QString& title,
                                 const QString& initialDefaultPath, const FileFilterList& filters,
                                 FileChooserValidator* const validator)
{
    TROVEK_LOG(1) << "Preparing to show save dialog title=" << toStdString(title)
                  << ", initialDefaultPath=" << toStdString(initialDefaultPath)
                  << ", validator=" << (validator ? 1 : 0) << std::endl;
    const QPointer<QWidget> guard(parent);
    const auto parentDied = [&] {
        return parent && !guard;
    };

    QString current = initialDefaultPath;
    QString selected = filters.defaultFilter().filterString();
    for (;;) {
        TROVEK_LOG(1) << "Running QFileDialog::getSaveFileName()" << std::endl;
        QString path =
            runFileDialog(parent, title, current, filters, QFileDialog::AcceptSave,
                          QFileDialog::AnyFile, QFileDialog::DontConfirmOverwrite, selected)
                .value(0);
        TROVEK_LOG(1) << "getSaveFileName: " << toStdString(path) << std::endl;
        if (path.isEmpty() || parentDied())
            return FileChooserResult();

        const FileFilter& filter = filters.findFilter(selected);
        const QFileInfo fixed(filters.fixFileName(path, filter));
        path = fixed.absoluteFilePath();
        current = path;
        if (validator) {
            const FileChooserValidator::Result result = validator->validate(path, parent);
            if (parentDied())
                return FileChooserResult();
            switch (result.action) {
            case FileChooserValidator::Accept:
                break;
            case FileChooserValidator::Replace:
                path = result.path;
                current = path;
                break;
            case FileChooserValidator::Reject:
                current = result.path;
                continue;
            default:
                continue;
            }
        }

        if (!fixed.exists())
            return FileChooserResult(path, filter);
        using Question = message::FileChooserOverwriteConfirm;
        const bool replaces = Question(fixed.fileName(), parent).exec() == Question::Replace;
        if (parentDied())
            return FileChooserResult();
        if (replaces)
            return FileChooserResult(path, filter);
    }
}

} // namespace trovek
