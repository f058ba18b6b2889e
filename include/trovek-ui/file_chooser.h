#pragma once

#include "trovek-ui/export.h"

#include <QString>
#include <QStringList>

#include <list>

class QWidget;

namespace trovek {

/** One kind of file in an open or save dialog: what it is called, and the suffixes it has. */
class TROVEK_UI_EXPORT FileFilter
{
public:
    /**
     * @param description for people, without parentheses: "All images"
     * @param suffix      without dot or star: "stl"
     * @throws std::runtime_error "FileFilter description cannot be empty",
     *         "FileFilter description cannot contain parens", "FileFilter suffix cannot be empty"
     */
    FileFilter(const QString& description, const QString& suffix);

    /** @throws std::runtime_error as above, and "FileFilter suffixes cannot be empty" */
    FileFilter(const QString& description, const QStringList& suffixes);

    const QString& description() const { return m_description; }
    const QStringList& suffixes() const { return m_suffixes; }
    /** The suffixes with their dots. */
    const QStringList& dottedSuffixes() const { return m_dottedSuffixes; }
    /** As Qt's dialogs take it: "All images (*.bmp *.gif)". */
    const QString& filterString() const { return m_filterString; }

    /** Whether the name ends with one of the dotted suffixes, in upper or lower case. */
    bool acceptsFileName(const QString& name) const;

    /** The name, with the first suffix appended when it is not accepted. */
    QString fixFileName(const QString& name) const;

    /** By description and suffixes in their order. */
    bool operator==(const FileFilter& other) const;
    bool operator!=(const FileFilter& other) const { return !(*this == other); }

private:
    QString m_description;
    QStringList m_suffixes;
    QStringList m_dottedSuffixes;
    QString m_filterString;
};

/** The filters of one dialog, in its order, and the one that is selected at first. */
class TROVEK_UI_EXPORT FileFilterList
{
public:
    /**
     * The first filter is the default.
     * @throws std::runtime_error "FileFilterList filters cannot be empty"
     */
    explicit FileFilterList(const std::list<FileFilter>& filters);

    /** @throws std::runtime_error as above, and "FileFilterList defaultFilter not in list" */
    FileFilterList(const std::list<FileFilter>& filters, const FileFilter& defaultFilter);

    const std::list<FileFilter>& filters() const { return m_filters; }
    const FileFilter& defaultFilter() const { return m_defaultFilter; }
    const QStringList& filterStrings() const { return m_filterStrings; }
    /** As Qt's dialogs take it, joined by ";;". */
    const QString& joinedFilterString() const { return m_joinedFilterString; }

    bool acceptsFileName(const QString& name) const;

    /** The first filter with this filter string, or the default one. */
    const FileFilter& findFilter(const QString& filterString) const;

    /**
     * The name with a suffix that `selected` accepts: another known suffix is replaced, an unknown
     * one stays and the new one is appended to it.
     */
    QString fixFileName(QString name, const FileFilter& selected) const;

private:
    std::list<FileFilter> m_filters;
    FileFilter m_defaultFilter;
    QStringList m_filterStrings;
    QString m_joinedFilterString;
};

/** What the user chose. */
struct TROVEK_UI_EXPORT FileChooserResult
{
    /** Cancelled: one empty path, so that the first one can always be taken. */
    FileChooserResult();
    FileChooserResult(const QString& chosenPath, const FileFilter& selectedFilter);
    FileChooserResult(const QStringList& chosenPaths, const FileFilter& selectedFilter);

    QStringList paths;
    /** The filter that was selected when the dialog closed; "invalid" when cancelled. */
    FileFilter filter;
    bool cancelled;
};

/** Has a say about the name that a user chose for saving. */
class TROVEK_UI_EXPORT FileChooserValidator
{
public:
    enum Action : int {
        /** The dialog is shown again, at the result's path. */
        Reject = 0,
        Accept = 1,
        /** The result's path is taken instead. */
        Replace = 2,
    };

    struct Result
    {
        int action;
        QString path;
    };

    virtual ~FileChooserValidator();

    /** @param path absolute, with a suffix of the selected filter */
    virtual Result validate(const QString& path, QWidget* parent) = 0;
};

/** Lets the user choose a file that exists. */
TROVEK_UI_EXPORT FileChooserResult chooseOpenPath(QWidget* parent, const QString& caption,
                                                  const QString& dir,
                                                  const FileFilterList& filters);
/** Lets the user choose one or more files that exist. */
TROVEK_UI_EXPORT FileChooserResult chooseOpenPaths(QWidget* parent, const QString& caption,
                                                   const QString& dir,
                                                   const FileFilterList& filters);

/**
 * Lets the user choose where to save, and asks before a file that exists is replaced.
 *
 * The chosen path is absolute and has a suffix of the selected filter. With a validator that
 * replaces the path, the question is still asked about the file that the user chose.
 * Runs the event loop; when the parent is destroyed meanwhile, the result is cancelled and the
 * validator is not called any more.
 *
 * @param initialDefaultPath a folder, or a file whose name is proposed
 * @param validator          not owned; may be null
 */
TROVEK_UI_EXPORT FileChooserResult chooseSavePath(QWidget* parent, const QString& title,
                                                  const QString& initialDefaultPath,
                                                  const FileFilterList& filters,
                                                  FileChooserValidator* const validator);

/** One filter, "All images", with the suffixes bmp, gif, jpg, png and svg. */
TROVEK_UI_EXPORT FileFilterList imageFileFilterList();

} // namespace trovek
