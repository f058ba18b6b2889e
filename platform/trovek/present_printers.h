#pragma once

#include "trovek/printer.h"

#include <list>
#include <map>

namespace trovek {

/** The machines that are there now: in the order of their coming, and quick to find by key. */
class PresentPrinters
{
public:
    PresentPrinters() = default;
    // A copy's index would lead into the list of the other.
    PresentPrinters(const PresentPrinters&) = delete;
    PresentPrinters& operator=(const PresentPrinters&) = delete;
    PresentPrinters(PresentPrinters&&) = default;
    PresentPrinters& operator=(PresentPrinters&&) = default;

    const std::list<Printer*>& list() const { return m_list; }

    /** Null when it is not there. */
    Printer* find(const MachineName& key) const
    {
        const auto found = m_places.find(key);
        return found == m_places.end() ? nullptr : *found->second;
    }

    /** To the end; nothing happens when its key is there already. */
    void add(Printer* printer)
    {
        const auto [place, isNew] = m_places.try_emplace(printer->key());
        if (isNew)
            place->second = m_list.insert(m_list.end(), printer);
    }

    /** Nothing happens when it is not there. */
    void remove(const Printer* printer)
    {
        const auto found = m_places.find(printer->key());
        if (found == m_places.end())
            return;
        m_list.erase(found->second);
        m_places.erase(found);
    }

    void clear()
    {
        m_places.clear();
        m_list.clear();
    }

private:
    std::list<Printer*> m_list;
    std::map<MachineName, std::list<Printer*>::iterator> m_places;
};

} // namespace trovek
