#include "widgets/grama_item.h"

#include <utility>

namespace trovek {

GramaItem::GramaItem()
    : d(new Private)
{}

GramaItem::~GramaItem()
{
    // One after the other: rows that are nested deeply would use up the stack.
    std::vector<std::shared_ptr<GramaItem>> leaving = std::move(d->children);
    while (!leaving.empty()) {
        const std::shared_ptr<GramaItem> item = std::move(leaving.back());
        leaving.pop_back();
        if (item.use_count() > 1)
            continue;
        for (std::shared_ptr<GramaItem>& child : item->d->children)
            leaving.push_back(std::move(child));
        item->d->children.clear();
    }
}

Grama* GramaItem::form() const
{
    return d->form;
}

GramaItem* GramaItem::parentItem() const
{
    return d->parent;
}

GramaLeftContainerWidget* GramaItem::leftContainer() const
{
    return d->left;
}

QWidget* GramaItem::label() const
{
    return d->label;
}

QWidget* GramaItem::field() const
{
    return d->field;
}

const std::vector<std::shared_ptr<GramaItem>>& GramaItem::children() const
{
    return d->children;
}

QStringList GramaItem::searchStrings() const
{
    return d->searchStrings;
}

void GramaItem::setSearchStrings(const QStringList& strings)
{
    d->searchStrings = strings;
}

bool GramaItem::isMarked() const
{
    return d->marked;
}

void GramaItem::setMarked(bool marked)
{
    d->marked = marked;
}

} // namespace trovek
