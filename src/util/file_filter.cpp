#include "trovek-ui/file_chooser.h"

#include <QFileInfo>
#include <QObject>

#include <algorithm>
#include <stdexcept>

namespace trovek {

namespace {

const QString& checkedDescription(const QString& description)
{
    if (description.isEmpty())
        throw std::runtime_error("FileFilter description cannot be empty");
    if (description.contains(QLatin1Char('(')) || description.contains(QLatin1Char(')')))
        throw std::runtime_error("FileFilter description cannot contain parens");
    return description;
}

const QStringList& checkedSuffixes(const QStringList& suffixes)
{
    if (suffixes.isEmpty())
        throw std::runtime_error("FileFilter suffixes cannot be empty");
    if (suffixes.contains(QString()))
        throw std::runtime_error("FileFilter suffix cannot be empty");
    return suffixes;
}

QStringList withPrefix(const QString& prefix, const QStringList& suffixes)
{
    QStringList prefixed;
    for (const QString& suffix : suffixes)
        prefixed += QStringLiteral("%1%2").arg(prefix, suffix);
    return prefixed;
}

const std::list<FileFilter>& checkedFilters(const std::list<FileFilter>& filters)
{
    if (filters.empty())
        throw std::runtime_error("FileFilterList filters cannot be empty");
    return filters;
}

} // namespace

FileFilter::FileFilter(const QString& description, const QString& suffix)
    : FileFilter(description, QStringList(suffix))
{}

FileFilter::FileFilter(const QString& description, const QStringList& suffixes)
    : m_description(checkedDescription(description))
    , m_suffixes(checkedSuffixes(suffixes))
    , m_dottedSuffixes(withPrefix(QStringLiteral("."), suffixes))
    , m_filterString(QStringLiteral("%1 (%2)").arg(
          description, withPrefix(QStringLiteral("*."), suffixes).join(QLatin1Char(' '))))
{}

bool FileFilter::acceptsFileName(const QString& name) const
{
    return std::any_of(
        m_dottedSuffixes.begin(), m_dottedSuffixes.end(),
        [&name](const QString& suffix) { return name.endsWith(suffix, Qt::CaseInsensitive); });
}

QString FileFilter::fixFileName(const QString& name) const
{
    return acceptsFileName(name) ? name : name + m_dottedSuffixes.first();
}

bool FileFilter::operator==(const FileFilter& other) const
{
    return m_description == other.m_description && m_suffixes == other.m_suffixes;
}

FileFilterList::FileFilterList(const std::list<FileFilter>& filters)
    : FileFilterList(filters, checkedFilters(filters).front())
{}

FileFilterList::FileFilterList(const std::list<FileFilter>& filters,
                               const FileFilter& defaultFilter)
    : m_filters(checkedFilters(filters))
    , m_defaultFilter(defaultFilter)
{
    if (std::find(filters.begin(), filters.end(), defaultFilter) == filters.end())
        throw std::runtime_error("FileFilterList defaultFilter not in list");
    for (const FileFilter& filter : filters)
        m_filterStrings += filter.filterString();
    m_joinedFilterString = m_filterStrings.join(QStringLiteral(";;"));
}

bool FileFilterList::acceptsFileName(const QString& name) const
{
    return std::any_of(m_filters.begin(), m_filters.end(),
                       [&name](const FileFilter& filter) { return filter.acceptsFileName(name); });
}

const FileFilter& FileFilterList::findFilter(const QString& filterString) const
{
    const auto found =
        std::find_if(m_filters.begin(), m_filters.end(), [&filterString](const FileFilter& filter) {
            return filter.filterString() == filterString;
        });
    return found == m_filters.end() ? m_defaultFilter : *found;
}

QString FileFilterList::fixFileName(QString name, const FileFilter& selected) const
{
    if (!selected.acceptsFileName(name) && acceptsFileName(name))
        name.chop(QFileInfo(name).suffix().size() + 1);
    return selected.fixFileName(name);
}

FileFilterList imageFileFilterList()
{
    return FileFilterList(
        {FileFilter(QObject::tr("All images"),
                    QStringList{QStringLiteral("bmp"), QStringLiteral("gif"), QStringLiteral("jpg"),
                                QStringLiteral("png"), QStringLiteral("svg")})});
}

} // namespace trovek
